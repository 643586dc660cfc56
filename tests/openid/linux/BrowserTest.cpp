// What the host keeps of itself when the browser is started: no child, no signal, no descriptor.

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "framework/Variable.h"
#include "openid/TestFolder.h"
#include "openid/platform/System.h"

namespace Halvorix::OpenId {

namespace {

using Rig::ContentOf;
using Rig::TestFolder;
using Rig::WriteTo;
using std::filesystem::path;
using ::testing::HasSubstr;
using ::testing::Not;

/// A script in the browser's place.
class BrowserScript : public testing::Test {
protected:
    ~BrowserScript() override { Rig::SetVariable("HXSSO_OPENID_BROWSER", ""); }

    void Write(std::string const& lines, std::string const& name = "browser")
    {
        WriteTo(folder / name, "#!/bin/sh\ncd '" + folder.Path().string() + "'\n" + lines);
        permissions(folder / name, std::filesystem::perms::owner_all);
        Rig::SetVariable("HXSSO_OPENID_BROWSER", (folder / name).string());
    }
    std::string Said() const
    {
        for (int i = 0; i < 1000 && !exists(folder / "said"); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return ContentOf(folder / "said");
    }

    TestFolder const folder;
    std::string reason;
};

constexpr char const* Url = "https://login.example/";

} // namespace

TEST_F(BrowserScript, IsNobodysChild)
{
    Write("echo $PPID > saying; mv saying said; sleep 1\n");

    ASSERT_TRUE(OpenInBrowser(Url, reason)) << reason;

    EXPECT_NE(Said(), std::to_string(::getpid()) + "\n");
    // Neither a running child nor one that nobody has asked for.
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(BrowserScript, GetsNoDescriptorOfTheHost)
{
    int const secret = ::open((folder / "secret").c_str(), O_RDWR | O_CREAT, 0600);
    ASSERT_EQ(::dup2(secret, 77), 77);
    Write("ls -l /proc/self/fd > saying 2>&1; mv saying said\n");

    ASSERT_TRUE(OpenInBrowser(Url, reason)) << reason;

    EXPECT_THAT(Said(), Not(HasSubstr("secret")));
    EXPECT_THAT(Said(), HasSubstr("0 -> /dev/null"));
    ::close(secret);
    ::close(77);
}

TEST_F(BrowserScript, GetsSignalsAsTheyAreByDefault)
{
    sigset_t blocked;
    sigset_t before;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
    auto const pipe = ::signal(SIGPIPE, SIG_IGN);
    Write("grep -E 'Sig(Blk|Ign)' /proc/self/status > saying; mv saying said\n");

    ASSERT_TRUE(OpenInBrowser(Url, reason)) << reason;
    std::string const said = Said();
    ::signal(SIGPIPE, pipe);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);

    EXPECT_THAT(said, HasSubstr("SigBlk:\t0000000000000000"));
    EXPECT_THAT(said, HasSubstr("SigIgn:\t0000000000000000"));
}

TEST_F(BrowserScript, WritesNothingIntoTheHostsOutput)
{
    Write("echo noise; echo more >&2; touch said\n");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();

    ASSERT_TRUE(OpenInBrowser(Url, reason)) << reason;
    Said();

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(BrowserScript, ThatCannotRunIsTold)
{
    WriteTo(folder / "text", "no program");
    permissions(folder / "text", std::filesystem::perms::owner_all);
    Rig::SetVariable("HXSSO_OPENID_BROWSER", (folder / "text").string());
    EXPECT_FALSE(OpenInBrowser(Url, reason));
    EXPECT_THAT(reason, HasSubstr("Exec format error"));

    reason.clear();
    Rig::SetVariable("HXSSO_OPENID_BROWSER", folder.Path().string());
    EXPECT_FALSE(OpenInBrowser(Url, reason));
    EXPECT_THAT(reason, HasSubstr("Permission denied"));

    reason.clear();
    permissions(folder / "text", std::filesystem::perms::owner_read);
    Rig::SetVariable("HXSSO_OPENID_BROWSER", (folder / "text").string());
    EXPECT_FALSE(OpenInBrowser(Url, reason));
    EXPECT_THAT(reason, HasSubstr("is not there or cannot be run"));
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST_F(BrowserScript, ThatCannotRunIsToldThoughSignalsComeIn)
{
    WriteTo(folder / "text", "no program");
    permissions(folder / "text", std::filesystem::perms::owner_all);
    Rig::SetVariable("HXSSO_OPENID_BROWSER", (folder / "text").string());
    auto const before = ::signal(SIGALRM, [](int) {});
    itimerval const often{{0, 3000}, {0, 3000}};
    itimerval const never{};
    int untold = 0;

    ::setitimer(ITIMER_REAL, &often, nullptr);
    for (int i = 0; i < 20; ++i)
        untold += OpenInBrowser(Url, reason) ? 1 : 0;
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::signal(SIGALRM, before);

    EXPECT_EQ(untold, 0);
}

TEST_F(BrowserScript, IsFoundInThePathAndNotInTheCurrentFolder)
{
    Write("touch said\n", "xdg-open");
    Rig::SetVariable("HXSSO_OPENID_BROWSER", "");
    std::string const before = Rig::Variable("PATH");
    path const current = std::filesystem::current_path();
    current_path(folder.Path());

    Rig::SetVariable("PATH", ":.:/nowhere:");
    EXPECT_FALSE(OpenInBrowser(Url, reason));
    EXPECT_EQ(reason, "xdg-open is not there or cannot be run");

    Rig::SetVariable("PATH", "/nowhere:" + folder.Path().string() + ":" + before);
    EXPECT_TRUE(OpenInBrowser(Url, reason)) << reason;
    Said();
    EXPECT_TRUE(exists(folder / "said"));

    current_path(current);
    Rig::SetVariable("PATH", before);
}

TEST_F(BrowserScript, StartsWhereTheHostLeavesNoChildBehind)
{
    auto const before = ::signal(SIGCHLD, SIG_IGN); // the system then forgets children at once
    Write("touch said\n");

    EXPECT_TRUE(OpenInBrowser(Url, reason)) << reason;
    Said();

    EXPECT_TRUE(exists(folder / "said"));
    ::signal(SIGCHLD, before);
}

} // namespace Halvorix::OpenId
