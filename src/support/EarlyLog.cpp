#include "support/EarlyLog.h"

#include <algorithm>
#include <new>
#include <utility>

namespace Halvorix::SSOServices {

namespace {

// Of a row that is looked for: more than a call makes of the lines that it logs.
constexpr std::size_t LongestRow = 512;

// Beside one for each text; some megabytes.
constexpr std::size_t MostItems = 65536;

} // namespace

bool EarlyLog::Item::operator==(Item const& other) const
{
    return number == other.number && times == other.times;
}

bool EarlyLog::Item::operator<(Item const& other) const
{
    return number != other.number ? number < other.number : times < other.times;
}

void EarlyLog::Add(std::wstring const& text, Log::LogLevel level)
{
    log.push_back({NumberOf(text, level), 1});
    try {
        Fold();
        if (log.size() + itemsInRows > MostItems + lines.size())
            KeepOnlyCounts();
    } catch (std::bad_alloc const&) {
        // The log is only longer than it need be.
    }
}

void EarlyLog::Add(EarlyLog const& later)
{
    later.ForEach([this](EarlyLogEntry const& line) { Add(line.text, line.level); });
}

void EarlyLog::ForEach(std::function<void(EarlyLogEntry const&)> const& action) const
{
    ForEach(log, action);
}

// Rows lie inside rows no deeper than the logarithm of the number of lines.
void EarlyLog::ForEach(Row const& row,
                       std::function<void(EarlyLogEntry const&)> const& action) const
{
    for (Item const& item : row) {
        LineOrRow const& entry = entries[item.number];
        for (std::uint64_t i = 0; i < item.times; ++i) {
            if (entry.row.empty())
                action(entry.line);
            else
                ForEach(entry.row, action);
        }
    }
}

// The entry before its number, so that no number is without an entry when memory ends.
std::size_t EarlyLog::NumberOf(std::wstring const& text, Log::LogLevel level)
{
    std::pair<Log::LogLevel, std::wstring> line{level, text};
    if (auto const known = lines.find(line); known != lines.end())
        return known->second;
    entries.push_back({{text, level}, {}});
    return lines.emplace(std::move(line), entries.size() - 1).first->second;
}

std::size_t EarlyLog::NumberOf(Row const& row)
{
    if (auto const known = rows.find(row); known != rows.end())
        return known->second;
    entries.emplace_back().row = row;
    itemsInRows += row.size();
    return rows.emplace(row, entries.size() - 1).first->second;
}

// By text, in the order of each one's first message. A row has a higher number than what
// is in it.
void EarlyLog::KeepOnlyCounts()
{
    std::vector<std::uint64_t> times(entries.size());
    for (Item const& item : log)
        times[item.number] += item.times;
    for (std::size_t number = entries.size(); number-- > 0;)
        for (Item const& item : entries[number].row)
            times[item.number] += times[number] * item.times;
    std::vector<std::size_t> numbers(entries.size());
    std::vector<LineOrRow> kept;
    Row counted;
    kept.reserve(lines.size());
    counted.reserve(lines.size());
    // From here on nothing throws.
    for (std::size_t number = 0; number < entries.size(); ++number) {
        if (!entries[number].row.empty())
            continue;
        numbers[number] = counted.size();
        counted.push_back({counted.size(), times[number]});
        kept.push_back(std::move(entries[number]));
    }
    for (auto& [line, number] : lines)
        number = numbers[number];
    rows.clear();
    itemsInRows = 0;
    entries.swap(kept);
    log.swap(counted);
}

void EarlyLog::Fold()
{
    while (FoldIntoTheOneBefore() || FoldWithThoseBefore()) {
    }
}

// The last items are what the one before them is already.
bool EarlyLog::FoldIntoTheOneBefore()
{
    if (log.size() < 2)
        return false;
    if (Item& before = log[log.size() - 2]; before.number == log.back().number) {
        before.times += log.back().times;
        log.pop_back();
        return true;
    }
    std::size_t const most = std::min(LongestRow, log.size() - 1);
    for (std::size_t length = 2; length <= most; ++length) {
        Item& before = log[log.size() - 1 - length];
        Row const& row = entries[before.number].row;
        if (row.size() == length && row.back() == log.back() &&
            std::equal(row.begin(), row.end(), log.end() - static_cast<std::ptrdiff_t>(length))) {
            ++before.times;
            log.resize(log.size() - length);
            return true;
        }
    }
    return false;
}

// The last items are the same as those before them.
bool EarlyLog::FoldWithThoseBefore()
{
    std::size_t const most = std::min(LongestRow, log.size() / 2);
    for (std::size_t length = 2; length <= most; ++length) {
        if (!(log.back() == log[log.size() - 1 - length]))
            continue;
        auto const middle = log.end() - static_cast<std::ptrdiff_t>(length);
        auto const begin = middle - static_cast<std::ptrdiff_t>(length);
        if (!std::equal(begin, middle, middle))
            continue;
        std::size_t const row = NumberOf(Row(begin, middle));
        log.resize(log.size() - 2 * length);
        log.push_back({row, 2});
        return true;
    }
    return false;
}

} // namespace Halvorix::SSOServices
