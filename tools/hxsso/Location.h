#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace Halvorix::HxSSO {

// The value Location, by which the library finds the sign-on folder on the whole machine. Texts
// are UTF-8; what fails answers the system's reason.

/// Where it stands, or is to stand, for a sentence.
std::string PlaceOfLocation();

/// Nothing if there is none.
std::optional<std::string> ReadLocation();

bool WriteLocation(std::filesystem::path const& folder, std::string& reason);

/// With the folders or keys above it that are empty then.
bool RemoveLocation(std::string& reason);

} // namespace Halvorix::HxSSO
