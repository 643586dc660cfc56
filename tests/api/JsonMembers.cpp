#include "api/MemberWalk.h"

#include <memory>

#include <SSOServicesPrivate.h>
#include <plugin/IRsaCryptor.h>

using namespace Halvorix::WebServices;

namespace MemberWalk {

namespace {

OAuth2TokenSpec Spec() { return OAuth2TokenSpec(static_cast<OAuth2TokenType>(2), L"b a"); }

OAuth2Token Token()
{
    OAuth2Token token;
    SSOServicesPrivate::Initialize(token, L"secret", Spec());
    return token;
}

NetworkCookie Cookie(char const* name)
{
    NetworkCookie cookie;
    cookie.SetName(name);
    cookie.SetDomain(L"d");
    return cookie;
}

/// Moves each byte up for the buffer pair, which a type other than 1 selects.
class ShiftingCryptor : public IRsaCryptor {
public:
    using Size = unsigned long long;

    int GetMaxBlockSize() override { return 0; }
    bool RsaEncrypt(unsigned char const*, Size, unsigned char*, Size, Size*) override
    {
        return false;
    }
    bool RsaDecrypt(unsigned char const*, Size, unsigned char*, Size, Size*) override
    {
        return false;
    }
    bool EncryptBuffer(unsigned char const* input, Size size, unsigned char* output, Size,
                       Size* length) override
    {
        return Shift(input, size, output, length, 1);
    }
    bool DecryptBuffer(unsigned char const* input, Size size, unsigned char* output, Size,
                       Size* length) override
    {
        return Shift(input, size, output, length, -1);
    }

private:
    static bool Shift(unsigned char const* input, Size size, unsigned char* output, Size* length,
                      int by)
    {
        for (Size i = 0; i < size; ++i)
            output[i] = static_cast<unsigned char>(input[i] + by);
        *length = size;
        return true;
    }
};

std::shared_ptr<IRsaCryptor> Cryptor() { return std::make_shared<ShiftingCryptor>(); }

/// An object that a writer adds its members to.
Json::Value Begun()
{
    Json::Value json;
    json["mine"] = true;
    return json;
}

Json::Value SpecJson()
{
    Json::Value json;
    json["type"] = 5;
    json["scope"] = "z y";
    json["legacy"] = true;
    return json;
}

Json::Value TokenJson(char const* key, char const* text)
{
    Json::Value json;
    json["OAuth2TokenSpec"] = SpecJson();
    json[key] = text;
    return json;
}

Json::Value JarJson()
{
    Json::Value json;
    json["Cookies"][0]["Name"] = "one";
    json["Cookies"][1]["Name"] = "two";
    json["Cookies"][1]["ExpiryDate"] = Json::Int64(5000000008);
    return json;
}

// "secret", each byte moved up by one, in base64.
char const* const shifted = "dGZkc2Z1";

std::string const specText = R"({\n\t"legacy" : false,\n\t"scope" : "a b",\n\t"type" : 2\n})";
std::string const nestedSpecText =
    R"({\n\t\t"legacy" : false,\n\t\t"scope" : "a b",\n\t\t"type" : 2\n\t})";
std::string const specMembers = R"({"legacy":false,"scope":"a b","type":2})";

template <class Writer>
std::string Written(Writer write)
{
    std::string text = "before";
    bool const answer = write(text);
    return Told(answer, text);
}

template <class Writer>
std::string WrittenJson(Writer write)
{
    Json::Value json = Begun();
    bool const answer = write(json);
    return Told(answer, json);
}

template <class Value, class Reader>
std::string Read(Value&& value, Reader read)
{
    bool const answer = read(value);
    return Told(answer, value);
}

std::vector<Member> SpecMembers()
{
    return {
        OfTheLibrary(
            "SSOServicesPrivate::OAuth2TokenSpecToJson(OAuth2TokenSpec const&, Json::Value&)",
            [] {
                return WrittenJson([](Json::Value& json) {
                    return SSOServicesPrivate::OAuth2TokenSpecToJson(Spec(), json);
                });
            },
            R"(true, {"legacy":false,"mine":true,"scope":"a b","type":2})"),
        OfTheLibrary(
            "SSOServicesPrivate::OAuth2TokenSpecToJson(OAuth2TokenSpec const&, std::string&)",
            [] {
                return Written([](std::string& text) {
                    return SSOServicesPrivate::OAuth2TokenSpecToJson(Spec(), text);
                });
            },
            "true, '" + specText + "'"),
        OfTheLibrary(
            "SSOServicesPrivate::JsonToOAuth2TokenSpec(Json::Value const&, OAuth2TokenSpec&)",
            [] {
                return Read(Spec(), [](OAuth2TokenSpec& spec) {
                    return SSOServicesPrivate::JsonToOAuth2TokenSpec(SpecJson(), spec);
                });
            },
            "true, 5 'z y' legacy"),
        OfTheLibrary(
            "SSOServicesPrivate::JsonToOAuth2TokenSpec(char const*, OAuth2TokenSpec&)",
            [] {
                return Read(Spec(), [](OAuth2TokenSpec& spec) {
                    return SSOServicesPrivate::JsonToOAuth2TokenSpec("{}", spec);
                });
            },
            "true, 0 ''"),
    };
}

std::vector<Member> TokenWriters()
{
    return {
        OfTheLibrary(
            "SSOServicesPrivate::OAuth2TokenToJson(OAuth2Token const&, Json::Value&)",
            [] {
                return WrittenJson([](Json::Value& json) {
                    return SSOServicesPrivate::OAuth2TokenToJson(Token(), json);
                });
            },
            R"(true, {"OAuth2AccessToken":"secret","OAuth2TokenSpec":)" + specMembers +
                R"(,"mine":true})"),
        OfTheLibrary(
            "SSOServicesPrivate::OAuth2TokenToJson(OAuth2Token const&, std::string&)",
            [] {
                return Written([](std::string& text) {
                    return SSOServicesPrivate::OAuth2TokenToJson(Token(), text);
                });
            },
            R"(true, '{\n\t"OAuth2AccessToken" : "secret",\n\t"OAuth2TokenSpec" : \n\t)" +
                nestedSpecText + R"(\n}')"),
        OfTheLibrary(
            "SSOServicesPrivate::OAuth2TokenToJson(OAuth2Token const&, Json::Value&, "
            "std::shared_ptr<IRsaCryptor>)",
            [] {
                return WrittenJson([](Json::Value& json) {
                    return SSOServicesPrivate::OAuth2TokenToJson(Token(), json, Cryptor());
                });
            },
            R"(true, {"EncryptedOAuth2AccessToken":")" + std::string(shifted) +
                R"(","OAuth2TokenSpec":)" + specMembers + R"(,"mine":true})"),
        OfTheLibrary(
            "SSOServicesPrivate::OAuth2TokenToJson(OAuth2Token const&, std::string&, "
            "std::shared_ptr<IRsaCryptor>)",
            [] {
                return Written([](std::string& text) {
                    return SSOServicesPrivate::OAuth2TokenToJson(Token(), text, Cryptor());
                });
            },
            R"(true, '{\n\t"EncryptedOAuth2AccessToken" : ")" + std::string(shifted) +
                R"(",\n\t"OAuth2TokenSpec" : \n\t)" + nestedSpecText + R"(\n}')"),
    };
}

