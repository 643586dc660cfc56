#pragma once

#include <string>
#include <vector>

#include "Findings.h"

namespace Halvorix::Doctor {

/// What lies in each of the resolved directories under the name.
Search LookThrough(std::wstring const& file, std::vector<std::wstring> const& directories);

/// By the library's test for its own files and the OpenSSL module.
Presence LookFor(std::wstring const& file);

/// By that for the client plugin, which takes the narrow name.
Presence LookForPlugin(std::wstring const& file);

} // namespace Halvorix::Doctor
