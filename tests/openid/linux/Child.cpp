#include "openid/Child.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace Rig {

std::string ThisProgram() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

struct Child::Process {
    pid_t number = 0; // 0 once it has been waited for
};

Child::Child(std::string const& name, std::vector<std::string> const& arguments)
    : process(std::make_unique<Process>())
{
    std::vector<std::string> all{"openid", "--child", name};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& argument : all)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    if (::posix_spawn(&process->number, "/proc/self/exe", nullptr, nullptr, pointers.data(),
                      environ) != 0)
        throw std::runtime_error("no process for " + name);
}

Child::~Child() { Kill(); }

void Child::Kill()
{
    if (process->number == 0)
        return;
    ::kill(process->number, SIGKILL);
    ::waitpid(process->number, nullptr, 0);
    process->number = 0;
}

int Child::Wait(std::chrono::milliseconds limit)
{
    auto const deadline = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (::waitpid(process->number, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            Kill();
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    process->number = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace Rig
