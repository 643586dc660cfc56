#include "discovery/CompatibleModule.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace Halvorix::SSOServices;

namespace {

Version V(std::string const& text)
{
    Version version;
    ParseVersion(version, text);
    return version;
}

VersionRange Range(std::string const& minimum, std::string const& maximum)
{
    VersionRange range;
    range.Set(minimum, maximum, {});
    return range;
}

CompatibleModule Module(std::wstring const& name, std::string const& version,
                        std::vector<VersionRange> const& compatible = {},
                        std::vector<VersionRange> const& incompatible = {})
{
    CompatibleModule module;
    module.module = name;
    module.modulePath = L"C:/" + name;
    module.version = V(version);
    module.compatibleVersions = compatible;
    module.incompatibleVersions = incompatible;
    return module;
}

std::vector<std::wstring> Names(std::vector<CompatibleModule> const& list)
{
    std::vector<std::wstring> names;
    for (CompatibleModule const& module : list) {
        names.push_back(module.module);
    }
    return names;
}

using WideNames = std::vector<std::wstring>;

// The name of the chosen module, "none" if nothing fits.
std::wstring Choice(std::string const& version, std::vector<CompatibleModule> const& list)
{
    CompatibleModule selected;
    return SelectCompatibleModule(V(version), list, selected) ? selected.module : L"none";
}

} // namespace

TEST(SortByVersion, PutsTheHighestFirst)
{
    std::vector<CompatibleModule> list = {Module(L"a", "3.0"),  Module(L"b", "10"),
                                          Module(L"c", "4.0"),  Module(L"d", "4"),
                                          Module(L"e", "4.00"), Module(L"f", "beta")};
    SortByVersion(list);
    EXPECT_EQ(Names(list), (WideNames{L"f", L"b", L"e", L"c", L"d", L"a"}));
    EXPECT_EQ(list[1].modulePath, L"C:/b");
    EXPECT_EQ(list[1].version, V("10"));
}

TEST(SortByVersion, KeepsTheOrderOfEqualVersions)
{
    std::vector<CompatibleModule> list;
    WideNames expected;
    for (int i = 0; i < 200; ++i) {
        list.push_back(Module(std::to_wstring(i), i % 2 == 0 ? "1.RC" : "1.rc"));
        expected.push_back(std::to_wstring(i));
    }
    SortByVersion(list);
    EXPECT_EQ(Names(list), expected);
}

TEST(SortByVersion, PutsEmptyVersionsLastInTheirOrder)
{
    std::vector<CompatibleModule> list = {Module(L"a", ""), Module(L"b", "0"), Module(L"c", " . "),
                                          Module(L"d", "1"), Module(L"e", "")};
    SortByVersion(list);
    EXPECT_EQ(Names(list), (WideNames{L"d", L"b", L"a", L"c", L"e"}));
}

TEST(SortByVersion, LeavesShortListsAlone)
{
    std::vector<CompatibleModule> none;
    SortByVersion(none);
    EXPECT_TRUE(none.empty());
    std::vector<CompatibleModule> one = {Module(L"a", "")};
    SortByVersion(one);
    EXPECT_EQ(Names(one), WideNames{L"a"});
}

TEST(SortByVersion, SortsPlainNumbersStably)
{
    std::mt19937 random(7);
    std::vector<CompatibleModule> list;
    std::vector<std::pair<unsigned, std::wstring>> expected;
    for (int i = 0; i < 3000; ++i) {
        unsigned const number = 1 + random() % 50;
        list.push_back(Module(std::to_wstring(i), std::to_string(number)));
        expected.emplace_back(number, std::to_wstring(i));
    }
    std::stable_sort(expected.begin(), expected.end(),
                     [](auto const& a, auto const& b) { return a.first > b.first; });
    WideNames names;
    for (auto const& entry : expected) {
        names.push_back(entry.second);
    }
    SortByVersion(list);
    EXPECT_EQ(Names(list), names);
}

// Numbers first and text second is no consistent order over odd texts, such as
// 5a < 10, 10 < a and so on: the sort has to come through all the same.
TEST(SortByVersion, SurvivesAnyTexts)
{
    char const* const components[] = {"",
                                      "0",
                                      "00",
                                      "1",
                                      "01",
                                      "5",
                                      "5a",
                                      "5b",
                                      "10",
                                      "9",
                                      "abc",
                                      "ABC",
                                      "_",
                                      "beta",
                                      "RC",
                                      "-1",
                                      "-5",
                                      "+3",
                                      "0x10",
                                      "1e3",
                                      "\xFF",
                                      "a b",
                                      "-",
                                      "99999999999999999999",
                                      "9223372036854775807",
                                      "-9223372036854775808",
                                      "10000000000000000000",
                                      "z9"};
    std::size_t const count = sizeof(components) / sizeof(components[0]);
    std::mt19937 random(20240608);
    for (std::size_t size : {2U, 3U, 15U, 16U, 17U, 100U, 1000U, 4000U}) {
        std::vector<CompatibleModule> list;
        WideNames before;
        for (std::size_t i = 0; i < size; ++i) {
            CompatibleModule module = Module(std::to_wstring(i), "");
            for (unsigned parts = random() % 4; parts > 0; --parts) {
                module.version.emplace_back(components[random() % count]);
            }
            before.push_back(module.module + L" " + std::to_wstring(module.version.size()));
            list.push_back(module);
        }
        SortByVersion(list);
        WideNames after;
        for (CompatibleModule const& module : list) {
            EXPECT_EQ(module.modulePath, L"C:/" + module.module);
            after.push_back(module.module + L" " + std::to_wstring(module.version.size()));
        }
        std::sort(before.begin(), before.end());
        std::sort(after.begin(), after.end());
        EXPECT_EQ(after, before);
    }
}

