#include "hxsso/Location.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>

namespace Halvorix::HxSSO {

namespace {

namespace fs = std::filesystem;

/// As the library: the first that is there counts, and otherwise the first is made.
fs::path LocationFile()
{
    char const* const variable = ::secure_getenv("XDG_CONFIG_DIRS");
    std::string folders = variable == nullptr || *variable == '\0' ? "/etc/xdg" : variable;
    fs::path first;
    while (!folders.empty()) {
        std::size_t const end = folders.find(':');
        fs::path const folder = folders.substr(0, end);
        folders.erase(0, end == std::string::npos ? end : end + 1);
        if (!folder.is_absolute())
            continue;
        fs::path file = folder / "Halvorix/HxSSO/Location";
        std::error_code unknown;
        if (fs::exists(fs::symlink_status(file, unknown)))
            return file;
        if (first.empty())
            first = file;
    }
    return first.empty() ? fs::path("/etc/xdg/Halvorix/HxSSO/Location") : first;
}

} // namespace

std::string PlaceOfLocation() { return "the file " + LocationFile().string(); }

std::optional<std::string> ReadLocation()
{
    std::ifstream file(LocationFile());
    std::string line;
    if (!std::getline(file, line))
        return std::nullopt;
    return line;
}

bool WriteLocation(fs::path const& folder, std::string& reason)
{
    fs::path const file = LocationFile();
    fs::path other = file;
    other += ".new";
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    errno = 0;
    // Beside it and renamed, so that nobody reads half of it.
    if (!error && !(std::ofstream(other, std::ios::trunc) << folder.string() << '\n').flush())
        error.assign(errno, std::generic_category());
    if (!error)
        fs::permissions(other, fs::perms(0644), error); // every user's programs read it
    if (!error)
        fs::rename(other, file, error);
    if (!error)
        return true;
    reason = error.message();
    fs::remove(other, error);
    return false;
}

bool RemoveLocation(std::string& reason)
{
    fs::path const file = LocationFile();
    std::error_code error;
    fs::remove(file, error);
    if (error) {
        reason = error.message();
        return false;
    }
    // Those above it may hold something of others: then they stay.
    std::error_code stays;
    if (fs::remove(file.parent_path(), stays))
        fs::remove(file.parent_path().parent_path(), stays);
    return true;
}

} // namespace Halvorix::HxSSO
