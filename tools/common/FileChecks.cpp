#include "FileChecks.h"

#include <algorithm>
#include <set>

#include "Dependencies.h"
#include "ModuleImage.h"
#include "System.h"
#include "Utf8.h"
#include "platform/Platform.h"

namespace Halvorix::Tools {

namespace {

namespace fs = std::filesystem;

std::string Listed(std::vector<std::string> const& names)
{
    std::string list;
    for (std::string const& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

std::string Lower(std::string text)
{
    for (char& unit : text)
        if (unit >= 'A' && unit <= 'Z')
            unit = static_cast<char>(unit - 'A' + 'a');
    return text;
}

bool BeginsWith(std::string const& text, char const* beginning)
{
    return text.rfind(beginning, 0) == 0;
}

bool IsCppRuntime(std::string const& lowerName)
{
    // msvcrt.dll is the C runtime of every system, not one of a compiler's.
    bool const isMicrosofts = BeginsWith(lowerName, "msvcr") && !BeginsWith(lowerName, "msvcrt");
    return isMicrosofts || BeginsWith(lowerName, "libstdc++") || BeginsWith(lowerName, "libc++") ||
           BeginsWith(lowerName, "msvcp") || BeginsWith(lowerName, "vcruntime");
}

bool IsJsoncpp(std::string const& lowerName)
{
    return BeginsWith(lowerName, "libjsoncpp") || BeginsWith(lowerName, "jsoncpp");
}

// Microsoft divides one runtime into several modules, msvcp140_1.dll say, of
// which each program needs others.
std::string Undivided(std::string name)
{
    std::size_t const cut = name.find('_');
    std::size_t const extension = name.rfind('.');
    bool const isDivided = BeginsWith(name, "msvcp") || BeginsWith(name, "vcruntime");
    if (isDivided && cut < extension && extension != std::string::npos)
        name.erase(cut, extension - cut);
    return name;
}

using NameTest = bool (*)(std::string const&);

std::set<std::string> Selected(std::vector<std::string> const& names, NameTest test)
{
    std::set<std::string> selected;
    for (std::string const& name : names)
        if (test(Lower(name)))
            selected.insert(Undivided(Lower(name)));
    return selected;
}

std::string Listed(std::set<std::string> const& names)
{
    return Listed(std::vector<std::string>(names.begin(), names.end()));
}

bool CheckModule(ModuleImage const& image, ModuleImage const& own, Report& report)
{
    if (image.format == ImageFormat::None) {
        report.Add("module", Result::Failed, "this is no module of any kind");
        return false;
    }
    if (image.format != own.format) {
        report.Add("module", Result::Failed,
                   image.format == ImageFormat::Pe ? "this is a module for Windows"
                                                   : "this is a module for Linux or its like");
        return false;
    }
    if (image.machine != own.machine) {
        report.Add("architecture", Result::Failed,
                   "for " + image.machine + ", and the library is for " + own.machine);
        return false;
    }
    if (!image.isModule) {
        report.Add("module", Result::Failed, "this is a program, not a module");
        return false;
    }
    if (!image.flaw.empty()) {
        report.Add("module", Result::Failed, "the file is damaged: " + image.flaw);
        return false;
    }
    report.Add("module", Result::Ok, image.format == ImageFormat::Pe ? "a DLL" : "a shared object");
    report.Add("architecture", Result::Ok, image.machine);
    return true;
}

void CheckDependencies(Dependencies const& dependencies, Report& report)
{
    for (MissingDependency const& missing : dependencies.missing)
        report.Add("dependencies", Result::Failed,
                   missing.name + ", which " + missing.neededBy + " needs, is missing" +
                       (missing.hint.empty() ? "" : ": " + missing.hint));
    if (!dependencies.missing.empty())
        return;
    std::string detail;
    auto const add = [&detail](char const* where, std::vector<std::string> const& names) {
        if (!names.empty())
            detail += (detail.empty() ? "" : "; ") + std::string(where) + ": " + Listed(names);
    };
    add("in their places", dependencies.inFolders);
    add("in the process", dependencies.inProcess);
    add("of the system", dependencies.ofSystem);
    if (dependencies.library)
        add("the host's", {Utf8(dependencies.library->filename())});
    report.Add("dependencies", Result::Ok, detail.empty() ? "none" : detail);
}

void CheckExport(ModuleImage const& image, Report& report)
{
    std::string const wanted = Platform::FactoryProcedureName();
    std::vector<std::string> const& names = image.factoryNames;
    if (std::find(names.begin(), names.end(), wanted) != names.end())
        report.Add("export", Result::Ok, wanted);
    else if (names.empty())
        report.Add("export", Result::Failed,
                   "no factory procedure; the library looks for " + wanted);
    else
        report.Add("export", Result::Failed,
                   "only as " + Listed(names) + "; the library looks for " + wanted);
}

void CheckRuntime(ModuleImage const& image, ModuleImage const& own, Report& report)
{
    std::set<std::string> const wanted = Selected(own.imports, IsCppRuntime);
    std::set<std::string> const used = Selected(image.imports, IsCppRuntime);
    std::set<std::string> foreign;
    std::set_difference(used.begin(), used.end(), wanted.begin(), wanted.end(),
                        std::inserter(foreign, foreign.end()));
    // Microsoft's tools leave no mark of a runtime but that nothing is imported.
    bool const hasCRuntime =
        std::any_of(image.imports.begin(), image.imports.end(), [](std::string const& name) {
            std::string const lower = Lower(name);
            return BeginsWith(lower, "msvcrt") || BeginsWith(lower, "ucrtbase") ||
                   BeginsWith(lower, "api-ms-win-crt-");
        });
    if (!foreign.empty())
        report.Add("runtime", Result::Failed,
                   "another C++ runtime, " + Listed(foreign) + "; the library has " +
                       Listed(wanted));
    else if (image.holdsCppRuntime)
        report.Add("runtime", Result::Failed,
                   "a C++ runtime of its own, linked statically; the library has " +
                       Listed(wanted));
    else if (!used.empty())
        report.Add("runtime", Result::Ok, Listed(used) + ", as the library");
    else if (image.format == ImageFormat::Pe && !hasCRuntime)
        report.Add("runtime", Result::Failed,
                   "no runtime is imported: one is linked statically; the library has " +
                       Listed(wanted));
    else
        report.Add("runtime", Result::Note, "no C++ runtime is used");
}

void CheckJsoncpp(ModuleImage const& image, ModuleImage const& own, Report& report)
{
    std::set<std::string> const wanted = Selected(own.imports, IsJsoncpp);
    std::set<std::string> const used = Selected(image.imports, IsJsoncpp);
    if (image.holdsJsoncpp)
        report.Add("jsoncpp", Result::Note,
                   "one of its own, linked statically: nothing of it may be visible outside");
    else if (used.empty())
        report.Add("jsoncpp", Result::Note, "not used");
    else if (used == wanted)
        report.Add("jsoncpp", Result::Ok, Listed(used) + ", as the library");
    else
        report.Add("jsoncpp", Result::Failed,
                   "another one, " + Listed(used) + "; the library has " + Listed(wanted));
}

} // namespace

FileFindings CheckFile(fs::path const& file, Host const& host, Report& report)
{
    std::error_code error;
    fs::file_status const status = fs::status(file, error);
    if (!fs::exists(status)) {
        report.Add("file", Result::Failed, Utf8(file) + " does not exist");
        return {};
    }
    if (!fs::is_regular_file(status)) {
        report.Add("file", Result::Failed, Utf8(file) + " is no file");
        return {};
    }
    std::optional<std::string> const content = ReadWhole(file);
    if (!content) {
        report.Add("file", Result::Failed, Utf8(file) + " cannot be read");
        return {};
    }
    report.Add("file", Result::Ok, Utf8(file));
    // This program was built as the library was: its header is the measure.
    ModuleImage const own =
        ReadModuleImage(ReadWhole(FromWide(Platform::ExecutableFile())).value_or(std::string()));
    ModuleImage const image = ReadModuleImage(*content);
    if (!CheckModule(image, own, report))
        return {};
    Dependencies const dependencies = FindDependencies(file, image, own, host);
    CheckDependencies(dependencies, report);
    CheckExport(image, report);
    CheckRuntime(image, own, report);
    CheckJsoncpp(image, own, report);
    std::vector<fs::path> first = dependencies.ofHost;
    if (dependencies.library)
        first.insert(first.begin(), *dependencies.library);
    return {first};
}

} // namespace Halvorix::Tools
