#include "doctor/Location.h"

#include "platform/windows/Windows.h"

namespace Halvorix::Doctor {

namespace {

constexpr char const* InstallAgain = "install the server application again";

LocationFlaw FlawOfValue(HKEY key)
{
    // The library has room for no more.
    wchar_t text[512] = {};
    DWORD size = sizeof(text);
    DWORD type = REG_NONE;
    LSTATUS const status =
        ::RegQueryValueExW(key, L"Location", nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
    if (status == ERROR_MORE_DATA)
        return {"is longer than 511 characters, the most that the library reads",
                "install the server application in a folder with a shorter path"};
    if (status == ERROR_FILE_NOT_FOUND)
        return {"is not in its key", InstallAgain};
    // The library asks for no type: a text is read out of any that can hold one.
    bool const holdsText =
        type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ || type == REG_BINARY;
    if (status == ERROR_SUCCESS && !holdsText)
        return {"is not a text", InstallAgain};
    return {};
}

} // namespace

LocationFlaw FlawOfLocation()
{
    Platform::LocationKey key = nullptr;
    Platform::ErrorCode const error = OpenLocation(key);
    if (error == ERROR_ACCESS_DENIED)
        return {"cannot be read: access is denied",
                "allow the program's user to read its registry key"};
    if (error != 0)
        return {};
    LocationFlaw flaw = FlawOfValue(static_cast<HKEY>(key));
    Platform::CloseLocationKey(key);
    return flaw;
}

} // namespace Halvorix::Doctor
