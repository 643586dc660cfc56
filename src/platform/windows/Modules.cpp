#include <cwchar>

#include "platform/Platform.h"
#include "platform/windows/Windows.h"

namespace Halvorix::Platform {

namespace {

constexpr DWORD FileNameCapacity = 260;

std::wstring FileNameOf(HMODULE module)
{
    // One unit more than stated: older systems leave a cut name unterminated.
    wchar_t name[FileNameCapacity + 1] = {};
    ::GetModuleFileNameW(module, name, FileNameCapacity);
    return name;
}

} // namespace

std::wstring LibraryFileName() { return L"HxSSOServices.dll"; }

char const* FactoryProcedureName()
{
    return "?GetSSOClientFactory@@YA?AV?$shared_ptr@VISSOClientFactory@SSOServices@Halvorix@@@"
           "std@@XZ";
}

void SetDependencyDirectory(wchar_t const* directory) { ::SetDllDirectoryW(directory); }

ModuleHandle LoadModule(std::wstring const& file) { return ::LoadLibraryW(file.c_str()); }

Procedure FindProcedure(ModuleHandle module, char const* name)
{
    return reinterpret_cast<Procedure>(::GetProcAddress(static_cast<HMODULE>(module), name));
}

ErrorCode LastError() { return ::GetLastError(); }

std::wstring ErrorText(ErrorCode code)
{
    wchar_t* text = nullptr;
    ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code,
                     MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<wchar_t*>(&text),
                     0, nullptr);
    // Texts with inserts leave no buffer at all.
    if (text == nullptr)
        return {};
    struct Release {
        wchar_t* text;
        ~Release() { ::LocalFree(text); }
    } const release{text};
    return text;
}

void KeepLibraryLoaded()
{
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<wchar_t const*>(&KeepLibraryLoaded), &module);
}

std::wstring LoadedModuleFile(std::wstring const& moduleName)
{
    HMODULE const module = ::GetModuleHandleW(moduleName.c_str());
    return module == nullptr ? std::wstring() : FileNameOf(module);
}

std::wstring ExecutableFile() { return FileNameOf(nullptr); }

} // namespace Halvorix::Platform
