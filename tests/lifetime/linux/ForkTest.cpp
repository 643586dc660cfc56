// A process that is copied while one of its threads loads the plugin.

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <thread>

#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/ThisBuild.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Rig::Installation;
using Rig::Outcome;

namespace {

/// Its wait status; none if it goes on after so many seconds, and is ended.
std::optional<int> EndOf(pid_t child, std::chrono::seconds patience)
{
    auto const deadline = std::chrono::steady_clock::now() + patience;
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return {};
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return status;
}

HOST_PROGRAM(ForksInALoad)
{
    std::filesystem::path const release = std::filesystem::u8path(arguments[0]);
    std::thread loader([&] { report("state", SSOClientPrivate::GetSessionState()); });
    while (!std::filesystem::exists(release.string() + ".waiting"))
        std::this_thread::yield();
    // The lock is held, by a thread that the child does not have.
    pid_t const child = ::fork();
    if (child == 0)
        std::exit(SSOClientPrivate::GetLogFile().empty() ? 1 : 42);
    std::optional<int> const status = EndOf(child, std::chrono::seconds(20));
    report("childEnded", status.has_value());
    report("childStatus", status && WIFEXITED(*status) ? WEXITSTATUS(*status) : -1);
    std::ofstream(release) << "go on";
    loader.join();
}

} // namespace

// The child cannot load, but it ends by its own exit, and the load goes on.
TEST(Fork, InALoadLeavesAChildThatEnds)
{
    if (Rig::IsSanitized())
        GTEST_SKIP() << "to a sanitizer what the other thread holds is lost in the child";
    Installation installation;
    installation.Complete().Script("GetSSOClientFactory", R"({"wait": "{root}/release"})");
    Outcome const outcome = installation.Run("ForksInALoad", {installation.Text("release")});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["childEnded"], true);
    EXPECT_EQ(outcome["childStatus"], 42);
    EXPECT_EQ(outcome["state"], "ISSOClientPrivate::GetSessionState");
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 1);
}
