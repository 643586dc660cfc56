#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// What the program needs of the operating system. Each system has a folder of its own beside
// this header. All texts are UTF-8.
namespace Halvorix::HxSSO {

/// The arguments without the program's name.
std::vector<std::string> BeginProgram(int count, char** arguments);

/// This program's file, links followed as the system follows them.
std::filesystem::path ProgramFile();
/// Another program in its folder.
std::filesystem::path ProgramBeside(char const* name);

std::uint64_t ProcessId();

enum class Stream { Output, Errors };

/// Whether a person reads it.
bool IsTerminal(Stream stream);

/// The bytes as they are, but for a console of Windows, which gets characters. Nothing is kept
/// of them in this process. False if not all of them could be written.
bool Write(Stream stream, std::string const& text);

/// A new file that every user may read, on the disk before this returns. What had its name is
/// removed before: nothing is written through a link. False with the reason, and no file.
bool WriteNewFile(std::filesystem::path const& file, std::string const& text, std::string& reason);

/// As long as it lives, Ctrl-C, a request to end and a hang-up wait: what must not stay half done
/// is done to its end first.
class InterruptsHeldBack {
public:
    InterruptsHeldBack();
    ~InterruptsHeldBack();
    InterruptsHeldBack(InterruptsHeldBack const&) = delete;
    InterruptsHeldBack& operator=(InterruptsHeldBack const&) = delete;

private:
    struct Before;
    std::unique_ptr<Before> before;
};

/// From now on Ctrl-C ends the process at once with that on standard error, and in the way in
/// which shells notice it.
void EndOnInterrupt(char const* text);

/// Runs a program that has the standard streams of this one. Its exit status, or -1 with the
/// reason.
int RunProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments,
               std::string& reason);

} // namespace Halvorix::HxSSO
