#include "common/LoaderSearch.h"

#include <gnu/libc-version.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "common/Files.h"
#include "common/System.h"
#include "common/Utf8.h"
#include "common/linux/LoaderCache.h"

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

std::vector<std::string> DefaultFolders()
{
    std::vector<std::string> folders{"/" + OwnLibraryFolder(), "/usr/" + OwnLibraryFolder()};
    if (OwnLibraryFolder() != "lib64")
        folders.insert(folders.end(), {"/lib", "/usr/lib"});
    return folders;
}

bool LiesBelow(std::string const& file, std::vector<std::string> const& folders)
{
    return std::any_of(folders.begin(), folders.end(), [&file](std::string const& folder) {
        return file.rfind(folder + "/", 0) == 0;
    });
}

constexpr std::size_t LongestPath = 4096; // to the system
constexpr std::size_t LongestPreloads = 65536;

using Variables = std::vector<std::pair<std::string_view, std::string>>;

// The loader's own variables.
Variables VariablesOf(fs::path const& origin)
{
    // The system gives an address as a number.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    auto const* const platform = reinterpret_cast<char const*>(::getauxval(AT_PLATFORM));
    return {{"ORIGIN", origin.string()},
            {"LIB", OwnLibraryFolder()},
            {"PLATFORM", platform == nullptr ? "" : platform}};
}

// Empty for a name that is too long for the system.
std::string Expanded(std::string_view text, Variables const& variables)
{
    std::string expanded;
    while (!text.empty() && expanded.size() <= LongestPath) {
        std::size_t taken = 1;
        std::string_view by = text.substr(0, 1);
        for (auto const& [name, value] : variables) {
            // In both spellings.
            for (std::string const& spelled :
                 {"$" + std::string(name), "${" + std::string(name) + "}"}) {
                if (text.substr(0, spelled.size()) == spelled) {
                    taken = spelled.size();
                    by = value;
                }
            }
        }
        if (taken == 1 && text.front() != '$') {
            taken = std::min(text.find('$'), text.size());
            by = text.substr(0, taken);
        }
        expanded += by;
        text.remove_prefix(taken);
    }
    return expanded.size() > LongestPath ? std::string() : expanded;
}

void AddNames(std::string const& list, char const* separators, std::vector<std::string>& names)
{
    for (std::size_t begin = list.find_first_not_of(separators); begin != std::string::npos;) {
        std::size_t const end = std::min(list.find_first_of(separators, begin), list.size());
        names.push_back(list.substr(begin, end - begin));
        begin = list.find_first_not_of(separators, end);
    }
}

bool NamesOrigin(std::string_view entry)
{
    return entry.find("$ORIGIN") != std::string_view::npos ||
           entry.find("${ORIGIN}") != std::string_view::npos;
}

// The folders of a list, each once. An empty entry is the current directory.
void AddList(std::string const& list, char const* separators, fs::path const& origin,
             std::vector<fs::path>& folders)
{
    if (list.empty())
        return;
    Variables const variables = VariablesOf(origin);
    std::unordered_set<std::string_view> entries;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = list.find_first_of(separators, begin);
        std::string_view const entry = std::string_view(list).substr(begin, end - begin);
        if (!entries.insert(entry).second)
            continue;
        std::string folder = entry.empty() ? "." : Expanded(entry, variables);
        bool const hasNoOrigin = origin.empty() && NamesOrigin(entry);
        if (!folder.empty() && !hasNoOrigin)
            folders.emplace_back(std::move(folder));
    }
}

