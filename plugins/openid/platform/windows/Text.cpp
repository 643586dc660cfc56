#include "openid/platform/windows/Windows.h"

namespace Halvorix::OpenId {

std::wstring WideFrom(std::string_view text)
{
    int const size = static_cast<int>(text.size());
    std::wstring wide(
        static_cast<std::size_t>(::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)),
        L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(),
                          static_cast<int>(wide.size()));
    return wide;
}

std::string Utf8From(std::wstring_view text)
{
    int const size = static_cast<int>(text.size());
    std::string narrow(static_cast<std::size_t>(::WideCharToMultiByte(
                           CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr)),
                       '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, narrow.data(),
                          static_cast<int>(narrow.size()), nullptr, nullptr);
    return narrow;
}

std::string ErrorText(DWORD error, HMODULE module)
{
    wchar_t text[512] = {};
    DWORD const source = module != nullptr ? FORMAT_MESSAGE_FROM_HMODULE : 0;
    DWORD const size =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | source,
                         module, error, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), text,
                         static_cast<DWORD>(std::size(text)), nullptr);
    std::wstring_view words(text, size);
    while (!words.empty() && (words.back() <= L' ' || words.back() == L'.'))
        words.remove_suffix(1);
    return words.empty() ? "error " + std::to_string(error) : Utf8From(words);
}

} // namespace Halvorix::OpenId
