#include "openid/platform/Crypto.h"

#include <gmock/gmock.h>

#include <set>

#include "openid/SigningKey.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

using Rig::SigningKey;
using ::testing::IsEmpty;
using ::testing::Not;
using Kind = SigningKey::Kind;

std::string Hex(std::string const& bytes)
{
    constexpr char const* digits = "0123456789abcdef";
    std::string text;
    for (char const byte : bytes) {
        text += digits[(byte >> 4) & 15];
        text += digits[byte & 15];
    }
    return text;
}

std::string Decoded(std::string const& text) { return FromBase64Url(text).value(); }

// RFC 7515, appendix A.2.
PublicKey RsaOfRfc7515()
{
    PublicKey key;
    key.modulus =
        Decoded("ofgWCuLjybRlzo0tZWJjNiuSfb4p4fAkd_wWJcyQoTbji9k0l8W26mPddxHmfHQp-Vaw-4qPCJrcS2mJPM"
                "EzP1Pt0Bm4d4QlL-yRT-SFd2lZS-pCgNMsD1W_YpRPEwOWvG6b32690r2jZ47soMZo9wGzjb_7OMg0LOL-"
                "bSf63kpaSHSXndS5z5rexMdbBYUsLA9e-KXBdQOS-UTo7WTBEMa2R2CapHg665xsmtdVMTBQY4uDZlxvb3"
                "qCo5ZwKh9kG4LT6_I5IhlJH7aGhyxXFvUK-DWNmoudF8NAco9_h9iaGNj8q2ethFkMLs91kzk2PAcDTW9g"
                "b54h4FRWyuXpoQ");
    key.exponent = Decoded("AQAB");
    return key;
}

constexpr char const* RsaData =
    "eyJhbGciOiJSUzI1NiJ9.eyJpc3MiOiJqb2UiLA0KICJleHAiOjEzMDA4MTkzODAsDQogImh0dHA6Ly9leGFtcGxlLmNvb"
    "S9pc19yb290Ijp0cnVlfQ";
constexpr char const* RsaSignature =
    "cC4hiUPoj9Eetdgtv3hF80EGrhuB__dzERat0XF9g2VtQgr9PJbu3XOiZj5RZmh7AAuHIm4Bh-0Qc_lF5YKt_O8W2Fp5"
    "jujGbds9uJdbF9CUAr7t1dnZcAcQjbKBYNX4BAynRFdiuB--f_nZLgrnbyTyWzO75vRK5h6xBArLIARNPvkSjtQBMHlb1"
    "L07Qe7K0GarZRmB_eSN9383LcOLn6_dO--xi12jzDwusC-eOkHWEsqtFZESc6BfI7noOPqvhJ1phCnvWh6IeYI2w9QOYE"
    "UipUTI8np6LbgGY9Fs98rqVt5AXLIhWkWywlVmtVrBp0igcN_IoypGlUPQGe77Rw";

// A.3 and A.4.
PublicKey CurveKey(int bits, std::string const& x, std::string const& y)
{
    PublicKey key;
    key.kind = PublicKey::Kind::EllipticCurve;
    key.curve = bits;
    key.x = Decoded(x);
    key.y = Decoded(y);
    return key;
}

PublicKey P256OfRfc7515()
{
    return CurveKey(256, "f83OJ3D2xF1Bg8vub9tLe1gHMzV76e8Tus9uPHvRVEU",
                    "x_FEzRu9m36HLN_tue659LNpXW6pCyStikYjKIWI5a0");
}

constexpr char const* P256Data =
    "eyJhbGciOiJFUzI1NiJ9.eyJpc3MiOiJqb2UiLA0KICJleHAiOjEzMDA4MTkzODAsDQogImh0dHA6Ly9leGFtcGxlLmNvb"
    "S9pc19yb290Ijp0cnVlfQ";
constexpr char const* P256Signature =
    "DtEhU3ljbEg8L38VWAfUAqOyKAM6-Xx-F4GawxaepmXFCgfTjDxw5djxLa8ISlSApmWQxfKTUJqPP3-Kg6NU1Q";

bool Verifies(SignatureScheme scheme, int bits, PublicKey const& key, std::string const& data,
              std::string const& signature)
{
    return VerifySignature(scheme, bits, key, data, signature);
}

SignatureScheme SchemeOf(std::string const& algorithm)
{
    return algorithm[0] == 'R'   ? SignatureScheme::Pkcs1
           : algorithm[0] == 'P' ? SignatureScheme::Pss
                                 : SignatureScheme::Ecdsa;
}

int BitsOf(std::string const& algorithm) { return std::stoi(algorithm.substr(2)); }

