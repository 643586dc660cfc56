// Questions for paths from several threads, none of which has asked before.

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/Repetitions.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServices::WebServicesManager;
using Halvorix::WebServicesUI::WebServicesUIManager;
using Rig::Installation;
using Rig::Outcome;

namespace {

using Question = std::wstring (*)();

std::wstring ExpandsTheServersVariable()
{
    std::wstring path = L"%SSOServerAppPath%";
    SSOClientPrivate::ExpandPathVariables(path);
    return path;
}

std::vector<Question> Questions()
{
    return {
        &SSOClientPrivate::GetSSOServerAppPath,      &SSOClientPrivate::GetSSOServerAppExeDirPath,
        &SSOClientPrivate::GetSSOClientPluginModule, &SSOClientPrivate::GetOpenSslModule,
        &SSOClientPrivate::GetSSOClientConfigFile,   &ExpandsTheServersVariable};
}

/// A manager that knows nothing yet, without a load.
void RenewTheManager()
{
    WebServicesUIManager::Initialize(false);
    WebServicesUIManager::Uninitialize();
}

HOST_PROGRAM(AsksForPathsFromTwoThreads)
{
    std::vector<Question> const questions = Questions();
    std::vector<std::wstring> answers;
    for (Question const question : questions)
        answers.push_back(question());
    int wrong = 0;
    int const rounds = std::stoi(arguments[0]);
    for (int round = 0; round < rounds; ++round) {
        RenewTheManager();
        // Each pair of questions has its turn.
        std::size_t const first = static_cast<std::size_t>(round) % questions.size();
        std::size_t const second = static_cast<std::size_t>(round) / 6 % questions.size();
        std::atomic<int> ready{0};
        auto const ask = [&](std::size_t which) {
            ++ready;
            while (ready < 2)
                std::this_thread::yield();
            return questions[which]() != answers[which];
        };
        bool isOtherWrong = false;
        std::thread other([&] { isOtherWrong = ask(second); });
        wrong += ask(first) ? 1 : 0;
        other.join();
        wrong += isOtherWrong ? 1 : 0;
    }
    report("wrong", wrong);
    report("empty", static_cast<int>(std::count(answers.begin(), answers.end(), L"")));
}

HOST_PROGRAM(SetsAndAsksFromManyThreads)
{
    constexpr int rounds = 300;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    threads.emplace_back([] {
        for (int i = 0; i < rounds; ++i)
            WebServicesManager::SetSupportFileSearchPaths(i % 2 == 0 ? L"/a;/b" : L"/c");
    });
    threads.emplace_back([] {
        for (int i = 0; i < rounds; ++i)
            SSOClientPrivate::SetSSOClientConfigFileOverride(L"/none/" + std::to_wstring(i));
    });
    threads.emplace_back([&wrong] {
        for (int i = 0; i < rounds; ++i)
            wrong += SSOClientPrivate::GetSSOClientConfigFile().empty() ? 1 : 0;
    });
    threads.emplace_back([&wrong] {
        for (int i = 0; i < rounds; ++i) {
            std::wstring const override = SSOClientPrivate::GetSSOClientConfigFileOverride();
            wrong += override.empty() || override.compare(0, 6, L"/none/") == 0 ? 0 : 1;
        }
    });
    for (std::thread& thread : threads)
        thread.join();
    report("wrong", wrong.load());
}

} // namespace

TEST(PathThreads, GetTheAnswersOfOneThread)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Quiet().Run(
        "AsksForPathsFromTwoThreads", {std::to_string(Rig::Repetitions(300, 36, 20000, 2000))});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_EQ(outcome["wrong"], 0);
    EXPECT_EQ(outcome["empty"], 0);
}

TEST(PathThreads, MayChangeWhatIsAskedFor)
{
    Installation installation;
    Outcome const outcome = installation.Run("SetsAndAsksFromManyThreads");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_EQ(outcome["wrong"], 0);
}

// The second load logs to the first one's logger from its first line on.
TEST(PathThreads, GetAnswersFromInsideASearchsLines)
{
    Installation installation;
    installation.Complete()
        .File("server/openssl/" + Rig::ModuleName("openssl"), "")
        .Script("ILogger::WriteLine", R"({"askForPaths": true})");
    Outcome const outcome = installation.Run("RenewsTheManager");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_GE(outcome.Called("AskedForPaths(\"{root}/server/openssl/" + Rig::ModuleName("openssl") +
                             "\")"),
              20);
    EXPECT_EQ(outcome.Called(R"(AskedForPaths(""))"), 0);
}

namespace {

HOST_PROGRAM(RenewsTheManager)
{
    RenewTheManager();
    RenewTheManager();
}

} // namespace
