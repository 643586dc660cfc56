#include "platform/Platform.h"
#include "platform/windows/Windows.h"

namespace Halvorix::Platform {

bool IsWow64Process()
{
    BOOL answer = FALSE;
    return ::IsWow64Process(::GetCurrentProcess(), &answer) != FALSE && answer != FALSE;
}

bool ThreadsEndBeforeModules() { return true; }

} // namespace Halvorix::Platform
