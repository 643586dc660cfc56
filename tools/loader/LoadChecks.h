#pragma once

#include <json/value.h>

#include "loader/Channel.h"

namespace Halvorix::PluginLoader {

/// Loads what is in a host's process before the plugin. False, and told, if the system
/// refuses.
bool LoadFirst(Json::Value const& request, Channel& report);

/// Loads the module of the request as the library does and asks it what the library
/// asks. Does not return, so that no code of the plugin runs afterwards.
void CheckLoaded(Json::Value const& request, Channel& channel);

} // namespace Halvorix::PluginLoader
