#include "discovery/Version.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/LocaleWithBlank.h"

using namespace Halvorix::SSOServices;
using namespace std::string_literals;

namespace {

Version Parsed(std::string const& text)
{
    Version version = {"old"};
    EXPECT_TRUE(ParseVersion(version, text));
    return version;
}

// Compared both ways round.
int Order(Version const& a, Version const& b, int depth = -1)
{
    int const order = CompareVersions(a, b, depth);
    EXPECT_EQ(CompareVersions(b, a, depth), -order);
    return order;
}

int Order(std::string const& a, std::string const& b) { return Order(Version{a}, Version{b}); }

} // namespace

TEST(Version, SplitsAtEveryDotAndTrims)
{
    struct Row {
        std::string text;
        Version version;
    };
    for (Row const& row : {
             Row{"", {}},
             Row{"   ", {}},
             Row{" \t\r\n\v\f ", {}},
             Row{".", {}},
             Row{"...", {}},
             Row{" . . ", {}},
             Row{"1", {"1"}},
             Row{"10.22.00.1800", {"10", "22", "00", "1800"}},
             Row{"1..2", {"1", "2"}},
             Row{".1.", {"1"}},
             Row{" 1 . 2 ", {"1", "2"}},
             Row{"\t1\n.\r2\v\f", {"1", "2"}},
             Row{"1 2.3", {"1 2", "3"}},
             Row{"1.beta-2.RC", {"1", "beta-2", "RC"}},
             Row{"1,2", {"1,2"}},
             Row{"v1.0", {"v1", "0"}},
             Row{"caf\xC3\xA9.\xFF", {"caf\xC3\xA9", "\xFF"}},
         }) {
        SCOPED_TRACE(testing::PrintToString(row.text));
        EXPECT_EQ(Parsed(row.text), row.version);
    }
}

TEST(Version, TrimsByTheGlobalLocale)
{
    HxSSOTest::LocaleWithBlank const locale('x');
    EXPECT_EQ(Parsed("xx1xx.xxx.x2ax3x"), (Version{"1", "2ax3"}));
}

TEST(Version, ReadsBackAsText)
{
    EXPECT_EQ(VersionToString({}), "");
    EXPECT_EQ(VersionToString({"1"}), "1");
    EXPECT_EQ(VersionToString(Parsed("10.22.00.1800")), "10.22.00.1800");
    EXPECT_EQ(VersionToString(Parsed(" 1 .. beta ")), "1.beta");
}

TEST(CompareVersions, ComparesComponentsAsNumbersThenAsText)
{
    struct Row {
        std::string x;
        std::string y;
        int order;
    };
    for (Row const& row : {
             Row{"10", "9", 1},
             Row{"00", "0", 1},
             Row{"01", "1", -1},
             Row{"1", "1", 0},
             Row{"", "0", -1},
             Row{"beta", "RC", -1},
             Row{"5", "abc", -1},
             Row{"5a", "5b", -1},
             Row{"5a", "10", -1},

             Row{"", "", 0},
             Row{"", "a", -1},
             Row{"beta", "BETA", 0},
             Row{"5A", "5a", 0},
             Row{"5a", "5", 1},
             Row{"-5", "-3", -1},
             Row{"-5", "3", -1},
             Row{"+5", "5", -1},  // equal as numbers, and + sorts before
                                  // digits
             Row{"0x10", "0", 1}, // base 10: both are 0
             Row{"0x10", "1", -1},
         }) {
        SCOPED_TRACE(row.x + " and " + row.y);
        EXPECT_EQ(Order(row.x, row.y), row.order);
    }
}

TEST(CompareVersions, FoldsToLowerCaseAndTakesBytesAsUnsigned)
{
    EXPECT_EQ(Order("_", "A"), -1);
    EXPECT_EQ(Order("_", "a"), -1);
    EXPECT_EQ(Order("[", "Z"), -1);
    EXPECT_EQ(Order("{", "Z"), 1);
    EXPECT_EQ(Order("\xC3\xA9", "z"), 1);
    EXPECT_EQ(Order("\xFF", "\x7F"), 1);
}

