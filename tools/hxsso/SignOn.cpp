#include "hxsso/SignOn.h"

#include <iostream>
#include <sstream>

#include <SSOClientPrivate.h>

#include "hxsso/PluginLog.h"
#include "hxsso/PluginTexts.h"
#include "hxsso/System.h"
#include "hxsso/Text.h"

namespace Halvorix::HxSSO {

namespace {

namespace fs = std::filesystem;
using SSOServices::SSOClientPrivate;
using WebServices::WebServicesManager;

constexpr auto NoServer = static_cast<WebServices::Server>(-1);

/// What the library writes to std::wcout while no plugin has a logger. Never destroyed: it
/// may write until the process ends.
std::wostringstream& LinesOfLibrary()
{
    static auto& lines = *new std::wostringstream;
    return lines;
}

std::string FirstLineOfLibrary()
{
    std::wstring const lines = LinesOfLibrary().str();
    return ToUtf8(lines.substr(0, lines.find(L'\n')));
}

/// With its installation, for a program in whose folder no other file is to lie.
fs::path InstalledClientConfig()
{
    return (ProgramFile().parent_path() / HXSSO_DATA_FOLDER / "SSOClient.config")
        .lexically_normal();
}

Answer NoServerToSignInAt()
{
    std::string const file = ToUtf8(SSOClientPrivate::GetSettingsPath());
    Answer const answer = Failed(Status::NoPlugin, "the sign-on plugin has no server to sign in at",
                                 file.empty() ? "complete the plugin's configuration"
                                              : "see that " + file + " is correct");
    return ReasonInPluginLog(Status::NoPlugin, answer, "Nobody can sign in");
}

/// Whether somebody is signed in is not known then.
bool IsOfUnreadableStore(Answer const& answer)
{
    return answer.error.find(" cannot be read for now") != std::string::npos;
}

Answer Select(std::string const& name)
{
    WebServices::Server const server = SSOClientPrivate::ServerNameToServer(ToWide(name));
    if (server == NoServer || !WebServicesManager::GetInstance()->SetServer(server))
        return Failed(Status::WrongUse, "there is no server '" + name + "'",
                      "'hxsso servers' lists those that there are");
    return {};
}

} // namespace

void BeginLibrary()
{
    std::wcout.rdbuf(LinesOfLibrary().rdbuf());
    // As a last resort, the library looks for its files in the current folder. Here this is the
    // program's, which is as good as the program: a user may be in a folder of anybody's.
    std::error_code unknown;
    fs::current_path(ProgramFile().parent_path(), unknown);
    if (unknown) // without /proc, say
        fs::current_path("/");
    bool const isFound =
        SSOClientPrivate::GetSSOClientConfigFile().find(L'/') != std::wstring::npos;
    fs::path const installed = InstalledClientConfig();
    if (!isFound && fs::exists(installed, unknown))
        SSOClientPrivate::SetSSOClientConfigFileOverride(ToWide(installed.generic_u8string()));
}

bool HasPlugin()
{
    // A plugin keeps the name; the library alone does not.
    SSOClientPrivate::SetProductName(L"hxsso");
    return !SSOClientPrivate::GetProductName().empty() || SSOClientPrivate::Ping() ||
           !SSOClientPrivate::GetSessionState().empty();
}

Answer NoPlugin()
{
    std::string const line = FirstLineOfLibrary();
    return Failed(Status::NoPlugin,
                  "there is no sign-on plugin" + (line.empty() ? line : ": " + line),
                  "run 'hxsso doctor', which tells why");
}

SignOn::SignOn(std::string const& server)
{
    WebServicesManager::Initialize(false);
    if (!HasPlugin())
        obstacle = NoPlugin();
    else if (Manager().GetServer() == NoServer)
        obstacle = NoServerToSignInAt();
    else if (!server.empty())
        obstacle = Select(server);
    PassOverPluginLog(); // what the library says of the load is no reason for what comes
}

SignOn::~SignOn() { WebServicesManager::Uninitialize(); }

WebServicesManager& SignOn::Manager() const { return *WebServicesManager::GetInstance(); }

bool SignOn::IsSignedIn() const { return Manager().IsLoginValid(); }

Answer SignOn::Refusal(std::string const& what) const
{
    if (IsSignedIn())
        return ReasonInPluginLog(
            Status::Provider, Failed(Status::Provider, what, "the plugin's log tells the reason"));
    Answer answer = ReasonInPluginLog(Status::NotSignedIn, NobodySignedIn());
    if (IsOfUnreadableStore(answer))
        answer.status = Status::Provider;
    return answer;
}

Answer SignOn::NobodySignedIn() const
{
    Answer reason = ReasonInPluginLog(Status::Provider, {}, "The stored login cannot be used");
    if (IsOfUnreadableStore(reason))
        return reason;
    std::string const server = NameOfServer(Manager());
    return Failed(Status::NotSignedIn,
                  "nobody is signed in" + (server.empty() ? server : " at " + server),
                  "run 'hxsso login'");
}

} // namespace Halvorix::HxSSO
