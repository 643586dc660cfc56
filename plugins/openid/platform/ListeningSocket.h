#pragma once

#include <cstdint>

namespace Halvorix::OpenId {

/// A TCP socket of IPv4 or IPv6, not bound yet, that no child process inherits. No other program
/// can take over its port; one on which connections ended a moment ago is free. -1 if there is
/// none.
std::intptr_t NewListeningSocket(bool isIpv6);
/// The same for one that was accepted, which Boost.Asio makes without it. A child that is started
/// just before inherits it.
void KeepFromChildren(std::intptr_t socket);

} // namespace Halvorix::OpenId
