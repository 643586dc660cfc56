#pragma once

namespace Halvorix::SSOServices::EventNames {

// Names of the events that plugin and server tell each other of; nothing in the
// library reads them.
inline constexpr char const* AboutToLogout = "AboutToLogout";
inline constexpr char const* AccountCreated = "AccountCreated";
inline constexpr char const* LoggedIn = "LoggedIn";
inline constexpr char const* LoggedOut = "LoggedOut";
inline constexpr char const* LoggingOut = "LoggingOut";
inline constexpr char const* LoginDialogTimeoutInHxSSOServer = "LoginDialogTimeoutInHxSSOServer";
inline constexpr char const* LoginRestored = "LoginRestored";
inline constexpr char const* OAuth2Disabled = "OAuth2Disabled";
inline constexpr char const* OAuth2Enabled = "OAuth2Enabled";
inline constexpr char const* OAuth2TokenAcquired = "OAuth2TokenAcquired";
inline constexpr char const* OAuth2TokenAvailable = "OAuth2TokenAvailable";
inline constexpr char const* OAuth2TokenDiscarded = "OAuth2TokenDiscarded";
inline constexpr char const* OAuth2TokenQueryFailed = "OAuth2TokenQueryFailed";
inline constexpr char const* OAuth2TokenRefreshed = "OAuth2TokenRefreshed";
inline constexpr char const* ServerChanged = "ServerChanged";
inline constexpr char const* TokenAcquired = "TokenAcquired";
inline constexpr char const* TokenAvailable = "TokenAvailable";
inline constexpr char const* TokenQueryFailed = "TokenQueryFailed";
inline constexpr char const* TokenRefreshed = "TokenRefreshed";

} // namespace Halvorix::SSOServices::EventNames
