#pragma once

#include <filesystem>
#include <string>
#include <vector>

// What the tool needs of the operating system beyond the library's own seam. Each
// system has a folder of its own beside this header.
namespace Halvorix::Tools {

/// The arguments without the program's name. Also sees to it that the system
/// reports a module that it cannot load to this program, not to the user.
std::vector<std::filesystem::path> BeginProgram(int count, char** arguments);

/// Between the library's texts and file names; neither side depends on a locale.
std::wstring Wide(std::filesystem::path const& path);
std::filesystem::path FromWide(std::wstring const& text);

/// Absolute, and without "." and "..", by which the same file is opened: behind a link
/// ".." is kept where the system follows the link first.
std::filesystem::path AsOpened(std::filesystem::path const& file);

/// The name under which a running program knows its executable's file, and a
/// module that it has loaded. Absolute.
std::filesystem::path ExecutableAsRun(std::filesystem::path const& file);
std::filesystem::path ModuleAsLoaded(std::filesystem::path const& file);

/// What the library gets to know of the path of a file of its process: the beginning, where
/// the system would tell more than it has room for.
std::wstring AsToldToLibrary(std::wstring const& path);

/// Has a module that is loaded serve the symbols of those that come after it, as what a
/// program itself needs does where the system tells modules apart.
void ServeSymbols(std::filesystem::path const& module);

/// Has the loader look for modules in the folder of another program too, if it would do so
/// in that one's process.
void SearchAsIn(std::filesystem::path const& program);

/// What holds the server application's directory, for a sentence.
std::string NameOfLocation();

/// The version that a module's file carries, in its version resource or behind its
/// name as shared objects have it. Empty if there is none.
std::string FileVersionOf(std::filesystem::path const& file);

} // namespace Halvorix::Tools
