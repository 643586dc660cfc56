#pragma once

#include <string>

namespace Halvorix::Platform {

/// The system's narrow texts are UTF-8; a byte that is none of a character's becomes
/// U+FFFD, so that no name and no error text can make a conversion fail.
std::wstring FromSystem(std::string const& text);

/// Each unit by itself, half a surrogate pair too: a name that the system does not
/// know must not become another one.
std::string ToSystem(std::wstring const& text);

} // namespace Halvorix::Platform
