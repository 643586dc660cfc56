// The library's search for a file, which notes where it looked. Stands in place of the
// library's own file of this name.

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "discovery/FileSearch.h"
#include "discovery/PathText.h"
#include "doctor/Searches.h"

namespace Halvorix {

namespace {

std::map<std::wstring, std::vector<std::wstring>> searches; // by the file's name

// More than the longest list that is looked at needs with some directories to search. The
// library searches for the server application again at each variable that needs it.
constexpr std::size_t MostDirectories = 200000;
std::size_t directories = 0;

constexpr std::size_t MostExpansion = std::size_t{4} << 20U;
std::size_t expansion = 0;

} // namespace

bool SSOServices::FindFileInPaths(std::wstring const& fileName,
                                  std::vector<std::wstring> const& paths, std::wstring& foundFile)
{
    searches[fileName] = paths;
    directories += paths.size();
    if (directories > MostDirectories)
        throw Doctor::QuestionLimit{"looks into more than " + std::to_string(MostDirectories) +
                                    " directories, the limit of what is looked at"};
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

void Doctor::BeginQuestion() { directories = expansion = 0; }

void Doctor::CountExpansion(std::wstring const& value)
{
    expansion += value.size();
    if (expansion > MostExpansion)
        throw QuestionLimit{
            "fills in variables with more than 4 Mi characters, the limit of what is looked at"};
}

} // namespace Halvorix
