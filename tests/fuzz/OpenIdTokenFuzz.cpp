// An id_token. A byte 1 first: the rest makes claims, which are looked at as if they were signed;
// a byte 2: the rest is their text.
//
// Property: of all tokens only the one that the key signed is accepted; claims that are accepted
// are for this client, by this issuer, of this sign-in and of this time.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/JsonMaker.h"
#include "fuzz/Property.h"
#include "openid/protocol/IdToken.h"
#include "openid/protocol/IdTokenClaims.h"
#include "openid/protocol/Texts.h"

using namespace Halvorix::OpenId;
using namespace Fuzz;

namespace {

constexpr std::int64_t Now = 1'700'000'000;
constexpr char const* Issuer = "https://idp.example";

// A key whose private half nobody has any more, and what it signed.
constexpr char const* Modulus =
    "o4eF2n3hZVScXOjnqcBfiNlrVBn8BpnX-nMTWqOyH5vbYFLwswzr5cuHbTM1QskGTPqckrvyAFWZ9keE1uuKwmyy"
    "Fx27ps6A0RojAYOCVhzsBoqFExXMXIggs62-gwNiwMyi7XGrImJzLHP0F_mjNVSACZuR4rhjA6URp_KedNOwFr8C"
    "cCj_m7k7F1UkUKpr5UOtMQ7GS3BNNBcjpwVZcjDzw_A9N8CQWZ0sMKYN36pTH2Os4ayGfe_K9Er7NI4yM7oXUp3B"
    "H51-A14mnFWWpvGq2yjFIcrnDQwUltSNaTxZJNQgKCJAkOe0RDNK77RPM9gUDyNjh-E6uQC8KzwP2w";
constexpr char const* Signed =
    "eyJhbGciOiJSUzI1NiIsImtpZCI6Im9uZSJ9.eyJpc3MiOiJodHRwczovL2lkcC5leGFtcGxlIiwiYXVkIjoiY2x"
    "pZW50Iiwic3ViIjoidXNlciIsIm5vbmNlIjoibm9uY2UiLCJpYXQiOjE3MDAwMDAwMDAsImV4cCI6MTcwMDAwMDM"
    "wMH0.gDSFQLLn8Bt1FOlN49Jb6KM9egTs16MbRc-czqgrBodyG7X6dD2gixMfqbmscr3HCdFHT2feNkL3M1aHXGw"
    "adEJOdpru6Nk1FuxDtIFjXzU3RY684WCR01YfDLam3esNyadqr7XN5X5Qt2c0aALGPYmUOKQrAfpVN-GCY03Ggkf"
    "O-05g-l_ddRSZcRIlZKHXvBRibNY8F4EbDZijuGuF5sB4zGdoaPnHeTe_BEJjIvhjcCTMHpofX9qwnYKHMlMG1kd"
    "2XDffTAzT08gC3-ufmIm8X8m4riwpJYl6CgBTU3-Docgb6U5Zj2aYrqmnttPNpa9ZczNkvfUGiBc3XQpOcQ";

IdTokenExpectation TheExpectation()
{
    IdTokenExpectation expected;
    expected.issuer = Issuer;
    expected.clientId = "client";
    expected.nonce = "nonce";
    expected.accessToken = "access";
    expected.now = Now;
    return expected;
}

std::vector<SigningKey> TheKeys()
{
    std::string reason;
    return ReadKeys(ParseJsonObject(R"({"keys":[{"kty":"RSA","kid":"one","e":"AQAB","n":")" +
                                        std::string(Modulus) + "\"}]}",
                                    reason));
}

void CheckReason(std::string const& reason)
{
    Holds(IsUtf8(reason), "a reason is UTF-8", reason);
    for (char const unit : reason)
        Holds(unit < 0 || unit >= 0x20, "a reason is one line", reason);
    Holds(reason.size() < 4000, "a reason is short", reason);
}

void CheckToken(std::string const& token)
{
    static std::vector<SigningKey> const keys = TheKeys();
    auto const claims = VerifyIdToken(token, TheExpectation(), keys, [] { return keys; });
    Same("whether it is accepted", token == Signed, static_cast<bool>(claims));
    if (!claims)
        CheckReason(claims.Why().reason);
}

bool IsNumberBetween(Json::Value const& value, double least, double most)
{
    return value.isNumeric() && value.asDouble() > least && value.asDouble() <= most;
}

bool HasClient(Json::Value const& audience)
{
    if (audience.isString())
        return audience.asString() == "client";
    for (Json::Value const& one : audience)
        if (one == Json::Value("client"))
            return true;
    return false;
}

void CheckClaims(std::string const& text)
{
    std::string reason;
    Json::Value const claims = ParseJsonObject(text, reason);
    if (claims.isNull())
        return CheckReason(reason);
    if (auto const fault = FindClaimFault(claims, TheExpectation(), 256))
        return CheckReason(fault->reason);
    Same("the issuer", std::string(Issuer), claims["iss"].asString());
    Same("the nonce", std::string("nonce"), claims["nonce"].asString());
    Holds(HasClient(claims["aud"]), "it is for this client", text);
    Holds(
        !claims["aud"].isArray() || claims["aud"].size() == 1 || claims.isMember("azp") ||
            [&] {
                for (Json::Value const& one : claims["aud"])
                    if (one != Json::Value("client"))
                        return false;
                return true;
            }(),
        "one of several clients is the authorized party", text);
    Holds(!claims.isMember("azp") || claims["azp"] == Json::Value("client"),
          "this client is the authorized party", text);
    Holds(IsNumberBetween(claims["exp"], Now - 120, 1e12), "it has not expired", text);
    Holds(IsNumberBetween(claims["iat"], -1, Now + 120), "it was issued", text);
    Holds(!claims.isMember("nbf") || IsNumberBetween(claims["nbf"], -1, Now + 120),
          "it is valid already", text);
    Holds(claims["sub"].isString() && !claims["sub"].asString().empty() &&
              claims["sub"].asString().size() <= 255,
          "it names a user", text);
    // What is kept of it has to be a number for whoever reads it.
    Holds(claims["exp"].asInt64() > 0, "the expiry is a number", text);
}

Json::Value MakeTime(JsonMaker& maker)
{
    return maker.Seldom() ? maker.Odd() : Json::Value(Json::Int64(Now + maker.Byte() - 128));
}

Json::Value MakeClaims(JsonMaker& maker)
{
    Json::Value claims(Json::objectValue);
    for (char const* const name : {"iss", "nonce", "sub", "azp", "at_hash"})
        maker.SetText(claims, name);
    for (char const* const name : {"exp", "iat", "nbf"})
        claims[name] = MakeTime(maker);
    if (maker.Byte() % 2)
        maker.SetText(claims, "aud");
    else
        for (unsigned i = maker.Byte() % 4; i > 0; --i)
            claims["aud"].append(maker.TextValue());
    return claims;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static std::vector<std::string> const texts{Issuer, "client", "nonce", "user", "other", ""};
    if (size > 0 && data[0] == 1)
        CheckClaims(Document(data, size, texts, MakeClaims));
    else if (size > 0 && data[0] == 2)
        CheckClaims(AsText(data + 1, size - 1));
    else
        CheckToken(AsText(data, size));
    return 0;
}
