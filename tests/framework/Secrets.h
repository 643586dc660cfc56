#pragma once

#include <string>
#include <vector>

namespace Rig::Secrets {

// What tests use wherever data is secret. Nothing of it may ever show in a log
// line or on the console: Installation::Run looks for it after each run. Long
// enough to lie on the heap, and of plain letters, so that no writer escapes them.
inline constexpr char const AccessToken[] = "planted-access-token-4f1e9c27b6";
inline constexpr char const DecryptedToken[] = "planted-decrypted-token-81c3f0a5";
inline constexpr char const Scope[] = "planted:scope-7a95d21c4e08";
inline constexpr char const CookieValue[] = "planted-cookie-value-2b8e6d13f7";
inline constexpr char const ProxyPassword[] = "planted-proxy-password-c60fa4e9";
inline constexpr char const LoginPassword[] = "planted-login-password-5d72b8e1";
inline constexpr char const LoginState[] = "planted-login-state-e3490c1fa8";
inline constexpr char const ConsumerSecret[] = "planted-consumer-secret-9e04b7d6";
inline constexpr char const ClearText[] = "planted-text-to-encrypt-16fa3c8b";

/// All of the above.
std::vector<std::string> All();

/// For the wide side of the library.
inline std::wstring Wide(std::string const& secret)
{
    return std::wstring(secret.begin(), secret.end());
}

/// Base64 forms of a text that starts at the first, second or third byte of a
/// group, without the characters that depend on what stands beside it.
std::vector<std::string> Base64Forms(std::string const& text);

/// The secrets that a text holds, as they are or in base64.
std::vector<std::string> FoundIn(std::string const& text);

} // namespace Rig::Secrets
