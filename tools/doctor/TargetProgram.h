#pragma once

#include <filesystem>
#include <string>

#include "common/Host.h"

namespace Halvorix::Doctor {

/// The program in whose place the library's questions are answered: its
/// executable, and the file of the library that it loads. Each absolute, as the
/// system spells it in such a process; an empty library is one that is not found.
struct TargetProgram {
    std::filesystem::path executable;
    std::filesystem::path library;
};

/// To be set before anything of the library is asked.
void SetTargetProgram(TargetProgram target);
TargetProgram const& CurrentTargetProgram();

/// What the search for its library has told.
Tools::FoundLibrary const& WantedLibrary();

/// The program that was named, or this one. The library is the file that was named;
/// else the one that the loader finds for that executable, or that lies beside one that
/// loads it by itself; for this program that of the package.
TargetProgram FindTargetProgram(std::filesystem::path const& executable,
                                std::filesystem::path const& library);

} // namespace Halvorix::Doctor
