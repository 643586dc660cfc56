#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "support/EarlyLines.h"

using namespace Halvorix;
using namespace Halvorix::SSOServices;

namespace {

std::wstring Text(EarlyLog const& log)
{
    std::wstring text;
    log.ForEach([&text](EarlyLogEntry const& entry) {
        text += std::to_wstring(static_cast<int>(entry.level)) + entry.text + L' ';
    });
    return text;
}

void AddEach(EarlyLog& log, std::wstring const& lines)
{
    for (wchar_t const line : lines)
        log.Add(std::wstring(1, line), Log::LogLevel::Info);
}

std::wstring Spelled(std::wstring const& lines)
{
    std::wstring text;
    for (wchar_t const line : lines)
        text += L"8" + std::wstring(1, line) + L' ';
    return text;
}

std::map<std::wstring, int> Counts(std::vector<std::wstring> const& lines)
{
    std::map<std::wstring, int> counts;
    for (std::wstring const& line : lines)
        ++counts[line];
    return counts;
}

/// Each line once, in the order of its first.
std::vector<std::wstring> Firsts(std::vector<std::wstring> const& lines)
{
    std::vector<std::wstring> firsts;
    for (std::wstring const& line : lines)
        if (std::find(firsts.begin(), firsts.end(), line) == firsts.end())
            firsts.push_back(line);
    return firsts;
}

} // namespace

TEST(EarlyLog, GivesEachLineAsOftenAndInTheOrderThatItCame)
{
    for (wchar_t const* const lines :
         {L"", L"a", L"aa", L"aaaaaaa", L"ababab", L"abcabcabca", L"aabaab", L"abbabbabb",
          L"aabbaabb", L"bbbcbcbcb", L"abababcabababc", L"xyxyxyxzxyxyxyxz", L"aaaabbbbaaaabbbb"}) {
        EarlyLog log;
        AddEach(log, lines);
        EXPECT_EQ(Text(log), Spelled(lines)) << testing::PrintToString(lines);
        EXPECT_EQ(log.IsEmpty(), *lines == L'\0');
    }
}

TEST(EarlyLog, GivesAnyLinesBack)
{
    std::mt19937 chance(11);
    for (int round = 0; round < 2000; ++round) {
        EarlyLog log;
        std::wstring lines;
        int const kinds = 1 + static_cast<int>(chance() % 4);
        for (unsigned count = chance() % 200; count > 0; --count)
            lines += static_cast<wchar_t>(L'a' + static_cast<int>(chance()) % kinds);
        AddEach(log, lines);
        ASSERT_EQ(Text(log), Spelled(lines)) << testing::PrintToString(lines);
    }
}

TEST(EarlyLog, TellsLevelsApart)
{
    EarlyLog log;
    log.Add(L"a", Log::LogLevel::Info);
    log.Add(L"a", Log::LogLevel::Error);
    log.Add(L"a", Log::LogLevel::Error);
    EXPECT_EQ(Text(log), L"8a 2a 2a ");
}

TEST(EarlyLog, AddsALaterOneWithItsRepetitions)
{
    EarlyLog log;
    EarlyLog later;
    AddEach(log, L"abbb");
    AddEach(later, L"bbcdcdcd");
    log.Add(later);
    EXPECT_EQ(Text(log), Spelled(L"abbbbbcdcdcd"));
    AddEach(log, L"cdx");
    EXPECT_EQ(Text(log), Spelled(L"abbbbbcdcdcdcdx"));
}

TEST(EarlyLog, CountsCallsThatLogTheSameLines)
{
    for (int const linesOfACall : {1, 2, 3, 17, 64, 65}) {
        EarlyLog log;
        for (int call = 0; call < 2000; ++call)
            for (int i = 0; i < linesOfACall; ++i)
                log.Add(std::to_wstring(i), Log::LogLevel::Error);
        int next = 0;
        log.ForEach([&](EarlyLogEntry const& line) {
            ASSERT_EQ(line.text, std::to_wstring(next++ % linesOfACall));
        });
        EXPECT_EQ(next, 2000 * linesOfACall);
    }
}

// Tens of thousands are given in their order, however it is; more are put together by text.
TEST(EarlyLog, CountsWhatComesInAnOrderThatNeverRepeats)
{
    std::mt19937 chance(12);
    EarlyLog log;
    std::vector<std::wstring> added;
    auto const addUpTo = [&](std::size_t count) {
        while (added.size() < count) {
            Log::LogLevel const level =
                chance() % 2 == 0 ? Log::LogLevel::Error : Log::LogLevel::Info;
            std::wstring const text = std::to_wstring(chance() % 5);
            log.Add(text, level);
            added.push_back(std::to_wstring(static_cast<int>(level)) + text);
        }
    };
    auto const given = [&log] {
        std::vector<std::wstring> lines;
        log.ForEach([&lines](EarlyLogEntry const& line) {
            lines.push_back(std::to_wstring(static_cast<int>(line.level)) + line.text);
        });
        return lines;
    };
    addUpTo(60000);
    EXPECT_TRUE(given() == added);
    addUpTo(140000);
    std::vector<std::wstring> const lines = given();
    EXPECT_FALSE(lines == added);
    EXPECT_EQ(Counts(lines), Counts(added));
    EXPECT_EQ(Firsts(lines), Firsts(added));
}
