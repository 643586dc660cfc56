// The library's search for a file, which notes where it looked. Stands in place of the
// library's own file of this name.

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "Searches.h"
#include "discovery/FileSearch.h"
#include "discovery/PathText.h"

namespace Halvorix {

namespace {

std::map<std::wstring, std::vector<std::wstring>> searches; // by the file's name

} // namespace

bool SSOServices::FindFileInPaths(std::wstring const& fileName,
                                  std::vector<std::wstring> const& paths, std::wstring& foundFile)
{
    searches[fileName] = paths;
    auto const holding = std::find_if(paths.begin(), paths.end(), [&](std::wstring const& path) {
        std::wstring const file = JoinPath(path, fileName);
        return !Doctor::IsOnOtherMachine(file) && PathExists(file);
    });
    foundFile = holding == paths.end() ? std::wstring() : JoinPath(*holding, fileName);
    return holding != paths.end();
}

std::vector<std::wstring> Doctor::DirectoriesSearchedFor(std::wstring const& file)
{
    auto const search = searches.find(file);
    return search == searches.end() ? std::vector<std::wstring>() : search->second;
}

void Doctor::ForgetSearches() { searches.clear(); }

} // namespace Halvorix