// Below each folder, those for what the processor can do come first.
std::vector<std::string> FoldersForProcessor()
{
    std::vector<std::string> folders;
    bool const hasLevel2 = __builtin_cpu_supports("ssse3") != 0 &&
                           __builtin_cpu_supports("sse4.2") != 0 &&
                           __builtin_cpu_supports("popcnt") != 0;
    bool const hasLevel3 = hasLevel2 && __builtin_cpu_supports("avx2") != 0 &&
                           __builtin_cpu_supports("bmi2") != 0 &&
                           __builtin_cpu_supports("fma") != 0;
    bool const hasLevel4 =
        hasLevel3 && __builtin_cpu_supports("avx512f") != 0 &&
        __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512cd") != 0 &&
        __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0;
    for (auto const& [level, isThere] :
         {std::pair("4", hasLevel4), std::pair("3", hasLevel3), std::pair("2", hasLevel2)})
        if (isThere)
            folders.push_back(std::string("glibc-hwcaps/x86-64-v") + level);
    if (::strverscmp(::gnu_get_libc_version(), "2.37") >= 0)
        return folders;
    // Until then it looked in those of an older kind too, in all ways to combine them. Two of
    // them are for processors of one maker, whatever others can do.
    bool const isIntel = __builtin_cpu_is("intel") != 0;
    std::pair<char const*, bool> const parts[] = {{"tls", true},
                                                  {"haswell", isIntel && hasLevel3},
                                                  {"avx512_1", isIntel && hasLevel4},
                                                  {"x86_64", true}};
    for (unsigned chosen = 15; chosen > 0; --chosen) {
        fs::path folder;
        bool isThere = true;
        for (unsigned i = 0; i < 4; ++i) {
            if ((chosen & 8U >> i) == 0)
                continue;
            isThere = isThere && parts[i].second;
            folder /= parts[i].first;
        }
        if (isThere)
            folders.push_back(folder.string());
    }
    return folders;
}

class CandidateList {
public:
    CandidateList(std::string const& wantedName, ModuleGraph const& moduleGraph)
        : name(wantedName), graph(moduleGraph)
    {
    }

    void Add(fs::path const& folder, Place place)
    {
        static std::vector<std::string> const below = FoldersForProcessor();
        if (!folders.insert(folder.string()).second || !graph.FolderIsThere(folder))
            return;
        for (std::string const& special : below)
            if (graph.FolderIsThere(folder / special))
                candidates.push_back({folder / special / name, place});
        candidates.push_back({folder / name, place});
    }

    void AddFile(fs::path const& file, Place place) { candidates.push_back({file, place}); }

    std::vector<Candidate> candidates;

private:
    std::string const& name;
    ModuleGraph const& graph;
    std::unordered_set<std::string> folders;
};

// Those that an installation can have to itself, in the order in which they are looked
// through. A newer run path puts all older ones out.
std::vector<fs::path const*> OwnFolders(ModuleGraph const& graph, std::size_t needing)
{
    std::vector<fs::path const*> folders;
    auto const add = [&folders](std::vector<fs::path> const& more) {
        for (fs::path const& folder : more)
            folders.push_back(&folder);
    };
    MappedModule const& module = graph.modules[needing];
    if (module.image.runPath.empty()) {
        add(module.inheritedFolders);
        add(graph.modules.front().inheritedFolders);
    }
    add(graph.environmentFolders);
    add(module.folders);
    return folders;
}

} // namespace

bool IsPrivileged(fs::path const& program)
{
    struct stat status {};
    struct statvfs system {};
    if (::stat(program.c_str(), &status) != 0 || ::statvfs(program.c_str(), &system) != 0 ||
        (system.f_flag & ST_NOSUID) != 0)
        return false;
    bool const takesUser = (status.st_mode & S_ISUID) != 0 && status.st_uid != ::getuid();
    bool const takesGroup = (status.st_mode & S_ISGID) != 0 && (status.st_mode & S_IXGRP) != 0 &&
                            status.st_gid != ::getgid();
    bool const takesCapabilities =
        ::getuid() != 0 && ::getxattr(program.c_str(), "security.capability", nullptr, 0) > 0;
    return takesUser || takesGroup || takesCapabilities;
}

