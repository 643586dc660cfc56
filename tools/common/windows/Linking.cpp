#include <unordered_map>
#include <unordered_set>

#include "../Files.h"
#include "../LoaderSearch.h"
#include "../Utf8.h"

namespace Halvorix::Tools {

namespace {

constexpr std::size_t MostLines = 16;

ModuleSymbols SymbolsOf(MappedModule const& module)
{
    OpenedFile const opened = OpenFile(module.file);
    return opened.bytes == nullptr ? ModuleSymbols() : ReadModuleSymbols(ByteView(*opened.bytes));
}

std::string FileNameOf(MappedModule const& module) { return Utf8(module.file.filename()); }

} // namespace

std::vector<std::string> MissingSymbols(ModuleGraph const& graph, std::size_t module,
                                        std::string& limit)
{
    std::vector<std::string> lines;
    std::unordered_map<std::size_t, std::unordered_set<std::string>> exported;
    for (std::size_t const brought : graph.ClosureOf(module)) {
        if (graph.modules[brought].place == Place::System)
            continue;
        ModuleSymbols const symbols = SymbolsOf(graph.modules[brought]);
        if (!symbols.flaw.empty()) {
            limit = FileNameOf(graph.modules[brought]) + ": " + symbols.flaw;
            return lines;
        }
        for (Import const& import : symbols.imports) {
            // Of the system's modules it is the loader that knows what stands for what.
            std::size_t const from = graph.Find(import.module);
            if (from == ModuleGraph::NoModule || graph.modules[from].place == Place::System)
                continue;
            if (exported.count(from) == 0) {
                ModuleSymbols const of = SymbolsOf(graph.modules[from]);
                exported[from].insert(of.exports.begin(), of.exports.end());
            }
            if (exported[from].count(import.symbol) == 0 && lines.size() < MostLines)
                lines.push_back(FileNameOf(graph.modules[brought]) + " needs " + import.symbol +
                                " of " + import.module + ", which that one does not have");
        }
    }
    return lines;
}

} // namespace Halvorix::Tools
