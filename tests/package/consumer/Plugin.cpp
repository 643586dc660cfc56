// A plugin with one interface and a logger that is silent: what a host prints
// is its own.

#include <plugin/Plugin.h>

namespace {

using namespace Halvorix::SSOServices;
using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

class SilentLogger : public ILogger {
    void WriteLine(wchar_t const*, Halvorix::Log::LogLevel) override {}
};

class LogManager : public ISSOLogManager {
    std::shared_ptr<ILogger> GetLogger(std::wstring) override
    {
        return std::make_shared<SilentLogger>();
    }
};

class ServerManager : public ISSOServerManager {
    void SetSSOServerAppFiles(wchar_t const*, wchar_t const*) override {}
    std::wstring GetSSOServerAppFile() override { return {}; }
    std::wstring GetSSOServerAppExeFile() override { return {}; }
    void SetSSOServerProcessName(char const*) override {}
    int GetSSOServerName(char*, int) override { return 0; }
    void SetSSOServerName(char const*) override {}
    int GetSSOEventServerName(char*, int) override { return 0; }
    bool StartSSOServerProcess(Texts const&, milliseconds, long long&) override { return false; }
    bool StartSSOServerProcess(milliseconds, long long&) override { return false; }
    bool GetSSOServerProcessArguments(Texts&) override { return false; }
    void SetSSOServerProcessArguments(Texts const&) override {}
    bool IsSSOServerProcessRunning(long long& process) override
    {
        process = 4711;
        return true;
    }
    bool IsSSOServerProcessReady() override { return false; }
    bool QuitSSOServerProcess(milliseconds) override { return false; }
    bool QuitAllSSOServerProcesses(milliseconds) override { return false; }
};

class Factory : public ISSOClientFactory {
    std::shared_ptr<ISSOLogManager> GetSSOLogManager() override
    {
        return std::make_shared<LogManager>();
    }
    std::shared_ptr<ISSOClientModule> GetSSOClientModule() override { return nullptr; }
    std::shared_ptr<ISSOClient> GetSSOClient() override { return nullptr; }
    std::shared_ptr<ISSOClientUI> GetSSOClientUI() override { return nullptr; }
    std::shared_ptr<ISSOClientPrivate> GetSSOClientPrivate() override { return nullptr; }
    std::shared_ptr<ISSOServerManager> GetSSOServerManager() override
    {
        return std::make_shared<ServerManager>();
    }
};

} // namespace

std::shared_ptr<ISSOClientFactory> GetSSOClientFactory() { return std::make_shared<Factory>(); }
