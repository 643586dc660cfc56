#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "../support/LogSink.h"
#include "../support/Messages.h"
#include "CompatibleModule.h"
#include "PathVariables.h"
#include "SSOClientConfig.h"
#include "Version.h"

namespace Halvorix::SSOServices {

/// Answers every question about the place of a file and the fit of a version.
///
/// Each getter runs its search when its member is empty. The two files are
/// searched for once; a search for the server application, the plugin or the
/// OpenSSL module that fails runs again with the next question.
class SSOPathResolver {
public:
    SSOPathResolver(Version version, LogFunction log);

    /// Replaces each known %name% and normalises. Always true.
    bool ExpandPathVariables(std::wstring& path);

    // The client configuration file.
    std::wstring GetSSOClientConfigFile();
    std::wstring GetSSOClientConfigFileOverride() const;
    void SetSSOClientConfigFileOverride(std::wstring path);

    // The server application.
    std::wstring GetSSOServerAppPath();
    std::wstring GetSSOServerAppExeDirPath();
    std::wstring GetSSOServerAppExeFile();
    /// Read from the configuration as far as it is loaded; start nothing.
    std::string GetSSOServerProcessName() const;
    std::string GetSSOServerName() const;

    // The modules that fit.
    std::wstring GetSSOClientPluginModule();
    std::wstring GetSSOClientPluginFileName();
    std::wstring GetOpenSslModule();

protected:
    void SetSupportFileSearchPaths(std::vector<std::wstring> const& paths);

    template <class... Arguments>
    void LogLine(Message const& message, Arguments const&... arguments)
    {
        LogMessage(Compose(message, arguments...), message.level);
    }

private:
    enum ClientConfigState : std::int32_t { NotLoaded = 0, Loaded = 1, LoadBegun = 2 };

    struct ModuleKind;

    bool ResolvePathVariable(std::wstring name, std::wstring& value);
    std::wstring GetPathVariable(std::wstring const& name);
    VariableLookup PathVariables();
    void ResolveSearchPaths(std::vector<std::wstring>& paths);
    std::vector<std::wstring> ResolvedSearchPaths(std::vector<std::wstring> paths);

    void LogMessage(std::wstring message, Log::LogLevel level);
    bool LoadClientConfig();
    void ReadClientConfig();
    bool FindClientConfigFile();
    void AddRegistrySearchPath();

    bool FindSSOServerApp();
    std::wstring ServerAppExeFile() const;

    std::wstring GetVersionCompatibilityFile();
    bool FindVersionCompatibilityFile();
    bool LoadVersionCompatibilityFile(std::wstring file, std::string key,
                                      std::vector<CompatibleModule>& list);
    bool FindCompatibleModule(std::string key, Version const& version, CompatibleModule& selected);
    void FindSSOClientPlugin();
    void FindOpenSslModule();
    bool UseOpenSslOverride();
    void ChooseModule(ModuleKind const& kind, std::wstring& chosen);

    std::vector<std::wstring> supportFileSearchPaths;
    LogFunction logFunction;
    Version ssoServicesVersion;
    std::wstring versionCompatibilityFileOverride; // nothing sets it
    std::wstring versionCompatibilityFile;
    std::wstring ssoServerAppPath;
    std::wstring clientConfigFileOverride;
    std::wstring clientConfigFile;
    std::wstring ssoClientPluginModule;
    std::wstring openSslModule;
    SSOClientConfig clientConfig;
    ClientConfigState clientConfigState = NotLoaded;
    bool searchingServerApp = false;
};

} // namespace Halvorix::SSOServices
