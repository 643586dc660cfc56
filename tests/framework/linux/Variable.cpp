#include "framework/Variable.h"

#include <cstdlib>

namespace Rig {

std::string Variable(char const* name)
{
    char const* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

void SetVariable(std::string const& name, std::string const& value)
{
    ::setenv(name.c_str(), value.c_str(), 1);
}

} // namespace Rig
