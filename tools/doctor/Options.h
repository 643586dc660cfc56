#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "common/PluginRun.h"

namespace Halvorix::Doctor {

/// What the command line asks for.
struct Options {
    std::filesystem::path executable; ///< empty: this program
    std::filesystem::path library;    ///< empty: to be found
    std::wstring config;              ///< empty: no override
    std::wstring searchPaths;
    std::chrono::seconds timeLimit = Tools::DefaultTimeLimit; ///< for code of the plugin
    bool load = false;
    bool log = false;
    bool asJson = false;
    bool verbose = false;
    bool help = false;
    bool version = false;
    std::string misuse; ///< why this is wrong use; empty if it is not
};

/// The text of --help, made of hxsso-doctor.txt as the man page is.
extern char const* const Usage;

Options ReadOptions(std::vector<std::filesystem::path> const& arguments);

} // namespace Halvorix::Doctor
