#pragma once

/// @file
/// Everything that a plugin implements. `examples/plugin` is a complete one.

#include "ILogger.h"
#include "IRsaCryptor.h"
#include "ISSOClient.h"
#include "ISSOClientFactory.h"
#include "ISSOClientModule.h"
#include "ISSOClientPrivate.h"
#include "ISSOClientUI.h"
#include "ISSOLogManager.h"
#include "ISSOServerManager.h"
#include "PluginTypes.h"
