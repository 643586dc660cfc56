#include "framework/System.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <stdexcept>

extern char** environ;

namespace Bench {

std::filesystem::path ThisFolder()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::filesystem::path PluginFile() { return ThisFolder() / "bench-server/plugin/BenchPlugin.so"; }

FactoryProcedure LoadPlugin(std::filesystem::path const& file)
{
    void* const module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const symbol = module == nullptr ? nullptr : ::dlsym(module, "_Z19GetSSOClientFactoryv");
    if (symbol == nullptr) {
        std::fputs(::dlerror(), stderr);
        std::abort();
    }
    return reinterpret_cast<FactoryProcedure>(symbol);
}

std::string Run(std::string const& program, std::vector<std::string> const& arguments)
{
    std::string file = (ThisFolder() / program).string();
    std::vector<std::string> words = arguments;
    std::vector<char*> argv{file.data()};
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    int ends[2];
    if (::pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
    ::posix_spawn_file_actions_addclose(&actions, ends[0]);
    ::posix_spawn_file_actions_addclose(&actions, ends[1]);
    pid_t child = 0;
    int const error = ::posix_spawn(&child, file.c_str(), &actions, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);

    std::string output;
    std::array<char, 4096> part;
    ssize_t count = 0;
    while (error == 0 && (count = ::read(ends[0], part.data(), part.size())) > 0)
        output.append(part.data(), static_cast<std::size_t>(count));
    ::close(ends[0]);
    int status = -1;
    if (error != 0 || ::waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error(program + " failed: " + output);
    return output;
}

std::chrono::nanoseconds OwnTime()
{
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

std::chrono::nanoseconds TimeWithChildren()
{
    rusage children{};
    ::getrusage(RUSAGE_CHILDREN, &children);
    auto const of = [](timeval const& time) {
        return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
    };
    return OwnTime() + of(children.ru_utime) + of(children.ru_stime);
}

long long ReadsSoFar()
{
    // The file tells of what was before its reading: each call finds the read of those before it.
    static long long own = 0;
    int const file = ::open("/proc/self/io", O_RDONLY | O_CLOEXEC);
    std::array<char, 1024> text{};
    if (file < 0 || ::read(file, text.data(), text.size() - 1) <= 0)
        return 0;
    ::close(file);
    char const* const line = std::strstr(text.data(), "syscr: ");
    return line == nullptr ? 0 : std::atoll(line + std::strlen("syscr: ")) - own++;
}

} // namespace Bench
