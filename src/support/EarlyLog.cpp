#include "EarlyLog.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Halvorix::SSOServices {

namespace {

// More than the lines of any call that is made again and again.
constexpr std::size_t LongestRepetition = 64;

bool AreEqual(EarlyLogEntry const& left, EarlyLogEntry const& right)
{
    return left.level == right.level && left.text == right.text;
}

} // namespace

void EarlyLog::Add(std::wstring text, Log::LogLevel level)
{
    entries.push_back({std::move(text), level});
    FoldRepeated();
}

void EarlyLog::Add(EarlyLog&& later)
{
    std::size_t const count = entries.size();
    repetitions.reserve(repetitions.size() + later.repetitions.size());
    entries.insert(entries.end(), std::make_move_iterator(later.entries.begin()),
                   std::make_move_iterator(later.entries.end()));
    for (Repetition const& one : later.repetitions)
        repetitions.push_back({count + one.begin, one.length, one.times});
    later.Clear();
}

void EarlyLog::Clear()
{
    entries.clear();
    repetitions.clear();
}

void EarlyLog::ForEach(std::function<void(EarlyLogEntry const&)> const& action) const
{
    auto const repeat = [&](std::size_t begin, std::size_t end, unsigned long long times) {
        for (; times > 0; --times)
            for (std::size_t i = begin; i < end; ++i)
                action(entries[i]);
    };
    std::size_t next = 0;
    for (Repetition const& one : repetitions) {
        repeat(next, one.begin, 1);
        repeat(one.begin, one.End(), one.times);
        next = one.End();
    }
    repeat(next, entries.size(), 1);
}

// Whether the last entries are the same as those before them.
bool EarlyLog::IsRepeated(std::size_t length) const
{
    if (entries.size() < 2 * length)
        return false;
    std::size_t const begin = entries.size() - 2 * length;
    std::size_t const folded = repetitions.empty() ? 0 : repetitions.back().End();
    bool const isTheLast = folded == begin + length && repetitions.back().length == length;
    return (begin >= folded || isTheLast) &&
           std::equal(entries.end() - static_cast<std::ptrdiff_t>(length), entries.end(),
                      entries.begin() + static_cast<std::ptrdiff_t>(begin), AreEqual);
}

void EarlyLog::FoldRepeated()
{
    for (std::size_t length = 1; length <= LongestRepetition; ++length) {
        if (!IsRepeated(length))
            continue;
        std::size_t const begin = entries.size() - 2 * length;
        if (!repetitions.empty() && repetitions.back().begin == begin)
            ++repetitions.back().times;
        else
            repetitions.push_back({begin, length, 2});
        entries.resize(begin + length);
        return;
    }
}

} // namespace Halvorix::SSOServices
