#include <gmock/gmock.h>

#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include <WebServicesManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "host/Expected.h"

using namespace Halvorix::WebServices;
using Rig::Error;
using Rig::Info;
using Rig::Installation;
using Rig::Outcome;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

namespace {

/// The calls of the plugin behind the load and without the factory's getters.
std::vector<std::string> PublicCalls(Outcome const& outcome)
{
    std::vector<std::string> calls;
    for (std::string const& call : outcome.calls)
        if (call.compare(0, 18, "ISSOClientFactory:") != 0)
            calls.push_back(call);
    constexpr std::ptrdiff_t callsOfTheLoad = 6;
    if (calls.size() >= callsOfTheLoad)
        calls.erase(calls.begin(), calls.begin() + callsOfTheLoad);
    return calls;
}

std::string SpecDocument(int type, std::string const& scope)
{
    return R"({\n\t\"legacy\" : false,\n\t\"scope\" : \")" + scope + R"(\",\n\t\"type\" : )" +
           std::to_string(type) + R"(\n})";
}

HOST_PROGRAM(UsesTheManagerWithoutInitialize)
{
    report("uninitialize", WebServicesManager::Uninitialize());
    report("initialized", WebServicesManager::IsInitialized());
    report("instance", WebServicesManager::GetInstance() != nullptr);
}

HOST_PROGRAM(CountsItsCalls)
{
    report("first", WebServicesManager::Initialize(false));
    WebServicesManager* const instance = WebServicesManager::GetInstance();
    report("second", WebServicesManager::Initialize(true));
    report("sameInstance", WebServicesManager::GetInstance() == instance);
    report("undone", WebServicesManager::Uninitialize());
    report("stillInstance", WebServicesManager::GetInstance() == instance);
    report("stillInitialized", WebServicesManager::IsInitialized());
    report("last", WebServicesManager::Uninitialize());
    report("instance", WebServicesManager::GetInstance() != nullptr);
    report("initialized", WebServicesManager::IsInitialized());
    report("oneTooMany", WebServicesManager::Uninitialize());
    report("again", WebServicesManager::Initialize(true, true));
    report("againInitialized", WebServicesManager::IsInitialized());
    WebServicesManager::Uninitialize();
    report("plain", WebServicesManager::Initialize());
}

HOST_PROGRAM(UsesWhatHasNoFunction)
{
    WebServicesManager::EnableLog(false);
    WebServicesManager::Initialize();
    WebServicesManager* const manager = WebServicesManager::GetInstance();
    report("log", manager->IsLogEnabled());
    manager->SetCachePath(L"mine");
    wchar_t path[64] = {};
    report("length", manager->GetCachePath(path, 64));
    report("path", path);
}

HOST_PROGRAM(SetsSearchPathsFirst)
{
    WebServicesManager::SetSupportFileSearchPaths(
        std::wstring(arguments[0].begin(), arguments[0].end()).c_str());
    wchar_t paths[16] = {};
    report("length", WebServicesManager::GetSupportFileSearchPaths(paths, 16));
    report("paths", paths);
}

} // namespace

TEST(WebServicesManager, DoesNotLoadThePluginToUndoNothing)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("UsesTheManagerWithoutInitialize");
    EXPECT_EQ(outcome["uninitialize"], true);
    EXPECT_EQ(outcome["initialized"], false);
    EXPECT_EQ(outcome["instance"], false);
    EXPECT_TRUE(outcome.calls.empty());
    EXPECT_TRUE(outcome.log.empty());
    EXPECT_TRUE(outcome.console.empty());
}

TEST(WebServicesManager, TellsThePluginOfTheFirstAndTheLastCall)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("CountsItsCalls");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    for (char const* const yes :
         {"first", "second", "sameInstance", "undone", "stillInstance", "stillInitialized", "last",
          "oneTooMany", "again", "againInitialized", "plain"})
        EXPECT_EQ(outcome[yes], true) << yes;
    EXPECT_EQ(outcome["instance"], false);
    EXPECT_EQ(outcome["initialized"], false);
    EXPECT_THAT(PublicCalls(outcome), ElementsAre("ISSOClientModule::Initialize(false, false)",
                                                  "ISSOClientModule::Uninitialize()",
                                                  // The second flag of the host goes nowhere.
                                                  "ISSOClientModule::Initialize(true, false)",
                                                  "ISSOClientModule::Uninitialize()",
                                                  "ISSOClientModule::Initialize(false, false)"));
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 1);
}

