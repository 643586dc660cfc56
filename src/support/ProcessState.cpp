#include "ProcessState.h"

namespace Halvorix::SSOServices {

namespace {

// Construction without destruction.
template <class Value>
union Undestroyed {
    constexpr Undestroyed() : value() {}
    ~Undestroyed() {}
    Undestroyed(Undestroyed const&) = delete;
    Undestroyed& operator=(Undestroyed const&) = delete;
    Value value;
};

Undestroyed<std::recursive_mutex> mutexObject;
Undestroyed<std::vector<EarlyLogEntry>> earlyLogQueueObject;
Undestroyed<std::vector<std::wstring>> supportFileSearchPathsObject;
Undestroyed<std::shared_ptr<ILogger>> loggerObject;
Undestroyed<std::shared_ptr<SSOClientManager>> clientManagerObject;

} // namespace

std::recursive_mutex& SSOClientManagerMutex = mutexObject.value;
std::vector<EarlyLogEntry>& earlyLogQueue = earlyLogQueueObject.value;
std::vector<std::wstring>& supportFileSearchPaths = supportFileSearchPathsObject.value;
std::shared_ptr<ILogger>& logger = loggerObject.value;
int loggerNesting = 0;
std::shared_ptr<SSOClientManager>& clientManager = clientManagerObject.value;
std::atomic<bool> clientManagerPublished{false};
int webServicesManagerCount = 0;
WebServices::WebServicesManager* webServicesManager = nullptr;
int webServicesUIManagerCount = 0;
WebServicesUI::WebServicesUIManager* webServicesUIManager = nullptr;
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
