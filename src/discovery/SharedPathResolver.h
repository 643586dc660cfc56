#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "discovery/SSOPathResolver.h"

namespace Halvorix::SSOServices {

/// A resolver that any number of threads ask.
///
/// A question is answered by a copy of the resolver, which takes the original's place
/// afterwards; where another thread has been faster, the question is put again. So the
/// answers are those of questions that come one by one, and each question's lines are
/// logged behind its answer, in their order; those of two threads may mix. No lock is held
/// while the copy looks at files, asks the system or its lines are logged: the log belongs
/// to the plugin, and the system's loader may wait for another thread.
class SharedPathResolver : protected SSOPathResolver {
public:
    using Question = std::function<void(SSOPathResolver&)>;

    SharedPathResolver(Version version, LogFunction log);

    /// May put the question several times, of which the last counts. What it learned
    /// stays learned, and its lines are logged, also where it throws.
    void Ask(Question const& question);

    template <class Answer>
    Answer Ask(Answer (SSOPathResolver::*getter)())
    {
        Answer answer;
        Ask([&](SSOPathResolver& resolver) { answer = (resolver.*getter)(); });
        return answer;
    }

    template <class Answer>
    Answer Ask(Answer (SSOPathResolver::*getter)() const)
    {
        Answer answer;
        Ask([&](SSOPathResolver const& resolver) { answer = (resolver.*getter)(); });
        return answer;
    }

    /// Two questions: the logger that is told of an override still finds the one before,
    /// and keeps it by throwing.
    void SetSSOClientConfigFileOverride(std::wstring const& path);

protected:
    void SetSupportFileSearchPaths(std::vector<std::wstring> const& paths);

    LogFunction const log;

private:
    struct Line {
        std::wstring text;
        Log::LogLevel level;
    };

    /// False if another thread has changed what is known since that age.
    bool Learn(SSOPathResolver const& copy, std::uint64_t copiedAt);
    /// Only if there is a log to send them to.
    void LogLines(std::vector<Line> const& lines);

    std::mutex mutex; // of the base and its age
    std::uint64_t age = 0;
};

} // namespace Halvorix::SSOServices
