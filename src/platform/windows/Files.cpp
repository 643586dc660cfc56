#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/Platform.h"
#include "platform/windows/Windows.h"

namespace Halvorix::Platform {

namespace {

bool IsRegularFile(std::wstring const& file)
{
    HANDLE const opened =
        ::CreateFileW(file.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_EXISTING, 0, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return false;
    bool const isOnDisk = ::GetFileType(opened) == FILE_TYPE_DISK;
    ::CloseHandle(opened);
    return isOnDisk;
}

} // namespace

bool AreFileNamesWide() { return true; }

std::string ReadRegularFile(std::wstring const& file, std::ios::openmode mode)
{
    // First what it is: a reader would wait for a pipe or a device.
    if (!IsRegularFile(file))
        return {};
    std::ifstream stream(std::filesystem::path(file), mode | std::ios::in);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

} // namespace Halvorix::Platform
