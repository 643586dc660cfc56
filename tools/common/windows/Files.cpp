#include "common/Files.h"

#include <algorithm>
#include <string>

#include "common/Utf8.h"
#include "platform/Platform.h"
#include "platform/windows/Windows.h"

namespace Halvorix::Tools {

namespace {

class FileSource : public ByteSource {
public:
    explicit FileSource(HANDLE fileHandle) : handle(fileHandle) {}
    ~FileSource() override { ::CloseHandle(handle); }
    FileSource(FileSource const&) = delete;
    FileSource& operator=(FileSource const&) = delete;

    std::uint64_t size = 0;
    std::uint64_t Size() const override { return size; }

    bool Read(std::uint64_t offset, char* to, std::size_t count) override
    {
        while (count > 0) {
            OVERLAPPED place{};
            place.Offset = static_cast<DWORD>(offset);
            place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
            DWORD got = 0;
            if (::ReadFile(handle, to, static_cast<DWORD>(count), &got, &place) == FALSE ||
                got == 0)
                return false; // shorter by now
            to += got;
            offset += got;
            count -= got;
        }
        return true;
    }

private:
    HANDLE handle;
};

// By its name, whatever folder and extension it has: to open a device may do anything.
bool NamesDevice(std::filesystem::path const& file)
{
    std::wstring const whole = file.native();
    if (whole.rfind(L"\\\\.\\", 0) == 0 || whole.rfind(L"//./", 0) == 0)
        return true;
    std::wstring name = whole.substr(whole.find_last_of(L"\\/") + 1);
    name.erase(0, name.size() > 2 && name[1] == L':' ? 2 : 0);
    name.resize(std::min(name.find_first_of(L".:"), name.size()));
    name.resize(name.find_last_not_of(L' ') + 1);
    for (wchar_t& unit : name)
        if (unit >= L'a' && unit <= L'z')
            unit = static_cast<wchar_t>(unit - L'a' + L'A');
    for (wchar_t const* const device : {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"})
        if (name == device)
            return true;
    std::wstring const beginning = name.substr(0, 3);
    return name.size() == 4 && (beginning == L"COM" || beginning == L"LPT") &&
           std::wstring_view(L"123456789\u00B9\u00B2\u00B3").find(name[3]) != std::wstring::npos;
}

OpenedFile NotOpened(std::filesystem::path const& file)
{
    DWORD const error = ::GetLastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
        error == ERROR_INVALID_NAME)
        return {nullptr, "does not exist"};
    std::string text = Utf8(Platform::ErrorText(error));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    text.insert(0, "cannot be opened: ");
    if (error == ERROR_SHARING_VIOLATION)
        return {nullptr, text, false, "end what holds the file " + Utf8(file)};
    if (error != ERROR_ACCESS_DENIED)
        return {nullptr, text};
    std::string right = "to read " + Utf8(file);
    return {nullptr, text, false, "allow the program's user " + right, right};
}

} // namespace

OpenedFile OpenFile(std::filesystem::path const& file)
{
    if (NamesDevice(file))
        return {nullptr, "is a device, not a file"};
    DWORD const attributes = ::GetFileAttributesW(file.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return NotOpened(file);
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return {nullptr, "is a folder, not a file"};
    if ((attributes & FILE_ATTRIBUTE_DEVICE) != 0)
        return {nullptr, "is a device, not a file"};
    HANDLE const handle = ::CreateFileW(file.c_str(), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return NotOpened(file);
    auto source = std::make_unique<FileSource>(handle);
    if (::GetFileType(handle) != FILE_TYPE_DISK)
        return {nullptr, "is a device, not a file"};
    LARGE_INTEGER size{};
    if (::GetFileSizeEx(handle, &size) == FALSE)
        return NotOpened(file);
    source->size = static_cast<std::uint64_t>(size.QuadPart);
    return {std::move(source), {}};
}

} // namespace Halvorix::Tools
