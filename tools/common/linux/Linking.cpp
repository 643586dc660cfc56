#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "common/LoaderSearch.h"
#include "common/Utf8.h"

namespace Halvorix::Tools {

namespace {

constexpr std::size_t MostLines = 16;

struct WantedVersion {
    std::size_t needing;
    std::string module; ///< by which name
};

// What is needed and was found in no module yet, with the first one that needs it. Only
// this is kept: what all modules have would take any memory.
struct Wanted {
    std::unordered_map<std::string, std::size_t> symbols;
    std::map<std::pair<std::size_t, std::string>, WantedVersion> versions; // of which module

    bool IsEmpty() const { return symbols.empty() && versions.empty(); }
};

std::string FileNameOf(MappedModule const& module) { return Utf8(module.file.filename()); }

// The answer is the limit that was reached.
std::string AddNeeds(ModuleGraph const& graph, std::size_t module, SymbolBudget& budget,
                     Wanted& wanted)
{
    ModuleNeeds needs = NeedsOf(graph.modules[module], budget);
    for (Import& import : needs.imports)
        wanted.symbols.emplace(std::move(import.symbol), module);
    for (NeededVersion& needed : needs.versions) {
        std::size_t const of = graph.Find(needed.module);
        if (of != ModuleGraph::NoModule)
            wanted.versions.emplace(std::pair(of, std::move(needed.version)),
                                    WantedVersion{module, std::move(needed.module)});
    }
    return needs.flaw;
}

// A symbol that a module has for another one; empty: none of those that are wanted.
struct Taken {
    std::string symbol;
    std::size_t borrower = 0;
};

std::string TakeOffers(ModuleGraph const& graph, std::size_t module, SymbolBudget& budget,
                       Wanted& wanted, Taken& taken)
{
    auto const isWanted = [&](std::string const& name) { return wanted.symbols.count(name) != 0; };
    ModuleOffers const offers = OffersOf(graph.modules[module], isWanted, budget);
    if (!offers.exports.empty())
        taken = {offers.exports.front(), wanted.symbols.at(offers.exports.front())};
    for (std::string const& symbol : offers.exports)
        wanted.symbols.erase(symbol);
    for (std::string const& version : offers.versions)
        wanted.versions.erase({module, version});
    // One without versions serves all of them.
    if (offers.versions.empty() && offers.flaw.empty())
        wanted.versions.erase(wanted.versions.lower_bound({module, {}}),
                              wanted.versions.lower_bound({module + 1, {}}));
    return offers.flaw;
}

// How often a name refers to a part of itself. Each may double what is made of it.
std::size_t ReferencesIn(std::string const& symbol)
{
    std::size_t count = 0;
    for (std::size_t at = 0; (at = symbol.find_first_of("ST", at)) != std::string::npos;) {
        at = std::min(symbol.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ", at + 1),
                      symbol.size());
        count += at < symbol.size() && symbol[at] == '_' ? 1 : 0;
    }
    return count;
}

// How often it may repeat what follows for each entry of a pack. One in the other multiplies.
std::size_t ExpansionsIn(std::string const& symbol)
{
    std::size_t count = 0;
    for (std::size_t at = 1; at < symbol.size(); ++at)
        count += symbol[at] == 'p' && (symbol[at - 1] == 'D' || symbol[at - 1] == 's') ? 1 : 0;
    return count;
}

// As it was declared and as it is decorated, where that is short enough to be read. What
// is read takes no more steps than the length of the name, squared, times two for each
// reference.
std::string Named(std::string const& symbol)
{
    constexpr std::size_t longest = 1024;
    constexpr std::size_t mostReferences = 8;
    if (symbol.rfind("_Z", 0) != 0 || symbol.size() > longest ||
        ReferencesIn(symbol) > mostReferences || ExpansionsIn(symbol) > 1)
        return symbol;
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> const declared(
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), &std::free);
    return declared == nullptr || std::string_view(declared.get()).size() > longest
               ? symbol
               : std::string(declared.get()) + " [" + symbol + "]";
}

// What no module has that the loader looks through, and which other one has it.
using HiddenSymbols = std::unordered_map<std::string, std::size_t>;

std::string TailOf(ModuleGraph const& graph, HiddenSymbols const& hidden, std::string const& symbol,
                   std::string const& needing)
{
    auto const found = hidden.find(symbol);
    return found == hidden.end() ? ", which no module has"
                                 : ", which only " + FileNameOf(graph.modules[found->second]) +
                                       " has, and " + needing +
                                       " does not name that one as needed: it loads only in a "
                                       "program that opens that one with RTLD_GLOBAL";
}

std::vector<MissingSymbol> LinesOf(ModuleGraph const& graph, std::size_t module,
                                   Wanted const& wanted, HiddenSymbols const& hidden)
{
    std::vector<std::pair<std::size_t, MissingSymbol>> lines;
    for (auto const& [of, needed] : wanted.versions)
        if (lines.size() < MostLines)
            lines.push_back(
                {needed.needing,
                 {FileNameOf(graph.modules[needed.needing]) + " needs version " + of.second +
                      " of the symbols of " + needed.module + ", which that one does not have",
                  false}});
    std::vector<std::pair<std::size_t, std::string const*>> symbols;
    for (auto const& [symbol, needing] : wanted.symbols)
        symbols.emplace_back(needing, &symbol);
    std::sort(symbols.begin(), symbols.end(), [](auto const& one, auto const& other) {
        return std::pair(one.first, std::string_view(*one.second)) <
               std::pair(other.first, std::string_view(*other.second));
    });
    for (auto const& [needing, symbol] : symbols) {
        std::string const file = FileNameOf(graph.modules[needing]);
        if (lines.size() < MostLines)
            lines.push_back({needing,
                             {file + " needs the symbol " + Named(*symbol) +
                                  TailOf(graph, hidden, *symbol, file),
                              needing == module && hidden.count(*symbol) == 0}});
    }
    std::stable_sort(lines.begin(), lines.end(),
                     [](auto const& one, auto const& other) { return one.first < other.first; });
    std::vector<MissingSymbol> missing;
    missing.reserve(lines.size());
    for (auto& line : lines)
        missing.push_back(std::move(line.second));
    return missing;
}

// One module, and what it brings.
class Asker {
public:
    Asker(ModuleGraph const& moduleGraph, SymbolFindings& findings, std::string& limitReached)
        : graph(moduleGraph), found(findings), limit(limitReached),
          isAsked(moduleGraph.modules.size()), isGlobal(moduleGraph.modules.size())
    {
        for (std::size_t const brought : graph.ClosureOf(0))
            isGlobal[brought] = true;
    }

