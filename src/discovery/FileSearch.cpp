#include "discovery/FileSearch.h"

#include <boost/filesystem/operations.hpp>

#include "discovery/PathText.h"

namespace Halvorix::SSOServices {

bool PathExists(boost::filesystem::path const& path)
{
    boost::filesystem::file_type const type = boost::filesystem::status(path).type();
    return type != boost::filesystem::status_error && type != boost::filesystem::file_not_found;
}

bool PathExists(std::wstring const& path) { return PathExists(AsPath(path)); }

bool PathExists(std::string const& path) { return PathExists(boost::filesystem::path(path)); }

} // namespace Halvorix::SSOServices
