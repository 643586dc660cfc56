#include "discovery/PathText.h"

#include <algorithm>
#include <set>

#include <boost/algorithm/string/split.hpp>

#include "platform/Platform.h"
#include "support/TextConversion.h"

namespace Halvorix::SSOServices {

std::wstring NormalizePath(std::wstring const& path)
{
    std::wstring text = path;
    std::replace(text.begin(), text.end(), L'\\', L'/');
    auto const areSlashes = [](wchar_t a, wchar_t b) { return a == L'/' && b == L'/'; };
    text.erase(std::unique(text.begin(), text.end(), areSlashes), text.end());
    // Now each end has one slash at most.
    if (!text.empty() && text.front() == L'/' && !Platform::LeadingSlashIsRoot())
        text.erase(0, 1);
    if (!text.empty() && text.back() == L'/' && !Platform::IsRootPath(text))
        text.pop_back();
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

// Without Boost's own conversion. That one follows the path locale, which may not know all
// characters, and which the end of the process destroys while other threads still use it.
boost::filesystem::path AsPath(std::wstring const& text)
{
    if (Platform::AreFileNamesWide())
        return text;
    return WideToUtf8(text);
}

std::wstring GenericText(boost::filesystem::path const& path)
{
    return Platform::AreFileNamesWide() ? path.generic_wstring()
                                        : Utf8ToWide(path.generic_string());
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
