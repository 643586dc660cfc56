#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "openid/protocol/Outcome.h"

namespace Halvorix::OpenId {

/// One entry of `servers`.
struct ServerConfiguration {
    std::string issuer, clientId, scopes = "openid";
    std::vector<int> redirectPorts; ///< Empty: any.
    std::string accountUrl;         ///< May be empty.
    /// Where there is no browser, Login may sign in on another device instead.
    bool deviceLogin = false;
};

/// HxSSOOpenID.json, checked.
struct PluginConfiguration {
    /// By the server's name, as written.
    std::map<std::string, ServerConfiguration> servers;
    std::chrono::seconds loginTimeout{300}, networkTimeout{30};
    std::filesystem::path store;
    std::vector<std::string> remarks; ///< Unknown keys, a line each.
};

/// The store of a configuration that names none, or that cannot be read.
std::filesystem::path DefaultStore();

/// Reads the file beside the plugin. A wrong type, an issuer that is not secure, a missing key: one
/// line with file, key and remedy.
Outcome<PluginConfiguration> ReadConfiguration(std::filesystem::path const& file);
/// The same from a text; `name` stands for the file in messages.
Outcome<PluginConfiguration> ParseConfiguration(std::string const& text, std::string const& name);

} // namespace Halvorix::OpenId
