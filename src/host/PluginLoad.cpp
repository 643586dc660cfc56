// SSOClientManager: the load, from the first request for an interface to a working plugin.

#include <plugin/ILogger.h>
#include <plugin/ISSOClientFactory.h>
#include <plugin/ISSOClientModule.h>
#include <plugin/ISSOLogManager.h>
#include <plugin/ISSOServerManager.h>
#include "discovery/FileSearch.h"
#include "discovery/ModuleFiles.h"
#include "discovery/PathText.h"
#include "host/SSOClientManager.h"
#include "host/SupportFileSearchPaths.h"
#include "support/LibraryIdentity.h"
#include "support/LogSink.h"
#include "support/ProcessEnd.h"
#include "support/SystemError.h"
#include "support/TextConversion.h"

namespace Halvorix::SSOServices {

namespace {

using FactoryProcedure = std::shared_ptr<ISSOClientFactory> (*)();

} // namespace

bool SSOClientManager::AnnounceAndLoad()
{
    // Every call without a factory says so again, on purpose.
    LogMessage(log, Messages::Banner, Platform::LibraryFileName(), Utf8ToWide(LibraryVersion),
               BuildName(), libraryFile);
    SetSupportFileSearchPaths(SupportFileSearchPaths());
    return LoadPlugin() && clientFactory;
}

bool SSOClientManager::LoadPlugin()
{
    if (moduleHandle != nullptr)
        return true;
    if (loadState == LoadBegun || processIsEnding)
        return false;
    loadState = LoadBegun;
    std::wstring const file = Ask(&SSOPathResolver::GetSSOClientPluginModule);
    if (file.empty() || !PathExists(WideToUtf8(file))) {
        LogMessage(log, Messages::PluginNotFound, file);
        FlushEarlyLog(); // the one failure that shows the whole log
        return false;
    }
    if (!LoadPluginModule(file))
        return false;
    // From here on the lines name the file that the system mapped.
    if (!GetFactory(ResolveModuleFile(FileName(file))))
        return false;
    SetUpPlugin();
    return true;
}

bool SSOClientManager::LoadPluginModule(std::wstring const& file)
{
    WorkBeforeTheEnd const work;
    if (!work.MayBegin())
        return false;
    LogMessage(log, Messages::PluginLoading, file);
    Platform::SetDependencyDirectory(ParentPath(file).c_str());
    moduleHandle = Platform::LoadModule(file);
    // The system's own order, not what the host may have set before.
    Platform::SetDependencyDirectory(nullptr);
    if (moduleHandle == nullptr) {
        LogMessage(log, Messages::PluginLoadFailed, file, FormatSystemError(Platform::LastError()));
        return false;
    }
    return true;
}

bool SSOClientManager::GetFactory(std::wstring const& file)
{
    LogMessage(log, Messages::PluginLoaded, file);
    LogMessage(log, Messages::FactoryProcGetting, file);
    auto const procedure = reinterpret_cast<FactoryProcedure>(
        Platform::FindProcedure(moduleHandle, Platform::FactoryProcedureName()));
    if (procedure == nullptr) {
        LogMessage(log, Messages::FactoryProcMissing, file,
                   FormatSystemError(Platform::LastError()));
        return false;
    }
    LogMessage(log, Messages::FactoryGetting, file);
    clientFactory = procedure();
    return clientFactory != nullptr; // an empty factory is not logged, on purpose
}

void SSOClientManager::SetUpPlugin()
{
    std::shared_ptr<ISSOServerManager> const server = clientFactory->GetSSOServerManager();
    if (server) {
        std::wstring const exeFile = Ask(&SSOPathResolver::GetSSOServerAppExeFile);
        std::wstring const appPath = Ask(&SSOPathResolver::GetSSOServerAppPath);
        server->SetSSOServerAppFiles(appPath.c_str(), exeFile.c_str());
    }
    std::shared_ptr<ISSOLogManager> const logs = clientFactory->GetSSOLogManager();
    if (logs) {
        InstallLogger(logs->GetLogger(L"HxSSOServices"));
        FlushEarlyLog();
    }
    if (server) {
        server->SetSSOServerProcessName(Ask(&SSOPathResolver::GetSSOServerProcessName).c_str());
        server->SetSSOServerName(Ask(&SSOPathResolver::GetSSOServerName).c_str());
    }
    std::shared_ptr<ISSOClientModule> const module = clientFactory->GetSSOClientModule();
    if (module) {
        std::wstring const openSsl = Ask(&SSOPathResolver::GetOpenSslModule);
        if (openSsl.empty() || !PathExists(openSsl))
            LogMessage(log, Messages::OpenSslModuleNotFound, openSsl);
        module->SetOpenSslModule(openSsl.c_str());
    }
    loadState = LoadEnded;
}

} // namespace Halvorix::SSOServices
