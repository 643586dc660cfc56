#pragma once

#include <cstdint>
#include <string>

namespace Halvorix::HxSSO {

/// Valid UTF-8 of a text of the library.
std::string ToUtf8(std::wstring const& text);
/// For the library.
std::wstring ToWide(std::string const& utf8);

/// Seconds since 1970 as 2026-11-23T03:12:54Z.
std::string AsTime(std::int64_t seconds);
std::int64_t Now();

/// Overwrites what a text holds, and makes it empty.
void Wipe(std::string& text);
void Wipe(std::wstring& text);

/// A text that is wiped at its end. It is reserved once, since a text that grows leaves copies.
class Secret {
public:
    explicit Secret(std::size_t capacity) { text.reserve(capacity); }
    ~Secret() { Wipe(text); }
    Secret(Secret const&) = delete;
    Secret& operator=(Secret const&) = delete;

    std::string text;
};

/// Appends a text of the library, and leaves no copy of it elsewhere. The room it may take is
/// MostUtf8 bytes a character.
void AppendUtf8(std::string& to, wchar_t const* text, std::size_t length);
constexpr std::size_t MostUtf8 = 4;

} // namespace Halvorix::HxSSO
