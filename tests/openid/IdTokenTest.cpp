// Tokens with one defect each in their form or claims, beside the same one without.

#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "openid/IdTokenCase.h"

namespace {

using namespace Halvorix::OpenId;
using Rig::AccessToken;
using Rig::Compact;
using Rig::Defect;
using Rig::ExpectAccepted;
using Rig::ExpectRefused;
using Rig::Now;
using Rig::Texts;
using Case = Rig::IdTokenCase;

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
        {"an authorized party", [](Case& one) { one.claims["azp"] = "client"; }, ""},
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
        {"another one beside",
         [](Case& one) {
             one.claims["aud"] = Texts({"client", "other"});
         },
         "is also for \"other\" (aud), which could use it in this client's place"},
        {"another one beside, and the authorized party",
         [](Case& one) {
             one.claims["aud"] = Texts({"other", "client"});
             one.claims["azp"] = "client";
         },
         "is also for \"other\" (aud), which could use it in this client's place"},
        {"an empty text beside",
         [](Case& one) {
             one.claims["aud"] = Texts({"client", ""});
         },
         "is also for \"\" (aud), which could use it in this client's place"},
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
