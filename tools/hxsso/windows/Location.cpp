#include "hxsso/Location.h"

#include <windows.h>

#include <system_error>

#include "hxsso/Text.h"

namespace Halvorix::HxSSO {

namespace {

constexpr wchar_t KeyName[] = L"SOFTWARE\\Halvorix\\Halvorix HxSSO";
constexpr wchar_t KeyAbove[] = L"SOFTWARE\\Halvorix";

// Programs of 32 bits look there, too, where they have no value of their own.
constexpr REGSAM View = KEY_WOW64_64KEY;

std::string ErrorText(LSTATUS error)
{
    return std::error_code(static_cast<int>(error), std::system_category()).message();
}

bool IsEmpty(wchar_t const* name)
{
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, name, 0, KEY_READ | View, &key) != ERROR_SUCCESS)
        return false;
    DWORD keys = 1, values = 1;
    LSTATUS const error = ::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr,
                                             nullptr, &values, nullptr, nullptr, nullptr, nullptr);
    ::RegCloseKey(key);
    return error == ERROR_SUCCESS && keys == 0 && values == 0;
}

} // namespace

std::string PlaceOfLocation()
{
    return "the registry value Location under HKLM\\" + ToUtf8(KeyName);
}

std::optional<std::string> ReadLocation()
{
    // With the variables that are in it, as the library gets it.
    DWORD const flags = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND | RRF_SUBKEY_WOW6464KEY;
    DWORD size = 0;
    if (::RegGetValueW(HKEY_LOCAL_MACHINE, KeyName, L"Location", flags, nullptr, nullptr, &size) !=
        ERROR_SUCCESS)
        return std::nullopt;
    std::wstring text(size / sizeof(wchar_t) + 1, L'\0');
    size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (::RegGetValueW(HKEY_LOCAL_MACHINE, KeyName, L"Location", flags, nullptr, text.data(),
                       &size) != ERROR_SUCCESS)
        return std::nullopt;
    return ToUtf8(text.c_str());
}

bool WriteLocation(std::filesystem::path const& folder, std::string& reason)
{
    HKEY key = nullptr;
    LSTATUS error = ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, KeyName, 0, nullptr, 0,
                                      KEY_SET_VALUE | View, nullptr, &key, nullptr);
    if (error == ERROR_SUCCESS) {
        std::wstring const& text = folder.native();
        error = ::RegSetValueExW(key, L"Location", 0, REG_SZ,
                                 reinterpret_cast<BYTE const*>(text.c_str()),
                                 static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
        ::RegCloseKey(key);
    }
    reason = error == ERROR_SUCCESS ? std::string() : ErrorText(error);
    return error == ERROR_SUCCESS;
}

bool RemoveLocation(std::string& reason)
{
    HKEY key = nullptr;
    LSTATUS error = ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, KeyName, 0, KEY_SET_VALUE | View, &key);
    if (error == ERROR_SUCCESS) {
        error = ::RegDeleteValueW(key, L"Location");
        ::RegCloseKey(key);
    }
    if (error != ERROR_SUCCESS) {
        reason = ErrorText(error);
        return false;
    }
    // What others keep there stays.
    for (wchar_t const* const name : {KeyName, KeyAbove})
        if (IsEmpty(name))
            ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, name, View, 0);
    return true;
}

} // namespace Halvorix::HxSSO
