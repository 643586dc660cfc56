// The library's questions for the files of its process, answered for the program
// that the doctor looks at. Stands in place of the library's own file of this name.

#include "discovery/ModuleFiles.h"

#include "common/System.h"
#include "discovery/PathText.h"
#include "doctor/Searches.h"
#include "doctor/TargetProgram.h"

namespace Halvorix::SSOServices {

namespace {

std::wstring Counted(std::wstring value)
{
    Doctor::CountExpansion(value);
    return value;
}

} // namespace

std::wstring ResolveModuleFile(std::wstring const& moduleName)
{
    // All but the library itself is what a load has brought into this process.
    if (moduleName == Platform::LibraryFileName())
        return NormalizePath(
            Tools::AsToldToLibrary(Tools::Wide(Doctor::CurrentTargetProgram().library)));
    return NormalizePath(Platform::LoadedModuleFile(moduleName));
}

std::wstring GetModuleDirPath(std::wstring const& moduleName)
{
    return Counted(ParentPath(ResolveModuleFile(moduleName)));
}

std::wstring GetExecutableDirPath()
{
    return Counted(ParentPath(NormalizePath(
        Tools::AsToldToLibrary(Tools::Wide(Doctor::CurrentTargetProgram().executable)))));
}

std::wstring GetKnownFolderPath(Platform::KnownFolder folder)
{
    return Counted(Platform::KnownFolderPath(folder));
}

} // namespace Halvorix::SSOServices
