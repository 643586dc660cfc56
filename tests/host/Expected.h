#pragma once

#include <string>
#include <vector>

#include "framework/Installation.h"
#include "framework/ThisBuild.h"

namespace Rig {

/// The banner as it is logged in an Installation.
inline std::string Banner(std::string const& libraryFolder = "lib")
{
    return LibraryName() + " module loaded (Version: 10.22.00.1800 Config: " + BuildName() +
           " File: {root}/" + libraryFolder + "/" + MappedLibraryFile() + ")";
}

/// The lines of a good load in a complete Installation, in order.
std::vector<LogMessage> LinesOfGoodLoad();

/// What the console shows of it: each line feed of a message begins a new line.
std::vector<std::string> AsConsoleLines(std::vector<LogMessage> const& lines);

} // namespace Rig
