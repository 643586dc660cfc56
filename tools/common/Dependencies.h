#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Host.h"
#include "ModuleImage.h"

namespace Halvorix::Tools {

struct MissingDependency {
    std::string name;
    std::string neededBy;
    std::string hint; ///< may be empty
};

/// Where the modules are that a plugin needs.
struct Dependencies {
    std::vector<std::string> inProcess; ///< in this program already
    std::vector<std::string> inFolders; ///< beside the plugin, the program, on a run path
    std::vector<std::string> ofSystem;  ///< found by name alone
    std::vector<MissingDependency> missing;
    /// Of those in folders, the files in the host's own folder that this program
    /// would not find; what another one of them needs comes before it.
    std::vector<std::filesystem::path> ofHost;
    /// The library, if the plugin needs it and the loader would not find it:
    /// with a host it is in the process already.
    std::optional<std::filesystem::path> library;
};

/// Follows imports through all modules that do not belong to the system. `own`
/// is this program's image.
Dependencies FindDependencies(std::filesystem::path const& plugin, ModuleImage const& image,
                              ModuleImage const& own, Host const& host);

/// The whole file; nothing if it cannot be read.
std::optional<std::string> ReadWhole(std::filesystem::path const& file);

} // namespace Halvorix::Tools
