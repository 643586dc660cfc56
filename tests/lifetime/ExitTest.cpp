// How a process may end: in each state of the library and in each way.

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <NetworkCookie.h>
#include <SSOClientPrivate.h>
#include <SSOServerManager.h>
#include <SSOServicesPrivate.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/Repetitions.h"
#include "framework/ThisBuild.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::SSOServices::SSOServicesManager;
using Halvorix::WebServices::IRsaCryptor;
using Halvorix::WebServices::NetworkCookie;
using Halvorix::WebServices::WebServicesManager;
using Halvorix::WebServicesUI::WebServicesUIManager;
using Rig::Installation;
using Rig::Outcome;

namespace {

constexpr int OwnStatus = 7;

/// "return" leaves it to main, which is to exit.
void EndBy(std::string const& ending)
{
    if (ending == "exit")
        std::exit(OwnStatus);
    if (ending == "quick")
        Rig::EndQuickly(OwnStatus);
    if (ending == "_Exit")
        std::_Exit(OwnStatus);
    if (ending == "thread")
        std::thread([] { std::exit(OwnStatus); }).join();
}

std::vector<std::string> Endings() { return {"return", "quick", "_Exit", "thread"}; }

/// Whether the destructors of the executable's statics run.
bool RunsDestructors(std::string const& ending) { return ending != "quick" && ending != "_Exit"; }

int StatusOf(std::string const& ending) { return ending == "return" ? 0 : OwnStatus; }

class CallsAtTheEnd {
public:
    CallsAtTheEnd() = default;
    ~CallsAtTheEnd()
    {
        Rig::Report report(Rig::Variable("HXSSO_REPORT"));
        std::wstring path = L"%ExePath%";
        report("pathAtTheEnd", SSOClientPrivate::ExpandPathVariables(path));
        report("stateAtTheEnd", SSOClientPrivate::GetSessionState());
    }
    CallsAtTheEnd(CallsAtTheEnd const&) = delete;
    CallsAtTheEnd& operator=(CallsAtTheEnd const&) = delete;
};

void BringTo(std::string const& state)
{
    if (state == "Asked" || state == "AskedWithStatics")
        SSOClientPrivate::GetSessionState();
    if (state == "Initialized" || state == "Released")
        WebServicesUIManager::Initialize();
    if (state == "Released")
        WebServicesUIManager::Uninitialize();
    if (state == "HeldByStatics")
        static std::shared_ptr<IRsaCryptor> const held = SSOServicesManager::GetRsaCryptor();
}

HOST_PROGRAM(EndsInAState)
{
    if (arguments[0] == "Statics" || arguments[0] == "AskedWithStatics")
        static CallsAtTheEnd const callsAtTheEnd;
    BringTo(arguments[0]);
    report("reached", arguments[0]);
    EndBy(arguments[1]);
}

void ExpectEnded(Outcome const& outcome, std::string const& ending)
{
    EXPECT_FALSE(outcome.ending.timedOut);
    EXPECT_FALSE(outcome.ending.crashed);
    EXPECT_EQ(outcome.ending.status, StatusOf(ending));
    EXPECT_EQ(outcome.errors, "");
}

} // namespace

class ProcessEnd : public testing::TestWithParam<char const*> {};

TEST_P(ProcessEnd, IsCleanWithAPlugin)
{
    std::string const state = GetParam();
    for (std::string const& ending : Endings()) {
        SCOPED_TRACE(ending);
        Installation installation;
        installation.Complete()
            .Script("GetSSOClientFactory", R"({"fresh": true})")
            .Script("ISSOClientModule::GetRsaCryptor", R"({"fresh": true})");
        Outcome const outcome = installation.Run("EndsInAState", {state, ending});
        ExpectEnded(outcome, ending);
        EXPECT_EQ(outcome["reached"], state);
        bool const loads = state != "Untouched" && (state != "Statics" || RunsDestructors(ending));
        EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), loads ? 1 : 0);
        // Windows tells the modules in any case.
        bool const releases = state == "Released" || RunsDestructors(ending) || Rig::IsWindows();
        EXPECT_EQ(outcome.Called("~ISSOClientFactory()"), loads && releases ? 1 : 0);
        if (state == "HeldByStatics") {
            EXPECT_EQ(outcome.Called("~IRsaCryptor()"), RunsDestructors(ending) ? 1 : 0);
        }
        if ((state == "Statics" || state == "AskedWithStatics") && RunsDestructors(ending)) {
            EXPECT_EQ(outcome["pathAtTheEnd"], true);
            EXPECT_EQ(outcome["stateAtTheEnd"], "ISSOClientPrivate::GetSessionState");
        }
    }
}

