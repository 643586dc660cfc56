// hxsso-doctor has tools/doctor/ModuleFiles.cpp in the place of this file: change both.
#include "discovery/ModuleFiles.h"

#include "discovery/PathText.h"

namespace Halvorix::SSOServices {

std::wstring ResolveModuleFile(std::wstring const& moduleName)
{
    return NormalizePath(Platform::LoadedModuleFile(moduleName));
}

std::wstring GetModuleDirPath(std::wstring const& moduleName)
{
    return ParentPath(ResolveModuleFile(moduleName));
}

std::wstring GetExecutableDirPath()
{
    return ParentPath(NormalizePath(Platform::ExecutableFile()));
}

std::wstring GetKnownFolderPath(Platform::KnownFolder folder)
{
    return Platform::KnownFolderPath(folder);
}

} // namespace Halvorix::SSOServices