std::string Changed(std::string text, std::size_t at)
{
    text[at] = static_cast<char>(text[at] ^ 1);
    return text;
}

/// Algorithm and the key that it is tried with.
class Signatures : public testing::TestWithParam<std::pair<char const*, Kind>> {
protected:
    void SetUp() override
    {
        if (!SigningKey::IsKnown(GetParam().second))
            GTEST_SKIP() << "this system has no keys of this kind";
    }
    std::string const algorithm = GetParam().first;
    std::string const data = "header.claims";

    bool Verify(PublicKey const& key, std::string const& what, std::string const& signature) const
    {
        return Verifies(SchemeOf(algorithm), BitsOf(algorithm), key, what, signature);
    }
};

} // namespace

// FIPS 180-4's examples.
TEST(Sha2, HasTheValuesOfTheStandard)
{
    EXPECT_EQ(Hex(Sha2(256, "abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Hex(Sha2(256, "")),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(Hex(Sha2(256, "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq")),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(Hex(Sha2(384, "abc")),
              "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5b"
              "ed8086072ba1e7cc2358baeca134c825a7");
    EXPECT_EQ(
        Hex(Sha2(512, "abc")),
        "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c"
        "23a3feebbd454d4423643ce80e2a9ac94fa54ca49f");
}

TEST(RandomBytes, AreOfTheSizeAndNeverTheSame)
{
    std::set<std::string> seen;
    for (int i = 0; i < 100; ++i) {
        seen.insert(RandomBytes(32));
        EXPECT_EQ(RandomBytes(i).size(), static_cast<std::size_t>(i));
    }
    EXPECT_EQ(seen.size(), 100u);
}

TEST(VerifySignature, KnowsRs256OfRfc7515)
{
    std::string const signature = Decoded(RsaSignature);
    PublicKey const key = RsaOfRfc7515();

    EXPECT_TRUE(Verifies(SignatureScheme::Pkcs1, 256, key, RsaData, signature));
    EXPECT_FALSE(Verifies(SignatureScheme::Pkcs1, 256, key, std::string(RsaData) + "A", signature));
    EXPECT_FALSE(Verifies(SignatureScheme::Pkcs1, 256, key, RsaData, Changed(signature, 100)));
    EXPECT_FALSE(Verifies(SignatureScheme::Pkcs1, 384, key, RsaData, signature));
    EXPECT_FALSE(Verifies(SignatureScheme::Pss, 256, key, RsaData, signature));
    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, key, RsaData, signature));
}

TEST(VerifySignature, KnowsEs256OfRfc7515)
{
    std::string const signature = Decoded(P256Signature);
    PublicKey const key = P256OfRfc7515();

    EXPECT_TRUE(Verifies(SignatureScheme::Ecdsa, 256, key, P256Data, signature));
    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, key, P256Data, Changed(signature, 0)));
    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, key, P256Data, Changed(signature, 63)));
    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 384, key, P256Data, signature));
    EXPECT_FALSE(Verifies(SignatureScheme::Pkcs1, 256, key, P256Data, signature));
}

TEST(VerifySignature, KnowsEs512OfRfc7515)
{
    if (!SigningKey::IsKnown(Kind::P521))
        GTEST_SKIP() << "this system has no P-521";
    PublicKey const key = CurveKey(
        521,
        "AekpBQ8ST8a8VcfVOTNl353vSrDCLLJXmPk06wTjxrrjcBpXp5EOnYG_NjFZ6OvLFV1jSfS9tsz4qUxcWceqwQGk",
        "ADSmRA43Z1DSNx_RvcLI87cdL07l6jQyyBXMoxVg_l2Th-x3S1WDhjDly79ajL4Kkd0AZMaZmh9ubmf63e3kyMj2");
    std::string const signature = Decoded(
        "AdwMgeerwtHoh-l192l60hp9wAHZFVJbLfD_UxMi70cwnZOYaRI1bKPWROc-mZZqwqT2SI-KGDKB34XO0aw"
        "_7XdtAG8GaSwFKdCAPZgoXD2YBJZCPEX3xKpRwcdOO8KpEHwJjyqOgzDO7iKvU8vcnwNrmxYbSW9ERBXukO"
        "XolLzeO_Jn");

    EXPECT_TRUE(
        Verifies(SignatureScheme::Ecdsa, 512, key, "eyJhbGciOiJFUzUxMiJ9.UGF5bG9hZA", signature));
    EXPECT_FALSE(
        Verifies(SignatureScheme::Ecdsa, 512, key, "eyJhbGciOiJFUzUxMiJ9.UGF5bG9hZB", signature));
}

