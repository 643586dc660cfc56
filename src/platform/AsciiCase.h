#pragma once

namespace Halvorix::Platform {

/// Small letters for the capitals of ASCII; all else stays. Unlike the comparisons of the
/// systems' runtimes it does not follow the host's locale.
template <class Char>
constexpr Char LowerAscii(Char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<Char>(c - 'A' + 'a') : c;
}

} // namespace Halvorix::Platform