std::vector<Member> TokenReaders()
{
    return {
        OfTheLibrary(
            "SSOServicesPrivate::JsonToOAuth2Token(Json::Value const&, OAuth2Token&)",
            [] {
                return Read(OAuth2Token(), [](OAuth2Token& token) {
                    return SSOServicesPrivate::JsonToOAuth2Token(
                        TokenJson("OAuth2AccessToken", "clear"), token);
                });
            },
            "true, 'clear' of 5 'z y' legacy"),
        OfTheLibrary(
            "SSOServicesPrivate::JsonToOAuth2Token(char const*, OAuth2Token&)",
            [] {
                return Read(Token(), [](OAuth2Token& token) {
                    return SSOServicesPrivate::JsonToOAuth2Token(
                        R"({"OAuth2TokenSpec": {"type": 6}})", token);
                });
            },
            "false, 'secret' of 6 ''"),
        OfTheLibrary(
            "SSOServicesPrivate::JsonToOAuth2Token(Json::Value const&, OAuth2Token&, "
            "std::shared_ptr<IRsaCryptor>)",
            [] {
                return Read(OAuth2Token(), [](OAuth2Token& token) {
                    return SSOServicesPrivate::JsonToOAuth2Token(
                        TokenJson("EncryptedOAuth2AccessToken", shifted), token, Cryptor());
                });
            },
            "true, 'secret' of 5 'z y' legacy"),
        OfTheLibrary(
            "SSOServicesPrivate::JsonToOAuth2Token(char const*, OAuth2Token&, "
            "std::shared_ptr<IRsaCryptor>)",
            [] {
                return Read(OAuth2Token(), [](OAuth2Token& token) {
                    return SSOServicesPrivate::JsonToOAuth2Token(
                        R"({"OAuth2TokenSpec": {"type": 7}, "EncryptedOAuth2AccessToken": "Yg=="})",
                        token, Cryptor());
                });
            },
            "true, 'a' of 7 ''"),
        OfTheLibrary(
            "SSOServicesPrivate::Initialize(OAuth2Token&, std::wstring const&, "
            "OAuth2TokenSpec const&)",
            [] {
                OAuth2TokenSpec spec;
                SSOServicesPrivate::JsonToOAuth2TokenSpec(SpecJson(), spec);
                OAuth2Token token;
                SSOServicesPrivate::Initialize(token, L"first", spec);
                return Told(token);
            },
            "'first' of 5 'z y' legacy"),
    };
}