TEST_P(Signatures, OfTheKeyItselfAreRight)
{
    SigningKey const& key = SigningKey::Shared(GetParam().second);

    EXPECT_TRUE(Verify(key.Public(), data, key.Sign(algorithm, data)));
}

TEST_P(Signatures, OfAnotherKeyAreWrong)
{
    SigningKey const other(GetParam().second);

    EXPECT_FALSE(
        Verify(SigningKey::Shared(GetParam().second).Public(), data, other.Sign(algorithm, data)));
    EXPECT_TRUE(Verify(other.Public(), data, other.Sign(algorithm, data)));
}

TEST_P(Signatures, OfOtherDataAreWrong)
{
    SigningKey const& key = SigningKey::Shared(GetParam().second);

    EXPECT_FALSE(Verify(key.Public(), data + "x", key.Sign(algorithm, data)));
    EXPECT_FALSE(Verify(key.Public(), "", key.Sign(algorithm, data)));
}

TEST_P(Signatures, WithAnotherByteAreWrong)
{
    SigningKey const& key = SigningKey::Shared(GetParam().second);
    std::string const signature = key.Sign(algorithm, data);

    for (std::size_t at = 0; at < signature.size(); at += signature.size() / 7)
        EXPECT_FALSE(Verify(key.Public(), data, Changed(signature, at))) << at;
}

TEST_P(Signatures, OfAnotherLengthAreWrong)
{
    SigningKey const& key = SigningKey::Shared(GetParam().second);
    std::string const signature = key.Sign(algorithm, data);

    EXPECT_FALSE(Verify(key.Public(), data, ""));
    EXPECT_FALSE(Verify(key.Public(), data, signature.substr(1)));
    EXPECT_FALSE(Verify(key.Public(), data, signature.substr(0, signature.size() - 1)));
    EXPECT_FALSE(Verify(key.Public(), data, signature + '\0'));
    EXPECT_FALSE(Verify(key.Public(), data, '\0' + signature));
    EXPECT_FALSE(Verify(key.Public(), data, signature + signature));
    EXPECT_FALSE(Verify(key.Public(), data, std::string(signature.size(), '\0')));
    EXPECT_FALSE(Verify(key.Public(), data, std::string(signature.size(), '\xFF')));
}

TEST_P(Signatures, OfAnotherHashAreWrong)
{
    SigningKey const& key = SigningKey::Shared(GetParam().second);
    std::string const signature = key.Sign(algorithm, data);

    for (int const bits : {256, 384, 512})
        EXPECT_EQ(Verifies(SchemeOf(algorithm), bits, key.Public(), data, signature),
                  bits == BitsOf(algorithm));
    EXPECT_FALSE(Verifies(SchemeOf(algorithm), 0, key.Public(), data, signature));
    EXPECT_FALSE(Verifies(SchemeOf(algorithm), 160, key.Public(), data, signature));
}

INSTANTIATE_TEST_SUITE_P(
    All, Signatures,
    testing::Values(std::pair("RS256", Kind::Rsa), std::pair("RS384", Kind::Rsa),
                    std::pair("RS512", Kind::Rsa), std::pair("PS256", Kind::Rsa),
                    std::pair("PS384", Kind::Rsa), std::pair("PS512", Kind::Rsa),
                    std::pair("ES256", Kind::P256), std::pair("ES384", Kind::P384),
                    std::pair("ES512", Kind::P521)),
    [](auto const& info) { return info.param.first; });

TEST(VerifySignature, RefusesAPointOffTheCurve)
{
    std::string const signature = Decoded(P256Signature);
    PublicKey key = P256OfRfc7515();
    key.y = Changed(key.y, 31);
    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, key, P256Data, signature));

    key = P256OfRfc7515();
    std::swap(key.x, key.y);
    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, key, P256Data, signature));

    key.x = key.y = std::string(32, '\0');
    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, key, P256Data, signature));

    key.x = key.y = std::string(32, '\xFF');
    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, key, P256Data, signature));
}

TEST(VerifySignature, RefusesCoordinatesOfAnotherLengthAndUnknownCurves)
{
    std::string const signature = Decoded(P256Signature);
    PublicKey key = P256OfRfc7515();
    key.x = '\0' + key.x;
    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, key, P256Data, signature));

    key = P256OfRfc7515();
    key.y.clear();
    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, key, P256Data, signature));

    for (int const curve : {0, 224, 255, 257, 384, 512, 521, -256}) {
        key = P256OfRfc7515();
        key.curve = curve;
        EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, key, P256Data, signature)) << curve;
    }
}

