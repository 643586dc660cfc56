#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "openid/platform/Http.h"
#include "openid/protocol/Provider.h"

namespace Halvorix::OpenId {

/// What a host gave for its proxies. Passwords are kept protected. Any thread.
class ProxyCredentials {
public:
    /// In place of one for the same host and port.
    void Set(ProxyCredential credential);
    /// The one that fits this host and port best.
    std::optional<ProxyCredential> Find(std::string const& host, int port) const;
    /// All of them; the caller wipes the passwords.
    std::vector<ProxyCredential> All() const;
    bool AreThere() const;
    void Clear();

private:
    struct Kept {
        std::string host;
        int port = 0;
        std::string user;
        Secret password; ///< As Protect gave it.
    };
    static ProxyCredential InClear(Kept const& kept);

    mutable std::mutex mutex;
    std::vector<Kept> all;
};

} // namespace Halvorix::OpenId
