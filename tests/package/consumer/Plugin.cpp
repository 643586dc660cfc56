// A plugin with one interface and a logger that is silent: what a host prints
// is its own.

#include <plugin/Defaults.h>

namespace {

using namespace Halvorix::SSOServices;

class LogManager : public SSOLogManagerDefaults {
    std::shared_ptr<ILogger> GetLogger(std::wstring) override
    {
        return std::make_shared<LoggerDefaults>();
    }
};

class ServerManager : public SSOServerManagerDefaults {
    bool IsSSOServerProcessRunning(long long& process) override
    {
        process = 4711;
        return true;
    }
};

class Factory : public SSOClientFactoryDefaults {
    std::shared_ptr<ISSOLogManager> GetSSOLogManager() override
    {
        return std::make_shared<LogManager>();
    }
    std::shared_ptr<ISSOServerManager> GetSSOServerManager() override
    {
        return std::make_shared<ServerManager>();
    }
};

} // namespace

std::shared_ptr<ISSOClientFactory> GetSSOClientFactory() { return std::make_shared<Factory>(); }
