#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Platform.h"
#include "platform/linux/Files.h"
#include "platform/linux/NarrowText.h"

namespace Halvorix::Platform {

namespace {

constexpr std::string_view LineEnds("\n\0", 2);

} // namespace

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
        std::string const file = directory + "/Halvorix/HxSSO/Location";
        int const failure = ReadRegularFile(file, *content, LineEnds);
        if (failure == 0) {
            key = content.release();
            return 0;
        }
        // One that is there counts, whatever keeps it from being read.
        struct stat status {};
        if (failure != ENOENT && ::lstat(file.c_str(), &status) == 0)
            return static_cast<ErrorCode>(failure);
        // A folder that cannot be looked into tells more than one that is not there.
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
