#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <WebServicesConfiguration.h>
#include <WebServicesManager.h>

#include "openid/host/Commands.h"

using namespace Halvorix::WebServices;
using Halvorix::SSOServices::SSOClientPrivate;

namespace {

WebServicesManager& Manager() { return *WebServicesManager::GetInstance(); }

Json::Value AsJson(WebServicesConfiguration const& configuration)
{
    return SSOClientPrivate::ToJsonString(&configuration);
}

void AddLife(Commands& commands)
{
    commands["Initialize"] = [](Arguments& in) {
        return WebServicesManager::Initialize(in.Flag());
    };
    commands["Initialize.spec"] = [](Arguments& in) {
        auto const type = static_cast<OAuth2TokenType>(in.Number());
        return WebServicesManager::Initialize(OAuth2TokenSpec(type, in.WideRest().c_str()));
    };
    commands["Uninitialize"] = [](Arguments&) { return WebServicesManager::Uninitialize(); };
    commands["IsInitialized"] = [](Arguments&) { return WebServicesManager::IsInitialized(); };
    commands["GetSupportFileSearchPaths"] = [](Arguments&) {
        return TextOf(&WebServicesManager::GetSupportFileSearchPaths);
    };
    commands["SetSupportFileSearchPaths"] = [](Arguments& in) {
        WebServicesManager::SetSupportFileSearchPaths(in.WideRest().c_str());
        return Json::Value();
    };
    commands["IsLogEnabled"] = [](Arguments&) { return Manager().IsLogEnabled(); };
}

void AddCaches(Commands& commands)
{
    commands["GetConfiguration"] = [](Arguments&) { return AsJson(Manager().GetConfiguration()); };
    commands["SetConfiguration"] = [](Arguments& in) {
        WebServicesConfiguration configuration;
        return SSOClientPrivate::FromJsonString(&configuration, in.Rest()) &&
               Manager().SetConfiguration(configuration);
    };
    // The reference of before, read after another configuration was set.
    commands["GetConfiguration.kept"] = [](Arguments& in) {
        WebServicesConfiguration const& kept = Manager().GetConfiguration();
        WebServicesConfiguration other;
        SSOClientPrivate::FromJsonString(&other, in.Rest());
        Manager().SetConfiguration(other);
        return AsJson(kept);
    };
    commands["GetCachePath"] = [](Arguments&) {
        return TextOf([](wchar_t* to, int size) { return Manager().GetCachePath(to, size); });
    };
    commands["IsCacheEnabled"] = [](Arguments& in) {
        return Manager().IsCacheEnabled(CacheType{in.Number()});
    };
    commands["EnableCache"] = [](Arguments& in) {
        auto const type = CacheType{in.Number()};
        Manager().EnableCache(type, in.Flag());
        return Json::Value();
    };
    commands["IsCacheAvailable"] = [](Arguments& in) {
        return Manager().IsCacheAvailable(CacheType{in.Number()});
    };
    commands["InvalidateCache"] = [](Arguments& in) {
        Manager().InvalidateCache(CacheType{in.Number()});
        return Json::Value();
    };
    commands["GetServiceEntitlement"] = [](Arguments& in) {
        return static_cast<int>(Manager().GetServiceEntitlement(in.WideRest().c_str()));
    };
    commands["GetServiceEntitlementEx"] = [](Arguments&) {
        wchar_t* text = nullptr;
        bool const entitled = Manager().GetServiceEntitlementEx(text);
        Taken(text);
        return entitled;
    };
}

void AddServers(Commands& commands)
{
    commands["GetServer"] = [](Arguments&) { return static_cast<int>(Manager().GetServer()); };
    commands["SetServer"] = [](Arguments& in) { return Manager().SetServer(Server{in.Number()}); };
    commands["GetUrl"] = [](Arguments& in) {
        auto const code = WebServicesUrlCode{in.Number()};
        return TextOf([&](wchar_t* to, int size) { return Manager().GetUrl(code, to, size); });
    };
}

void AddProxies(Commands& commands)
{
    commands["GetProxyAuthenticationDialogText"] = [](Arguments&) {
        wchar_t title[9] = L"", text[9] = L"";
        return Manager().GetProxyAuthenticationDialogText(title, 9, text, 9);
    };
    commands["SetProxyAuthenticationDialogText"] = [](Arguments&) {
        Manager().SetProxyAuthenticationDialogText(L"title", L"text");
        return Json::Value();
    };
    commands["HasProxyAuthentication"] = [](Arguments& in) {
        std::wstring const host = Wide(in.Word());
        return Manager().HasProxyAuthentication(host.c_str(), in.Number());
    };
    commands["GetProxyAuthentication"] = [](Arguments& in) {
        std::wstring const host = Wide(in.Word());
        int const port = in.Number();
        wchar_t user[99] = L"", password[99] = L"";
        Json::Value answer;
        if (Manager().GetProxyAuthentication(host.c_str(), port, user, 99, password, 99, nullptr)) {
            answer["user"] = Utf8(user);
            answer["password"] = Utf8(password);
        }
        return answer;
    };
    commands["SetProxyAuthentication"] = [](Arguments& in) {
        std::wstring const host = Wide(in.Word());
        int const port = in.Number();
        std::wstring const user = Wide(in.Word());
        return Manager().SetProxyAuthentication(host.c_str(), port, user.c_str(),
                                                in.WideRest().c_str(), nullptr);
    };
    commands["HasProxyInfo"] = [](Arguments&) { return Manager().HasProxyInfo(); };
    commands["ClearProxyInfo"] = [](Arguments&) { return Manager().ClearProxyInfo(); };
}

void AddEvents(Commands& commands)
{
    // The library has no observer to give: what a host passes, the plugin may not look at.
    commands["AddObserver"] = [](Arguments&) {
        Manager().AddObserver(nullptr);
        return Json::Value();
    };
    commands["RemoveObserver"] = [](Arguments&) {
        Manager().RemoveObserver(nullptr);
        return Json::Value();
    };
    commands["HasEvent"] = [](Arguments&) { return Manager().HasEvent(); };
    commands["DispatchEvent"] = [](Arguments&) { return Manager().DispatchEvent(); };
}

} // namespace

void AddManager(Commands& commands)
{
    AddLife(commands);
    AddCaches(commands);
    AddServers(commands);
    AddProxies(commands);
    AddEvents(commands);
}
