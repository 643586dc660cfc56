#pragma once

#include <vector>

#include "support/LogSink.h"

namespace Halvorix::SSOServices {

/// What waits for the plugin's logger, line by line.
inline std::vector<EarlyLogEntry> LinesOf(EarlyLog const& log)
{
    std::vector<EarlyLogEntry> lines;
    log.ForEach([&lines](EarlyLogEntry const& line) { lines.push_back(line); });
    return lines;
}

inline std::vector<EarlyLogEntry> TakeEarlyLines() { return LinesOf(TakeEarlyLog()); }

} // namespace Halvorix::SSOServices
