#pragma once

#include <cstdint>
#include <string>

namespace Halvorix::OpenId {

/// Whose the other end of a connection is.
struct Peer {
    enum class User {
        This,   ///< The user of this process.
        Other,  ///< Another one, or the system does not name the connection.
        Untold, ///< The system tells nobody's.
    };
    User user = User::This;
    std::string reason; ///< Of anything but This.
};

/// Of a connection that was accepted at a loopback address.
Peer PeerOf(std::intptr_t connection);

} // namespace Halvorix::OpenId
