#pragma once

#include <string>

namespace Halvorix::Platform {

/// The system's narrow texts are UTF-8. A byte that belongs to no character becomes U+FFFD,
/// so that no file name or error text can make the conversion fail.
std::wstring FromSystem(std::string const& text);

/// Each unit by itself, half a surrogate pair too: a name that the system does not
/// know must not become another one.
std::string ToSystem(std::wstring const& text);

} // namespace Halvorix::Platform