TEST(CompareVersions, TakesNumbersOutOfRangeAsText)
{
    EXPECT_EQ(Order("99999999999999999999", "100000000000000000000"), 1);
    EXPECT_EQ(Order("99999999999999999999", "1"), 1);
    EXPECT_EQ(Order("10000000000000000000", "9"), -1);
    EXPECT_EQ(Order("9223372036854775808", "9223372036854775807"), 1);
    EXPECT_EQ(Order(std::string(5000, '9'), std::string(5000, '9')), 0);
    EXPECT_EQ(Order(std::string(5000, '9'), std::string(5001, '9')), -1);
}

TEST(CompareVersions, KnowsTheWholeRangeOfNumbers)
{
    EXPECT_EQ(Order("9223372036854775807", "9223372036854775806"), 1);
    EXPECT_EQ(Order("9223372036854775807", "10"), 1);
    EXPECT_EQ(Order("-9223372036854775808", "-9223372036854775807"), -1);
}

// The difference has 64 bits and wraps, as it always did.
TEST(CompareVersions, WrapsTheDifference)
{
    EXPECT_EQ(Order("9223372036854775807", "-2"), -1);
    EXPECT_EQ(Order("-9223372036854775808", "1"), 1);
    EXPECT_EQ(CompareVersions({"9223372036854775807"}, {"-1"}, -1), -1);
    EXPECT_EQ(CompareVersions({"-1"}, {"9223372036854775807"}, -1), -1);
    EXPECT_EQ(CompareVersions({"0"}, {"-9223372036854775808"}, -1), -1);
}

TEST(CompareVersions, PutsAnEndingVersionBelowOneThatGoesOn)
{
    EXPECT_EQ(Order(Version{}, Version{}), 0);
    EXPECT_EQ(Order(Version{}, Parsed("0")), -1);
    EXPECT_EQ(Order(Parsed("10.22"), Parsed("10.22.0")), -1);
    EXPECT_EQ(Order(Parsed("10.22"), Parsed("10.22.a")), -1);
    EXPECT_EQ(Order(Parsed("10.23"), Parsed("10.22.9")), 1);
    EXPECT_EQ(Order(Parsed("10.22"), Parsed("10.22.-1")), -1);
}

TEST(CompareVersions, DecidesAtTheFirstDifference)
{
    EXPECT_EQ(Order(Parsed("1.2.3"), Parsed("1.2.3")), 0);
    EXPECT_EQ(Order(Parsed("2.0.0"), Parsed("1.9.9")), 1);
    EXPECT_EQ(Order(Parsed("1.10.0"), Parsed("1.9.9")), 1);
    EXPECT_EQ(Order(Parsed("10.22.00.1800"), Parsed("10.22.0.1800")), 1);
    EXPECT_EQ(Order(Parsed("10.22.00.1800"), Parsed("10.22.00.1800")), 0);
    EXPECT_EQ(Order(Parsed("1.BETA"), Parsed("1.beta")), 0);
}

TEST(CompareVersions, ComparesNoFurtherThanTheDepth)
{
    EXPECT_EQ(Order(Parsed("1"), Parsed("1.0"), -1), -1);
    EXPECT_EQ(Order(Parsed("1"), Parsed("1.0"), 1), 0);
    EXPECT_EQ(Order(Parsed("1.2.3"), Parsed("1.2.4"), 2), 0);
    EXPECT_EQ(Order(Parsed("1.2.3"), Parsed("1.2.4"), 3), -1);
    EXPECT_EQ(Order(Parsed("1.2.3"), Parsed("1.2.4"), 9), -1);
    EXPECT_EQ(Order(Parsed("1.2.3"), Parsed("1.3.4"), 2), -1);
    EXPECT_EQ(Order(Version{}, Parsed("1"), 1), -1);
}

TEST(CompareVersions, TakesADepthOfZeroOrLessAsAll)
{
    for (int depth : {0, -1, -2, -100}) {
        SCOPED_TRACE(depth);
        EXPECT_EQ(Order(Parsed("1.2.3"), Parsed("1.2.4"), depth), -1);
        EXPECT_EQ(Order(Parsed("1.2"), Parsed("1.2"), depth), 0);
    }
}
