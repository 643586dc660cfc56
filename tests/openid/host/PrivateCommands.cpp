#include <SSOClientPrivate.h>
#include <WebServicesConfiguration.h>

#include "openid/host/Commands.h"

using namespace Halvorix;
using namespace Halvorix::WebServices;
using Halvorix::SSOServices::SSOClientPrivate;

namespace {

Server ServerOf(Arguments& in) { return Server{in.Number()}; }

void AddAddresses(Commands& commands)
{
    commands["Private.GetUrl"] = [](Arguments& in) {
        return Utf8(SSOClientPrivate::GetUrl(in.WideRest()));
    };
    commands["Private.GetUrl.code"] = [](Arguments& in) {
        return Utf8(SSOClientPrivate::GetUrl(WebServicesUrlCode{in.Number()}));
    };
    commands["Private.GetUrlOverrides"] = [](Arguments& in) {
        Json::Value answer(Json::objectValue);
        for (auto const& [name, url] : SSOClientPrivate::GetUrlOverrides(ServerOf(in)))
            answer[Utf8(name)] = Utf8(url);
        return answer;
    };
    commands["Private.SetUrlOverrides"] = [](Arguments& in) {
        Server const server = ServerOf(in);
        std::map<std::wstring, std::wstring> overrides;
        for (std::string name = in.Word(); !name.empty(); name = in.Word())
            overrides[Wide(name)] = Wide(in.Word());
        return SSOClientPrivate::SetUrlOverrides(server, overrides);
    };
    commands["Private.ClearUrlOverrides"] = [](Arguments& in) {
        return SSOClientPrivate::ClearUrlOverrides(ServerOf(in));
    };
    commands["Private.ServerToServerName"] = [](Arguments& in) {
        return Utf8(SSOClientPrivate::ServerToServerName(ServerOf(in)));
    };
    commands["Private.ServerNameToServer"] = [](Arguments& in) {
        return static_cast<int>(SSOClientPrivate::ServerNameToServer(in.WideRest()));
    };
}

void AddFiles(Commands& commands)
{
    commands["Private.GetSettingsPath"] = [](Arguments&) {
        return Utf8(SSOClientPrivate::GetSettingsPath());
    };
    commands["Private.GetLoginStateFile"] = [](Arguments&) {
        return Utf8(SSOClientPrivate::GetLoginStateFile());
    };
    commands["Private.GetLoginStateCacheFile"] = [](Arguments& in) {
        return Utf8(SSOClientPrivate::GetLoginStateCacheFile(L"user", ServerOf(in)));
    };
    commands["Private.GetLoginStateCacheFile.flag"] = [](Arguments& in) {
        return Utf8(SSOClientPrivate::GetLoginStateCacheFile(L"user", ServerOf(in), true));
    };
    commands["Private.LockLoginStateFile"] = [](Arguments&) {
        SSOClientPrivate::LockLoginStateFile();
        return Json::Value();
    };
    commands["Private.UnlockLoginStateFile"] = [](Arguments&) {
        SSOClientPrivate::UnlockLoginStateFile();
        return Json::Value();
    };
}

void AddConfigurations(Commands& commands)
{
    commands["Private.GetCurrentConfigurationConsumerKey"] = [](Arguments&) {
        std::wstring key = L"old", secret = L"old";
        SSOClientPrivate::GetCurrentConfigurationConsumerKey(key, secret);
        Json::Value answer;
        answer["key"] = Utf8(key);
        answer["secret"] = Utf8(secret);
        return answer;
    };
    // There and back; null for a text that is none.
    commands["Private.ToJsonString"] = [](Arguments& in) {
        WebServicesConfiguration configuration;
        bool const read = SSOClientPrivate::FromJsonString(&configuration, in.Rest());
        return read ? Json::Value(SSOClientPrivate::ToJsonString(&configuration)) : Json::Value();
    };
    commands["Private.ToJsonString.null"] = [](Arguments&) {
        return SSOClientPrivate::ToJsonString(nullptr);
    };
    commands["Private.FromJsonString"] = [](Arguments& in) {
        WebServicesConfiguration configuration;
        return SSOClientPrivate::FromJsonString(&configuration, in.Rest());
    };
    commands["Private.Equals"] = [](Arguments& in) {
        WebServicesConfiguration left, right;
        SSOClientPrivate::FromJsonString(&left, in.Word());
        SSOClientPrivate::FromJsonString(&right, in.Word());
        return SSOClientPrivate::Equals(left, right);
    };
}

void AddServerProcess(Commands& commands)
{
    commands["Private.FreezeSSOServerProcess"] = [](Arguments&) {
        return SSOClientPrivate::FreezeSSOServerProcess(nullptr);
    };
    commands["Private.GetKillFrozenServerTimeout"] = [](Arguments&) {
        return Json::Int64(SSOClientPrivate::GetKillFrozenServerTimeout().count());
    };
    commands["Private.SetKillFrozenServerTimeout"] = [](Arguments& in) {
        return SSOClientPrivate::SetKillFrozenServerTimeout(std::chrono::seconds(in.Number()));
    };
    commands["Private.StartSSOServerProcess"] = [](Arguments&) {
        long long id = 7;
        return SSOClientPrivate::StartSSOServerProcess({"-x"}, std::chrono::milliseconds(1), id);
    };
    commands["Private.GetSSOServerProcessArguments"] = [](Arguments&) {
        std::vector<std::string> arguments;
        return SSOClientPrivate::GetSSOServerProcessArguments(arguments);
    };
    commands["Private.SetSSOServerProcessArguments"] = [](Arguments&) {
        SSOClientPrivate::SetSSOServerProcessArguments({"-x"});
        return Json::Value();
    };
    commands["Private.GetSSOServerName"] = [](Arguments&) {
        char name[99] = "";
        SSOClientPrivate::GetSSOServerName(name, 99);
        return Json::Value(name);
    };
    commands["Private.GetSSOEventServerName"] = [](Arguments&) {
        return SSOClientPrivate::GetSSOEventServerName(nullptr, 0);
    };
}

} // namespace

