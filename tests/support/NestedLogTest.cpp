// A logger that calls back into the library while it writes.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <plugin/ILogger.h>
#include "support/EarlyLines.h"
#include "support/LogSink.h"

using namespace Halvorix;
using namespace Halvorix::SSOServices;
using testing::Each;
using testing::SizeIs;

namespace {

/// Has further lines logged for each that it writes, down to a depth.
class NestingLogger : public ILogger {
public:
    NestingLogger(int aDeepest, int aLinesEach) : deepest(aDeepest), linesEach(aLinesEach) {}

    void WriteLine(wchar_t const* message, Log::LogLevel) override
    {
        lines.emplace_back(message);
        ++depth;
        deepestReached = std::max(deepestReached, depth);
        for (int i = 0; i < linesEach && depth < deepest; ++i)
            LogWrite(std::to_wstring(depth + 1), Log::LogLevel::Info);
        --depth;
    }

    std::vector<std::wstring> lines;
    int deepestReached = 0;

private:
    int const deepest;
    int const linesEach;
    int depth = 0;
};

class NestedLog : public testing::Test {
protected:
    ~NestedLog() override
    {
        InstallLogger(nullptr);
        TakeEarlyLog();
    }

    NestingLogger& Install(int deepest, int linesEach = 1)
    {
        auto const logger = std::make_shared<NestingLogger>(deepest, linesEach);
        InstallLogger(logger);
        return *logger;
    }
};

std::vector<std::wstring> NumbersTo(int last)
{
    std::vector<std::wstring> numbers;
    for (int i = 1; i <= last; ++i)
        numbers.push_back(std::to_wstring(i));
    return numbers;
}

constexpr int Deepest = 32;
constexpr int Endless = 1000000;

} // namespace

TEST_F(NestedLog, ArrivesWholeDownTo32Lines)
{
    for (int const depth : {1, 4, 31, 32}) {
        NestingLogger const& logger = Install(depth);
        LogWrite(L"1", Log::LogLevel::Info);
        EXPECT_EQ(logger.lines, NumbersTo(depth));
        EXPECT_TRUE(TakeEarlyLog().IsEmpty()) << depth;
    }
}

TEST_F(NestedLog, WaitsBelowThat)
{
    NestingLogger const& logger = Install(33);
    LogWrite(L"1", Log::LogLevel::Info);
    EXPECT_EQ(logger.lines, NumbersTo(Deepest));
    std::vector<EarlyLogEntry> const waiting = TakeEarlyLines();
    ASSERT_THAT(waiting, SizeIs(1));
    EXPECT_EQ(waiting[0].text, L"33");
}

TEST_F(NestedLog, OfEndlessQuestionsEnds)
{
    NestingLogger& logger = Install(Endless);
    for (int i = 0; i < 3; ++i) {
        logger.lines.clear();
        LogWrite(L"1", Log::LogLevel::Info);
        EXPECT_EQ(logger.lines, NumbersTo(Deepest));
    }
    EXPECT_THAT(TakeEarlyLines(), SizeIs(3));
}

// Each line of each question might else go as deep again: 2 to the 32nd lines.
TEST_F(NestedLog, OfEndlessQuestionsWithSeveralLinesEnds)
{
    NestingLogger& logger = Install(Endless, 2);
    LogWrite(L"1", Log::LogLevel::Info);
    EXPECT_EQ(logger.lines, NumbersTo(Deepest));
    EXPECT_THAT(TakeEarlyLines(), SizeIs(2 + Deepest - 1));
    // The next line of the library is written as ever.
    logger.lines.clear();
    LogWrite(L"1", Log::LogLevel::Info);
    EXPECT_EQ(logger.lines, NumbersTo(Deepest));
}

// Two wide and four deep: nothing of it waits.
TEST_F(NestedLog, ArrivesWholeFromQuestionsWithSeveralLines)
{
    NestingLogger const& logger = Install(4, 2);
    LogWrite(L"1", Log::LogLevel::Info);
    EXPECT_THAT(logger.lines, SizeIs(1 + 2 + 4 + 8));
    EXPECT_EQ(logger.deepestReached, 4);
    EXPECT_TRUE(TakeEarlyLog().IsEmpty());
}
