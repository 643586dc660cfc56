#pragma once

#include <string>

#include "doctor/Findings.h"

namespace Halvorix::Doctor {

// For a person.
char const* Words(Finding finding);
char const* Words(ConfigState state);
char const* Words(Origin origin);
char const* Words(Fit fit);
std::string Words(Presence const& presence);
char const* WordsOfLevel(int level);

// For a program: never changed.
char const* Code(Finding finding);
char const* Code(ConfigState state);
char const* Code(Origin origin);
char const* Code(Fit fit);
char const* Code(Damage damage);

} // namespace Halvorix::Doctor
