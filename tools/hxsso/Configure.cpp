// Writes the open plugin's configuration, and has the plugin itself check it.

#include <algorithm>
#include <regex>
#include <sstream>
#include <utility>

#include <SSOClientPrivate.h>

#include "common/Utf8.h"
#include "hxsso/Commands.h"
#include "hxsso/ConfigurationFile.h"
#include "hxsso/PluginLog.h"
#include "hxsso/SignOn.h"
#include "hxsso/System.h"
#include "hxsso/Text.h"

namespace Halvorix::HxSSO {

namespace {

namespace fs = std::filesystem;
using SSOServices::SSOClientPrivate;

constexpr char const* FileName = "HxSSOOpenID.json";
constexpr char const* UsualName = "production";
constexpr char const* UsualScopes = "openid profile email offline_access";

/// As HxSSOOpenID.schema.json has them.
constexpr char const* Issuers =
    "(https://[^/?#@\\s]+|http://(localhost|127\\.[0-9]+\\.[0-9]+\\.[0-9]+|\\[::1\\])(:[0-9]+)?)"
    "(/[^?#\\s]*)?";
constexpr char const* Scopes = "[ !#-\\[\\]-~]+";
constexpr char const* Ports = "[1-9][0-9]{0,4}(,[1-9][0-9]{0,4})*";
constexpr int HighestPort = 65535;

bool Fits(std::string const& text, char const* rule)
{
    return text.size() < 2048 && std::regex_match(text, std::regex(rule));
}

/// "49152,49153" as a list, and null for what is no such text.
Json::Value PortsIn(std::string const& text)
{
    Json::Value ports;
    if (!Fits(text, Ports))
        return ports;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');) {
        int const port = std::stoi(part);
        if (port > HighestPort)
            return {};
        ports.append(port);
    }
    return ports;
}

Answer MisuseOfConfigure(Options const& options)
{
    if (!Fits(options.Value("--issuer"), Issuers))
        return Failed(Status::WrongUse, "the value of --issuer is no address of a provider",
                      "give it as the provider writes it, such as https://login.example, without "
                      "a query; http is for a loopback address alone");
    if (options.Has("--scopes") && !Fits(options.Value("--scopes"), Scopes))
        return Failed(Status::WrongUse, "the value of --scopes has characters that no scope has",
                      "separate the scopes by blanks, as in \"openid offline_access\"");
    if (options.Has("--redirect-ports") && PortsIn(options.Value("--redirect-ports")).isNull())
        return Failed(Status::WrongUse, "the value of --redirect-ports is no list of ports",
                      "write numbers from 1 to 65535 with commas between them, as in 49152,49153");
    return {};
}

/// Without a load of the plugin, which reads its configuration then.
fs::path FolderOfPlugin()
{
    return fs::u8path(ToUtf8(SSOClientPrivate::GetSSOClientPluginModule())).parent_path();
}

void PutServer(Json::Value& configuration, Options const& options, std::string const& name)
{
    Json::Value& server = configuration["servers"][name];
    server["issuer"] = options.Value("--issuer");
    server["clientId"] = options.Value("--client-id");
    if (options.Has("--scopes"))
        server["scopes"] = options.Value("--scopes");
    else if (!server.isMember("scopes"))
        server["scopes"] = UsualScopes;
    if (options.Has("--redirect-ports"))
        server["redirectPorts"] = PortsIn(options.Value("--redirect-ports"));
}

/// What the provider's administrator has to know of this client.
std::string RedirectAddresses(Json::Value const& ports)
{
    if (!ports.isArray() || ports.empty())
        return "Redirect address to register there: http://127.0.0.1/callback, with any port\n";
    std::string text = "Redirect addresses to register there:";
    for (Json::Value const& port : ports)
        if (port.isInt())
            text += " http://127.0.0.1:" + port.asString() + "/callback";
    return text + '\n';
}

/// The plugin reads the new file, and asks the provider for its description.
Answer CheckByPlugin(std::string const& name)
{
    SignOn const session(name);
    if (session.Obstacle().status != Status::Done)
        return session.Obstacle();
    if (!SSOClientPrivate::GetUrl(std::wstring(L"token")).empty())
        return {};
    return ReasonInPluginLog(Status::Provider,
                             Failed(Status::Provider, "the provider cannot be asked",
                                    "see that the issuer is right and can be reached"));
}

bool IsSame(fs::path const& left, fs::path const& right)
{
    std::error_code unknown;
    return fs::equivalent(left, right, unknown);
}

} // namespace

Answer Configure(Options const& options)
{
    Answer misuse = MisuseOfConfigure(options);
    if (misuse.status != Status::Done)
        return misuse;
    std::string const name = options.Has("--name") ? options.Value("--name") : UsualName;
    fs::path const ofPlugin = FolderOfPlugin();
    fs::path const folder =
        options.Has("--folder") ? fs::u8path(options.Value("--folder")) : ofPlugin;
    if (folder.empty()) {
        Answer answer = NoPlugin();
        answer.remedy += "; or name the folder by --folder";
        return answer;
    }

    ConfigurationFile file(folder / FileName);
    std::string reason;
    Json::Value configuration;
    if (!file.Read(configuration, reason))
        return Failed(Status::Failed, Tools::Utf8(file.Path()) + " " + reason,
                      "correct it, or remove it");
    PutServer(configuration, options, name);
    // No provider that nobody has checked is to stay for all programs.
    InterruptsHeldBack const heldBack;
    if (!file.Write(configuration, reason))
        return Failed(Status::Failed, Tools::Utf8(file.Path()) + " cannot be written: " + reason,
                      "run it as who may write there");

    bool const isChecked = IsSame(folder, ofPlugin);
    if (isChecked) {
        Answer checked = CheckByPlugin(name);
        if (checked.status != Status::Done) {
            bool const isBack = file.PutBack(reason);
            checked.error = Tools::Utf8(file.Path()) +
                            (isBack ? " stays as it was: " : " cannot be put back: ") +
                            checked.error;
            return checked;
        }
    }
    Answer answer;
    answer.result["file"] = Tools::Utf8(file.Path());
    answer.result["server"] = name;
    answer.result["issuer"] = options.Value("--issuer");
    answer.result["isChecked"] = isChecked;
    answer.text =
        "Wrote " + Tools::Utf8(file.Path()) + '\n' +
        (isChecked ? "The provider answers as " + options.Value("--issuer") + '\n'
                   : "Not checked at the provider: no plugin in that folder is in use\n") +
        RedirectAddresses(configuration["servers"][name]["redirectPorts"]);
    return answer;
}

} // namespace Halvorix::HxSSO
