#include <atomic>
#include <iostream>
#include <locale>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include <SSOServerManager.h>
#include <WebServicesUIManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/Repetitions.h"
#include "host/Expected.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::SSOServices::SSOServerManager;
using Halvorix::WebServicesUI::WebServicesAutomation;
using Rig::Info;
using Rig::Installation;
using Rig::Outcome;

namespace {

constexpr int ThreadCount = 32;

/// Lets 32 threads go at once, each with its number; how many of them succeed.
template <class Action>
int Race(Action action)
{
    std::atomic<int> waiting{0};
    std::atomic<int> successes{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < ThreadCount; ++i)
        threads.emplace_back([&, i] {
            ++waiting;
            while (waiting < ThreadCount)
                std::this_thread::yield();
            if (action(i))
                ++successes;
        });
    for (std::thread& thread : threads)
        thread.join();
    return successes;
}

/// A call that needs no Initialize, of each interface in turn; whether the plugin
/// answered it.
bool IsAnswered(int number)
{
    switch (number % 5) {
    case 0:
        return SSOClientPrivate::GetSessionState() == "ISSOClientPrivate::GetSessionState";
    case 1:
        return SSOServerManager::IsSSOServerProcessReady();
    case 2:
        return WebServicesAutomation::Login(L"user", L"password", true);
    case 3:
        return SSOClientPrivate::GetProductName().c_str() ==
               std::wstring(L"ISSOClientModule::GetProductName");
    default:
        return SSOServerManager::GetSSOServerAppFile(nullptr, 0) > 0;
    }
}

HOST_PROGRAM(RacesThroughEveryInterface) { report("answered", Race(IsAnswered)); }

// The call that has the least to do.
bool FindsTheLocaleReplaced(int)
{
    SSOClientPrivate::GetSSOClientConfigFileOverride();
    return std::locale() != std::locale::classic();
}

HOST_PROGRAM(RacesForTheLocale) { report("replaced", Race(FindsTheLocaleReplaced)); }

} // namespace

TEST(FirstCall, LoadsOnceHoweverManyThreadsRaceForIt)
{
    int const processes = Rig::Repetitions(50, 10, 1000, 100);
    Installation installation;
    installation.Complete();
    for (int i = 0; i < processes; ++i) {
        SCOPED_TRACE(i);
        Outcome const outcome = installation.Run("RacesThroughEveryInterface");
        ASSERT_EQ(outcome.ending.status, 0) << outcome.errors;
        ASSERT_EQ(outcome["answered"], ThreadCount);
        ASSERT_EQ(outcome.Called("GetSSOClientFactory()"), 1);
        ASSERT_EQ(outcome.LoggedAt(Info, Rig::Banner()), 1);
        ASSERT_EQ(outcome.log.size(), Rig::LinesOfGoodLoad().size());
        ASSERT_THAT(outcome.console, testing::IsEmpty());
        ASSERT_EQ(outcome.errors, "");
    }
    std::cout << "processes raced: " << processes << ", " << ThreadCount << " threads each\n";
}

// Whichever thread creates the manager: who comes back finds its work done.
TEST(FirstCall, ReturnsToNoThreadBeforeTheLocaleIsReplaced)
{
    int const processes = Rig::Repetitions(20, 5, 1000, 100);
    Installation installation;
    for (int i = 0; i < processes; ++i) {
        SCOPED_TRACE(i);
        Outcome const outcome = installation.Run("RacesForTheLocale");
        ASSERT_EQ(outcome.ending.status, 0) << outcome.errors;
        ASSERT_EQ(outcome["replaced"], ThreadCount);
    }
    std::cout << "processes raced: " << processes << ", " << ThreadCount << " threads each\n";
}
