#include <map>
#include <utility>

#include "common/LoaderSearch.h"
#include "common/Utf8.h"
#include "platform/Platform.h"

namespace Halvorix::Tools {

namespace {

constexpr std::size_t MostLines = 16;
constexpr unsigned MostForwards = 32; // a circle has no end

struct WantedImport {
    std::size_t needing; ///< the first module that needs it
    std::string module;  ///< by which name
    std::string symbol;
    std::string forward; ///< what stands for it by now; empty: itself
    unsigned forwards = 0;
};

bool IsTheProgram(ModuleGraph const& graph, std::size_t module)
{
    return module == 0 && !graph.modules[module].image.isModule;
}

class SymbolSearch {
public:
    SymbolSearch(ModuleGraph& moduleGraph, std::string& limitReached)
        : graph(moduleGraph), limit(limitReached)
    {
    }

    void AddNeedsOf(std::size_t module)
    {
        if (graph.modules[module].place == Place::System || !limit.empty())
            return;
        ModuleNeeds needs = NeedsOf(graph.modules[module], budget);
        for (Import& import : needs.imports) {
            std::size_t const from = graph.Find(import.module);
            std::string const symbol = import.symbol;
            Add(from, symbol, {module, std::move(import.module), std::move(import.symbol), {}, 0});
        }
        limit = needs.flaw;
    }

    // The library asks for it by name once the plugin is loaded, and names no folder by then.
    // That a plugin lacks it altogether is told elsewhere.
    void AddFactoryProcedureOf(std::size_t module)
    {
        std::string const factory = Platform::FactoryProcedureName();
        auto const isFactory = [&factory](std::string const& name) { return name == factory; };
        WantedImport const import{graph.modules[module].neededBy,
                                  Utf8(graph.modules[module].file.filename()),
                                  factory,
                                  {},
                                  0};
        ModuleOffers const offers = OffersOf(graph.modules[module], isFactory, budget);
        graph.dependencyFolder.clear();
        for (Forward const& forward : offers.forwards)
            FollowForward(module, import, forward.target);
    }

    void Search()
    {
        while (!wanted.empty() && limit.empty())
            SearchIn(wanted.extract(wanted.begin()));
    }

    SymbolFindings found;

private:
    // Of each module what is needed of it and was not looked for yet.
    using Wanted = std::map<std::size_t, std::map<std::string, WantedImport>>;

    void Add(std::size_t from, std::string const& symbol, WantedImport import)
    {
        // Of the system's modules it is the loader that knows what stands for what.
        if (from != ModuleGraph::NoModule && graph.modules[from].place != Place::System)
            wanted[from].emplace(symbol, std::move(import));
    }

    void SearchIn(Wanted::node_type node)
    {
        std::size_t const from = node.key();
        std::map<std::string, WantedImport>& symbols = node.mapped();
        auto const isWanted = [&](std::string const& name) { return symbols.count(name) != 0; };
        ModuleOffers const offers = OffersOf(graph.modules[from], isWanted, budget);
        limit = offers.flaw;
        for (Forward const& forward : offers.forwards)
            if (auto forwarded = symbols.extract(forward.symbol); !forwarded.empty())
                FollowForward(from, std::move(forwarded.mapped()), forward.target);
        for (std::string const& symbol : offers.exports)
            if (symbols.erase(symbol) != 0 && IsTheProgram(graph, from))
                found.ofProgram = symbol;
        for (auto const& [symbol, import] : symbols)
            Tell(import);
    }

    // What the module has in its place is that of another one, which is loaded for it.
    void FollowForward(std::size_t module, WantedImport import, std::string const& target)
    {
        std::size_t const dot = target.rfind('.');
        std::string name = target.substr(0, dot);
        import.forward = target;
        if (name.find('.') == std::string::npos)
            name += ".dll";
        if (dot == std::string::npos || ++import.forwards > MostForwards) {
            Tell(import);
            return;
        }
        if (NeedsNoFile(name))
            return;
        std::size_t const known = graph.modules.size();
        std::size_t const from = graph.LoadFor(module, name);
        for (std::size_t added = known; added < graph.modules.size(); ++added)
            AddNeedsOf(added);
        if (limit.empty())
            limit = graph.limit;
        if (from == ModuleGraph::NoModule)
            Tell(import);
        else
            Add(from, target.substr(dot + 1), std::move(import));
    }

    void Tell(WantedImport const& import)
    {
        if (found.missing.size() >= MostLines) {
            ++found.untold;
            return;
        }
        std::string const needing = Utf8(graph.modules[import.needing].file.filename());
        found.missing.push_back(
            {needing + " needs " + import.symbol + " of " + import.module +
                 (import.forward.empty() ? ", which that one does not have"
                  : import.forwards > MostForwards
                      ? ", which is forwarded more than " + std::to_string(MostForwards) + " times"
                      : ", which is forwarded to " + import.forward + ", which is not there"),
             false});
    }

    ModuleGraph& graph;
    std::string& limit;
    SymbolBudget budget;
    Wanted wanted;
};

} // namespace

// There a module names each one from which it takes something.
SymbolFindings LookForSymbols(ModuleGraph& graph, std::size_t module, std::string& limit)
{
    SymbolSearch search(graph, limit);
    for (std::size_t const brought : graph.ClosureOf(module)) {
        search.AddNeedsOf(brought);
        if (brought != module && IsTheProgram(graph, brought))
            search.found.ofProgram = "a function by its number";
    }
    search.Search();
    search.AddFactoryProcedureOf(module);
    search.Search();
    return limit.empty() ? std::move(search.found) : SymbolFindings();
}

} // namespace Halvorix::Tools
