#include "common/Dependencies.h"

#include <algorithm>
#include <utility>

#include "common/LoaderSearch.h"
#include "common/System.h"
#include "common/Utf8.h"
#include "platform/Platform.h"

namespace Halvorix::Tools {

namespace {

namespace fs = std::filesystem;

// The library in the process of its program; NoModule if there is none. This program stands
// for one that is linked with it.
std::size_t LoadLibraryInto(ModuleGraph& graph, Host const& host)
{
    for (std::size_t i = 0; i < graph.modules.size(); ++i)
        if (graph.modules[i].file == host.library)
            return i;
    ModuleImage image = ReadModuleImage(host.library);
    if (image.machine != OwnMachine() || !image.flaw.empty())
        return ModuleGraph::NoModule;
    std::size_t const program = graph.modules.empty() ? ModuleGraph::NoModule : 0;
    std::size_t const library = graph.Load(host.library, std::move(image), program);
    if (program == 0 && host.program == FromWide(Platform::ExecutableFile()))
        graph.modules[program].needs.push_back(library);
    return library;
}

void AddOnce(std::vector<std::string>& list, std::string const& name)
{
    if (std::find(list.begin(), list.end(), name) == list.end())
        list.push_back(name);
}

// What is needed directly by what is no module of the system.
void Divide(ModuleGraph const& graph, std::size_t plugin, Dependencies& found)
{
    for (std::size_t const module : graph.ClosureOf(plugin)) {
        if (module < plugin || graph.modules[module].place == Place::System)
            continue;
        for (std::size_t const needed : graph.modules[module].needs) {
            MappedModule const& other = graph.modules[needed];
            std::vector<std::string>& list = needed < plugin                ? found.inProcess
                                             : other.place == Place::System ? found.ofSystem
                                                                            : found.inFolders;
            AddOnce(list, Utf8(other.file.filename()));
        }
        for (std::string const& name : graph.modules[module].image.imports)
            if (NeedsNoFile(name))
                AddOnce(found.ofSystem, name);
    }
}

bool Imports(MappedModule const& module, std::string const& name)
{
    if (module.place == Place::System && !SystemModulesAreFollowed)
        return false;
    std::vector<std::string> const& imports = module.image.imports;
    return std::any_of(imports.begin(), imports.end(), [&name](std::string const& import) {
        return Comparable(import) == Comparable(name);
    });
}

// What the module and those that it needs lack, each name once, even if a module that
// was there before them was the first to need it.
std::vector<MissingModule> MissingFor(ModuleGraph const& graph, std::size_t module)
{
    std::vector<std::size_t> const closure = graph.ClosureOf(module);
    std::vector<MissingModule> found;
    for (MissingModule const& missing : graph.missing) {
        if (graph.Find(missing.name) != ModuleGraph::NoModule)
            continue; // it has come since
        auto const needing = std::find_if(closure.begin(), closure.end(), [&](std::size_t one) {
            return Imports(graph.modules[one], missing.name);
        });
        if (needing == closure.end())
            continue;
        found.push_back(missing);
        if (std::find(closure.begin(), closure.end(), missing.needing) != closure.end())
            continue;
        found.back().needing = *needing;
        found.back().neededBy = Utf8(graph.modules[*needing].file.filename());
        // That hint is about a folder of the other one.
        if (missing.hint == HintForModuleBeside())
            found.back().hint.clear();
    }
    for (MissingModule& missing : found)
        if (missing.remedy.empty())
            missing.remedy =
                NamesPlace(missing.name)
                    ? "install a " + missing.neededBy + " that names what it needs without a folder"
                    : RemedyForMissing(missing.name, graph, missing.needing);
    return found;
}

// Whether the loader finds it by what the program or the library names, of which another
// program knows nothing.
bool IsOfProgram(ModuleGraph const& graph, std::size_t module, std::size_t plugin)
{
    if (module < plugin)
        return true;
    fs::path const folder = graph.modules[module].file.parent_path();
    std::vector<fs::path> const& ofLibrary =
        graph.modules[graph.modules[plugin].neededBy].inheritedFolders;
    std::vector<fs::path> const& ofProgram = graph.modules.front().inheritedFolders;
    auto const has = [&folder](std::vector<fs::path> const& folders) {
        return std::find(folders.begin(), folders.end(), folder) != folders.end();
    };
    return folder == graph.programFolder || has(ofProgram) ||
           (graph.modules[plugin].neededBy != plugin && has(ofLibrary));
}

// What these need, and they themselves but for the plugin. A stack in place of a recursion,
// which somebody's chain of modules would overflow.
std::vector<fs::path> InOrderOfNeed(ModuleGraph const& graph, std::size_t plugin,
                                    std::vector<std::size_t> const& roots)
{
    std::vector<fs::path> files;
    std::vector<bool> seen(graph.modules.size());
    std::vector<std::pair<std::size_t, std::size_t>> stack;
    for (std::size_t nextRoot = 0; nextRoot < roots.size() || !stack.empty();) {
        if (stack.empty()) {
            std::size_t const root = roots[nextRoot++];
            if (!seen[root])
                stack.emplace_back(root, 0);
            seen[root] = true;
            continue;
        }
        auto& [module, next] = stack.back();
        MappedModule const& mapped = graph.modules[module];
        if (next < mapped.needs.size()) {
            std::size_t const needed = mapped.needs[next++];
            if (!seen[needed] && graph.modules[needed].place != Place::System) {
                seen[needed] = true;
                stack.emplace_back(needed, 0);
            }
            continue;
        }
        if (module != plugin && mapped.image.isModule && IsOfProgram(graph, module, plugin))
            files.push_back(mapped.file);
        stack.pop_back();
    }
    return files;
}

// Those that each host has, whose language is C++: the runtimes, and what they need.
std::vector<bool> ModulesOfEachHost(ModuleGraph const& graph)
{
    std::vector<bool> has(graph.modules.size());
    for (std::size_t i = 0; i < graph.modules.size(); ++i) {
        std::string const name = Utf8(graph.modules[i].file.filename());
        if (name.rfind("libstdc++.", 0) == 0 || name.rfind("libc++.", 0) == 0 ||
            name.rfind("libc.", 0) == 0)
            for (std::size_t const needed : graph.ClosureOf(i))
                has[needed] = true;
    }
    return has;
}

// This program is linked with the library and what that needs, as not each host is.
void AddUnnamed(ModuleGraph const& graph, std::size_t library, SymbolFindings const& symbols,
                Dependencies& found)
{
    std::vector<bool> const isOfEachHost = ModulesOfEachHost(graph);
    for (auto const& [lender, borrower] : symbols.borrowers) {
        if (lender == 0 || isOfEachHost[lender])
            continue;
        bool const isLibrary = lender == library;
        found.missingSymbols.push_back(
            {Utf8(graph.modules[borrower].file.filename()) + " uses " +
                 Utf8(isLibrary ? fs::path(Platform::LibraryFileName())
                                : graph.modules[lender].file.filename()) +
                 " without naming it as needed: it loads only in programs that link " +
                 (isLibrary ? "the library; link it (hxsso_add_plugin does)"
                            : "that one; link it (with hxsso_add_plugin the linker tells)"),
             false});
    }
}

} // namespace

Dependencies FindDependencies(fs::path const& plugin, ModuleImage const& image, Host const& host)
{
    ModuleGraph graph(host.program, host.library);
    std::size_t const library = LoadLibraryInto(graph, host);
    graph.NameDependencyFolder(host.dependencyFolder.empty() ? plugin.parent_path()
                                                             : host.dependencyFolder);
    std::size_t const module = graph.Load(plugin, image, library);
    Dependencies found;
    found.missing = MissingFor(graph, module);
    found.limit = graph.limit;
    SymbolFindings symbols;
    if (found.missing.empty() && found.limit.empty()) {
        symbols = LookForSymbols(graph, module, found.limit);
        // The symbols may have brought further modules.
        found.missing = MissingFor(graph, module);
    }
    Divide(graph, module, found);
    found.missingSymbols = std::move(symbols.missing);
    found.untoldSymbols = symbols.untold;
    if (host.standsForAny)
        AddUnnamed(graph, library, symbols, found);
    found.ofProgram = std::move(symbols.ofProgram);
    symbols.others.push_back(module);
    found.first = InOrderOfNeed(graph, module, symbols.others);
    return found;
}

LibraryDependencies FindLibraryDependencies(Host const& host)
{
    ModuleGraph graph(host.program, host.library);
    std::size_t const library = LoadLibraryInto(graph, host);
    LibraryDependencies found;
    if (library == ModuleGraph::NoModule)
        return found;
    found.missing = MissingFor(graph, library);
    found.limit = graph.limit;
    if (!found.missing.empty() || !found.limit.empty())
        return found;
    SymbolFindings symbols = LookForSymbols(graph, library, found.limit);
    found.missingSymbols = std::move(symbols.missing);
    found.untoldSymbols = symbols.untold;
    found.missing = MissingFor(graph, library);
    if (library != 0)
        found.missingOfProgram = MissingFor(graph, 0);
    return found;
}

std::string RemedyInPluginFolder(std::string const& name, ModuleGraph const& graph)
{
    fs::path const folder = AsOpened(graph.dependencyFolder);
    // The system may have found a plugin that is named without a folder somewhere else.
    bool const isBeside = graph.modules[graph.firstDependent].file.parent_path() == folder;
    return "install " + name + (isBeside ? " beside the plugin, in " : " in ") + Utf8(folder);
}

std::string Told(MissingModule const& missing)
{
    return missing.name + ", which " + missing.neededBy + " needs, is missing" +
           (missing.hint.empty() ? "" : ": " + missing.hint);
}

} // namespace Halvorix::Tools
