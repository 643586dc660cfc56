#pragma once

#include <string>

#include <json/value.h>

#include <WebServicesManager.h>

namespace Halvorix::HxSSO {

/// Who is signed in, as far as the plugin tells; empty texts otherwise.
struct User {
    std::string loginName, name, email, id;
};

User UserOf(WebServices::WebServicesManager const& manager);

/// For a sentence: "Alice (alice@example.org)".
std::string Described(User const& user);

/// "userName", "email" and so on: null where the text is empty.
Json::Value AsJson(User const& user);

/// Null for an empty text.
Json::Value TextOrNull(std::string const& text);
/// Null for 0.
Json::Value TimeOrNull(std::int64_t seconds);

std::string NameOfServer(WebServices::WebServicesManager const& manager);
/// Of the server that is chosen. Asks no network.
std::string Issuer();

/// The plugin's own document of the session, and of the user; null if it is none.
Json::Value SessionState();
Json::Value Claims();

/// The folder in which the plugin keeps what it knows; empty if it tells none.
std::string CacheFolder(WebServices::WebServicesManager const& manager);

} // namespace Halvorix::HxSSO
