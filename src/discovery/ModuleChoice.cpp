// SSOPathResolver: the version compatibility file, and the client plugin and
// the OpenSSL module chosen from it.

#include <utility>

#include <json/value.h>

#include "discovery/FileSearch.h"
#include "discovery/JsonFile.h"
#include "discovery/PathText.h"
#include "discovery/SSOPathResolver.h"
#include "platform/Platform.h"
#include "support/TextConversion.h"

namespace Halvorix::SSOServices {

namespace {

constexpr wchar_t const* ServerDirectory = L"%SSOServerAppPath%";

std::wstring Widen(Version const& version) { return Utf8ToWide(VersionToString(version)); }

} // namespace

/// What differs between the two choices.
struct SSOPathResolver::ModuleKind {
    char const* key;
    Message const& searching;
    Message const& found;
    Message const& missing;
    Message const& missingNoFile;
};

std::wstring SSOPathResolver::GetVersionCompatibilityFile()
{
    if (versionCompatibilityFile.empty())
        FindVersionCompatibilityFile();
    return versionCompatibilityFile;
}

std::vector<std::wstring> SSOPathResolver::CompatibilityDirectories() const
{
    return {ServerDirectory, clientConfig.versionCompatibilityConfigFilePath};
}

bool SSOPathResolver::FindVersionCompatibilityFile()
{
    if (!versionCompatibilityFile.empty())
        return PathExists(versionCompatibilityFile);
    if (!versionCompatibilityFileOverride.empty()) {
        versionCompatibilityFile = versionCompatibilityFileOverride;
        AnnounceOverride(Messages::CompatibilityOverrideFound,
                         Messages::CompatibilityOverrideMissing, versionCompatibilityFile);
        return true;
    }
    std::vector<std::wstring> const paths{ServerDirectory};
    std::wstring const shown = Announce(Messages::CompatibilitySearching, CompatibilityFileName,
                                        ResolvedSearchPaths(paths));
    std::wstring found;
    bool hit = FindFileInPaths(CompatibilityFileName, ResolvedSearchPaths(paths), found);
    if (!hit)
        hit = FindFileInPaths(CompatibilityFileName,
                              ResolvedSearchPaths(CompatibilityDirectories()), found);
    if (!hit) {
        // The bare name ends the search; it is read from the current directory
        // if it lies there. The line does not show the second place, on purpose.
        versionCompatibilityFile = CompatibilityFileName;
        LogMessage(logFunction, Messages::CompatibilityMissing, CompatibilityFileName, shown);
        return false;
    }
    versionCompatibilityFile = found;
    LogMessage(logFunction, Messages::CompatibilityFound, found);
    return true;
}

bool SSOPathResolver::LoadVersionCompatibilityFile(std::wstring file, std::string key,
                                                   std::vector<CompatibleModule>& list)
{
    if (!PathExists(file))
        return false;
    Json::Value root;
    // As text, unlike the client configuration file, on purpose.
    if (!ReadJsonFile(file, std::ios::in, root)) {
        LogMessage(logFunction, Messages::CompatibilityInvalid, file);
        return false;
    }
    char const* const pathKey = ModulePathKey();
    std::wstring const wideKey = Utf8ToWide(key);
    Json::Value& group = root[key];
    for (Json::ArrayIndex i = 0; i < group.size(); ++i) {
        // Read as a constant first: a group that is an object fails here.
        if (std::as_const(group)[i].isNull())
            continue;
        CompatibleModule module;
        ModuleFlaw const flaw = ReadModule(group[i], pathKey, module);
        LogFlaw(flaw, wideKey, file);
        if (flaw == ModuleFlaw::None)
            list.push_back(std::move(module));
    }
    SortByVersion(list);
    return !list.empty();
}

char const* SSOPathResolver::ModulePathKey()
{
    return Platform::IsWow64Process() ? "modulePathWoW64" : "modulePath";
}

ModuleFlaw SSOPathResolver::ReadModule(Json::Value& json, char const* pathKey,
                                       CompatibleModule& module)
{
    module.module = Utf8ToWide(json["module"].asString());
    if (module.module.empty())
        return ModuleFlaw::NoModule;
    module.modulePath = Utf8ToWide(json[pathKey].asString());
    if (module.modulePath.empty())
        return ModuleFlaw::NoPath;
    ExpandPathVariables(module.modulePath);
    ParseVersion(module.version, json["version"].asString());
    // Looks at the path and not at the version, on purpose: a blank version
    // passes, a path of nothing but slashes does not.
    if (module.modulePath.empty())
        return ModuleFlaw::PathVanishes;
    Json::Value const& versions = json["compatibleSsoServicesVersion"];
    if (versions.isNull())
        return ModuleFlaw::NoRange;
    VersionRange range = VersionRange::FromJson(versions);
    if (range.IsEmpty())
        return ModuleFlaw::EmptyRange;
    module.compatibleVersions.push_back(std::move(range));
    return ModuleFlaw::None;
}

void SSOPathResolver::LogFlaw(ModuleFlaw flaw, std::wstring const& key, std::wstring const& file)
{
    switch (flaw) {
    case ModuleFlaw::None:
        break;
    case ModuleFlaw::NoModule:
        LogMessage(logFunction, Messages::ModuleBlank, key, file);
        break;
    case ModuleFlaw::NoPath:
        LogMessage(logFunction, Messages::ModulePathBlank, key, file);
        break;
    case ModuleFlaw::PathVanishes:
        LogMessage(logFunction, Messages::ModuleVersionBlank, key, file);
        break;
    case ModuleFlaw::NoRange:
        LogMessage(logFunction, Messages::RangeMissing, file);
        break;
    case ModuleFlaw::EmptyRange:
        LogMessage(logFunction, Messages::RangeInvalid, file);
        break;
    }
}

bool SSOPathResolver::FindCompatibleModule(std::string key, Version const& version,
                                           CompatibleModule& selected)
{
    std::wstring const file = GetVersionCompatibilityFile();
    if (!PathExists(file)) {
        LogMessage(logFunction, Messages::CompatibilityAbsent, file);
        return false;
    }
    std::vector<CompatibleModule> list;
    LoadVersionCompatibilityFile(file, key, list);
    if (list.empty()) {
        LogMessage(logFunction, Messages::CompatibilityListEmpty, Utf8ToWide(key), file);
        return false;
    }
    return SelectCompatibleModule(version, list, selected);
}

void SSOPathResolver::ChooseModule(ModuleKind const& kind, std::wstring& chosen)
{
    std::wstring const version = Widen(ssoServicesVersion);
    LogMessage(logFunction, kind.searching, version, GetVersionCompatibilityFile());
    CompatibleModule record;
    if (FindCompatibleModule(kind.key, ssoServicesVersion, record)) {
        chosen = NormalizePath(JoinPath(record.modulePath, record.module));
        LogMessage(logFunction, kind.found, version, chosen);
        return;
    }
    std::wstring const file = GetVersionCompatibilityFile();
    LogMessage(logFunction, PathExists(file) ? kind.missing : kind.missingNoFile, version, file);
}

void SSOPathResolver::FindSSOClientPlugin()
{
    if (!ssoClientPluginModule.empty())
        return;
    ChooseModule({"ssoClientPlugin", Messages::PluginSearching, Messages::PluginFound,
                  Messages::PluginMissing, Messages::PluginMissingNoFile},
                 ssoClientPluginModule);
}

void SSOPathResolver::FindOpenSslModule()
{
    if (!openSslModule.empty())
        return;
    if (clientConfigState == NotLoaded)
        LoadClientConfig();
    if (clientConfigState == Loaded && UseOpenSslOverride())
        return;
    ChooseModule({"openssl", Messages::OpenSslSearching, Messages::OpenSslFound,
                  Messages::OpenSslMissing, Messages::OpenSslMissingNoFile},
                 openSslModule);
}

bool SSOPathResolver::UseOpenSslOverride()
{
    LogMessage(logFunction, Messages::OpenSslOverrideSearching, GetSSOClientConfigFile());
    if (clientConfig.openSslModuleName.empty() || clientConfig.openSslModulePath.empty()) {
        LogMessage(logFunction, Messages::OpenSslOverrideNone, GetSSOClientConfigFile());
        return false;
    }
    openSslModule =
        NormalizePath(JoinPath(clientConfig.openSslModulePath, clientConfig.openSslModuleName));
    ExpandPathVariables(openSslModule);
    // The version in the place of the file, on purpose.
    LogMessage(logFunction, Messages::OpenSslOverrideFound, Widen(ssoServicesVersion),
               openSslModule);
    return true;
}

std::wstring SSOPathResolver::GetSSOClientPluginModule()
{
    FindSSOClientPlugin();
    return ssoClientPluginModule;
}

std::wstring SSOPathResolver::GetSSOClientPluginFileName()
{
    FindSSOClientPlugin();
    return FileName(ssoClientPluginModule);
}

std::wstring SSOPathResolver::GetOpenSslModule()
{
    FindOpenSslModule();
    return openSslModule;
}

} // namespace Halvorix::SSOServices
