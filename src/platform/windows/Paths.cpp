#include <boost/filesystem/path.hpp>

#include "platform/Platform.h"
#include "platform/windows/Windows.h"

#include <objbase.h>
#include <shlobj.h>

namespace Halvorix::Platform {

namespace {

KNOWNFOLDERID const& IdentifierOf(KnownFolder folder)
{
    switch (folder) {
    case KnownFolder::ProgramFiles:
        return FOLDERID_ProgramFiles;
    case KnownFolder::RoamingAppData:
        return FOLDERID_RoamingAppData;
    case KnownFolder::LocalAppData:
        break;
    }
    return FOLDERID_LocalAppData;
}

} // namespace

std::wstring KnownFolderPath(KnownFolder folder)
{
    // KF_FLAG_DONT_VERIFY and KF_FLAG_NO_ALIAS: the name is asked for, not the
    // folder.
    constexpr DWORD flags = 0x5000;
    wchar_t* path = nullptr;
    HRESULT const result = ::SHGetKnownFolderPath(IdentifierOf(folder), flags, nullptr, &path);
    struct Release {
        wchar_t* path;
        ~Release() { ::CoTaskMemFree(path); }
    } const release{path};
    return SUCCEEDED(result) && path != nullptr ? std::wstring(path) : std::wstring();
}

bool LeadingSlashIsRoot() { return false; }

bool IsRootPath(std::wstring const& path)
{
    return boost::filesystem::path(path).root_path().generic_wstring() == path;
}

} // namespace Halvorix::Platform
