// Everything that can be wrong with what a load meets, alone and in pairs: the
// library answers as told, goes on answering, and never takes the host down.

#include <cstdlib>
#include <future>
#include <iostream>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include <SSOClientPrivate.h>
#include <SSOServerManager.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include "faults/FaultTable.h"
#include "faults/LoadModel.h"
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/Repetitions.h"

using Faults::AllFaults;
using Faults::Circumstances;
using Faults::Fault;
using Faults::LoadModel;
using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::SSOServices::SSOServerManager;
using Halvorix::WebServices::WebServicesManager;
using Halvorix::WebServicesUI::WebServicesUIManager;
using Rig::Installation;
using Rig::Outcome;

namespace {

// Whether another thread gets through; if not, nothing here could be undone.
bool LockIsFree()
{
    std::packaged_task<void()> take([] { SSOClientPrivate::GetModuleDirPath(std::wstring()); });
    std::future<void> const taken = take.get_future();
    std::thread thread(std::move(take));
    if (taken.wait_for(std::chrono::seconds(20)) != std::future_status::ready)
        std::_Exit(9);
    thread.join();
    return true;
}

HOST_PROGRAM(CallsWhateverIsWrong)
{
    auto const call = [&report](std::string const& name, auto action) {
        report.Try(name, [&] { report(name + ".answer", action()); });
    };
    call("private", [] { return SSOClientPrivate::GetSessionState(); });
    call("private.again", [] { return SSOClientPrivate::GetSessionState(); });
    call("server", [] { return SSOServerManager::IsSSOServerProcessReady(); });
    call("module", [] { return WebServicesManager::Initialize(false); });
    if (WebServicesManager* const manager = WebServicesManager::GetInstance())
        call("client", [&] { return manager->IsLoggedIn(); });
    call("module.ui", [] { return WebServicesUIManager::Initialize(false); });
    if (WebServicesUIManager* const manager = WebServicesUIManager::GetInstance())
        call("ui", [&] { return manager->IsLoginInProgress(); });
    report("lock", LockIsFree());
    call("release", [] { return WebServicesUIManager::Uninitialize(); });
    call("private.afterwards", [] { return SSOClientPrivate::GetSessionState(); });
    report("lock.afterwards", LockIsFree());
}

/// The model beside the report of the same calls.
class Comparison {
public:
    Comparison(Circumstances const& circumstances, Outcome const& outcome)
        : model(circumstances), outcome(outcome)
    {
    }

    void Run()
    {
        EXPECT_FALSE(outcome.ending.timedOut);
        EXPECT_FALSE(outcome.ending.crashed);
        EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
        ExpectAnswer("private", Private(), Json::Value("ISSOClientPrivate::GetSessionState"), "");
        ExpectAnswer("private.again", Private(), Json::Value("ISSOClientPrivate::GetSessionState"),
                     "");
        ExpectAnswer(
            "server",
            model.Call("GetSSOServerManager", "ISSOServerManager::IsSSOServerProcessReady"), true,
            false);
        if (ExpectAnswer("module", model.Call("GetSSOClientModule", "ISSOClientModule::Initialize"),
                         true, true))
            ExpectAnswer("client", model.Call("GetSSOClient", "ISSOClient::IsLoggedIn"), true,
                         false);
        else
            EXPECT_TRUE(outcome["client"].isNull());
        if (ExpectAnswer("module.ui",
                         model.Call("GetSSOClientModule", "ISSOClientModule::InitializeUI"), true,
                         true))
            ExpectAnswer("ui", model.Call("GetSSOClientUI", "ISSOClientUI::IsLoginInProgress"),
                         true, false);
        else
            EXPECT_TRUE(outcome["ui"].isNull());
        EXPECT_EQ(outcome["lock"], true);
        if (ExpectAnswer("release",
                         model.Call("GetSSOClientModule", "ISSOClientModule::UninitializeUI"), true,
                         true))
            model.ReleaseManager();
        ExpectAnswer("private.afterwards", Private(),
                     Json::Value("ISSOClientPrivate::GetSessionState"), "");
        EXPECT_EQ(outcome["lock.afterwards"], true);
        EXPECT_EQ(outcome["program"], "returned");
        EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), model.factoryCalls);
        ExpectToldLines();
    }

