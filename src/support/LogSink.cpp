#include "support/LogSink.h"

#include <mutex>
#include <utility>

#include <plugin/ILogger.h>
#include "platform/Platform.h"
#include "support/SSOClientManagerMutex.h"
#include "support/Undestroyed.h"

namespace Halvorix::SSOServices {

namespace {

// A logger may call back into the library, whose lines then come to it while it still
// writes. From here on they wait in the early log: otherwise a logger that asks for what
// is logged would never come to an end.
constexpr int DeepestNesting = 32;

// Under SSOClientManagerMutex.
struct State {
    EarlyLog earlyLog;
    std::shared_ptr<ILogger> logger;
    // The logger's calls under way, one inside the other, and whether they came that deep.
    // Each might go as deep again for each of its lines, so after that all lines wait until
    // the first call has returned.
    int nesting = 0;
    bool wasTooDeep = false;
};

// Never destroyed: threads of the host, and destructors that run late, may still log.
Undestroyed<State> undestroyed;
State& state = undestroyed.value;

class NestedWrite {
public:
    NestedWrite() { ++state.nesting; }
    ~NestedWrite()
    {
        if (--state.nesting == 0)
            state.wasTooDeep = false;
    }
    NestedWrite(NestedWrite const&) = delete;
    NestedWrite& operator=(NestedWrite const&) = delete;
};

// A copy of the pointer: a call back may replace the logger.
std::shared_ptr<ILogger> LoggerToCall()
{
    state.wasTooDeep = state.wasTooDeep || state.nesting == DeepestNesting;
    return state.wasTooDeep ? nullptr : state.logger;
}

// With the logger of the moment for each: one that calls back may replace itself.
void Flush(EarlyLogEntry const& entry)
{
    if (std::shared_ptr<ILogger> const target = state.logger) {
        NestedWrite const nested;
        target->WriteLine(entry.text.c_str(), entry.level);
    } else {
        Platform::ShowOnConsole(entry.text); // whatever its level, on purpose
    }
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
    state.earlyLog.Add(message, level);
    if (level == Log::LogLevel::Error)
        Platform::ShowOnConsole(message);
}

void FlushEarlyLog()
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    // Those that are there now: a logger that calls back may add others.
    EarlyLog flushed = TakeEarlyLog();
    try {
        flushed.ForEach(Flush);
    } catch (...) {
        std::swap(flushed, state.earlyLog);
        state.earlyLog.Add(flushed);
        throw;
    }
}

EarlyLog TakeEarlyLog()
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    return std::exchange(state.earlyLog, {});
}

std::shared_ptr<ILogger> InstallLogger(std::shared_ptr<ILogger> newLogger)
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    return std::exchange(state.logger, std::move(newLogger));
}

} // namespace Halvorix::SSOServices
