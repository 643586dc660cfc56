#pragma once

#include <json/value.h>

#include "loader/Channel.h"

namespace Halvorix::PluginLoader {

/// A load by the library itself, in the place of the program that the request names,
/// with each line of its log.
void LoadByLibrary(Json::Value const& request, Channel& channel);

} // namespace Halvorix::PluginLoader
