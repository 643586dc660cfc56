#pragma once

#include <string>

#include "hxsso/Answer.h"

namespace Halvorix::HxSSO {

// The boundary gives no reasons. The open plugin's log has them, in a file that docs/openid.md
// describes; of another plugin nothing is read.

/// From now on only what is logged later counts.
void PassOverPluginLog();

/// The last error that begins so and was logged for this process; without one `other`.
Answer ReasonInPluginLog(Status status, Answer other, std::string const& beginning = {});

} // namespace Halvorix::HxSSO