private:
    std::string Private()
    {
        return model.Call("GetSSOClientPrivate", "ISSOClientPrivate::GetSessionState");
    }

    // False if the call is expected to throw.
    bool ExpectAnswer(std::string const& call, std::string const& expected,
                      Json::Value const& usual, Json::Value const& fixed)
    {
        bool const throws = expected.compare(0, 5, "threw") == 0;
        EXPECT_EQ(outcome[call], throws ? expected : "returned") << call;
        if (!throws) {
            EXPECT_EQ(outcome[call + ".answer"], expected == "usual" ? usual : fixed) << call;
        }
        return !throws;
    }

    void ExpectToldLines() const
    {
        std::ostringstream shown;
        for (Rig::LogMessage const& line : outcome.log)
            shown << line.text << '\n';
        for (std::string const& line : outcome.console)
            shown << line << '\n';
        for (std::string const& line : Faults::AllToldLines())
            EXPECT_EQ(shown.str().find(line) != std::string::npos, model.told.count(line) == 1)
                << line << "\nin\n"
                << shown.str();
    }

    LoadModel model;
    Outcome const& outcome;
};

/// Tries faults in one directory tree, each in a process of its own.
class Trial {
public:
    ~Trial() { std::cout << "faults tried: " << tried << std::endl; }

    void Try(std::vector<Fault const*> const& faults)
    {
        std::string name;
        Circumstances circumstances;
        for (Fault const* const fault : faults) {
            name += (name.empty() ? "" : " and ") + fault->name;
            fault->happen(circumstances);
        }
        SCOPED_TRACE(name);
        if (!Arrange(circumstances, installation)) {
            std::cout << "left out, this user can read everything: " << name << std::endl;
            return;
        }
        Outcome const outcome = installation.Run("CallsWhateverIsWrong");
        Comparison(circumstances, outcome).Run();
        ++tried;
    }

    Trial() = default;
    Trial(Trial const&) = delete;
    Trial& operator=(Trial const&) = delete;

private:
    Installation installation;
    int tried = 0;
};

using Pair = std::pair<Fault const*, Fault const*>;

std::vector<Pair> AllPairs()
{
    std::vector<Pair> pairs;
    for (Fault const& first : AllFaults())
        for (Fault const& second : AllFaults())
            if (&first < &second && first.place != second.place)
                pairs.emplace_back(&first, &second);
    return pairs;
}

// A sample, the same one each time; all of them in a long run on Linux.
std::vector<Pair> PairsToTry()
{
    std::vector<Pair> const pairs = AllPairs();
    auto const step = static_cast<std::size_t>(Rig::Repetitions(7, 61, 1, 7));
    std::vector<Pair> sample;
    for (std::size_t i = 0; i < pairs.size(); i += step)
        sample.push_back(pairs[i]);
    std::cout << "pairs: 1 in " << step << " of " << pairs.size() << '\n';
    return sample;
}

constexpr std::size_t Slices = 8;

} // namespace

TEST(FaultMatrix, KnowsNoFaultInGoodCircumstances) { Trial().Try({}); }

class FaultMatrix : public testing::TestWithParam<std::size_t> {};

TEST_P(FaultMatrix, SurvivesEachFaultAlone)
{
    Trial trial;
    for (std::size_t i = GetParam(); i < AllFaults().size(); i += Slices)
        trial.Try({&AllFaults()[i]});
}

TEST_P(FaultMatrix, SurvivesFaultsInPairs)
{
    std::vector<Pair> const pairs = PairsToTry();
    Trial trial;
    for (std::size_t i = GetParam(); i < pairs.size(); i += Slices)
        trial.Try({pairs[i].first, pairs[i].second});
}

INSTANTIATE_TEST_SUITE_P(Slice, FaultMatrix, testing::Range(std::size_t{0}, Slices));
