#include "hxsso/Location.h"

#include <cstdlib>
#include <fstream>
#include <system_error>

#include "hxsso/System.h"

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

/// All users' programs go through those that are made, whatever this user's mask is.
void MakeFolders(fs::path const& folder, std::error_code& error)
{
    std::error_code unknown;
    if (fs::is_directory(folder, unknown))
        return;
    if (folder.has_relative_path())
        MakeFolders(folder.parent_path(), error);
    if (!error && fs::create_directory(folder, error))
        fs::permissions(folder, fs::perms(0755), error);
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
    MakeFolders(file.parent_path(), error);
    // Beside it and renamed, so that nobody reads half of it.
    if (!error && !WriteNewFile(other, folder.string() + '\n', reason))
        return false;
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
