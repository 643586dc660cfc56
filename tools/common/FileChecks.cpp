#include "common/FileChecks.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "common/Dependencies.h"
#include "common/Files.h"
#include "common/ModuleImage.h"
#include "common/Utf8.h"
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

bool NamesFactoryProcedure(std::string const& name)
{
    return name.find("GetSSOClientFactory") != std::string::npos;
}

// As either family of compilers decorates it: the procedure itself, and not what a class or a
// namespace of that name has.
bool IsInNamespace(std::string const& name)
{
    std::string_view const ending = "19GetSSOClientFactoryEv";
    bool const isProcedure = name.size() > ending.size() &&
                             name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
    return (BeginsWith(name, "_ZN") && isProcedure) ||
           (BeginsWith(name, "?GetSSOClientFactory@") &&
            !BeginsWith(name, "?GetSSOClientFactory@@"));
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

bool CheckModule(ModuleImage const& image, Report& report)
{
    if (image.format == ImageFormat::None) {
        report.Add("module", Result::Failed, "this is no module of any kind");
        return false;
    }
    if (image.format != NativeFormat) {
        report.Add("module", Result::Failed,
                   image.format == ImageFormat::Pe ? "this is a module for Windows"
                                                   : "this is a module for Linux or its like");
        return false;
    }
    if (image.machine != OwnMachine()) {
        report.Add("architecture", Result::Failed,
                   "for " + image.machine + ", and the library is for " + OwnMachine());
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
    if (image.isForStartOnly) {
        report.Add("module", Result::Failed, std::string("the file ") + ForStartOnly);
        return false;
    }
    report.Add("module", Result::Ok, image.format == ImageFormat::Pe ? "a DLL" : "a shared object");
    report.Add("architecture", Result::Ok, image.machine);
    return true;
}

void TellUntold(std::size_t symbols, Report& report)
{
    if (symbols != 0)
        report.Add("symbols", Result::Failed,
                   std::to_string(symbols) + (symbols == 1 ? " more is" : " more are") + " missing",
                   {}, symbols);
}

void CheckDependencies(Dependencies const& dependencies, Report& report)
{
    for (MissingModule const& missing : dependencies.missing)
        report.Add("dependencies", Result::Failed, Told(missing), missing.remedy);
    if (!dependencies.limit.empty())
        report.Add("limit", Result::Failed, dependencies.limit);
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
    report.Add("dependencies", Result::Ok, detail.empty() ? "none" : detail);
    // With modules of its own, one of these may be the wrong one.
    std::string const link =
        "link the plugin with what defines it; with hxsso_add_plugin the linker tells";
    for (MissingSymbol const& missing : dependencies.missingSymbols)
        report.Add("symbols", Result::Failed, missing.line,
                   !missing.isOfModule ? std::string()
                   : dependencies.inFolders.empty()
                       ? link
                       : "install modules that fit together, or " + link);
    TellUntold(dependencies.untoldSymbols, report);
}

void CheckExport(ByteView const& bytes, Report& report)
{
    SymbolBudget budget;
    ModuleOffers const offers = ReadModuleOffers(bytes, NamesFactoryProcedure, budget);
    if (!offers.flaw.empty()) {
        report.Add("export", Result::Failed, offers.flaw);
        return;
    }
    constexpr std::size_t most = 8;
    std::string const wanted = Platform::FactoryProcedureName();
    std::vector<std::string> names;
    for (std::string const& name : offers.exports)
        if (name == wanted || names.size() < most)
            names.push_back(name);
    if (std::find(names.begin(), names.end(), wanted) != names.end())
        report.Add("export", Result::Ok, wanted);
    else if (!ReadOwnSymbols(
                  bytes, [&wanted](std::string const& name) { return name == wanted; }, budget)
                  .empty())
        report.Add("export", Result::Failed,
                   wanted + " is in the module but not exported; build it with hxsso_add_plugin, "
                            "or compile it with -fvisibility=default");
    else if (names.empty())
        report.Add("export", Result::Failed,
                   "no factory procedure; the library looks for " + wanted);
    else
        report.Add("export", Result::Failed,
                   "only as " + Listed(names) + "; the library looks for " + wanted +
                       (std::any_of(names.begin(), names.end(), IsInNamespace)
                            ? "; define it outside any namespace"
                            : ""));
}

void CheckRuntime(ModuleImage const& image, HeldRuntimes const& held, ModuleImage const& library,
                  Report& report)
{
    std::set<std::string> const wanted = Selected(library.imports, IsCppRuntime);
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
    else if (held.cpp)
        report.Add("runtime", Result::Failed,
                   "a C++ runtime of its own, linked statically; the library has " + Listed(wanted),
                   held.isLibstdcxx && !wanted.empty() && BeginsWith(*wanted.begin(), "libstdc++")
                       ? "link the C++ runtime dynamically: no -static-libstdc++, no -static"
                       : "");
    else if (!used.empty())
        report.Add("runtime", Result::Ok, Listed(used) + ", as the library");
    else if (image.format == ImageFormat::Pe && !hasCRuntime)
        report.Add("runtime", Result::Failed,
                   "no runtime is imported: one is linked statically; the library has " +
                       Listed(wanted));
    else
        report.Add("runtime", Result::Note, "no C++ runtime is used");
}

void CheckJsoncpp(ModuleImage const& image, HeldRuntimes const& held, ModuleImage const& library,
                  Report& report)
{
    std::set<std::string> const wanted = Selected(library.imports, IsJsoncpp);
    std::set<std::string> const used = Selected(image.imports, IsJsoncpp);
    if (held.jsoncpp)
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
    OpenedFile const opened = OpenFile(file);
    if (opened.bytes == nullptr) {
        report.Add("file", Result::Failed, Utf8(file) + " " + opened.reason);
        return {};
    }
    report.Add("file", Result::Ok, Utf8(file));
    ByteView const bytes(*opened.bytes);
    ModuleImage const image = ReadModuleImage(bytes);
    if (!CheckModule(image, report))
        return {};
    Dependencies const dependencies = FindDependencies(file, image, host);
    CheckDependencies(dependencies, report);
    CheckExport(bytes, report);
    // The runtimes of the library that is installed are the measure.
    ModuleImage const library = ReadModuleImage(host.library);
    if (library.machine == OwnMachine() && library.flaw.empty()) {
        HeldRuntimes const held = LookForRuntimes(bytes);
        CheckRuntime(image, held, library, report);
        CheckJsoncpp(image, held, library, report);
    } else {
        report.Add("runtime", Result::Note, "there is no library to compare it with");
    }
    return {dependencies.first, dependencies.ofProgram, host.dependencyFolder};
}

void CheckLibrary(Host const& host, Report& report)
{
    LibraryDependencies const found = FindLibraryDependencies(host);
    for (MissingModule const& missing : found.missing)
        report.Add("dependencies", Result::Failed, Told(missing), missing.remedy);
    for (MissingModule const& missing : found.missingOfProgram)
        report.Add("program", Result::Failed, Told(missing), missing.remedy);
    for (MissingSymbol const& missing : found.missingSymbols)
        report.Add("symbols", Result::Failed, missing.line);
    TellUntold(found.untoldSymbols, report);
    if (!found.limit.empty())
        report.Add("limit", Result::Failed, found.limit);
}

} // namespace Halvorix::Tools
