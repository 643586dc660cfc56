#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "ModuleImage.h"

// What the tool needs of the operating system beyond the library's own seam. Each
// system has a folder of its own beside this header.
namespace Halvorix::Tools {

/// The arguments without the program's name. Also sees to it that the system
/// reports a module that it cannot load to this program, not to the user.
std::vector<std::filesystem::path> BeginProgram(int count, char** arguments);

/// Between the library's texts and file names; neither side depends on a locale.
std::wstring Wide(std::filesystem::path const& path);
std::filesystem::path FromWide(std::wstring const& text);

/// Folders in which the loader looks for what the module `file` needs, before
/// the system's own. `plugin` is the module that the library loads, `host` the
/// folder of the program that it does so in.
std::vector<std::filesystem::path> DependencyFolders(ModuleImage const& image,
                                                     std::filesystem::path const& file,
                                                     std::filesystem::path const& plugin,
                                                     std::filesystem::path const& host);

/// Whether the loader finds a module by its name alone.
bool IsFoundBySystem(std::string const& name);

/// The name under which a running program knows its executable's file, and a
/// module that it has loaded. Absolute.
std::filesystem::path ExecutableAsRun(std::filesystem::path const& file);
std::filesystem::path ModuleAsLoaded(std::filesystem::path const& file);

/// Whether a person reads the standard output and sees colours there. Also sees to
/// it that the terminal takes it for UTF-8.
bool BeginTerminal();

/// What helps the loader to a dependency that lies beside the module unseen.
char const* HintForDependencyBeside();

} // namespace Halvorix::Tools
