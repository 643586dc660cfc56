#include "Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "../Platform.h"
#include "NarrowText.h"

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

int ReadRegularFile(std::string const& file, std::string& content)
{
    content.clear();
    // First what it is: a device may do anything when it is opened.
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode))
        return EINVAL;
    // A pipe may have taken its place since, and some files of the system wait for what is
    // to come though they are called regular: no call waits.
    // But a file server may have a lease on it, which it gives up for one who waits a little.
    constexpr int flags = O_RDONLY | O_NOCTTY | O_CLOEXEC;
    int descriptor = -1;
    for (int const patience : {O_NONBLOCK, 0})
        if (descriptor < 0 && (patience != 0 || errno == EWOULDBLOCK))
            descriptor = ::open(file.c_str(), flags | patience);
    Descriptor const opened(descriptor);
    if (opened.number < 0 || ::fstat(opened.number, &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode))
        return EINVAL;
    char piece[16384];
    for (;;) {
        ssize_t const count = ::read(opened.number, piece, sizeof(piece));
        if (count > 0)
            content.append(piece, static_cast<std::size_t>(count));
        else if (count == 0)
            return 0;
        else if (errno != EINTR)
            return errno;
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
