#pragma once

#include <functional>
#include <memory>
#include <string>

#include <plugin/PluginTypes.h>
#include "support/EarlyLog.h"
#include "support/Messages.h"

namespace Halvorix::SSOServices {

class ILogger;

/// Where the service's log belongs, below the user's local application data. Nothing in the
/// library opens it, and a plugin's logger may write elsewhere.
inline constexpr wchar_t const* LogFile = L"Halvorix/Web Services/Log/WebServices.log";

/// What a plugin's logger may read; nothing in the library does.
inline constexpr char const* LogConfigFileName = "WebServices.logconfig";

/// Where a line goes; a function that is empty loses it.
using LogFunction = std::function<void(std::wstring, Log::LogLevel)>;

/// How every line of the library is logged: composed from its message, then handed on.
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

/// Empties the early log, and answers what was in it.
EarlyLog TakeEarlyLog();

/// Replaces the logger and answers the one before; an empty pointer leaves the library
/// without one.
std::shared_ptr<ILogger> InstallLogger(std::shared_ptr<ILogger> newLogger);

} // namespace Halvorix::SSOServices
