#include "api/MemberWalk.h"

#include <cstring>
#include <iterator>
#include <utility>

#include <json/writer.h>

#include <SSOServicesPrivate.h>
#include "support/TextConversion.h"

using namespace Halvorix::WebServices;
using Halvorix::SSOServices::WideToUtf8;

namespace MemberWalk {

namespace {

std::string Escaped(std::string const& text)
{
    std::string escaped;
    for (char const unit : text) {
        if (unit == '\0')
            escaped += "\\0";
        else if (unit == '\n')
            escaped += "\\n";
        else if (unit == '\t')
            escaped += "\\t";
        else
            escaped += unit;
    }
    return escaped;
}

/// All of a value's text, from one of its getters.
template <class Unit, class Value>
std::basic_string<Unit> TextOf(Value const& value, int (Value::*getter)(Unit*, int) const)
{
    int const length = (value.*getter)(nullptr, 0);
    std::basic_string<Unit> text(static_cast<std::size_t>(length) + 1, Unit{'?'});
    (value.*getter)(text.data(), length + 1);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::vector<std::pair<std::string, std::uintptr_t>>& AddressTable()
{
    static std::vector<std::pair<std::string, std::uintptr_t>> table;
    return table;
}

} // namespace

Member OfTheLibrary(std::string const& name, std::function<std::string()> const& action,
                    std::string const& told)
{
    return {name, action, told, told, {}};
}

std::vector<Member> AllMembers()
{
    std::vector<Member> members;
    // What works before anything is loaded comes first.
    for (auto const& part :
         {PathMembers, WebServicesManagerMembers, PrivateMembers, ServerMembers, UIMembers,
          ConfigurationMembers, TokenMembers, CookieMembers, JsonMembers}) {
        std::vector<Member> more = part();
        std::move(more.begin(), more.end(), std::back_inserter(members));
    }
    return members;
}

void AddressOf(std::string const& name, void const* address)
{
    AddressTable().emplace_back(name, reinterpret_cast<std::uintptr_t>(address));
}

std::vector<std::pair<std::string, std::uintptr_t>> const& Addresses() { return AddressTable(); }

template <class Unit>
std::string Room<Unit>::Text() const
{
    auto const size = static_cast<std::size_t>(capacity);
    std::basic_string<Unit> const fence(guard, Fill);
    if (units.compare(0, guard, fence) != 0 || units.compare(guard + size, guard, fence) != 0)
        return "written outside";
    std::size_t const last = units.find_last_not_of(Fill);
    if (last == std::string::npos)
        return "untouched";
    return Shown(units.substr(guard, last + 1 - guard));
}

template class Room<char>;
template class Room<wchar_t>;

template <class Unit>
std::string Handed<Unit>::Text() const
{
    if (pointer == before)
        return "untouched";
    if constexpr (std::is_same_v<Unit, unsigned char>)
        return Shown(reinterpret_cast<char const*>(pointer));
    else
        return Shown(static_cast<Unit const*>(pointer));
}

template class Handed<wchar_t>;
template class Handed<unsigned char>;

std::string Shown(std::string const& text) { return "'" + Escaped(text) + "'"; }
std::string Shown(std::wstring const& text) { return Shown(WideToUtf8(text)); }

std::string Shown(char const* text) { return text == nullptr ? "null" : Shown(std::string(text)); }

std::string Shown(wchar_t const* text)
{
    return text == nullptr ? "null" : Shown(std::wstring(text));
}

std::string Shown(Json::Value const& value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

std::string Shown(WebServicesConfiguration const& configuration)
{
    std::string text = Shown(configuration.GetServer());
    auto const add = [&](char const* name,
                         int (WebServicesConfiguration::*getter)(wchar_t*, int) const) {
        std::wstring const value = TextOf(configuration, getter);
        if (!value.empty())
            text += std::string(" ") + name + "=" + WideToUtf8(value);
    };
    add("ConsumerKey", &WebServicesConfiguration::GetConsumerKey);
    add("ConsumerSecret", &WebServicesConfiguration::GetConsumerSecret);
    add("SerialNumber", &WebServicesConfiguration::GetSerialNumber);
    add("ProductLineCode", &WebServicesConfiguration::GetProductLineCode);
    add("CIPUserId", &WebServicesConfiguration::GetCIPUserId);
    add("UPIRelease", &WebServicesConfiguration::GetUPIRelease);
    add("UPIMaster", &WebServicesConfiguration::GetUPIMaster);
    add("UPIBuild", &WebServicesConfiguration::GetUPIBuild);
    add("FeatureName", &WebServicesConfiguration::GetFeatureName);
    add("FeatureVersion", &WebServicesConfiguration::GetFeatureVersion);
    add("OAuth2ConsumerKey", &WebServicesConfiguration::GetOAuth2ConsumerKey);
    add("OAuth2ConsumerSecret", &WebServicesConfiguration::GetOAuth2ConsumerSecret);
    add("OAuth2AccessTokenScope", &WebServicesConfiguration::GetOAuth2AccessTokenScope);
    return text;
}

std::string Shown(OAuth2TokenSpec const& spec)
{
    Json::Value document;
    SSOServicesPrivate::OAuth2TokenSpecToJson(spec, document);
    return Shown(spec.GetType()) + " " + Shown(TextOf(spec, &OAuth2TokenSpec::GetScope)) +
           (document["legacy"].asBool() ? " legacy" : "");
}

std::string Shown(OAuth2Token const& token)
{
    return Shown(token.GetToken()) + " of " + Shown(token.GetSpec());
}

std::string Shown(NetworkCookie const& cookie)
{
    return Escaped(TextOf(cookie, &NetworkCookie::GetName)) + "=" +
           Escaped(TextOf(cookie, &NetworkCookie::GetValue)) + ";" +
           WideToUtf8(TextOf(cookie, &NetworkCookie::GetDomain)) + ";" +
           WideToUtf8(TextOf(cookie, &NetworkCookie::GetPath)) + ";" +
           (cookie.IsSecure() ? "secure;" : ";") + (cookie.IsHttpOnly() ? "httpOnly;" : ";") +
           Shown(cookie.GetExpiryDate());
}

std::string Shown(NetworkCookieJar const& jar)
{
    std::string text = "[";
    for (int i = 0; i < jar.GetCookieCount(); ++i)
        text += (i > 0 ? " " : "") + Shown(jar.GetCookie(i));
    return text + "]";
}

std::string Filled(std::string const& text)
{
    return std::to_string(text.size()) + ", '" + text + "\\0'";
}

} // namespace MemberWalk