TEST(SelectCompatibleModule, FindsNothingInAnEmptyList)
{
    EXPECT_EQ(Choice("1", {}), L"none");
    EXPECT_EQ(Choice("", {}), L"none");
}

TEST(SelectCompatibleModule, CopiesTheFirstThatFits)
{
    std::vector<CompatibleModule> const list = {
        Module(L"no", "9", {Range("5", "")}),
        Module(L"first", "8", {Range("1", "2")}, {Range("7", "8")}),
        Module(L"second", "7", {Range("1", "2")}),
    };
    CompatibleModule selected = Module(L"old", "0");
    EXPECT_TRUE(SelectCompatibleModule(V("1.5"), list, selected));
    EXPECT_EQ(selected.module, L"first");
    EXPECT_EQ(selected.modulePath, L"C:/first");
    EXPECT_EQ(selected.version, V("8"));
    ASSERT_EQ(selected.compatibleVersions.size(), 1U);
    EXPECT_EQ(selected.compatibleVersions[0].maxVersion, V("2"));
    ASSERT_EQ(selected.incompatibleVersions.size(), 1U);
    EXPECT_EQ(selected.incompatibleVersions[0].minVersion, V("7"));
}

TEST(SelectCompatibleModule, LeavesTheTargetWhenNothingFits)
{
    CompatibleModule selected = Module(L"old", "0");
    EXPECT_FALSE(SelectCompatibleModule(V("1"), {Module(L"no", "9", {Range("5", "")})}, selected));
    EXPECT_EQ(selected.module, L"old");
    EXPECT_EQ(selected.modulePath, L"C:/old");
}

TEST(SelectCompatibleModule, TakesTheFirstForNoVersion)
{
    EXPECT_EQ(
        Choice("", {Module(L"a", "1", {Range("5", "")}, {Range("1", "")}), Module(L"b", "2")}),
        L"a");
}

TEST(SelectCompatibleModule, TakesARecordWithoutRanges)
{
    EXPECT_EQ(Choice("1", {Module(L"a", "1")}), L"a");
}

TEST(SelectCompatibleModule, WeighsBothLists)
{
    struct Row {
        std::vector<VersionRange> compatible;
        std::vector<VersionRange> incompatible;
        bool fits;
    };
    VersionRange const holds = Range("1", "3");
    VersionRange const misses = Range("7", "9");
    VersionRange const empty;
    for (Row const& row : std::vector<Row>{
             {{holds}, {}, true},
             {{misses}, {}, false},
             {{misses, holds}, {}, true},
             {{empty}, {}, true},
             {{empty, misses}, {}, false},
             {{holds}, {misses}, true},
             {{holds}, {holds}, false},
             {{holds}, {misses, holds}, false},
             {{holds}, {empty}, true},
             {{}, {holds}, false},
             {{}, {misses}, true},
             {{}, {empty}, true},
             {{empty}, {holds}, false},
             {{misses}, {misses}, false},
         }) {
        EXPECT_EQ(Choice("2", {Module(L"a", "1", row.compatible, row.incompatible)}),
                  row.fits ? L"a" : L"none")
            << row.compatible.size() << " and " << row.incompatible.size();
    }
}

TEST(SelectCompatibleModule, PrefersTheHighestVersionOfASortedList)
{
    std::vector<VersionRange> const fits = {Range("10", "")};
    std::vector<VersionRange> const doesNotFit = {Range("11", "")};

    std::vector<CompatibleModule> list = {Module(L"three", "3.0", fits),
                                          Module(L"four", "4.0", fits)};
    SortByVersion(list);
    EXPECT_EQ(Choice("10.22.00.1800", list), L"four");

    list = {Module(L"earlier", "3.0", fits), Module(L"later", "3.0", fits)};
    SortByVersion(list);
    EXPECT_EQ(Choice("10.22.00.1800", list), L"earlier");

    list = {Module(L"three", "3.0", fits), Module(L"four", "4.0", doesNotFit)};
    SortByVersion(list);
    EXPECT_EQ(Choice("10.22.00.1800", list), L"three");

    list = {Module(L"blank", "", fits), Module(L"zero", "0", fits)};
    SortByVersion(list);
    EXPECT_EQ(Choice("10.22.00.1800", list), L"zero");

    list = {Module(L"blank", "", fits), Module(L"zero", "0", doesNotFit)};
    SortByVersion(list);
    EXPECT_EQ(Choice("10.22.00.1800", list), L"blank");
}
