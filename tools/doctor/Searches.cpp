#include "Searches.h"

#include <exception>

#include "Text.h"
#include "discovery/FileSearch.h"
#include "discovery/PathText.h"
#include "support/TextConversion.h"

namespace Halvorix::Doctor {

namespace {

Finding Look(std::wstring const& file, std::wstring const& directory, bool isFirstHit)
{
    try {
        if (SSOServices::PathExists(SSOServices::JoinPath(directory, file)))
            return isFirstHit ? Finding::Hit : Finding::LaterHit;
        // The empty one is the current directory.
        return directory.empty() || SSOServices::PathExists(directory) ? Finding::NoFile
                                                                       : Finding::NoDirectory;
    } catch (std::exception const&) {
        return Finding::Unreadable;
    }
}

template <class Name>
Presence Look(Name const& name)
{
    try {
        return {SSOServices::PathExists(name), {}};
    } catch (std::exception const& exception) {
        return {false, Tools::Presentable(exception.what())};
    }
}

} // namespace

Search LookThrough(std::wstring const& file, std::vector<std::wstring> const& directories)
{
    Search search{Shown(file), {}};
    if (file.empty())
        return search;
    bool isHit = false;
    for (std::wstring const& directory : directories) {
        Finding const finding = Look(file, directory, !isHit);
        isHit = isHit || finding == Finding::Hit;
        search.tried.push_back({Shown(directory), finding, VariablesIn(directory)});
    }
    return search;
}

Presence LookFor(std::wstring const& file) { return Look(file); }

Presence LookForPlugin(std::wstring const& file) { return Look(SSOServices::WideToUtf8(file)); }

} // namespace Halvorix::Doctor