void AddPrivate(Commands& commands)
{
    AddAddresses(commands);
    AddFiles(commands);
    AddConfigurations(commands);
    AddServerProcess(commands);

    commands["Private.GetLoginInfo"] = [](Arguments&) {
        return Utf8(SSOClientPrivate::GetLoginInfo(nullptr));
    };
    commands["Private.GetSessionState"] = [](Arguments&) {
        return SSOClientPrivate::GetSessionState();
    };
    commands["Private.RestoreLogin"] = [](Arguments& in) {
        return SSOClientPrivate::RestoreLogin(in.Flag());
    };
    commands["Private.Encrypt"] = [](Arguments& in) {
        return Utf8(SSOClientPrivate::Encrypt(in.WideRest()));
    };
    commands["Private.Ping"] = [](Arguments&) {
        std::map<std::string, std::string> details;
        Json::Value answer;
        answer["result"] = SSOClientPrivate::Ping(details);
        for (auto const& [name, text] : details)
            answer[name] = text;
        return answer;
    };
    commands["Private.RaiseEvent"] = [](Arguments& in) {
        auto const event = WebServicesPrivateCore::WebServicesEvent{in.Number()};
        SSOClientPrivate::RaiseEvent(event, in.Flag());
        return Json::Value();
    };
    commands["Private.ClearEventQueue"] = [](Arguments&) {
        SSOClientPrivate::ClearEventQueue();
        return Json::Value();
    };
    commands["Private.GetActiveOAuth2TokenRefreshRetrySchedule"] = [](Arguments&) {
        auto const schedule = SSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule();
        return schedule.first == 0 && schedule.second.empty() ? "none" : "some";
    };
    commands["Private.SetOAuth2TokenRefreshRetrySchedule"] = [](Arguments&) {
        return SSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule({1, {{2, 3}}});
    };
    commands["Private.GetProductName"] = [](Arguments&) {
        return Utf8(SSOClientPrivate::GetProductName().c_str());
    };
    commands["Private.SetProductName"] = [](Arguments& in) {
        SSOClientPrivate::SetProductName(in.WideRest());
        return Json::Value();
    };
}
