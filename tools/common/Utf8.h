#pragma once

#include <filesystem>
#include <string>

namespace Halvorix::Tools {

// UTF-8 that any reader takes: what is no character, such as half a surrogate pair,
// becomes U+FFFD.

std::string Utf8(std::wstring const& text);
std::string Utf8(std::string const& text);
/// With forward slashes.
std::string Utf8(std::filesystem::path const& path);

/// Control characters, those that turn the direction of writing or take no room, and the
/// separators of lines and paragraphs as JSON spells them; the rest as valid UTF-8. Line ends stay.
std::string Escaped(std::string const& text);

} // namespace Halvorix::Tools
