// Tokens with one defect each, beside the same one without.

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <json/writer.h>

#include "openid/SigningKey.h"
#include "openid/protocol/IdToken.h"
#include "openid/protocol/Texts.h"

namespace {

using namespace Halvorix::OpenId;
using Signer = Rig::SigningKey;
using Kind = Rig::SigningKey::Kind;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int64_t Now = 1'700'000'000;
constexpr char const* AccessToken = "jHkWEdUXMU1BwAsC4vtUsZwnNvTIxEl0z9K3vx5KF0Y";

std::string Compact(Json::Value const& json)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, json);
}

Json::Value Texts(std::vector<std::string> const& texts)
{
    Json::Value list(Json::arrayValue);
    for (std::string const& text : texts)
        list.append(text);
    return list;
}

/// A token and what it is held against; right as it is.
struct Case {
    Case()
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
        keys = {{"one", "", Signer::Shared(Kind::Rsa).Public()}};
    }

    std::string Token() const
    {
        Json::Value whole = header;
        if (!whole.isMember("alg"))
            whole["alg"] = algorithm;
        std::string const content = ToBase64Url(rawHeader.empty() ? Compact(whole) : rawHeader) +
                                    '.' +
                                    ToBase64Url(rawClaims.empty() ? Compact(claims) : rawClaims);
        std::string const token =
            content + '.' + ToBase64Url(Signer::Shared(signer).Sign(algorithm, content));
        return alter ? alter(token) : token;
    }

    Outcome<Json::Value> Verify()
    {
        return VerifyIdToken(Token(), expected, keys, [this] {
            ++renewals;
            return renewed;
        });
    }

    Json::Value header{Json::objectValue}, claims;
    std::string rawHeader, rawClaims, algorithm = "RS256";
    Kind signer = Kind::Rsa;
    std::function<std::string(std::string)> alter;
    IdTokenExpectation expected;
    std::vector<SigningKey> keys, renewed;
    int renewals = 0;
};

std::string HmacSha256(std::string key, std::string const& data)
{
    key.resize(64, '\0');
    std::string inner = key, outer = key;
    for (char& byte : inner)
        byte = static_cast<char>(byte ^ 0x36);
    for (char& byte : outer)
        byte = static_cast<char>(byte ^ 0x5C);
    return Sha2(256, outer + Sha2(256, inner + data));
}

/// The same claims with another header and a signature by a shared secret.
std::string SignedByHmac(std::string const& token, std::string const& secret)
{
    std::string const claims = token.substr(token.find('.'), token.rfind('.') - token.find('.'));
    std::string const content = ToBase64Url(R"({"alg":"HS256","kid":"one"})") + claims;
    return content + '.' + ToBase64Url(HmacSha256(secret, content));
}

std::string Unsigned(std::string const& token, std::string const& algorithm)
{
    std::string const claims = token.substr(token.find('.'), token.rfind('.') - token.find('.'));
    return ToBase64Url("{\"alg\":\"" + algorithm + "\"}") + claims + '.';
}

struct Defect {
    char const* name;
    std::function<void(Case&)> make;
    std::string reason;
};

/// Each row's token is refused for its own reason, as what a provider did wrong.
void ExpectRefused(std::vector<Defect> const& defects)
{
    for (Defect const& defect : defects) {
        SCOPED_TRACE(defect.name);
        Case one;
        defect.make(one);
        auto const claims = one.Verify();
        ASSERT_FALSE(claims);
        EXPECT_EQ(claims.Why().kind, Failure::Kind::Provider);
        EXPECT_EQ(claims.Why().reason, "the id_token " + defect.reason);
        EXPECT_FALSE(claims.Why().remedy.empty());
    }
}

/// And accepted without its defect.
void ExpectAccepted(std::vector<Defect> const& variants)
{
    for (Defect const& variant : variants) {
        SCOPED_TRACE(variant.name);
        Case one;
        variant.make(one);
        auto const claims = one.Verify();
        ASSERT_TRUE(claims) << claims.Why().reason;
        EXPECT_EQ(TextMember(*claims, "sub"), "user");
    }
}

