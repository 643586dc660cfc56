#include "support/SSOClientManagerMutex.h"

#include "support/Undestroyed.h"

namespace Halvorix::SSOServices {

namespace {

Undestroyed<std::recursive_mutex> theMutex;

} // namespace

std::recursive_mutex& SSOClientManagerMutex = theMutex.value;

} // namespace Halvorix::SSOServices
