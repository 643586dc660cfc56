#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <type_traits>
#include <vector>

// How a fuzzer says what its property is and how it was violated. The program
// ends there: a fuzzer then keeps the input.
namespace Fuzz {

/// As it can be printed: what is not visible ASCII as a number.
template <class Unit>
std::string Shown(std::basic_string<Unit> const& text)
{
    std::string shown = "\"";
    for (Unit const unit : text) {
        auto const value = static_cast<std::make_unsigned_t<Unit>>(unit);
        if (value >= 0x20 && value < 0x7F)
            shown += static_cast<char>(value);
        else
            shown += '<' + std::to_string(value) + '>';
    }
    return shown + '"';
}

template <class Unit>
std::string Shown(std::vector<std::basic_string<Unit>> const& texts)
{
    std::string shown;
    for (std::basic_string<Unit> const& text : texts)
        shown += "\n    " + Shown(text);
    return shown.empty() ? "nothing" : shown;
}

inline std::string Shown(bool value) { return value ? "true" : "false"; }
inline std::string Shown(int value) { return std::to_string(value); }
inline std::string Shown(long long value) { return std::to_string(value); }
inline std::string Shown(std::size_t value) { return std::to_string(value); }

[[noreturn]] inline void Violated(char const* property, std::string const& how)
{
    std::cerr << "violated: " << property << '\n' << how << std::endl;
    std::abort();
}

template <class... Shows>
void Holds(bool condition, char const* property, Shows const&... about)
{
    if (!condition)
        Violated(property, (std::string() + ... + ("  with " + Shown(about) + '\n')));
}

template <class Value>
void Same(char const* property, Value const& expected, Value const& actual)
{
    if (!(expected == actual))
        Violated(property, "  expected " + Shown(expected) + "\n  got " + Shown(actual));
}

inline std::string AsText(std::uint8_t const* data, std::size_t size)
{
    return size == 0 ? std::string() : std::string(reinterpret_cast<char const*>(data), size);
}

} // namespace Fuzz

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);
