#pragma once

#include <string>

#include <json/value.h>

#include "openid/protocol/Provider.h"

/// @file
/// Texts on their way to a host and from it. Hosts write and read wide text, we UTF-8.

namespace Halvorix::OpenId {

/// Fills a host's buffer by the convention of the text getters: null asks for the length, a text
/// too long is cut, a terminator always follows.
int CopyText(std::string const& text, wchar_t* buffer, int capacity);
int CopyText(std::string const& text, char* buffer, int capacity);
/// The same for what is of no use in parts, such as a token: whole, or the empty text and 0.
int CopyWhole(Secret const& text, wchar_t* buffer, int capacity);

/// A copy for the other side to release with delete[].
wchar_t* NewWideText(std::string const& text);
char* NewText(std::string const& text);

/// A text that may come as null, which means empty.
std::string Given(wchar_t const* text);

std::string WriteJson(Json::Value const& json);

} // namespace Halvorix::OpenId
