#pragma once

#include <functional>
#include <string>
#include <vector>

#include "faults/Circumstances.h"

namespace Faults {

/// One thing that is wrong. Two in the same place exclude each other.
struct Fault {
    std::string name;
    std::string place;
    std::function<void(Circumstances&)> happen;
};

std::vector<Fault> const& AllFaults();

/// Every line at level error that a fault can bring about.
std::vector<std::string> const& AllToldLines();

} // namespace Faults
