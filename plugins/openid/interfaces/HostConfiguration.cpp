#include "openid/interfaces/HostConfiguration.h"

#include <algorithm>
#include <iterator>

#include "openid/interfaces/HostTexts.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

using Config = WebServices::WebServicesConfiguration;
using WideSecret = SSOServices::SecretText<wchar_t>;

using Getter = int (Config::*)(wchar_t*, int) const;

struct Field {
    char const* key;
    Getter get;
    void (Config::*set)(wchar_t const*);
};

// Not constexpr: to Visual Studio the address of an imported function is no constant.
Field const fields[] = {
    {"consumerKey", &Config::GetConsumerKey, &Config::SetConsumerKey},
    {"consumerSecret", &Config::GetConsumerSecret, &Config::SetConsumerSecret},
    {"serialNumber", &Config::GetSerialNumber, &Config::SetSerialNumber},
    {"productLineCode", &Config::GetProductLineCode, &Config::SetProductLineCode},
    {"upiRelease", &Config::GetUPIRelease, &Config::SetUPIRelease},
    {"upiMaster", &Config::GetUPIMaster, &Config::SetUPIMaster},
    {"upiBuild", &Config::GetUPIBuild, &Config::SetUPIBuild},
    {"featureName", &Config::GetFeatureName, &Config::SetFeatureName},
    {"featureVersion", &Config::GetFeatureVersion, &Config::SetFeatureVersion},
    {"oauth2ConsumerKey", &Config::GetOAuth2ConsumerKey, &Config::SetOAuth2ConsumerKey},
    {"oauth2ConsumerSecret", &Config::GetOAuth2ConsumerSecret, &Config::SetOAuth2ConsumerSecret},
    {"oauth2Scope", &Config::GetOAuth2AccessTokenScope, &Config::SetOAuth2AccessTokenScope},
};

WideSecret WideTextOf(Config const& configuration, Getter get)
{
    std::wstring text(static_cast<std::size_t>((configuration.*get)(nullptr, 0)), L'\0');
    (configuration.*get)(text.data(), static_cast<int>(text.size()) + 1);
    return WideSecret(std::move(text));
}

std::string TextOf(Config const& configuration, Getter get)
{
    return ToUtf8(*WideTextOf(configuration, get));
}

} // namespace

Config FromServer(ServerConfiguration const& server, int number)
{
    Config configuration;
    configuration.SetServer(WebServices::Server{number});
    configuration.SetConsumerKey(ToWide(server.clientId).c_str());
    configuration.SetOAuth2ConsumerKey(ToWide(server.clientId).c_str());
    configuration.SetOAuth2AccessTokenScope(ToWide(server.scopes).c_str());
    return configuration;
}

std::string ClientIdOf(Config const& configuration)
{
    std::string const id = TextOf(configuration, &Config::GetOAuth2ConsumerKey);
    return id.empty() ? TextOf(configuration, &Config::GetConsumerKey) : id;
}

std::string ScopesOf(Config const& configuration)
{
    return TextOf(configuration, &Config::GetOAuth2AccessTokenScope);
}

std::string ToJson(Config const& configuration)
{
    Json::Value json;
    json["server"] = static_cast<int>(configuration.GetServer());
    for (Field const& field : fields)
        json[field.key] = *Secret(TextOf(configuration, field.get));
    std::string text = WriteJson(json);
    WipeJson(json);
    return text;
}

bool FromJson(std::string const& text, Config& configuration)
{
    std::string reason;
    Json::Value json = ParseJsonObject(text, reason);
    if (!json.isObject())
        return false;
    if (json["server"].isInt())
        configuration.SetServer(WebServices::Server{json["server"].asInt()});
    for (Field const& field : fields)
        if (json[field.key].isString())
            (configuration.*
             field.set)(WideSecret(ToWide(*Secret(json[field.key].asString())))->c_str());
    WipeJson(json);
    return true;
}

bool AreEqual(Config const& left, Config const& right)
{
    return left.GetServer() == right.GetServer() &&
           std::all_of(std::begin(fields), std::end(fields), [&](Field const& field) {
               return *WideTextOf(left, field.get) == *WideTextOf(right, field.get);
           });
}

} // namespace Halvorix::OpenId
