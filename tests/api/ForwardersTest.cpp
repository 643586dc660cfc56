#include <exception>
#include <locale>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include <NetworkCookie.h>
#include <SSOClientPrivate.h>
#include <SSOServerManager.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include "api/MemberWalk.h"
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/Scripts.h"
#include "framework/Secrets.h"

using namespace Halvorix::WebServices;
using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::SSOServices::SSOServerManager;
using Halvorix::WebServicesUI::WebServicesUIManager;
using MemberWalk::Room;
using MemberWalk::Shown;
using MemberWalk::Told;
using Rig::Error;
using Rig::Info;
using Rig::Installation;
using Rig::Outcome;
using testing::IsEmpty;

namespace {

std::wstring Wide(std::string const& text) { return std::wstring(text.begin(), text.end()); }

HOST_PROGRAM(AsksForProductNames)
{
    Rig::WithEachScript(arguments, [&](std::string const& prefix) {
        std::wstring const name = SSOClientPrivate::GetProductName();
        report(prefix + "size", name.size());
        report(prefix + "begin", Shown(name.substr(0, 6)));
    });
}

} // namespace

TEST(SSOClientPrivate, CountsTheProductNameBySignAlone)
{
    struct {
        char const* action;
        int size;
        char const* begin; // up to the terminator, with it
    } const cases[] = {{R"({"text": "Mercy"})", 256, R"('Mercy\0')"},
                       {R"({"text": "Mercy", "answer": 1})", 256, R"('Mercy\0')"},
                       {R"({"text": "Mercy", "answer": 2000})", 256, R"('Mercy\0')"},
                       {R"({"text": "Mercy", "answer": 0})", 0, "''"},
                       {R"({"text": "Mercy", "answer": -1})", 0, "''"}};
    std::vector<std::string> actions;
    for (auto const& one : cases)
        actions.emplace_back(one.action);
    Outcome const outcome =
        Rig::RunWithActions("AsksForProductNames", {"ISSOClientModule::GetProductName"}, actions);
    for (std::size_t i = 0; i < actions.size(); ++i) {
        std::string const prefix = std::to_string(i) + ".";
        EXPECT_EQ(outcome[prefix + "size"], cases[i].size) << actions[i];
        EXPECT_EQ(outcome[prefix + "begin"], cases[i].begin) << actions[i];
    }
    EXPECT_EQ(outcome.Called("ISSOClientModule::GetProductName(256)"), 5);
}

namespace {

HOST_PROGRAM(PingsBothWays)
{
    std::map<std::string, std::string> answers;
    report("with", SSOClientPrivate::Ping(answers));
    report("details", answers["answer"]);
    report("without", SSOClientPrivate::Ping());
}

} // namespace

TEST(SSOClientPrivate, PingsTheSameWithAndWithoutDetails)
{
    Installation installation;
    installation.Complete();
    for (bool const answer : {true, false}) {
        Outcome const outcome =
            installation
                .Script("ISSOClientPrivate::Ping", answer ? R"({"answer": 1, "text": "pong"})"
                                                          : R"({"answer": 0, "text": "pong"})")
                .Run("PingsBothWays");
        EXPECT_EQ(outcome["with"], answer);
        EXPECT_EQ(outcome["details"], "pong");
        EXPECT_EQ(outcome["without"], answer);
        // Both begin with an empty map: nothing of the first call is left.
        EXPECT_EQ(outcome.Called("ISSOClientPrivate::Ping({})"), 2);
    }
}

namespace {

using Question = std::wstring (*)();

std::vector<std::pair<char const*, Question>> const questions{
    {"GetSSOServerAppPath", SSOClientPrivate::GetSSOServerAppPath},
    {"GetSSOServerAppExeDirPath", SSOClientPrivate::GetSSOServerAppExeDirPath},
    {"GetSSOClientPluginModule", SSOClientPrivate::GetSSOClientPluginModule},
    {"GetOpenSslModule", SSOClientPrivate::GetOpenSslModule},
    {"GetSSOClientConfigFile", SSOClientPrivate::GetSSOClientConfigFile},
    {"GetSSOClientConfigFileOverride", SSOClientPrivate::GetSSOClientConfigFileOverride},
    {"GetLogFile", SSOClientPrivate::GetLogFile},
    {"ExpandPathVariables",
     [] {
         std::wstring path = L"%ExePath%";
         SSOClientPrivate::ExpandPathVariables(path);
         return path;
     }},
    {"GetModuleDirPath", [] { return SSOClientPrivate::GetModuleDirPath(L"none"); }},
};

std::wstring Ask(std::string const& name)
{
    for (auto const& [known, question] : questions)
        if (name == known)
            return question();
    throw std::invalid_argument(name);
}

HOST_PROGRAM(AsksFromACold)
{
    bool const before = std::locale() == std::locale::classic();
    Ask(arguments[0]);
    report("makesAManager", before && std::locale() != std::locale::classic());
    SSOClientPrivate::SetSSOClientConfigFileOverride(Wide(arguments[1]));
    report("override", SSOClientPrivate::GetSSOClientConfigFileOverride());
    report("file", SSOClientPrivate::GetSSOClientConfigFile());
}

struct OwnView {
    char const* question;
    bool makesAManager;
    bool readsTheConfiguration;
};

} // namespace

