// The early log, brought out to a logger or a console that throws in between.

#include <iostream>
#include <memory>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include <plugin/ILogger.h>
#include "host/SSOClientManager.h"
#include "support/LogSink.h"
#include "support/SSOClientManagerMutex.h"

using namespace Halvorix;
using namespace Halvorix::SSOServices;
using testing::ElementsAre;

namespace {

/// Writes down each line, and throws at the one that it is told.
class ThrowingLogger : public ILogger {
public:
    explicit ThrowingLogger(std::wstring refusedLine) : refused(std::move(refusedLine)) {}

    void WriteLine(wchar_t const* message, Log::LogLevel) override
    {
        lines.emplace_back(message);
        if (message == refused)
            throw std::runtime_error("no room");
    }

    std::vector<std::wstring> lines;

private:
    std::wstring refused;
};

/// Takes nothing.
class NoConsole : public std::wstreambuf {};

/// In place of the console, with exceptions for what it cannot take.
class ThrowingConsole {
public:
    ThrowingConsole() : original(std::wcout.rdbuf(&nothing))
    {
        std::wcout.exceptions(std::ios::badbit);
    }
    ~ThrowingConsole()
    {
        std::wcout.exceptions(std::ios::goodbit);
        std::wcout.rdbuf(original); // clears its state
    }
    ThrowingConsole(ThrowingConsole const&) = delete;
    ThrowingConsole& operator=(ThrowingConsole const&) = delete;

private:
    NoConsole nothing;
    std::wstreambuf* original;
};

bool LockIsFree()
{
    bool isFree = false;
    std::thread([&isFree] {
        isFree = SSOClientManagerMutex.try_lock();
        if (isFree)
            SSOClientManagerMutex.unlock();
    }).join();
    return isFree;
}

class LogFlush : public testing::Test {
protected:
    LogFlush()
    {
        TakeEarlyLog();
        for (wchar_t const* const line : {L"first", L"second", L"third"})
            LogWrite(line, Log::LogLevel::Info);
    }
    ~LogFlush() override
    {
        InstallLogger(nullptr);
        TakeEarlyLog();
    }
};

} // namespace

// None is lost, and those that had come out come once more.
TEST_F(LogFlush, KeepsEveryLineWhenTheLoggerThrowsInBetween)
{
    auto const throwing = std::make_shared<ThrowingLogger>(L"second");
    InstallLogger(throwing);
    EXPECT_THROW(FlushEarlyLog(), std::runtime_error);
    EXPECT_THAT(throwing->lines, ElementsAre(L"first", L"second"));
    EXPECT_TRUE(LockIsFree());
    // It is called for the next line all the same.
    LogWrite(L"next", Log::LogLevel::Info);
    EXPECT_THAT(throwing->lines, ElementsAre(L"first", L"second", L"next"));

    auto const good = std::make_shared<ThrowingLogger>(L"");
    InstallLogger(good);
    FlushEarlyLog();
    EXPECT_THAT(good->lines, ElementsAre(L"first", L"second", L"third"));
    FlushEarlyLog();
    EXPECT_EQ(good->lines.size(), 3u);
}

// What a question found out is not found out again, and so its lines do not come again.
TEST_F(LogFlush, OfAQuestionForAPathGoesOnBehindALineThatTheLoggerRefused)
{
    auto const ask = [](std::wstring const& refused) {
        SSOClientManager::ReleaseInstance();
        auto const logger = std::make_shared<ThrowingLogger>(refused);
        InstallLogger(logger);
        if (refused.empty())
            SSOClientPrivate::GetOpenSslModule();
        else
            EXPECT_THROW(SSOClientPrivate::GetOpenSslModule(), std::runtime_error);
        return logger->lines;
    };
    std::vector<std::wstring> const lines = ask(L"");
    ASSERT_GT(lines.size(), 2u);
    EXPECT_EQ(ask(lines[1]), lines);
    EXPECT_EQ(ask(lines.back()), lines);
    SSOClientManager::ReleaseInstance();
}

TEST_F(LogFlush, HandsOnWhatTheConsoleThrowsAndKeepsTheLines)
{
    {
        ThrowingConsole const console;
        EXPECT_THROW(FlushEarlyLog(), std::ios::failure);
        EXPECT_TRUE(LockIsFree());
    }
    auto const good = std::make_shared<ThrowingLogger>(L"");
    InstallLogger(good);
    FlushEarlyLog();
    EXPECT_THAT(good->lines, ElementsAre(L"first", L"second", L"third"));
}
