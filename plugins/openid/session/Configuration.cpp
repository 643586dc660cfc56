#include "openid/session/Configuration.h"

#include <algorithm>
#include <memory>
#include <set>
#include <sstream>

#include <json/reader.h>
#include <json/value.h>

#include "openid/platform/Files.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t LargestSettings = 1 << 20;
constexpr char const* UsualStore = "%LocalAppData%/HxSSO/OpenID";

/// Ends the reading; only inside this file.
struct Wrong {
    std::string reason, remedy;
};

/// Remarks and errors name a key by the way to it: "servers.production.issuer".
std::string Join(std::string const& place, std::string const& key)
{
    return OneLine(place.empty() ? key : place + '.' + key);
}

/// "* Line 3, Column 5\n  Missing ',' ..." in one line, the first error alone.
std::string FirstError(std::string const& errors)
{
    std::istringstream lines(errors);
    std::string place, text;
    std::getline(lines, place);
    std::getline(lines, text);
    auto const trim = [](std::string const& line) {
        auto const begin = line.find_first_not_of("* ");
        return begin == std::string::npos ? std::string() : line.substr(begin);
    };
    return trim(place) + ": " + trim(text);
}

/// Strict JSON, but for comments: an administrator's file may have them, as those of the
/// library may.
Json::Value Parse(std::string const& text)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["allowComments"] = true;
    builder["collectComments"] = false;
    builder["stackLimit"] = 32;
    std::unique_ptr<Json::CharReader> const reader(builder.newCharReader());
    Json::Value root;
    std::string errors;
    bool good = false;
    try {
        good = reader->parse(text.data(), text.data() + text.size(), &root, &errors);
    } catch (Json::Exception const& exception) { // Too deep.
        errors = std::string("\n") + exception.what();
    }
    if (!good)
        throw Wrong{"is not valid JSON (" + FirstError(errors) + ")", "correct that line"};
    return root;
}

Json::Value const& Object(Json::Value const& value, std::string const& place)
{
    if (!value.isObject())
        throw Wrong{(place.empty() ? "the file" : place) + " is not an object",
                    "write it in braces: { ... }"};
    return value;
}

std::string Text(Json::Value const& value, std::string const& place)
{
    if (!value.isString())
        throw Wrong{place + " is not a text", "write it in double quotes"};
    std::string text = value.asString();
    if (text.empty())
        throw Wrong{place + " is empty", "fill it in, or remove it where it may be missing"};
    return text;
}

std::string RequiredText(Json::Value const& object, char const* key, std::string const& place,
                         char const* remedy)
{
    if (!object.isMember(key))
        throw Wrong{Join(place, key) + " is missing", remedy};
    return Text(object[key], Join(place, key));
}

int Number(Json::Value const& value, int least, int most, std::string const& place)
{
    if (!value.isInt() || value.asInt() < least || value.asInt() > most)
        throw Wrong{place + " is not a whole number from " + std::to_string(least) + " to " +
                        std::to_string(most),
                    "write such a number, without quotes"};
    return value.asInt();
}

void RemarkUnknownKeys(Json::Value const& object, std::set<std::string> const& known,
                       std::string const& place, PluginConfiguration& configuration)
{
    for (std::string const& key : object.getMemberNames())
        if (known.count(key) == 0)
            configuration.remarks.push_back("key " + Join(place, key) +
                                            " is not known and is ignored");
}

std::string Issuer(Json::Value const& server, std::string const& place)
{
    std::string issuer =
        RequiredText(server, "issuer", place, "write the provider's address, as it gives it");
    if (!IsSecureUrl(issuer) || issuer.find('?') != std::string::npos)
        throw Wrong{Join(place, "issuer") + " is not an https address",
                    "write an address such as https://login.example, without a query; http is for "
                    "a loopback address alone"};
    return issuer;
}

bool IsScopeCharacter(char c) { return c >= 0x21 && c <= 0x7E && c != '"' && c != '\\'; }

std::string Scopes(Json::Value const& server, std::string const& place,
                   PluginConfiguration& configuration)
{
    if (!server.isMember("scopes"))
        return "openid";
    std::string const where = Join(place, "scopes");
    std::string const text = Text(server["scopes"], where);
    if (!std::all_of(text.begin(), text.end(),
                     [](char c) { return c == ' ' || IsScopeCharacter(c); }))
        throw Wrong{where + " has characters that a scope cannot have",
                    "separate the scopes by single blanks"};
    std::string const scopes = NormalScope(text);
    std::string withOpenId = NormalScope(text + " openid");
    if (scopes != withOpenId)
        configuration.remarks.push_back(where + " lacks openid, which is asked for all the same");
    return withOpenId;
}

std::vector<int> Ports(Json::Value const& server, std::string const& place)
{
    std::vector<int> ports;
    if (!server.isMember("redirectPorts"))
        return ports;
    std::string const where = Join(place, "redirectPorts");
    Json::Value const& list = server["redirectPorts"];
    if (!list.isArray())
        throw Wrong{where + " is not a list", "write it in brackets: [ 49152, 49153 ]"};
    for (Json::Value const& port : list)
        ports.push_back(Number(port, 1, 65535, where));
    return ports;
}

std::string AccountUrl(Json::Value const& server, std::string const& place)
{
    if (!server.isMember("accountUrl"))
        return {};
    std::string const where = Join(place, "accountUrl");
    std::string url = Text(server["accountUrl"], where);
    if (!IsSecureUrl(url))
        throw Wrong{where + " is not an https address", "write one, or remove the key"};
    return url;
}

