#pragma once

#include <string>

namespace Halvorix::Platform {

/// Reads a regular file to its end. 0, or why not: EINVAL for what is no regular
/// file, which is not waited for.
int ReadRegularFile(std::string const& file, std::string& content);

} // namespace Halvorix::Platform
