#pragma once

#include <atomic>
#include <mutex>

namespace Halvorix::SSOServices {

/// Set by the manager: how to let the plugin go at the end of the process.
extern std::atomic<void (*)()> releasePlugin;

/// From then on nothing is loaded any more: the modules that it takes may have
/// ended, too, and Linux's loader would begin them anew.
extern std::atomic<bool> processIsEnding;

/// Work with the loader, or with what other libraries' own ends take away, such as
/// Boost's makers of locales: the end waits for it, though not for ever. Only to be begun
/// if it may.
class WorkBeforeTheEnd {
public:
    WorkBeforeTheEnd();
    ~WorkBeforeTheEnd();
    WorkBeforeTheEnd(WorkBeforeTheEnd const&) = delete;
    WorkBeforeTheEnd& operator=(WorkBeforeTheEnd const&) = delete;

    bool MayBegin() const { return mayBegin; }

private:
    bool mayBegin;
};

/// Locks what is held for moments only. At the end of the process a thread that the system
/// has ended may hold it for ever: then nobody else is left, and it is not asked for.
std::unique_lock<std::mutex> LockBriefly(std::mutex& mutex);

} // namespace Halvorix::SSOServices
