#pragma once

#include <mutex>

namespace Halvorix::SSOServices {

/// Serialises the creation of the manager, the load, the factory's getters and the log.
/// Recursive: the load logs while it holds it. Never destroyed.
extern std::recursive_mutex& SSOClientManagerMutex;

} // namespace Halvorix::SSOServices
