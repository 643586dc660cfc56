#include "openid/platform/System.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/auxv.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <linux/close_range.h>
#include <vector>

#include "openid/platform/WebAddress.h"
#include "openid/platform/linux/Descriptor.h"

namespace Halvorix::OpenId {

namespace {

bool HasMoreRights() { return ::getauxval(AT_SECURE) != 0; }

std::string BrowserProgram()
{
    char const* const named = ::secure_getenv("HXSSO_OPENID_BROWSER");
    if (named != nullptr && *named != '\0')
        return named;
    return HasMoreRights() ? "/usr/bin/xdg-open" : "xdg-open";
}

bool IsProgram(std::string const& file) { return ::access(file.c_str(), X_OK) == 0; }

/// The file of a program as a shell finds it; empty if there is none.
std::string FindProgram(std::string const& name)
{
    if (name.find('/') != std::string::npos)
        return IsProgram(name) ? name : std::string();
    char const* const variable = ::secure_getenv("PATH");
    std::string const folders = variable == nullptr ? "/usr/local/bin:/usr/bin:/bin" : variable;
    for (std::size_t begin = 0; begin <= folders.size();) {
        std::size_t const end = std::min(folders.find(':', begin), folders.size());
        std::string file = folders.substr(begin, end - begin) + "/" + name;
        // Not from the folder that the process happens to be in.
        if (file[0] == '/' && end != begin && IsProgram(file))
            return file;
        begin = end + 1;
    }
    return {};
}

/// What a program that is to outlive this process must not have of it: signals that are off, the
/// terminal, output and files. In the new process, with nothing but calls of the system.
void LeaveProcess()
{
    for (int number = 1; number < NSIG; ++number)
        ::signal(number, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::setsid();
    int const nothing = ::open("/dev/null", O_RDWR);
    for (int const standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nothing, standard);
    if (::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) != 0) {
        for (int other = 3; other < 1024; ++other)
            ::fcntl(other, F_SETFD, FD_CLOEXEC);
    }
}

/// The error that the last process of the two gives, 0 once the program runs.
int AnswerFrom(Descriptor const& answers)
{
    int error = 0;
    // Another thread's new process may hold the other end, so not without a limit.
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    pollfd ready{answers.Number(), POLLIN, 0};
    int found = -1;
    // A signal ends the call, whatever its handler was set up with.
    do
        found = ::poll(&ready, 1, 1000);
    while (found <= 0 && (found == 0 || errno == EINTR) &&
           std::chrono::steady_clock::now() < deadline);
    if (found <= 0 || ::read(answers.Number(), &error, sizeof error) != sizeof error)
        return 0;
    return error;
}

/// Starts a program that is nobody's child: the system's first process sees to its end, so that
/// none is left for this one. 0 or the system's error.
int StartApart(std::string file, std::string argument)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return errno;
    Descriptor const answers(ends[0]);
    Descriptor answer(ends[1]);
    char* const arguments[] = {file.data(), argument.data(), nullptr};
    pid_t const child = ::fork();
    if (child < 0)
        return errno;
    if (child == 0) {
        pid_t const apart = ::fork();
        if (apart == 0) {
            LeaveProcess();
            ::execve(file.c_str(), arguments, environ);
        }
        int const error = errno;
        if (apart <= 0) [[maybe_unused]]
            auto const told = ::write(answer.Number(), &error, sizeof error);
        ::_exit(0);
    }
    answer.Close();
    // The host may see to its children itself, who then takes this one, too.
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    return AnswerFrom(answers);
}

} // namespace

bool OpenInBrowser(std::string const& url, std::string& reason)
{
    std::string const program = BrowserProgram();
    std::string const file = FindProgram(program);
    if (!IsWebAddress(url)) {
        reason = "the address is none of the web";
        return false;
    }
    if (file.empty()) {
        reason = program + " is not there or cannot be run";
        return false;
    }
    int const error = StartApart(file, url);
    if (error != 0)
        reason = file + ": " + ErrorText(error);
    return error == 0;
}

bool CanShowBrowser()
{
    constexpr char const* variables[] = {"DISPLAY", "WAYLAND_DISPLAY", "HXSSO_OPENID_BROWSER"};
    return std::any_of(std::begin(variables), std::end(variables), [](char const* name) {
        char const* const value = ::secure_getenv(name);
        return value != nullptr && *value != '\0';
    });
}

std::chrono::milliseconds SinceBoot()
{
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

std::int64_t WallClock() { return ::time(nullptr); }

std::uint64_t ProcessId() { return static_cast<std::uint64_t>(::getpid()); }

} // namespace Halvorix::OpenId
