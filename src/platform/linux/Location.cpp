#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "../Platform.h"
#include "Files.h"
#include "NarrowText.h"

namespace Halvorix::Platform {

namespace {

constexpr std::string_view LineEnds("\n\0", 2);

} // namespace

bool IsWow64Process() { return false; }

// A file below the system's configuration directories stands for the registry
// value; the first directory that has it counts.
ErrorCode OpenLocationKey(LocationView, LocationKey& key)
{
    char const* const variable = ::secure_getenv("XDG_CONFIG_DIRS");
    std::string directories = variable == nullptr || *variable == '\0' ? "/etc/xdg" : variable;
    ErrorCode error = ENOENT;
    while (!directories.empty()) {
        std::size_t const end = directories.find(':');
        std::string const directory = directories.substr(0, end);
        directories.erase(0, end == std::string::npos ? end : end + 1);
        if (directory.empty())
            continue;
        auto content = std::make_unique<std::string>();
        int const failure =
            ReadRegularFile(directory + "/Halvorix/HxSSO/Location", *content, LineEnds);
        if (failure == 0) {
            key = content.release();
            return 0;
        }
        // A file that is there counts, whatever keeps it from being read.
        if (failure != ENOENT && failure != ENOTDIR)
            return static_cast<ErrorCode>(failure);
        // That a folder is none tells more than that there is none.
        if (failure != ENOENT)
            error = static_cast<ErrorCode>(failure);
    }
    return error;
}

bool ReadLocation(LocationKey key, std::wstring& location)
{
    std::string const& content = *static_cast<std::string*>(key);
    if (content.empty())
        return false;
    // Text up to its first zero, as in a registry value.
    location = FromSystem(content.substr(0, content.find_first_of(LineEnds)));
    return true;
}

void CloseLocationKey(LocationKey key) { delete static_cast<std::string*>(key); }

} // namespace Halvorix::Platform
