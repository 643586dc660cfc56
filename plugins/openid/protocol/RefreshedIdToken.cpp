#include "openid/protocol/RefreshedIdToken.h"

#include <algorithm>

#include "openid/protocol/IdTokenClaims.h"

namespace Halvorix::OpenId {

namespace {

/// Whether a token is for this client: its audience is one text or a list.
bool IsFor(Json::Value const& audience, Json::Value const& client)
{
    return audience == client || (audience.isArray() && std::find(audience.begin(), audience.end(),
                                                                  client) != audience.end());
}

bool HasAudience(Json::Value const& claims, Json::Value const& ofLogin)
{
    Json::Value const& before = ofLogin["aud"];
    if (!before.isArray())
        return IsFor(claims["aud"], before);
    return std::all_of(before.begin(), before.end(),
                       [&](Json::Value const& client) { return IsFor(claims["aud"], client); });
}

/// The same number may be of several types.
bool IsSameTime(Json::Value const& left, Json::Value const& right)
{
    return left.isNumeric() && right.isNumeric() ? left.asDouble() == right.asDouble()
                                                 : left == right;
}

} // namespace

std::optional<Failure> FindChange(Json::Value const& claims, Json::Value const& ofLogin)
{
    if (!claims.isObject())
        return BadIdToken("says nothing that can be read");
    if (claims["sub"] != ofLogin["sub"])
        return BadIdToken("is about another user (sub) than the one who signed in");
    if (claims["iss"] != ofLogin["iss"])
        return BadIdToken("is from another issuer (iss) than that of the sign-in");
    if (!HasAudience(claims, ofLogin))
        return BadIdToken("is not for the client that signed in (aud)");
    if (claims.isMember("auth_time") && ofLogin.isMember("auth_time") &&
        !IsSameTime(claims["auth_time"], ofLogin["auth_time"]))
        return BadIdToken("tells another time of the sign-in (auth_time)");
    // It need not be repeated.
    if (claims.isMember("nonce") && claims["nonce"] != ofLogin["nonce"])
        return BadIdToken("belongs to another sign-in (nonce)");
    return std::nullopt;
}

} // namespace Halvorix::OpenId
