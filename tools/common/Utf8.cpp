#include "Utf8.h"

#include <iterator>

#include <boost/locale/utf.hpp>

namespace Halvorix::Tools {

namespace {

namespace utf = boost::locale::utf;

constexpr utf::code_point Replacement = 0xFFFD;

template <class Unit>
std::string Converted(std::basic_string<Unit> const& text)
{
    std::string valid;
    for (auto at = text.begin(); at != text.end();) {
        auto next = at;
        utf::code_point point = utf::utf_traits<Unit>::decode(next, text.end());
        if (!utf::is_valid_codepoint(point)) {
            // One unit alone: what stands behind it may be whole.
            point = Replacement;
            next = at + 1;
        }
        utf::utf_traits<char>::encode(point, std::back_inserter(valid));
        at = next;
    }
    return valid;
}

} // namespace

std::string Utf8(std::wstring const& text) { return Converted(text); }

std::string Utf8(std::string const& text) { return Converted(text); }

std::string Utf8(std::filesystem::path const& path)
{
    return Converted(path.generic_string<std::filesystem::path::value_type>());
}

} // namespace Halvorix::Tools
