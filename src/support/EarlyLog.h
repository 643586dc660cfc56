#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "../../include/plugin/PluginTypes.h"

namespace Halvorix::SSOServices {

/// A message that waits for the plugin's logger.
struct EarlyLogEntry {
    std::wstring text;
    Log::LogLevel level;
};

/// Messages in the order in which they came. Lines that come again and again, such as
/// those of a call that is made for days while there is no plugin, are kept once, with a
/// count.
class EarlyLog {
public:
    void Add(std::wstring text, Log::LogLevel level);
    /// Adds what came later.
    void Add(EarlyLog&& later);

    bool IsEmpty() const { return entries.empty(); }
    /// Keeps its room.
    void Clear();

    /// Each message as often as it came.
    void ForEach(std::function<void(EarlyLogEntry const&)> const& action) const;

private:
    /// Entries in a row that came several times.
    struct Repetition {
        std::size_t begin;
        std::size_t length;
        unsigned long long times;
        std::size_t End() const { return begin + length; }
    };

    bool IsRepeated(std::size_t length) const;
    void FoldRepeated();

    std::vector<EarlyLogEntry> entries;
    std::vector<Repetition> repetitions; // in order, none inside another
};

} // namespace Halvorix::SSOServices
