#include <cstdlib>

#include "platform/Platform.h"
#include "platform/linux/NarrowText.h"

namespace Halvorix::Platform {

namespace {

std::wstring Environment(char const* name)
{
    char const* const value = ::secure_getenv(name);
    return value == nullptr ? std::wstring() : FromSystem(value);
}

std::wstring UserFolder(char const* variable, wchar_t const* belowHome)
{
    std::wstring folder = Environment(variable);
    if (!folder.empty())
        return folder;
    std::wstring const home = Environment("HOME");
    return home.empty() ? home : home + belowHome;
}

} // namespace

std::wstring KnownFolderPath(KnownFolder folder)
{
    switch (folder) {
    case KnownFolder::ProgramFiles:
        return L"/opt";
    case KnownFolder::RoamingAppData:
        return UserFolder("XDG_CONFIG_HOME", L"/.config");
    case KnownFolder::LocalAppData:
        break;
    }
    return UserFolder("XDG_DATA_HOME", L"/.local/share");
}

bool LeadingSlashIsRoot() { return true; }

bool IsRootPath(std::wstring const& path) { return path == L"/"; }

} // namespace Halvorix::Platform
