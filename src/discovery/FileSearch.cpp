#include "discovery/FileSearch.h"

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

#include "discovery/PathText.h"

namespace Halvorix::SSOServices {

namespace {

bool Exists(boost::filesystem::path const& path)
{
    boost::filesystem::file_type const type = boost::filesystem::status(path).type();
    return type != boost::filesystem::status_error && type != boost::filesystem::file_not_found;
}

} // namespace

bool PathExists(std::wstring const& path) { return Exists(AsPath(path)); }

bool PathExists(std::string const& path) { return Exists(path); }

} // namespace Halvorix::SSOServices