Defect Time(char const* name, char const* claim, Json::Value value, std::string reason)
{
    return {name, [claim, value](Case& one) { one.claims[claim] = value; }, std::move(reason)};
}

TEST(IdToken, IsAcceptedWhereItHoldsWhatItMust)
{
    ExpectAccepted({
        {"as it is", [](Case&) {}, ""},
        {"a type", [](Case& one) { one.header["typ"] = "jwt"; }, ""},
        {"a full type", [](Case& one) { one.header["typ"] = "application/JWT"; }, ""},
        {"a list of one audience", [](Case& one) { one.claims["aud"] = Texts({"client"}); }, ""},
        {"several audiences",
         [](Case& one) {
             one.claims["aud"] = Texts({"other", "client"});
             one.claims["azp"] = "client";
         },
         ""},
        {"at the end of its tolerance",
         [](Case& one) { one.claims["exp"] = Json::Int64(Now - 119); }, ""},
        {"from a clock that is fast",
         [](Case& one) {
             one.claims["iat"] = Json::Int64(Now + 120);
             one.claims["nbf"] = Json::Int64(Now + 120);
         },
         ""},
        {"times with fractions", [](Case& one) { one.claims["exp"] = Now + 0.5; }, ""},
        {"far in the future", [](Case& one) { one.claims["exp"] = Json::Int64(253402300799); }, ""},
        {"a subject of 255 characters at most",
         [](Case& one) { one.claims["other"] = std::string(5000, 'x'); }, ""},
        {"the hash of the access token",
         [](Case& one) { one.claims["at_hash"] = "77QmUPtjPfzWtF2AnpK9RQ"; }, ""},
        {"no nonce at a refresh",
         [](Case& one) {
             one.expected.nonce.clear();
             one.claims.removeMember("nonce");
         },
         ""},
        {"the subject of before", [](Case& one) { one.expected.subject = "user"; }, ""},
        {"no key id and one key", [](Case& one) { one.header.removeMember("kid"); }, ""},
        {"a key for this algorithm alone", [](Case& one) { one.keys[0].algorithm = "RS256"; }, ""},
    });
}

TEST(IdToken, IsRefusedForItsForm)
{
    ExpectRefused({
        {"empty", [](Case& one) { one.alter = [](std::string) { return ""; }; },
         "does not have the three parts of a signed token"},
        {"two parts",
         [](Case& one) { one.alter = [](std::string t) { return t.substr(0, t.rfind('.')); }; },
         "does not have the three parts of a signed token"},
        {"five parts, encrypted",
         [](Case& one) { one.alter = [](std::string t) { return t + ".a.b"; }; },
         "does not have the three parts of a signed token"},
        {"a megabyte", [](Case& one) { one.claims["x"] = std::string(1 << 20, 'x'); },
         "is larger than 64 KiB"},
        {"padding",
         [](Case& one) {
             one.alter = [](std::string t) { return "e30=" + t.substr(t.find('.')); };
         },
         "has a header that is not base64url"},
        {"a header of text", [](Case& one) { one.rawHeader = "RS256"; },
         "has a header that is not valid JSON: Line 1, Column 1: Syntax error: value, object or "
         "array expected."},
        {"a header of a list", [](Case& one) { one.rawHeader = "[]"; },
         "has a header that is not a JSON object"},
        {"two algorithms",
         [](Case& one) { one.rawHeader = R"({"alg":"none","alg":"RS256","kid":"one"})"; },
         "has a header that is not valid JSON: Line 1, Column 15: Duplicate key: '...'"},
        {"two issuers",
         [](Case& one) {
             one.rawClaims = R"({"iss":"https://evil.example",)" + Compact(one.claims).substr(1);
         },
         "has a content that is not valid JSON: Line 1, Column 80: Duplicate key: '...'"},
        {"claims of a text", [](Case& one) { one.rawClaims = "\"user\""; },
         "has a content that is not valid JSON: Line 1, Column 1: A valid JSON document must be "
         "either an array or an object value."},
        {"claims that are no UTF-8", [](Case& one) { one.rawClaims = "{\"sub\":\"\xFF\"}"; },
         "has a content that is not UTF-8"},
        {"an extension", [](Case& one) { one.header["crit"] = Texts({"b64"}); },
         "demands an extension that is not supported (crit)"},
        {"no extension at all", [](Case& one) { one.header["crit"] = Json::nullValue; },
         "demands an extension that is not supported (crit)"},
        {"the type of an access token", [](Case& one) { one.header["typ"] = "at+jwt"; },
         "is not of the type JWT (typ)"},
        {"a type that is no text", [](Case& one) { one.header["typ"] = 1; },
         "is not of the type JWT (typ)"},
        {"a key id that is no text", [](Case& one) { one.header["kid"] = 1; },
         "has a key id (kid) that is not a text"},
    });
}

