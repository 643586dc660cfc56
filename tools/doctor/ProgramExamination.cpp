#include <algorithm>
#include <filesystem>
#include <utility>

#include <boost/locale/util.hpp>

#include "common/Files.h"
#include "common/ModuleGraph.h"
#include "common/ModuleImage.h"
#include "common/System.h"
#include "common/Utf8.h"
#include "discovery/ModuleFiles.h"
#include "discovery/PathText.h"
#include "doctor/Examination.h"
#include "doctor/FileFlaw.h"
#include "doctor/ProgramStart.h"
#include "doctor/TargetProgram.h"
#include "doctor/Text.h"
#include "support/LibraryIdentity.h"

namespace Halvorix::Doctor {

namespace {

namespace fs = std::filesystem;
using Tools::ImageFormat;
using Tools::ModuleImage;

// What is said of a file before what kind of image it is counts.
std::string FlawOfImage(fs::path const& file, Tools::OpenedFile const& opened,
                        ModuleImage const& image, char const* kind)
{
    if (opened.bytes == nullptr && opened.reason != "does not exist")
        return opened.reason;
    if (IsEmpty(file))
        return "is empty";
    if (image.format == ImageFormat::None)
        return std::string("is not a ") + kind;
    if (image.format != Tools::NativeFormat)
        return std::string("is a ") + kind + " for " +
               (image.format == ImageFormat::Pe ? "Windows" : "Linux or its like");
    return {};
}

// The mark of a program is younger than some that are in use, so the name counts too.
bool IsNamedAsModule(fs::path const& file)
{
    std::string const name = Lower(Tools::Utf8(file.filename()));
    return name.find(".so") != std::string::npos || name.find(".dll") != std::string::npos;
}

void AddExecutable(fs::path const& file, Program& program)
{
    ModuleImage const image = Tools::ReadModuleImage(file);
    Tools::OpenedFile const opened = Tools::OpenFile(file);
    program.executableFlaw = FlawOfImage(file, opened, image, "program");
    program.executableRemedy = opened.right.empty()
                                   ? opened.remedy
                                   : "allow the user of this doctor " + opened.right +
                                         ", whether or not that of the program needs to";
    if (program.executableFlaw.empty() && image.isModule && IsNamedAsModule(file))
        program.executableFlaw = "is a module, not a program";
    if (!program.executableFlaw.empty())
        return;
    program.executableMachine = image.machine;
    if (image.machine != Tools::OwnMachine())
        return;
    ProgramStart start = StartOf(file, image);
    program.startFlaw = std::move(start.flaw);
    program.startRemedy = std::move(start.remedy);
    program.isStatic = start.isStatic;
    program.isDenied = start.isDenied;
}

void AddCutFiles(TargetProgram const& target, Program& program)
{
    for (fs::path const& file : {target.executable, target.library}) {
        std::wstring const path = Tools::Wide(file);
        std::wstring const told = Tools::AsToldToLibrary(path);
        if (told != path)
            program.cutFiles.push_back(
                {Tools::Utf8(file), Shown(SSOServices::NormalizePath(told))});
    }
}

// A name that programs are built against, and so every version of the library has.
bool NamesTheLibrary(std::string const& symbol)
{
    return symbol.find("WebServicesManager") != std::string::npos &&
           symbol.find("IsInitialized") != std::string::npos;
}

bool IsTheLibrary(fs::path const& file)
{
    Tools::OpenedFile const opened = Tools::OpenFile(file);
    Tools::SymbolBudget budget;
    return opened.bytes != nullptr &&
           !Tools::ReadModuleOffers(Tools::ByteView(*opened.bytes), NamesTheLibrary, budget)
                .exports.empty();
}

void AddLibrary(fs::path const& file, Program& program)
{
    if (file.empty())
        return;
    ModuleImage const image = Tools::ReadModuleImage(file);
    program.libraryMachine = image.machine;
    Tools::OpenedFile const opened = Tools::OpenFile(file);
    program.libraryFlaw = FlawOfImage(file, opened, image, "module");
    program.libraryFlawRemedy = opened.remedy;
    if (program.libraryFlaw.empty() && !image.flaw.empty())
        program.libraryFlaw = "is damaged: " + image.flaw;
    if (program.libraryFlaw.empty() && !image.isModule)
        program.libraryFlaw = "is a program, not a module";
    if (program.libraryFlaw.empty() && image.machine == Tools::OwnMachine() && !IsTheLibrary(file))
        program.libraryFlaw = "is another module: it exports no WebServicesManager";
    program.fileVersion = Tools::FileVersionOf(file);
    program.ownFileVersion = HXSSO_FILE_VERSION;
}

void AddVariables(Resolver& resolver, Program& program)
{
    for (char const* const name : PathVariables) {
        std::wstring const variable = Wide(std::string("%") + name + "%");
        std::wstring value = variable;
        resolver.ExpandPathVariables(value);
        program.variables.push_back({name, value == variable ? "" : Shown(value)});
    }
}

} // namespace

void ExamineProgram(Resolver& resolver, Options const& options, Findings& findings)
{
    Program& program = findings.program;
    TargetProgram const& target = CurrentTargetProgram();
    std::wstring const libraryName = Platform::LibraryFileName();
    program.libraryName = Shown(libraryName);
    program.version = SSOServices::LibraryVersion;
    program.build = Shown(SSOServices::BuildName());
    program.libraryFile = Shown(SSOServices::NormalizePath(Tools::Wide(target.library)));
    AddLibrary(target.library, program);
    program.libraryHint = WantedLibrary().hint;
    program.libraryRemedy = WantedLibrary().remedy;
    program.needsLibrary = WantedLibrary().isNeeded;
    AddCutFiles(target, program);
    program.locale = boost::locale::util::get_system_locale();
    program.executable = Shown(SSOServices::NormalizePath(Tools::Wide(target.executable)));
    program.ownMachine = Tools::OwnMachine();
    program.isNamed = !options.executable.empty();
    program.isLibraryNamed = !options.library.empty();
    if (program.isNamed)
        AddExecutable(target.executable, program);
    else
        program.executableMachine = program.ownMachine;
    std::error_code unknown;
    program.workingDirectory = Tools::Utf8(fs::current_path(unknown));
    for (auto const& [name, folder] :
         {std::pair("ProgramFiles", Platform::KnownFolder::ProgramFiles),
          std::pair("AppData", Platform::KnownFolder::RoamingAppData),
          std::pair("LocalAppData", Platform::KnownFolder::LocalAppData)})
        program.folders.push_back({name, Shown(SSOServices::GetKnownFolderPath(folder))});
    program.directory = Shown(SSOServices::GetExecutableDirPath());
    AddVariables(resolver, program);
}

} // namespace Halvorix::Doctor
