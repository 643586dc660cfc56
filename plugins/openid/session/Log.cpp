#include "openid/session/Log.h"

#include <chrono>
#include <ctime>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/date_time/posix_time/time_formatters.hpp>

#include "openid/platform/Files.h"
#include "openid/platform/System.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

namespace fs = std::filesystem;
using Log::LogLevel;

constexpr std::uintmax_t LargestLog = 1 << 20;
constexpr std::size_t MostWaiting = 1000;

std::string Time()
{
    auto const now = static_cast<std::time_t>(WallClock());
    return boost::posix_time::to_iso_extended_string(boost::posix_time::from_time_t(now)) + 'Z';
}

std::string Name(LogLevel level)
{
    switch (level) {
    case LogLevel::Error:
        return "Error";
    case LogLevel::Warning:
        return "Warning";
    case LogLevel::Info:
        return "Info";
    }
    return "Level " + std::to_string(static_cast<int>(level));
}

std::string Escape(unsigned char byte)
{
    static char const digits[] = "0123456789ABCDEF";
    return {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
}

/// A text of a configuration file may hold control characters, which must not reach the
/// terminal of whoever reads the log: those of ASCII, and those from U+0080 to U+009F.
std::string WithoutControls(std::string const& text)
{
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const byte = static_cast<unsigned char>(text[i]);
        auto const next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
            shown += Escape(next);
            ++i;
        } else if (byte == '\n') {
            shown += "\\n";
        } else if (byte < 0x20 || byte == 0x7F) {
            shown += Escape(byte);
        } else {
            shown += text[i];
        }
    }
    return shown;
}

bool IsTooLarge(fs::path const& file)
{
    std::error_code error;
    auto const size = fs::file_size(file, error);
    return !error && size > LargestLog;
}

fs::path Beside(fs::path const& file, char const* ending)
{
    return fs::path(file).replace_extension(ending);
}

/// Several processes may find the file too large at once: the second one that gets the lock
/// finds a small one.
void MakeRoom(fs::path const& file)
{
    if (!IsTooLarge(file))
        return;
    std::string reason;
    auto const lock =
        FileLock::Acquire(Beside(file, ".log.lock"), std::chrono::milliseconds(0), reason);
    if (lock && IsTooLarge(file))
        RenameFile(file, Beside(file, ".old.log"));
}

/// The end of a process kills its threads wherever they are, and a line may come after that:
/// so nobody waits for long.
std::unique_lock<std::mutex> LockBriefly(std::mutex& mutex)
{
    std::unique_lock<std::mutex> lock(mutex, std::try_to_lock);
    for (int tries = 0; !lock && tries < 500; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        lock.try_lock();
    }
    return lock;
}

} // namespace

struct LogFile::State {
    std::mutex mutex;
    fs::path file; // empty until a folder is known
    std::deque<std::string> waiting;

    void Append(std::string const& line)
    {
        MakeRoom(file);
        AppendPrivateFile(file, line);
    }

    void Add(std::string line)
    {
        auto const lock = LockBriefly(mutex);
        if (!lock)
            return;
        if (!file.empty()) {
            Append(line);
            return;
        }
        if (waiting.size() == MostWaiting)
            waiting.pop_front();
        waiting.push_back(std::move(line));
    }

    void Open(fs::path const& folder)
    {
        if (folder.empty())
            return;
        std::string reason;
        bool const isReady = PreparePrivateFolder(folder, reason);
        auto const lock = LockBriefly(mutex);
        if (!lock)
            return;
        file = folder / "HxSSOOpenID.log";
        std::string all;
        for (std::string const& line : waiting)
            all += line;
        waiting.clear();
        if (isReady && !all.empty())
            Append(all);
    }
};

LogFile::LogFile() : state(std::make_shared<State>()) {}

void LogFile::Open(fs::path const& folder)
{
    try {
        state->Open(folder);
    } catch (std::exception const&) {
        // A log that cannot be written must not stop its host.
    }
}

void LogFile::Write(LogLevel level, std::wstring const& text)
{
    try {
        state->Add(Time() + ' ' + std::to_string(ProcessId()) + ' ' + Name(level) + ' ' +
                   WithoutControls(ToUtf8(text)) + '\n');
    } catch (std::exception const&) {
        // As above.
    }
}

void LogFile::Info(std::string const& text) { Write(LogLevel::Info, ToWide(text)); }

void LogFile::Failed(std::string const& what, Failure const& why)
{
    std::string line = what + ": " + why.reason;
    // Others' words may end in a full stop of their own.
    if (line.back() == '.')
        line.pop_back();
    if (!why.remedy.empty())
        line += ". Fix: " + why.remedy;
    Write(LogLevel::Error, ToWide(line));
}

} // namespace Halvorix::OpenId
