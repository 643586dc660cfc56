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
struct Sink {
    EarlyLog earlyLog;
    std::shared_ptr<ILogger> logger;
    // The logger's calls under way, one inside the other, and whether they came that deep.
    // Each might go as deep again for each of its lines, so after that all lines wait until
    // the first call has returned.
    int nesting = 0;
    bool wasTooDeep = false;
};

// Never destroyed: threads of the host, and destructors that run late, may still log.
Undestroyed<Sink> undestroyedSink;
Sink& sink = undestroyedSink.value;

class NestedWrite {
public:
    NestedWrite() { ++sink.nesting; }
    ~NestedWrite()
    {
        if (--sink.nesting == 0)
            sink.wasTooDeep = false;
    }
    NestedWrite(NestedWrite const&) = delete;
    NestedWrite& operator=(NestedWrite const&) = delete;
};

// A copy of the pointer: a call back may replace the logger.
std::shared_ptr<ILogger> LoggerToCall()
{
    sink.wasTooDeep = sink.wasTooDeep || sink.nesting == DeepestNesting;
    return sink.wasTooDeep ? nullptr : sink.logger;
}

// With the logger of the moment for each: one that calls back may replace itself.
void Flush(EarlyLogEntry const& entry)
{
    if (std::shared_ptr<ILogger> const target = sink.logger) {
        NestedWrite const nested;
        target->WriteLine(entry.text.c_str(), entry.level);
    } else {
        Platform::ShowOnConsole(entry.text); // whatever its level, on purpose
    }
}

} // namespace

void LogWrite(std::wstring message, Log::LogLevel level)
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    if (std::shared_ptr<ILogger> const target = LoggerToCall()) {
        NestedWrite const nested;
        target->WriteLine(message.c_str(), level);
        return;
    }
    sink.earlyLog.Add(message, level);
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
        std::swap(flushed, sink.earlyLog);
        sink.earlyLog.Add(flushed);
        throw;
    }
}

EarlyLog TakeEarlyLog()
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    return std::exchange(sink.earlyLog, {});
}

std::shared_ptr<ILogger> InstallLogger(std::shared_ptr<ILogger> newLogger)
{
    std::lock_guard<std::recursive_mutex> const lock(SSOClientManagerMutex);
    return std::exchange(sink.logger, std::move(newLogger));
}

} // namespace Halvorix::SSOServices
