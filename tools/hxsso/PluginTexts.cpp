#include "hxsso/PluginTexts.h"

#include <memory>

#include <json/reader.h>

#include <SSOClientPrivate.h>

#include "common/Report.h"
#include "hxsso/Text.h"

namespace Halvorix::HxSSO {

namespace {

using SSOServices::SSOClientPrivate;
using WebServices::WebServicesManager;

using Getter = int (WebServicesManager::*)(wchar_t*, int) const;

std::string TextOf(WebServicesManager const& manager, Getter get)
{
    int const length = (manager.*get)(nullptr, 0);
    if (length <= 0)
        return {};
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    int const stored = (manager.*get)(text.data(), length + 1);
    // It may have changed meanwhile.
    text.resize(static_cast<std::size_t>(stored < 0 ? 0 : stored < length ? stored : length));
    return ToUtf8(text);
}

Json::Value Object(std::string const& text)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    std::unique_ptr<Json::CharReader> const reader(builder.newCharReader());
    Json::Value value;
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &value, nullptr) &&
            value.isObject())
            return value;
    } catch (Json::Exception const&) { // nested too deeply
    }
    return {};
}

} // namespace

User UserOf(WebServicesManager const& manager)
{
    return {TextOf(manager, &WebServicesManager::GetLoginUserName),
            TextOf(manager, &WebServicesManager::GetUserNameW),
            TextOf(manager, &WebServicesManager::GetUserEmail),
            TextOf(manager, &WebServicesManager::GetUserId)};
}

std::string Described(User const& user)
{
    std::string const& which = user.email.empty() ? user.loginName : user.email;
    std::string text = user.name.empty() ? which : user.name;
    if (!which.empty() && text != which)
        text += " (" + which + ")";
    return text.empty() ? "a user without a name" : Tools::Presentable(text);
}

Json::Value AsJson(User const& user)
{
    Json::Value json;
    json["loginName"] = TextOrNull(user.loginName);
    json["userName"] = TextOrNull(user.name);
    json["email"] = TextOrNull(user.email);
    json["userId"] = TextOrNull(user.id);
    return json;
}

Json::Value TextOrNull(std::string const& text)
{
    return text.empty() ? Json::Value() : Json::Value(text);
}

Json::Value TimeOrNull(std::int64_t seconds)
{
    return seconds == 0 ? Json::Value() : Json::Value(AsTime(seconds));
}

std::string NameOfServer(WebServicesManager const& manager)
{
    return ToUtf8(SSOClientPrivate::ServerToServerName(manager.GetServer()));
}

std::string Issuer() { return ToUtf8(SSOClientPrivate::GetUrl(std::wstring(L"issuer"))); }

Json::Value SessionState() { return Object(SSOClientPrivate::GetSessionState()); }

Json::Value Claims() { return Object(ToUtf8(SSOClientPrivate::GetLoginInfo(nullptr))); }

std::string CacheFolder(WebServicesManager const& manager)
{
    return TextOf(manager, &WebServicesManager::GetCachePath);
}

} // namespace Halvorix::HxSSO