TEST(WebServicesManager, CountsTheSameWithoutAPlugin)
{
    Installation installation;
    Outcome const outcome = installation.Run("CountsItsCalls");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    for (char const* const yes :
         {"first", "second", "sameInstance", "undone", "stillInstance", "stillInitialized", "last",
          "oneTooMany", "again", "againInitialized", "plain"})
        EXPECT_EQ(outcome[yes], true) << yes;
    EXPECT_EQ(outcome["instance"], false);
}

TEST(WebServicesManager, LeavesLogAndCachePathToThePlugin)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("UsesWhatHasNoFunction");
    EXPECT_EQ(outcome["log"], true);
    EXPECT_EQ(outcome["length"], 24);
    EXPECT_EQ(outcome["path"], "ISSOClient::GetCachePath");
    EXPECT_THAT(PublicCalls(outcome), Not(Contains(StartsWith("ISSOClient::SetCachePath"))));
}

TEST(WebServicesManager, SearchesTheSupportPathsInTheLoadThatTheySetOff)
{
    Installation installation;
    installation.Complete().Remove("app/SSOClient.config");
    installation.ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})", "second");
    std::string const paths = installation.Text("first") + ";;" + installation.Text("second");
    Outcome const outcome = installation.Run("SetsSearchPathsFirst", {paths});
    EXPECT_EQ(outcome.LoggedAt(Info, "Searching for client config file SSOClient.config in the "
                                     "following paths:\n{root}/app\n{root}/lib\n{root}/first\n"
                                     "{root}/second"),
              1);
    EXPECT_EQ(outcome.LoggedAt(Info, "Found client config file at {root}/second/SSOClient.config"),
              1);
    EXPECT_THAT(PublicCalls(outcome),
                ElementsAre("ISSOClientModule::SetSupportFileSearchPaths(\"{root}/first;;{root}/"
                            "second\")",
                            "ISSOClientModule::GetSupportFileSearchPaths(16)"));
    EXPECT_EQ(outcome["length"], 15);
    EXPECT_EQ(outcome["paths"], "ISSOClientModul");
}

TEST(WebServicesManager, SearchesForAServerThatItsOwnSupportPathsName)
{
    Installation installation;
    installation.Complete();
    Outcome const outcome = installation.Run("SetsSearchPathsFirst", {"%SSOServerAppPath%"});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    // Each time that the list is resolved, with the names still unread.
    std::string const search =
        "Searching for SSO server app  in the following paths:\n{root}/lib\n{root}/app";
    EXPECT_EQ(outcome.LoggedAt(Info, search), 2);
    ASSERT_GT(outcome.log.size(), 3u);
    EXPECT_EQ(outcome.log[1].text, search);
    EXPECT_EQ(outcome.log[2].text, "Searching for client config file SSOClient.config in the "
                                   "following paths:\n{root}/app\n{root}/lib\n"
                                   "%SSOServerAppPath%");
    EXPECT_EQ(outcome.log[3].text, search);
    EXPECT_EQ(outcome.LoggedAt(Info, "Found SSO server app at {root}/server/HxSSO.exe"), 1);
}

TEST(WebServicesManager, TakesAnEmptyTextForNoSupportPaths)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("SetsSearchPathsFirst", {std::string()});
    EXPECT_EQ(outcome.LoggedAt(Info, "Searching for client config file SSOClient.config in the "
                                     "following paths:\n{root}/app\n{root}/lib"),
              1);
    EXPECT_EQ(outcome.Called("ISSOClientModule::SetSupportFileSearchPaths(\"\")"), 1);
}

namespace {

int Callback(char const*, int, char*, int, void*) { return 0; }

std::wstring TextOf(OAuth2Token const& token)
{
    return std::wstring(token.GetToken()) + L"|" + std::to_wstring(token.GetSpec().GetType());
}

HOST_PROGRAM(AsksForATokenFromACold)
{
    WebServicesManager::Initialize(false);
    WebServicesManager* const manager = WebServicesManager::GetInstance();
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"user:profile data:read");
    OAuth2Token token;
    SSOServicesPrivate::Initialize(token, L"before", OAuth2TokenSpec());
    report.Try("call", [&] {
        report("answer", manager->GetOAuth2AccessToken(spec, token, Callback, true));
    });
    report("token", TextOf(token));
    report("callback", reinterpret_cast<std::uintptr_t>(&Callback));
}

