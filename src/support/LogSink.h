#pragma once

#include <functional>
#include <memory>
#include <string>

#include <plugin/PluginTypes.h>
#include "support/EarlyLog.h"
#include "support/Messages.h"

namespace Halvorix::SSOServices {

class ILogger;

/// The log, below the user's local application data. The plugin's logger writes it; nothing
/// in the library does.
inline constexpr wchar_t const* LogFile = L"Halvorix/Web Services/Log/WebServices.log";

/// Where a line goes; a function that is empty loses it.
using LogFunction = std::function<void(std::wstring, Log::LogLevel)>;

/// The one way of every line of the library: composed from its message, then handed on.
template <class... Arguments>
void LogMessage(LogFunction const& log, Message const& message, Arguments const&... arguments)
{
    if (log)
        log(Compose(message, arguments...), message.level);
}

/// To the plugin's logger; without one the line waits in the early log, and an
/// error is also shown on the console at once.
void LogWrite(std::wstring message, Log::LogLevel level);

/// Sends the early log to the logger, or to the console if there is none.
void FlushEarlyLog();

/// Empties the early log.
EarlyLog TakeEarlyLog();

/// Replaces the logger and answers the one before; an empty pointer leaves the library
/// without one.
std::shared_ptr<ILogger> InstallLogger(std::shared_ptr<ILogger> newLogger);

} // namespace Halvorix::SSOServices
