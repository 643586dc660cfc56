#pragma once

#include <set>
#include <string>

#include "faults/Circumstances.h"

namespace Faults {

/// Works out, step by step, what a host sees of the library in given
/// circumstances: of its first load, of the calls that follow, and of the load
/// of a second manager.
class LoadModel {
public:
    explicit LoadModel(Circumstances const& circumstances) : given(circumstances) {}

    /// What a public call gives that asks the factory's getter and then calls
    /// the operation: "usual", "fixed", or "threw" with its text.
    std::string Call(std::string const& getter, std::string const& operation);

    /// A new manager takes the place of this one.
    void ReleaseManager();

    std::set<std::string> told; // lines at level error
    int factoryCalls = 0;

private:
    struct Thrown {
        std::string text;
    };

    bool EnsurePluginLoaded();
    bool LoadPlugin();
    bool ChoosePlugin();
    void SetUpPlugin();
    bool Ask(std::string const& operation) const; // false for an empty answer
    void Say(std::string const& line);
    void TellAll(std::vector<std::string> const& lines);
    static void RaiseIfAny(std::string const& text);

    Circumstances const& given;
    bool loadBegun = false;
    bool hasModule = false;
    bool hasFactory = false;
    bool hasLogger = false; // belongs to the process
};

} // namespace Faults
