#pragma once

#include <functional>
#include <memory>
#include <string>

#include <plugin/PluginTypes.h>

namespace Halvorix::SSOServices {

class ILogger;

using LogFunction = std::function<void(std::wstring, Log::LogLevel)>;

/// To the plugin's logger; without one the line waits in the early log, and an
/// error is also shown on the console at once.
void WriteLogLine(std::wstring message, Log::LogLevel level);

/// Sends the early log to the logger, or to the console if there is none.
void FlushEarlyLog();

/// Replaces the logger; an empty pointer leaves the library without one.
void InstallLogger(std::shared_ptr<ILogger> newLogger);

} // namespace Halvorix::SSOServices
