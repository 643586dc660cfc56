#pragma once

#include <string>
#include <string_view>

namespace Halvorix::Platform {

/// A descriptor to read from, or -1 and errno. Never waits for a pipe that has taken a file's
/// place, nor for a system file that is called regular and yet waits for data. Where a file
/// server holds a lease on the file, it waits until the server has given it up.
int OpenWithoutWaiting(char const* file);

/// Reads a regular file to its end, or at least up to the first of the characters that
/// are enough. 0, or why not: EINVAL for anything but a regular file, without waiting for it.
int ReadRegularFile(std::string const& file, std::string& content, std::string_view enough = {});

} // namespace Halvorix::Platform
