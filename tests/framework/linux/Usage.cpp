#include "framework/Usage.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace Rig {

namespace {

int OpenDescriptors()
{
    std::filesystem::directory_iterator const open("/proc/self/fd");
    return static_cast<int>(std::distance(begin(open), end(open)));
}

int Threads()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word != "Threads:")
            continue;
        int threads = 0;
        status >> threads;
        return threads;
    }
    return 0;
}

// Without what is shared: pages of modules come in whenever they are first used.
std::size_t OwnPages()
{
    std::ifstream pages("/proc/self/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    std::size_t shared = 0;
    pages >> all >> resident >> shared;
    return resident - shared;
}

} // namespace

Usage CurrentUsage()
{
    auto const pageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return {OwnPages() * pageSize, OpenDescriptors(), Threads()};
}

} // namespace Rig
