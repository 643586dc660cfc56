#include "discovery/FileSearch.h"
#include "discovery/PathText.h"

namespace Halvorix::SSOServices {

bool FindFileInPaths(std::wstring const& fileName, std::vector<std::wstring> const& paths,
                     std::wstring& foundFile)
{
    foundFile.clear();
    for (std::wstring const& directory : paths) {
        std::wstring const file = JoinPath(directory, fileName);
        if (PathExists(file)) {
            foundFile = file;
            return true;
        }
    }
    return false;
}

} // namespace Halvorix::SSOServices
