#pragma once

#include <chrono>
#include <filesystem>
#include <string>

namespace Halvorix::Tools {

struct ChildRun {
    bool isStarted = false;
    std::string output;  ///< what it wrote on its standard output
    std::string end;     ///< how it ended: "ends the process with exit status 0", say
    bool isGood = false; ///< by itself, with exit status 0
};

/// Runs a program in a process of its own, with that on its standard input. When the
/// time is over, or more is written than anything needs, it is ended with all that it
/// has started.
ChildRun RunChild(std::filesystem::path const& program, std::string const& input,
                  std::chrono::seconds limit);

/// To be called by the child: gives its standard output to this descriptor alone, and
/// leaves nothing at all behind the standard streams.
int TakeStandardOutput();

void WriteAll(int descriptor, std::string const& text);

/// Ends this process at once: no code of a module runs at its end.
[[noreturn]] void EndProcess();

constexpr std::size_t MostChildOutput = std::size_t{16} << 20U;

} // namespace Halvorix::Tools
