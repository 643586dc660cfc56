#include <unordered_set>

#include "../Files.h"
#include "../LoaderSearch.h"
#include "../Utf8.h"

namespace Halvorix::Tools {

namespace {

constexpr std::size_t MostSymbolsOfAll = 4 * MostSymbols;
constexpr std::size_t MostLines = 16;

ModuleSymbols SymbolsOf(MappedModule const& module)
{
    OpenedFile const opened = OpenFile(module.file);
    return opened.bytes == nullptr ? ModuleSymbols() : ReadModuleSymbols(ByteView(*opened.bytes));
}

std::string FileNameOf(MappedModule const& module) { return Utf8(module.file.filename()); }

struct Needs {
    std::vector<Import> imports;
    std::vector<NeededVersion> versions;
    std::unordered_set<std::string> ownVersions;
};

// The loader looks for a symbol in all that the process has and in what came with the
// module.
class Linker {
public:
    Linker(ModuleGraph const& moduleGraph, std::string& reachedLimit)
        : graph(moduleGraph), limit(reachedLimit)
    {
        std::size_t count = 0;
        for (MappedModule const& module : graph.modules) {
            ModuleSymbols read = SymbolsOf(module);
            count += read.exports.size();
            if (!read.flaw.empty())
                limit = FileNameOf(module) + ": " + read.flaw;
            else if (count > MostSymbolsOfAll)
                limit = "the modules have more than " + std::to_string(MostSymbolsOfAll) +
                        " symbols, the limit of what is looked at";
            exported.insert(read.exports.begin(), read.exports.end());
            needs.push_back({std::move(read.imports),
                             std::move(read.neededVersions),
                             {read.versions.begin(), read.versions.end()}});
            if (!limit.empty())
                return;
        }
    }

    std::vector<std::string> MissingFor(std::size_t module) const
    {
        std::vector<std::string> lines;
        if (!limit.empty())
            return lines;
        std::string const name = FileNameOf(graph.modules[module]);
        for (NeededVersion const& needed : needs[module].versions)
            if (!HasVersion(needed) && lines.size() < MostLines)
                lines.push_back(name + " needs version " + needed.version + " of the symbols of " +
                                needed.module + ", which that one does not have");
        for (Import const& import : needs[module].imports)
            if (exported.count(import.symbol) == 0 && lines.size() < MostLines)
                lines.push_back(name + " needs the symbol " + import.symbol +
                                ", which no module has");
        return lines;
    }

private:
    // One without versions serves all of them.
    bool HasVersion(NeededVersion const& needed) const
    {
        std::size_t const module = graph.Find(needed.module);
        return module == ModuleGraph::NoModule || needs[module].ownVersions.empty() ||
               needs[module].ownVersions.count(needed.version) != 0;
    }

    ModuleGraph const& graph;
    std::string& limit;
    std::vector<Needs> needs;
    std::unordered_set<std::string> exported;
};

} // namespace

std::vector<std::string> MissingSymbols(ModuleGraph const& graph, std::size_t module,
                                        std::string& limit)
{
    Linker const linker(graph, limit);
    std::vector<std::string> lines;
    for (std::size_t const brought : graph.ClosureOf(module)) {
        // What the system brings fits together.
        if (graph.modules[brought].place == Place::System)
            continue;
        for (std::string& line : linker.MissingFor(brought))
            lines.push_back(std::move(line));
        if (lines.size() >= MostLines)
            break;
    }
    return lines;
}

} // namespace Halvorix::Tools
