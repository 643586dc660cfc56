#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "discovery/CompatibleModule.h"
#include "discovery/PathVariables.h"
#include "discovery/SSOClientConfig.h"
#include "discovery/Version.h"
#include "support/LogSink.h"

namespace Json {
class Value;
}

namespace Halvorix::SSOServices {

/// Answers every question about the place of a file and the fit of a version, those of
/// one thread at a time.
///
/// Each getter runs its search when its member is empty. The two files are
/// searched for once; a search for the server application, the plugin or the
/// OpenSSL module that fails runs again with the next question.
class SSOPathResolver {
public:
    SSOPathResolver(Version version, LogFunction log);
    /// With all that the other one knows, and another way for its lines.
    SSOPathResolver(SSOPathResolver const& other, LogFunction log);

    /// Replaces each known %name% and normalises. Always true.
    bool ExpandPathVariables(std::wstring& path);

    // The client configuration file.
    std::wstring GetSSOClientConfigFile();
    std::wstring GetSSOClientConfigFileOverride() const;
    /// In two steps: what is told of an override, and whether it is taken; then its storing,
    /// if nothing was loaded meanwhile.
    void SetSSOClientConfigFileOverride(std::wstring path);
    bool AnnounceSSOClientConfigFileOverride(std::wstring const& path);
    void StoreSSOClientConfigFileOverride(std::wstring path);

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
    std::vector<std::wstring> const& GetSupportFileSearchPaths() const;

    // What is searched, and what was read.
    /// Unresolved, in the order of the search.
    std::vector<std::wstring> CompatibilityDirectories() const;
    std::vector<std::wstring> ResolvedSearchPaths(std::vector<std::wstring> paths);
    SSOClientConfig const& GetClientConfig() const;
    bool IsClientConfigLoaded() const;
    std::wstring GetVersionCompatibilityFile();
    /// The key of a module's directory for this kind of process.
    static char const* ModulePathKey();
    /// Reads one object of the version compatibility file, as far as its flaw lets it, and
    /// logs nothing. Wrong types let the JSON library's exception pass.
    ModuleFlaw ReadModule(Json::Value& json, char const* pathKey, CompatibleModule& module);

    /// Whether neither has been told or has found what the other has not.
    bool KnowsTheSameAs(SSOPathResolver const& other) const;

private:
    enum ClientConfigState : std::int32_t { NotLoaded = 0, Loaded = 1, LoadBegun = 2 };

    struct ModuleKind;

    bool ResolvePathVariable(std::wstring name, std::wstring& value);
    std::wstring GetPathVariable(std::wstring const& name);
    VariableLookup PathVariables();
    void ResolveSearchPaths(std::vector<std::wstring>& paths);
    void ResolveServerAppSearchPaths(std::vector<std::wstring>& paths);

    /// Logs where a file is looked for, and answers the directories as the line shows them.
    std::wstring Announce(Message const& searching, std::wstring const& file,
                          std::vector<std::wstring> const& directories);
    void AnnounceOverride(Message const& found, Message const& missing, std::wstring const& file);

    bool LoadClientConfig();
    void ReadClientConfig();
    bool FindClientConfigFile();
    bool BeginClientConfigFileOverride(std::wstring const& path);
    std::vector<std::wstring> ClientConfigDirectories() const;
    void AddRegistrySearchPath();

    bool FindSSOServerApp();
    std::vector<std::wstring> ServerAppDirectories();
    std::wstring ServerAppExeFile() const;

    bool FindVersionCompatibilityFile();
    bool LoadVersionCompatibilityFile(std::wstring file, std::string key,
                                      std::vector<CompatibleModule>& list);
    void LogFlaw(ModuleFlaw flaw, std::wstring const& key, std::wstring const& file);
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
};

} // namespace Halvorix::SSOServices