TEST_P(ProcessEnd, IsCleanAfterAFailedLoad)
{
    std::string const state = GetParam();
    for (std::string const& ending : Endings()) {
        SCOPED_TRACE(ending);
        Installation installation;
        Outcome const outcome = installation.Run("EndsInAState", {state, ending});
        ExpectEnded(outcome, ending);
        EXPECT_EQ(outcome["reached"], state);
        if ((state == "Statics" || state == "AskedWithStatics") && RunsDestructors(ending)) {
            EXPECT_EQ(outcome["pathAtTheEnd"], true);
            EXPECT_EQ(outcome["stateAtTheEnd"], "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Exit, ProcessEnd,
                         testing::Values("Untouched", "Asked", "Initialized", "Released",
                                         "HeldByStatics", "Statics", "AskedWithStatics"),
                         [](auto const& info) { return std::string(info.param); });

// A plugin may wait there for a thread of its own that still needs the library.
TEST(Exit, ReleasesThePluginWithoutTheLock)
{
    if (Rig::IsWindows())
        GTEST_SKIP() << "no thread runs any more when this system ends its modules";
    Installation installation;
    installation.Complete()
        .Script("GetSSOClientFactory", R"({"fresh": true})")
        .Script("~ISSOClientFactory", R"({"probe": 10})");
    Outcome const outcome = installation.Run("EndsInAState", {"Asked", "return"});
    ExpectEnded(outcome, "return");
    EXPECT_EQ(outcome.Called(R"(LockIsFree("~ISSOClientFactory", true))"), 1);
}

// The end waits for what other threads are loading, and not for this one.
TEST(Exit, FromAPluginsConstructorWaitsForNothing)
{
    Installation installation;
    installation.Complete()
        .Compatibility(Rig::CompatibilityFor("UsingModule"))
        .Plugin("UsingModule")
        .Environment("HXSSO_MODULE_INSIDE", installation.Text("inside"))
        .Environment("HXSSO_MODULE_USES", "exit")
        .Limit(std::chrono::seconds(9));
    Outcome const outcome = installation.Run("EndsInAState", {"Asked", "return"});
    ExpectEnded(outcome, "exit");
    EXPECT_TRUE(outcome["reached"].isNull());
    EXPECT_TRUE(std::filesystem::exists(installation.Path("inside")));
}

namespace {

/// Threads that outlive whatever ends the process. Never destroyed, never joined.
std::vector<std::thread>& LastingThreads()
{
    static auto& threads = *new std::vector<std::thread>;
    return threads;
}

constexpr int ThreadCount = 8;

template <class Action>
void StartThreads(Action action)
{
    for (int i = 0; i < ThreadCount; ++i)
        LastingThreads().emplace_back([action] {
            action();
            // A thread that is done and not waited for is a leak to a sanitizer.
            for (;;)
                std::this_thread::sleep_for(std::chrono::hours(1));
        });
}

HOST_PROGRAM(EndsWhileThreadsCall)
{
    static std::atomic<int> started{0};
    WebServicesManager::Initialize();
    WebServicesManager* const manager = WebServicesManager::GetInstance();
    StartThreads([manager] {
        for (bool isFirst = true;; isFirst = false) {
            manager->IsLoggedIn();
            std::wstring path = L"%ExePath%";
            SSOClientPrivate::ExpandPathVariables(path);
            SSOClientPrivate::GetSessionState();
            SSOServicesManager::GetRsaCryptor();
            if (isFirst)
                ++started;
        }
    });
    while (started < ThreadCount)
        std::this_thread::yield();
    EndBy(arguments[0]);
}

// What is made once is being made: the manager, the locale, what reads documents.
HOST_PROGRAM(EndsDuringTheFirstCalls)
{
    static std::atomic<int> started{0};
    StartThreads([] {
        ++started;
        NetworkCookie cookie;
        for (;;) {
            SSOServicesPrivate::JsonToNetworkCookie("{}", cookie);
            SSOClientPrivate::GetSSOServerAppPath();
            SSOClientPrivate::GetOpenSslModule();
            SSOClientPrivate::GetLogFile();
        }
    });
    while (started < 2)
        std::this_thread::yield();
    EndBy(arguments[0]);
}

HOST_PROGRAM(EndsWhileThePluginIsBusy)
{
    WebServicesManager::Initialize();
    WebServicesManager* const manager = WebServicesManager::GetInstance();
    StartThreads([manager] { manager->IsLoggedIn(); });
    while (!std::filesystem::exists(std::filesystem::u8path(arguments[1])))
        std::this_thread::yield();
    EndBy(arguments[0]);
}

// The load itself: the plugin does not come back, and the lock is held.
HOST_PROGRAM(EndsDuringTheLoad)
{
    StartThreads([] { SSOClientPrivate::GetSessionState(); });
    while (!std::filesystem::exists(std::filesystem::u8path(arguments[1])))
        std::this_thread::yield();
    EndBy(arguments[0]);
}

class EndsWithThreads : public testing::TestWithParam<char const*> {
protected:
    /// For what chance has a part in.
    void RunOften(Installation& installation, std::string const& program)
    {
        Run(installation, program, {}, Rig::Repetitions(8, 4, 300, 50));
    }

    void Run(Installation& installation, std::string const& program,
             std::vector<std::string> const& more, int repetitions = 1)
    {
        std::vector<std::string> arguments{GetParam()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        int ended = 0;
        int held = 0;
        while (ended < repetitions && held < std::max(repetitions, 4) && !HasFailure()) {
            SCOPED_TRACE(ended);
            Outcome const outcome = installation.Remove("never.waiting").Run(program, arguments);
            if (outcome.ending.inSystemLock) {
                ++held;
                continue;
            }
            ExpectEnded(outcome, GetParam());
            ++ended;
        }
        std::cout << "processes raced: " << ended << ", " << ThreadCount << " threads each\n";
        if (held > 0)
            std::cout << "processes held by Wine's own lock, run again: " << held << '\n';
        if (!HasFailure()) {
            EXPECT_EQ(ended, repetitions);
        }
    }
};

} // namespace

TEST_P(EndsWithThreads, ThatCallThePlugin)
{
    Installation installation;
    installation.Complete().Quiet().Script("GetSSOClientFactory", R"({"fresh": true})");
    RunOften(installation, "EndsWhileThreadsCall");
}

TEST_P(EndsWithThreads, ThatCallWithoutAPlugin)
{
    Installation installation;
    RunOften(installation, "EndsWhileThreadsCall");
}

TEST_P(EndsWithThreads, ThatMakeTheFirstCalls)
{
    // Whoever throws holds a lock of GCC's 32-bit runtime, which each module takes when it ends.
    if (Rig::IsWindows() && sizeof(void*) == 4)
        GTEST_SKIP() << "a thread that Windows ends while it throws leaves the runtime locked";
    if (Rig::IsSanitized())
        GTEST_SKIP() << "making a locale takes longer there than the end of a process waits";
    for (bool const hasPlugin : {false, true}) {
        Installation installation;
        if (hasPlugin)
            installation.Complete().Quiet();
        RunOften(installation, "EndsDuringTheFirstCalls");
    }
}

TEST_P(EndsWithThreads, ThatWaitInThePlugin)
{
    Installation installation;
    installation.Complete().Script("ISSOClient::IsLoggedIn", R"({"wait": "{root}/never"})");
    Run(installation, "EndsWhileThePluginIsBusy", {installation.Text("never.waiting")});
}

TEST_P(EndsWithThreads, ThatWaitForTheLoad)
{
    Installation installation;
    installation.Complete().Script("ISSOServerManager::SetSSOServerAppFiles",
                                   R"({"wait": "{root}/never"})");
    // Below what the plugin waits before it gives up.
    installation.Limit(std::chrono::seconds(15));
    Run(installation, "EndsDuringTheLoad", {installation.Text("never.waiting")});
}

INSTANTIATE_TEST_SUITE_P(Exit, EndsWithThreads, testing::Values("exit", "quick", "thread"),
                         [](auto const& info) { return std::string("By_") + info.param; });
