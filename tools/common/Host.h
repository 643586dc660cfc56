#pragma once

#include <filesystem>
#include <string>

namespace Halvorix::Tools {

/// The program that a plugin is to work in.
struct Host {
    std::filesystem::path program; ///< its executable
    std::filesystem::path library; ///< the library's file; empty: not found
    /// That the library names for what a plugin needs; empty: the plugin's own.
    std::filesystem::path dependencyFolder = {};
    bool standsForAny = false; ///< for a host that need not be linked with the library, too
};

/// This program in the place of one, with the library that is installed with it.
Host ThisProgramAsHost();

/// Where the library is that a program loads.
struct FoundLibrary {
    std::filesystem::path file; ///< empty: not found
    std::string name;           ///< by which the program needs it
    std::string hint;           ///< what there is instead; may be empty
    std::string remedy;         ///< where to put it, if it is not found
    bool isNeeded = true;       ///< at the start, as far as is known; else it may load it by itself
};

/// As the program's loader would find it.
FoundLibrary FindLibraryOf(std::filesystem::path const& program);

} // namespace Halvorix::Tools
