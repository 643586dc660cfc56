#include "openid/platform/Files.h"

#include "openid/platform/SecretBytes.h"
#include "openid/platform/windows/Windows.h"

#include <objbase.h>
#include <shlobj.h>

#include <algorithm>
#include <cstring>
#include <thread>
#include <vector>

namespace Halvorix::OpenId {

namespace {

using std::filesystem::path;
using namespace std::chrono_literals;

// FileRenameInfoEx, which the headers of MinGW-w64 hide.
constexpr auto RenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
constexpr DWORD AnybodyElse = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
// A lock file with another in its place would keep nobody out.
constexpr DWORD NobodyRemoves = FILE_SHARE_READ | FILE_SHARE_WRITE;

/// The name in the form that may be longer than 260 characters, and in which "NUL" is a file.
std::wstring LongName(path const& file)
{
    std::wstring whole(::GetFullPathNameW(file.c_str(), 0, nullptr, nullptr), L'\0');
    whole.resize(
        ::GetFullPathNameW(file.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr));
    if (whole.compare(0, 4, L"\\\\?\\") == 0 || whole.compare(0, 4, L"\\\\.\\") == 0)
        return whole;
    if (whole.compare(0, 2, L"\\\\") == 0)
        return L"\\\\?\\UNC\\" + whole.substr(2);
    return L"\\\\?\\" + whole;
}

Handle Open(std::wstring const& name, DWORD access, DWORD sharing, DWORD disposition)
{
    return Handle(::CreateFileW(name.c_str(), access, sharing, nullptr, disposition,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool IsMissing(DWORD error)
{
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

/// Somebody else, such as a scanner for viruses, has it open for a moment.
bool IsPassing(DWORD error)
{
    return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED ||
           error == ERROR_LOCK_VIOLATION;
}

/// Tries something until it works or fails for a reason that does not pass.
template <class Action>
bool Persistently(Action action, std::chrono::milliseconds limit = 2s)
{
    auto const deadline = std::chrono::steady_clock::now() + limit;
    while (!action()) {
        DWORD const error = ::GetLastError();
        if (!IsPassing(error) || std::chrono::steady_clock::now() >= deadline) {
            ::SetLastError(error);
            return false;
        }
        std::this_thread::sleep_for(10ms);
    }
    return true;
}

/// Waits for whoever has the file open for a moment.
Handle OpenPersistently(std::wstring const& name, DWORD access, DWORD sharing, DWORD disposition,
                        std::chrono::milliseconds limit = 2s)
{
    HANDLE opened = INVALID_HANDLE_VALUE;
    Persistently(
        [&] {
            opened = ::CreateFileW(name.c_str(), access, sharing, nullptr, disposition,
                                   FILE_ATTRIBUTE_NORMAL, nullptr);
            return opened != INVALID_HANDLE_VALUE;
        },
        limit);
    return Handle(opened);
}

FileContent Refused(std::string reason)
{
    return {FileContent::State::Refused, {}, std::move(reason)};
}

FileContent Failed(DWORD error) { return {FileContent::State::Failed, {}, ErrorText(error)}; }

bool WriteAll(Handle const& file, std::string const& bytes)
{
    DWORD written = 0;
    return ::WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                       nullptr) &&
           written == bytes.size();
}

bool IsFolder(std::wstring const& name)
{
    DWORD const attributes = ::GetFileAttributesW(name.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool MakeFolders(path const& folder)
{
    std::wstring const name = LongName(folder);
    if (IsFolder(name) || ::CreateDirectoryW(name.c_str(), nullptr))
        return true;
    path const above = folder.parent_path();
    if (::GetLastError() != ERROR_PATH_NOT_FOUND || above == folder || !MakeFolders(above))
        return IsFolder(name);
    // Another process may make it meanwhile.
    return ::CreateDirectoryW(name.c_str(), nullptr) || IsFolder(name);
}

bool Move(std::wstring const& from, std::wstring const& to)
{
    return Persistently([&] {
        return ::MoveFileExW(from.c_str(), to.c_str(),
                             MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE;
    });
}

/// Gives an open file the name of another one, even while somebody reads that. Not every file
/// system can, nor Wine.
bool MoveOverOpened(Handle const& file, std::wstring const& to)
{
    std::size_t const size = to.size() * sizeof(wchar_t);
    std::vector<char> memory(sizeof(FILE_RENAME_INFO) + size);
    auto* const info = reinterpret_cast<FILE_RENAME_INFO*>(memory.data());
    info->Flags = FILE_RENAME_FLAG_REPLACE_IF_EXISTS | FILE_RENAME_FLAG_POSIX_SEMANTICS;
    info->FileNameLength = static_cast<DWORD>(size);
    std::memcpy(info->FileName, to.data(), size);
    return ::SetFileInformationByHandle(file.Get(), RenameInfoEx, info,
                                        static_cast<DWORD>(memory.size())) != FALSE;
}

/// Whether nothing is left of its content.
bool Overwrite(std::wstring const& name)
{
    Handle const file = OpenPersistently(name, GENERIC_WRITE, AnybodyElse, OPEN_EXISTING);
    LARGE_INTEGER size{};
    if (!file || !::GetFileSizeEx(file.Get(), &size))
        return false;
    // What is larger than any of ours need not fit into memory.
    long long const erased = std::min<long long>(size.QuadPart, 16 << 20);
    return WriteAll(file, std::string(static_cast<std::size_t>(erased), '\0')) &&
           ::FlushFileBuffers(file.Get()) && erased == size.QuadPart;
}

/// A file of zeros may stay: somebody has it open, and finds nothing in it.
bool Erase(std::wstring const& name)
{
    bool const isEmptied = Overwrite(name);
    return Persistently([&] { return ::DeleteFileW(name.c_str()) != FALSE; }) ||
           IsMissing(::GetLastError()) || isEmptied;
}

path SystemFolder(KNOWNFOLDERID const& identifier)
{
    wchar_t* name = nullptr;
    HRESULT const result = ::SHGetKnownFolderPath(identifier, KF_FLAG_DONT_VERIFY, nullptr, &name);
    path const folder = SUCCEEDED(result) && name != nullptr ? path(name) : path();
    ::CoTaskMemFree(name);
    return folder;
}

/// The place of the byte that is locked for a whole file: behind all that is ever written.
OVERLAPPED LockedPlace()
{
    OVERLAPPED place{};
    place.OffsetHigh = 0x40000000;
    return place;
}

bool TakeLock(Handle const& file, std::chrono::milliseconds limit, std::string& reason)
{
    auto const deadline = std::chrono::steady_clock::now() + limit;
    // The system can wait for a lock without an end or not at all.
    for (auto pause = 1ms;; pause = std::min(pause * 2, 20ms)) {
        OVERLAPPED place = LockedPlace();
        if (::LockFileEx(file.Get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                         &place))
            return true;
        DWORD const error = ::GetLastError();
        if (error != ERROR_LOCK_VIOLATION && error != ERROR_IO_PENDING) {
            reason = ErrorText(error);
            return false;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            reason = "another process has held it for " + std::to_string(limit.count()) + " ms";
            return false;
        }
        std::this_thread::sleep_for(pause);
    }
}

/// Of a file that is locked; the end of its handle alone may take its time.
void Unlock(Handle const& file)
{
    OVERLAPPED place = LockedPlace();
    ::UnlockFileEx(file.Get(), 0, 1, 0, &place);
}

class SystemLock : public FileLock {
public:
    explicit SystemLock(Handle aFile) : file(std::move(aFile)) {}
    ~SystemLock() override { Unlock(file); }
    SystemLock(SystemLock const&) = delete;
    SystemLock& operator=(SystemLock const&) = delete;

private:
    Handle const file;
};

} // namespace

path ModuleFolder()
{
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<wchar_t const*>(&ModuleFolder), &module);
    std::wstring name(260, L'\0');
    for (;;) {
        DWORD const size =
            ::GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
        if (size < name.size())
            return path(name.substr(0, size)).parent_path();
        name.resize(name.size() * 2); // it was cut
    }
}

path KnownFolder(std::string const& name)
{
    if (name == "ProgramFiles")
        return SystemFolder(FOLDERID_ProgramFiles);
    if (name == "AppData")
        return SystemFolder(FOLDERID_RoamingAppData);
    if (name == "LocalAppData")
        return SystemFolder(FOLDERID_LocalAppData);
    if (name == "Home")
        return SystemFolder(FOLDERID_Profile);
    return {};
}

std::string PathText(path const& file) { return Utf8From(file.native()); }

path PathFromText(std::string const& text) { return WideFrom(text); }

FileContent ReadFile(path const& file, std::size_t limit)
{
    Handle const opened =
        OpenPersistently(LongName(file), GENERIC_READ, AnybodyElse, OPEN_EXISTING, 200ms);
    DWORD const error = ::GetLastError();
    if (!opened && IsMissing(error))
        return {};
    if (!opened && IsFolder(LongName(file)))
        return Refused("it is not a regular file");
    // A file that is about to be removed has the same error as one without the right to read it.
    if (!opened)
        return Failed(error);
    if (::GetFileType(opened.Get()) != FILE_TYPE_DISK)
        return Refused("it is not a regular file");
    FileContent content{FileContent::State::Read, {}, {}};
    std::string piece(16384, '\0');
    WipeAtEnd const wiping(piece);
    for (;;) {
        DWORD count = 0;
        bool const isRead = ::ReadFile(opened.Get(), piece.data(), static_cast<DWORD>(piece.size()),
                                       &count, nullptr) != FALSE;
        if (isRead && count == 0)
            return content;
        if (!isRead || count > limit - content.bytes.size()) {
            DWORD const failure = ::GetLastError();
            Wipe(content.bytes);
            return isRead ? Refused("it is larger than " + std::to_string(limit) + " bytes")
                          : Failed(failure);
        }
        AppendSecret(content.bytes, piece.data(), count);
    }
}

FileContent ReadPrivateFile(path const& file, std::size_t limit) { return ReadFile(file, limit); }

bool PreparePrivateFolder(path const& folder, std::string& reason)
{
    if (MakeFolders(folder))
        return true;
    reason = ErrorText(::GetLastError());
    return false;
}

bool ReplacePrivateFile(path const& file, std::string const& bytes, std::string& reason)
{
    std::wstring const name = LongName(file);
    std::wstring const replacement = name + L".new";
    // Nobody else may write to it until it has the other name.
    Handle const written = OpenPersistently(replacement, GENERIC_WRITE | DELETE,
                                            FILE_SHARE_READ | FILE_SHARE_DELETE, CREATE_ALWAYS);
    // The other name is there for good only when it is written, too.
    if (written && WriteAll(written, bytes) && ::FlushFileBuffers(written.Get()) &&
        (MoveOverOpened(written, name) ? ::FlushFileBuffers(written.Get()) != FALSE
                                       : Move(replacement, name)))
        return true;
    reason = ErrorText(::GetLastError());
    return false;
}

bool AppendPrivateFile(path const& file, std::string const& bytes)
{
    // Without the right to write elsewhere than at its end, wherever that is by then.
    Handle const opened =
        Open(LongName(file), FILE_APPEND_DATA | FILE_READ_DATA, AnybodyElse, OPEN_ALWAYS);
    std::string reason;
    // On Wine two processes may find the same end.
    if (!opened || !TakeLock(opened, 1s, reason))
        return false;
    bool const isWritten = WriteAll(opened, bytes);
    Unlock(opened);
    return isWritten;
}

bool RemovePrivateFile(path const& file)
{
    std::wstring const name = LongName(file);
    std::wstring const removed = name + L".gone";
    bool const isGone = Move(name, removed) || IsMissing(::GetLastError());
    bool const areErased = Erase(removed) && Erase(name + L".new");
    return isGone && areErased;
}

bool RenameFile(path const& from, path const& to) { return Move(LongName(from), LongName(to)); }

std::string FileStamp(path const& file)
{
    Handle const opened = Open(LongName(file), FILE_READ_ATTRIBUTES, AnybodyElse, OPEN_EXISTING);
    BY_HANDLE_FILE_INFORMATION about{};
    if (!opened || !::GetFileInformationByHandle(opened.Get(), &about))
        return {};
    std::string stamp;
    for (DWORD const number :
         {about.dwVolumeSerialNumber, about.nFileIndexHigh, about.nFileIndexLow,
          about.nFileSizeHigh, about.nFileSizeLow, about.ftLastWriteTime.dwHighDateTime,
          about.ftLastWriteTime.dwLowDateTime, about.ftCreationTime.dwHighDateTime,
          about.ftCreationTime.dwLowDateTime})
        stamp += std::to_string(number) + ' ';
    return stamp;
}

std::unique_ptr<FileLock> FileLock::Acquire(path const& file, std::chrono::milliseconds limit,
                                            std::string& reason)
{
    Handle opened = OpenPersistently(LongName(file), GENERIC_READ | GENERIC_WRITE, NobodyRemoves,
                                     OPEN_ALWAYS, std::min<std::chrono::milliseconds>(limit, 2s));
    if (!opened) {
        reason = ErrorText(::GetLastError());
        return nullptr;
    }
    return TakeLock(opened, limit, reason) ? std::make_unique<SystemLock>(std::move(opened))
                                           : nullptr;
}

} // namespace Halvorix::OpenId
