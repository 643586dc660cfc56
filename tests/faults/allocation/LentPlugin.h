#pragma once

#include <memory>
#include <string>

#include "framework/Installation.h"

namespace Faults {

/// An installation whose plugin is in this executable, and the state of that
/// plugin. The library finds it by the override of its configuration file.
class LentPlugin {
public:
    LentPlugin();
    ~LentPlugin();
    LentPlugin(LentPlugin const&) = delete;
    LentPlugin& operator=(LentPlugin const&) = delete;

    /// The configuration file that leads to it.
    std::wstring ConfigFile() const;

    /// How often the factory was asked for since the last Reset.
    static int FactoryCalls();
    /// How many lines the logger was given since then.
    static int Lines();

    /// What the next JSON results are: null for none, and whether the plugin
    /// says that it succeeded.
    static void GiveText(char const* text, bool succeeds = true);

    /// A new manager that is to use that file. Not by its GetInstance: setting the
    /// process's locale takes longer than all the rest.
    void RenewManager() const;

    /// The library as it is before its first use, but for the module that stays.
    static void Reset();

private:
    Rig::Installation installation;
};

} // namespace Faults
