#pragma once

#include <string>
#include <string_view>

namespace Halvorix::Platform {

/// A descriptor to read from, or -1 and errno. A pipe may have taken a file's place, and
/// some files of the system wait for what is to come though they are called regular: no
/// call waits for these. But a file server may have a lease on a file, which it gives up
/// for one who waits a little.
int OpenWithoutWaiting(char const* file);

/// Reads a regular file to its end, or at least up to the first of the characters that
/// are enough. 0, or why not: EINVAL for what is no regular file, which is not waited for.
int ReadRegularFile(std::string const& file, std::string& content, std::string_view enough = {});

} // namespace Halvorix::Platform
