#include "discovery/SharedPathResolver.h"

#include <exception>
#include <optional>
#include <utility>

#include "support/ProcessEnd.h"

namespace Halvorix::SSOServices {

namespace {

// A host that keeps changing what is known must not keep others from their answers,
// which are then right for the moment of the copy and not kept.
constexpr int MostAttempts = 100;

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
    int attempts = 0;
    do {
        lines.clear();
        failure = nullptr;
        {
            auto const lock = LockBriefly(mutex);
            copy.emplace(static_cast<SSOPathResolver const&>(*this), keep);
            copiedAt = age;
        }
        try {
            question(*copy);
        } catch (std::exception const&) {
            failure = std::current_exception();
        }
        ++attempts;
    } while (!Learn(*copy, copiedAt) && attempts < MostAttempts);
    if (log)
        LogLines(lines);
    if (failure)
        std::rethrow_exception(failure);
}

void SharedPathResolver::SetSSOClientConfigFileOverride(std::wstring const& path)
{
    bool isTaken = false;
    Ask([&](SSOPathResolver& resolver) {
        isTaken = resolver.AnnounceSSOClientConfigFileOverride(path);
    });
    if (isTaken)
        Ask([&](SSOPathResolver& resolver) { resolver.StoreSSOClientConfigFileOverride(path); });
}

// What was found out is not found out again, so that no line may be lost to a logger that
// throws at another one; its first exception leaves.
void SharedPathResolver::LogLines(std::vector<Line> const& lines)
{
    for (std::size_t i = 0; i < lines.size(); ++i) {
        try {
            log(lines[i].text, lines[i].level);
        } catch (...) {
            for (++i; i < lines.size(); ++i) {
                try {
                    log(lines[i].text, lines[i].level);
                } catch (...) {
                }
            }
            throw;
        }
    }
}

bool SharedPathResolver::Learn(SSOPathResolver const& copy, std::uint64_t copiedAt)
{
    auto const lock = LockBriefly(mutex);
    if (age != copiedAt)
        return false;
    if (!KnowsTheSameAs(copy)) {
        static_cast<SSOPathResolver&>(*this) = SSOPathResolver(copy, LogFunction());
        ++age;
    }
    return true;
}

void SharedPathResolver::SetSupportFileSearchPaths(std::vector<std::wstring> const& paths)
{
    auto const lock = LockBriefly(mutex);
    if (paths == GetSupportFileSearchPaths())
        return;
    SSOPathResolver::SetSupportFileSearchPaths(paths);
    ++age;
}

} // namespace Halvorix::SSOServices
