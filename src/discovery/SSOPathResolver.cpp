#include "SSOPathResolver.h"

#include <functional>
#include <utility>

#include "../platform/Platform.h"
#include "ModuleFiles.h"
#include "PathText.h"

namespace Halvorix::SSOServices {

SSOPathResolver::SSOPathResolver(Version version, LogFunction log)
    : logFunction(std::move(log)), ssoServicesVersion(std::move(version))
{
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

// A known variable without a value counts as unknown: it stays in the text.
bool SSOPathResolver::ResolvePathVariable(std::wstring name, std::wstring& value)
{
    value = GetPathVariable(name);
    return !value.empty();
}

std::wstring SSOPathResolver::GetPathVariable(std::wstring const& name)
{
    if (IsVariableName(name, L"SSOServerAppPath"))
        return GetSSOServerAppPath();
    if (IsVariableName(name, L"SSOServerAppExeDirPath"))
        return GetSSOServerAppExeDirPath();
    if (IsVariableName(name, L"SSOServerAppExeFile"))
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

std::vector<std::wstring> SSOPathResolver::ResolvedSearchPaths(std::vector<std::wstring> paths)
{
    ResolveSearchPaths(paths);
    return paths;
}

void SSOPathResolver::LogMessage(std::wstring message, Log::LogLevel level)
{
    if (logFunction)
        logFunction(std::move(message), level);
}

} // namespace Halvorix::SSOServices
