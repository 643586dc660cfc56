#include "openid/platform/Files.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "openid/platform/SecretBytes.h"
#include "openid/platform/linux/Descriptor.h"

namespace Halvorix::OpenId {

namespace {

using std::filesystem::path;
using namespace std::chrono_literals;

// Neither waits for a pipe's writer, nor takes a terminal, nor leaves it to a started program.
constexpr int Openly = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr mode_t Private = 0600;
constexpr mode_t ForOthers = 0077;
constexpr off_t MostErased = 16 << 20;
constexpr char const* NotRegular = "it is not a regular file";

FileContent Refused(std::string reason)
{
    return {FileContent::State::Refused, {}, std::move(reason)};
}

FileContent Failed(int error) { return {FileContent::State::Failed, {}, ErrorText(error)}; }

FileContent NotOpened(int error)
{
    if (error == ENOENT || error == ENOTDIR)
        return {};
    if (error == ELOOP)
        return Refused("it is a symbolic link");
    if (error == ENXIO || error == ENODEV)
        return Refused(NotRegular); // a socket
    // Anything but a right that is missing may be gone the next time.
    return error == EACCES || error == EPERM ? Refused(ErrorText(error)) : Failed(error);
}

/// Why something is not a file of this user alone; empty if it is.
std::string WhyNotPrivate(struct stat const& status)
{
    if (!S_ISREG(status.st_mode))
        return NotRegular;
    if (status.st_uid != ::geteuid())
        return "it belongs to another user";
    if ((status.st_mode & ForOthers) != 0)
        return "other users may open it";
    return {};
}

FileContent ReadRegular(Descriptor const& opened, struct stat const& status, std::size_t limit)
{
    FileContent content{FileContent::State::Read, {}, {}};
    std::string piece(16384, '\0');
    WipeAtEnd const wiping(piece);
    content.bytes.reserve(std::min(static_cast<std::size_t>(status.st_size), limit));
    for (;;) {
        ssize_t const count = ::read(opened.Number(), piece.data(), piece.size());
        if (count == 0)
            return content;
        if (count < 0 && errno == EINTR)
            continue;
        int const error = errno;
        bool const isTooLarge =
            count > 0 && static_cast<std::size_t>(count) > limit - content.bytes.size();
        if (count < 0 || isTooLarge) {
            Wipe(content.bytes);
            return isTooLarge ? Refused("it is larger than " + std::to_string(limit) + " bytes")
                              : Failed(error);
        }
        AppendSecret(content.bytes, piece.data(), static_cast<std::size_t>(count));
    }
}

bool WriteAll(Descriptor const& opened, char const* bytes, std::size_t size)
{
    while (size != 0) {
        ssize_t const count = ::write(opened.Number(), bytes, size);
        if (count < 0 && errno != EINTR)
            return false;
        std::size_t const written = count < 0 ? 0 : static_cast<std::size_t>(count);
        bytes += written;
        size -= written;
    }
    return true;
}

/// A file of this user's to write to, made if need be; without one a reason.
Descriptor OpenPrivate(path const& file, int how, std::string& reason)
{
    Descriptor opened(::open(file.c_str(), how | O_CREAT | O_NOFOLLOW | Openly, Private));
    struct stat status {};
    if (!opened || ::fstat(opened.Number(), &status) != 0)
        reason = errno == ELOOP ? "it is a symbolic link" : ErrorText(errno);
    else if (!S_ISREG(status.st_mode))
        reason = NotRegular;
    else if (status.st_uid != ::geteuid())
        reason = "it belongs to another user";
    else if ((status.st_mode & ForOthers) != 0 && ::fchmod(opened.Number(), Private) != 0)
        reason = ErrorText(errno);
    else
        return opened;
    return Descriptor();
}

/// Whether the name still stands for the opened file.
bool IsAt(path const& file, Descriptor const& opened)
{
    struct stat named {};
    struct stat own {};
    return ::lstat(file.c_str(), &named) == 0 && ::fstat(opened.Number(), &own) == 0 &&
           named.st_dev == own.st_dev && named.st_ino == own.st_ino;
}

bool TakeLock(Descriptor const& opened, std::chrono::steady_clock::time_point deadline,
              std::chrono::milliseconds limit, std::string& reason)
{
    // The system can wait for a lock without an end or not at all.
    for (auto pause = 1ms;; pause = std::min(pause * 2, 20ms)) {
        if (::flock(opened.Number(), LOCK_EX | LOCK_NB) == 0)
            return true;
        if (errno != EWOULDBLOCK && errno != EINTR) {
            reason = ErrorText(errno);
            return false;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            reason = "another process has held it for " + std::to_string(limit.count()) + " ms";
            return false;
        }
        std::this_thread::sleep_for(pause);
    }
}

path Beside(path const& file, char const* ending) { return path(file) += ending; }

/// A file that is locked and still has its name. Another one may have been put in its place while
/// this one waited: a lock on what is not there any more would keep nobody out.
Descriptor OpenLocked(path const& file, int how, std::chrono::milliseconds limit,
                      std::string& reason)
{
    auto const deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        Descriptor opened = OpenPrivate(file, how, reason);
        if (!opened || !TakeLock(opened, deadline, limit, reason))
            return Descriptor();
        if (IsAt(file, opened))
            return opened;
        if (std::chrono::steady_clock::now() >= deadline) {
            reason = "others put another file in its place again and again";
            return Descriptor();
        }
    }
}

/// A rename is there for good only when its folder is written.
bool SyncFolderOf(path const& file)
{
    path const folder = file.has_parent_path() ? file.parent_path() : ".";
    Descriptor const opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return opened && ::fsync(opened.Number()) == 0;
}

void Overwrite(path const& file)
{
    Descriptor const opened(::open(file.c_str(), O_WRONLY | O_NOFOLLOW | Openly));
    struct stat status {};
    if (!opened || ::fstat(opened.Number(), &status) != 0 || !S_ISREG(status.st_mode))
        return;
    // What is larger than any of ours need not fit into memory.
    std::string const zeros(static_cast<std::size_t>(std::min<off_t>(status.st_size, MostErased)),
                            '\0');
    if (WriteAll(opened, zeros.data(), zeros.size()))
        ::fsync(opened.Number());
}

bool Erase(path const& file)
{
    Overwrite(file);
    return ::unlink(file.c_str()) == 0 || errno == ENOENT;
}

std::string Environment(char const* name)
{
    char const* const value = ::secure_getenv(name);
    return value == nullptr ? std::string() : value;
}

path UserFolder(char const* variable, char const* belowHome)
{
    // A relative one is not to be heeded, says the convention.
    path folder = Environment(variable);
    if (folder.is_absolute())
        return folder;
    path const home = Environment("HOME");
    return home.is_absolute() ? home / belowHome : path();
}

bool MakeFolders(path const& folder)
{
    if (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST)
        return true;
    if (errno != ENOENT || !folder.has_relative_path() || folder.parent_path() == folder)
        return false;
    // Another process may make it meanwhile.
    return MakeFolders(folder.parent_path()) &&
           (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST);
}

} // namespace

