#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "../Platform.h"
#include "NarrowText.h"

namespace Halvorix::Platform {

bool IsWow64Process() { return false; }

// A file below the system's configuration directories stands for the registry
// value; the first directory that has it counts.
ErrorCode OpenLocationKey(LocationView, LocationKey& key)
{
    char const* const variable = std::getenv("XDG_CONFIG_DIRS");
    std::string directories = variable == nullptr || *variable == '\0' ? "/etc/xdg" : variable;
    ErrorCode error = ENOENT;
    while (!directories.empty()) {
        std::size_t const end = directories.find(':');
        std::string const directory = directories.substr(0, end);
        directories.erase(0, end == std::string::npos ? end : end + 1);
        if (directory.empty())
            continue;
        errno = 0;
        auto file = std::make_unique<std::ifstream>(directory + "/Halvorix/HxSSO/Location",
                                                    std::ios::binary);
        if (file->is_open()) {
            key = file.release();
            return 0;
        }
        // A file that is there and cannot be read tells more than one that is not.
        if (errno != 0 && errno != ENOENT)
            error = static_cast<ErrorCode>(errno);
    }
    return error;
}

bool ReadLocation(LocationKey key, std::wstring& location)
{
    std::string line;
    if (!std::getline(*static_cast<std::ifstream*>(key), line))
        return false;
    // Text up to its first zero, as in a registry value.
    location = FromSystem(line.substr(0, line.find('\0')));
    return true;
}

void CloseLocationKey(LocationKey key) { delete static_cast<std::ifstream*>(key); }

} // namespace Halvorix::Platform
