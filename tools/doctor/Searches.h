#pragma once

#include <string>
#include <vector>

#include "Findings.h"

namespace Halvorix::Doctor {

/// What lies in each of the resolved directories under the name.
Search LookThrough(std::wstring const& file, std::vector<std::wstring> const& directories);

} // namespace Halvorix::Doctor
