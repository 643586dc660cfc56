#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/Platform.h"
#include "platform/linux/NarrowText.h"

namespace Halvorix::Platform {

namespace {

// dlopen and dlsym give no numbers: their latest text is kept per thread and
// goes under this one.
constexpr ErrorCode ModuleError = 0xFFFFFFFF;
// Without a destructor: a thread's own ends before the library does, which may still load.
thread_local char lastModuleError[PATH_MAX + 256];

void RememberModuleError(std::string_view text)
{
    lastModuleError[text.copy(lastModuleError, sizeof lastModuleError - 1)] = '\0';
}

void RememberLoadersError()
{
    char const* const text = ::dlerror();
    RememberModuleError(text == nullptr ? "" : text);
}

// A pipe or a device: the loader would open it, and be held up with the library's lock.
bool IsWaitedFor(std::string const& file)
{
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode) &&
           !S_ISDIR(status.st_mode);
}

struct ModuleSearch {
    std::string const& name;
    std::string file;
    std::uintptr_t address; // of something in the module
};

constexpr std::string_view LibraryName = "libHxSSOServices.so";

// The library itself may be mapped under its versioned name.
bool IsNamed(std::string_view file, std::string_view name)
{
    bool const isPath = name.find('/') != std::string_view::npos;
    std::string_view const text = isPath ? file : file.substr(file.rfind('/') + 1);
    return text == name ||
           (name == LibraryName && text.substr(0, name.size()) == name && text[name.size()] == '.');
}

int VisitModule(dl_phdr_info* info, std::size_t, void* context)
{
    auto& search = *static_cast<ModuleSearch*>(context);
    if (!IsNamed(info->dlpi_name, search.name))
        return 0;
    search.file = info->dlpi_name;
    search.address = reinterpret_cast<std::uintptr_t>(info->dlpi_phdr);
    return 1;
}

// The file that is mapped there, by its whole name; empty if there is none, as for what
// the system itself brings into each process.
std::string MappedFile(std::uintptr_t address)
{
    std::ifstream maps("/proc/self/maps");
    std::string line;
    bool isFound = false;
    while (!isFound && std::getline(maps, line)) {
        char* end = nullptr;
        std::uintptr_t const first = std::strtoull(line.c_str(), &end, 16);
        std::uintptr_t const behind = *end == '-' ? std::strtoull(end + 1, nullptr, 16) : 0;
        isFound = address >= first && address < behind;
    }
    std::size_t const name = line.find('/');
    return isFound && name != std::string::npos ? line.substr(name) : std::string();
}

// The loader spells a file as its run path does, with ".." and through links.
std::string InCanonicalFolder(std::string const& file)
{
    std::filesystem::path const path = file;
    std::error_code unknown;
    std::filesystem::path const folder =
        std::filesystem::canonical(path.has_parent_path() ? path.parent_path() : ".", unknown);
    return unknown ? file : (folder / path.filename()).string();
}

// Without memory of its own, which an unloading would lose, and without an end, since
// threads of the host call until the process is gone.
struct OwnFile {
    char spelling[PATH_MAX]; // the loader's
    char file[PATH_MAX];
};

// Empty for a name that is longer than any that the system opens.
template <std::size_t Size>
void Store(std::string const& name, char (&room)[Size])
{
    if (name.size() < Size)
        room[name.copy(room, Size - 1)] = '\0';
}

OwnFile FindOwnFile()
{
    OwnFile found{};
    Dl_info library{};
    if (::dladdr(reinterpret_cast<void const*>(&FindOwnFile), &library) != 0) {
        Store(library.dli_fname, found.spelling);
        Store(InCanonicalFolder(library.dli_fname), found.file);
    }
    return found;
}

// Found while the library is being loaded: the loader's name for it may be relative, and
// the process be elsewhere later.
OwnFile const own = FindOwnFile();

} // namespace

std::wstring LibraryFileName() { return {LibraryName.begin(), LibraryName.end()}; }

char const* FactoryProcedureName() { return "_Z19GetSSOClientFactoryv"; }

// A plugin names the place of its dependencies itself, by an $ORIGIN run path.
void SetDependencyDirectory(wchar_t const*) {}

ModuleHandle LoadModule(std::wstring const& file)
{
    std::string const name = ToSystem(file);
    if (IsWaitedFor(name)) {
        RememberModuleError(name + ": not a regular file");
        return nullptr;
    }
    ModuleHandle module = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (module == nullptr)
        RememberLoadersError();
    return module;
}

Procedure FindProcedure(ModuleHandle module, char const* name)
{
    void* const symbol = ::dlsym(module, name);
    if (symbol == nullptr)
        RememberLoadersError();
    return reinterpret_cast<Procedure>(symbol);
}

ErrorCode LastError() { return ModuleError; }

std::wstring ErrorText(ErrorCode code)
{
    if (code == ModuleError)
        return FromSystem(lastModuleError);
    return FromSystem(std::generic_category().message(static_cast<int>(code)));
}

void KeepLibraryLoaded()
{
    // The handle is never closed; in an executable there is none, nor need for it.
    if (own.spelling[0] != '\0' &&
        ::dlopen(own.spelling, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE) == nullptr)
        ::dlerror(); // not for the host to find
}

std::wstring LoadedModuleFile(std::wstring const& moduleName)
{
    std::string const name = ToSystem(moduleName);
    if (name.empty())
        return {};
    // Without a look at what else is loaded, of which the loader would have to be asked.
    if (IsNamed(own.spelling, name))
        return FromSystem(own.file);
    ModuleSearch search{name, {}, 0};
    if (::dl_iterate_phdr(VisitModule, &search) == 0) {
        // The executable is listed without a name.
        std::string const executable = ToSystem(ExecutableFile());
        if (!IsNamed(executable, name))
            return {};
        search.file = executable;
    }
    if (search.file.front() != '/') {
        // Relative to where the process was when it loaded it.
        std::string const mapped = MappedFile(search.address);
        std::error_code unknown;
        if (!std::filesystem::equivalent(search.file, mapped, unknown))
            search.file = mapped;
    }
    if (search.file.empty())
        return {};
    return FromSystem(InCanonicalFolder(search.file));
}

std::wstring ExecutableFile()
{
    char name[PATH_MAX];
    ssize_t const length = ::readlink("/proc/self/exe", name, sizeof(name));
    return length < 0 ? std::wstring()
                      : FromSystem(std::string(name, static_cast<std::size_t>(length)));
}

} // namespace Halvorix::Platform
