#pragma once

#include <filesystem>
#include <vector>

namespace Halvorix::Tools {

/// The program that a plugin is to work in.
struct Host {
    std::filesystem::path folder;
    /// Where its library may lie. With a host it is in the process before the
    /// plugin is, so the loader need not find it.
    std::vector<std::filesystem::path> libraryFolders;
};

/// This program in the place of one.
Host ThisProgramAsHost();

} // namespace Halvorix::Tools
