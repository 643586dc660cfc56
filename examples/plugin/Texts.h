#pragma once

#include <string>

#include <json/value.h>

namespace Sample {

/// Fills a host's buffer by the convention of the text getters: null asks for
/// the length, a text too long is cut, a terminator always follows.
int CopyText(std::wstring const& text, wchar_t* buffer, int capacity);
int CopyText(std::string const& text, char* buffer, int capacity);

/// A copy for the other side to release with delete[].
wchar_t* NewText(std::wstring const& text);
char* NewText(std::string const& text);

/// A text that may come as null, which means empty.
std::wstring Given(wchar_t const* text);

std::string ToUtf8(std::wstring const& text);
std::wstring ToWide(std::string const& text);

/// Null for null and for what is no JSON.
Json::Value ReadJson(char const* text);
std::string WriteJson(Json::Value const& json);

} // namespace Sample
