#pragma once

#include <cstddef>
#include <cstdint>
#include <ios>
#include <string>

// The one seam between the library and the operating system. Each system has a
// folder of its own beside this header that implements all of it.
namespace Halvorix::Platform {

using ModuleHandle = void*;
using Procedure = void (*)();

/// The system's number for a failure; 0 is success.
using ErrorCode = std::uint32_t;

/// File name of this library itself.
std::wstring LibraryFileName();

/// Name under which a plugin exports its factory procedure: the compiler's
/// decoration ties it to the declaration.
char const* FactoryProcedureName();

/// Adds a directory to the search for modules that a loaded module depends on;
/// null restores the system's own order.
void SetDependencyDirectory(wchar_t const* directory);

/// Null on failure, with the reason in LastError.
ModuleHandle LoadModule(std::wstring const& file);

/// Null on failure, with the reason in LastError.
Procedure FindProcedure(ModuleHandle module, char const* name);

/// Reason of the latest failure on this thread.
ErrorCode LastError();

/// The system's text for an error, its line end included; empty if it has none.
std::wstring ErrorText(ErrorCode code);

/// Keeps this library in the process to its end, whatever the host lets go.
void KeepLibraryLoaded();

/// Whether the system has ended all other threads when it tells modules of the
/// process's end.
bool ThreadsEndBeforeModules();

/// Full file name of a module that is in the process already, as the system
/// spells it; empty if there is none. By the whole name of its file, but for the
/// library's own, which a version may follow.
std::wstring LoadedModuleFile(std::wstring const& moduleName);

/// Full file name of the process's executable, as the system spells it.
std::wstring ExecutableFile();

enum class KnownFolder { ProgramFiles, RoamingAppData, LocalAppData };

/// As the system spells it; empty if the system does not know it.
std::wstring KnownFolderPath(KnownFolder folder);

/// Whether this is a 32-bit process of a 64-bit system.
bool IsWow64Process();

/// Where the server application's installation leaves its directory.
using LocationKey = void*;
enum class LocationView { Own, Native64 };

/// Opens the place; 0 on success.
ErrorCode OpenLocationKey(LocationView view, LocationKey& key);

/// The directory up to its first zero unit; false if it cannot be read.
bool ReadLocation(LocationKey key, std::wstring& location);

void CloseLocationKey(LocationKey key);

/// The content of a regular file. Empty for anything else, which is not waited for,
/// and for a file that cannot be read.
std::string ReadRegularFile(std::wstring const& file, std::ios::openmode mode);

/// A line on the process's standard output, with "?" for what it cannot show.
void ShowOnConsole(std::wstring const& line);

/// Whether the system's own names of files are wide. Narrow ones are UTF-8, whatever
/// the locale says.
bool AreFileNamesWide();

/// Whether a path's leading slash is its root and no decoration.
bool LeadingSlashIsRoot();

/// Whether a path with forward slashes is nothing but a root.
bool IsRootPath(std::wstring const& path);

/// Result of CopyBounded for a source that was cut.
constexpr int CopyWasTruncated = 80;

/// Copies as many units as fit and always terminates; capacity is at least 1.
/// 0 if the whole source fitted.
int CopyBounded(wchar_t* destination, std::size_t capacity, wchar_t const* source);

/// Order of two terminated texts, ignoring case: negative, 0 or positive.
int CompareIgnoringCase(wchar_t const* left, wchar_t const* right);

} // namespace Halvorix::Platform
