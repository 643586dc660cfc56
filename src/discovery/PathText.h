#pragma once

#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

namespace Halvorix::SSOServices {

/// Forward slashes only, no trailing slash except at a root such as C:/, no
/// doubled slash. No leading slash either, save for the one that is the root
/// where the system has such a root; a network path loses its prefix, as the
/// form is defined.
std::wstring NormalizePath(std::wstring const& path);

/// Deletes later entries that equal an earlier one to the letter.
void RemoveDuplicatePaths(std::vector<std::wstring>& paths);

/// Cuts at each ";". An empty text gives an empty list; empty entries stay.
std::vector<std::wstring> SplitPathList(std::wstring const& text);

/// The same for a host's support file search paths: separators in a row count as
/// one.
std::vector<std::wstring> SplitSupportPathList(std::wstring const& text);

/// As the system names files.
boost::filesystem::path AsPath(std::wstring const& text);

// The following answer in forward slashes, not in normal form.

std::wstring GenericText(boost::filesystem::path const& path);
std::wstring JoinPath(std::wstring const& directory, std::wstring const& name);
std::wstring ParentPath(std::wstring const& path);
std::wstring FileName(std::wstring const& path);

} // namespace Halvorix::SSOServices
