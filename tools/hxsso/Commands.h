#pragma once

#include "hxsso/Answer.h"
#include "hxsso/Options.h"

namespace Halvorix::HxSSO {

// One for each command.

Answer Login(Options const& options);
Answer Logout(Options const& options);
Answer TellStatus(Options const& options);
Answer WhoAmI(Options const& options);
Answer ListServers(Options const& options);
Answer Configure(Options const& options);
Answer InstallForAll(Options const& options);

/// Writes the token itself, and answers the exit status.
int TellToken(Options const& options);

/// Runs hxsso-doctor for this program, and answers its exit status.
int RunDoctor(Options const& options);

} // namespace Halvorix::HxSSO
