#include "openid/protocol/ProviderMetadata.h"

#include <algorithm>

#include "openid/protocol/Answers.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

struct Endpoint {
    char const* name;
    std::string Metadata::*address;
    bool isRequired;
};

constexpr Endpoint Endpoints[] = {
    {"authorization_endpoint", &Metadata::authorizationEndpoint, true},
    {"token_endpoint", &Metadata::tokenEndpoint, true},
    {"jwks_uri", &Metadata::keysUri, true},
    {"userinfo_endpoint", &Metadata::userinfoEndpoint, false},
    {"revocation_endpoint", &Metadata::revocationEndpoint, false},
    {"end_session_endpoint", &Metadata::endSessionEndpoint, false},
    {"device_authorization_endpoint", &Metadata::deviceAuthorizationEndpoint, false},
};

Failure BrokenDescription(std::string const& issuer, std::string const& what)
{
    return FailureOf({"the description", DiscoveryUrl(issuer), {}}, Failure::Kind::Provider, what,
                     "check the issuer in the configuration, and ask the provider's administrator");
}

/// The texts of a list; others in it are passed over.
std::vector<std::string> TextsOf(Json::Value const& list)
{
    std::vector<std::string> texts;
    if (list.isArray())
        for (Json::Value const& one : list)
            if (one.isString())
                texts.push_back(one.asString());
    return texts;
}

/// What is wrong with an address, empty if nothing is.
std::string CheckEndpoint(Json::Value const& value, Endpoint const& endpoint,
                          std::string const& issuer)
{
    if (value.isNull())
        return endpoint.isRequired ? std::string("has no ") + endpoint.name : std::string();
    if (!value.isString())
        return std::string("has a ") + endpoint.name + " that is not a text";
    std::string const address = value.asString();
    // Plain http at this machine is for a provider that runs there itself.
    if (!IsSecureUrl(address) || (UsesTls(issuer) && !UsesTls(address)))
        return std::string("has a ") + endpoint.name + " that is not a proper https address: \"" +
               ForLog(address) + '"';
    return {};
}

} // namespace

std::string DiscoveryUrl(std::string const& issuer)
{
    bool const hasSlash = !issuer.empty() && issuer.back() == '/';
    return issuer.substr(0, issuer.size() - (hasSlash ? 1 : 0)) +
           "/.well-known/openid-configuration";
}

Outcome<Metadata> ReadMetadata(Json::Value const& json, std::string const& issuer)
{
    // Compared to the letter: else one provider could speak for another.
    if (json["issuer"] != Json::Value(issuer))
        return BrokenDescription(issuer, "is of the issuer \"" +
                                             ForLog(TextMember(json, "issuer")) +
                                             "\" instead of \"" + ForLog(issuer) + '"');
    Metadata metadata;
    for (Endpoint const& endpoint : Endpoints) {
        Json::Value const& value = json[endpoint.name];
        std::string const fault = CheckEndpoint(value, endpoint, issuer);
        if (!fault.empty())
            return BrokenDescription(issuer, fault);
        metadata.*endpoint.address = value.isNull() ? std::string() : value.asString();
    }
    auto const challenges = TextsOf(json["code_challenge_methods_supported"]);
    if (!challenges.empty() &&
        std::find(challenges.begin(), challenges.end(), "S256") == challenges.end())
        return BrokenDescription(issuer, "announces no proof of the code's owner by S256 (PKCE)");
    metadata.idTokenAlgorithms = TextsOf(json["id_token_signing_alg_values_supported"]);
    metadata.scopes = TextsOf(json["scopes_supported"]);
    metadata.issuerInResponse =
        json["authorization_response_iss_parameter_supported"] == Json::Value(true);
    return metadata;
}

} // namespace Halvorix::OpenId
