#include "../LoaderSearch.h"

#include <sys/auxv.h>

#include <cstdlib>
#include <unordered_set>
#include <utility>

#include "../Utf8.h"
#include "LoaderCache.h"

namespace Halvorix::Tools {

namespace {

namespace fs = std::filesystem;

// "lib/x86_64-linux-gnu", say: the folder in which the system's loader itself lies,
// below the root or /usr.
std::string LibraryFolder()
{
    std::error_code unknown;
    fs::path const loader =
        fs::canonical(ReadModuleImage(fs::path("/proc/self/exe")).loader, unknown);
    std::string folder = unknown ? "/lib" : loader.parent_path().string();
    if (folder.rfind("/usr/", 0) == 0)
        folder.erase(0, 4);
    return folder.substr(1);
}

std::string const& OwnLibraryFolder()
{
    static std::string const folder = LibraryFolder();
    return folder;
}

void Replace(std::string& text, std::string const& what, std::string const& by)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
}

// The loader's own variables, in both spellings.
std::string Expanded(std::string text, fs::path const& origin)
{
    // The system gives an address as a number.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    auto const* const platform = reinterpret_cast<char const*>(::getauxval(AT_PLATFORM));
    std::pair<char const*, std::string> const values[] = {
        {"ORIGIN", origin.string()},
        {"LIB", OwnLibraryFolder()},
        {"PLATFORM", platform == nullptr ? "" : platform},
    };
    for (auto const& [name, value] : values) {
        Replace(text, "${" + std::string(name) + "}", value);
        Replace(text, "$" + std::string(name), value);
    }
    return text;
}

class CandidateList {
public:
    explicit CandidateList(std::string const& wantedName) : name(wantedName) {}

    // An empty entry is the current directory.
    void AddList(std::string const& list, char const* separators, fs::path const& origin)
    {
        std::size_t begin = 0;
        for (std::size_t count = 0; !list.empty() && count < MostFolders; ++count) {
            std::size_t const end = list.find_first_of(separators, begin);
            std::string const entry = list.substr(begin, end - begin);
            AddFolder(entry.empty() ? "." : Expanded(entry, origin), Place::Folder);
            if (end == std::string::npos)
                break;
            begin = end + 1;
        }
    }

    void AddFolder(fs::path const& folder, Place place)
    {
        if (folders.size() < 4 * MostFolders && folders.insert(folder.string()).second)
            candidates.push_back({folder / name, place});
    }

    void AddFile(fs::path const& file, Place place) { candidates.push_back({file, place}); }

    bool IsFull() const { return folders.size() >= MostFolders; }

    std::vector<Candidate> candidates;

private:
    std::string const& name;
    std::unordered_set<std::string> folders;
};

// The older run paths: of the module that needs another one, of those that brought it,
// and of the program. A newer run path of the module itself puts them all out.
void AddInherited(ModuleGraph const& graph, std::size_t needing, CandidateList& list)
{
    if (!graph.modules[needing].image.runPath.empty())
        return;
    auto const add = [&](MappedModule const& module) {
        if (module.image.runPath.empty())
            list.AddList(module.image.inheritedRunPath, ":", module.file.parent_path());
    };
    for (std::size_t at = needing; !list.IsFull(); at = graph.modules[at].neededBy) {
        add(graph.modules[at]);
        if (graph.modules[at].neededBy == at)
            break;
    }
    add(graph.modules.front());
}

} // namespace

bool const SystemModulesAreFollowed = true;

std::vector<Candidate> CandidatesFor(std::string const& name, ModuleGraph const& graph,
                                     std::size_t needing)
{
    CandidateList list(name);
    MappedModule const& module = graph.modules[needing];
    AddInherited(graph, needing, list);
    // A privileged program would not heed it.
    if (char const* const variable = ::secure_getenv("LD_LIBRARY_PATH"); variable != nullptr)
        list.AddList(variable, ":;", graph.modules.front().file.parent_path());
    list.AddList(module.image.runPath, ":", module.file.parent_path());
    if (module.image.hasNoDefaultFolders)
        return std::move(list.candidates);
    LoaderCache const& cache = SystemLoaderCache();
    if (auto const known = cache.find(name); known != cache.end())
        for (std::string const& file : known->second)
            list.AddFile(file, Place::System);
    for (char const* const root : {"/", "/usr/"})
        list.AddFolder(root + OwnLibraryFolder(), Place::System);
    if (OwnLibraryFolder() != "lib64")
        for (char const* const folder : {"/lib", "/usr/lib"})
            list.AddFolder(folder, Place::System);
    return std::move(list.candidates);
}

bool NamesPlace(std::string const& name) { return name.find('/') != std::string::npos; }

bool NeedsNoFile(std::string const&) { return false; }

std::string OwnNameOf(MappedModule const& module) { return module.image.ownName; }

std::string Comparable(std::string const& name) { return name; }

fs::path FileName(std::string const& name) { return name; }

std::string HintForModuleBeside()
{
    return "it lies beside the module, whose run path does not name that folder ($ORIGIN)";
}

// The first place in which the loader looks and which this installation has to itself.
std::string RemedyForMissing(std::string const& name, ModuleGraph const& graph, std::size_t needing)
{
    for (Candidate const& candidate : CandidatesFor(name, graph, needing))
        if (candidate.place == Place::Folder && candidate.file.is_absolute())
            return "install " + name + " in " +
                   Utf8(candidate.file.parent_path().lexically_normal());
    return "install " + name + " in /usr/" + OwnLibraryFolder() +
           ", or name its folder in LD_LIBRARY_PATH";
}

} // namespace Halvorix::Tools
