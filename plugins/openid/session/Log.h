#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <plugin/ILogger.h>

#include "openid/protocol/Outcome.h"

namespace Halvorix::OpenId {

/// The log: `HxSSOOpenID.log` in the store's folder, a line each with time, process, level and
/// text; over 1 MiB it becomes `HxSSOOpenID.old.log`. Until a folder is known, and where it cannot
/// be written, lines wait (at most 1,000) or are dropped; nothing throws. Any thread.
class LogFile {
public:
    /// Writes what waits, and all that comes, to this folder.
    void Open(std::filesystem::path const& folder);
    void Write(Log::LogLevel level, std::wstring const& text);
    void Info(std::string const& text);
    /// "WHAT: REASON. Fix: REMEDY" on the level Error.
    void Failed(std::string const& what, Failure const& why);

private:
    struct State;
    std::shared_ptr<State> state;

public:
    LogFile();
};

} // namespace Halvorix::OpenId
