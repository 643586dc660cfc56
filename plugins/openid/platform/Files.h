#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

namespace Halvorix::OpenId {

/// The folder of the file that the loader mapped for this plugin.
std::filesystem::path ModuleFolder();
/// Known folders by name: "ProgramFiles", "AppData" (roaming), "LocalAppData", "Home". Empty for
/// any other and for one that the system does not know.
std::filesystem::path KnownFolder(std::string const& name);
/// A path as UTF-8 text.
std::string PathText(std::filesystem::path const& path);
/// A path from UTF-8 text.
std::filesystem::path PathFromText(std::string const& text);

/// What a look at a file gave. A content may be a secret: its reader wipes it.
struct FileContent {
    enum class State {
        Read,
        Missing,
        Refused, ///< Not regular, another user's, readable for others, too large.
        Failed,  ///< An error that may be gone the next time: no more handles, a busy file.
    };
    State state = State::Missing;
    std::string bytes;
    std::string reason; ///< Why it was refused or failed, without the file's name.
};

/// Reads an administrator's file: any owner, any mode.
FileContent ReadFile(std::filesystem::path const& file, std::size_t limit);
/// Reads a file of this user alone: on Linux it must be his, closed to others and no symbolic
/// link; on Windows it is its content that is protected.
FileContent ReadPrivateFile(std::filesystem::path const& file, std::size_t limit);
/// Makes the folder with those above it, for this user alone (0700). One that is there is closed
/// to others on Linux; another user's, or a symbolic link, is refused.
bool PreparePrivateFolder(std::filesystem::path const& folder, std::string& reason);
/// Replaces a file whole (0600): a process killed at any moment leaves the old or the new one. What
/// it leaves beside it, FILE.new, the next one takes for its own.
bool ReplacePrivateFile(std::filesystem::path const& file, std::string const& bytes,
                        std::string& reason);
/// Adds to the end of a file (0600), whole even if other processes add too. False if it cannot.
bool AppendPrivateFile(std::filesystem::path const& file, std::string const& bytes);
/// Overwrites a file and removes it, with what a killed replacement left beside it. True if there
/// is none afterwards; on Windows FILE.gone or FILE.new may stay, full of zeros, where another
/// program has it open. Whoever reads meanwhile finds the whole file or none.
bool RemovePrivateFile(std::filesystem::path const& file);
/// Renames over whatever is there.
bool RenameFile(std::filesystem::path const& from, std::filesystem::path const& to);
/// Identity, size and times of a file as text, to be compared: another one after each change.
/// Empty if there is none.
std::string FileStamp(std::filesystem::path const& file);

/// A lock that processes share, held for as long as the object lives. It ends with its process,
/// so that a dead one leaves none. But on Linux a child that was forked while it was held, and has
/// started no other program, keeps it for a parent that dies without its end. Not for the threads
/// of one process among themselves.
class FileLock {
public:
    virtual ~FileLock() = default;
    /// Waits up to `limit`; empty with a reason if it did not come or the file cannot be opened.
    static std::unique_ptr<FileLock> Acquire(std::filesystem::path const& file,
                                             std::chrono::milliseconds limit, std::string& reason);
};

} // namespace Halvorix::OpenId
