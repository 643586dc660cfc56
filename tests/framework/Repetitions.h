#pragma once

#include "System.h"
#include "Variable.h"

namespace Rig {

/// Whether the run is to take its time: HXSSO_LONG is set.
inline bool IsLongRun() { return !Variable("HXSSO_LONG").empty(); }

/// Whether the start of a process takes a tenth of a second: under Wine, and with
/// the memory of a sanitizer.
inline bool ProcessesStartSlowly() { return IsWindows() || HXSSO_SANITIZED; }

/// How often to repeat what costs a process each time.
inline int Repetitions(int quickly, int slowly, int longQuickly, int longSlowly)
{
    if (IsLongRun())
        return ProcessesStartSlowly() ? longSlowly : longQuickly;
    return ProcessesStartSlowly() ? slowly : quickly;
}

} // namespace Rig
