#pragma once

#include <filesystem>

#include "FileChecks.h"
#include "Report.h"

namespace Halvorix::Tools {

/// Loads the module as the library does and asks it what the library asks.
void CheckLoaded(std::filesystem::path const& file, FileFindings const& findings, Report& report);

} // namespace Halvorix::Tools
