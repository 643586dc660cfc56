#pragma once

#include <cstddef>
#include <string>

namespace Halvorix::Tools {

enum class Result { Ok, Failed, Note };

/// What is said of one thing that was looked at.
struct Check {
    std::string name; ///< short
    Result result;
    std::string detail;     ///< one line of UTF-8
    std::string remedy;     ///< empty: none is known
    std::size_t things = 1; ///< of how many it tells
};

/// "ok", "FAILED" or "note".
char const* Spelled(Result result);

/// One line of UTF-8 of whatever text, such as that of a plugin's exception. What could
/// steer a terminal, or show the line in another order, is spelled: \u009B.
std::string Presentable(std::string const& text);

/// What holds and what does not, in the order in which it was found.
class Report {
public:
    Report() = default;
    virtual ~Report() = default;
    Report(Report const&) = delete;
    Report& operator=(Report const&) = delete;

    void Add(char const* check, Result result, std::string const& text,
             std::string const& remedy = {}, std::size_t things = 1);

    bool HasFailed() const { return failures != 0; }

protected:
    int Failures() const { return failures; }

private:
    virtual void Take(Check check) = 0;

    int failures = 0;
};

} // namespace Halvorix::Tools
