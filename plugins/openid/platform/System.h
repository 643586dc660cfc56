#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace Halvorix::OpenId {

/// Opens an address in the user's browser (ShellExecuteW, xdg-open) and does not wait for it.
/// `HXSSO_OPENID_BROWSER`, if set in a process without more rights than its user's, names a program
/// that gets the address as its only argument instead. False and a reason if nothing was started.
bool OpenInBrowser(std::string const& url, std::string& reason);

/// Whether there is a screen for it: on Linux a display, or a browser that the environment names.
bool CanShowBrowser();

/// Time that passed since the machine started, sleep included; no clock that is set moves it.
std::chrono::milliseconds SinceBoot();
/// Seconds since 1970, UTC, by the system's clock.
std::int64_t WallClock();
/// Number of this process.
std::uint64_t ProcessId();

} // namespace Halvorix::OpenId
