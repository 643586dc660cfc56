// hxsso-doctor has tools/doctor/PathListSearch.cpp in the place of this file: change both.
#include "discovery/FileSearch.h"
#include "discovery/PathText.h"

namespace Halvorix::SSOServices {

bool FindFileInPaths(std::wstring const& fileName, std::vector<std::wstring> const& paths,
                     std::wstring& foundFile)
{
    foundFile.clear();
    for (std::wstring const& directory : paths) {
        boost::filesystem::path const file = AsPath(directory) / AsPath(fileName);
        if (PathExists(file)) {
            foundFile = GenericText(file);
            return true;
        }
    }
    return false;
}

} // namespace Halvorix::SSOServices
