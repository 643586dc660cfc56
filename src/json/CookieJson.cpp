// SSOServicesPrivate: cookies and cookie jars.

#include <memory>
#include <utility>

#include <json/value.h>

#include <SSOServicesPrivate.h>
#include "json/JsonDocument.h"
#include "json/SecretDocument.h"
#include "support/SecretText.h"
#include "support/TextConversion.h"
#include "types/NetworkCookieRecords.h"

using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;

// Name and value are bytes and undergo no conversion, unlike domain and path.
bool SSOServicesPrivate::NetworkCookieToJson(NetworkCookie const& cookie, Json::Value& json)
{
    json["Name"] = cookie.record->name;
    json["Value"] = *cookie.record->value;
    json["Domain"] = WideToUtf8(cookie.record->domain);
    json["Path"] = WideToUtf8(cookie.record->path);
    json["IsSecure"] = cookie.record->secure;
    json["IsHttpOnly"] = cookie.record->httpOnly;
    json["ExpiryDate"] = Json::Int64{cookie.record->expiryDate};
    return true;
}

bool SSOServicesPrivate::NetworkCookieToJson(NetworkCookie const& cookie, std::string& text)
{
    Wipe(text);
    SecretDocument json;
    NetworkCookieToJson(cookie, *json);
    text = WriteJsonDocument(*json);
    return true;
}

// Each key replaces its field at once, so that an exception leaves the earlier
// ones read.
bool SSOServicesPrivate::JsonToNetworkCookie(Json::Value const& json, NetworkCookie& cookie)
{
    if (json.isNull())
        return false;
    cookie.record->name = json["Name"].asString();
    cookie.record->value = json["Value"].asString();
    cookie.record->domain = WideText(json["Domain"]);
    cookie.record->path = WideText(json["Path"]);
    cookie.record->secure = json["IsSecure"].asBool();
    cookie.record->httpOnly = json["IsHttpOnly"].asBool();
    cookie.record->expiryDate = json["ExpiryDate"].asInt64();
    return true;
}

bool SSOServicesPrivate::JsonToNetworkCookie(char const* text, NetworkCookie& cookie)
{
    SecretDocument json;
    return ParseJsonDocument(text, *json) && JsonToNetworkCookie(*json, cookie);
}

bool SSOServicesPrivate::NetworkCookieJarToJson(NetworkCookieJar const& jar, Json::Value& json)
{
    SecretDocument cookies(Json::arrayValue);
    for (std::unique_ptr<NetworkCookie> const& cookie : jar.record->cookies)
        NetworkCookieToJson(*cookie, cookies->append(Json::Value()));
    Json::Value& member = json["Cookies"];
    member = Json::Value(); // what was there is the caller's, and not to be wiped
    member = std::move(*cookies);
    return true;
}

bool SSOServicesPrivate::NetworkCookieJarToJson(NetworkCookieJar const& jar, std::string& text)
{
    Wipe(text);
    SecretDocument json;
    NetworkCookieJarToJson(jar, *json);
    text = WriteJsonDocument(*json);
    return true;
}

bool SSOServicesPrivate::JsonToNetworkCookieJar(Json::Value const& json, NetworkCookieJar& jar)
{
    if (json.isNull())
        return false;
    // Emptied before the document is looked at, on purpose.
    jar.DeleteAll();
    Json::Value const& cookies = json["Cookies"];
    jar.record->cookies.reserve(cookies.size());
    for (Json::Value const& member : cookies) {
        // A member that is null gives a default cookie, so that the counts agree.
        auto cookie = std::make_unique<NetworkCookie>();
        JsonToNetworkCookie(member, *cookie);
        jar.record->cookies.push_back(std::move(cookie));
    }
    return true;
}

bool SSOServicesPrivate::JsonToNetworkCookieJar(char const* text, NetworkCookieJar& jar)
{
    SecretDocument json;
    return ParseJsonDocument(text, *json) && JsonToNetworkCookieJar(*json, jar);
}
