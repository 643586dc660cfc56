#include "doctor/Judgement.h"

namespace Halvorix::Doctor {

namespace {

void JudgeLibraryCheck(Findings const& findings, ProblemList& problems, Tools::Check const& check)
{
    Program const& program = findings.program;
    if (check.name == "program")
        problems.Add(Fatal, "program-dependencies", Subject::Program,
                     "the program " + program.executable + " does not start: " + check.detail,
                     check.remedy + ", or the program again");
    else
        problems.Add(Fatal, "library-" + check.name, Subject::Program,
                     "the library " + program.libraryFile + ": " + check.name + ": " + check.detail,
                     check.remedy.empty() ? "install the library again" : check.remedy);
}

void JudgeMissingLibrary(Findings const& findings, ProblemList& problems)
{
    Program const& program = findings.program;
    std::string remedy = "install it beside the program, or name its file with --library";
    if (!program.isNamed)
        remedy = "run hxsso-doctor --exe PROGRAM";
    else if (program.executableFlaw.empty() && !program.libraryRemedy.empty())
        remedy = program.libraryRemedy;
    problems.Add(Fatal, "library-missing", Subject::Program,
                 program.libraryName + " is not where " + program.executable +
                     " would load it from" +
                     (program.libraryHint.empty() ? "" : ": " + program.libraryHint),
                 remedy);
}

void JudgeStart(Program const& program, ProblemList& problems)
{
    if (!program.startFlaw.empty()) {
        problems.Add(Fatal, "program-does-not-start", Subject::Program,
                     "the program " + program.executable + " does not start: " + program.startFlaw,
                     program.startRemedy);
        return;
    }
    if (program.isDenied)
        problems.Add(Warning, "program-not-executable-here", Subject::Program,
                     "the user of this doctor may not execute the program " + program.executable +
                         ": what is said here holds for a user who may",
                     "allow the program's user to execute " + program.executable +
                         ", if that one may not either");
    if (!program.needsLibrary)
        problems.Add(Warning, "program-does-not-need-library", Subject::Program,
                     "the program " + program.executable +
                         (program.isStatic ? " is linked statically, so that no loader brings "
                                           : " does not need ") +
                         program.libraryName +
                         (program.isStatic ? " into its process" : " at its start") +
                         ": what is said here holds only if it loads the library itself",
                     "name the program that uses the library with --exe if that is another one");
}

} // namespace

void JudgeProgram(Findings const& findings, ProblemList& problems)
{
    Program const& program = findings.program;
    if (!program.executableRemedy.empty())
        problems.Add(Fatal, "executable-unreadable", Subject::Program,
                     program.executable + " " + program.executableFlaw, program.executableRemedy);
    else if (!program.executableFlaw.empty())
        problems.Add(Fatal, "executable-not-a-program", Subject::Program,
                     program.executable + " " + program.executableFlaw,
                     "name the program's executable with --exe");
    else if (program.executableMachine != program.ownMachine)
        problems.Add(Fatal, "executable-of-other-architecture", Subject::Program,
                     program.executable + " is for " + program.executableMachine +
                         ", and this doctor for " + program.ownMachine,
                     "run the doctor of the package for " + program.executableMachine);
    else
        JudgeStart(program, problems);
    for (NamedText const& cut : program.cutFiles)
        problems.Add(Cause, "program-path-too-long", Subject::Program,
                     "the path " + cut.name +
                         " is too long for the library, which reads this of it: " + cut.text,
                     "install the program in a folder with a shorter path");
    if (program.libraryFile.empty())
        JudgeMissingLibrary(findings, problems);
    else if (!program.libraryFlaw.empty())
        problems.Add(Fatal, "library-damaged", Subject::Program,
                     program.libraryFile + " " + program.libraryFlaw,
                     !program.libraryFlawRemedy.empty() ? program.libraryFlawRemedy
                     : program.isLibraryNamed ? "name the library's file with --library, or none"
                                              : "install the library again");
    else if (program.libraryMachine != program.ownMachine)
        problems.Add(Fatal, "library-of-other-architecture", Subject::Program,
                     program.libraryFile + " is for " + program.libraryMachine +
                         ", and this doctor for " + program.ownMachine,
                     "install the library that is built for the program");
    else if (!program.fileVersion.empty() && program.fileVersion != program.ownFileVersion)
        problems.Add(Warning, "library-of-other-version", Subject::Program,
                     program.libraryFile + " is version " + program.fileVersion +
                         ", and this doctor is for version " + program.ownFileVersion,
                     "run the doctor of that version");
    // What another module needs says nothing of the library.
    for (Tools::Check const& check : FailedOf(program.libraryChecks))
        if (check.name == "program" || program.libraryFlaw.empty())
            JudgeLibraryCheck(findings, problems, check);
}

} // namespace Halvorix::Doctor