HOST_PROGRAM(UsesEverySpecCall)
{
    OAuth2TokenSpec const spec(static_cast<OAuth2TokenType>(2), L"b a");
    OAuth2TokenSpec const other(static_cast<OAuth2TokenType>(3), L"c");
    report("initialize", WebServicesManager::Initialize(spec));
    report("again", WebServicesManager::Initialize(other));
    WebServicesManager* const manager = WebServicesManager::GetInstance();
    report("enable", manager->EnableOAuth2(spec));
    report("refresh", manager->RefreshOAuth2Token(spec, true));
    report("expired", manager->IsOAuth2TokenExpired(spec));
    report("expiry", manager->GetOAuth2TokenExpiryDate(spec));
    report("available", manager->IsOAuth2TokenAvailable(spec));
    report("enablePlain", manager->EnableOAuth2(false));
    report("refreshPlain", manager->RefreshOAuth2Token(false));
    report("expiredPlain", manager->IsOAuth2TokenExpired());
    report("expiryPlain", manager->GetOAuth2TokenExpiryDate());
    report("availablePlain", manager->IsOAuth2TokenAvailable());
    wchar_t buffer[8] = L"before";
    report("text", manager->GetOAuth2AccessToken(buffer, 8, nullptr, false));
    report("buffer", buffer);
}

} // namespace

TEST(TokenRoad, BringsTheTokenFromAColdStart)
{
    Installation installation;
    installation.Complete().Script(
        "ISSOClient::GetOAuth2AccessToken",
        R"({"text": "{\"OAuth2AccessToken\": \"t\\u00f6ken\", \"OAuth2TokenSpec\": {\"type\": 9}}"})");
    Outcome const outcome = installation.Run("AsksForATokenFromACold");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["answer"], true);
    EXPECT_EQ(outcome["token"], "töken|9");
    EXPECT_THAT(PublicCalls(outcome),
                ElementsAre("ISSOClientModule::Initialize(false, false)",
                            "ISSOClient::GetOAuth2AccessToken(\"" +
                                SpecDocument(1, "data:read user:profile") + "\", true, " +
                                outcome["callback"].asString() + ", true)"));
}

TEST(TokenRoad, AnswersFalseWithoutAPlugin)
{
    Installation installation;
    Outcome const outcome = installation.Run("AsksForATokenFromACold");
    EXPECT_EQ(outcome["answer"], false);
    EXPECT_EQ(outcome["token"], "before|1");
}

TEST(TokenRoad, HandsSpecsToThePluginAsDocuments)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("UsesEverySpecCall");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    std::string const spec = "\"" + SpecDocument(2, "a b") + "\"";
    EXPECT_THAT(
        PublicCalls(outcome),
        ElementsAre(
            "ISSOClientModule::Initialize(" + spec + ")", "ISSOClient::EnableOAuth2(" + spec + ")",
            "ISSOClient::RefreshOAuth2Token(" + spec + ", true)",
            "ISSOClient::IsOAuth2TokenExpired(" + spec + ")",
            "ISSOClient::GetOAuth2TokenExpiryDate(" + spec + ")",
            "ISSOClient::IsOAuth2TokenAvailable(" + spec + ")", "ISSOClient::EnableOAuth2(false)",
            "ISSOClient::RefreshOAuth2Token(false)", "ISSOClient::IsOAuth2TokenExpired()",
            "ISSOClient::GetOAuth2TokenExpiryDate()", "ISSOClient::IsOAuth2TokenAvailable()",
            "ISSOClient::GetOAuth2AccessToken(8, 0, false)"));
    EXPECT_EQ(outcome["expiry"], Json::Int64(4000000003));
    EXPECT_EQ(outcome["expiryPlain"], Json::Int64(4000000004));
    EXPECT_EQ(outcome["text"], 7);
    EXPECT_EQ(outcome["buffer"], "ISSOCli");
}

TEST(TokenRoad, GivesTheFixedAnswersWithoutAPlugin)
{
    Installation installation;
    Outcome const outcome = installation.Run("UsesEverySpecCall");
    EXPECT_EQ(outcome["initialize"], true);
    for (char const* const no : {"enable", "refresh", "expired", "available", "enablePlain",
                                 "refreshPlain", "expiredPlain", "availablePlain"})
        EXPECT_EQ(outcome[no], false) << no;
    for (char const* const zero : {"expiry", "expiryPlain", "text"})
        EXPECT_EQ(outcome[zero], 0) << zero;
    EXPECT_EQ(outcome["buffer"], "before");
}
