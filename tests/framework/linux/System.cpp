#include "framework/System.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "support/TextConversion.h"

extern char** environ;

namespace Rig {

namespace {

std::vector<char*> Pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> EnvironmentWith(std::map<std::string, std::string> const& changes)
{
    std::vector<std::string> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        std::string const text = *entry;
        if (changes.count(text.substr(0, text.find('='))) == 0)
            environment.push_back(text);
    }
    for (auto const& [name, value] : changes)
        environment.push_back(name + "=" + value);
    return environment;
}

void Redirect(int descriptor, std::filesystem::path const& file)
{
    int const opened = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ::dup2(opened, descriptor);
    ::close(opened);
}

} // namespace

Ending RunToEnd(Process const& process)
{
    std::vector<std::string> arguments{process.program.string()};
    arguments.insert(arguments.end(), process.arguments.begin(), process.arguments.end());
    std::vector<std::string> environment = EnvironmentWith(process.environment);
    std::vector<char*> const argv = Pointers(arguments);
    std::vector<char*> const envp = Pointers(environment);
    pid_t const child = ::fork();
    if (child < 0)
        throw std::runtime_error("fork failed");
    if (child == 0) {
        Redirect(STDOUT_FILENO, process.output);
        Redirect(STDERR_FILENO, process.errors);
        if (::chdir(process.directory.c_str()) == 0)
            ::execve(argv[0], argv.data(), envp.data());
        ::_exit(127);
    }
    auto const deadline = std::chrono::steady_clock::now() + process.limit;
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return {true, false, -1};
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (WIFSIGNALED(status))
        return {false, true, WTERMSIG(status)};
    return {false, false, WEXITSTATUS(status)};
}

bool IsWindows() { return false; }

bool IsWoW64() { return false; }

std::filesystem::path ThisExecutable() { return std::filesystem::read_symlink("/proc/self/exe"); }

std::string ExecutableName(std::string const& name) { return name; }

std::vector<std::string> LibraryFiles() { return {"libHxSSOServices.so.10"}; }

std::string ModuleName(std::string const& name) { return name + ".so"; }

std::string LibraryName() { return "libHxSSOServices.so"; }

std::string MappedLibraryFile() { return "libHxSSOServices.so.10"; }

void UnsetVariable(std::string const& name) { ::unsetenv(name.c_str()); }

int ProcessNumber() { return ::getpid(); }

bool MayChangeLocation() { return true; }

void SetLocation(std::filesystem::path const& root, std::wstring const& location)
{
    std::filesystem::path const folder = root / "xdg/Halvorix/HxSSO";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "Location", std::ios::binary)
        << Halvorix::SSOServices::WideToUtf8(location) << '\n';
}

void RemoveLocation(std::filesystem::path const& root)
{
    std::filesystem::remove(root / "xdg/Halvorix/HxSSO/Location");
}

void SetRawLocation(unsigned, std::string const&, std::string const&) {}

void RemoveLocationValue() {}

void SetLocationOf64Bit(std::wstring const&) {}

void RemoveLocationOf64Bit() {}

void SetHostModuleDirectory(std::string const&) {}

std::string HostModuleDirectory() { return {}; }

void EndQuickly(int status) { std::quick_exit(status); }

void RunOnStack(std::size_t bytes, std::function<void()> const& action)
{
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstacksize(&attributes, bytes);
    auto const run = [](void* context) -> void* {
        (*static_cast<std::function<void()> const*>(context))();
        return nullptr;
    };
    std::function<void()> copy = action;
    pthread_t thread{};
    if (::pthread_create(&thread, &attributes, run, &copy) != 0)
        throw std::runtime_error("pthread_create failed");
    ::pthread_join(thread, nullptr);
    ::pthread_attr_destroy(&attributes);
}

bool DenyReading(std::filesystem::path const& file)
{
    ::chmod(file.c_str(), 0);
    // The administrator reads everything: go on as nobody.
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0 && ::setresuid(nobody, nobody, nobody) != 0)
        return false;
    // What looks for leaks at the end attaches to the process.
    ::prctl(PR_SET_DUMPABLE, 1);
    // Nobody may find nothing at all here.
    if (::faccessat(AT_FDCWD, file.parent_path().c_str(), R_OK | X_OK, AT_EACCESS) != 0)
        return false;
    int const opened = ::open(file.c_str(), O_RDONLY);
    if (opened < 0)
        return errno == EACCES;
    ::close(opened);
    return false;
}

std::string SystemErrorText(unsigned long code) { return std::strerror(static_cast<int>(code)); }

} // namespace Rig