TEST(VerifySignature, RefusesRsaBelow2048Bits)
{
    SigningKey const& key = SigningKey::Shared(Kind::WeakRsa);
    ASSERT_EQ(key.Public().modulus.size(), 128u);

    EXPECT_FALSE(Verifies(SignatureScheme::Pkcs1, 256, key.Public(), "x", key.Sign("RS256", "x")));
    EXPECT_FALSE(Verifies(SignatureScheme::Pss, 256, key.Public(), "x", key.Sign("PS256", "x")));
}

TEST(VerifySignature, RefusesRsaKeysThatAreNone)
{
    std::string const signature = Decoded(RsaSignature);
    auto const verifies = [&](std::string const& modulus, std::string const& exponent) {
        PublicKey key;
        key.modulus = modulus;
        key.exponent = exponent;
        return Verifies(SignatureScheme::Pkcs1, 256, key, RsaData,
                        signature.size() == modulus.size() ? signature
                                                           : std::string(modulus.size(), 'x'));
    };
    std::string const modulus = RsaOfRfc7515().modulus;

    EXPECT_TRUE(verifies(modulus, std::string("\x01\x00\x01", 3)));
    EXPECT_FALSE(verifies("", ""));
    EXPECT_FALSE(verifies(modulus, ""));
    EXPECT_FALSE(verifies("", "\x03"));
    EXPECT_FALSE(verifies(std::string(256, '\0'), "\x03"));
    EXPECT_FALSE(verifies(std::string(256, '\xFF'), "\x03"));
    EXPECT_FALSE(verifies(modulus, "\x01"));
    EXPECT_FALSE(verifies(modulus, std::string("\0\0", 2)));
    EXPECT_FALSE(verifies(modulus, std::string(9, '\xFF')));
    EXPECT_FALSE(verifies(modulus, std::string(256, '\xFF')));
    EXPECT_FALSE(verifies(std::string(2049, '\xFF'), "\x03"));
    EXPECT_FALSE(verifies(std::string(100000, '\xFF'), "\x03"));
    EXPECT_FALSE(verifies(Changed(modulus, 255), std::string("\x01\x00\x01", 3))); // even
}

TEST(VerifySignature, TakesNumbersWithZerosAtTheBeginning)
{
    PublicKey key = RsaOfRfc7515();
    key.modulus = std::string(3, '\0') + key.modulus;
    key.exponent = '\0' + key.exponent;

    EXPECT_TRUE(Verifies(SignatureScheme::Pkcs1, 256, key, RsaData, Decoded(RsaSignature)));
}

TEST(VerifySignature, FitsNoSchemeToAKeyOfAnotherKind)
{
    SigningKey const& rsa = SigningKey::Shared(Kind::Rsa);
    SigningKey const& curve = SigningKey::Shared(Kind::P256);

    EXPECT_FALSE(Verifies(SignatureScheme::Ecdsa, 256, rsa.Public(), "x", rsa.Sign("RS256", "x")));
    EXPECT_FALSE(
        Verifies(SignatureScheme::Pkcs1, 256, curve.Public(), "x", curve.Sign("ES256", "x")));
    EXPECT_FALSE(
        Verifies(SignatureScheme::Pss, 256, curve.Public(), "x", curve.Sign("ES256", "x")));
}

TEST(SigningKey, TellsItsNumbersAsJwkAndSignsTokens)
{
    SigningKey const& key = SigningKey::Shared(Kind::P256);
    Json::Value const jwk = key.PublicJwk("first");
    Json::Value claims;
    claims["sub"] = "somebody";
    std::string const token = Rig::SignToken(key, "ES256", {}, claims);
    std::size_t const last = token.rfind('.');

    EXPECT_EQ(jwk["kid"], "first");
    EXPECT_EQ(jwk["crv"], "P-256");
    EXPECT_EQ(Decoded(jwk["x"].asString()), key.Public().x);
    EXPECT_EQ(SigningKey::Shared(Kind::Rsa).PublicJwk()["e"], "AQAB");
    EXPECT_TRUE(Verifies(SignatureScheme::Ecdsa, 256, key.Public(), token.substr(0, last),
                         Decoded(token.substr(last + 1))));
}

TEST(Protect, IsUndoneByUnprotect)
{
    for (std::size_t const size : {1, 100, 5000, 100000}) {
        std::string const clear = RandomBytes(size);
        std::string reason;
        std::string const guarded = Protect(clear, reason);

        EXPECT_THAT(guarded, Not(IsEmpty())) << reason;
        Unprotected const back = Unprotect(guarded);
        EXPECT_EQ(back.state, Unprotected::State::Clear) << back.reason;
        EXPECT_EQ(back.bytes, clear);
        EXPECT_EQ(back.reason, "");
    }
}

} // namespace Halvorix::OpenId
