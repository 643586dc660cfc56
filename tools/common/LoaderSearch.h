#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "common/ModuleGraph.h"

// How the system's loader searches, by reading alone. Each system has a folder of its
// own beside this header.
namespace Halvorix::Tools {

struct Candidate {
    std::filesystem::path file;
    Place place;
};

/// The files that the loader tries for a name without a separator that a module of the
/// graph needs, in its order; their folders are there.
std::vector<Candidate> CandidatesFor(std::string const& name, ModuleGraph const& graph,
                                     std::size_t needing);

/// Whether the loader would open the name as it stands, wherever that leads.
bool NamesPlace(std::string const& name);

/// Resolved by the loader without any file.
bool NeedsNoFile(std::string const& name);

/// The name under which the loader knows a module in the process; empty: none but that by
/// which it was needed.
std::string OwnNameOf(MappedModule const& module);

/// As the loader compares names.
std::string Comparable(std::string const& name);

/// Whether the system runs a program with rights that its user does not have.
bool IsPrivileged(std::filesystem::path const& program);

/// The folders that the environment names for the modules of a program.
std::vector<std::filesystem::path> EnvironmentFolders(std::filesystem::path const& program,
                                                      bool isPrivileged);

/// The modules that the loader adds to a program behind it, by name or place, in its order.
std::vector<std::string> PreloadedModules(std::filesystem::path const& program, bool isPrivileged);

/// Adds the folders of a module's run paths; behind the older ones come those of the
/// module that needs it, if there is one. In a privileged program none counts that is
/// named by the place of the module.
void AddRunPaths(MappedModule& module, MappedModule const* neededBy, bool isPrivileged);

/// Otherwise what a module of the system needs is the system's own affair.
extern bool const SystemModulesAreFollowed;

/// A name of a module's header as that of a file.
std::filesystem::path FileName(std::string const& name);

/// What helps the loader to a module that it does not find.
std::string HintForModuleBeside();
std::string RemedyForMissing(std::string const& name, ModuleGraph const& graph,
                             std::size_t needing);
/// In the folder that the library names for the plugin, which is in the graph.
std::string RemedyInPluginFolder(std::string const& name, ModuleGraph const& graph);

/// Symbols and versions that no module has.
struct MissingSymbol {
    std::string line;
    bool isOfModule = false; ///< a symbol that the module itself needs, of whomever
};

/// Whether a module of the graph gets what it takes from others, with all that it brought.
struct SymbolFindings {
    std::vector<MissingSymbol> missing;
    std::size_t untold = 0; ///< how many more are missing
    /// Modules that it did not bring, from which it takes symbols all the same.
    std::vector<std::size_t> others;
    std::map<std::size_t, std::size_t> borrowers; ///< of these: the first that takes from each
    std::string ofProgram; ///< a symbol that the program alone has; empty: none
};
/// The graph gets the modules to which others refer for their symbols.
SymbolFindings LookForSymbols(ModuleGraph& graph, std::size_t module, std::string& limit);

} // namespace Halvorix::Tools
