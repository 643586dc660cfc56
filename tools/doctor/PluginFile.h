#pragma once

#include <filesystem>

namespace Halvorix::Doctor {

/// The file that a load of this plugin maps, absolute. The library tests for the plugin
/// from the current directory, and the system's loader may look elsewhere. Empty: none.
std::filesystem::path FileThatLoads(std::filesystem::path const& plugin,
                                    std::filesystem::path const& program);

} // namespace Halvorix::Doctor
