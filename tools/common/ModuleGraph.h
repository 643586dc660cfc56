#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "common/ModuleImage.h"

namespace Halvorix::Tools {

/// Where the loader finds a module.
enum class Place {
    Named,  ///< by whoever loads it: the program, the library, the plugin
    Folder, ///< beside the plugin, the program, on a run path
    System, ///< in the system's own folders
};

struct MappedModule {
    std::filesystem::path file;
    ModuleImage image;
    Place place;
    std::size_t neededBy; ///< itself for one that nobody needs
    std::vector<std::size_t> needs;
    /// In which the loader looks for what it needs: its run path.
    std::vector<std::filesystem::path> folders;
    /// And in these for what those need that it brings: its older run path, and of those
    /// that brought it.
    std::vector<std::filesystem::path> inheritedFolders;
};

struct MissingModule {
    std::string name;
    std::string neededBy; ///< the file's name
    std::size_t needing;
    std::string hint; ///< may be empty
    std::string remedy;
};

/// What the search for a module meets in its place.
struct Obstacle {
    std::string hint; ///< empty: nothing
    std::string remedy;
    bool endsSearch = false;
};

/// The modules of a process as its loader would find them. Nothing but files is read,
/// each in its headers; none is loaded, and nothing is opened outside the folders in
/// which the loader looks.
class ModuleGraph {
public:
    /// With the program whose process it is; one that cannot be read still has its folder.
    /// @param library  the file that is taken for what is needed by one of its names, wherever
    ///                 the loader would find that; empty: the loader's
    explicit ModuleGraph(std::filesystem::path const& program, std::filesystem::path library = {});
    ModuleGraph(ModuleGraph const&) = delete;
    ModuleGraph& operator=(ModuleGraph const&) = delete;

    static constexpr std::size_t NoModule = static_cast<std::size_t>(-1);

    /// Adds a module that is loaded by name, with all that it needs in turn.
    /// @param loadedBy  the module whose code loads it, or NoModule
    std::size_t Load(std::filesystem::path const& file, ModuleImage image, std::size_t loadedBy);

    /// Adds what a module takes by name from another one without needing it at its start.
    /// The answer is that one, or NoModule.
    std::size_t LoadFor(std::size_t module, std::string const& name);

    /// Folder that the library names while it loads; empty: none. It counts for the modules
    /// that are added from then on.
    void NameDependencyFolder(std::filesystem::path const& folder);
    std::filesystem::path dependencyFolder;
    std::size_t firstDependent = NoModule;
    std::filesystem::path programFolder;
    /// Those that the environment names for this program.
    std::vector<std::filesystem::path> environmentFolders;

    std::vector<MappedModule> modules; ///< the program first, if it is known
    std::vector<MissingModule> missing;
    std::string limit; ///< the one at which the search ended; empty: none

    /// What was asked once is remembered, and each question counts.
    bool FolderIsThere(std::filesystem::path const& folder) const;

    /// The module of this name that is in the process, or NoModule.
    std::size_t Find(std::string const& name) const;

    /// The module and all that it needs, each once, breadth first as the loader has it.
    std::vector<std::size_t> ClosureOf(std::size_t module) const;

private:
    std::size_t Add(std::filesystem::path const& file, ModuleImage image, Place place,
                    std::size_t neededBy);
    void AddPreloaded(std::size_t program);
    void Follow(std::size_t first);
    void Resolve(std::string const& name, std::size_t needing);
    std::size_t Search(std::string const& name, std::size_t needing, Obstacle& obstacle);
    std::size_t Take(std::filesystem::path const& file, Place place, std::size_t needing,
                     Obstacle& obstacle);
    void CountText(MappedModule const& module);

    std::filesystem::path const givenLibrary;
    std::vector<std::string> givenNames; ///< that of its file, and by which others need it
    bool const isPrivileged;
    bool isStarted = false; ///< all that the program needs at its start is there
    std::string ownMachine;
    std::unordered_map<std::string, std::size_t> names; // as the loader compares them
    std::unordered_set<std::string> lost;
    mutable std::unordered_map<std::string, bool> folders;
    mutable std::size_t questions = 0;
    std::size_t lookups = 0;
    std::uint64_t text = 0;
};

/// What a module takes from others and what it has for them; nothing if it cannot be opened
/// any more. A flaw begins with the file's name.
ModuleNeeds NeedsOf(MappedModule const& module, SymbolBudget& budget);
ModuleOffers OffersOf(MappedModule const& module, SymbolTest const& isWanted, SymbolBudget& budget);

/// Whether a module that is needed by this name is the library.
bool IsLibraryName(std::string const& name);

/// What is said of a module that no running process may load.
extern char const* const ForStartOnly;

/// What this system calls its own processor, for images of its format.
std::string const& OwnMachine();

} // namespace Halvorix::Tools
