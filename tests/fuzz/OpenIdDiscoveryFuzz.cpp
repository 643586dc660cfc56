// A provider's description of itself. A byte 1 first: the rest makes one.
//
// Property: what is accepted is this issuer's and has proper https addresses alone; what is not
// ends in a reason that fits on a line of a log.

#include <string>
#include <vector>

#include "fuzz/JsonMaker.h"
#include "fuzz/Property.h"
#include "openid/protocol/Authorization.h"
#include "openid/protocol/ProviderMetadata.h"
#include "openid/protocol/Texts.h"

using namespace Halvorix::OpenId;
using namespace Fuzz;

namespace {

constexpr char const* Issuer = "https://idp.example";

void CheckAddress(std::string const& address, bool isRequired)
{
    if (address.empty())
        return Holds(!isRequired, "it is there");
    Holds(IsSecureUrl(address), "it is secure", address);
    Holds(UsesTls(address), "it is https", address);
    // By the letter, since what sends the request may read it in another way.
    std::string const host = address.substr(8, address.find_first_of("/?#", 8) - 8);
    Holds(EqualIgnoringCase(address.substr(0, 8), "https://"), "it begins so", address);
    Holds(!host.empty() && host.find_first_of("@\\ %") == std::string::npos, "it has a host",
          address);
    Holds(address.find_first_of("\r\n\t \\<>\"") == std::string::npos, "it is one word", address);
}

Json::Value MakeDescription(JsonMaker& maker)
{
    Json::Value json(Json::objectValue);
    json["issuer"] = maker.Seldom() ? maker.Odd() : Json::Value(Issuer);
    for (char const* const name :
         {"authorization_endpoint", "token_endpoint", "jwks_uri", "userinfo_endpoint",
          "revocation_endpoint", "end_session_endpoint", "device_authorization_endpoint"})
        json[name] = maker.Seldom() ? maker.Odd() : Json::Value("https://" + maker.Text());
    for (char const* const name :
         {"id_token_signing_alg_values_supported", "scopes_supported",
          "code_challenge_methods_supported", "authorization_response_iss_parameter_supported"})
        if (maker.Seldom())
            json[name] = maker.Odd();
    return json;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static std::vector<std::string> const texts{"idp.example/a", "[::1]:8443", "h:1/?b=c", "a@b/"};
    std::string reason;
    Json::Value const json = ParseJsonObject(Document(data, size, texts, MakeDescription), reason);
    Same("there is a reason where nothing is", json.isNull(), !reason.empty());
    if (json.isNull())
        return 0;
    auto const metadata = ReadMetadata(json, Issuer);
    if (!metadata) {
        std::string const& why = metadata.Why().reason;
        Holds(IsUtf8(why) && why.find_first_of("\r\n\x1B") == std::string::npos &&
                  why.size() < 4000,
              "a reason fits on a line", why);
        return 0;
    }
    Same("the issuer", std::string(Issuer), json["issuer"].asString());
    CheckAddress(metadata->authorizationEndpoint, true);
    CheckAddress(metadata->tokenEndpoint, true);
    CheckAddress(metadata->keysUri, true);
    CheckAddress(metadata->userinfoEndpoint, false);
    CheckAddress(metadata->revocationEndpoint, false);
    CheckAddress(metadata->endSessionEndpoint, false);
    CheckAddress(metadata->deviceAuthorizationEndpoint, false);
    Client client;
    client.clientId = "client";
    client.scopes = "openid";
    std::string const url =
        AuthorizationUrl(*metadata, client, "http://127.0.0.1:1/callback", {"s", "n", "v"}, "");
    Holds(url.size() > 8000 || IsSecureUrl(url), "the browser's address is proper", url);
    return 0;
}
