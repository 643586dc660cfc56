#pragma once

#include <string>

namespace Json {
class Value;
}

namespace Halvorix::SSOServices {

/// False for null, for the empty text and for text that is not valid JSON. Comments and
/// what follows the first value are ignored; the last of equal keys wins.
bool ParseJsonDocument(char const* text, Json::Value& value);

/// The wide form of what asString gives, without its copy of a text.
std::wstring WideText(Json::Value const& value);

/// The value as a styled document.
std::string WriteJsonDocument(Json::Value const& value);

} // namespace Halvorix::SSOServices
