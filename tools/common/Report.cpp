#include "Report.h"

#include <utility>

#include "Utf8.h"

namespace Halvorix::Tools {

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

std::string Presentable(std::string text)
{
    for (char& unit : text) {
        auto const code = static_cast<unsigned char>(unit);
        if (code < 0x20 || code == 0x7f)
            unit = ' ';
    }
    return Utf8(text);
}

void Report::Add(char const* check, Result result, std::string const& text)
{
    if (result == Result::Failed)
        ++failures;
    Take({check, result, Presentable(text)});
}

} // namespace Halvorix::Tools
