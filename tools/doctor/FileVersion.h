#pragma once

#include <filesystem>
#include <string>

namespace Halvorix::Doctor {

/// The version that a module's file carries: in its version resource, or behind its
/// name as shared objects have it. Empty if there is none.
std::string FileVersionOf(std::filesystem::path const& file, std::string const& content);

} // namespace Halvorix::Doctor
