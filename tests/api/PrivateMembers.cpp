#include "api/MemberWalk.h"

#include <map>

#include <SSOClientPrivate.h>
#include "framework/Secrets.h"
#include "framework/System.h"

using namespace Halvorix::WebServices;
using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::StdUtil::RetrySchedule;

namespace MemberWalk {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

std::string const empty = "''";

template <class Text>
std::string ShownMap(std::map<Text, Text> const& texts)
{
    std::string shown;
    for (auto const& [name, value] : texts)
        shown += (shown.empty() ? "" : " ") + Shown(name) + "=" + Shown(value);
    return "{" + shown + "}";
}

std::string ShownList(std::vector<std::string> const& texts)
{
    std::string shown;
    for (std::string const& text : texts)
        shown += (shown.empty() ? "" : " ") + Shown(text);
    return "[" + shown + "]";
}

std::string ShownSchedule(RetrySchedule const& schedule)
{
    std::string shown = std::to_string(schedule.first) + ":";
    for (Halvorix::StdUtil::RetryScheduleEntry const& entry : schedule.second)
        shown += " " + std::to_string(entry.first) + "/" + std::to_string(entry.second);
    return shown;
}

Member Text(std::string const& name, std::wstring (*function)())
{
    return {"SSOClientPrivate::" + name + "()",
            [function] { return Told(function()); },
            empty,
            "'ISSOClientPrivate::" + name + "'",
            {"ISSOClientPrivate::" + name + "()"}};
}

Member Command(std::string const& name, void (*function)())
{
    return {"SSOClientPrivate::" + name + "()",
            [function] {
                function();
                return Returned;
            },
            Returned,
            Returned,
            {"ISSOClientPrivate::" + name + "()"}};
}

Member PathOfTheLibrary(std::string const& name, std::wstring (*function)(),
                        std::string const& alone, std::string const& asked)
{
    return {"SSOClientPrivate::" + name + "()",
            [function] { return Told(function()); },
            Shown(alone),
            Shown(asked),
            {}};
}

} // namespace

std::vector<Member> PathMembers()
{
    std::string const module = Rig::ModuleName("RecordingPlugin");
    std::string const openssl = Rig::ModuleName("openssl");
    return {
        {"SSOClientPrivate::SetSSOClientConfigFileOverride(std::wstring)",
         [] {
             SSOClientPrivate::SetSSOClientConfigFileOverride(L"nowhere");
             SSOClientPrivate::SetSSOClientConfigFileOverride(L"elsewhere");
             return Told(SSOClientPrivate::GetSSOClientConfigFileOverride());
         },
         "'elsewhere'",
         "'elsewhere'",
         {}},
        {"SSOClientPrivate::GetSSOClientConfigFileOverride()",
         [] {
             std::wstring const set = SSOClientPrivate::GetSSOClientConfigFileOverride();
             SSOClientPrivate::SetSSOClientConfigFileOverride(L"");
             return Told(set, SSOClientPrivate::GetSSOClientConfigFileOverride());
         },
         "'elsewhere', ''",
         "'elsewhere', ''",
         {}},
        PathOfTheLibrary("GetSSOClientConfigFile", SSOClientPrivate::GetSSOClientConfigFile,
                         "SSOClient.config", "{root}/app/SSOClient.config"),
        PathOfTheLibrary("GetSSOServerAppPath", SSOClientPrivate::GetSSOServerAppPath, "",
                         "{root}/server"),
        PathOfTheLibrary("GetSSOServerAppExeDirPath", SSOClientPrivate::GetSSOServerAppExeDirPath,
                         "", "{root}/server"),
        PathOfTheLibrary("GetSSOClientPluginModule", SSOClientPrivate::GetSSOClientPluginModule, "",
                         "{root}/server/plugin/" + module),
        PathOfTheLibrary("GetOpenSslModule", SSOClientPrivate::GetOpenSslModule, "",
                         "{root}/server/openssl/" + openssl),
        OfTheLibrary(
            "SSOClientPrivate::ExpandPathVariables(std::wstring&)",
            [] {
                std::wstring known = LR"(%exepath%\sub//dir/)";
                std::wstring unknown = L"%Unknown%/x";
                bool const first = SSOClientPrivate::ExpandPathVariables(known);
                bool const second = SSOClientPrivate::ExpandPathVariables(unknown);
                return Told(first, known, second, unknown);
            },
            "true, '{root}/app/sub/dir', true, '%Unknown%/x'"),
        OfTheLibrary(
            "SSOClientPrivate::GetModuleDirPath(std::wstring const&)",
            [] {
                std::string const file = Rig::MappedLibraryFile();
                return Told(
                    SSOClientPrivate::GetModuleDirPath(std::wstring(file.begin(), file.end())),
                    SSOClientPrivate::GetModuleDirPath(L"NotLoadedAnywhere.dll"));
            },
            "'{root}/lib', ''"),
        // Its folder is the system's on Windows; it is the same with a plugin.
        OfTheLibrary(
            "SSOClientPrivate::GetLogFile()",
            [] {
                std::wstring const file = SSOClientPrivate::GetLogFile();
                std::wstring const end = L"/Halvorix/Web Services/Log/WebServices.log";
                bool const ends = file.size() > end.size() &&
                                  file.compare(file.size() - end.size(), end.size(), end) == 0;
                return Told(ends, file.find(L'\\') == std::wstring::npos);
            },
            "true, true"),
    };
}

