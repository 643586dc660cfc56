// A provider's keys. A byte 1 first: the rest makes some.
//
// Property: whatever is taken for a key fits an algorithm, is whole, and verifies no signature that
// was not made by its private half.

#include <string>
#include <vector>

#include "fuzz/JsonMaker.h"
#include "fuzz/Property.h"
#include "openid/protocol/IdToken.h"
#include "openid/protocol/Texts.h"

using namespace Halvorix::OpenId;
using namespace Fuzz;

namespace {

Json::Value MakeKeys(JsonMaker& maker)
{
    Json::Value set(Json::objectValue);
    set["keys"] = Json::arrayValue;
    for (unsigned i = maker.Byte() % 4; i > 0; --i) {
        Json::Value key(Json::objectValue);
        for (char const* const name : {"kty", "crv", "kid", "alg", "use", "n", "e", "x", "y"})
            maker.SetText(key, name);
        if (maker.Seldom())
            key["key_ops"].append(maker.TextValue());
        set["keys"].append(maker.Seldom() ? maker.Odd() : key);
    }
    return set;
}

void CheckKey(SigningKey const& signing)
{
    PublicKey const& key = signing.key;
    if (key.kind == PublicKey::Kind::Rsa) {
        Holds(!key.modulus.empty() && !key.exponent.empty(), "a key of RSA is whole");
        std::string const signature(std::min<std::size_t>(key.modulus.size(), 4096), '\x01');
        Holds(!VerifySignature(SignatureScheme::Pkcs1, 256, key, "data", signature),
              "no signature of ones is right");
        Holds(!VerifySignature(SignatureScheme::Pss, 256, key, "data", signature),
              "no signature of ones is right");
        return;
    }
    Holds(key.curve == 256 || key.curve == 384 || key.curve == 521, "the curve is known",
          key.curve);
    std::size_t const size = (static_cast<std::size_t>(key.curve) + 7) / 8;
    Holds(key.x.size() == size && key.y.size() == size, "a point is whole", key.curve);
    Holds(!VerifySignature(SignatureScheme::Ecdsa, 256, key, "data", std::string(2 * size, '\0')),
          "no signature of zeros is right");
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static std::vector<std::string> const texts{"RSA",
                                                "EC",
                                                "P-256",
                                                "P-384",
                                                "P-521",
                                                "sig",
                                                "verify",
                                                "AQAB",
                                                "RS256",
                                                ToBase64Url(std::string(256, '\xC7')),
                                                ToBase64Url(std::string(32, '\x11')),
                                                ToBase64Url(std::string(48, '\x11')),
                                                ToBase64Url(std::string(66, '\x01'))};
    std::string reason;
    auto const keys = ReadKeys(ParseJsonObject(Document(data, size, texts, MakeKeys), reason));
    Holds(keys.size() <= 100, "there are not too many");
    for (SigningKey const& key : keys)
        CheckKey(key);
    return 0;
}
