#include "hxsso/PluginLog.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include <SSOClientPrivate.h>
#include <WebServicesManager.h>

#include "hxsso/PluginTexts.h"
#include "hxsso/System.h"
#include "hxsso/Text.h"

namespace Halvorix::HxSSO {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t MostRead = 64 << 10;

std::string const TimeOfStart = AsTime(Now());
std::uintmax_t passedOver = 0;

/// The store, or where the log goes while the configuration names none.
fs::path LogFile()
{
    auto const* const manager = WebServices::WebServicesManager::GetInstance();
    std::string folder = manager == nullptr ? std::string() : CacheFolder(*manager);
    if (folder.empty()) {
        std::wstring usual = L"%LocalAppData%/HxSSO/OpenID";
        SSOServices::SSOClientPrivate::ExpandPathVariables(usual);
        folder = ToUtf8(usual);
    }
    return fs::u8path(folder) / "HxSSOOpenID.log";
}

/// What stands in it from there on, as far as it is of use.
std::string EndOf(fs::path const& file, std::uintmax_t from)
{
    std::error_code unknown;
    std::uintmax_t const size = fs::file_size(file, unknown);
    if (unknown)
        return {};
    if (size < from)
        from = 0; // another file by now
    if (size - from > MostRead)
        from = size - MostRead;
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(from));
    std::string text(static_cast<std::size_t>(size - from), '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

/// The text of a line "TIME PROCESS Error TEXT" of this process; empty if it is another one.
std::string ErrorIn(std::string const& line)
{
    std::string const mark = ' ' + std::to_string(ProcessId()) + " Error ";
    // Another process may have had the same number earlier.
    if (line.size() < TimeOfStart.size() + mark.size() ||
        line.compare(0, TimeOfStart.size(), TimeOfStart) < 0 ||
        line.compare(TimeOfStart.size(), mark.size(), mark) != 0)
        return {};
    return line.substr(TimeOfStart.size() + mark.size());
}

Answer AnswerOf(Status status, std::string const& error)
{
    std::string const mark = ". Fix: ";
    std::size_t const at = error.rfind(mark);
    if (at == std::string::npos)
        return Failed(status, error);
    return Failed(status, error.substr(0, at), error.substr(at + mark.size()));
}

bool IsFull(fs::path const& folder)
{
    constexpr std::uintmax_t lineWithoutDoubt = 4096;
    constexpr auto untold = static_cast<std::uintmax_t>(-1); // GCC's 0 on Windows
    std::error_code error;
    fs::space_info const disk = fs::space(folder, error);
    bool const isTold = !error && disk.capacity != 0 && disk.capacity != untold;
    return isTold && (disk.available < lineWithoutDoubt || disk.available == untold);
}

/// A disk that is full takes no line of the log either.
Answer WithoutLine(Status status, Answer other)
{
    fs::path const folder = LogFile().parent_path();
    if (status != Status::Provider || !IsFull(folder))
        return other;
    return Failed(status, "the disk of " + folder.u8string() + " is full", "make room on the disk");
}

} // namespace

void PassOverPluginLog()
{
    std::error_code unknown;
    std::uintmax_t const size = fs::file_size(LogFile(), unknown);
    passedOver = unknown ? 0 : size;
}

Answer ReasonInPluginLog(Status status, Answer other, std::string const& beginning)
{
    std::istringstream lines(EndOf(LogFile(), passedOver));
    std::string last;
    for (std::string line; std::getline(lines, line);) {
        std::string error = ErrorIn(line);
        if (!error.empty() && error.compare(0, beginning.size(), beginning) == 0)
            last = std::move(error);
    }
    return last.empty() ? WithoutLine(status, std::move(other)) : AnswerOf(status, last);
}

} // namespace Halvorix::HxSSO
