#pragma once

#include <string>

namespace Rig {

/// A variable of the process's environment, UTF-8; empty if it is not set.
std::string Variable(char const* name);

/// For this process and those that it starts.
void SetVariable(std::string const& name, std::string const& value);

} // namespace Rig