path ModuleFolder()
{
    Dl_info module{};
    if (::dladdr(reinterpret_cast<void const*>(&ModuleFolder), &module) == 0)
        return {};
    // The loader's spelling may be relative to where the process was then; the system's map of
    // it is not.
    std::ifstream maps("/proc/self/maps");
    auto const address = reinterpret_cast<std::uintptr_t>(module.dli_fbase);
    for (std::string line; std::getline(maps, line);) {
        std::size_t const name = line.find('/');
        if (name != std::string::npos && std::strtoull(line.c_str(), nullptr, 16) == address)
            return path(line.substr(name)).parent_path();
    }
    std::error_code unknown;
    return std::filesystem::absolute(path(module.dli_fname).parent_path(), unknown);
}

path KnownFolder(std::string const& name)
{
    if (name == "ProgramFiles")
        return "/opt";
    if (name == "AppData")
        return UserFolder("XDG_CONFIG_HOME", ".config");
    if (name == "LocalAppData")
        return UserFolder("XDG_DATA_HOME", ".local/share");
    if (name == "Home")
        return UserFolder("HOME", "");
    return {};
}

std::string PathText(path const& file) { return file.native(); }

path PathFromText(std::string const& text) { return text; }

FileContent ReadFile(path const& file, std::size_t limit)
{
    // First what it is: a device may do anything when it is opened.
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        return NotOpened(errno);
    if (!S_ISREG(status.st_mode))
        return Refused(NotRegular);
    Descriptor const opened(::open(file.c_str(), O_RDONLY | Openly));
    if (!opened || ::fstat(opened.Number(), &status) != 0)
        return NotOpened(errno);
    return S_ISREG(status.st_mode) ? ReadRegular(opened, status, limit) : Refused(NotRegular);
}

