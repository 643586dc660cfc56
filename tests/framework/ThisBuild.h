#pragma once

#include <filesystem>
#include <string>

// What differs between builds for the same system. All other test code is the same in
// them, and its objects may come from another build.
namespace Rig {

bool IsSanitized();

/// With a sanitizer, or with counters of lines.
bool IsInstrumented();

/// What the library calls this build, such as "x64-Release".
std::string BuildName();

/// A module of this build that needs PluginDependency.
std::filesystem::path DependentModule();

/// A file or folder of the repository that it was built from.
std::filesystem::path SourceFile(std::string const& relative);

} // namespace Rig
