// What a console shows of lines beyond ASCII, and what the host itself can still
// write there.

#include <clocale>
#include <cstdio>
#include <iostream>

#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Rig::Installation;
using Rig::Outcome;
using testing::ElementsAre;
using testing::MatchesRegex;

namespace {

/// Each is told in an error of its own.
void MissOverride(std::wstring const& name)
{
    SSOClientPrivate::SetSSOClientConfigFileOverride(name);
    SSOClientPrivate::GetSSOClientConfigFile();
}

HOST_PROGRAM(LogsBeyondAsciiAndWritesNarrow)
{
    MissOverride(L"B\u00fccher \u2603.");
    std::printf("printf\n");
    std::fflush(stdout);
    std::cout << "cout" << std::endl;
    MissOverride(L"plain");
    report("cout", std::cout.good());
}

HOST_PROGRAM(WritesWideBeforeItLogsBeyondAscii)
{
    std::wcout << L"wcout" << std::endl;
    MissOverride(L"B\u00fccher \u2603.");
    MissOverride(L"plain");
    std::wcout << L"wcout" << std::endl;
    report("wcout", std::wcout.good());
}

std::string const missing = "Failed to find client config file override ";
std::string const plain = missing + "plain";

/// What the console cannot show is a question mark. Some show a u for one with dots.
std::string const withQuestionMarks = missing + "B.cher \\?\\.";

} // namespace

TEST(Console, LeavesTheHostItsNarrowOutput)
{
    Installation installation;
    Outcome const outcome = installation.Run("LogsBeyondAsciiAndWritesNarrow");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_EQ(outcome["cout"], true);
    ASSERT_EQ(outcome.console.size(), 4u);
    if (Rig::IsWindows()) {
        EXPECT_THAT(outcome.console[0], MatchesRegex(withQuestionMarks));
    } else {
        EXPECT_EQ(outcome.console[0], missing + "Bücher ☃.");
    }
    EXPECT_EQ(outcome.console[1], "printf");
    EXPECT_EQ(outcome.console[2], "cout");
    EXPECT_EQ(outcome.console[3], plain);
}

TEST(Console, ShowsWhatItCanWhereTheHostWritesWide)
{
    Installation installation;
    Outcome const outcome = installation.Run("WritesWideBeforeItLogsBeyondAscii");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_EQ(outcome["wcout"], true);
    EXPECT_THAT(outcome.console,
                ElementsAre("wcout", MatchesRegex(withQuestionMarks), plain, "wcout"));
}
