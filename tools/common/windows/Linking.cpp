#include <map>
#include <unordered_map>
#include <utility>

#include "../Files.h"
#include "../LoaderSearch.h"
#include "../Utf8.h"

namespace Halvorix::Tools {

namespace {

constexpr std::size_t MostLines = 16;

struct WantedImport {
    std::size_t needing; ///< the first module that needs it
    std::string module;  ///< by which name
};

// Of each module what is needed of it and was not found yet.
using Wanted = std::map<std::size_t, std::map<std::string, WantedImport>>;

// The answer is the limit that was reached.
std::string Told(MappedModule const& module, std::string const& flaw)
{
    return flaw.empty() ? flaw : Utf8(module.file.filename()) + ": " + flaw;
}

std::string AddNeeds(ModuleGraph const& graph, std::size_t module, SymbolBudget& budget,
                     Wanted& wanted)
{
    OpenedFile const opened = OpenFile(graph.modules[module].file);
    if (opened.bytes == nullptr)
        return {};
    ModuleNeeds needs = ReadModuleNeeds(ByteView(*opened.bytes), budget);
    for (Import& import : needs.imports) {
        // Of the system's modules it is the loader that knows what stands for what.
        std::size_t const from = graph.Find(import.module);
        if (from != ModuleGraph::NoModule && graph.modules[from].place != Place::System)
            wanted[from].emplace(std::move(import.symbol),
                                 WantedImport{module, std::move(import.module)});
    }
    return Told(graph.modules[module], needs.flaw);
}

std::string TakeOffers(ModuleGraph const& graph, std::size_t module, SymbolBudget& budget,
                       std::map<std::string, WantedImport>& wanted)
{
    OpenedFile const opened = OpenFile(graph.modules[module].file);
    if (opened.bytes == nullptr)
        return {};
    auto const isWanted = [&](std::string const& name) { return wanted.count(name) != 0; };
    ModuleOffers const offers = ReadModuleOffers(ByteView(*opened.bytes), isWanted, budget);
    for (std::string const& symbol : offers.exports)
        wanted.erase(symbol);
    return Told(graph.modules[module], offers.flaw);
}

} // namespace

// There a module names each one from which it takes something.
SymbolFindings LookForSymbols(ModuleGraph const& graph, std::size_t module, std::string& limit)
{
    SymbolBudget budget;
    Wanted wanted;
    SymbolFindings found;
    std::vector<std::string>& lines = found.missing;
    for (std::size_t const brought : graph.ClosureOf(module)) {
        if (graph.modules[brought].place != Place::System && limit.empty())
            limit = AddNeeds(graph, brought, budget, wanted);
    }
    for (auto& [from, symbols] : wanted) {
        if (limit.empty())
            limit = TakeOffers(graph, from, budget, symbols);
        if (!limit.empty())
            return {};
        for (auto const& [symbol, needed] : symbols)
            if (lines.size() < MostLines)
                lines.push_back(Utf8(graph.modules[needed.needing].file.filename()) + " needs " +
                                symbol + " of " + needed.module + ", which that one does not have");
    }
    return found;
}

} // namespace Halvorix::Tools
