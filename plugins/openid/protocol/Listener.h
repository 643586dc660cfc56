#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "openid/platform/Peer.h"
#include "openid/protocol/Outcome.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

/// Waits at the loopback address for the browser to come back (RFC 8252, section 7.3). No thread
/// of its own: it works while somebody waits.
class Listener {
public:
    /// @param ports in their order; empty for one of the system's choice
    static Outcome<std::unique_ptr<Listener>> Open(std::vector<int> const& ports);
    virtual ~Listener() = default;

    /// "http://127.0.0.1:PORT/callback"; with [::1] on a machine without IPv4
    virtual std::string const& RedirectUri() const = 0;
    /// Answers requests until one to the redirect address has the right `state`, tells the browser
    /// what happened in a plain page, and closes. Requests that are wrong, larger than 16 KiB, or
    /// slower than five seconds are refused, and go on beside each other: none keeps the right one
    /// waiting.
    /// A connection of another user is closed without an answer, where the system tells its user.
    /// @param tell hears of the first one that is not known to be this user's; may be empty
    /// @return the response's parameters, at most 20 of them
    virtual Outcome<Parameters> Wait(std::string const& state, std::chrono::milliseconds limit,
                                     std::atomic<bool> const* cancelled,
                                     std::function<void(Peer const&)> const& tell) = 0;
};

} // namespace Halvorix::OpenId
