#pragma once

#include "framework/System.h"
#include "framework/ThisBuild.h"
#include "framework/Variable.h"

namespace Rig {

/// Whether the run is to take its time: HXSSO_LONG is set.
inline bool IsLongRun() { return !Variable("HXSSO_LONG").empty(); }

/// Whether to start few processes: under Wine and with a sanitizer each takes a
/// tenth of a second, and counters of lines need no more of them.
inline bool ProcessesStartSlowly() { return IsWindows() || IsInstrumented(); }

/// A number that depends on it: how often to repeat what costs a process each time, or
/// how large the steps through such trials are.
inline int Repetitions(int quickly, int slowly, int longQuickly, int longSlowly)
{
    if (IsLongRun())
        return ProcessesStartSlowly() ? longSlowly : longQuickly;
    return ProcessesStartSlowly() ? slowly : quickly;
}

} // namespace Rig
