#include "SharedPathResolver.h"

#include <exception>
#include <optional>
#include <utility>

namespace Halvorix::SSOServices {

namespace {

struct Line {
    std::wstring text;
    Log::LogLevel level;
};

} // namespace

SharedPathResolver::SharedPathResolver(Version version, LogFunction aLog)
    : SSOPathResolver(std::move(version), LogFunction()), log(std::move(aLog))
{
}

void SharedPathResolver::Ask(Question const& question)
{
    std::vector<Line> lines;
    auto const keep = [&lines](std::wstring text, Log::LogLevel level) {
        lines.push_back({std::move(text), level});
    };
    std::exception_ptr failure;
    std::optional<SSOPathResolver> copy;
    std::uint64_t copiedAt = 0;
    do {
        lines.clear();
        failure = nullptr;
        {
            std::lock_guard<std::mutex> const lock(mutex);
            copy.emplace(static_cast<SSOPathResolver const&>(*this), keep);
            copiedAt = age;
        }
        try {
            question(*copy);
        } catch (std::exception const&) {
            failure = std::current_exception();
        }
    } while (!Learn(*copy, copiedAt));
    for (Line& line : lines)
        LogMessage(std::move(line.text), line.level);
    if (failure)
        std::rethrow_exception(failure);
}

bool SharedPathResolver::Learn(SSOPathResolver& copy, std::uint64_t copiedAt)
{
    std::lock_guard<std::mutex> const lock(mutex);
    if (age != copiedAt)
        return false;
    if (!KnowsTheSameAs(copy)) {
        static_cast<SSOPathResolver&>(*this) = SSOPathResolver(std::move(copy));
        ++age;
    }
    return true;
}

void SharedPathResolver::SetSupportFileSearchPaths(std::vector<std::wstring> const& paths)
{
    std::lock_guard<std::mutex> const lock(mutex);
    if (paths == GetSupportFileSearchPaths())
        return;
    SSOPathResolver::SetSupportFileSearchPaths(paths);
    ++age;
}

void SharedPathResolver::LogMessage(std::wstring message, Log::LogLevel level)
{
    if (log)
        log(std::move(message), level);
}

} // namespace Halvorix::SSOServices
