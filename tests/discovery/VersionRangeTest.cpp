#include "discovery/VersionRange.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

using namespace Halvorix::SSOServices;
using testing::EndsWith;
using testing::StrEq;
using testing::ThrowsMessage;

namespace {

Version V(std::string const& text)
{
    Version version;
    ParseVersion(version, text);
    return version;
}

VersionRange Range(std::string const& minimum, std::string const& maximum,
                   std::vector<std::string> const& versions = {})
{
    VersionRange range;
    range.Set(minimum, maximum, versions);
    return range;
}

VersionRange FromText(std::string const& text)
{
    Json::Value value;
    EXPECT_TRUE(Json::Reader().parse(text, value)) << text;
    return VersionRange::FromJson(value);
}

struct Membership {
    VersionRange range;
    std::string version;
    bool inside;
};

void ExpectMemberships(std::vector<Membership> const& rows)
{
    for (Membership const& row : rows) {
        EXPECT_EQ(row.range.Contains(V(row.version)), row.inside)
            << row.version << " in " << VersionToString(row.range.minVersion) << " to "
            << VersionToString(row.range.maxVersion) << " and " << row.range.versions.size();
    }
}

} // namespace

TEST(VersionRange, StartsEmpty)
{
    VersionRange const range;
    EXPECT_TRUE(range.IsEmpty());
    EXPECT_TRUE(range.minVersion.empty());
    EXPECT_TRUE(range.maxVersion.empty());
    EXPECT_TRUE(range.versions.empty());
}

TEST(VersionRange, IsNotEmptyWithAnyContent)
{
    EXPECT_FALSE(Range("1", "").IsEmpty());
    EXPECT_FALSE(Range("", "1").IsEmpty());
    EXPECT_FALSE(Range("", "", {"1"}).IsEmpty());
    EXPECT_TRUE(Range("", "").IsEmpty());
}

TEST(VersionRange, ParsesBoundsAndVersions)
{
    VersionRange const range = Range(" 1 . 0", "2.00", {"3.1", " 4 "});
    EXPECT_EQ(range.minVersion, (Version{"1", "0"}));
    EXPECT_EQ(range.maxVersion, (Version{"2", "00"}));
    EXPECT_EQ(range.versions, (std::vector<Version>{{"3", "1"}, {"4"}}));
}

TEST(VersionRange, DropsTextsWithoutComponents)
{
    VersionRange const range = Range("   ", " .. ", {"", "  ", ".", "1", ""});
    EXPECT_TRUE(range.minVersion.empty());
    EXPECT_TRUE(range.maxVersion.empty());
    EXPECT_EQ(range.versions, (std::vector<Version>{{"1"}}));
    EXPECT_TRUE(Range("  ", ".", {"", " "}).IsEmpty());
}

TEST(VersionRange, KeepsABoundForAnEmptyTextAndReplacesTheVersions)
{
    VersionRange range = Range("1", "5", {"9"});
    range.Set("", "", {"8"});
    EXPECT_EQ(range.minVersion, V("1"));
    EXPECT_EQ(range.maxVersion, V("5"));
    EXPECT_EQ(range.versions, (std::vector<Version>{{"8"}}));
    range.Set(" ", "", {});
    EXPECT_TRUE(range.minVersion.empty());
    EXPECT_EQ(range.maxVersion, V("5"));
    EXPECT_TRUE(range.versions.empty());
}

TEST(VersionRange, MendsReversedBounds)
{
    VersionRange const range = Range("2", "1");
    EXPECT_EQ(range.minVersion, V("1"));
    EXPECT_EQ(range.maxVersion, V("2"));
    EXPECT_TRUE(range.Contains(V("1.5")));

    VersionRange const byText = Range("1.00", "1.0");
    EXPECT_EQ(byText.minVersion, V("1.0"));
    EXPECT_EQ(byText.maxVersion, V("1.00"));

    VersionRange const inOrder = Range("1", "1.0");
    EXPECT_EQ(inOrder.minVersion, V("1"));
    EXPECT_EQ(inOrder.maxVersion, V("1.0"));

    VersionRange const equal = Range("1.RC", "1.rc");
    EXPECT_EQ(equal.minVersion, V("1.RC"));
    EXPECT_EQ(equal.maxVersion, V("1.rc"));
}

TEST(VersionRange, HoldsTheEmptyVersionAlways)
{
    EXPECT_TRUE(VersionRange().Contains({}));
    EXPECT_TRUE(Range("5", "6").Contains({}));
    EXPECT_TRUE(Range("", "", {"5"}).Contains({}));
}

