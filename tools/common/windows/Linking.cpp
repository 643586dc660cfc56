#include <map>
#include <unordered_map>
#include <utility>

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
std::string AddNeeds(ModuleGraph const& graph, std::size_t module, SymbolBudget& budget,
                     Wanted& wanted)
{
    ModuleNeeds needs = NeedsOf(graph.modules[module], budget);
    for (Import& import : needs.imports) {
        // Of the system's modules it is the loader that knows what stands for what.
        std::size_t const from = graph.Find(import.module);
        if (from != ModuleGraph::NoModule && graph.modules[from].place != Place::System)
            wanted[from].emplace(std::move(import.symbol),
                                 WantedImport{module, std::move(import.module)});
    }
    return needs.flaw;
}

std::string TakeOffers(ModuleGraph const& graph, std::size_t module, SymbolBudget& budget,
                       std::map<std::string, WantedImport>& wanted)
{
    auto const isWanted = [&](std::string const& name) { return wanted.count(name) != 0; };
    ModuleOffers const offers = OffersOf(graph.modules[module], isWanted, budget);
    for (std::string const& symbol : offers.exports)
        wanted.erase(symbol);
    return offers.flaw;
}

bool IsTheProgram(ModuleGraph const& graph, std::size_t module)
{
    return module == 0 && !graph.modules[module].image.isModule;
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
        if (brought != module && IsTheProgram(graph, brought))
            found.ofProgram = "a function by its number";
    }
    for (auto& [from, symbols] : wanted) {
        std::string const first = symbols.begin()->first;
        if (limit.empty())
            limit = TakeOffers(graph, from, budget, symbols);
        if (!limit.empty())
            return {};
        if (IsTheProgram(graph, from) && symbols.count(first) == 0)
            found.ofProgram = first;
        for (auto const& [symbol, needed] : symbols)
            if (lines.size() < MostLines)
                lines.push_back(Utf8(graph.modules[needed.needing].file.filename()) + " needs " +
                                symbol + " of " + needed.module + ", which that one does not have");
    }
    return found;
}

} // namespace Halvorix::Tools
