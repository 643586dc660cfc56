#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <plugin/PluginTypes.h>

namespace Halvorix::SSOServices {

/// A message that waits for the plugin's logger.
struct EarlyLogEntry {
    std::wstring text;
    Log::LogLevel level;
};

/// Messages in the order in which they came. Each text is kept once, and what comes again
/// and again, such as the lines of a call that is made for days while there is no plugin,
/// is kept as a count. Where tens of thousands come in an order that never repeats, all
/// that came so far are put together by text.
class EarlyLog {
public:
    void Add(std::wstring const& text, Log::LogLevel level);
    /// Adds what came later.
    void Add(EarlyLog const& later);

    bool IsEmpty() const { return log.empty(); }

    /// Each message as often as it came.
    void ForEach(std::function<void(EarlyLogEntry const&)> const& action) const;

private:
    /// The number of an entry, and how many times it is repeated.
    struct Item {
        std::size_t number;
        std::uint64_t times;
        bool operator==(Item const& other) const;
        bool operator<(Item const& other) const;
    };
    using Row = std::vector<Item>;

    std::size_t NumberOf(std::wstring const& text, Log::LogLevel level);
    std::size_t NumberOf(Row const& row);
    void Fold();
    bool FoldIntoTheOneBefore();
    bool FoldWithThoseBefore();
    void KeepOnlyCounts();
    void ForEach(Row const& row, std::function<void(EarlyLogEntry const&)> const& action) const;

    // Numbered from 0.
    struct LineOrRow {
        EarlyLogEntry line;
        Row row; // empty for a line
    };
    std::vector<LineOrRow> entries;
    std::map<std::pair<Log::LogLevel, std::wstring>, std::size_t> lines;
    std::map<Row, std::size_t> rows;
    std::size_t itemsInRows = 0;
    Row log;
};

} // namespace Halvorix::SSOServices
