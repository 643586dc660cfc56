#include "../ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>

namespace Halvorix::Tools {

namespace {

using Clock = std::chrono::steady_clock;

class Descriptor {
public:
    explicit Descriptor(int openDescriptor) : descriptor(openDescriptor) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int Get() const { return descriptor; }
    void Close()
    {
        if (descriptor >= 0)
            ::close(descriptor);
        descriptor = -1;
    }

private:
    int descriptor;
};

// Else the child could open what this process writes to.
class HiddenProcess {
public:
    HiddenProcess() : before(::prctl(PR_GET_DUMPABLE)) { ::prctl(PR_SET_DUMPABLE, 0); }
    ~HiddenProcess() { ::prctl(PR_SET_DUMPABLE, before); }
    HiddenProcess(HiddenProcess const&) = delete;
    HiddenProcess& operator=(HiddenProcess const&) = delete;

private:
    int const before;
};

// Only what may be called between fork and exec.
[[noreturn]] void BecomeProgram(char const* program, int input, int output, pid_t parent)
{
    ::setsid(); // out of reach of the terminal, and a group to be ended as one
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent)
        ::_exit(127); // it has ended already
    // Nothing is to be left on disk.
    rlimit const none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    int const nothing = ::open("/dev/null", O_RDWR);
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(nothing, STDERR_FILENO);
    ::signal(SIGPIPE, SIG_DFL);
    ::signal(SIGCHLD, SIG_DFL);
    char* const arguments[] = {const_cast<char*>(program), nullptr};
    ::execv(program, arguments);
    ::_exit(127);
}

std::string Told(int status)
{
    if (WIFEXITED(status))
        return "ends the process with exit status " + std::to_string(WEXITSTATUS(status));
    int const number = WTERMSIG(status);
    char const* const text = ::strsignal(number);
    if (number == SIGABRT)
        return "aborts the process";
    return "crashes the process: " +
           (text == nullptr ? "signal " + std::to_string(number) : std::string(text));
}

// What is there now; false at the end.
bool ReadWhatIsThere(int descriptor, std::string& output)
{
    std::array<char, 65536> part{};
    while (output.size() <= MostChildOutput) {
        ssize_t const got = ::read(descriptor, part.data(), part.size());
        if (got == 0)
            return false;
        if (got < 0)
            return errno == EAGAIN || errno == EINTR;
        output.append(part.data(), static_cast<std::size_t>(got));
    }
    return true;
}

} // namespace

ChildRun RunChild(std::filesystem::path const& program, std::string const& input,
                  std::chrono::seconds limit)
{
    ChildRun run;
    ::signal(SIGCHLD, SIG_DFL); // whoever starts this program may ignore it
    HiddenProcess const hidden;
    int ends[2];
    int streams[2];
    // A socket, since a write to it tells of a reader that has gone instead of killing.
    if (::pipe2(ends, O_CLOEXEC) != 0 ||
        ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, streams) != 0) {
        run.end = std::generic_category().message(errno);
        return run;
    }
    Descriptor output(ends[0]);
    Descriptor childOutput(ends[1]);
    Descriptor request(streams[0]);
    Descriptor childRequest(streams[1]);
    std::string const file = program.string();
    pid_t const parent = ::getpid();
    pid_t const child = ::fork();
    if (child == 0)
        BecomeProgram(file.c_str(), childRequest.Get(), childOutput.Get(), parent);
    if (child < 0) {
        run.end = std::generic_category().message(errno);
        return run;
    }
    run.isStarted = true;
    childOutput.Close();
    childRequest.Close();
    ::fcntl(output.Get(), F_SETFL, O_NONBLOCK);
    Clock::time_point const deadline = Clock::now() + limit;
    std::size_t sent = 0;
    bool isOpen = true;
    while (run.end.empty()) {
        while (sent < input.size()) {
            ssize_t const part = ::send(request.Get(), input.data() + sent, input.size() - sent,
                                        MSG_NOSIGNAL | MSG_DONTWAIT);
            if (part < 0)
                break;
            sent += static_cast<std::size_t>(part);
        }
        if (sent == input.size())
            request.Close();
        pollfd waiting{isOpen ? output.Get() : -1, POLLIN, 0};
        ::poll(&waiting, 1, 20);
        int status = 0;
        bool const hasEnded = ::waitpid(child, &status, WNOHANG) == child;
        isOpen = isOpen && ReadWhatIsThere(output.Get(), run.output);
        if (run.output.size() > MostChildOutput) {
            run.end = "writes without end";
        } else if (hasEnded) {
            run.end = Told(status);
            run.isGood = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        } else if (Clock::now() > deadline)
            run.end = "does not come back within " + std::to_string(limit.count()) + " s";
        if (!hasEnded && !run.end.empty()) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
        }
    }
    ::kill(-child, SIGKILL); // whatever it has started
    return run;
}

int TakeStandardOutput()
{
    int const descriptor = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 64);
    int const nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nothing, stream);
    return descriptor;
}

void WriteAll(int descriptor, std::string const& text)
{
    for (std::size_t done = 0; done < text.size();) {
        ssize_t const part = ::write(descriptor, text.data() + done, text.size() - done);
        if (part <= 0)
            return;
        done += static_cast<std::size_t>(part);
    }
}

void EndProcess() { ::_exit(0); }

} // namespace Halvorix::Tools
