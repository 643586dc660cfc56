#include "../Variable.h"

#include <cstdlib>

namespace Rig {

std::string Variable(char const* name)
{
    char const* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

} // namespace Rig
