#include "LogSink.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <utility>

#include "../../include/plugin/ILogger.h"
#include "ProcessState.h"

namespace Halvorix::SSOServices {

namespace {

// A logger may call back into the library, whose lines then come to it while it
// still writes. Lines of calls from inside such calls wait in the early log:
// otherwise a logger that asks what is logged would never come to an end.
constexpr int DeepestNesting = 2;

class NestedWrite {
public:
    NestedWrite() { ++loggerNesting; }
    ~NestedWrite() { --loggerNesting; }
    NestedWrite(NestedWrite const&) = delete;
    NestedWrite& operator=(NestedWrite const&) = delete;
};

void ShowOnConsole(std::wstring const& text) { std::wcout << text << std::endl; }

// A copy of the pointer: a call back may replace the logger.
std::shared_ptr<ILogger> LoggerToCall()
{
    return loggerNesting < DeepestNesting ? logger : nullptr;
}

} // namespace

void WriteLogLine(std::wstring message, Log::LogLevel level)
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    if (std::shared_ptr<ILogger> const target = LoggerToCall()) {
        NestedWrite const nested;
        target->WriteLine(message.c_str(), level);
        return;
    }
    if (level != Log::LogLevel::Error) {
        earlyLogQueue.push_back({std::move(message), level});
        return;
    }
    earlyLogQueue.push_back({message, level});
    ShowOnConsole(message); // not the entry: a console that calls back adds others
}

void FlushEarlyLog()
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    // Those that are there now, by index, and the logger anew for each: a logger
    // that calls back may add lines and replace itself.
    std::size_t const count = earlyLogQueue.size();
    for (std::size_t i = 0; i < std::min(count, earlyLogQueue.size()); ++i) {
        EarlyLogEntry const entry = earlyLogQueue[i];
        if (std::shared_ptr<ILogger> const target = logger) {
            NestedWrite const nested;
            target->WriteLine(entry.text.c_str(), entry.level);
        } else {
            ShowOnConsole(entry.text); // whatever its level, on purpose
        }
    }
    auto const shown = static_cast<std::ptrdiff_t>(std::min(count, earlyLogQueue.size()));
    earlyLogQueue.erase(earlyLogQueue.begin(), earlyLogQueue.begin() + shown);
}

void InstallLogger(std::shared_ptr<ILogger> newLogger)
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    logger = std::move(newLogger);
}

} // namespace Halvorix::SSOServices
