#include "ProcessState.h"

namespace Halvorix::SSOServices {

// The mutex first: it is destroyed last.
std::recursive_mutex SSOClientManagerMutex;
std::vector<EarlyLogEntry> earlyLogQueue;
std::vector<std::wstring> supportFileSearchPaths;
std::shared_ptr<ILogger> logger;
int loggerNesting = 0;
std::shared_ptr<SSOClientManager> clientManager;
std::atomic<bool> clientManagerPublished{false};
int webServicesManagerCount = 0;
WebServices::WebServicesManager* webServicesManager = nullptr;
int webServicesUIManagerCount = 0;
WebServicesUI::WebServicesUIManager* webServicesUIManager = nullptr;
void (*releasePlugin)() = nullptr;

namespace {

// The last one, and so destroyed first: a plugin that is let go may call the
// library from its destructors.
struct ProcessEnd {
    ProcessEnd() = default;
    ~ProcessEnd()
    {
        if (releasePlugin != nullptr)
            releasePlugin();
    }
    ProcessEnd(ProcessEnd const&) = delete;
    ProcessEnd& operator=(ProcessEnd const&) = delete;
} const processEnd;

} // namespace

} // namespace Halvorix::SSOServices