std::vector<fs::path> EnvironmentFolders(fs::path const& program, bool isPrivileged)
{
    std::vector<fs::path> folders;
    // Of what is looked at, and not of this program, which has no more rights than its user.
    char const* const variable = std::getenv("LD_LIBRARY_PATH");
    if (variable != nullptr && !isPrivileged)
        AddList(variable, ":;", program.parent_path(), folders);
    return folders;
}

std::vector<std::string> PreloadedModules(fs::path const& program, bool isPrivileged)
{
    std::vector<std::string> names;
    char const* const variable = std::getenv("LD_PRELOAD");
    if (variable != nullptr && !isPrivileged)
        AddNames(variable, " :", names);
    // For all programs of the system.
    OpenedFile const opened = OpenFile("/etc/ld.so.preload");
    if (opened.bytes != nullptr && opened.bytes->Size() <= LongestPreloads) {
        std::string text(static_cast<std::size_t>(opened.bytes->Size()), '\0');
        ByteView(*opened.bytes).Bytes(0, text.data(), text.size());
        for (std::size_t at = text.find('#'); at != std::string::npos; at = text.find('#', at))
            text.erase(at, text.find('\n', at) - at);
        AddNames(text, " :\t\n", names);
    }
    Variables const variables = VariablesOf(program.parent_path());
    for (std::string& name : names)
        name = Expanded(name, variables);
    return names;
}

void AddRunPaths(MappedModule& module, MappedModule const* neededBy, bool isPrivileged)
{
    // Whoever may link or move the file would name the folder then.
    fs::path const origin = isPrivileged ? fs::path() : module.file.parent_path();
    AddList(module.image.runPath, ":", origin, module.folders);
    if (module.image.runPath.empty())
        AddList(module.image.inheritedRunPath, ":", origin, module.inheritedFolders);
    if (neededBy == nullptr)
        return;
    std::unordered_set<std::string> known;
    for (fs::path const& folder : module.inheritedFolders)
        known.insert(folder.string());
    for (fs::path const& folder : neededBy->inheritedFolders)
        if (known.insert(folder.string()).second)
            module.inheritedFolders.push_back(folder);
}

bool const SystemModulesAreFollowed = true;

std::vector<Candidate> CandidatesFor(std::string const& name, ModuleGraph const& graph,
                                     std::size_t needing)
{
    CandidateList list(name, graph);
    for (fs::path const* const folder : OwnFolders(graph, needing))
        list.Add(*folder, Place::Folder);
    bool const hasDefaults = !graph.modules[needing].image.hasNoDefaultFolders;
    std::vector<std::string> const defaults = DefaultFolders();
    LoaderCache const& cache = SystemLoaderCache();
    if (auto const known = cache.find(name); known != cache.end())
        for (std::string const& file : known->second)
            if (hasDefaults || !LiesBelow(file, defaults))
                list.AddFile(file, Place::System);
    if (hasDefaults)
        for (std::string const& folder : defaults)
            list.Add(folder, Place::System);
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
    auto const isOfEnvironment = [&](fs::path const* folder) {
        return std::any_of(graph.environmentFolders.begin(), graph.environmentFolders.end(),
                           [&](fs::path const& known) { return &known == folder; });
    };
    // Beside the plugin, if the loader looks there at all: a run path may name the folders of
    // the build first, and those of nobody else's machine.
    bool const isOfPlugin = needing >= graph.firstDependent && !graph.dependencyFolder.empty();
    if (isOfPlugin)
        for (fs::path const* const folder : OwnFolders(graph, needing))
            if (AsOpened(*folder) == AsOpened(graph.dependencyFolder))
                return RemedyInPluginFolder(name, graph);
    // What the environment names is that of whoever asks, and not of who starts the program.
    for (fs::path const* const folder : OwnFolders(graph, needing))
        if (folder->is_absolute() && !isOfEnvironment(folder))
            return "install " + name + " in " + Utf8(AsOpened(*folder));
    return "install " + name + " in /usr/" + OwnLibraryFolder() +
           ", or name its folder in LD_LIBRARY_PATH";
}

} // namespace Halvorix::Tools
