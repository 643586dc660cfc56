#include "common/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <system_error>
#include <vector>

namespace Halvorix::Tools {

namespace {

using Clock = std::chrono::steady_clock;

// Which process writes what TakeStandardOutput gave it.
pid_t writer = 0;

class Descriptor {
public:
    explicit Descriptor(int openDescriptor) : descriptor(openDescriptor) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int Get() const { return descriptor; }
    void Set(int openDescriptor) { descriptor = openDescriptor; }
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
    ::setsid(); // a group to be ended as one
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
    // What this program was started with is not the plugin's, the report above all.
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
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

// What the watcher tells of the child.
struct News {
    pid_t child;
    int error; ///< why there is none
    bool hasEnded;
    int status;
};

// The two ends of a pipe or of a pair of sockets.
struct Channel {
    Descriptor read{-1};
    Descriptor write{-1};
};

struct Channels {
    Channel output;  // of the child
    Channel request; // to it; a socket, since a write to it tells of a reader that has gone
                     // instead of killing
    Channel news;    // of the watcher
    Channel control; // to it: closed to make an end

    Channels()
    {
        int ends[2];
        for (Channel* const channel : {&output, &news, &control})
            if (::pipe2(ends, O_CLOEXEC) == 0)
                Set(*channel, ends);
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0)
            Set(request, ends);
    }

    bool AreOpen() const
    {
        return output.read.Get() >= 0 && news.read.Get() >= 0 && control.read.Get() >= 0 &&
               request.read.Get() >= 0;
    }

    void CloseThoseOfWatcher()
    {
        output.write.Close();
        request.read.Close();
        news.write.Close();
        control.read.Close();
    }

