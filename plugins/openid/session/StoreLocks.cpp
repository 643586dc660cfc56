#include "openid/session/StoreLocks.h"

#include <algorithm>
#include <utility>

#include "openid/session/AtEnd.h"

namespace Halvorix::OpenId {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr char const* Busy = "it is locked, and was not released in time";

fs::path LockFile(fs::path const& file) { return fs::path(file) += ".lock"; }

std::chrono::milliseconds Until(Clock::time_point deadline)
{
    auto const left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return std::max(left, std::chrono::milliseconds(0));
}

} // namespace

StoreLocks::Turn::Turn(StoreLocks& locks, fs::path file, std::shared_ptr<FileLock> processes)
    : locks(locks), file(std::move(file)), processes(std::move(processes))
{
}

StoreLocks::Turn::~Turn() { locks.GiveBack(file, std::move(processes)); }

std::unique_ptr<StoreLocks::Turn> StoreLocks::Take(fs::path const& file, Limit limit,
                                                   std::string& reason)
{
    auto const deadline = Clock::now() + limit;
    std::unique_lock<std::mutex> lock(mutex);
    Entry& entry = entries[file]; // which stays where it is
    if (!changed.wait_until(lock, deadline, [&] { return !entry.isTaken; })) {
        reason = Busy;
        return nullptr;
    }
    entry.isTaken = true;
    entry.owner = std::this_thread::get_id();
    bool isHandedOut = false;
    // Also if there is no memory left for it.
    AtEnd const givingBack([&] {
        if (isHandedOut)
            return;
        entry.isTaken = false;
        entry.owner = {};
        changed.notify_all();
    });
    auto processes = KeepProcessesOut(lock, file, deadline, reason);
    if (!processes)
        return nullptr;
    auto turn = std::make_unique<Turn>(*this, file, std::move(processes));
    isHandedOut = true;
    return turn;
}

void StoreLocks::GiveBack(fs::path const& file, std::shared_ptr<FileLock> processes)
{
    {
        std::lock_guard<std::mutex> const guard(mutex);
        Entry& entry = entries[file];
        entry.isTaken = false;
        entry.owner = {};
        // Under the mutex: a thread that finds it still alive may keep it.
        processes.reset();
    }
    changed.notify_all();
}

bool StoreLocks::IsMine(fs::path const& file) const
{
    std::lock_guard<std::mutex> const guard(mutex);
    auto const entry = entries.find(file);
    return entry != entries.end() && entry->second.isTaken &&
           entry->second.owner == std::this_thread::get_id();
}

/// One thread opens the lock file, and all share it: a lock between processes is none between
/// threads.
std::shared_ptr<FileLock> StoreLocks::KeepProcessesOut(std::unique_lock<std::mutex>& lock,
                                                       fs::path const& file, Deadline deadline,
                                                       std::string& reason)
{
    Entry& entry = entries[file];
    if (!changed.wait_until(lock, deadline, [&] { return !entry.isBeingOpened; })) {
        reason = Busy;
        return nullptr;
    }
    if (auto shared = entry.processes.lock())
        return shared;
    entry.isBeingOpened = true;
    std::shared_ptr<FileLock> opened;
    {
        AtEnd const isOpened([&] {
            lock.lock();
            entry.isBeingOpened = false;
            changed.notify_all();
        });
        lock.unlock();
        opened = FileLock::Acquire(LockFile(file), Until(deadline), reason);
    }
    entry.processes = opened;
    return opened;
}

bool StoreLocks::HoldForHost(fs::path const& file, Limit limit, std::string& reason)
{
    auto const deadline = Clock::now() + limit;
    std::unique_lock<std::mutex> lock(mutex);
    auto processes = KeepProcessesOut(lock, file, deadline, reason);
    if (!processes)
        return false;
    Entry& entry = entries[file];
    entry.forHost = std::move(processes);
    ++entry.heldForHost;
    return true;
}

void StoreLocks::ReleaseForHost(fs::path const& file)
{
    std::lock_guard<std::mutex> const guard(mutex);
    Entry& entry = entries[file];
    if (entry.heldForHost > 0 && --entry.heldForHost == 0)
        entry.forHost.reset();
}

} // namespace Halvorix::OpenId