class OwnViewAsked : public testing::TestWithParam<OwnView> {};

TEST_P(OwnViewAsked, LoadsNoPluginAndReadsTheConfigurationWhereToldTo)
{
    Installation installation;
    installation.Complete().ClientConfig("{}", "elsewhere");
    Outcome const outcome = installation.Run(
        "AsksFromACold", {GetParam().question, installation.Text("elsewhere/SSOClient.config")});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_THAT(outcome.calls, IsEmpty());
    EXPECT_EQ(outcome["makesAManager"], GetParam().makesAManager);
    std::string const mine = "{root}/elsewhere/SSOClient.config";
    std::string const found = "{root}/app/SSOClient.config";
    bool const refused = GetParam().readsTheConfiguration;
    EXPECT_EQ(outcome["override"], refused ? "" : mine);
    EXPECT_EQ(outcome["file"], refused ? found : mine);
    EXPECT_EQ(outcome.OnConsole("Failed to set client config file override " + mine +
                                " since client config file " + found + " is already loaded"),
              refused ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(SSOClientPrivate, OwnViewAsked,
                         testing::Values(OwnView{"GetSSOServerAppPath", true, true},
                                         OwnView{"GetSSOServerAppExeDirPath", true, true},
                                         OwnView{"GetSSOClientPluginModule", true, true},
                                         OwnView{"GetOpenSslModule", true, true},
                                         OwnView{"GetSSOClientConfigFile", true, false},
                                         OwnView{"GetSSOClientConfigFileOverride", true, false},
                                         OwnView{"GetLogFile", false, false},
                                         OwnView{"ExpandPathVariables", true, false},
                                         OwnView{"GetModuleDirPath", true, false}),
                         [](auto const& info) { return std::string(info.param.question); });

namespace {

HOST_PROGRAM(OverridesTwice)
{
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"first");
    SSOClientPrivate::SetSSOClientConfigFileOverride(Wide(arguments[0]));
    report("override", SSOClientPrivate::GetSSOClientConfigFileOverride());
    report("state", SSOClientPrivate::GetSessionState());
    // Refused, though nothing was found where it points to.
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"third");
    report("afterwards", SSOClientPrivate::GetSSOClientConfigFileOverride());
}

} // namespace

TEST(SSOClientPrivate, KeepsTheLastOverrideBeforeTheLoad)
{
    Installation installation;
    installation.Complete().Remove("app/SSOClient.config");
    installation.ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})", "second");
    Outcome const outcome =
        installation.Run("OverridesTwice", {installation.Text("second/SSOClient.config")});
    std::string const second = "{root}/second/SSOClient.config";
    EXPECT_EQ(outcome["override"], second);
    EXPECT_EQ(outcome["state"], "ISSOClientPrivate::GetSessionState");
    EXPECT_EQ(outcome["afterwards"], second);
    EXPECT_EQ(outcome.LoggedAt(Info, "Client config file override set to first"), 1);
    EXPECT_EQ(outcome.LoggedAt(Info, "Client config file override set to " + second), 1);
    EXPECT_EQ(outcome.LoggedAt(Error, "Failed to set client config file override third since "
                                      "client config file " +
                                          second + " is already loaded"),
              1);
}

TEST(SSOClientPrivate, TakesALoadThatFailedForALoad)
{
    Installation installation;
    Outcome const outcome = installation.Run("OverridesTwice", {"missing"});
    EXPECT_EQ(outcome["state"], "");
    EXPECT_EQ(outcome["afterwards"], "missing");
    EXPECT_EQ(outcome.OnConsole("Failed to set client config file override third since client "
                                "config file missing is already loaded"),
              1);
}