TEST(VersionRange, HoldsNothingElseWhenEmpty)
{
    EXPECT_FALSE(VersionRange().Contains(V("1")));
    EXPECT_FALSE(VersionRange().Contains(V("0")));
}

TEST(VersionRange, HoldsWhatLiesBetweenTheBounds)
{
    ExpectMemberships({
        {Range("1", "3"), "0.9", false},
        {Range("1", "3"), "1", true},
        {Range("1", "3"), "1.0", true},
        {Range("1", "3"), "2", true},
        {Range("1", "3"), "3", true},
        {Range("1", "3"), "3.99", true},
        {Range("1", "3"), "4", false},
        {Range("1", "3"), "10", false},
        {Range("1.2", "1.4"), "1.1.9", false},
        {Range("1.2", "1.4"), "1.2.0", true},
        {Range("1.2", "1.4"), "1.4.9", true},
        {Range("1.2", "1.4"), "1.5", false},
    });
}

TEST(VersionRange, HoldsWhatLiesOnTheRightSideOfOneBound)
{
    ExpectMemberships({
        {Range("2", ""), "1.9", false},
        {Range("2", ""), "2", true},
        {Range("2", ""), "2.0", true},
        {Range("2", ""), "99", true},
        {Range("", "2"), "1.9", true},
        {Range("", "2"), "2", true},
        {Range("", "2"), "2.9", true},
        {Range("", "2"), "3", false},
    });
}

TEST(VersionRange, TakesAShortBoundAsAPrefix)
{
    ExpectMemberships({
        {Range("", "10.22"), "10.22.99", true},
        {Range("", "10.22.0"), "10.22.99", false},
        {Range("10.22", ""), "10.22.00.1800", true},
        // A short version is no prefix: what is missing is below the bound.
        {Range("10.22", ""), "10", false},
        {Range("", "10.22"), "10", true},
        {Range("10", ""), "10.22", true},
    });
}

TEST(VersionRange, WantsTheLibrarysOwnZerosInABound)
{
    ExpectMemberships({
        {Range("10.22", "10.22.00.1800"), "10.22.00.1800", true},
        {Range("10.22", "10.22.00"), "10.22.00.1800", true},
        {Range("10.22", "10.22.0.1800"), "10.22.00.1800", false},
        {Range("10.22", "10.22.0"), "10.22.00.1800", false},
        {Range("10.22.0.1800", ""), "10.22.00.1800", true},
        {Range("10.22.00.1801", ""), "10.22.00.1800", false},
    });
}

TEST(VersionRange, HoldsListedVersionsAsPrefixes)
{
    ExpectMemberships({
        {Range("", "", {"10.22"}), "10.22.00.1800", true},
        {Range("", "", {"10.22"}), "10.22", true},
        {Range("", "", {"10.22"}), "10.23", false},
        {Range("", "", {"10.22"}), "10", false},
        {Range("", "", {"10.22.0"}), "10.22.00.1800", false},
        {Range("", "", {"1", "2", "3"}), "3.4", true},
        {Range("", "", {"1.RC"}), "1.rc.5", true},
    });
}

TEST(VersionRange, ListedVersionsAreAFurtherWayIn)
{
    ExpectMemberships({
        {Range("1", "2", {"7"}), "7.1", true},
        {Range("1", "2", {"7"}), "1.5", true},
        {Range("1", "2", {"7"}), "3", false},
        {Range("5", "", {"1"}), "1.0", true},
        {Range("5", "", {"1"}), "2", false},
        {Range("", "5", {"9"}), "9", true},
        {Range("", "5", {"9"}), "8", false},
    });
}

TEST(VersionRange, IsReadFromJson)
{
    VersionRange const range =
        FromText(R"({"minVersion":"1.0","maxVersion":"2","versions":["3","","4.1",null],"x":5})");
    EXPECT_EQ(range.minVersion, V("1.0"));
    EXPECT_EQ(range.maxVersion, V("2"));
    EXPECT_EQ(range.versions, (std::vector<Version>{{"3"}, {"4", "1"}}));

    VersionRange const reversed = FromText(R"({"minVersion":"2","maxVersion":"1"})");
    EXPECT_EQ(reversed.minVersion, V("1"));
    EXPECT_EQ(reversed.maxVersion, V("2"));
}

