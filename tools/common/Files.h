#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "common/ByteView.h"

namespace Halvorix::Tools {

struct OpenedFile {
    std::unique_ptr<ByteSource> bytes; ///< null if it cannot be read
    std::string reason;                ///< why not: "is a folder, not a file", say
    bool endsSearch = false;           ///< the loader looks no further than at this one
    std::string remedy = {};           ///< where it is not the file that has to be another one
    std::string right = {};            ///< that this user lacks: "to read /a/file"; empty: none
};

/// A regular file. Anything else of that name (a folder, a pipe, a device) is told
/// and not opened.
OpenedFile OpenFile(std::filesystem::path const& file);

} // namespace Halvorix::Tools
