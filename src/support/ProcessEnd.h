#pragma once

#include <atomic>
#include <mutex>

namespace Halvorix::SSOServices {

/// Set by the manager: how to let the plugin go at the end of the process.
extern std::atomic<void (*)()> releasePlugin;

/// From then on nothing is loaded: the modules that a load needs may have ended, too, and
/// Linux's loader would start them again.
extern std::atomic<bool> processIsEnding;

/// Work with the loader, or with what the ends of other libraries destroy, such as Boost's
/// locale generators. The end of the process waits for it, though not forever. Ask MayBegin
/// before the work.
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

/// Locks a mutex that is only ever held for a moment. At the end of the process a thread that
/// the system has ended may still hold it; no other thread is left then, and the lock that
/// comes back may be empty.
std::unique_lock<std::mutex> LockBriefly(std::mutex& mutex);

} // namespace Halvorix::SSOServices
