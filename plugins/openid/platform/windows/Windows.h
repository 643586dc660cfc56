#pragma once

// <windows.h> without what this plugin does not use.
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string>
#include <string_view>
#include <utility>

namespace Halvorix::OpenId {

/// UTF-8 as the system's wide text; U+FFFD for what is not valid.
std::wstring WideFrom(std::string_view text);
/// The way back.
std::string Utf8From(std::wstring_view text);

/// The system's words for an error, or those of one of its modules; the number if it has none.
std::string ErrorText(DWORD error, HMODULE module = nullptr);

/// An open handle, closed at the end.
class Handle {
public:
    explicit Handle(HANDLE aValue = INVALID_HANDLE_VALUE) : value(aValue) {}
    Handle(Handle&& other) noexcept : value(std::exchange(other.value, INVALID_HANDLE_VALUE)) {}
    ~Handle()
    {
        if (*this)
            ::CloseHandle(value);
    }
    Handle& operator=(Handle&&) = delete;

    explicit operator bool() const { return value != INVALID_HANDLE_VALUE && value != nullptr; }
    HANDLE Get() const { return value; }

private:
    HANDLE value;
};

} // namespace Halvorix::OpenId
