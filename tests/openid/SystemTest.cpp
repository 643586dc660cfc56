#include "openid/platform/System.h"

#include <gmock/gmock.h>

#include <thread>

#include "framework/Variable.h"
#include "openid/Child.h"
#include "openid/TestFolder.h"
#include "openid/platform/Files.h"
#include "openid/platform/WebAddress.h"

namespace Halvorix::OpenId {

namespace {

using namespace std::chrono_literals;
using Rig::ContentOf;
using Rig::TestFolder;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char const* Variable = "HXSSO_OPENID_BROWSER";

class Browser : public testing::Test {
protected:
    // This program itself, which Main.cpp has write down its argument.
    Browser()
    {
        Rig::SetVariable(Variable, Rig::ThisProgram());
        Rig::SetVariable("HXSSO_TEST_BROWSER", PathText(folder / "seen"));
    }
    ~Browser() override
    {
        Rig::SetVariable(Variable, "");
        Rig::SetVariable("HXSSO_TEST_BROWSER", "");
        Rig::SetVariable("HXSSO_TEST_BROWSER_STAYS", "");
    }

    /// What the browser was given, as soon as it has written it.
    std::string Seen() const
    {
        for (int i = 0; i < 3000 && ContentOf(folder / "seen").find('\n') == std::string::npos; ++i)
            std::this_thread::sleep_for(10ms);
        std::string const content = ContentOf(folder / "seen");
        return content.substr(0, content.find('\n'));
    }

    TestFolder const folder;
    std::string reason;
};

} // namespace

TEST(SinceBoot, GoesOn)
{
    auto const before = SinceBoot();
    std::this_thread::sleep_for(60ms);
    auto const passed = SinceBoot() - before;

    EXPECT_GT(before, 0ms);
    EXPECT_GE(passed, 40ms);
    EXPECT_LT(passed, 5s);
}

TEST(WallClock, IsThatOfTheSystem)
{
    auto const now = std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::system_clock::now().time_since_epoch());

    EXPECT_NEAR(static_cast<double>(WallClock()), static_cast<double>(now.count()), 2.0);
}

CHILD_PROGRAM(TellProcessId)
{
    Rig::WriteTo(PathFromText(arguments[0]), std::to_string(ProcessId()));
    return 0;
}

TEST(ProcessId, IsAnotherOneInAnotherProcess)
{
    TestFolder const folder;
    ASSERT_EQ(Rig::Child("TellProcessId", {PathText(folder / "id")}).Wait(), 0);

    EXPECT_THAT(ContentOf(folder / "id"), Not(IsEmpty()));
    EXPECT_NE(ContentOf(folder / "id"), std::to_string(ProcessId()));
    EXPECT_EQ(ProcessId(), ProcessId());
}

TEST_F(Browser, GetsTheWholeAddress)
{
    std::string const url = "https://login.example/"
                            "authorize?a=b%20c&d=\"e\"&f='g'&h=$(i)&j=`k`;l|m<n>o^p!q*r?s#t~u\\v\\"
                            "\"w%PATH%&x={y}[z]&&-- /c \\\\";

    ASSERT_TRUE(OpenInBrowser(url, reason)) << reason;

    EXPECT_EQ(Seen(), url);
    EXPECT_EQ(reason, "");
}

TEST_F(Browser, IsNotWaitedFor)
{
    Rig::SetVariable("HXSSO_TEST_BROWSER_STAYS", "3");
    auto const begin = std::chrono::steady_clock::now();

    ASSERT_TRUE(OpenInBrowser("https://login.example/", reason)) << reason;

    EXPECT_LT(std::chrono::steady_clock::now() - begin, 2s);
    EXPECT_EQ(Seen(), "https://login.example/");
}

TEST_F(Browser, ThatIsMissingIsTold)
{
    std::string const program = PathText(folder / "no-such-browser");
    Rig::SetVariable(Variable, program);

    EXPECT_FALSE(OpenInBrowser("https://login.example/?secret=1", reason));

    EXPECT_THAT(reason, HasSubstr("no-such-browser"));
    EXPECT_THAT(reason, Not(HasSubstr("secret")));
}

TEST_F(Browser, IsOpenedForNothingButTheWeb)
{

    for (char const* const url :
         {"", "file:///etc/passwd", "javascript:alert(1)", "calc.exe", "/bin/sh", "--help",
          "ftp://example.org/", "https:/example.org", "httpss://example.org/",
          "https://example.org/\n--flag", "https://example.org/\x7F"}) {
        reason.clear();
        EXPECT_FALSE(OpenInBrowser(url, reason)) << url;
        EXPECT_EQ(reason, "the address is none of the web");
    }
    EXPECT_FALSE(exists(folder / "seen"));
}

TEST(WebAddress, IsLoopbackByTheHostAlone)
{
    for (char const* const host : {"127.0.0.1", "127.0.0.0", "127.255.255.255", "127.1.2.3",
                                   "localhost", "LocalHost", "[::1]", "::1"})
        EXPECT_TRUE(IsLoopbackHost(host)) << host;
    for (char const* const host : {"",
                                   "127",
                                   "127.1",
                                   "127.0.0",
                                   "127.0.0.1.",
                                   "127.0.0.1.2",
                                   "127.0.0.256",
                                   "127.0.0.-1",
                                   "127.0.0.01",
                                   "0127.0.0.1",
                                   "127.0.0.1 ",
                                   " 127.0.0.1",
                                   "127..0.1",
                                   "128.0.0.1",
                                   "0.0.0.0",
                                   "10.0.0.1",
                                   "localhost.",
                                   "localhost.example",
                                   "xlocalhost",
                                   "[::2]",
                                   "[::]",
                                   "::ffff:127.0.0.1",
                                   "127.0.0.1x",
                                   "127.0.0.1%00"})
        EXPECT_FALSE(IsLoopbackHost(host)) << host;
}

} // namespace Halvorix::OpenId
