#include "hxsso/System.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>

namespace Halvorix::HxSSO {

namespace {

char const* textAtInterrupt = "";

int DescriptorOf(Stream stream) { return stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO; }

bool WriteAll(int descriptor, char const* text, std::size_t size)
{
    while (size > 0) {
        ssize_t const count = ::write(descriptor, text, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        text += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

// Whoever waits for this process is to see that the signal ended it: a shell then ends its
// script, too, and tells the status 130.
extern "C" void EndAtInterrupt(int number)
{
    WriteAll(STDERR_FILENO, textAtInterrupt, std::strlen(textAtInterrupt));
    std::signal(number, SIG_DFL);
    std::raise(number);
}

} // namespace

std::vector<std::string> BeginProgram(int count, char** arguments)
{
    // A file that is opened must not become the output, if this process was given none: what is
    // meant for that would stand in the file. So these cannot be written to.
    for (int const standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(standard, F_GETFD) == -1)
            ::open("/dev/null", standard == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    // A reader that goes away is told by the write that fails.
    std::signal(SIGPIPE, SIG_IGN);
    if (count < 1)
        return {};
    return {arguments + 1, arguments + count};
}

std::filesystem::path ProgramFile()
{
    std::error_code unknown;
    return std::filesystem::read_symlink("/proc/self/exe", unknown);
}

std::filesystem::path ProgramBeside(char const* name) { return ProgramFile().parent_path() / name; }

std::uint64_t ProcessId() { return static_cast<std::uint64_t>(::getpid()); }

bool IsTerminal(Stream stream) { return ::isatty(DescriptorOf(stream)) != 0; }

bool Write(Stream stream, std::string const& text)
{
    return WriteAll(DescriptorOf(stream), text.data(), text.size());
}

bool WriteNewFile(std::filesystem::path const& file, std::string const& text, std::string& reason)
{
    ::unlink(file.c_str());
    int const descriptor =
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0644);
    errno = descriptor == -1 ? errno : 0;
    bool good = descriptor != -1 && WriteAll(descriptor, text.data(), text.size()) &&
                ::fchmod(descriptor, 0644) == 0 && // whatever the user's other files are like
                ::fsync(descriptor) == 0;
    int const error = errno;
    if (descriptor != -1)
        good = ::close(descriptor) == 0 && good;
    if (good)
        return true;
    reason = std::error_code(error == 0 ? EIO : error, std::generic_category()).message();
    if (descriptor != -1)
        ::unlink(file.c_str());
    return false;
}

struct InterruptsHeldBack::Before {
    sigset_t mask{};
};

InterruptsHeldBack::InterruptsHeldBack() : before(std::make_unique<Before>())
{
    // All threads that begin meanwhile hold them back, too.
    sigset_t signals;
    ::sigemptyset(&signals);
    for (int const number : {SIGINT, SIGTERM, SIGHUP})
        ::sigaddset(&signals, number);
    ::pthread_sigmask(SIG_BLOCK, &signals, &before->mask);
}

InterruptsHeldBack::~InterruptsHeldBack()
{
    ::pthread_sigmask(SIG_SETMASK, &before->mask, nullptr);
}

void EndOnInterrupt(char const* text)
{
    textAtInterrupt = text;
    struct sigaction before {};
    // Where it is ignored, as in the background of a script, it stays so.
    if (::sigaction(SIGINT, nullptr, &before) != 0 || before.sa_handler == SIG_IGN)
        return;
    struct sigaction action {};
    action.sa_handler = EndAtInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
    ::sigaction(SIGINT, &action, nullptr);
}

int RunProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments,
               std::string& reason)
{
    std::vector<char*> words{const_cast<char*>(program.c_str())};
    for (std::string const& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    std::signal(SIGPIPE, SIG_DFL);
    // In the place of this process: its signals and its end are those of the other program.
    ::execv(program.c_str(), words.data());
    reason = std::error_code(errno, std::generic_category()).message();
    std::signal(SIGPIPE, SIG_IGN);
    return -1;
}

} // namespace Halvorix::HxSSO
