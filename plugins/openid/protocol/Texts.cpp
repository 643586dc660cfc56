#include "openid/protocol/Texts.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <set>

#include <boost/locale/utf.hpp>

namespace Halvorix::OpenId {

namespace {

namespace utf = boost::locale::utf;

constexpr utf::code_point Replacement = 0xFFFD;

bool IsBad(utf::code_point point) { return point == utf::illegal || point == utf::incomplete; }

/// The next character of a text. One unit of what is not valid, so that nothing good is lost.
template <class Unit>
utf::code_point Next(Unit const*& at, Unit const* end)
{
    Unit const* const start = at;
    utf::code_point const point = utf::utf_traits<Unit>::decode(at, end);
    if (IsBad(point))
        at = start + 1;
    return point;
}

template <class To, class From>
std::basic_string<To> Converted(std::basic_string_view<From> text)
{
    std::basic_string<To> result;
    result.reserve(text.size());
    From const* at = text.data();
    From const* const end = at + text.size();
    while (at != end) {
        utf::code_point const point = Next(at, end);
        utf::utf_traits<To>::encode(IsBad(point) ? Replacement : point, std::back_inserter(result));
    }
    return result;
}

/// Ends a line, moves a terminal's cursor, or turns the order of what follows.
bool SteersOutput(utf::code_point point)
{
    return point < 0x20 || (point >= 0x7F && point < 0xA0) || point == 0x061C ||
           (point >= 0x200B && point <= 0x200F) || (point >= 0x2028 && point <= 0x202E) ||
           (point >= 0x2060 && point <= 0x206F) || point == 0xFEFF;
}

char Lower(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

} // namespace

bool EqualIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char one, char other) { return Lower(one) == Lower(other); });
}

bool EqualSecrets(std::string_view left, std::string_view right)
{
    if (left.size() != right.size())
        return false;
    unsigned volatile different = 0;
    for (std::size_t i = 0; i < left.size(); ++i)
        different = different | static_cast<unsigned char>(left[i] ^ right[i]);
    return different == 0;
}

std::string NormalScope(std::string_view scope)
{
    std::set<std::string_view> words;
    while (!scope.empty()) {
        std::size_t const end = std::min(scope.find(' '), scope.size());
        if (end > 0)
            words.insert(scope.substr(0, end));
        scope.remove_prefix(std::min(end + 1, scope.size()));
    }
    std::string result;
    for (std::string_view const word : words) {
        if (!result.empty())
            result += ' ';
        result += word;
    }
    return result;
}

std::string OneLine(std::string_view text)
{
    constexpr int limit = 200;
    std::string result;
    char const* at = text.data();
    char const* const end = at + text.size();
    int count = 0;
    while (at != end) {
        utf::code_point point = Next(at, end);
        if (count == limit)
            return result + "...";
        if (IsBad(point))
            point = Replacement;
        if (SteersOutput(point)) {
            // What was several lines reads as one.
            if (result.empty() || result.back() == ' ')
                continue;
            point = ' ';
        }
        utf::utf_traits<char>::encode(point, std::back_inserter(result));
        ++count;
    }
    while (!result.empty() && result.back() == ' ')
        result.pop_back();
    return result;
}

bool IsUtf8(std::string_view text)
{
    char const* at = text.data();
    char const* const end = at + text.size();
    while (at != end)
        if (IsBad(Next(at, end)))
            return false;
    return true;
}

std::wstring ToWide(std::string_view utf8) { return Converted<wchar_t>(utf8); }

std::string ToUtf8(std::wstring_view text) { return Converted<char>(text); }

} // namespace Halvorix::OpenId
