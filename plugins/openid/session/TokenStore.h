#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include "openid/platform/Files.h"
#include "openid/protocol/Outcome.h"
#include "openid/protocol/Provider.h"

namespace Halvorix::OpenId {

/// An access token as it is kept.
struct StoredToken {
    std::string type;  ///< Number of the OAuth2TokenType, as text.
    std::string scope; ///< In normal form, case kept; as asked for.
    Secret text;
    std::int64_t receivedAt = 0; ///< Seconds since 1970 by the wall clock.
    std::int64_t lifetime = 0;   ///< Seconds; 0: not told.
};

/// The login of one user at one issuer with one client.
struct StoredLogin {
    std::string issuer, clientId, subject;
    Secret refreshToken;
    std::string askedFor; ///< The scopes of the authorization request, in normal form.
    std::string scopes;   ///< Those of them that were granted, in normal form.
    Json::Value claims;   ///< Verified id_token's, then userinfo's.
    std::int64_t signedInAt = 0;
    std::vector<StoredToken> tokens;
};

/// What the processes of one user share: for each issuer and client the login, in one protected
/// file each, with a lock beside it. Any thread.
class TokenStore {
public:
    explicit TokenStore(std::filesystem::path folder);

    std::filesystem::path const& Folder() const { return folder; }
    /// Where the login of this issuer and client lies; told to hosts.
    std::filesystem::path FileOf(std::string const& issuer, std::string const& clientId) const;

    /// No value if nobody is signed in. A damaged, foreign or newer file is set aside (not
    /// deleted), counts as signed out, and is told as a failure once. Also fails while the file
    /// cannot be read or made clear. A copy that was read is used again while the file's time and
    /// size are the same; under the lock it is read anew.
    Outcome<std::optional<StoredLogin>> Read(std::string const& issuer,
                                             std::string const& clientId);
    /// Replaces the login; under the lock.
    Outcome<bool> Write(StoredLogin const& login);
    /// Whether the disk has room for another login; not false where the system cannot tell.
    Outcome<bool> CheckRoom() const;
    /// Removes the login's file, overwritten first; under the lock.
    Outcome<bool> Remove(std::string const& issuer, std::string const& clientId);
    /// Removes what was set aside of this login, overwritten first; under the lock. A file in which
    /// the login of another provider or client can be read stays.
    /// @param left the files that could not be removed
    /// @return the refresh tokens that could be read
    std::vector<Secret> RemoveSetAside(std::string const& issuer, std::string const& clientId,
                                       std::vector<std::filesystem::path>& left);

    /// Held for as long as it lives.
    class Lock {
    public:
        virtual ~Lock() = default;
    };
    /// Keeps other processes and the other threads of this one out of a login. Goes through at
    /// once, as far as processes are concerned, while this process holds the login for a host.
    Outcome<std::unique_ptr<Lock>> Acquire(std::string const& issuer, std::string const& clientId,
                                           std::chrono::milliseconds limit);
    /// The same for a host that locks and unlocks by two calls, from any thread, counted.
    Outcome<bool> HoldForHost(std::string const& issuer, std::string const& clientId,
                              std::chrono::milliseconds limit);
    /// Nothing if it is not held.
    void ReleaseForHost(std::string const& issuer, std::string const& clientId);

private:
    std::filesystem::path const folder;
    struct State;
    std::shared_ptr<State> const state; ///< What was read, and the locks that are held.
};

} // namespace Halvorix::OpenId
