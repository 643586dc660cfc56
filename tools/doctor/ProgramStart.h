#pragma once

#include <filesystem>
#include <string>

#include "common/ModuleImage.h"

namespace Halvorix::Doctor {

/// How the system starts a program, as far as its file tells.
struct ProgramStart {
    std::string flaw; ///< why it does not; empty if nothing keeps it from it
    std::string remedy;
    bool isStatic = false; ///< no loader comes into its process
    bool isDenied = false; ///< to the user of this doctor; another one may start it
};

/// Of a program of this system and machine that can be read.
ProgramStart StartOf(std::filesystem::path const& file, Tools::ModuleImage const& image);

} // namespace Halvorix::Doctor
