#pragma once

#include <filesystem>
#include <vector>

#include "common/Host.h"
#include "common/Report.h"

namespace Halvorix::Tools {

struct FileFindings {
    /// To be loaded before the module, in this order: what the host has in its process
    /// or in its own folder.
    std::vector<std::filesystem::path> first;
    std::string ofProgram; ///< a symbol that it takes from the program itself; empty: none
    /// That the library names for what the module needs; empty: the module's own.
    std::filesystem::path dependencyFolder = {};
};

/// What can be told of a module without running any of it.
/// @param file absolute
FileFindings CheckFile(std::filesystem::path const& file, Host const& host, Report& report);

/// What the host's library needs and would not get; nothing is added where all is well.
void CheckLibrary(Host const& host, Report& report);

} // namespace Halvorix::Tools
