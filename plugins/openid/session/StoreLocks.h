#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "openid/platform/Files.h"

namespace Halvorix::OpenId {

/// The locks of a store's files: between processes by a lock file each, between the threads of
/// this one by a turn. A process that holds a lock for its host does not stop itself. Any thread.
class StoreLocks {
public:
    using Limit = std::chrono::milliseconds;

    /// A thread's turn at a file, with the processes kept out.
    class Turn {
    public:
        Turn(StoreLocks& locks, std::filesystem::path file, std::shared_ptr<FileLock> processes);
        ~Turn();
        Turn(Turn const&) = delete;
        Turn& operator=(Turn const&) = delete;

    private:
        StoreLocks& locks;
        std::filesystem::path const file;
        std::shared_ptr<FileLock> processes;
    };

    /// Empty with a reason if it did not come in time.
    std::unique_ptr<Turn> Take(std::filesystem::path const& file, Limit limit, std::string& reason);
    /// Whether the calling thread has the file's turn.
    bool IsMine(std::filesystem::path const& file) const;

    /// Counted.
    bool HoldForHost(std::filesystem::path const& file, Limit limit, std::string& reason);
    /// Nothing if it is not held.
    void ReleaseForHost(std::filesystem::path const& file);

private:
    using Deadline = std::chrono::steady_clock::time_point;

    struct Entry {
        bool isTaken = false;
        std::thread::id owner;
        bool isBeingOpened = false;
        std::weak_ptr<FileLock> processes; ///< Shared by a turn and the host.
        std::shared_ptr<FileLock> forHost;
        int heldForHost = 0;
    };

    std::shared_ptr<FileLock> KeepProcessesOut(std::unique_lock<std::mutex>& lock,
                                               std::filesystem::path const& file, Deadline deadline,
                                               std::string& reason);
    void GiveBack(std::filesystem::path const& file, std::shared_ptr<FileLock> processes);

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::map<std::filesystem::path, Entry> entries;
};

} // namespace Halvorix::OpenId
