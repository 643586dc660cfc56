#pragma once

#include <string>

// UTF-8, base64 and wide text by tables, apart from the library's own code.
namespace Fuzz::Reference {

/// The empty text for what cannot be decoded.
std::wstring Widen(std::string const& text);
/// Whether a unit is the number of a character; lone halves of pairs count as one.
bool IsCharacter(wchar_t unit);
/// What is no character becomes U+FFFD.
std::string Narrow(std::wstring const& text);

std::string Encode64(std::string const& bytes);

enum class Decoding { Done, NotInAlphabet, MorePaddingThanBytes };
Decoding Decode64(std::string const& text, std::string& bytes);

} // namespace Fuzz::Reference
