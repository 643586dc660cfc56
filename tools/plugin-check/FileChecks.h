#pragma once

#include <filesystem>
#include <optional>

#include "Report.h"

namespace Halvorix::PluginCheck {

struct FileFindings {
    /// To be loaded before the module, as a host has it.
    std::optional<std::filesystem::path> library;
};

/// What can be told of a module without running any of it.
/// @param file absolute
FileFindings CheckFile(std::filesystem::path const& file, Report& report);

} // namespace Halvorix::PluginCheck
