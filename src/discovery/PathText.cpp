#include "discovery/PathText.h"

#include <algorithm>
#include <cstddef>
#include <set>

#include <boost/algorithm/string/split.hpp>

#include "platform/Platform.h"
#include "support/TextConversion.h"

namespace Halvorix::SSOServices {

namespace {

std::wstring GenericText(boost::filesystem::path const& path)
{
    return Platform::AreFileNamesWide() ? path.generic_wstring()
                                        : Utf8ToWide(path.generic_string());
}

// Leaves what is a root, such as C:/ or the sole leading slash.
void RemoveTrailingSlashes(std::wstring& text)
{
    // No root ends in two slashes, so all but the last go unseen.
    while (text.size() > 1 && text.back() == L'/' && text[text.size() - 2] == L'/')
        text.pop_back();
    if (!text.empty() && text.back() == L'/' && !Platform::IsRootPath(text))
        text.pop_back();
}

} // namespace

std::wstring NormalizePath(std::wstring const& path)
{
    std::wstring text = path;
    std::replace(text.begin(), text.end(), L'\\', L'/');
    std::size_t const leading = std::min(text.find_first_not_of(L'/'), text.size());
    text.erase(0, leading > 0 && Platform::LeadingSlashIsRoot() ? leading - 1 : leading);
    RemoveTrailingSlashes(text);
    auto const doubled = [](wchar_t a, wchar_t b) { return a == L'/' && b == L'/'; };
    text.erase(std::unique(text.begin(), text.end(), doubled), text.end());
    return text;
}

void RemoveDuplicatePaths(std::vector<std::wstring>& paths)
{
    std::set<std::wstring> seen;
    auto const repeated = [&seen](std::wstring const& path) { return !seen.insert(path).second; };
    paths.erase(std::remove_if(paths.begin(), paths.end(), repeated), paths.end());
}

std::vector<std::wstring> SplitPathList(std::wstring const& text)
{
    std::vector<std::wstring> paths;
    if (!text.empty())
        boost::algorithm::split(paths, text, [](wchar_t c) { return c == L';'; });
    return paths;
}

std::vector<std::wstring> SplitSupportPathList(std::wstring const& text)
{
    std::vector<std::wstring> paths;
    if (!text.empty())
        boost::algorithm::split(
            paths, text, [](wchar_t c) { return c == L';'; }, boost::algorithm::token_compress_on);
    return paths;
}

// Without Boost's own conversion: that follows the locale, which is none that knows
// every name and which the process's end takes away from its threads.
boost::filesystem::path AsPath(std::wstring const& text)
{
    if (Platform::AreFileNamesWide())
        return text;
    return WideToUtf8(text);
}

std::wstring JoinPath(std::wstring const& directory, std::wstring const& name)
{
    return GenericText(AsPath(directory) / AsPath(name));
}

std::wstring ParentPath(std::wstring const& path)
{
    return GenericText(AsPath(path).parent_path());
}

std::wstring FileName(std::wstring const& path) { return GenericText(AsPath(path).filename()); }

} // namespace Halvorix::SSOServices