namespace {

HOST_PROGRAM(AsksForTheServersFiles)
{
    report("path", SSOClientPrivate::GetSSOServerAppPath());
    report("length", SSOServerManager::GetSSOServerAppFile(nullptr, 0));
    report("exeLength", SSOServerManager::GetSSOServerAppExeFile(nullptr, 0));
    Room<wchar_t> room(100);
    report("stored", SSOServerManager::GetSSOServerAppFile(room.Data(), room.Capacity()));
    report("room", room.Text());
    for (int const capacity : {5, 4, 3, 1, 0, -1}) {
        Room<wchar_t> small(capacity < 0 ? 0 : capacity);
        int const answer = SSOServerManager::GetSSOServerAppExeFile(small.Data(), capacity);
        report("capacity" + std::to_string(capacity), Told(answer, small));
    }
}

} // namespace

TEST(SSOServerManager, KnowsNoFileWithoutAPluginThoughTheServerIsThere)
{
    Installation installation;
    Outcome const outcome =
        installation.ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})")
            .ServerApp()
            .Run("AsksForTheServersFiles");
    EXPECT_EQ(outcome["path"], "{root}/server");
    EXPECT_EQ(outcome["length"], 0);
    EXPECT_EQ(outcome["exeLength"], 0);
    EXPECT_EQ(outcome["stored"], 0);
    EXPECT_EQ(outcome["room"], "untouched");
}

TEST(SSOServerManager, AppliesTheRuleOfTextBuffersToThePluginsFiles)
{
    Installation installation;
    Outcome const outcome =
        installation.Complete()
            .Script("ISSOServerManager::GetSSOServerAppFile", R"({"text": "the plugin's own"})")
            .Script("ISSOServerManager::GetSSOServerAppExeFile", R"({"text": "abc"})")
            .Run("AsksForTheServersFiles");
    EXPECT_EQ(outcome["path"], "{root}/server");
    EXPECT_EQ(outcome["length"], 16);
    EXPECT_EQ(outcome["exeLength"], 3);
    EXPECT_EQ(outcome["stored"], 16);
    EXPECT_EQ(outcome["room"], R"('the plugin's own\0')");
    EXPECT_EQ(outcome["capacity5"], R"(3, 'abc\0')");
    EXPECT_EQ(outcome["capacity4"], R"(3, 'abc\0')");
    EXPECT_EQ(outcome["capacity3"], R"(2, 'ab\0')");
    EXPECT_EQ(outcome["capacity1"], R"(0, '\0')");
    EXPECT_EQ(outcome["capacity0"], "0, untouched");
    EXPECT_EQ(outcome["capacity-1"], "0, untouched");
}

namespace {

HOST_PROGRAM(LogsOutWithoutABuffer)
{
    // An instance of the host's own beside a manager object that was released.
    WebServicesManager::Initialize();
    WebServicesUIManager::Initialize();
    WebServicesUIManager::Uninitialize();
    NetworkCookieJar jar;
    jar.AddCookie(NetworkCookie());
    Room<wchar_t> room(4);
    WebServicesManager* const manager = WebServicesManager::GetInstance();
    report("null", manager->InitiateLogout(nullptr, 4, jar, nullptr));
    report("zero", manager->InitiateLogout(room.Data(), 0, jar, nullptr));
    report("negative", manager->InitiateLogout(room.Data(), -1, jar, nullptr));
    report("room", room.Text());
    report("jar", Shown(jar));
}

} // namespace

TEST(WebServicesManager, RefusesALogoutWithoutABufferAndLoadsNothing)
{
    Installation installation;
    Outcome const outcome = installation.Complete()
                                .Script("ISSOClient::InitiateLogout", R"({"text": "{}"})")
                                .Run("LogsOutWithoutABuffer");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    for (char const* const no : {"null", "zero", "negative"})
        EXPECT_EQ(outcome[no], false) << no;
    EXPECT_EQ(outcome["room"], "untouched");
    EXPECT_EQ(outcome["jar"], "[=;;;;;0]");
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 1);
    EXPECT_EQ(outcome.Called("ISSOClientFactory::GetSSOClient()"), 0);
}

namespace {

HOST_PROGRAM(CompletesALogin)
{
    WebServicesManager::Initialize();
    NetworkCookieJar jar;
    report("empty", WebServicesManager::GetInstance()->CompleteLogin(jar));
    NetworkCookie cookie;
    cookie.SetName("n\xC3\xA4");
    cookie.SetValue(Rig::Secrets::CookieValue);
    cookie.SetDomain(L"d\u00E4");
    jar.AddCookie(NetworkCookie());
    jar.AddCookie(cookie);
    report("filled", WebServicesManager::GetInstance()->CompleteLogin(jar));
}

std::string CookieText(std::string const& name, std::string const& domain, std::string const& value)
{
    std::string const next = R"(\n\t\t\t)";
    return R"(\n\t\t{)" + next + R"(\"Domain\" : \")" + domain + R"(\",)" + next +
           R"(\"ExpiryDate\" : 0,)" + next + R"(\"IsHttpOnly\" : false,)" + next +
           R"(\"IsSecure\" : false,)" + next + R"(\"Name\" : \")" + name + R"(\",)" + next +
           R"(\"Path\" : \"\",)" + next + R"(\"Value\" : \")" + value + R"(\"\n\t\t})";
}

} // namespace

