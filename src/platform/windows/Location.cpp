#include "platform/Platform.h"
#include "platform/windows/Windows.h"

namespace Halvorix::Platform {

ErrorCode OpenLocationKey(LocationView view, LocationKey& key)
{
    REGSAM const access = view == LocationView::Native64 ? KEY_READ | KEY_WOW64_64KEY : KEY_READ;
    HKEY opened = nullptr;
    LSTATUS const result = ::RegOpenKeyExW(
        HKEY_LOCAL_MACHINE, L"SOFTWARE\\Halvorix\\Halvorix HxSSO", 0, access, &opened);
    key = opened;
    return static_cast<ErrorCode>(result);
}

bool ReadLocation(LocationKey key, std::wstring& location)
{
    // The value may be of any type, of odd size and unterminated: zeros behind
    // the stated size end the text in every case.
    constexpr DWORD statedSize = 1024;
    wchar_t text[statedSize / sizeof(wchar_t) + 1] = {};
    DWORD size = statedSize;
    if (::RegQueryValueExW(static_cast<HKEY>(key), L"Location", nullptr, nullptr,
                           reinterpret_cast<BYTE*>(text), &size) != ERROR_SUCCESS)
        return false;
    location = text;
    return true;
}

void CloseLocationKey(LocationKey key) { ::RegCloseKey(static_cast<HKEY>(key)); }

} // namespace Halvorix::Platform
