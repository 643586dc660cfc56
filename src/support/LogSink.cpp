#include "LogSink.h"

#include <cstddef>
#include <iostream>
#include <utility>

#include "../../include/plugin/ILogger.h"
#include "ProcessState.h"

namespace Halvorix::SSOServices {

namespace {

void ShowOnConsole(std::wstring const& text) { std::wcout << text << std::endl; }

} // namespace

void WriteLogLine(std::wstring const& message, Log::LogLevel level)
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    if (std::shared_ptr<ILogger> const target = logger) {
        target->WriteLine(message.c_str(), level);
        return;
    }
    earlyLogQueue.push_back({message, level});
    if (level == Log::LogLevel::Error)
        ShowOnConsole(message);
}

void FlushEarlyLog()
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    // By index, and the logger anew for each entry: a logger may call back.
    for (std::size_t i = 0; i < earlyLogQueue.size(); ++i) {
        EarlyLogEntry const entry = earlyLogQueue[i];
        if (std::shared_ptr<ILogger> const target = logger)
            target->WriteLine(entry.text.c_str(), entry.level);
        else
            ShowOnConsole(entry.text); // whatever its level, on purpose
    }
    earlyLogQueue.clear();
}

void InstallLogger(std::shared_ptr<ILogger> newLogger)
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    logger = std::move(newLogger);
}

} // namespace Halvorix::SSOServices
