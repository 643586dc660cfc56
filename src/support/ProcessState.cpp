#include "ProcessState.h"

#include "Undestroyed.h"

namespace Halvorix::SSOServices {

namespace {

Undestroyed<std::recursive_mutex> mutexObject;
Undestroyed<EarlyLog> earlyLogQueueObject;
Undestroyed<std::shared_ptr<ILogger>> loggerObject;
Undestroyed<std::shared_ptr<SSOClientManager>> clientManagerObject;

} // namespace

std::recursive_mutex& SSOClientManagerMutex = mutexObject.value;
EarlyLog& earlyLogQueue = earlyLogQueueObject.value;
std::shared_ptr<ILogger>& logger = loggerObject.value;
std::shared_ptr<SSOClientManager>& clientManager = clientManagerObject.value;
std::atomic<bool> clientManagerPublished{false};
std::atomic<int> webServicesManagerCount{0};
std::atomic<WebServices::WebServicesManager*> webServicesManager{nullptr};
std::atomic<int> webServicesUIManagerCount{0};
std::atomic<WebServicesUI::WebServicesUIManager*> webServicesUIManager{nullptr};
std::atomic<void (*)()> releasePlugin{nullptr};
std::atomic<bool> processIsEnding{false};

namespace {

// A plugin that is let go may call the library from its destructors.
struct ProcessEnd {
    ProcessEnd() = default;
    ~ProcessEnd()
    {
        processIsEnding = true;
        if (void (*const release)() = releasePlugin)
            release();
    }
    ProcessEnd(ProcessEnd const&) = delete;
    ProcessEnd& operator=(ProcessEnd const&) = delete;
} const processEnd;

} // namespace

} // namespace Halvorix::SSOServices