TEST(VersionRange, ReadsAsEmptyFromJsonWithoutContent)
{
    EXPECT_TRUE(VersionRange::FromJson(Json::Value()).IsEmpty());
    EXPECT_TRUE(FromText("[]").IsEmpty());
    EXPECT_TRUE(FromText("{}").IsEmpty());
    for (char const* text : {
             R"({"x":1})",
             R"({"minVersion":null,"maxVersion":null,"versions":null})",
             R"({"minVersion":"","maxVersion":" ","versions":[]})",
             R"({"versions":[""]})",
             R"({"versions":["",null,"."]})",
             R"({"versions":{}})",
             R"({"versions":"1.0"})",
             R"({"versions":10})",
             R"({"versions":true})",
         }) {
        EXPECT_TRUE(FromText(text).IsEmpty()) << text;
    }
}

TEST(VersionRange, TurnsJsonNumbersAndBooleansIntoText)
{
    VersionRange const range =
        FromText(R"({"minVersion":7,"maxVersion":true,"versions":[8,1.5,false]})");
    EXPECT_EQ(range.minVersion, V("7"));
    EXPECT_EQ(range.maxVersion, V("true"));
    EXPECT_EQ(range.versions, (std::vector<Version>{{"8"}, {"1", "5"}, {"false"}}));

    VersionRange const fraction = FromText(R"({"minVersion":10.22})");
    EXPECT_EQ(VersionToString(fraction.minVersion), Json::Value(10.22).asString());
}

TEST(VersionRange, ThrowsForAnythingButAnObject)
{
    for (char const* text :
         {R"("1.0")", R"("")", "1", "0", "1.5", "true", "false", "[1]", R"(["1.0"])", "[{}]"}) {
        SCOPED_TRACE(text);
        Json::Value holder;
        ASSERT_TRUE(Json::Reader().parse(std::string("[") + text + "]", holder));
        Json::Value const value = holder[0];
        EXPECT_THAT([&] { VersionRange::FromJson(value); },
                    ThrowsMessage<Json::LogicError>(EndsWith("requires objectValue or nullValue")));
    }
}

TEST(VersionRange, ThrowsForTextsOfTheWrongType)
{
    for (char const* text : {
             R"({"minVersion":[]})",
             R"({"minVersion":{}})",
             R"({"maxVersion":["1"]})",
             R"({"maxVersion":{"a":1}})",
             R"({"versions":[[]]})",
             R"({"versions":["1",{}]})",
         }) {
        SCOPED_TRACE(text);
        EXPECT_THAT([&] { FromText(text); },
                    ThrowsMessage<Json::LogicError>(StrEq("Type is not convertible to string")));
    }
}

TEST(VersionRange, ThrowsForVersionsThatAreAnObject)
{
    EXPECT_THAT([] { FromText(R"({"versions":{"a":"1"}})"); },
                ThrowsMessage<Json::LogicError>(EndsWith("requires arrayValue")));
}

TEST(AnyRangeContains, HoldsTheEmptyVersionAlways)
{
    for (bool whenEmpty : {false, true}) {
        EXPECT_TRUE(AnyRangeContains({}, {}, whenEmpty));
        EXPECT_TRUE(AnyRangeContains({VersionRange()}, {}, whenEmpty));
        EXPECT_TRUE(AnyRangeContains({Range("5", "6")}, {}, whenEmpty));
    }
}

TEST(AnyRangeContains, AnswersAsToldWithoutAnyContent)
{
    for (bool whenEmpty : {false, true}) {
        EXPECT_EQ(AnyRangeContains({}, V("1"), whenEmpty), whenEmpty);
        EXPECT_EQ(AnyRangeContains({VersionRange()}, V("1"), whenEmpty), whenEmpty);
        EXPECT_EQ(AnyRangeContains({VersionRange(), VersionRange()}, V("1"), whenEmpty), whenEmpty);
    }
}

TEST(AnyRangeContains, HoldsWhatOneRangeHolds)
{
    for (bool whenEmpty : {false, true}) {
        SCOPED_TRACE(whenEmpty);
        EXPECT_TRUE(AnyRangeContains({Range("1", "2")}, V("1.5"), whenEmpty));
        EXPECT_FALSE(AnyRangeContains({Range("1", "2")}, V("3"), whenEmpty));
        EXPECT_TRUE(AnyRangeContains({Range("1", "2"), Range("5", "6")}, V("1.5"), whenEmpty));
        EXPECT_TRUE(AnyRangeContains({Range("5", "6"), Range("1", "2")}, V("1.5"), whenEmpty));
        EXPECT_FALSE(AnyRangeContains({Range("5", "6"), Range("1", "2")}, V("3"), whenEmpty));
        EXPECT_FALSE(
            AnyRangeContains({VersionRange(), Range("1", "2"), VersionRange()}, V("3"), whenEmpty));
        EXPECT_TRUE(
            AnyRangeContains({VersionRange(), Range("1", "2"), VersionRange()}, V("1"), whenEmpty));
    }
}