TEST(IdToken, IsRefusedForItsSignature)
{
    std::string const noKey = "is signed by a key that the provider does not have for RS256";
    ExpectRefused({
        {"no algorithm", [](Case& one) { one.rawHeader = R"({"kid":"one"})"; },
         "names no signature algorithm (alg)"},
        {"an algorithm that is no text", [](Case& one) { one.header["alg"] = 256; },
         "names no signature algorithm (alg)"},
        {"none", [](Case& one) { one.alter = [](std::string t) { return Unsigned(t, "none"); }; },
         "is signed by the algorithm \"none\", which is not accepted (alg)"},
        {"none by another spelling",
         [](Case& one) { one.alter = [](std::string t) { return Unsigned(t, "nOnE"); }; },
         "is signed by the algorithm \"nOnE\", which is not accepted (alg)"},
        {"none, which the provider announces",
         [](Case& one) {
             one.expected.algorithms = {"none", "RS256"};
             one.alter = [](std::string t) { return Unsigned(t, "none"); };
         },
         "is signed by the algorithm \"none\", which is not accepted (alg)"},
        {"HMAC with the public key as secret",
         [](Case& one) {
             one.expected.algorithms = {"HS256", "RS256"};
             one.alter = [](std::string t) {
                 return SignedByHmac(t, Signer::Shared(Kind::Rsa).Public().modulus);
             };
         },
         "is signed by the algorithm \"HS256\", which is not accepted (alg)"},
        {"by another key of the same id",
         [](Case& one) {
             one.signer = Kind::Rsa;
             one.keys = {{"one", "", Signer(Kind::Rsa).Public()}};
         },
         "has a wrong signature"},
        {"of another algorithm than it says",
         [](Case& one) {
             one.header["alg"] = "RS256";
             one.algorithm = "RS512";
         },
         "has a wrong signature"},
        {"by a key that is too short",
         [](Case& one) {
             one.signer = Kind::WeakRsa;
             one.keys = {{"one", "", Signer::Shared(Kind::WeakRsa).Public()}};
         },
         "has a wrong signature"},
        {"altered",
         [](Case& one) {
             one.alter = [](std::string t) {
                 std::size_t const at = t.rfind('.') + 20;
                 t[at] = t[at] == 'A' ? 'B' : 'A';
                 return t;
             };
         },
         "has a wrong signature"},
        {"altered claims",
         [](Case& one) {
             one.alter = [](std::string t) {
                 Case other;
                 other.claims["sub"] = "somebody else";
                 std::string const others = other.Token();
                 return others.substr(0, others.rfind('.')) + t.substr(t.rfind('.'));
             };
         },
         "has a wrong signature"},
        {"cut",
         [](Case& one) { one.alter = [](std::string t) { return t.substr(0, t.size() - 2); }; },
         "has a wrong signature"},
        {"empty",
         [](Case& one) { one.alter = [](std::string t) { return t.substr(0, t.rfind('.') + 1); }; },
         "has a signature that is not base64url"},
        {"no base64url", [](Case& one) { one.alter = [](std::string t) { return t + "+"; }; },
         "has a signature that is not base64url"},
        {"not announced", [](Case& one) { one.expected.algorithms = {"ES256"}; },
         "is signed by the algorithm RS256, which the provider does not announce"},
        {"not the one that is announced where none is", [](Case& one) { one.algorithm = "RS384"; },
         "is signed by the algorithm RS384, which the provider does not announce"},
        {"an unknown key id", [](Case& one) { one.header["kid"] = "two"; },
         noKey + " (kid \"two\")"},
        {"a key id in other letters", [](Case& one) { one.header["kid"] = "One"; },
         noKey + " (kid \"One\")"},
        {"no keys at all", [](Case& one) { one.keys.clear(); }, noKey + " (kid \"one\")"},
        {"a key for another algorithm", [](Case& one) { one.keys[0].algorithm = "RS512"; },
         noKey + " (kid \"one\")"},
        {"a key of another kind",
         [](Case& one) {
             one.keys = {{"one", "", Signer::Shared(Kind::P256).Public()}};
         },
         noKey + " (kid \"one\")"},
        {"no key id and another key",
         [](Case& one) {
             one.header.removeMember("kid");
             one.keys = one.renewed = {{"", "", Signer(Kind::Rsa).Public()}};
         },
         "has a wrong signature"},
    });
}

