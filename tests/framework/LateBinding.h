#pragma once

#include <string>

namespace Rig {

using LateBound = void (*)();

/// A module that the program is not linked with; null if it cannot be had.
void* BindModule(std::string const& file);
/// One of its procedures, by its decorated name; null if there is none.
LateBound FindBound(void* module, char const* name);
void UnbindModule(void* module);
/// Whether the system has the module, whoever holds it.
bool IsModuleLoaded(std::string const& file);

} // namespace Rig
