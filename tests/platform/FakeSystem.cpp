#include "platform/FakeSystem.h"

Rig::FakeSystem Rig::fakeSystem;

namespace Halvorix::Platform {

using Rig::fakeSystem;

namespace {

wchar_t const* ViewName(LocationView view)
{
    return view == LocationView::Own ? L"own view" : L"64-bit view";
}

} // namespace

std::wstring LibraryFileName() { return L"HxSSOServices.dll"; }

char const* FactoryProcedureName() { return "factory"; }

void SetDependencyDirectory(wchar_t const* directory)
{
    fakeSystem.calls.push_back(std::wstring(L"dependencies ") +
                               (directory ? directory : L"restored"));
}

ModuleHandle LoadModule(std::wstring const& file)
{
    fakeSystem.calls.push_back(L"load " + file);
    return nullptr;
}

Procedure FindProcedure(ModuleHandle, char const*) { return nullptr; }

ErrorCode LastError()
{
    fakeSystem.calls.emplace_back(L"last error");
    return fakeSystem.lastError;
}

std::wstring ErrorText(ErrorCode code)
{
    return fakeSystem.hasErrorTexts ? L"error " + std::to_wstring(code) : std::wstring();
}

void KeepLibraryLoaded() {}

bool ThreadsEndBeforeModules() { return fakeSystem.threadsEndBeforeModules; }

std::wstring LoadedModuleFile(std::wstring const& moduleName)
{
    ++fakeSystem.moduleQuestions;
    return moduleName == LibraryFileName() ? fakeSystem.library : std::wstring();
}

std::wstring ExecutableFile() { return fakeSystem.executable; }

std::wstring KnownFolderPath(KnownFolder) { return fakeSystem.knownFolder; }

bool IsWow64Process()
{
    ++fakeSystem.processQuestions;
    return fakeSystem.wow64;
}

ErrorCode OpenLocationKey(LocationView view, LocationKey& key)
{
    fakeSystem.calls.push_back(std::wstring(L"open ") + ViewName(view));
    ErrorCode const error = fakeSystem.openings[view];
    if (error == 0)
        key = &fakeSystem.locations[view];
    return error;
}

bool ReadLocation(LocationKey key, std::wstring& location)
{
    if (fakeSystem.locationIsReadable)
        location = *static_cast<std::wstring*>(key);
    return fakeSystem.locationIsReadable;
}

void CloseLocationKey(LocationKey) { fakeSystem.calls.emplace_back(L"close"); }

bool LeadingSlashIsRoot() { return fakeSystem.leadingSlashIsRoot; }

bool IsRootPath(std::wstring const& path) { return path == L"/"; }

} // namespace Halvorix::Platform
