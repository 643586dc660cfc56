#pragma once

namespace Halvorix::SSOServices {

/// Gives the process the system's locale. The host's global locale changes with
/// the first use of the library, on purpose: narrow path text is converted by it
/// from then on.
void SetProcessLocale();

} // namespace Halvorix::SSOServices
