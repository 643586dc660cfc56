#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <string>
#include <system_error>

#include "../Platform.h"
#include "NarrowText.h"

namespace Halvorix::Platform {

namespace {

// dlopen and dlsym give no numbers: their latest text is kept per thread and
// goes under this one.
constexpr ErrorCode ModuleError = 0xFFFFFFFF;
thread_local std::string lastModuleError;

void RememberModuleError()
{
    char const* const text = ::dlerror();
    lastModuleError = text == nullptr ? "" : text;
}

struct ModuleSearch {
    std::string name;
    std::string file;
};

// A library may be mapped under its versioned name.
bool IsNamed(std::string const& file, std::string const& name)
{
    std::string const base = file.substr(file.rfind('/') + 1);
    std::string const& text = name.find('/') == std::string::npos ? base : file;
    return text == name || text.compare(0, name.size() + 1, name + ".") == 0;
}

int VisitModule(dl_phdr_info* info, std::size_t, void* context)
{
    auto& search = *static_cast<ModuleSearch*>(context);
    // The executable has no name here.
    std::string const file =
        *info->dlpi_name == '\0' ? ToSystem(ExecutableFile()) : std::string(info->dlpi_name);
    if (!IsNamed(file, search.name))
        return 0;
    search.file = file;
    return 1;
}

// The loader spells a file as its run path does, with "..", say.
std::string InCanonicalFolder(std::string const& file)
{
    std::filesystem::path const path = file;
    std::error_code unknown;
    std::filesystem::path const folder =
        std::filesystem::canonical(path.has_parent_path() ? path.parent_path() : ".", unknown);
    return unknown ? file : (folder / path.filename()).string();
}

} // namespace

std::wstring LibraryFileName() { return L"libHxSSOServices.so"; }

char const* FactoryProcedureName() { return "_Z19GetSSOClientFactoryv"; }

// A plugin names the place of its dependencies itself, by an $ORIGIN run path.
void SetDependencyDirectory(wchar_t const*) {}

ModuleHandle LoadModule(std::wstring const& file)
{
    ModuleHandle module = ::dlopen(ToSystem(file).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (module == nullptr)
        RememberModuleError();
    return module;
}

Procedure FindProcedure(ModuleHandle module, char const* name)
{
    void* const symbol = ::dlsym(module, name);
    if (symbol == nullptr)
        RememberModuleError();
    return reinterpret_cast<Procedure>(symbol);
}

ErrorCode LastError() { return ModuleError; }

std::wstring ErrorText(ErrorCode code)
{
    if (code == ModuleError)
        return FromSystem(lastModuleError);
    return FromSystem(std::generic_category().message(static_cast<int>(code)));
}

std::wstring LoadedModuleFile(std::wstring const& moduleName)
{
    ModuleSearch search{ToSystem(moduleName), {}};
    if (!search.name.empty())
        ::dl_iterate_phdr(VisitModule, &search);
    return search.file.empty() ? std::wstring() : FromSystem(InCanonicalFolder(search.file));
}

std::wstring ExecutableFile()
{
    char name[PATH_MAX];
    ssize_t const length = ::readlink("/proc/self/exe", name, sizeof(name));
    return length < 0 ? std::wstring()
                      : FromSystem(std::string(name, static_cast<std::size_t>(length)));
}

} // namespace Halvorix::Platform
