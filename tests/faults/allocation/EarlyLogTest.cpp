// The early log with each allocation failing.

#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "faults/allocation/Allocator.h"
#include "support/EarlyLog.h"

using namespace Halvorix;
using namespace Halvorix::SSOServices;

namespace {

/// Lines of which some come again, and some in rows.
std::vector<std::wstring> LinesToAdd()
{
    std::vector<std::wstring> lines;
    for (int i = 0; i < 40; ++i) {
        lines.push_back(L"a line that comes again, longer than what a text holds in itself");
        lines.push_back(L"one of a row");
        if (i % 7 == 0)
            lines.push_back(L"line " + std::to_wstring(i));
    }
    return lines;
}

std::vector<std::wstring> LinesOf(EarlyLog const& log)
{
    std::vector<std::wstring> lines;
    log.ForEach([&lines](EarlyLogEntry const& line) { lines.push_back(line.text); });
    return lines;
}

} // namespace

// A line is added whole or not at all, and those before it and after it are what they are.
TEST(EarlyLogAllocation, FailingLosesTheLineAloneThatWasTold)
{
    std::vector<std::wstring> const toAdd = LinesToAdd();
    int refused = 0;
    bool failed = true;
    for (int nth = 1; failed; ++nth) {
        EarlyLog log;
        std::vector<bool> isAdded(toAdd.size());
        {
            Faults::Failure const failure(nth, Faults::FailureMode::Once);
            for (std::size_t i = 0; i < toAdd.size(); ++i) {
                try {
                    log.Add(toAdd[i], Log::LogLevel::Info);
                    isAdded[i] = true;
                } catch (std::bad_alloc const&) {
                    ++refused;
                }
            }
            failed = Faults::Failure::HasHappened();
        }
        std::vector<std::wstring> expected;
        for (std::size_t i = 0; i < toAdd.size(); ++i) {
            if (isAdded[i])
                expected.push_back(toAdd[i]);
        }
        EXPECT_EQ(LinesOf(log), expected) << nth;
    }
    EXPECT_GT(refused, 10);
}

// What comes twice is a row, so that each of these is one that never comes again.
TEST(EarlyLogAllocation, IsBoundedWhateverTheOrder)
{
    std::vector<std::wstring> texts;
    for (int i = 0; i < 300; ++i)
        texts.push_back(std::to_wstring(i));
    EarlyLog log;
    long const before = Faults::LiveBlocks();
    long most = 0;
    for (std::size_t pair = 0; pair < 45000; ++pair) {
        for (std::size_t const text : {pair / 300, pair % 300, pair / 300, pair % 300})
            log.Add(texts[text], Log::LogLevel::Info);
        most = std::max(most, Faults::LiveBlocks() - before);
    }
    // Three for each of 32,768 rows.
    EXPECT_LT(most, 100000);
    EXPECT_GT(most, 50000);
}
