#pragma once

#include <cstdint>
#include <string>

namespace Halvorix::Platform {

inline constexpr std::uint32_t HighestCodePoint = 0x10FFFF;
inline constexpr std::uint32_t ReplacementCharacter = 0xFFFD;

/// Of one unit by itself; a value that is not a character becomes the replacement character.
inline std::uint32_t CodePoint(wchar_t unit)
{
    std::uint32_t const value = std::char_traits<wchar_t>::to_int_type(unit);
    return value > HighestCodePoint ? ReplacementCharacter : value;
}

} // namespace Halvorix::Platform
