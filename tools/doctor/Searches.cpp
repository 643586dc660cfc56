#include "doctor/Searches.h"

#include <exception>
#include <filesystem>
#include <map>

#include <boost/filesystem/exception.hpp>

#include "common/System.h"
#include "common/Utf8.h"
#include "discovery/FileSearch.h"
#include "discovery/PathText.h"
#include "doctor/FileFlaw.h"
#include "doctor/Text.h"
#include "platform/Platform.h"
#include "support/TextConversion.h"

namespace Halvorix::Doctor {

namespace {

Finding Look(std::wstring const& file, std::wstring const& directory, bool isFirstHit)
{
    try {
        std::wstring const path = SSOServices::JoinPath(directory, file);
        if (!IsOnOtherMachine(path) && SSOServices::PathExists(path))
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
    Presence presence;
    try {
        presence.isThere = SSOServices::PathExists(name);
    } catch (std::exception const& exception) {
        presence.reason = Tools::Presentable(exception.what());
        presence.isDenied = IsDenial(exception);
        presence.circle = CircleOf(exception);
    }
    return presence;
}

} // namespace

bool IsOnOtherMachine(std::wstring const& path)
{
    std::size_t const leading = path.find_first_not_of(L"/\\");
    return !Platform::LeadingSlashIsRoot() && leading != std::wstring::npos && leading > 1;
}

Search LookThrough(std::wstring const& file, std::vector<std::wstring> const& directories)
{
    Search search{Shown(file), {}};
    if (file.empty())
        return search;
    bool isHit = false;
    std::filesystem::path hit;
    // One folder may be spelled in thousands of ways, and each has to be listed.
    std::map<std::filesystem::path, std::string> listed;
    auto const similarIn = [&](std::wstring const& directory) {
        std::filesystem::path const folder = Tools::ExecutableAsRun(Tools::FromWide(directory));
        auto const [known, isNew] = listed.try_emplace(folder);
        if (isNew)
            known->second = SimilarName(folder, search.file);
        return known->second;
    };
    for (std::wstring const& directory : directories) {
        Finding const finding = Look(file, directory, !isHit);
        isHit = isHit || finding == Finding::Hit;
        if (finding == Finding::Hit)
            hit = Tools::FromWide(SSOServices::JoinPath(directory, file));
        search.tried.push_back(
            {Shown(directory), finding, VariablesIn(directory), {}, {}, {}, false, false});
        std::error_code unknown;
        if (finding == Finding::LaterHit)
            search.tried.back().isFirstAgain = std::filesystem::equivalent(
                hit, Tools::FromWide(SSOServices::JoinPath(directory, file)), unknown);
        std::wstring const path = SSOServices::JoinPath(directory, file);
        if (finding == Finding::NoFile && !IsOnOtherMachine(path)) {
            LinkFlaw const link = FlawOfLink(Tools::FromWide(path));
            search.tried.back().flaw = link.text;
            search.tried.back().linkRemedy = link.remedy;
        }
        if (finding == Finding::NoFile)
            search.tried.back().similar = similarIn(directory.empty() ? L"." : directory);
    }
    return search;
}

bool IsDenial(std::exception const& exception)
{
    auto const* const error = dynamic_cast<boost::filesystem::filesystem_error const*>(&exception);
    return error != nullptr && error->code() == boost::system::errc::permission_denied;
}

std::string CircleOf(std::exception const& exception)
{
    auto const* const error = dynamic_cast<boost::filesystem::filesystem_error const*>(&exception);
    return error == nullptr ? std::string() : Tools::Utf8(CircleIn(error->path1().native()));
}

Presence LookFor(std::wstring const& file) { return Look(file); }

Presence LookForPlugin(std::wstring const& file) { return Look(SSOServices::WideToUtf8(file)); }

void LookCloser(std::wstring const& file, Presence& presence)
{
    std::filesystem::path const path = Tools::FromWide(file);
    std::error_code unknown;
    LinkFlaw const link = FlawOfLink(path);
    if (presence.isThere)
        presence.flaw = FlawOf(path);
    else if (std::filesystem::exists(path, unknown))
        presence.isOutOfReach = true;
    else if (presence.reason.empty() && !link.text.empty()) {
        presence.flaw = link.text;
        presence.linkRemedy = link.remedy;
    } else if (std::filesystem::is_regular_file(path.parent_path(), unknown))
        presence.isBelowFile = true;
    else if (path.has_parent_path())
        presence.similar = SimilarName(path.parent_path(), Tools::Utf8(path.filename()));
}

} // namespace Halvorix::Doctor
