#include "doctor/Text.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include <boost/locale/encoding_utf.hpp>

#include "common/Utf8.h"
#include "discovery/PathVariables.h"

namespace Halvorix::Doctor {

std::string Shown(std::wstring const& text) { return Tools::Utf8(text); }

std::wstring Wide(std::string const& text)
{
    return boost::locale::conv::utf_to_utf<wchar_t>(text);
}

std::string Lower(std::string text)
{
    for (char& unit : text)
        if (unit >= 'A' && unit <= 'Z')
            unit = static_cast<char>(unit - 'A' + 'a');
    return text;
}

std::string InWords(std::string const& key)
{
    std::size_t const open = key.find('[');
    std::size_t const close = key.find(']', std::min(open, key.size()));
    if (close == std::string::npos || close == open + 1 ||
        key.find_first_not_of("0123456789", open + 1) != close || close - open > 10)
        return key;
    std::string const number = std::to_string(std::stoull(key.substr(open + 1)) + 1);
    std::string const list = "entry " + number + " of " + key.substr(0, open);
    return close + 2 < key.size() ? list + ": " + InWords(key.substr(close + 2)) : list;
}

bool IsPathVariable(std::string const& name)
{
    return std::any_of(std::begin(PathVariables), std::end(PathVariables),
                       [&name](char const* known) { return Lower(name) == Lower(known); });
}

std::vector<std::string> VariablesIn(std::wstring const& text)
{
    std::vector<std::string> names;
    std::wstring copy = text;
    SSOServices::ExpandVariables(copy, [&names](std::wstring const& name, std::wstring&) {
        names.push_back(Shown(name));
        return false;
    });
    return names;
}

std::string BeginningOf(SSOServices::Message const& message)
{
    std::wstring const text = message.text;
    return Shown(text.substr(0, text.find(L'%')));
}

std::string Listed(std::vector<std::string> const& items, char const* separator)
{
    constexpr std::size_t most = 3;
    std::string list;
    for (std::size_t i = 0; i < std::min(items.size(), most); ++i)
        list += (i == 0 ? "" : separator) + items[i];
    return items.size() <= most
               ? list
               : list + separator + "and " + std::to_string(items.size() - most) + " more";
}

std::string ListedVariables(std::vector<std::string> const& names)
{
    std::vector<std::string> spelled;
    spelled.reserve(names.size());
    for (std::string const& name : names)
        spelled.push_back("%" + name + "%");
    return Listed(spelled, ", ");
}

} // namespace Halvorix::Doctor