    void CloseThoseOfTool()
    {
        output.read.Close();
        request.write.Close();
        news.read.Close();
        control.write.Close();
    }

private:
    static void Set(Channel& channel, int const (&ends)[2])
    {
        channel.read.Set(ends[0]);
        channel.write.Set(ends[1]);
    }
};

// False once the watcher is gone.
bool ReadNews(int descriptor, News& news)
{
    News more{};
    ssize_t const got = ::read(descriptor, &more, sizeof(more));
    if (got == static_cast<ssize_t>(sizeof(more)))
        news = more;
    return got != 0;
}

// 0 if it cannot be told.
pid_t ParentOf(std::string const& process)
{
    std::ifstream file("/proc/" + process + "/stat");
    std::string text;
    std::getline(file, text, '\0'); // of one that has just ended nothing is read, without a throw
    // Behind the name, in which anything may stand: a letter for the state, and the parent.
    std::size_t const end = text.rfind(')');
    return end == std::string::npos || end + 4 >= text.size() ? 0
                                                              : std::atoi(text.c_str() + end + 4);
}

std::vector<pid_t> OwnChildren()
{
    std::vector<pid_t> children;
    std::error_code unknown;
    for (std::filesystem::directory_iterator entry("/proc", unknown), end; !unknown && entry != end;
         entry.increment(unknown)) {
        std::string const name = entry->path().filename().string();
        if (name.find_first_not_of("0123456789") == std::string::npos &&
            ParentOf(name) == ::getpid())
            children.push_back(std::atoi(name.c_str()));
    }
    return children;
}

// What the child has started and left comes to this process, and what those have started
// once they are ended. One that starts others faster than this ends them is left. The
// others are not the child's: a shell may have become this process.
// False if some may be left.
bool EndAllChildren(std::vector<pid_t> const& others)
{
    constexpr std::chrono::seconds patience{2};
    Clock::time_point const deadline = Clock::now() + patience;
    for (; Clock::now() < deadline; ::poll(nullptr, 0, 1)) {
        bool isAnyLeft = false;
        for (pid_t const child : OwnChildren()) {
            if (std::find(others.begin(), others.end(), child) != others.end())
                continue;
            isAnyLeft = true;
            ::kill(child, SIGKILL);
            ::waitpid(child, nullptr, WNOHANG);
        }
        if (!isAnyLeft)
            return true;
    }
    return false;
}

// In a process between the tool and the child: a plugin that ends its parent ends this
// one, and what it leaves behind is known here, in whatever session it is.
[[noreturn]] void Watch(char const* program, Channels& channels) noexcept
{
    channels.CloseThoseOfTool();
    ::setsid(); // not ended by the terminal, which ends the tool
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    pid_t const self = ::getpid();
    News news{};
    news.child = ::fork();
    if (news.child == 0)
        BecomeProgram(program, channels.request.read.Get(), channels.output.write.Get(), self);
    news.error = news.child < 0 ? errno : 0;
    channels.output.write.Close();
    channels.request.read.Close();
    auto const tell = [&] { return ::write(channels.news.write.Get(), &news, sizeof(news)) > 0; };
    bool isWanted = tell() && news.child > 0;
    while (isWanted && !news.hasEnded) {
        pollfd waiting{channels.control.read.Get(), POLLIN, 0};
        isWanted = ::poll(&waiting, 1, 10) == 0;
        news.hasEnded = ::waitpid(news.child, &news.status, WNOHANG) == news.child;
    }
    if (news.child > 0)
        ::kill(-news.child, SIGKILL);
    bool const areAllEnded = EndAllChildren({});
    tell();
    ::_exit(areAllEnded ? 0 : 1);
}

// With what it has not seen to: the children of a watcher that was ended come to this
// process, and so do those that others have left, which have nothing to do with it.
void EndWatcher(pid_t watcher, std::vector<pid_t> const& others)
{
    constexpr std::chrono::seconds patience{4};
    Clock::time_point const deadline = Clock::now() + patience;
    int status = 0;
    while (::waitpid(watcher, &status, WNOHANG) == 0) {
        if (Clock::now() > deadline)
            ::kill(watcher, SIGKILL);
        ::poll(nullptr, 0, 1);
    }
    bool const hasSeenToAll = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (!hasSeenToAll)
        EndAllChildren(others);
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
    Channels channels;
    if (!channels.AreOpen()) {
        run.end = std::generic_category().message(errno);
        return run;
    }
    std::string const file = program.string();
    std::vector<pid_t> const others = OwnChildren();
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    pid_t const watcher = ::fork();
    if (watcher == 0)
        Watch(file.c_str(), channels);
    if (watcher < 0) {
        run.end = std::generic_category().message(errno);
        return run;
    }
    channels.CloseThoseOfWatcher();
    ::fcntl(channels.output.read.Get(), F_SETFL, O_NONBLOCK);
    ::fcntl(channels.news.read.Get(), F_SETFL, O_NONBLOCK);
    Clock::time_point const deadline = Clock::now() + limit;
    std::size_t sent = 0;
    News news{};
    bool isOpen = true;
    while (run.end.empty()) {
        while (sent < input.size()) {
            ssize_t const part = ::send(channels.request.write.Get(), input.data() + sent,
                                        input.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (part < 0)
                break;
            sent += static_cast<std::size_t>(part);
        }
        if (sent == input.size())
            channels.request.write.Close();
        pollfd waiting[] = {{isOpen ? channels.output.read.Get() : -1, POLLIN, 0},
                            {channels.news.read.Get(), POLLIN, 0}};
        ::poll(waiting, 2, 20);
        bool const isWatched = ReadNews(channels.news.read.Get(), news);
        isOpen = isOpen && ReadWhatIsThere(channels.output.read.Get(), run.output);
        if (run.output.size() > MostChildOutput) {
            run.end = "writes without end";
        } else if (news.error != 0) {
            run.end = std::generic_category().message(news.error);
        } else if (news.hasEnded) {
            run.end = Told(news.status);
            run.isGood = WIFEXITED(news.status) && WEXITSTATUS(news.status) == 0;
        } else if (!isWatched) {
            run.end = "ends the process that watches over it";
        } else if (Clock::now() > deadline)
            run.end = "does not come back within " + std::to_string(limit.count()) + " s";
    }
    run.isStarted = news.child > 0;
    channels.control.write.Close();
    EndWatcher(watcher, others);
    return run;
}

int TakeStandardOutput()
{
    writer = ::getpid();
    // Far from those that a plugin counts on; near, where there are not so many.
    int descriptor = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 64);
    if (descriptor < 0)
        descriptor = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    int const nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nothing, stream);
    return descriptor;
}

void WriteAll(int descriptor, std::string const& text)
{
    // A copy that a plugin has made of the process says nothing in its place.
    if (::getpid() != writer)
        return;
    for (std::size_t done = 0; done < text.size();) {
        ssize_t const part = ::write(descriptor, text.data() + done, text.size() - done);
        if (part <= 0)
            return;
        done += static_cast<std::size_t>(part);
    }
}

void EndProcess() { ::_exit(0); }

} // namespace Halvorix::Tools