bool DeviceLogin(Json::Value const& server, std::string const& place)
{
    Json::Value const& permits = server["deviceLogin"];
    if (server.isMember("deviceLogin") && !permits.isBool())
        throw Wrong{Join(place, "deviceLogin") + " is neither true nor false",
                    "write true or false, without quotes"};
    return permits.asBool();
}

void ReadServers(Json::Value const& root, PluginConfiguration& configuration)
{
    if (!root.isMember("servers"))
        throw Wrong{"servers is missing", "name at least one server with issuer and clientId"};
    Json::Value const& servers = Object(root["servers"], "servers");
    if (servers.empty())
        throw Wrong{"servers is empty", "name at least one server with issuer and clientId"};
    for (std::string const& name : servers.getMemberNames()) {
        if (name.empty())
            throw Wrong{"a server has an empty name", "name it, for instance production"};
        std::string const place = Join("servers", name);
        Json::Value const& server = Object(servers[name], place);
        RemarkUnknownKeys(
            server, {"issuer", "clientId", "scopes", "redirectPorts", "accountUrl", "deviceLogin"},
            place, configuration);
        ServerConfiguration& read = configuration.servers[name];
        read.issuer = Issuer(server, place);
        read.clientId = RequiredText(server, "clientId", place,
                                     "write the client's id from its registration at the provider");
        read.scopes = Scopes(server, place, configuration);
        read.redirectPorts = Ports(server, place);
        read.accountUrl = AccountUrl(server, place);
        read.deviceLogin = DeviceLogin(server, place);
    }
}

void ReadTimeouts(Json::Value const& root, PluginConfiguration& configuration)
{
    if (!root.isMember("timeouts"))
        return;
    Json::Value const& timeouts = Object(root["timeouts"], "timeouts");
    RemarkUnknownKeys(timeouts, {"login", "network"}, "timeouts", configuration);
    if (timeouts.isMember("login"))
        configuration.loginTimeout =
            std::chrono::seconds(Number(timeouts["login"], 1, 3600, "timeouts.login"));
    if (timeouts.isMember("network"))
        configuration.networkTimeout =
            std::chrono::seconds(Number(timeouts["network"], 1, 300, "timeouts.network"));
}

/// A path that may begin with the variable of a known folder; there are no others.
fs::path StoreFolder(std::string const& text)
{
    for (char const* const name : {"LocalAppData", "AppData", "Home"}) {
        std::string const variable = '%' + std::string(name) + '%';
        if (text.compare(0, variable.size(), variable) != 0)
            continue;
        std::string const rest = text.substr(variable.size());
        if (!rest.empty() && rest[0] != '/' && rest[0] != '\\')
            break;
        fs::path const folder = KnownFolder(name);
        if (folder.empty())
            throw Wrong{"store begins with " + variable +
                            ", a folder that this system does not know",
                        "write the folder's path in store"};
        return (fs::path(folder) += PathFromText(rest)).make_preferred();
    }
    if (text[0] == '%')
        throw Wrong{"store begins with a variable that is not known",
                    "begin it with %LocalAppData%/, %AppData%/ or %Home%/, or write a whole path"};
    fs::path folder = PathFromText(text);
    if (!folder.is_absolute())
        throw Wrong{"store is not a whole path",
                    "begin it with %LocalAppData%/, %AppData%/ or %Home%/, or write a whole path"};
    return folder;
}

PluginConfiguration Read(std::string const& text)
{
    Json::Value const root = Parse(text);
    Object(root, "");
    PluginConfiguration configuration;
    RemarkUnknownKeys(root, {"servers", "timeouts", "store"}, "", configuration);
    ReadServers(root, configuration);
    ReadTimeouts(root, configuration);
    configuration.store =
        StoreFolder(root.isMember("store") ? Text(root["store"], "store") : UsualStore);
    return configuration;
}

} // namespace

std::filesystem::path DefaultStore()
{
    try {
        return StoreFolder(UsualStore);
    } catch (Wrong const&) {
        return {}; // a system without the folder: there is no log then
    }
}

Outcome<PluginConfiguration> ParseConfiguration(std::string const& text, std::string const& name)
{
    try {
        PluginConfiguration configuration = Read(text);
        for (std::string& remark : configuration.remarks)
            remark.insert(0, name + ": ");
        return configuration;
    } catch (Wrong const& wrong) {
        Failure failure;
        failure.kind = Failure::Kind::Configuration;
        failure.reason = name + ": " + wrong.reason;
        failure.remedy = wrong.remedy;
        return failure;
    }
}

Outcome<PluginConfiguration> ReadConfiguration(std::filesystem::path const& file)
{
    FileContent const content = ReadFile(file, LargestSettings);
    if (content.state == FileContent::State::Read)
        return ParseConfiguration(content.bytes, PathText(file));
    Failure failure;
    failure.kind = Failure::Kind::Configuration;
    bool const isMissing = content.state == FileContent::State::Missing;
    failure.reason =
        PathText(file) + (isMissing ? " is missing" : " cannot be read: " + content.reason);
    failure.remedy = isMissing ? "let 'hxsso configure' write it, or put it there with the "
                                 "providers of this machine"
                               : "make it a plain file that every user may read";
    return failure;
}

} // namespace Halvorix::OpenId
