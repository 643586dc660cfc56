#pragma once

#include <locale>

namespace Halvorix::SSOServices {

/// The system's locale as the environment names it, or one that is always there. To be
/// made under no lock: what it takes may have to be loaded.
std::locale SystemLocale();

/// The same locale as the C library has it. While it lives, Boost has nothing to load for
/// the one that it makes when its first path locale is set.
std::locale LocaleOfTheCLibrary();

/// Gives it to the process. The host's global locale changes with the first use of the
/// library, on purpose: narrow path text is converted by it from then on. The process keeps
/// the C library's too.
void SetProcessLocale(std::locale const& locale, std::locale const& ofTheCLibrary);

} // namespace Halvorix::SSOServices
