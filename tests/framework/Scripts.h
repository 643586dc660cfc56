#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "framework/Installation.h"
#include "framework/Variable.h"

// Many scripts for one host, one after the other: the recording plugin reads its script at
// each call, and a process costs more than a call.
namespace Rig {

/// In the host: does something for each script. What is reported of one has this prefix.
template <class Action>
void WithEachScript(std::vector<std::string> const& arguments, Action const& action)
{
    namespace fs = std::filesystem;
    fs::path const script = fs::u8path(Variable("HXSSO_PLUGIN_SCRIPT"));
    for (int number = 0; number < std::stoi(arguments[0]); ++number) {
        fs::remove(script); // GCC's library for Windows overwrites none
        fs::copy_file(script.parent_path() / "scripts" / std::to_string(number), script);
        action(std::to_string(number) + ".");
    }
}

/// In the test: runs a host that does so. In each script these operations do the same.
inline Outcome RunWithActions(std::string const& program,
                              std::vector<std::string> const& operations,
                              std::vector<std::string> const& actions)
{
    Installation installation;
    installation.Complete();
    for (std::size_t i = 0; i < actions.size(); ++i) {
        std::string script;
        for (std::string const& operation : operations)
            script += (script.empty() ? "{\"" : ", \"") + operation + "\": " + actions[i];
        installation.File("scripts/" + std::to_string(i), script + "}");
    }
    Outcome outcome = installation.Run(program, {std::to_string(actions.size())});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    return outcome;
}

} // namespace Rig
