#pragma once

#include <optional>
#include <string>
#include <vector>

#include "doctor/Findings.h"
#include "platform/Platform.h"

namespace Halvorix::Doctor {

/// Where the server application's installation left its directory, as the library looks.
Platform::ErrorCode OpenLocation(Platform::LocationKey& key);

/// Why it is not read as what it was meant, and what to do; no text if it is, or if there
/// is none. Each system has a folder of its own beside this header.
struct LocationFlaw {
    std::string text;
    std::string remedy;
    bool isTooLarge = false; ///< and that is why
};
LocationFlaw FlawOfLocation();

struct InstalledLocation {
    LocationFlaw flaw;
    std::optional<std::wstring> directory; ///< as the library would read it; it may not
};
InstalledLocation ReadInstalledLocation();

/// What keeps the library from reading it, or from finding the application there.
std::vector<Oddity> OdditiesOf(InstalledLocation const& location, std::string const& appName);

} // namespace Halvorix::Doctor
