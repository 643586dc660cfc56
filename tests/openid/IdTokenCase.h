#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <json/writer.h>

#include "openid/SigningKey.h"
#include "openid/protocol/IdToken.h"
#include "openid/protocol/Texts.h"

namespace Rig {

inline constexpr std::int64_t Now = 1'700'000'000;
inline constexpr char const* AccessToken = "jHkWEdUXMU1BwAsC4vtUsZwnNvTIxEl0z9K3vx5KF0Y";

inline std::string Compact(Json::Value const& json)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, json);
}

inline Json::Value Texts(std::vector<std::string> const& texts)
{
    Json::Value list(Json::arrayValue);
    for (std::string const& text : texts)
        list.append(text);
    return list;
}

/// A token and what it is held against; right as it is.
struct IdTokenCase {
    IdTokenCase()
    {
        header["kid"] = "one";
        claims["iss"] = expected.issuer = "https://idp.example";
        claims["aud"] = expected.clientId = "client";
        claims["nonce"] = expected.nonce = "the nonce";
        claims["sub"] = "user";
        claims["exp"] = Json::Int64(Now + 300);
        claims["iat"] = Json::Int64(Now);
        expected.now = Now;
        expected.accessToken = AccessToken;
        keys = {{"one", "", SigningKey::Shared(SigningKey::Kind::Rsa).Public()}};
    }

    std::string Token() const
    {
        Json::Value whole = header;
        if (!whole.isMember("alg"))
            whole["alg"] = algorithm;
        using Halvorix::OpenId::ToBase64Url;
        std::string const content = ToBase64Url(rawHeader.empty() ? Compact(whole) : rawHeader) +
                                    '.' +
                                    ToBase64Url(rawClaims.empty() ? Compact(claims) : rawClaims);
        std::string const token =
            content + '.' + ToBase64Url(SigningKey::Shared(signer).Sign(algorithm, content));
        return alter ? alter(token) : token;
    }

    Halvorix::OpenId::Outcome<Json::Value> Verify()
    {
        return Halvorix::OpenId::VerifyIdToken(Token(), expected, keys, [this] {
            ++renewals;
            return renewed;
        });
    }

    Json::Value header{Json::objectValue}, claims;
    std::string rawHeader, rawClaims, algorithm = "RS256";
    SigningKey::Kind signer = SigningKey::Kind::Rsa;
    std::function<std::string(std::string)> alter;
    Halvorix::OpenId::IdTokenExpectation expected;
    std::vector<Halvorix::OpenId::SigningKey> keys, renewed;
    int renewals = 0;
};

struct Defect {
    char const* name;
    std::function<void(IdTokenCase&)> make;
    std::string reason;
};

/// Each row's token is refused for its own reason, as what a provider did wrong.
inline void ExpectRefused(std::vector<Defect> const& defects)
{
    for (Defect const& defect : defects) {
        SCOPED_TRACE(defect.name);
        IdTokenCase one;
        defect.make(one);
        auto const claims = one.Verify();
        ASSERT_FALSE(claims);
        EXPECT_EQ(claims.Why().kind, Halvorix::OpenId::Failure::Kind::Provider);
        EXPECT_EQ(claims.Why().reason, "the id_token " + defect.reason);
        EXPECT_FALSE(claims.Why().remedy.empty());
    }
}

/// And accepted without its defect.
inline void ExpectAccepted(std::vector<Defect> const& variants)
{
    for (Defect const& variant : variants) {
        SCOPED_TRACE(variant.name);
        IdTokenCase one;
        variant.make(one);
        auto const claims = one.Verify();
        ASSERT_TRUE(claims) << claims.Why().reason;
        EXPECT_EQ(Halvorix::OpenId::TextMember(*claims, "sub"), "user");
    }
}

} // namespace Rig
