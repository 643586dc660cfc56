#pragma once

#include <filesystem>
#include <vector>

#include "Host.h"
#include "Report.h"

namespace Halvorix::Tools {

struct FileFindings {
    /// To be loaded before the module, in this order: the library, and what only
    /// the host's own folder holds.
    std::vector<std::filesystem::path> first;
};

/// What can be told of a module without running any of it.
/// @param file absolute
FileFindings CheckFile(std::filesystem::path const& file, Host const& host, Report& report);

} // namespace Halvorix::Tools
