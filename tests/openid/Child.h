#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace Rig {

/// What this test program does as a process of its own; the result is its exit status.
using ChildProgram = int (*)(std::vector<std::string> const& arguments);

bool RegisterChild(std::string const& name, ChildProgram program);

/// The file of this test program.
std::string ThisProgram();

/// A process that runs one of them, killed at the end if it still runs.
class Child {
public:
    Child(std::string const& name, std::vector<std::string> const& arguments);
    ~Child();
    Child(Child const&) = delete;
    Child& operator=(Child const&) = delete;

    /// Ends it at whatever it does, as a crash or the system would.
    void Kill();
    /// Its exit status; -1 if it was killed or did not end within the limit.
    int Wait(std::chrono::milliseconds limit = std::chrono::minutes(1));

private:
    struct Process;
    std::unique_ptr<Process> process;
};

} // namespace Rig

#define CHILD_PROGRAM(name)                                                                        \
    static int name(std::vector<std::string> const& arguments);                                    \
    [[maybe_unused]] static bool const name##IsRegistered = Rig::RegisterChild(#name, &name);      \
    static int name([[maybe_unused]] std::vector<std::string> const& arguments)
