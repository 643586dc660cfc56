#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "discovery/Version.h"
#include "discovery/VersionRange.h"
#include "framework/ThisBuild.h"

// The examples of docs/version-rules.md, held against the code.

using namespace Halvorix::SSOServices;

namespace {

Version Parsed(std::string const& text)
{
    Version version;
    ParseVersion(version, text);
    return version;
}

std::vector<std::string> const& Page()
{
    static std::vector<std::string> const lines = [] {
        std::ifstream stream(Rig::SourceFile("docs/version-rules.md"));
        std::vector<std::string> read;
        for (std::string line; std::getline(stream, line);)
            read.push_back(line);
        return read;
    }();
    return lines;
}

/// The rows of the table below a heading, as the groups of the expression, which
/// each of them has to match.
std::vector<std::smatch> Rows(std::string const& heading, std::string const& form)
{
    std::regex const expression(form);
    std::vector<std::smatch> rows;
    auto line = std::find(Page().begin(), Page().end(), "## " + heading);
    if (line != Page().end())
        ++line;
    int seen = 0;
    for (; line != Page().end() && line->compare(0, 3, "## ") != 0; ++line) {
        // The first two are the table's head.
        if (line->compare(0, 1, "|") != 0 || ++seen <= 2)
            continue;
        std::smatch match;
        EXPECT_TRUE(std::regex_match(*line, match, expression)) << *line;
        if (!match.empty())
            rows.push_back(match);
    }
    EXPECT_FALSE(rows.empty()) << heading;
    return rows;
}

} // namespace

TEST(VersionRulesPage, ShowsHowTextsAreCut)
{
    for (std::smatch const& row :
         Rows("A version", R"(\| `([^`]*)` \| ((?:`[^`]*` ?)+|none: .*?) \|)")) {
        std::string shown;
        for (std::string const& component : Parsed(row[1]))
            shown += (shown.empty() ? "`" : " `") + component + "`";
        if (shown.empty())
            shown = "none: no version";
        EXPECT_EQ(row[2].str(), shown) << row[1];
    }
}

TEST(VersionRulesPage, ShowsWhichIsHigher)
{
    std::map<std::string, int> const orders = {{"higher", 1}, {"lower", -1}, {"equal", 0}};
    for (std::smatch const& row :
         Rows("Which is higher", R"(\| `([^`]*)` \| `([^`]*)` \| (higher|lower|equal) \|.*)"))
        EXPECT_EQ(CompareVersions(Parsed(row[1]), Parsed(row[2]), -1), orders.at(row[3]))
            << row[1] << " and " << row[2];
}

TEST(VersionRulesPage, ShowsWhatIsInARange)
{
    for (std::smatch const& row : Rows("A range", R"(\| (`.*?) \| ([0-9.]+) \| (yes|no)\b.* \|)")) {
        std::map<std::string, std::string> parts;
        std::string const text = row[1];
        std::regex const part("`(minVersion|maxVersion|versions)` ([0-9.]+)");
        for (std::sregex_iterator match(text.begin(), text.end(), part), end; match != end; ++match)
            parts[(*match)[1]] = (*match)[2];
        ASSERT_FALSE(parts.empty()) << text;
        VersionRange range;
        range.Set(parts["minVersion"], parts["maxVersion"], {parts["versions"]});
        EXPECT_EQ(range.Contains(Parsed(row[2])), row[3] == "yes") << text << ": " << row[2];
    }
}
