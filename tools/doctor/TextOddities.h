#pragma once

#include <string>
#include <vector>

#include "doctor/Findings.h"
#include "doctor/JsonInspection.h"

namespace Halvorix::Doctor {

/// Adds what is hardly meant in a text that the library takes as it is.
void FindTextOddities(std::string const& value, TextKind kind, std::string const& key, Position at,
                      std::vector<Oddity>& oddities);

} // namespace Halvorix::Doctor
