#include "common/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "common/Utf8.h"
#include "platform/linux/Files.h"

namespace Halvorix::Tools {

namespace {

class FileSource : public ByteSource {
public:
    explicit FileSource(int fileDescriptor) : descriptor(fileDescriptor) {}
    ~FileSource() override { ::close(descriptor); }
    FileSource(FileSource const&) = delete;
    FileSource& operator=(FileSource const&) = delete;

    std::uint64_t size = 0;
    std::uint64_t Size() const override { return size; }

    bool Read(std::uint64_t offset, char* to, std::size_t count) override
    {
        while (count > 0) {
            ssize_t const got = ::pread(descriptor, to, count, static_cast<off_t>(offset));
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                return false; // shorter by now
            to += got;
            offset += static_cast<std::uint64_t>(got);
            count -= static_cast<std::size_t>(got);
        }
        return true;
    }

private:
    int descriptor;
};

// Empty for a regular file.
std::string WhyNotRegular(struct stat const& status)
{
    if (S_ISREG(status.st_mode))
        return {};
    if (S_ISDIR(status.st_mode))
        return "is a folder, not a file";
    if (S_ISFIFO(status.st_mode))
        return "is a pipe, not a file";
    if (S_ISSOCK(status.st_mode))
        return "is a socket, not a file";
    return "is a device, not a file";
}

OpenedFile Denied(std::string const& right)
{
    return {nullptr, "cannot be opened: " + std::generic_category().message(EACCES), false,
            "allow the program's user " + right, right};
}

// Of links that lead to nothing over each other, the one that is to be corrected.
std::filesystem::path LastLink(std::filesystem::path link)
{
    constexpr int mostLinks = 40; // that the system follows
    for (int i = 0; i < mostLinks; ++i) {
        std::error_code unknown;
        std::filesystem::path const target =
            link.parent_path() / std::filesystem::read_symlink(link, unknown);
        if (!std::filesystem::is_symlink(std::filesystem::symlink_status(target, unknown)))
            break;
        link = std::filesystem::canonical(target.parent_path(), unknown) / target.filename();
    }
    return link;
}

OpenedFile BrokenLink(std::filesystem::path const& file)
{
    std::filesystem::path const last = LastLink(file);
    std::error_code unknown;
    return {nullptr,
            (last == file ? "is a link to "
                          : "is a link that leads to " + Utf8(last) + ", a link to ") +
                Utf8(std::filesystem::read_symlink(last, unknown)) + ", which does not exist",
            false, "correct the link " + Utf8(last)};
}

// Over what is not there, or is denied, the loader passes.
OpenedFile NotOpened(std::filesystem::path const& file, int error)
{
    std::error_code unknown;
    if (error == ENOENT &&
        std::filesystem::is_symlink(std::filesystem::symlink_status(file, unknown)))
        return BrokenLink(file);
    if (error == ENOENT || error == ENOTDIR)
        return {nullptr, "does not exist", false};
    if (error == EACCES)
        return Denied("to read " + Utf8(file));
    if (error == ELOOP)
        return {nullptr, "is a link that leads in a circle", true};
    return {nullptr, "cannot be opened: " + std::generic_category().message(error), true};
}

} // namespace

OpenedFile OpenFile(std::filesystem::path const& file)
{
    struct stat status {};
    // Its own permissions count for nothing yet: it is a folder that denies it.
    if (::stat(file.c_str(), &status) != 0)
        return errno == EACCES
                   ? Denied("to read " + Utf8(file) + " and to enter the folders that lead to it")
                   : NotOpened(file, errno);
    if (std::string reason = WhyNotRegular(status); !reason.empty())
        return {nullptr, std::move(reason), true};
    // Whatever has taken its place since, the call returns.
    int const descriptor = Platform::OpenWithoutWaiting(file.c_str());
    if (descriptor < 0)
        return NotOpened(file, errno);
    auto source = std::make_unique<FileSource>(descriptor);
    if (::fstat(descriptor, &status) != 0)
        return NotOpened(file, errno);
    if (std::string reason = WhyNotRegular(status); !reason.empty())
        return {nullptr, std::move(reason), true};
    // What the system makes up as it is read has no size, and there may be nothing to read.
    char first = '\0';
    if (status.st_size == 0 && ::pread(descriptor, &first, 1, 0) < 0)
        return {nullptr,
                errno == EAGAIN ? "has nothing to read, and would keep its reader waiting"
                                : "cannot be read: " + std::generic_category().message(errno),
                true};
    source->size = static_cast<std::uint64_t>(status.st_size);
    return {std::move(source), {}, false};
}

} // namespace Halvorix::Tools