    /// Of the modules before the end; the answer is what none has.
    Wanted Ask(std::size_t module, std::size_t end)
    {
        Wanted wanted;
        std::vector<std::size_t> order = graph.ClosureOf(module);
        std::size_t const ownCount = order.size();
        std::vector<bool> isOwn(graph.modules.size());
        for (std::size_t const brought : order) {
            // What the system brings fits together.
            if (graph.modules[brought].place != Place::System && !isAsked[brought] && limit.empty())
                limit = AddNeeds(graph, brought, budget, wanted);
            isAsked[brought] = true;
            isOwn[brought] = true;
        }
        for (std::size_t i = end; i-- > 0;)
            if (!isOwn[i] && isGlobal[i])
                order.push_back(i); // and the program last of all
        for (std::size_t n = 0; n < order.size() && limit.empty() && !wanted.IsEmpty(); ++n) {
            Taken taken;
            limit = TakeOffers(graph, order[n], budget, wanted, taken);
            if (n < ownCount || taken.symbol.empty())
                continue;
            found.borrowers.emplace(order[n], taken.borrower);
            if (order[n] == 0)
                found.ofProgram = taken.symbol;
            else if (std::find(found.others.begin(), found.others.end(), order[n]) ==
                     found.others.end())
                found.others.push_back(order[n]);
        }
        return wanted;
    }

    /// Which of them another module has, of those that were loaded while the program ran:
    /// these serve nobody but what they brought.
    HiddenSymbols LookForHidden(Wanted const& wanted)
    {
        HiddenSymbols hidden;
        auto const isWanted = [&](std::string const& name) {
            return wanted.symbols.count(name) != 0;
        };
        for (std::size_t i = 0; i < isGlobal.size() && limit.empty() && !wanted.symbols.empty();
             ++i) {
            if (isGlobal[i])
                continue;
            ModuleOffers const offers = OffersOf(graph.modules[i], isWanted, budget);
            limit = offers.flaw;
            for (std::string const& symbol : offers.exports)
                hidden.emplace(symbol, i);
        }
        return hidden;
    }

private:
    ModuleGraph const& graph;
    SymbolFindings& found;
    std::string& limit;
    std::vector<bool> isAsked;
    std::vector<bool> isGlobal; ///< the program brought it at its start
    SymbolBudget budget;
};

} // namespace

// The loader looks for a symbol in what came with the program and in what came with the
// module. Here the latter comes first, for what else has to be there.
SymbolFindings LookForSymbols(ModuleGraph& graph, std::size_t module, std::string& limit)
{
    SymbolFindings found;
    Asker asker(graph, found, limit);
    Wanted const wanted = asker.Ask(module, graph.modules.size());
    HiddenSymbols const hidden = asker.LookForHidden(wanted);
    if (limit.empty()) {
        found.missing = LinesOf(graph, module, wanted, hidden);
        found.untold = wanted.symbols.size() + wanted.versions.size() - found.missing.size();
    }
    // The others cannot be there without what they take, and what none has they do without.
    for (std::size_t i = 0; i < found.others.size() && limit.empty(); ++i)
        asker.Ask(found.others[i], module);
    // What another one takes something from comes before it.
    std::reverse(found.others.begin(), found.others.end());
    return found;
}

} // namespace Halvorix::Tools
