#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "common/ByteView.h"

namespace Halvorix::Tools {

/// The files that the loader's cache has for each name, in its order.
using LoaderCache = std::unordered_map<std::string, std::vector<std::string>>;

/// Of a cache in the form that ldconfig has written since 1999; another one gives
/// nothing.
LoaderCache ReadLoaderCache(ByteView const& bytes);

/// That of this machine.
LoaderCache const& SystemLoaderCache();

} // namespace Halvorix::Tools
