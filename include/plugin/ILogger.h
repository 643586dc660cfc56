#pragma once

#include "PluginTypes.h"

namespace Halvorix::SSOServices {

/// The plugin's log. The library holds it until a later load brings another, at
/// most to the end of the process.
class ILogger {
public:
    virtual ~ILogger() = default;
    virtual void Reserved1() {} ///< Never called.
    virtual void Reserved2() {} ///< Never called.
    virtual void Reserved3() {} ///< Never called.
    virtual void Reserved4() {} ///< Never called.
    virtual void Reserved5() {} ///< Never called.
    virtual void Reserved6() {} ///< Never called.
    virtual void Reserved7() {} ///< Never called.
    virtual void Reserved8() {} ///< Never called.
    virtual void Reserved9() {} ///< Never called.
    /// One finished message of the library's log, without a line end of its own; some
    /// hold line feeds inside, and on Windows those with a system error's text end as
    /// the system's text does, in a carriage return and a line feed. Texts of
    /// configuration files come with whatever control characters they hold: escape what
    /// must not reach a terminal.
    ///
    /// Called from any thread with the library's recursive lock held: you may call the library
    /// on the same thread, but must not wait for another thread that uses it. Lines logged by
    /// such calls arrive here up to 32 deep; once one is deeper, it and those after it wait
    /// until the outermost call returns.
    /// @param message terminated, valid for the call only
    /// @param level one of the three values of LogLevel
    virtual void WriteLine(wchar_t const* message, Log::LogLevel level) = 0;
};

} // namespace Halvorix::SSOServices
