#include "Dependencies.h"

#include <algorithm>
#include <utility>

#include "LoaderSearch.h"
#include "Utf8.h"

namespace Halvorix::Tools {

namespace {

namespace fs = std::filesystem;

// The library in the process of its program; NoModule if there is none.
std::size_t LoadLibraryInto(ModuleGraph& graph, Host const& host)
{
    for (std::size_t i = 0; i < graph.modules.size(); ++i)
        if (graph.modules[i].file.filename() == host.library.filename())
            return i;
    ModuleImage image = ReadModuleImage(host.library);
    if (image.machine != OwnMachine() || !image.flaw.empty())
        return ModuleGraph::NoModule;
    std::size_t const program = graph.modules.empty() ? ModuleGraph::NoModule : 0;
    return graph.Load(host.library, std::move(image), program);
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

// A stack in place of a recursion, which somebody's chain of modules would overflow.
std::vector<fs::path> InOrderOfNeed(ModuleGraph const& graph, std::size_t plugin)
{
    std::vector<fs::path> files;
    std::vector<bool> seen(graph.modules.size());
    std::vector<std::pair<std::size_t, std::size_t>> stack{{plugin, 0}};
    seen[plugin] = true;
    while (!stack.empty()) {
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
        bool const isOfProgram =
            module < plugin || mapped.file.parent_path() == graph.programFolder;
        if (module != plugin && mapped.image.isModule && isOfProgram)
            files.push_back(mapped.file);
        stack.pop_back();
    }
    return files;
}

} // namespace

Dependencies FindDependencies(fs::path const& plugin, ModuleImage const& image, Host const& host)
{
    ModuleGraph graph(host.program);
    std::size_t const library = LoadLibraryInto(graph, host);
    graph.dependencyFolder = plugin.parent_path();
    std::size_t const module = graph.Load(plugin, image, library);
    Dependencies found;
    Divide(graph, module, found);
    std::vector<std::size_t> closure = graph.ClosureOf(module);
    std::sort(closure.begin(), closure.end());
    for (MissingModule const& missing : graph.missing)
        if (std::binary_search(closure.begin(), closure.end(), missing.needing))
            found.missing.push_back(missing);
    found.limit = graph.limit;
    if (found.missing.empty() && found.limit.empty())
        found.missingSymbols = MissingSymbols(graph, module, found.limit);
    found.first = InOrderOfNeed(graph, module);
    return found;
}

LibraryDependencies FindLibraryDependencies(Host const& host)
{
    ModuleGraph graph(host.program);
    std::size_t const library = LoadLibraryInto(graph, host);
    LibraryDependencies found;
    if (library == ModuleGraph::NoModule)
        return found;
    std::vector<std::size_t> closure = graph.ClosureOf(library);
    std::sort(closure.begin(), closure.end());
    for (MissingModule const& missing : graph.missing)
        if (std::binary_search(closure.begin(), closure.end(), missing.needing))
            found.missing.push_back(missing);
    found.limit = graph.limit;
    if (found.missing.empty() && found.limit.empty())
        found.missingSymbols = MissingSymbols(graph, library, found.limit);
    return found;
}

std::string Told(MissingModule const& missing)
{
    return missing.name + ", which " + missing.neededBy + " needs, is missing" +
           (missing.hint.empty() ? "" : ": " + missing.hint);
}

} // namespace Halvorix::Tools
