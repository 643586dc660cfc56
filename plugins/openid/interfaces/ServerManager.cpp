// There is no server process: what is told of one is kept, and none runs.

#include <mutex>

#include <plugin/Defaults.h>

#include "openid/interfaces/HostTexts.h"
#include "openid/interfaces/Interfaces.h"

namespace Halvorix::OpenId {

namespace {

using namespace SSOServices;

class OpenIdServerManager : public SSOServerManagerDefaults {
public:
    void SetSSOServerAppFiles(wchar_t const* appPath, wchar_t const* appExeFile) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        path = appPath == nullptr ? L"" : appPath;
        exeFile = appExeFile == nullptr ? L"" : appExeFile;
    }
    std::wstring GetSSOServerAppFile() override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        return path;
    }
    std::wstring GetSSOServerAppExeFile() override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        return exeFile;
    }
    int GetSSOServerName(char* buffer, int capacity) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        return CopyText(name, buffer, capacity);
    }
    void SetSSOServerName(char const* serverName) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        name = serverName == nullptr ? "" : serverName;
    }

private:
    std::mutex mutex;
    std::wstring path, exeFile;
    std::string name;
};

} // namespace

std::shared_ptr<ISSOServerManager> MakeServerManager()
{
    return std::make_shared<OpenIdServerManager>();
}

} // namespace Halvorix::OpenId
