#pragma once

#include <string>

namespace Halvorix::OpenId {

/// Whether a browser is what the system would open the text with: http or https, and no control
/// character, which an address has none of.
bool IsWebAddress(std::string const& text);

/// Whether a host, as it stands in an address, is this machine itself: 127.0.0.0/8, [::1],
/// localhost.
bool IsLoopbackHost(std::string const& host);

} // namespace Halvorix::OpenId
