#include "common/Report.h"

#include <utility>

#include "common/Utf8.h"

namespace Halvorix::Tools {

namespace {

std::string OneLine(std::string text)
{
    for (char& unit : text)
        if (unit == '\n' || unit == '\r' || unit == '\t')
            unit = ' ';
    return text;
}

} // namespace

char const* Spelled(Result result)
{
    switch (result) {
    case Result::Ok:
        return "ok";
    case Result::Failed:
        return "FAILED";
    case Result::Note:
        break;
    }
    return "note";
}

std::string Presentable(std::string const& text) { return Escaped(OneLine(text)); }

void Report::Add(char const* check, Result result, std::string const& text,
                 std::string const& remedy, std::size_t things)
{
    if (result == Result::Failed)
        ++failures;
    Take({Presentable(check), result, Presentable(text), remedy, things});
}

} // namespace Halvorix::Tools
