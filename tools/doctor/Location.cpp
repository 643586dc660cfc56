#include "doctor/Location.h"

#include <utility>

#include "common/System.h"
#include "doctor/Text.h"
#include "doctor/TextOddities.h"

namespace Halvorix::Doctor {

namespace {

using Platform::LocationView;

bool NamesProgram(std::string const& directory, std::string const& appName)
{
    std::size_t const end = directory.find_last_not_of("/\\") + 1;
    std::string const path = directory.substr(0, end);
    std::size_t const begin = path.find_last_of("/\\") + 1;
    return !appName.empty() && Lower(path.substr(begin)) == Lower(appName);
}

} // namespace

Platform::ErrorCode OpenLocation(Platform::LocationKey& key)
{
    Platform::ErrorCode const error = Platform::OpenLocationKey(LocationView::Own, key);
    return error != 0 && Platform::IsWow64Process()
               ? Platform::OpenLocationKey(LocationView::Native64, key)
               : error;
}

InstalledLocation ReadInstalledLocation()
{
    InstalledLocation location{FlawOfLocation(), {}};
    Platform::LocationKey key = nullptr;
    if (location.flaw.isTooLarge || OpenLocation(key) != 0)
        return location;
    std::wstring directory;
    if (Platform::ReadLocation(key, directory))
        location.directory = std::move(directory);
    Platform::CloseLocationKey(key);
    return location;
}

std::vector<Oddity> OdditiesOf(InstalledLocation const& location, std::string const& appName)
{
    std::string const key = Tools::NameOfLocation();
    std::vector<Oddity> oddities;
    auto const add = [&](char const* code, std::string const& text, std::string const& remedy) {
        oddities.push_back({{}, key, code, text, remedy, false, {}});
    };
    if (!location.flaw.text.empty()) {
        add("location-unreadable", location.flaw.text, location.flaw.remedy);
        return oddities;
    }
    if (!location.directory)
        return oddities;
    std::string const directory = Shown(*location.directory);
    if (directory.empty())
        add("empty", "names no directory, which means the current one",
            "write the server application's directory into it");
    else if (NamesProgram(directory, appName))
        add("path-names-the-file", "names the server application's file, not its directory",
            "remove the file's name there");
    else
        FindTextOddities(directory, TextKind::Location, key, {}, oddities);
    return oddities;
}

} // namespace Halvorix::Doctor
