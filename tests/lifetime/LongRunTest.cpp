// A library that is called for days: nothing may grow.

#include <algorithm>
#include <iomanip>
#include <iostream>

#include <gmock/gmock.h>

#include "framework/Installation.h"
#include "framework/Repetitions.h"
#include "framework/ThisBuild.h"
#include "host/Expected.h"
#include "lifetime/LongRun.h"

using Rig::Installation;
using Rig::Outcome;

namespace {

/// What ten looks at one process found.
struct Course {
    std::vector<double> memory;
    std::vector<int> handles;
    std::vector<int> threads;
    int calls;
};

Course CourseOf(Outcome const& outcome)
{
    Course course{{}, {}, {}, outcome["calls"].asInt()};
    for (Json::Value const& sample : outcome["samples"]) {
        course.memory.push_back(sample[0].asDouble());
        course.handles.push_back(sample[1].asInt());
        course.threads.push_back(sample[2].asInt());
    }
    return course;
}

double MiB(double bytes) { return bytes / (1024 * 1024); }

void Print(std::string const& kind, Outcome const& outcome, Course const& course)
{
    std::cout << kind << ": calls in a row: " << course.calls << ", "
              << outcome["nanoseconds"].asInt64() / std::max(course.calls, 1) << " ns each, memory "
              << std::fixed << std::setprecision(2) << MiB(course.memory.front()) << " -> "
              << MiB(course.memory.back()) << " MiB, handles " << course.handles.front() << " -> "
              << course.handles.back() << ", threads " << course.threads.front() << " -> "
              << course.threads.back() << std::endl;
}

struct Kind {
    char const* name;
    int calls;     // in the suite
    int longCalls; // with HXSSO_LONG
};

void PrintTo(Kind const& kind, std::ostream* out) { *out << kind.name; }

class LongRun : public testing::TestWithParam<Kind> {
protected:
    Course Run(Installation& installation)
    {
        Kind const kind = GetParam();
        // Memory is another one there, or calls take long: each way is gone all the same.
        int const quickCalls = Rig::IsInstrumented() ? kind.calls / 10 : kind.calls;
        int const calls = Rig::IsLongRun() ? kind.longCalls : quickCalls;
        Outcome const outcome =
            installation.Quiet()
                .Limit(std::chrono::minutes(Rig::IsLongRun() ? 60 : 1))
                .Run("RunsLong", {kind.name, std::to_string(calls), std::to_string(calls / 10)});
        EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
        EXPECT_FALSE(outcome.ending.timedOut);
        EXPECT_EQ(outcome["program"], "returned");
        EXPECT_EQ(outcome["failures"], 0);
        EXPECT_EQ(outcome.errors, "");
        Course const course = CourseOf(outcome);
        EXPECT_EQ(course.memory.size(), static_cast<std::size_t>(Rig::Samples));
        if (!course.memory.empty())
            Print(kind.name, outcome, course);
        return course;
    }
};

void ExpectConstant(std::vector<int> const& counts)
{
    EXPECT_THAT(counts, testing::Each(counts.front()));
    EXPECT_GT(counts.front(), 0);
}

// The heap may move by some blocks; a byte for each call would show.
void ExpectConstant(Course const& course)
{
    ASSERT_EQ(course.memory.size(), static_cast<std::size_t>(Rig::Samples));
    ExpectConstant(course.handles);
    ExpectConstant(course.threads);
    if (Rig::IsSanitized()) {
        std::cout << "memory is the sanitizer's and not judged\n";
        return;
    }
    double const tolerance = 256.0 * 1024;
    double const highest = *std::max_element(course.memory.begin(), course.memory.end());
    EXPECT_LE(highest - course.memory.front(), tolerance);
}

} // namespace

TEST_P(LongRun, LeavesNothingBehind)
{
    Installation installation;
    installation.Complete()
        .Script(
            "ISSOClient::GetOAuth2AccessToken",
            R"({"text": "{\"OAuth2AccessToken\": \"token\", \"OAuth2TokenSpec\": {\"type\": 1}}"})")
        .Script("ISSOClient::InitiateLogout", R"({"text": "{\"Cookies\": [{\"Name\": \"a\"}]}"})");
    ExpectConstant(Run(installation));
}

INSTANTIATE_TEST_SUITE_P(Calls, LongRun,
                         testing::Values(Kind{"AsksWhetherLoggedIn", 20000, 1000000},
                                         Kind{"ReadsAText", 20000, 1000000},
                                         Kind{"GetsAToken", 20000, 1000000},
                                         Kind{"SendsAndReceivesCookies", 20000, 1000000},
                                         Kind{"ExpandsAPath", 20000, 1000000},
                                         Kind{"BeginsAndEnds", 20000, 1000000},
                                         Kind{"LoadsAnew", 100, 10000}),
                         [](auto const& info) { return std::string(info.param.name); });

class LongRunWithoutPlugin : public LongRun {};

// Each call logs the same lines anew, on purpose: they are kept as a count.
TEST_P(LongRunWithoutPlugin, LeavesNothingBehind)
{
    Installation installation;
    if (GetParam().name == std::string("AsksForAPluginInVain"))
        installation.Complete().Compatibility(
            R"({"ssoClientPlugin": [{}, {}, {"module": "x"}, {"module": "x"}, {}]})");
    ExpectConstant(Run(installation));
}

INSTANTIATE_TEST_SUITE_P(Calls, LongRunWithoutPlugin,
                         testing::Values(Kind{"AsksWithoutAPlugin", 20000, 1000000},
                                         Kind{"AsksForAServerInVain", 2000, 100000},
                                         Kind{"AsksForAPluginInVain", 2000, 100000}),
                         [](auto const& info) { return std::string(info.param.name); });
