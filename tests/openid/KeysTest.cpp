// The keys of a provider, as a JWK set.

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "openid/protocol/IdToken.h"
#include "openid/protocol/Texts.h"

namespace {

using namespace Halvorix::OpenId;
using testing::IsEmpty;
using testing::SizeIs;

Json::Value Set(std::string const& keys)
{
    std::string reason;
    Json::Value json = ParseJsonObject("{\"keys\":[" + keys + "]}", reason);
    EXPECT_EQ(reason, "");
    return json;
}

std::string Field(std::size_t bytes) { return ToBase64Url(std::string(bytes, '\x11')); }

TEST(OpenIdKeys, AreReadWithWhatTheyAreFor)
{
    auto const keys = ReadKeys(Set(
        R"({"kty":"RSA","kid":"a","alg":"RS256","use":"sig","n":"AQID","e":"AQAB"},)"
        R"({"kty":"EC","crv":"P-256","key_ops":["verify"],"x":")" +
        Field(32) + R"(","y":")" + Field(32) + R"("},{"kty":"EC","crv":"P-521","kid":"c","x":")" +
        Field(66) + R"(","y":")" + Field(66) + "\"}"));
    ASSERT_THAT(keys, SizeIs(3));
    EXPECT_EQ(keys[0].id, "a");
    EXPECT_EQ(keys[0].algorithm, "RS256");
    EXPECT_EQ(keys[0].key.kind, PublicKey::Kind::Rsa);
    EXPECT_EQ(keys[0].key.modulus, "\x01\x02\x03");
    EXPECT_EQ(keys[0].key.exponent, std::string("\x01\x00\x01", 3));
    EXPECT_EQ(keys[1].id, "");
    EXPECT_EQ(keys[1].algorithm, "");
    EXPECT_EQ(keys[1].key.kind, PublicKey::Kind::EllipticCurve);
    EXPECT_EQ(keys[1].key.curve, 256);
    EXPECT_EQ(keys[1].key.x, std::string(32, '\x11'));
    EXPECT_EQ(keys[2].key.curve, 521);
}

TEST(OpenIdKeys, ThatDoNotFitArePassedOver)
{
    for (std::string const key :
         {R"({"kty":"oct","k":"AQID"})", R"({"kty":"RSA","use":"enc","n":"AQID","e":"AQAB"})",
          R"({"kty":"RSA","key_ops":["encrypt"],"n":"AQID","e":"AQAB"})",
          R"({"kty":"RSA","key_ops":"verify","n":"AQID","e":"AQAB"})",
          R"({"kty":"RSA","use":1,"n":"AQID","e":"AQAB"})",
          R"({"kty":"RSA","kid":1,"n":"AQID","e":"AQAB"})",
          R"({"kty":"RSA","alg":[],"n":"AQID","e":"AQAB"})", R"({"kty":"RSA","n":"AQID"})",
          R"({"kty":"RSA","n":"A+ID","e":"AQAB"})", R"({"kty":"RSA","n":"","e":"AQAB"})",
          R"({"kty":"RSA","n":[1],"e":65537})", R"({"n":"AQID","e":"AQAB"})", R"({})", R"("key")",
          R"(null)", R"([])", R"(7)"})
        EXPECT_THAT(ReadKeys(Set(key)), IsEmpty()) << key;
    for (std::string const curve : {"P-192", "secp256k1", "Ed25519", "p-256", "", "P-384"})
        EXPECT_THAT(ReadKeys(Set(R"({"kty":"EC","crv":")" + curve + R"(","x":")" + Field(32) +
                                 R"(","y":")" + Field(32) + "\"}")),
                    IsEmpty())
            << curve;
}

TEST(OpenIdKeys, LeaveTheGoodOnesAmongBadOnes)
{
    EXPECT_THAT(ReadKeys(Set(R"(7,{"kty":"RSA","n":"AQID","e":"AQAB"},{"kty":"RSA"})")), SizeIs(1));
}

TEST(OpenIdKeys, AreNoneInAnythingElse)
{
    EXPECT_THAT(ReadKeys(Json::Value()), IsEmpty());
    EXPECT_THAT(ReadKeys(Json::Value("keys")), IsEmpty());
    Json::Value set(Json::objectValue);
    EXPECT_THAT(ReadKeys(set), IsEmpty());
    set["keys"] = "none";
    EXPECT_THAT(ReadKeys(set), IsEmpty());
    set["keys"] = Json::objectValue;
    EXPECT_THAT(ReadKeys(set), IsEmpty());
}

TEST(OpenIdKeys, AreAHundredAtMost)
{
    std::string keys;
    for (int i = 0; i < 500; ++i)
        keys += std::string(i ? "," : "") + R"({"kty":"RSA","n":"AQID","e":"AQAB"})";
    EXPECT_THAT(ReadKeys(Set(keys)), SizeIs(100));
}

} // namespace
