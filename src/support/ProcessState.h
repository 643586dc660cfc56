#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "../../include/plugin/PluginTypes.h"

namespace Halvorix::WebServices {
class WebServicesManager;
}

namespace Halvorix::WebServicesUI {
class WebServicesUIManager;
}

namespace Halvorix::SSOServices {

class ILogger;
class SSOClientManager;

/// A message that waits for the plugin's logger.
struct EarlyLogEntry {
    std::wstring text;
    Log::LogLevel level;
};

// All state of the library that belongs to the process, in one place, so that
// the order of construction and destruction is plain to see.

/// Serialises the creation of the manager, the load, the factory's getters and
/// the log. Recursive: the load logs while it holds it.
extern std::recursive_mutex SSOClientManagerMutex;

/// Both under SSOClientManagerMutex.
extern std::vector<EarlyLogEntry> earlyLogQueue;
extern std::shared_ptr<ILogger> logger;

/// Written under SSOClientManagerMutex, and read without it once
/// clientManagerPublished is set.
extern std::shared_ptr<SSOClientManager> clientManager;
extern std::atomic<bool> clientManagerPublished;

// Unguarded: hosts initialise and uninitialise from one thread at a time.
extern int webServicesManagerCount;
extern WebServices::WebServicesManager* webServicesManager;
extern int webServicesUIManagerCount;
extern WebServicesUI::WebServicesUIManager* webServicesUIManager;

/// Given to WebServicesManager::SetSupportFileSearchPaths; survives
/// Uninitialize.
extern std::vector<std::wstring> supportFileSearchPaths;

} // namespace Halvorix::SSOServices
