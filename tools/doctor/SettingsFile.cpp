#include "doctor/SettingsFile.h"

#include <algorithm>

#include "common/Files.h"
#include "common/System.h"
#include "platform/Platform.h"

namespace Halvorix::Doctor {

namespace {

// Comments count as well: one with a quotation mark at most divides a text.
std::size_t LongestText(std::string const& json)
{
    std::size_t longest = 0;
    for (std::size_t begin = json.find('"'); begin != std::string::npos;) {
        std::size_t end = begin + 1;
        while (end < json.size() && json[end] != '"')
            end += json[end] == '\\' ? 2 : 1;
        if (end >= json.size())
            break;
        longest = std::max(longest, end - begin);
        begin = json.find('"', end + 1);
    }
    return longest;
}

// Each value takes the reader fifty times the room of its text; each path and each text
// is told in the report, and that takes more.
std::string LimitOf(std::string const& text)
{
    constexpr std::ptrdiff_t mostValues = 300000;
    constexpr std::ptrdiff_t mostPaths = 40000;
    constexpr std::size_t longestText = std::size_t{1} << 20U;
    if (std::count(text.begin(), text.end(), ',') > mostValues)
        return std::to_string(mostValues) + " values";
    if (std::count(text.begin(), text.end(), ';') > mostPaths)
        return std::to_string(mostPaths) + " semicolons";
    return LongestText(text) > longestText ? "1 MiB in one text" : std::string();
}

} // namespace

SettingsFile ReadSettingsFile(std::wstring const& file, std::ios::openmode mode)
{
    {
        Tools::OpenedFile const opened = Tools::OpenFile(Tools::FromWide(file));
        if (opened.bytes == nullptr)
            return {{}, opened.reason, false};
        if (opened.bytes->Size() > LargestSettings)
            return {{}, LargerThanSettings, true};
    }
    std::string text = Platform::ReadRegularFile(file, mode);
    std::string limit = LimitOf(text);
    if (!limit.empty())
        return {{}, "has more than " + limit + ", the limit of what is looked at", true};
    return {std::move(text), {}, false};
}

} // namespace Halvorix::Doctor
