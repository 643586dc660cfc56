#include "common/LoaderSearch.h"

#include <cwchar>
#include <set>
#include <string>

#include "common/System.h"
#include "common/Utf8.h"
#include "common/windows/SearchOrder.h"
#include "platform/windows/Windows.h"

namespace Halvorix::Tools {

namespace {

namespace fs = std::filesystem;

using FolderQuestion = UINT(WINAPI*)(wchar_t*, UINT);

fs::path Answer(FolderQuestion question)
{
    wchar_t folder[MAX_PATH + 1] = {};
    return question(folder, MAX_PATH) < MAX_PATH ? fs::path(folder) : fs::path();
}

fs::path const& SystemFolder()
{
    static fs::path const folder = Answer(&::GetSystemDirectoryW);
    return folder;
}

fs::path const& WindowsFolder()
{
    static fs::path const folder = Answer(&::GetWindowsDirectoryW);
    return folder;
}

bool IsOfThisMachine(fs::path const& folder)
{
    std::wstring const root = folder.root_path().native();
    return root.size() == 3 && root[1] == L':' && ::GetDriveTypeW(root.c_str()) != DRIVE_REMOTE;
}

// Those of the user's path that no other machine is asked for. A relative one counts from
// the current directory.
std::vector<fs::path> FoldersOfPath()
{
    wchar_t variable[32768] = {};
    if (::GetEnvironmentVariableW(L"PATH", variable, 32767) >= 32767)
        return {};
    std::vector<fs::path> folders;
    std::wstring const list = variable;
    for (std::size_t begin = 0; begin < list.size();) {
        std::size_t const end = std::min(list.find(L';', begin), list.size());
        fs::path const entry = list.substr(begin, end - begin);
        fs::path const folder = entry.empty() ? entry : AsOpened(entry);
        if (IsOfThisMachine(folder))
            folders.push_back(folder);
        begin = end + 1;
    }
    return folders;
}

// Modules that come from the system's folder wherever else there is one of the name.
std::set<std::string> KnownModules()
{
    std::set<std::string> known;
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE,
                        L"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\KnownDLLs", 0,
                        KEY_READ, &key) != ERROR_SUCCESS)
        return known;
    for (DWORD i = 0;; ++i) {
        char name[256];
        char value[256] = {};
        DWORD nameSize = sizeof(name);
        DWORD valueSize = sizeof(value) - 1;
        LSTATUS const status = ::RegEnumValueA(key, i, name, &nameSize, nullptr, nullptr,
                                               reinterpret_cast<BYTE*>(value), &valueSize);
        if (status == ERROR_SUCCESS)
            known.insert(Comparable(value));
        else if (status != ERROR_MORE_DATA)
            break;
    }
    ::RegCloseKey(key);
    return known;
}

// By a function that systems have since Windows 10; before it, all of them count as there.
bool HasFunctionSet(std::string const& name)
{
    using IsImplemented = BOOL(WINAPI*)(char const*);
    HMODULE const base = ::GetModuleHandleW(L"kernelbase.dll");
    auto const isImplemented = base == nullptr
                                   ? nullptr
                                   : reinterpret_cast<IsImplemented>(reinterpret_cast<void (*)()>(
                                         ::GetProcAddress(base, "IsApiSetImplemented")));
    if (isImplemented == nullptr)
        return true;
    // The loader passes over the last number.
    std::string const set = name.substr(0, name.rfind('-'));
    for (unsigned i = 0; i < 10; ++i)
        if (isImplemented((set + "-" + std::to_string(i)).c_str()) != FALSE)
            return true;
    return false;
}

} // namespace

// There its own loader sees to them.
bool const SystemModulesAreFollowed = false;

std::vector<SearchedFolder> SearchOrder(fs::path const& programFolder,
                                        fs::path const& dependencyFolder)
{
    std::vector<SearchedFolder> order{{programFolder, Place::Folder}};
    if (!dependencyFolder.empty())
        order.push_back({dependencyFolder, Place::Folder});
    // The second one is that of programs for 16 bits, which still counts.
    for (fs::path const& folder : {SystemFolder(), WindowsFolder() / "system", WindowsFolder()})
        order.push_back({folder, Place::System});
    for (fs::path const& folder : EnvironmentFolders({}, false))
        order.push_back({folder, Place::Folder});
    return order;
}

std::vector<Candidate> CandidatesFor(std::string const& name, ModuleGraph const& graph, std::size_t)
{
    static std::set<std::string> const known = KnownModules();
    fs::path const file = FileName(name);
    if (known.count(Comparable(name)) != 0)
        return {{SystemFolder() / file, Place::System}};
    std::vector<Candidate> candidates;
    for (SearchedFolder const& searched : SearchOrder(graph.programFolder, graph.dependencyFolder))
        candidates.push_back({searched.folder / file, searched.place});
    return candidates;
}

bool IsPrivileged(fs::path const&) { return false; }

std::vector<fs::path> EnvironmentFolders(fs::path const&, bool)
{
    static std::vector<fs::path> const folders = FoldersOfPath();
    return folders;
}

// There are none of either.
std::vector<std::string> PreloadedModules(fs::path const&, bool) { return {}; }

void AddRunPaths(MappedModule&, MappedModule const*, bool) {}

bool NamesPlace(std::string const& name) { return name.find_first_of("/\\:") != std::string::npos; }

// Names of sets of functions, of which a system has its own.
bool NeedsNoFile(std::string const& name)
{
    std::string const lower = Comparable(name);
    if (lower.rfind("ext-ms-", 0) == 0)
        return true; // these may be missing
    return lower.rfind("api-ms-win-", 0) == 0 && HasFunctionSet(lower);
}

std::string OwnNameOf(MappedModule const& module) { return module.file.filename().string(); }

std::string Comparable(std::string const& name)
{
    std::string lower = name;
    for (char& unit : lower)
        if (unit >= 'A' && unit <= 'Z')
            unit = static_cast<char>(unit - 'A' + 'a');
    return lower;
}

fs::path FileName(std::string const& name)
{
    std::wstring wide(name.size(), L'\0');
    int const size = ::MultiByteToWideChar(CP_ACP, 0, name.data(), static_cast<int>(name.size()),
                                           wide.data(), static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(size));
    return WithExtension(wide);
}

// The loader takes one without an extension for a library.
fs::path WithExtension(fs::path const& file)
{
    bool const hasDot = file.filename().native().find(L'.') != std::wstring::npos;
    return hasDot ? file : fs::path(file.native() + L".dll");
}

std::string HintForModuleBeside() { return "it lies beside the module"; }

std::string RemedyForMissing(std::string const& name, ModuleGraph const& graph, std::size_t needing)
{
    // The library names that of the plugin, which keeps the program's as it is.
    bool const isOfPlugin = needing >= graph.firstDependent && !graph.dependencyFolder.empty();
    return isOfPlugin ? RemedyInPluginFolder(name, graph)
                      : "install " + name + " in " + Utf8(graph.programFolder);
}

} // namespace Halvorix::Tools