std::vector<Member> PrivateMembers()
{
    return {
        {"SSOClientPrivate::GetLoginInfo(BufferTransformCallback)",
         [] { return Told(SSOClientPrivate::GetLoginInfo(Callback)); },
         empty,
         "'ISSOClientPrivate::GetLoginInfo'",
         {"ISSOClientPrivate::GetLoginInfo(86)"}},
        {"SSOClientPrivate::GetUrl(WebServicesUrlCode)",
         [] { return Told(SSOClientPrivate::GetUrl(static_cast<WebServicesUrlCode>(11))); },
         empty,
         "'ISSOClientPrivate::GetUrl'",
         {"ISSOClientPrivate::GetUrl(11)"}},
        {"SSOClientPrivate::GetUrl(std::wstring)",
         [] { return Told(SSOClientPrivate::GetUrl(L"url")); },
         empty,
         "'ISSOClientPrivate::GetUrl'",
         {R"(ISSOClientPrivate::GetUrl("url"))"}},
        {"SSOClientPrivate::GetUrlOverrides(Server)",
         [] { return ShownMap(SSOClientPrivate::GetUrlOverrides(static_cast<Server>(12))); },
         "{}",
         "{'name'='ISSOClientPrivate::GetUrlOverrides'}",
         {"ISSOClientPrivate::GetUrlOverrides(12)"}},
        {"SSOClientPrivate::SetUrlOverrides(Server, std::map<std::wstring, std::wstring> const&)",
         [] {
             return Told(SSOClientPrivate::SetUrlOverrides(static_cast<Server>(13),
                                                           {{L"a", L"one"}, {L"b", L"two"}}));
         },
         "false",
         "true",
         {R"(ISSOClientPrivate::SetUrlOverrides(13, {"a":"one","b":"two"}))"}},
        {"SSOClientPrivate::ClearUrlOverrides(Server)",
         [] { return Told(SSOClientPrivate::ClearUrlOverrides(static_cast<Server>(14))); },
         "false",
         "true",
         {"ISSOClientPrivate::ClearUrlOverrides(14)"}},
        {"SSOClientPrivate::ServerToServerName(Server)",
         [] { return Told(SSOClientPrivate::ServerToServerName(static_cast<Server>(15))); },
         empty,
         "'ISSOClientPrivate::ServerToServerName'",
         {"ISSOClientPrivate::ServerToServerName(15)"}},
        {"SSOClientPrivate::ServerNameToServer(std::wstring)",
         [] { return Told(SSOClientPrivate::ServerNameToServer(L"server")); },
         "-1",
         "6",
         {R"(ISSOClientPrivate::ServerNameToServer("server"))"}},
        // The same text reaches the plugin, not a copy.
        {"SSOClientPrivate::Encrypt(std::wstring const&)",
         [] {
             static std::wstring const text = Rig::Secrets::Wide(Rig::Secrets::ClearText);
             AddressOf("plain text", &text);
             return Told(SSOClientPrivate::Encrypt(text));
         },
         empty,
         "'ISSOClientPrivate::Encrypt'",
         {R"(ISSOClientPrivate::Encrypt(")" + std::string(Rig::Secrets::ClearText) +
          R"(", {plain text}))"}},
        {"SSOClientPrivate::GetCurrentConfigurationConsumerKey(std::wstring&, std::wstring&)",
         [] {
             std::wstring key = L"old key";
             std::wstring secret = L"old secret";
             SSOClientPrivate::GetCurrentConfigurationConsumerKey(key, secret);
             return Told(key, secret);
         },
         "'', ''",
         "'key', 'secret'",
         {R"(ISSOClientPrivate::GetCurrentConfigurationConsumerKey("", ""))"}},
        Text("GetSettingsPath", SSOClientPrivate::GetSettingsPath),
        Text("GetLoginStateFile", SSOClientPrivate::GetLoginStateFile),
        {"SSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule()",
         [] { return ShownSchedule(SSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule()); },
         "0:",
         "21: 22/23 24/25",
         {"ISSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule()"}},
        {"SSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule(RetrySchedule const&)",
         [] {
             RetrySchedule schedule;
             schedule.first = -5000000004;
             schedule.second = {{26, -27}, {5000000005, 28}, {29, 30}};
             return Told(SSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule(schedule));
         },
         "false",
         "true",
         {"ISSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule(-5000000004, "
          R"(["26 -27","5000000005 28","29 30"]))"}},
        {"SSOClientPrivate::GetLoginStateCacheFile(std::wstring, Server, bool)",
         [] {
             std::wstring const first =
                 SSOClientPrivate::GetLoginStateCacheFile(L"one", static_cast<Server>(16), true);
             return Told(first, SSOClientPrivate::GetLoginStateCacheFile(
                                    L"two", static_cast<Server>(17), false));
         },
         "'', ''",
         "'ISSOClientPrivate::GetLoginStateCacheFile', 'ISSOClientPrivate::GetLoginStateCacheFile'",
         {R"(ISSOClientPrivate::GetLoginStateCacheFile("one", 16, true))",
          R"(ISSOClientPrivate::GetLoginStateCacheFile("two", 17, false))"}},
        {"SSOClientPrivate::GetLoginStateCacheFile(std::wstring, Server)",
         [] {
             return Told(
                 SSOClientPrivate::GetLoginStateCacheFile(L"three", static_cast<Server>(18)));
         },
         empty,
         "'ISSOClientPrivate::GetLoginStateCacheFile'",
         {R"(ISSOClientPrivate::GetLoginStateCacheFile("three", 18))"}},
        {"SSOClientPrivate::RestoreLogin(bool)",
         [] {
             bool const first = SSOClientPrivate::RestoreLogin(true);
             return Told(first, SSOClientPrivate::RestoreLogin(false));
         },
         "false, false",
         "true, true",
         {"ISSOClientPrivate::RestoreLogin(true)", "ISSOClientPrivate::RestoreLogin(false)"}},
        {"SSOClientPrivate::RaiseEvent(WebServicesPrivateCore::WebServicesEvent, bool)",
         [] {
             using Event = WebServicesPrivateCore::WebServicesEvent;
             SSOClientPrivate::RaiseEvent(static_cast<Event>(-2000000001), true);
             SSOClientPrivate::RaiseEvent(static_cast<Event>(2000000002), false);
             return Returned;
         },
         Returned,
         Returned,
         {"ISSOClientPrivate::RaiseEvent(-2000000001, true)",
          "ISSOClientPrivate::RaiseEvent(2000000002, false)"}},
        {"SSOClientPrivate::ToJsonString(WebServicesConfiguration const*)",
         [] {
             static WebServicesConfiguration configuration;
             AddressOf("written configuration", &configuration);
             configuration.SetConsumerKey(L"written");
             return Told(SSOClientPrivate::ToJsonString(&configuration));
         },
         empty,
         "'ISSOClientPrivate::ToJsonString'",
         {R"(ISSOClientPrivate::ToJsonString("written", {written configuration}))"}},
        {"SSOClientPrivate::FromJsonString(WebServicesConfiguration*, std::string const&)",
         [] {
             static WebServicesConfiguration configuration;
             AddressOf("read configuration", &configuration);
             configuration.SetConsumerKey(L"before");
             bool const answer = SSOClientPrivate::FromJsonString(&configuration, "document");
             return Told(answer, configuration);
         },
         "false, 0 ConsumerKey=before",
         "true, 0 ConsumerKey=ISSOClientPrivate::FromJsonString",
         {R"(ISSOClientPrivate::FromJsonString("before", {read configuration}, "document"))"}},
        {"SSOClientPrivate::Equals(WebServicesConfiguration const&, WebServicesConfiguration "
         "const&)",
         [] {
             static WebServicesConfiguration left;
             static WebServicesConfiguration right;
             AddressOf("left configuration", &left);
             AddressOf("right configuration", &right);
             left.SetConsumerKey(L"left");
             right.SetConsumerKey(L"right");
             bool const different = SSOClientPrivate::Equals(left, right);
             return Told(different, SSOClientPrivate::Equals(left, left));
         },
         "false, false",
         "true, true",
         {"ISSOClientPrivate::Equals("
          R"("left", {left configuration}, "right", {right configuration}))",
          "ISSOClientPrivate::Equals("
          R"("left", {left configuration}, "left", {left configuration}))"}},
        Command("LockLoginStateFile", SSOClientPrivate::LockLoginStateFile),
        Command("UnlockLoginStateFile", SSOClientPrivate::UnlockLoginStateFile),
        {"SSOClientPrivate::Ping(std::map<std::string, std::string>&)",
         [] {
             std::map<std::string, std::string> answers{{"question", "mine"}};
             bool const answer = SSOClientPrivate::Ping(answers);
             return Told(answer) + ", " + ShownMap(answers);
         },
         "false, {'question'='mine'}",
         "true, {'answer'='ISSOClientPrivate::Ping' 'question'='mine'}",
         {R"(ISSOClientPrivate::Ping({"question":"mine"}))"}},
        {"SSOClientPrivate::Ping()",
         [] { return Told(SSOClientPrivate::Ping()); },
         "false",
         "true",
         {"ISSOClientPrivate::Ping({})"}},
        Command("ClearEventQueue", SSOClientPrivate::ClearEventQueue),
        {"SSOClientPrivate::FreezeSSOServerProcess(BufferTransformCallback)",
         [] { return Told(SSOClientPrivate::FreezeSSOServerProcess(Callback)); },
         "false",
         "true",
         {"ISSOClientPrivate::FreezeSSOServerProcess(86)"}},
        {"SSOClientPrivate::GetKillFrozenServerTimeout()",
         [] { return Told(SSOClientPrivate::GetKillFrozenServerTimeout().count()); },
         "0",
         "31",
         {"ISSOClientPrivate::GetKillFrozenServerTimeout()"}},
        {"SSOClientPrivate::SetKillFrozenServerTimeout(std::chrono::seconds)",
         [] {
             bool const least = SSOClientPrivate::SetKillFrozenServerTimeout(seconds::min());
             return Told(least, SSOClientPrivate::SetKillFrozenServerTimeout(seconds::max()));
         },
         "false, false",
         "true, true",
         {"ISSOClientPrivate::SetKillFrozenServerTimeout(-9223372036854775808)",
          "ISSOClientPrivate::SetKillFrozenServerTimeout(9223372036854775807)"}},
        {"SSOClientPrivate::GetSessionState()",
         [] { return Told(SSOClientPrivate::GetSessionState()); },
         empty,
         "'ISSOClientPrivate::GetSessionState'",
         {"ISSOClientPrivate::GetSessionState()"}},
        {"SSOClientPrivate::StartSSOServerProcess(std::vector<std::string> const&, "
         "std::chrono::milliseconds, long long&)",
         [] {
             std::vector<std::string> const arguments{"--one", "", "--two"};
             long long id = -41;
             bool const answer =
                 SSOClientPrivate::StartSSOServerProcess(arguments, milliseconds(5000000006), id);
             return Told(answer, id);
         },
         "false, -41",
         "true, 6000000001",
         {R"(ISSOServerManager::StartSSOServerProcess(["--one","","--two"], 5000000006, -41))"}},
        {"SSOClientPrivate::GetSSOServerProcessArguments(std::vector<std::string>&)",
         [] {
             std::vector<std::string> arguments{"old", "older"};
             bool const answer = SSOClientPrivate::GetSSOServerProcessArguments(arguments);
             return Told(answer) + ", " + ShownList(arguments);
         },
         "false, ['old' 'older']",
         "true, ['ISSOServerManager::GetSSOServerProcessArguments']",
         {R"(ISSOServerManager::GetSSOServerProcessArguments(["old","older"]))"}},
        {"SSOClientPrivate::SetSSOServerProcessArguments(std::vector<std::string> const&)",
         [] {
             SSOClientPrivate::SetSSOServerProcessArguments({"new", "newer"});
             return Returned;
         },
         Returned,
         Returned,
         {R"(ISSOServerManager::SetSSOServerProcessArguments(["new","newer"]))"}},
        {"SSOClientPrivate::GetSSOServerName(char*, int)",
         [] {
             Room<char> room(41);
             int const whole = SSOClientPrivate::GetSSOServerName(nullptr, -5);
             int const length = SSOClientPrivate::GetSSOServerName(room.Data(), room.Capacity());
             return Told(whole, length, room);
         },
         "0, 0, untouched",
         "35, " + Filled("ISSOServerManager::GetSSOServerName"),
         {"ISSOServerManager::GetSSOServerName(-5)", "ISSOServerManager::GetSSOServerName(41)"}},
        {"SSOClientPrivate::GetSSOEventServerName(char*, int)",
         [] {
             Room<char> room(18);
             int const length =
                 SSOClientPrivate::GetSSOEventServerName(room.Data(), room.Capacity());
             return Told(length, room);
         },
         "0, untouched",
         Filled("ISSOServerManager"),
         {"ISSOServerManager::GetSSOEventServerName(18)"}},
        // What lies behind the terminator is the plugin's array as it was.
        {"SSOClientPrivate::GetProductName()",
         [] {
             std::wstring const name = SSOClientPrivate::GetProductName();
             return Told(name.size(), name.c_str());
         },
         "0, ''",
         "256, 'ISSOClientModule::GetProductName'",
         {"ISSOClientModule::GetProductName(256)"}},
        {"SSOClientPrivate::SetProductName(std::wstring const&)",
         [] {
             SSOClientPrivate::SetProductName(L"product");
             return Returned;
         },
         Returned,
         Returned,
         {R"(ISSOClientModule::SetProductName("product"))"}},
    };
}

} // namespace MemberWalk
