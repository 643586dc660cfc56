#include "platform/linux/NarrowText.h"

#include <iterator>

#include <boost/locale/utf.hpp>

#include "platform/CodePoint.h"

namespace Halvorix::Platform {

// A byte that belongs to no character is replaced and not left out: without it the text
// would name another file.
std::wstring FromSystem(std::string const& text)
{
    using Utf8 = boost::locale::utf::utf_traits<char>;
    std::wstring wide;
    for (char const* at = text.data(); at != text.data() + text.size();) {
        char const* next = at;
        boost::locale::utf::code_point const value = Utf8::decode(next, text.data() + text.size());
        bool const isCharacter =
            value != boost::locale::utf::illegal && value != boost::locale::utf::incomplete;
        wide += static_cast<wchar_t>(isCharacter ? value : ReplacementCharacter);
        at = isCharacter ? next : at + 1;
    }
    return wide;
}

std::string ToSystem(std::wstring const& text)
{
    std::string narrow;
    for (wchar_t const unit : text)
        boost::locale::utf::utf_traits<char>::encode(CodePoint(unit), std::back_inserter(narrow));
    return narrow;
}

} // namespace Halvorix::Platform
