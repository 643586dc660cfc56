#include "../System.h"

#include "platform/Platform.h"
#include "platform/windows/Windows.h"

#include <shellapi.h>

namespace Halvorix::Tools {

std::vector<std::filesystem::path> BeginProgram(int, char**)
{
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    int count = 0;
    wchar_t** const texts = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (texts == nullptr)
        return {};
    std::vector<std::filesystem::path> arguments;
    for (int i = 1; i < count; ++i)
        arguments.emplace_back(texts[i]);
    ::LocalFree(texts);
    return arguments;
}

std::wstring Wide(std::filesystem::path const& path) { return path.native(); }

std::filesystem::path FromWide(std::wstring const& text) { return text; }

// The host's folder comes first; then the folder
// that the library names while it loads.
std::vector<std::filesystem::path> DependencyFolders(ModuleImage const&,
                                                     std::filesystem::path const&,
                                                     std::filesystem::path const& plugin,
                                                     std::filesystem::path const& host)
{
    return {host, plugin.parent_path()};
}

bool IsFoundBySystem(std::string const& name)
{
    // Names of sets of functions, which the loader resolves without a file.
    if (name.rfind("api-ms-win-", 0) == 0 || name.rfind("ext-ms-", 0) == 0)
        return true;
    // The current directory does not count while the library names a folder, and
    // so neither here; this one was looked through before.
    std::filesystem::path const folder = FromWide(Platform::ExecutableFile()).parent_path();
    Platform::SetDependencyDirectory(Wide(folder).c_str());
    HMODULE const module = ::LoadLibraryExA(name.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    Platform::SetDependencyDirectory(nullptr);
    if (module != nullptr)
        ::FreeLibrary(module);
    return module != nullptr;
}

// Links are not followed.
std::filesystem::path ExecutableAsRun(std::filesystem::path const& file)
{
    return std::filesystem::absolute(file).lexically_normal();
}

std::filesystem::path ModuleAsLoaded(std::filesystem::path const& file)
{
    return ExecutableAsRun(file);
}

bool BeginTerminal()
{
    HANDLE const output = ::GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (::GetConsoleMode(output, &mode) == FALSE)
        return false;
    // The console's own way is put back at the end: it outlives this program.
    static struct CodePage {
        UINT before = ::GetConsoleOutputCP();
        ~CodePage() { ::SetConsoleOutputCP(before); }
    } const codePage;
    ::SetConsoleOutputCP(CP_UTF8);
    constexpr DWORD takesColours = 0x0004; // ENABLE_VIRTUAL_TERMINAL_PROCESSING
    return ::GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) == 0 &&
           ::SetConsoleMode(output, mode | takesColours) != FALSE;
}

char const* HintForDependencyBeside() { return "it lies beside the module"; }

} // namespace Halvorix::Tools
