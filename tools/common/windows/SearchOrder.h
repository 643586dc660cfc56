#pragma once

#include <filesystem>
#include <vector>

#include "common/ModuleGraph.h"

namespace Halvorix::Tools {

struct SearchedFolder {
    std::filesystem::path folder;
    Place place;
};

/// Where the loader looks for a module that is not named by a whole path, in its order,
/// while the library names a folder. That one takes the current directory's place; empty:
/// none is named.
std::vector<SearchedFolder> SearchOrder(std::filesystem::path const& programFolder,
                                        std::filesystem::path const& dependencyFolder);

/// The name of a file for which the loader looks by this one.
std::filesystem::path WithExtension(std::filesystem::path const& file);

} // namespace Halvorix::Tools
