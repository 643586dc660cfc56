#pragma once

#include <string>
#include <vector>

#include <boost/filesystem/path.hpp>

namespace Halvorix::SSOServices {

/// Whether something of that name is there, a directory too. Failures other
/// than a missing file throw boost::filesystem::filesystem_error.
bool PathExists(boost::filesystem::path const& path);
bool PathExists(std::wstring const& path);
bool PathExists(std::string const& path);

/// The first entry under which the file exists, joined with its name; an empty
/// entry is the current directory. False, and an empty text, if there is none.
bool FindFileInPaths(std::wstring const& fileName, std::vector<std::wstring> const& paths,
                     std::wstring& foundFile);

} // namespace Halvorix::SSOServices
