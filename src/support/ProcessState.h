#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "support/EarlyLog.h"

namespace Halvorix::WebServices {
class WebServicesManager;
}

namespace Halvorix::WebServicesUI {
class WebServicesUIManager;
}

namespace Halvorix::SSOServices {

class ILogger;
class SSOClientManager;

// All state of the library that belongs to the process, in one place. It is never
// destroyed: threads of the host may use the library until the process is gone,
// and so may destructors that run after the library's own end.

/// Serialises the creation of the manager, the load, the factory's getters and
/// the log. Recursive: the load logs while it holds it.
extern std::recursive_mutex& SSOClientManagerMutex;

/// Both under SSOClientManagerMutex.
extern EarlyLog& earlyLogQueue;
extern std::shared_ptr<ILogger>& logger;

/// Created under SSOClientManagerMutex, and read without it once
/// clientManagerPublished is set; released without it.
extern std::shared_ptr<SSOClientManager>& clientManager;
extern std::atomic<bool> clientManagerPublished;

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

// Under no lock: hosts initialise and uninitialise from one thread at a time, and may
// ask from others meanwhile.
extern std::atomic<int> webServicesManagerCount;
extern std::atomic<WebServices::WebServicesManager*> webServicesManager;
extern std::atomic<int> webServicesUIManagerCount;
extern std::atomic<WebServicesUI::WebServicesUIManager*> webServicesUIManager;

} // namespace Halvorix::SSOServices
