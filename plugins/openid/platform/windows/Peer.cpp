#include "openid/platform/Peer.h"

namespace Halvorix::OpenId {

// Other users, those of a terminal server's other sessions too, reach the port. But they cannot
// read the command line of this user's browser, and so do not know the `state` of a sign-in,
// without which it takes no answer.
Peer PeerOf(std::intptr_t) { return {}; }

} // namespace Halvorix::OpenId
