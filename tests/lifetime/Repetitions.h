#pragma once

#include "framework/System.h"
#include "framework/Variable.h"

namespace Rig {

/// Whether the run is to take its time: HXSSO_LONG is set.
inline bool IsLongRun() { return !Variable("HXSSO_LONG").empty(); }

/// How often to repeat what costs a process each time; one costs more under Wine.
inline int Repetitions(int onLinux, int onWindows, int longOnLinux, int longOnWindows)
{
    if (IsLongRun())
        return IsWindows() ? longOnWindows : longOnLinux;
    return IsWindows() ? onWindows : onLinux;
}

} // namespace Rig
