#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <json/value.h>

namespace Halvorix::OpenId {

/// Base64 of URLs, without padding (RFC 7515, appendix C).
std::string ToBase64Url(std::string_view bytes);
/// Empty for padding, blanks, foreign characters and bits left over that are not 0.
std::optional<std::string> FromBase64Url(std::string_view text);

using Parameters = std::vector<std::pair<std::string, std::string>>;
/// application/x-www-form-urlencoded.
std::string EncodeForm(Parameters const& parameters);
/// Empty for a broken escape. Order and repetitions are kept.
std::optional<Parameters> DecodeForm(std::string_view query);
/// Adds parameters to an address, which may have a query already.
std::string WithQuery(std::string const& url, Parameters const& parameters);

/// An address without its query and fragment, for logs.
std::string ForLog(std::string const& url);
/// Whether it is a well-formed https address, or http at a loopback address (127.0.0.0/8, [::1],
/// localhost), without user information and fragment, of at most 8192 characters.
bool IsSecureUrl(std::string const& url);
bool UsesTls(std::string const& url);
/// Scheme, host and port are the same, as written in normal form.
bool IsSameOrigin(std::string const& left, std::string const& right);

/// How deep the JSON of others may be.
constexpr int DeepestJson = 32;
/// A JSON object: strict (no comments, nothing behind it, no repeated key). Null for anything else,
/// with the reason.
Json::Value ParseJsonObject(std::string_view text, std::string& reason, int deepest = DeepestJson);
/// The member's text; empty if it is missing or no text.
std::string TextMember(Json::Value const& object, char const* key);
/// Overwrites all texts in it.
void WipeJson(Json::Value& json);

/// ASCII letters only.
bool EqualIgnoringCase(std::string_view left, std::string_view right);
/// Texts of equal content, in a time that does not tell where they differ.
bool EqualSecrets(std::string_view left, std::string_view right);

/// The words of a scope, without repetition, in the order of their bytes: case counts.
std::string NormalScope(std::string_view scope);

/// What somebody else wrote, fit for a line of a log: without control characters and such that turn
/// the order of a text, cut after 200 characters.
std::string OneLine(std::string_view text);

bool IsUtf8(std::string_view text);
std::wstring ToWide(std::string_view utf8); ///< U+FFFD for what is not valid.
std::string ToUtf8(std::wstring_view text); ///< U+FFFD for what is not valid.

} // namespace Halvorix::OpenId