TEST(IdToken, IsRefusedForItsClaims)
{
    std::string const subject =
        "names the user (sub) by more than 255 characters or by others than ASCII";
    ExpectRefused({
        {"no issuer", [](Case& one) { one.claims.removeMember("iss"); }, "has no issuer (iss)"},
        {"another issuer", [](Case& one) { one.claims["iss"] = "https://idp.example/"; },
         "is from the issuer \"https://idp.example/\" instead of \"https://idp.example\""},
        {"an issuer that is no text",
         [](Case& one) { one.claims["iss"] = Texts({"https://idp.example"}); },
         "has no issuer (iss)"},
        {"an issuer with control characters", [](Case& one) { one.claims["iss"] = "a\nb"; },
         "is from the issuer \"a b\" instead of \"https://idp.example\""},
        {"no audience", [](Case& one) { one.claims.removeMember("aud"); }, "has no audience (aud)"},
        {"a number as audience", [](Case& one) { one.claims["aud"] = 1; }, "has no audience (aud)"},
        {"another audience", [](Case& one) { one.claims["aud"] = "other"; },
         "is not for the client \"client\" (aud)"},
        {"an audience in other letters", [](Case& one) { one.claims["aud"] = "Client"; },
         "is not for the client \"client\" (aud)"},
        {"an empty list", [](Case& one) { one.claims["aud"] = Json::arrayValue; },
         "is not for the client \"client\" (aud)"},
        {"others alone",
         [](Case& one) {
             one.claims["aud"] = Texts({"a", "b"});
         },
         "is not for the client \"client\" (aud)"},
        {"a list with a number",
         [](Case& one) {
             one.claims["aud"] = Texts({"client"});
             one.claims["aud"].append(1);
         },
         "has an audience (aud) that is not a text"},
        {"several and no authorized party",
         [](Case& one) {
             one.claims["aud"] = Texts({"client", "other"});
         },
         "is for several clients and names no authorized party (azp)"},
        {"another authorized party", [](Case& one) { one.claims["azp"] = "other"; },
         "names another authorized party (azp) than the client \"client\""},
        {"an authorized party that is no text",
         [](Case& one) { one.claims["azp"] = Texts({"client"}); },
         "names another authorized party (azp) than the client \"client\""},
        {"no subject", [](Case& one) { one.claims.removeMember("sub"); }, "names no user (sub)"},
        {"an empty subject", [](Case& one) { one.claims["sub"] = ""; }, "names no user (sub)"},
        {"a number as subject", [](Case& one) { one.claims["sub"] = 7; }, "names no user (sub)"},
        {"a long subject", [](Case& one) { one.claims["sub"] = std::string(256, 'x'); }, subject},
        {"a subject beyond ASCII", [](Case& one) { one.claims["sub"] = "\xC3\xA4"; }, subject},
        {"a subject with a line end", [](Case& one) { one.claims["sub"] = "a\nb"; }, subject},
        {"another subject at a refresh", [](Case& one) { one.expected.subject = "other"; },
         "is about another user (sub) than the one who signed in"},
        {"no nonce", [](Case& one) { one.claims.removeMember("nonce"); }, "has no nonce"},
        {"another nonce", [](Case& one) { one.claims["nonce"] = "The nonce"; },
         "belongs to another sign-in (nonce)"},
        {"a nonce that is no text", [](Case& one) { one.claims["nonce"] = 1; }, "has no nonce"},
        {"the hash of another access token",
         [](Case& one) {
             one.expected.accessToken = "another";
             one.claims["at_hash"] = "77QmUPtjPfzWtF2AnpK9RQ";
         },
         "belongs to another access token (at_hash)"},
        {"a hash that is no text", [](Case& one) { one.claims["at_hash"] = 1; },
         "belongs to another access token (at_hash)"},
    });
}