FileContent ReadPrivateFile(path const& file, std::size_t limit)
{
    Descriptor const opened(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | Openly));
    struct stat status {};
    if (!opened || ::fstat(opened.Number(), &status) != 0)
        return NotOpened(errno);
    std::string const reason = WhyNotPrivate(status);
    return reason.empty() ? ReadRegular(opened, status, limit) : Refused(reason);
}

bool PreparePrivateFolder(path const& given, std::string& reason)
{
    // A slash at the end would have a link followed.
    path const folder = given.has_filename() ? given : given.parent_path();
    if (!MakeFolders(folder)) {
        reason = ErrorText(errno);
        return false;
    }
    Descriptor const opened(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!opened || ::fstat(opened.Number(), &status) != 0) {
        int const error = errno;
        std::error_code unknown;
        reason = std::filesystem::is_symlink(folder, unknown) ? "it is a symbolic link"
                                                              : ErrorText(error);
    } else if (status.st_uid != ::geteuid()) {
        reason = "it belongs to another user";
    } else if ((status.st_mode & ForOthers) != 0 && ::fchmod(opened.Number(), 0700) != 0) {
        reason = ErrorText(errno);
    } else {
        return true;
    }
    return false;
}

bool ReplacePrivateFile(path const& file, std::string const& bytes, std::string& reason)
{
    path const replacement = Beside(file, ".new");
    // It has one name, so that what a killed process left is used again, and writers take turns.
    Descriptor const opened = OpenLocked(replacement, O_WRONLY, std::chrono::seconds(5), reason);
    if (!opened)
        return false;
    if (::ftruncate(opened.Number(), 0) == 0 && WriteAll(opened, bytes.data(), bytes.size()) &&
        ::fsync(opened.Number()) == 0 && ::rename(replacement.c_str(), file.c_str()) == 0 &&
        SyncFolderOf(file))
        return true;
    reason = ErrorText(errno);
    // What a full disk took of it is of no use to anybody.
    if (IsAt(replacement, opened))
        Erase(replacement);
    return false;
}

bool AppendPrivateFile(path const& file, std::string const& bytes)
{
    std::string reason;
    Descriptor const opened = OpenPrivate(file, O_WRONLY | O_APPEND, reason);
    // All at once: the system then lets nobody in between.
    return opened && WriteAll(opened, bytes.data(), bytes.size());
}

bool RemovePrivateFile(path const& file)
{
    path const removed = Beside(file, ".gone");
    bool const isGone = ::rename(file.c_str(), removed.c_str()) == 0 || errno == ENOENT;
    bool const areErased = Erase(removed) && Erase(Beside(file, ".new"));
    return isGone && areErased;
}

bool RenameFile(path const& from, path const& to)
{
    return ::rename(from.c_str(), to.c_str()) == 0;
}

std::string FileStamp(path const& file)
{
    struct stat status {};
    if (::lstat(file.c_str(), &status) != 0)
        return {};
    std::string stamp;
    for (auto const number :
         {static_cast<long long>(status.st_dev), static_cast<long long>(status.st_ino),
          static_cast<long long>(status.st_size), static_cast<long long>(status.st_mtim.tv_sec),
          static_cast<long long>(status.st_mtim.tv_nsec),
          static_cast<long long>(status.st_ctim.tv_sec),
          static_cast<long long>(status.st_ctim.tv_nsec)})
        stamp += std::to_string(number) + ' ';
    return stamp;
}

namespace {

class SystemLock : public FileLock {
public:
    explicit SystemLock(Descriptor aFile) : file(std::move(aFile)) {}
    // By itself the lock would last as long as a child that the host has forked meanwhile, which
    // has the same file open.
    ~SystemLock() override { ::flock(file.Number(), LOCK_UN); }
    SystemLock(SystemLock const&) = delete;
    SystemLock& operator=(SystemLock const&) = delete;

private:
    Descriptor const file;
};

} // namespace

std::unique_ptr<FileLock> FileLock::Acquire(path const& file, std::chrono::milliseconds limit,
                                            std::string& reason)
{
    Descriptor opened = OpenLocked(file, O_RDWR, limit, reason);
    return opened ? std::make_unique<SystemLock>(std::move(opened)) : nullptr;
}

} // namespace Halvorix::OpenId
