#pragma once

#include <string>
#include <string_view>

namespace Halvorix::SSOServices {

/// UTF-8 to wide text, one unit per character: with 16-bit units a value above
/// 0xFFFF keeps its low 16 bits. Text that is not UTF-8 gives the empty text.
/// Overlong forms and forms of up to six bytes are read.
std::wstring Utf8ToWide(std::string_view text);

/// Wide text to UTF-8, each unit on its own: a surrogate becomes three bytes.
std::string WideToUtf8(std::wstring const& text);

} // namespace Halvorix::SSOServices
