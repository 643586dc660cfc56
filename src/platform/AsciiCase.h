#pragma once

#include <string>

namespace Halvorix::Platform {

/// An ASCII capital as a small letter, anything else as it is. Unlike the system's functions
/// this does not depend on the host's locale.
template <class Char>
constexpr Char LowerAscii(Char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<Char>(c - 'A' + 'a') : c;
}

/// -1, 0 or 1, unit by unit, without regard to the case of ASCII letters.
template <class Char>
int CompareIgnoringAsciiCase(Char const* left, Char const* right)
{
    while (*left != Char{} && LowerAscii(*left) == LowerAscii(*right)) {
        ++left;
        ++right;
    }
    auto const l = std::char_traits<Char>::to_int_type(LowerAscii(*left));
    auto const r = std::char_traits<Char>::to_int_type(LowerAscii(*right));
    return l < r ? -1 : l > r ? 1 : 0;
}

} // namespace Halvorix::Platform
