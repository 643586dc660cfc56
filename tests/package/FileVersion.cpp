// FileVersion <module>: the version resource of a Windows module as the system
// reads it, one field a line.

#include <cstdio>
#include <vector>

#include <windows.h>

int main(int count, char** arguments)
{
    if (count != 2)
        return 2;
    std::vector<char> data(GetFileVersionInfoSizeA(arguments[1], nullptr));
    auto const size = static_cast<DWORD>(data.size());
    if (data.empty() || GetFileVersionInfoA(arguments[1], 0, size, data.data()) == FALSE)
        return 1;

    void* value = nullptr;
    UINT length = 0;
    if (VerQueryValueA(data.data(), "\\", &value, &length) == FALSE)
        return 1;
    auto const& fixed = *static_cast<VS_FIXEDFILEINFO const*>(value);
    for (auto const& [high, low] : {std::pair(fixed.dwFileVersionMS, fixed.dwFileVersionLS),
                                    std::pair(fixed.dwProductVersionMS, fixed.dwProductVersionLS)})
        std::printf("%d.%d.%d.%d\n", HIWORD(high), LOWORD(high), HIWORD(low), LOWORD(low));

    for (char const* field :
         {"ProductName", "FileDescription", "LegalCopyright", "OriginalFilename"}) {
        char path[100];
        std::snprintf(path, sizeof path, "\\StringFileInfo\\040904B0\\%s", field);
        if (VerQueryValueA(data.data(), path, &value, &length) == FALSE)
            return 1;
        std::printf("%s: %s\n", field, static_cast<char const*>(value));
    }
}