TEST(WebServicesManager, HandsTheCookiesOfALoginOnAsADocument)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("CompletesALogin");
    EXPECT_EQ(outcome["empty"], true);
    EXPECT_EQ(outcome["filled"], true);
    EXPECT_EQ(outcome.Called(R"(ISSOClient::CompleteLogin("{\n\t\"Cookies\" : []\n}"))"), 1);
    // The writer escapes what is no ASCII.
    EXPECT_EQ(outcome.Called(R"(ISSOClient::CompleteLogin("{\n\t\"Cookies\" : \n\t[)" +
                             CookieText("", "", "") + "," +
                             CookieText(R"(n\\u00e4)", R"(d\\u00e4)", Rig::Secrets::CookieValue) +
                             R"(\n\t]\n}"))"),
              1)
        << testing::PrintToString(outcome.calls);
}

namespace {

HOST_PROGRAM(GetsAConfigurationWithoutInitialize)
{
    // As every other call does, it reaches the plugin though there is no object.
    WebServicesConfiguration const& configuration =
        WebServicesManager::GetInstance()->GetConfiguration();
    report("configuration", Shown(configuration));
}

HOST_PROGRAM(KeepsTheConfigurationWithoutAPlugin)
{
    WebServicesManager::Initialize();
    WebServicesManager* const manager = WebServicesManager::GetInstance();
    WebServicesConfiguration const& configuration = manager->GetConfiguration();
    WebServicesConfiguration given;
    given.SetConsumerKey(L"key");
    given.SetServer(static_cast<Server>(3));
    report("set", manager->SetConfiguration(given));
    report("same", &manager->GetConfiguration() == &configuration);
    report("configuration", Shown(manager->GetConfiguration()));
}

} // namespace

TEST(WebServicesManager, GivesThePluginsConfigurationBeforeInitialize)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("GetsAConfigurationWithoutInitialize");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["configuration"], "0 ConsumerKey=ISSOClient::GetConfiguration");
}

TEST(WebServicesManager, GivesAnEmptyConfigurationWithoutAPluginWhateverWasSet)
{
    Installation installation;
    Outcome const outcome = installation.Run("KeepsTheConfigurationWithoutAPlugin");
    EXPECT_EQ(outcome["set"], false);
    EXPECT_EQ(outcome["same"], true);
    EXPECT_EQ(outcome["configuration"], "0");
}

namespace {

HOST_PROGRAM(WorksOnAfterAnException)
{
    WebServicesManager::Initialize();
    report.Try("throws", [&] { report("url", SSOClientPrivate::GetUrl(L"name")); });
    report.Try("throwsANumber", [&] { report("ping", SSOClientPrivate::Ping()); });
    // Needs the lock, an interface, and the one that threw.
    std::wstring path = L"%ExePath%";
    SSOClientPrivate::ExpandPathVariables(path);
    report("path", path);
    report("state", SSOClientPrivate::GetSessionState());
    report("loggedIn", WebServicesManager::GetInstance()->IsLoggedIn());
    report("uninitialize", WebServicesManager::Uninitialize());
}

} // namespace

TEST(Exceptions, OfThePluginLeaveTheLibraryWorking)
{
    Installation installation;
    Outcome const outcome = installation.Complete()
                                .Script("ISSOClientPrivate::GetUrl", R"({"throw": "no such name"})")
                                .Script("ISSOClientPrivate::Ping", R"({"throw": 5})")
                                .Script("ISSOClientPrivate::GetSessionState", R"({"probe": 20})")
                                .Run("WorksOnAfterAnException");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["throws"], "threw no such name");
    EXPECT_TRUE(outcome["url"].isNull());
    EXPECT_EQ(outcome["throwsANumber"], "threw something else");
    EXPECT_TRUE(outcome["ping"].isNull());
    EXPECT_EQ(outcome["path"], "{root}/app");
    EXPECT_EQ(outcome["state"], "ISSOClientPrivate::GetSessionState");
    EXPECT_EQ(outcome.Called(R"(LockIsFree("ISSOClientPrivate::GetSessionState", true))"), 1);
    EXPECT_EQ(outcome["loggedIn"], true);
    EXPECT_EQ(outcome["uninitialize"], true);
}
