#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "common/Host.h"
#include "common/LoaderSearch.h"
#include "common/ModuleGraph.h"

namespace Halvorix::Tools {

/// Where the modules are that a plugin needs.
struct Dependencies {
    std::vector<std::string> inProcess; ///< the program or the library has them
    std::vector<std::string> inFolders; ///< beside the plugin, the program, on a run path
    std::vector<std::string> ofSystem;
    std::vector<MissingModule> missing;
    std::vector<MissingSymbol> missingSymbols;
    std::size_t untoldSymbols = 0; ///< how many more are missing
    std::string limit;             ///< at which the search ended; empty: none
    /// What has to be in the process before the plugin, since its loader would not
    /// find it in another program; what one of them needs comes before it.
    std::vector<std::filesystem::path> first;
    std::string ofProgram; ///< a symbol that the program alone has; empty: none
};

/// Follows all imports, by reading alone.
Dependencies FindDependencies(std::filesystem::path const& plugin, ModuleImage const& image,
                              Host const& host);

/// What the library itself needs and the program would not find.
struct LibraryDependencies {
    std::vector<MissingModule> missing;
    std::vector<MissingModule> missingOfProgram; ///< and not of the library
    std::vector<MissingSymbol> missingSymbols;
    std::size_t untoldSymbols = 0;
    std::string limit;
};
LibraryDependencies FindLibraryDependencies(Host const& host);

/// A line of it.
std::string Told(MissingModule const& missing);

} // namespace Halvorix::Tools
