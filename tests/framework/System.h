#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

// What the rig needs of the operating system. Each system has a folder of its
// own beside this header.
namespace Rig {

struct Process {
    std::filesystem::path program;
    std::vector<std::string> arguments;
    std::map<std::string, std::string> environment; // on top of the rig's own
    std::filesystem::path directory;
    std::filesystem::path output; // standard output goes here
    std::filesystem::path errors; // standard error goes here
    std::chrono::seconds limit = std::chrono::minutes(1);
};

struct Ending {
    bool timedOut = false;
    bool crashed = false; // ended by a signal or an unhandled exception
    int status = -1;
    bool inSystemLock = false; // timed out in a lock of the system's own, not to be helped
};

/// Runs a program to its end, or ends it at its limit.
Ending RunToEnd(Process const& process);

/// Whether this is the system that the product is for.
bool IsWindows();
/// Whether this is a 32-bit process on a 64-bit Windows.
bool IsWoW64();

std::filesystem::path ThisExecutable();
std::string ExecutableName(std::string const& name);

/// Files of the library as they lie in its directory, its own module first.
std::vector<std::string> LibraryFiles();
std::string ModuleName(std::string const& name);

/// The log's name for the library, and for the file it is mapped from.
std::string LibraryName();
std::string MappedLibraryFile();

/// Removes a variable from the rig's own environment, and so from its children's.
void UnsetVariable(std::string const& name);

int ProcessNumber();

/// Whether the place of the server application's directory is the rig's to change: in
/// the registry of a Windows that somebody uses it is not, in that of a Wine prefix it is.
bool MayChangeLocation();

/// Leaves the server application's directory where its installation leaves it,
/// below `root` where the system allows that; `bytes` are the value as stored
/// on Windows, UTF-16 text elsewhere UTF-8.
void SetLocation(std::filesystem::path const& root, std::wstring const& location);
void RemoveLocation(std::filesystem::path const& root);

/// A value beside or in place of that one, of any type and size; there are such
/// on Windows only.
void SetRawLocation(unsigned type, std::string const& bytes, std::string const& name = "Location");
/// Removes the value alone, not its key.
void RemoveLocationValue();
/// The key for 64-bit programs, beside that of a 32-bit process; only there.
void SetLocationOf64Bit(std::wstring const& location);
void RemoveLocationOf64Bit();

/// The host's own choice for the dependencies of its modules; empty on a system
/// that has none.
void SetHostModuleDirectory(std::string const& directory);
std::string HostModuleDirectory();

/// Ends this process past the destructors of its executable: by quick_exit, or
/// by ExitProcess, which still tells the modules.
[[noreturn]] void EndQuickly(int status);

/// Runs something on a thread with so many bytes of stack, to its end.
void RunOnStack(std::size_t bytes, std::function<void()> const& action);

/// Takes from this process the right to read a file or folder that is there, for as
/// long as it runs; false if the system does not let it. Windows only has files that
/// somebody else has opened for himself.
bool DenyReading(std::filesystem::path const& file);

/// The system's text for an error.
std::string SystemErrorText(unsigned long code);

} // namespace Rig