TEST(IdToken, IsRefusedForItsTimes)
{
    auto const no = [](char const* claim) {
        return std::string("has no time \"") + claim + "\" in seconds since 1970";
    };
    ExpectRefused({
        {"no expiry", [](Case& one) { one.claims.removeMember("exp"); }, no("exp")},
        {"no start", [](Case& one) { one.claims.removeMember("iat"); }, no("iat")},
        Time("expired", "exp", Json::Int64(Now - 120), "expired 120 s ago (exp)"),
        Time("expired for long", "exp", 0, "expired 1700000000 s ago (exp)"),
        Time("issued later", "iat", Json::Int64(Now + 121), "is not valid for another 121 s (iat)"),
        Time("not valid yet", "nbf", Json::Int64(Now + 500),
             "is not valid for another 500 s (nbf)"),
        Time("a text", "exp", "1800000000", no("exp")),
        Time("true", "exp", true, no("exp")),
        Time("null", "exp", Json::nullValue, no("exp")),
        Time("negative", "exp", -1, no("exp")),
        Time("the least number", "iat", Json::Value::minInt64, no("iat")),
        Time("the greatest number", "exp", Json::Value::maxUInt64, no("exp")),
        Time("huge", "exp", 1e300, no("exp")),
        Time("a start that is no number", "nbf", "x", no("nbf")),
        Time("a huge start", "nbf", 1e18, no("nbf")),
        {"beyond what a number holds",
         [](Case& one) {
             one.rawClaims = "{\"exp\":1e999,\"iat\":1,\"iss\":\"https://idp.example\","
                             "\"aud\":\"client\",\"sub\":\"user\",\"nonce\":\"the nonce\"}";
         },
         "has a content that is not valid JSON: Line 1, Column 8: '...' is not a number."},
    });
}

TEST(IdToken, BlamesTheClockForATimeThatHasPassed)
{
    Case one;
    one.claims["exp"] = Json::Int64(Now - 3600);
    EXPECT_EQ(one.Verify().Why().remedy, "set this computer's clock and time zone");
}

TEST(IdToken, AsksForNewKeysOnceForAnUnknownOne)
{
    Case one;
    one.header["kid"] = "two";
    one.renewed = {{"two", "", Signer::Shared(Kind::Rsa).Public()}};
    EXPECT_TRUE(one.Verify());
    EXPECT_EQ(one.renewals, 1);
    one.renewed.clear();
    EXPECT_FALSE(one.Verify());
    EXPECT_EQ(one.renewals, 2);
}

TEST(IdToken, AsksForNewKeysWhereTheyHaveNoIds)
{
    Case one;
    one.header.removeMember("kid");
    one.keys = {{"", "", Signer(Kind::Rsa).Public()}};
    one.renewed = {{"", "", Signer::Shared(Kind::Rsa).Public()}};
    EXPECT_TRUE(one.Verify());
    EXPECT_EQ(one.renewals, 1);
}

