#pragma once

#include <filesystem>
#include <vector>

namespace Halvorix::Doctor {

/// The doctor with these arguments; the answer is its exit status.
int Run(std::vector<std::filesystem::path> const& arguments);

} // namespace Halvorix::Doctor
