// SSOPathResolver: where the server application lies and how it is named.

#include <memory>

#include "discovery/FileSearch.h"
#include "discovery/PathText.h"
#include "discovery/SSOPathResolver.h"
#include "platform/Platform.h"
#include "support/SystemError.h"

namespace Halvorix::SSOServices {

std::wstring SSOPathResolver::GetSSOServerAppPath()
{
    if (ssoServerAppPath.empty())
        FindSSOServerApp();
    return ssoServerAppPath;
}

std::wstring SSOPathResolver::GetSSOServerAppExeDirPath() { return GetSSOServerAppPath(); }

std::wstring SSOPathResolver::GetSSOServerAppExeFile()
{
    return GetSSOServerAppPath().empty() ? std::wstring() : ServerAppExeFile();
}

std::wstring SSOPathResolver::ServerAppExeFile() const
{
    return NormalizePath(JoinPath(ssoServerAppPath, clientConfig.exeName));
}

std::string SSOPathResolver::GetSSOServerProcessName() const { return clientConfig.processName; }

std::string SSOPathResolver::GetSSOServerName() const { return clientConfig.serverName; }

std::vector<std::wstring> SSOPathResolver::ServerAppDirectories()
{
    std::vector<std::wstring> paths{L"%SSOServicesModulePath%", L"%ExePath%"};
    paths.insert(paths.end(), clientConfig.searchPaths.begin(), clientConfig.searchPaths.end());
    ResolveServerAppSearchPaths(paths);
    return paths;
}

bool SSOPathResolver::FindSSOServerApp()
{
    if (!ssoServerAppPath.empty())
        return true;
    if (clientConfigState == NotLoaded)
        LoadClientConfig();
    std::wstring const shown =
        Announce(Messages::ServerSearching, clientConfig.appName, ServerAppDirectories());
    // Blank only after a load that ended in an exception.
    if (clientConfig.appName.empty())
        return false;
    std::wstring found;
    if (!FindFileInPaths(clientConfig.appName, ServerAppDirectories(), found)) {
        LogMessage(logFunction, Messages::ServerMissing, clientConfig.appName, shown);
        return false;
    }
    // Empty for a hit in the current directory: then the next question searches
    // again, and the line is built without asking one.
    ssoServerAppPath = ParentPath(found);
    LogMessage(logFunction, Messages::ServerFound, ServerAppExeFile());
    return !ssoServerAppPath.empty();
}

void SSOPathResolver::AddRegistrySearchPath()
{
    using Platform::LocationView;
    Platform::LocationKey opened = nullptr;
    Platform::ErrorCode error = Platform::OpenLocationKey(LocationView::Own, opened);
    if (error != 0 && Platform::IsWow64Process())
        error = Platform::OpenLocationKey(LocationView::Native64, opened);
    if (error != 0) {
        LogMessage(logFunction, Messages::RegistryUnavailable, FormatSystemError(error));
        return;
    }
    std::unique_ptr<void, decltype(&Platform::CloseLocationKey)> const key(
        opened, &Platform::CloseLocationKey);
    std::wstring location;
    if (!Platform::ReadLocation(key.get(), location))
        return;
    // As it stands, unresolved and even if empty.
    clientConfig.searchPaths.push_back(location);
    LogMessage(logFunction, Messages::RegistryRead, location);
}

} // namespace Halvorix::SSOServices
