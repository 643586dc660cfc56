#include "doctor/TargetProgram.h"

#include <utility>

#include "common/System.h"
#include "platform/Platform.h"

namespace Halvorix::Doctor {

namespace {

namespace fs = std::filesystem;

TargetProgram target;
Tools::FoundLibrary wanted;

} // namespace

void SetTargetProgram(TargetProgram newTarget) { target = std::move(newTarget); }

TargetProgram const& CurrentTargetProgram() { return target; }

Tools::FoundLibrary const& WantedLibrary() { return wanted; }

TargetProgram FindTargetProgram(fs::path const& executable, fs::path const& library)
{
    TargetProgram found;
    bool const isThisProgram = executable.empty();
    wanted = {};
    found.executable = Tools::ExecutableAsRun(
        isThisProgram ? Tools::FromWide(Platform::ExecutableFile()) : executable);
    if (!library.empty()) {
        found.library = Tools::ModuleAsLoaded(library);
        return found;
    }
    if (isThisProgram) {
        found.library = Tools::ThisProgramAsHost().library;
    } else {
        wanted = Tools::FindLibraryOf(found.executable);
        found.library = wanted.file;
    }
    if (!found.library.empty())
        found.library = Tools::ModuleAsLoaded(found.library);
    return found;
}

} // namespace Halvorix::Doctor
