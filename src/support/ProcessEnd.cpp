#include "support/ProcessEnd.h"

#include <chrono>
#include <thread>

#include "platform/Platform.h"

namespace Halvorix::SSOServices {

std::atomic<void (*)()> releasePlugin{nullptr};
std::atomic<bool> processIsEnding{false};

namespace {

std::atomic<int> workUnderWay{0};
thread_local int ownWorkUnderWay = 0;

using Clock = std::chrono::steady_clock;

bool IsWorkUnderWay(Clock::time_point limit)
{
    return workUnderWay > ownWorkUnderWay && Clock::now() < limit;
}

// Long enough for a busy machine, yet not forever: what is under way may itself wait for
// the thread that ends the process. That thread may end it from inside its own work, as
// the constructors of a plugin do that calls exit.
void WaitForWork()
{
    if (Platform::ThreadsEndBeforeModules())
        return;
    auto const limit = Clock::now() + std::chrono::seconds(10);
    constexpr std::chrono::milliseconds pause(1);
    for (; IsWorkUnderWay(limit); std::this_thread::sleep_for(pause)) {
    }
}

// A plugin that is let go may call the library from its destructors.
struct ProcessEnd {
    ProcessEnd() = default;
    ~ProcessEnd()
    {
        processIsEnding = true;
        WaitForWork();
        if (void (*const release)() = releasePlugin)
            release();
    }
    ProcessEnd(ProcessEnd const&) = delete;
    ProcessEnd& operator=(ProcessEnd const&) = delete;
} const processEnd;

} // namespace

std::unique_lock<std::mutex> LockBriefly(std::mutex& mutex)
{
    if (processIsEnding && Platform::ThreadsEndBeforeModules())
        return std::unique_lock<std::mutex>(mutex, std::try_to_lock);
    return std::unique_lock<std::mutex>(mutex);
}

// Counted before the question, so that one of the two sees the other.
WorkBeforeTheEnd::WorkBeforeTheEnd()
{
    ++ownWorkUnderWay;
    ++workUnderWay;
    mayBegin = !processIsEnding;
}

WorkBeforeTheEnd::~WorkBeforeTheEnd()
{
    --workUnderWay;
    --ownWorkUnderWay;
}

} // namespace Halvorix::SSOServices
