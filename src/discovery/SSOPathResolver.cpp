#include "discovery/SSOPathResolver.h"

#include <functional>
#include <tuple>
#include <utility>

#include <boost/algorithm/string/join.hpp>

#include "discovery/FileSearch.h"
#include "discovery/ModuleFiles.h"
#include "discovery/PathText.h"
#include "platform/Platform.h"

namespace Halvorix::SSOServices {

namespace {

// The variables whose values are what the server application's search finds.
constexpr wchar_t const* PathVariable = L"SSOServerAppPath";
constexpr wchar_t const* ExeDirPathVariable = L"SSOServerAppExeDirPath";
constexpr wchar_t const* ExeFileVariable = L"SSOServerAppExeFile";

bool IsOfServerApp(std::wstring const& name)
{
    return IsVariableName(name, PathVariable) || IsVariableName(name, ExeDirPathVariable) ||
           IsVariableName(name, ExeFileVariable);
}

} // namespace

SSOPathResolver::SSOPathResolver(Version version, LogFunction log)
    : logFunction(std::move(log)), ssoServicesVersion(std::move(version))
{
}

SSOPathResolver::SSOPathResolver(SSOPathResolver const& other, LogFunction log)
    : SSOPathResolver(other)
{
    logFunction = std::move(log);
}

bool SSOPathResolver::KnowsTheSameAs(SSOPathResolver const& other) const
{
    // The configuration changes with its state, once.
    auto const knowledge = [](SSOPathResolver const& one) {
        return std::tie(one.supportFileSearchPaths, one.versionCompatibilityFile,
                        one.ssoServerAppPath, one.clientConfigFileOverride, one.clientConfigFile,
                        one.ssoClientPluginModule, one.openSslModule, one.clientConfigState);
    };
    return knowledge(*this) == knowledge(other);
}

bool SSOPathResolver::ExpandPathVariables(std::wstring& path)
{
    ExpandPath(path, PathVariables());
    return true;
}

void SSOPathResolver::SetSupportFileSearchPaths(std::vector<std::wstring> const& paths)
{
    supportFileSearchPaths = paths;
}

std::vector<std::wstring> const& SSOPathResolver::GetSupportFileSearchPaths() const
{
    return supportFileSearchPaths;
}

// A known variable without a value counts as unknown: it stays in the text.
bool SSOPathResolver::ResolvePathVariable(std::wstring name, std::wstring& value)
{
    value = GetPathVariable(name);
    return !value.empty();
}

std::wstring SSOPathResolver::GetPathVariable(std::wstring const& name)
{
    if (IsVariableName(name, PathVariable))
        return GetSSOServerAppPath();
    if (IsVariableName(name, ExeDirPathVariable))
        return GetSSOServerAppExeDirPath();
    if (IsVariableName(name, ExeFileVariable))
        return GetSSOServerAppExeFile();
    if (IsVariableName(name, L"SSOServicesModulePath"))
        return GetModuleDirPath(Platform::LibraryFileName());
    return GetSystemPathVariable(name);
}

VariableLookup SSOPathResolver::PathVariables()
{
    using namespace std::placeholders;
    return std::bind(&SSOPathResolver::ResolvePathVariable, this, _1, _2);
}

void SSOPathResolver::ResolveSearchPaths(std::vector<std::wstring>& paths)
{
    ExpandPathList(paths, PathVariables());
    RemoveDuplicatePaths(paths);
}

// What that search is to find has no value in its own list yet.
void SSOPathResolver::ResolveServerAppSearchPaths(std::vector<std::wstring>& paths)
{
    ExpandPathList(paths, [this](std::wstring const& name, std::wstring& value) {
        return !IsOfServerApp(name) && ResolvePathVariable(name, value);
    });
    RemoveDuplicatePaths(paths);
}

std::vector<std::wstring> SSOPathResolver::ResolvedSearchPaths(std::vector<std::wstring> paths)
{
    ResolveSearchPaths(paths);
    return paths;
}

std::wstring SSOPathResolver::Announce(Message const& searching, std::wstring const& file,
                                       std::vector<std::wstring> const& directories)
{
    std::wstring shown = boost::algorithm::join(directories, L"\n");
    LogMessage(logFunction, searching, file, shown);
    return shown;
}

void SSOPathResolver::AnnounceOverride(Message const& found, Message const& missing,
                                       std::wstring const& file)
{
    LogMessage(logFunction, PathExists(file) ? found : missing, file);
}

} // namespace Halvorix::SSOServices
