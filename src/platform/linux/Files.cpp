#include "platform/linux/Files.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "platform/Platform.h"
#include "platform/linux/NarrowText.h"

namespace Halvorix::Platform {

namespace {

class Descriptor {
public:
    explicit Descriptor(int aNumber) : number(aNumber) {}
    ~Descriptor()
    {
        if (number >= 0)
            ::close(number);
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int const number;
};

} // namespace

int OpenWithoutWaiting(char const* file)
{
    constexpr int flags = O_RDONLY | O_NOCTTY | O_CLOEXEC;
    int const descriptor = ::open(file, flags | O_NONBLOCK);
    return descriptor < 0 && errno == EWOULDBLOCK ? ::open(file, flags) : descriptor;
}

int ReadRegularFile(std::string const& file, std::string& content, std::string_view enough)
{
    content.clear();
    // First what it is: a device may do anything when it is opened.
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode))
        return EINVAL;
    Descriptor const opened(OpenWithoutWaiting(file.c_str()));
    if (opened.number < 0 || ::fstat(opened.number, &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode))
        return EINVAL;
    char piece[16384];
    for (;;) {
        ssize_t const count = ::read(opened.number, piece, sizeof(piece));
        if (count == 0)
            return 0;
        if (count < 0 && errno != EINTR)
            return errno;
        std::size_t const before = content.size();
        content.append(piece, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (content.find_first_of(enough, before) != std::string::npos)
            return 0;
    }
}

bool AreFileNamesWide() { return false; }

// Text is not another form here than bytes.
std::string ReadRegularFile(std::wstring const& file, std::ios::openmode)
{
    std::string content;
    return ReadRegularFile(ToSystem(file), content) == 0 ? content : std::string();
}

} // namespace Halvorix::Platform
