#pragma once

#include <map>
#include <string>
#include <vector>

namespace Halvorix::HxSSO {

/// What the command line asks for.
struct Options {
    std::string command;
    /// By its name with the dashes; empty for one that takes no value.
    std::map<std::string, std::string> given;
    std::vector<std::string> rest; ///< what hxsso-doctor is told
    std::string misuse;            ///< what is wrong with the arguments; empty: nothing
    bool help = false;
    bool version = false;

    bool Has(char const* option) const { return given.count(option) != 0; }
    /// Empty if it is not given.
    std::string Value(char const* option) const;
};

Options ReadOptions(std::vector<std::string> const& arguments);

} // namespace Halvorix::HxSSO