TEST(IdToken, AsksForNoNewKeysForAKnownOne)
{
    Case one;
    one.expected.nonce = "another";
    EXPECT_FALSE(one.Verify());
    one.alter = [](std::string token) { return token.substr(0, token.size() - 4); };
    EXPECT_FALSE(one.Verify());
    EXPECT_EQ(one.renewals, 0);
}

TEST(IdToken, TriesEachKeyThatFitsWhereItNamesNone)
{
    Case one;
    one.header.removeMember("kid");
    one.keys = {{"a", "", Signer(Kind::Rsa).Public()},
                {"b", "", Signer::Shared(Kind::P256).Public()},
                {"c", "", Signer::Shared(Kind::Rsa).Public()}};
    EXPECT_TRUE(one.Verify());
}

/// Signs by the algorithm with a key of the kind, or skips where the system has no such keys.
void ExpectAlgorithm(std::string const& algorithm, Kind kind)
{
    SCOPED_TRACE(algorithm);
    if (!Signer::IsKnown(kind))
        GTEST_SKIP() << "this system has no such keys";
    Case one;
    one.algorithm = algorithm;
    one.signer = kind;
    one.expected.algorithms = {algorithm};
    one.keys = {{"one", algorithm, Signer::Shared(kind).Public()}};
    try {
        one.Token();
    } catch (std::runtime_error const& error) {
        GTEST_SKIP() << "this system does not sign so: " << error.what();
    }
    auto const claims = one.Verify();
    EXPECT_TRUE(claims) << claims.Why().reason;
    one.alter = [](std::string token) {
        std::size_t const at = token.rfind('.') + 10;
        token[at] = token[at] == 'A' ? 'B' : 'A';
        return token;
    };
    EXPECT_EQ(one.Verify().Why().reason, "the id_token has a wrong signature");
}

TEST(IdToken, IsSignedByRS256) { ExpectAlgorithm("RS256", Kind::Rsa); }
TEST(IdToken, IsSignedByRS384) { ExpectAlgorithm("RS384", Kind::Rsa); }
TEST(IdToken, IsSignedByRS512) { ExpectAlgorithm("RS512", Kind::Rsa); }
TEST(IdToken, IsSignedByPS256) { ExpectAlgorithm("PS256", Kind::Rsa); }
TEST(IdToken, IsSignedByPS384) { ExpectAlgorithm("PS384", Kind::Rsa); }
TEST(IdToken, IsSignedByPS512) { ExpectAlgorithm("PS512", Kind::Rsa); }
TEST(IdToken, IsSignedByES256) { ExpectAlgorithm("ES256", Kind::P256); }
TEST(IdToken, IsSignedByES384) { ExpectAlgorithm("ES384", Kind::P384); }
TEST(IdToken, IsSignedByES512) { ExpectAlgorithm("ES512", Kind::P521); }

TEST(IdToken, BindsAnAlgorithmToItsCurve)
{
    Case one;
    one.algorithm = "ES256";
    one.signer = Kind::P384;
    one.expected.algorithms = {"ES256"};
    one.keys = {{"one", "", Signer::Shared(Kind::P384).Public()}};
    EXPECT_EQ(one.Verify().Why().reason,
              "the id_token is signed by a key that the provider does not have for ES256 "
              "(kid \"one\")");
}

TEST(IdToken, HashesTheAccessTokenAsItsAlgorithmDoes)
{
    Case one;
    one.algorithm = "RS384";
    one.expected.algorithms = {"RS384"};
    std::string const hash = Sha2(384, AccessToken);
    one.claims["at_hash"] = ToBase64Url(hash.substr(0, 24));
    EXPECT_TRUE(one.Verify());
    one.claims["at_hash"] = "77QmUPtjPfzWtF2AnpK9RQ"; // of RS256
    EXPECT_FALSE(one.Verify());
}

} // namespace
