// The log: one UTF-8 file, to which every line is added at once.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>

#include "Interfaces.h"
#include "Texts.h"

namespace Sample {

namespace {

char const* LevelName(Log::LogLevel level)
{
    switch (level) {
    case Log::LogLevel::Error:
        return "[error] ";
    case Log::LogLevel::Warning:
        return "[warning] ";
    case Log::LogLevel::Info:
        return "[info] ";
    }
    return "[other] ";
}

class Logger : public ILogger {
public:
    Logger()
    {
        // The system's narrow encoding on both sides, whichever it is.
        if (char const* const name = std::getenv("HXSSO_SAMPLE_LOG"))
            file.open(name, std::ios::binary | std::ios::app);
        else
            file.open(std::filesystem::temp_directory_path() / "WebServices.log",
                      std::ios::binary | std::ios::app);
    }

    void WriteLine(wchar_t const* message, Log::LogLevel level) override
    {
        std::string text = ToUtf8(message);
        // The system's error texts end in line ends of their own.
        text.erase(text.find_last_not_of("\r\n") + 1);
        std::string line = LevelName(level);
        for (char const c : text)
            line += c == '\n' ? std::string("\n    ") : std::string(1, c);
        std::lock_guard<std::mutex> const lock(mutex);
        file << line << '\n' << std::flush;
    }

private:
    std::mutex mutex;
    std::ofstream file;
};

class LogManager : public ISSOLogManager {
public:
    // One file for all names. The library asks for "HxSSOServices" alone.
    std::shared_ptr<ILogger> GetLogger(std::wstring) override { return logger; }

private:
    std::shared_ptr<ILogger> const logger = std::make_shared<Logger>();
};

} // namespace

std::shared_ptr<ISSOLogManager> MakeLogManager() { return std::make_shared<LogManager>(); }

} // namespace Sample
