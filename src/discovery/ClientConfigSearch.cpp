// SSOPathResolver: the client configuration file, found, read once, overridden.

#include <utility>

#include <json/value.h>

#include "discovery/FileSearch.h"
#include "discovery/JsonFile.h"
#include "discovery/PathText.h"
#include "discovery/SSOPathResolver.h"
#include "support/TextConversion.h"

namespace Halvorix::SSOServices {

std::wstring SSOPathResolver::GetSSOClientConfigFile()
{
    if (clientConfigFile.empty())
        FindClientConfigFile();
    return clientConfigFile;
}

std::wstring SSOPathResolver::GetSSOClientConfigFileOverride() const
{
    return clientConfigFileOverride;
}

void SSOPathResolver::SetSSOClientConfigFileOverride(std::wstring path)
{
    if (AnnounceSSOClientConfigFileOverride(path))
        StoreSSOClientConfigFileOverride(std::move(path));
}

bool SSOPathResolver::AnnounceSSOClientConfigFileOverride(std::wstring const& path)
{
    if (!BeginClientConfigFileOverride(path))
        return false;
    LogMessage(logFunction, Messages::ConfigOverrideSet, path);
    return true;
}

// The file may have been searched for or loaded since, by another thread or by the logger.
void SSOPathResolver::StoreSSOClientConfigFileOverride(std::wstring path)
{
    if (BeginClientConfigFileOverride(path))
        clientConfigFileOverride = std::move(path);
}

bool SSOPathResolver::BeginClientConfigFileOverride(std::wstring const& path)
{
    // A load that failed counts as loaded.
    if (clientConfigState != NotLoaded) {
        LogMessage(logFunction, Messages::ConfigOverrideTooLate, path, clientConfigFile);
        return false;
    }
    // An earlier search result must not shadow the override.
    clientConfigFile.clear();
    return true;
}

std::vector<std::wstring> SSOPathResolver::ClientConfigDirectories() const
{
    std::vector<std::wstring> paths{L"%ExePath%", L"%SSOServicesModulePath%"};
    paths.insert(paths.end(), supportFileSearchPaths.begin(), supportFileSearchPaths.end());
    return paths;
}

bool SSOPathResolver::FindClientConfigFile()
{
    if (!clientConfigFile.empty())
        return true;
    if (!clientConfigFileOverride.empty()) {
        clientConfigFile = clientConfigFileOverride;
        AnnounceOverride(Messages::ConfigOverrideFound, Messages::ConfigOverrideMissing,
                         clientConfigFile);
        return true;
    }
    std::vector<std::wstring> const paths = ClientConfigDirectories();
    std::wstring const shown =
        Announce(Messages::ConfigSearching, ClientConfigFileName, ResolvedSearchPaths(paths));
    if (FindFileInPaths(ClientConfigFileName, ResolvedSearchPaths(paths), clientConfigFile)) {
        LogMessage(logFunction, Messages::ConfigFound, clientConfigFile);
        return true;
    }
    // The bare name: the search is over, and the file may still lie in the
    // current directory.
    clientConfigFile = ClientConfigFileName;
    LogMessage(logFunction, Messages::ConfigMissing, ClientConfigFileName, shown);
    return false;
}

SSOClientConfig const& SSOPathResolver::GetClientConfig() const { return clientConfig; }

bool SSOPathResolver::IsClientConfigLoaded() const { return clientConfigState == Loaded; }

bool SSOPathResolver::LoadClientConfig()
{
    if (clientConfigState != NotLoaded)
        return clientConfigState == Loaded;
    clientConfigState = LoadBegun;
    ReadClientConfig();
    ApplyClientConfigDefaults(clientConfig);
    return true; // after a failure too, on purpose
}

void SSOPathResolver::ReadClientConfig()
{
    std::wstring const file = GetSSOClientConfigFile();
    if (!PathExists(file))
        return;
    LogMessage(logFunction, Messages::ConfigLoading, file);
    Json::Value root;
    if (!ReadJsonFile(file, std::ios::binary, root)) {
        LogMessage(logFunction, Messages::ConfigInvalid, file);
        return;
    }
    Json::Value& ssoServer = root["ssoServer"];
    clientConfig.appName = Utf8ToWide(ssoServer["appName"].asString());
    clientConfig.exeName = Utf8ToWide(ssoServer["exeName"].asString());
    clientConfig.processName = ssoServer["processName"].asString();
    clientConfig.serverName = ssoServer["serverName"].asString();
    clientConfig.bundleId = Utf8ToWide(ssoServer["bundleId"].asString());
    clientConfig.versionCompatibilityConfigFilePath =
        Utf8ToWide(ssoServer["VersionCompatibilityConfigfilePath"].asString());
    std::wstring const searchPaths = Utf8ToWide(ssoServer["searchPaths"].asString());
    if (!searchPaths.empty()) {
        clientConfig.searchPaths = SplitPathList(searchPaths);
        ResolveServerAppSearchPaths(clientConfig.searchPaths);
    }
    AddRegistrySearchPath();
    Json::Value& openssl = root["openssl"];
    clientConfig.openSslModuleName = Utf8ToWide(openssl["moduleName"].asString());
    clientConfig.openSslModulePath = Utf8ToWide(openssl["modulePath"].asString());
    clientConfigState = Loaded;
}

} // namespace Halvorix::SSOServices
