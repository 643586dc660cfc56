#pragma once

namespace Halvorix::Tools {

/// What a person reads the standard output on.
struct Terminal {
    bool takesColours = false;
    unsigned width = 0; ///< in columns; 0 where lines are not to be broken
};

/// Of a file or a pipe: neither. Also sees to it that a terminal takes the output for
/// UTF-8.
Terminal BeginTerminal();

} // namespace Halvorix::Tools
