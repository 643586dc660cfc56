#include "common/System.h"

#include "platform/windows/Windows.h"

#include <shellapi.h>
#include <winver.h>

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

// The system does so by the text, before it looks at anything.
std::filesystem::path AsOpened(std::filesystem::path const& file)
{
    return std::filesystem::absolute(file).lexically_normal();
}

// Links are not followed.
std::filesystem::path ExecutableAsRun(std::filesystem::path const& file) { return AsOpened(file); }

std::filesystem::path ModuleAsLoaded(std::filesystem::path const& file)
{
    return ExecutableAsRun(file);
}

// Some systems leave out the end of a text that they cut.
std::wstring AsToldToLibrary(std::wstring const& path)
{
    wchar_t name[4] = {};
    ::GetModuleFileNameW(nullptr, name, 3);
    return path.substr(0, name[2] == L'\0' ? MAX_PATH - 1 : MAX_PATH);
}

// All symbols are taken from a module by its name.
void ServeSymbols(std::filesystem::path const&) {}

void SearchAsIn(std::filesystem::path const& program)
{
    DWORD const size = ::GetEnvironmentVariableW(L"PATH", nullptr, 0);
    std::wstring path(size, L'\0');
    path.resize(::GetEnvironmentVariableW(L"PATH", path.data(), size));
    ::SetEnvironmentVariableW(L"PATH", (program.parent_path().native() + L";" + path).c_str());
}

std::string NameOfLocation() { return "the registry value Location"; }

std::string FileVersionOf(std::filesystem::path const& file)
{
    DWORD ignored = 0;
    DWORD const size = ::GetFileVersionInfoSizeW(file.c_str(), &ignored);
    std::vector<char> resource(size);
    void* value = nullptr;
    UINT valueSize = 0;
    if (size == 0 || ::GetFileVersionInfoW(file.c_str(), 0, size, resource.data()) == FALSE ||
        ::VerQueryValueW(resource.data(), L"\\", &value, &valueSize) == FALSE ||
        valueSize < sizeof(VS_FIXEDFILEINFO))
        return {};
    auto const& version = *static_cast<VS_FIXEDFILEINFO const*>(value);
    std::string text;
    for (DWORD const part : {version.dwFileVersionMS, version.dwFileVersionLS})
        text += (text.empty() ? "" : ".") + std::to_string(HIWORD(part)) + "." +
                std::to_string(LOWORD(part));
    return text;
}

} // namespace Halvorix::Tools
