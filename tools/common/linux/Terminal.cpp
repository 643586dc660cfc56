#include "common/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace Halvorix::Tools {

namespace {

std::string Variable(char const* name)
{
    char const* const value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

// COLUMNS goes before what the terminal says of itself.
unsigned Width()
{
    std::string const columns = Variable("COLUMNS");
    int const wanted = std::atoi(columns.c_str());
    winsize size{};
    if (wanted > 0)
        return static_cast<unsigned>(wanted);
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0U;
}

} // namespace

Terminal BeginTerminal()
{
    if (::isatty(STDOUT_FILENO) == 0)
        return {};
    std::string const kind = Variable("TERM");
    // An empty NO_COLOR counts as none.
    return {Variable("NO_COLOR").empty() && !kind.empty() && kind != "dumb", Width()};
}

} // namespace Halvorix::Tools
