#pragma once

#include "doctor/Findings.h"
#include "doctor/Options.h"
#include "doctor/Resolver.h"

namespace Halvorix::Doctor {

/// Follows a load up to the plugin's file and runs nothing of it. The target program is
/// set.
Findings Examine(Options const& options);

// The parts of it, in this order; each after the library has been asked.
void ExamineProgram(Resolver& resolver, Options const& options, Findings& findings);
void ExamineClientConfig(Resolver& resolver, Findings& findings);
void ExamineServerApp(Resolver& resolver, Findings& findings);
void ExamineCompatibility(Resolver& resolver, Findings& findings);
void ExaminePlugin(Findings& findings);

/// What the program's library needs.
void ExamineLibrary(Findings& findings);

/// Executes the plugin, in a process of its own: its factory and interfaces.
void ExamineInterfaces(Options const& options, Findings& findings);

/// Executes the plugin, in a process of its own: a load by the library itself, with
/// its log.
void ExamineRealLoad(Options const& options, Findings& findings);

} // namespace Halvorix::Doctor
