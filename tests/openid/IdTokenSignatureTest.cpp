// Tokens signed by whom and how they must not be, and all ways in which they may be.

#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include "openid/IdTokenCase.h"

namespace {

using namespace Halvorix::OpenId;
using Rig::ExpectRefused;
using Case = Rig::IdTokenCase;
using Signer = Rig::SigningKey;
using Kind = Rig::SigningKey::Kind;

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

} // namespace
