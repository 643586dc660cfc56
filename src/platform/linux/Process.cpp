#include "platform/Platform.h"

namespace Halvorix::Platform {

bool IsWow64Process() { return false; }

bool ThreadsEndBeforeModules() { return false; }

} // namespace Halvorix::Platform