std::vector<Member> CookieJsonMembers()
{
    return {
        OfTheLibrary(
            "SSOServicesPrivate::NetworkCookieToJson(NetworkCookie const&, std::string&)",
            [] {
                return Written([](std::string& text) {
                    return SSOServicesPrivate::NetworkCookieToJson(Cookie("n"), text);
                });
            },
            R"(true, '{\n\t"Domain" : "d",\n\t"ExpiryDate" : 0,\n\t"IsHttpOnly" : false,)"
            R"(\n\t"IsSecure" : false,\n\t"Name" : "n",\n\t"Path" : "",\n\t"Value" : ""\n}')"),
        OfTheLibrary(
            "SSOServicesPrivate::JsonToNetworkCookie(char const*, NetworkCookie&)",
            [] {
                return Read(Cookie("before"), [](NetworkCookie& cookie) {
                    return SSOServicesPrivate::JsonToNetworkCookie(
                        R"({"Value": "v", "Path": "p", "IsSecure": true, "ExpiryDate": -2})",
                        cookie);
                });
            },
            "true, =v;;p;secure;;-2"),
        OfTheLibrary(
            "SSOServicesPrivate::NetworkCookieJarToJson(NetworkCookieJar const&, std::string&)",
            [] {
                NetworkCookieJar const jar;
                return Written([&jar](std::string& text) {
                    return SSOServicesPrivate::NetworkCookieJarToJson(jar, text);
                });
            },
            R"(true, '{\n\t"Cookies" : []\n}')"),
        OfTheLibrary(
            "SSOServicesPrivate::NetworkCookieJarToJson(NetworkCookieJar const&, Json::Value&)",
            [] {
                NetworkCookieJar jar;
                jar.AddCookie(Cookie("n"));
                return WrittenJson([&jar](Json::Value& json) {
                    return SSOServicesPrivate::NetworkCookieJarToJson(jar, json);
                });
            },
            R"(true, {"Cookies":[{"Domain":"d","ExpiryDate":0,"IsHttpOnly":false,)"
            R"("IsSecure":false,"Name":"n","Path":"","Value":""}],"mine":true})"),
        OfTheLibrary(
            "SSOServicesPrivate::JsonToNetworkCookieJar(char const*, NetworkCookieJar&)",
            [] {
                NetworkCookieJar jar;
                jar.AddCookie(Cookie("before"));
                return Read(jar, [](NetworkCookieJar& read) {
                    return SSOServicesPrivate::JsonToNetworkCookieJar(
                        R"({"Cookies": [null, {"Name": "a"}]})", read);
                });
            },
            "true, [=;;;;;0 a=;;;;;0]"),
        OfTheLibrary(
            "SSOServicesPrivate::JsonToNetworkCookieJar(Json::Value const&, NetworkCookieJar&)",
            [] {
                NetworkCookieJar jar;
                jar.AddCookie(Cookie("before"));
                return Read(jar, [](NetworkCookieJar& read) {
                    return SSOServicesPrivate::JsonToNetworkCookieJar(JarJson(), read);
                });
            },
            "true, [one=;;;;;0 two=;;;;;5000000008]"),
    };
}

} // namespace

std::vector<Member> JsonMembers()
{
    std::vector<Member> members;
    for (auto const& part : {SpecMembers, TokenWriters, TokenReaders, CookieJsonMembers})
        for (Member const& member : part())
            members.push_back(member);
    return members;
}

} // namespace MemberWalk
