#include "Text.h"

#include <boost/locale/encoding_utf.hpp>

#include "../common/Utf8.h"
#include "discovery/PathVariables.h"

namespace Halvorix::Doctor {

std::string Shown(std::wstring const& text) { return Tools::Utf8(text); }

std::wstring Wide(std::string const& text)
{
    return boost::locale::conv::utf_to_utf<wchar_t>(text);
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

std::string ListedVariables(std::vector<std::string> const& names)
{
    std::string list;
    for (std::string const& name : names)
        list += (list.empty() ? "%" : ", %") + name + "%";
    return list;
}

} // namespace Halvorix::Doctor
