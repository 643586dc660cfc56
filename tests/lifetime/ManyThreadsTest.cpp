#include <atomic>
#include <fstream>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <SSOServerManager.h>
#include <WebServicesManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "host/Expected.h"

using namespace Halvorix::WebServices;
using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::SSOServices::SSOServerManager;
using Rig::Installation;
using Rig::Outcome;

namespace {

bool ReadsAText()
{
    wchar_t text[64] = {};
    int const length = WebServicesManager::GetInstance()->GetUserId(text, 64);
    return length > 0 && std::wstring(text) == L"ISSOClient::GetUserId";
}

bool GetsAToken()
{
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"user:profile data:read");
    OAuth2Token token;
    return WebServicesManager::GetInstance()->GetOAuth2AccessToken(spec, token, nullptr, false) &&
           std::wstring(token.GetToken()) == L"token";
}

bool CompletesALogin()
{
    NetworkCookie cookie;
    cookie.SetName("name");
    NetworkCookieJar jar;
    jar.AddCookie(cookie);
    return WebServicesManager::GetInstance()->CompleteLogin(jar);
}

/// How many of so many calls bring back what the plugin answers.
int CallsAnswered(int count)
{
    int answered = 0;
    for (int i = 0; i < count; ++i) {
        bool const good[] = {
            WebServicesManager::GetInstance()->IsLoggedIn(),
            ReadsAText(),
            GetsAToken(),
            CompletesALogin(),
            SSOClientPrivate::GetSessionState() == "ISSOClientPrivate::GetSessionState",
            SSOServerManager::IsSSOServerProcessReady(),
        };
        for (bool const isGood : good)
            answered += isGood ? 1 : 0;
    }
    return answered;
}

HOST_PROGRAM(CallsFromManyThreadsAndReadsPaths)
{
    constexpr int threadCount = 16;
    constexpr int rounds = 250;
    std::wstring const library(arguments[0].begin(), arguments[0].end());
    WebServicesManager::Initialize();
    std::atomic<int> answered{0};
    std::atomic<int> running{threadCount};
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&] {
            answered += CallsAnswered(rounds);
            --running;
        });
    int paths = 0;
    int right = 0;
    std::wstring const folder = SSOClientPrivate::GetModuleDirPath(library);
    do {
        std::wstring path = L"%ExePath%/deeper";
        paths += 2;
        right += SSOClientPrivate::ExpandPathVariables(path) && path.size() > 16 ? 1 : 0;
        right += SSOClientPrivate::GetModuleDirPath(library) == folder ? 1 : 0;
    } while (running > 0);
    for (std::thread& thread : threads)
        thread.join();
    report("missing", threadCount * rounds * 6 - answered);
    report("folder", folder);
    report("paths", paths);
    report("wrongPaths", paths - right);
}

} // namespace

TEST(ManyThreads, GetTheirAnswersWhileOneReadsPathsUnderTheLock)
{
    Installation installation;
    installation.Complete().Quiet().Script(
        "ISSOClient::GetOAuth2AccessToken",
        R"({"text": "{\"OAuth2AccessToken\": \"token\", \"OAuth2TokenSpec\": {\"type\": 1}}"})");
    Outcome const outcome =
        installation.Run("CallsFromManyThreadsAndReadsPaths", {Rig::LibraryName()});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_FALSE(outcome.ending.timedOut);
    EXPECT_EQ(outcome["missing"], 0);
    EXPECT_EQ(outcome["folder"], "{root}/lib");
    EXPECT_GT(outcome["paths"].asInt(), 1);
    EXPECT_EQ(outcome["wrongPaths"], 0);
    EXPECT_EQ(outcome.errors, "");
}

namespace {

/// Calls that stay in the plugin until the test releases them, one of each
/// interface that a public call reaches without dialogs.
std::vector<std::function<void()>> BlockingCalls()
{
    return {
        [] { WebServicesManager::GetInstance()->IsLoggedIn(); },
        [] { SSOClientPrivate::GetSessionState(); },
        [] { SSOServerManager::IsSSOServerProcessReady(); },
        [] { SSOClientPrivate::SetProductName(L"name"); },
    };
}

std::filesystem::path Waiting(std::string const& release)
{
    return std::filesystem::u8path(release + ".waiting");
}

HOST_PROGRAM(CallsWhileEveryInterfaceIsBusy)
{
    WebServicesManager::Initialize();
    std::vector<std::future<void>> blocked;
    std::size_t i = 0;
    for (std::function<void()> const& call : BlockingCalls()) {
        blocked.push_back(std::async(std::launch::async, call));
        while (!std::filesystem::exists(Waiting(arguments[i])))
            std::this_thread::yield();
        ++i;
    }
    // Other operations of the same interfaces, and a whole life of the manager.
    std::future<bool> const others = std::async(std::launch::async, [] {
        WebServicesManager::Initialize();
        WebServicesManager::Uninitialize();
        return WebServicesManager::GetInstance()->IsTokenExpired() && SSOClientPrivate::Ping() &&
               SSOServerManager::GetSSOServerAppFile(nullptr, 0) > 0 &&
               !SSOClientPrivate::GetProductName().empty();
    });
    report("inTime", others.wait_for(std::chrono::seconds(15)) == std::future_status::ready);
    int stillBlocked = 0;
    for (std::future<void> const& call : blocked)
        stillBlocked +=
            call.wait_for(std::chrono::seconds(0)) == std::future_status::timeout ? 1 : 0;
    report("stillBlocked", stillBlocked);
    for (std::string const& release : arguments)
        std::ofstream(std::filesystem::u8path(release)) << "go on";
    for (std::future<void> const& call : blocked)
        call.wait();
}

} // namespace

TEST(ManyThreads, AreNotHeldUpByOperationsThatTakeTheirTime)
{
    Installation installation;
    installation.Complete();
    std::vector<std::string> releases;
    for (char const* const operation :
         {"ISSOClient::IsLoggedIn", "ISSOClientPrivate::GetSessionState",
          "ISSOServerManager::IsSSOServerProcessReady", "ISSOClientModule::SetProductName"}) {
        std::string const release = "release" + std::to_string(releases.size());
        installation.Script(operation, R"({"wait": "{root}/)" + release + R"("})");
        releases.push_back(installation.Text(release));
    }
    Outcome const outcome = installation.Run("CallsWhileEveryInterfaceIsBusy", releases);
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["inTime"], true);
    EXPECT_EQ(outcome["stillBlocked"], 4);
    EXPECT_EQ(outcome["program"], "returned");
}
