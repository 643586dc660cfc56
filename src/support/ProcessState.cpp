#include "ProcessState.h"

namespace Halvorix::SSOServices {

// The mutex first: it is destroyed last.
std::recursive_mutex SSOClientManagerMutex;
std::vector<EarlyLogEntry> earlyLogQueue;
std::shared_ptr<ILogger> logger;
std::shared_ptr<SSOClientManager> clientManager;
std::atomic<bool> clientManagerPublished{false};
int webServicesManagerCount = 0;
WebServices::WebServicesManager* webServicesManager = nullptr;
int webServicesUIManagerCount = 0;
WebServicesUI::WebServicesUIManager* webServicesUIManager = nullptr;
std::vector<std::wstring> supportFileSearchPaths;

} // namespace Halvorix::SSOServices
