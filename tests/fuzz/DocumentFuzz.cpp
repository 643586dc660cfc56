// Token, spec, cookie and jar documents, in clear and through a cryptor.
//
// Property: a document reads as its keys tell, or false with the target
// unchanged, or ends in one of the exceptions told at the readers; what was read
// is written, read and written again to the same text, and the cryptor is given
// the capacities of its pair.

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/archive/iterators/dataflow_exception.hpp>
#include <json/reader.h>
#include <json/value.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include <plugin/IRsaCryptor.h>
#include "fuzz/JsonMaker.h"
#include "fuzz/Property.h"
#include "fuzz/TextReference.h"

using namespace Halvorix::WebServices;
using namespace Fuzz;

namespace {

// Outcome of a read: "true", "false", or the exception.
std::string Try(std::function<bool()> const& read)
{
    try {
        return Shown(read());
    } catch (Json::Exception const& error) {
        return std::string("JSON: ") + error.what();
    } catch (boost::archive::iterators::dataflow_exception const&) {
        return "not base64";
    } catch (std::out_of_range const&) {
        return "more padding than bytes";
    }
}

std::wstring ScopeOf(OAuth2TokenSpec const& spec)
{
    std::wstring scope(static_cast<std::size_t>(spec.GetScope(nullptr, 0)) + 1, L'\0');
    spec.GetScope(scope.data(), static_cast<int>(scope.size()));
    scope.pop_back();
    return scope;
}

std::wstring TextOf(OAuth2Token const& token)
{
    return std::wstring(token.GetToken(), static_cast<std::size_t>(token.GetTokenSize()));
}

using Bytes = int (NetworkCookie::*)(char*, int) const;
using Wide = int (NetworkCookie::*)(wchar_t*, int) const;

std::string BytesOf(NetworkCookie const& cookie, Bytes getter)
{
    std::string bytes(static_cast<std::size_t>((cookie.*getter)(nullptr, 0)), '\0');
    (cookie.*getter)(bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
}

// Up to a zero: a getter copies terminated texts.
std::wstring WideOf(NetworkCookie const& cookie, Wide getter)
{
    std::wstring text(static_cast<std::size_t>((cookie.*getter)(nullptr, 0)) + 1, L'\0');
    (cookie.*getter)(text.data(), static_cast<int>(text.size()));
    return text.c_str();
}

/// Turns bytes over and holds the library to the capacities it promises.
class Cryptor : public IRsaCryptor {
public:
    enum Manner { Works, Refuses, ClaimsMore };

    Cryptor(int maxBlockSize, Manner manner) : maxBlockSize(maxBlockSize), manner(manner) {}

    int GetMaxBlockSize() override { return maxBlockSize; }

    bool RsaEncrypt(unsigned char const* input, unsigned long long inputSize, unsigned char* output,
                    unsigned long long outputCapacity, unsigned long long* outputLength) override
    {
        CheckCapacity(RsaCapacity(), outputCapacity);
        return TurnOver(input, inputSize, output, outputCapacity, outputLength);
    }
    bool RsaDecrypt(unsigned char const* input, unsigned long long inputSize, unsigned char* output,
                    unsigned long long outputCapacity, unsigned long long* outputLength) override
    {
        CheckCapacity(RsaCapacity(), outputCapacity);
        return TurnOver(input, inputSize, output, outputCapacity, outputLength);
    }
    bool EncryptBuffer(unsigned char const* input, unsigned long long inputSize,
                       unsigned char* output, unsigned long long outputCapacity,
                       unsigned long long* outputLength) override
    {
        CheckCapacity(2 * inputSize, outputCapacity);
        return TurnOver(input, inputSize, output, outputCapacity, outputLength);
    }
    bool DecryptBuffer(unsigned char const* input, unsigned long long inputSize,
                       unsigned char* output, unsigned long long outputCapacity,
                       unsigned long long* outputLength) override
    {
        CheckCapacity(inputSize, outputCapacity);
        return TurnOver(input, inputSize, output, outputCapacity, outputLength);
    }

    unsigned long long RsaCapacity() const
    {
        return maxBlockSize < 0 ? 0 : static_cast<unsigned long long>(maxBlockSize) + 1;
    }

private:
    static void CheckCapacity(unsigned long long expected, unsigned long long actual)
    {
        Same("the capacity of the cryptor's output", std::to_string(expected),
             std::to_string(actual));
    }

    bool TurnOver(unsigned char const* input, unsigned long long inputSize, unsigned char* output,
                  unsigned long long outputCapacity, unsigned long long* outputLength) const
    {
        if (manner == Refuses)
            return false;
        std::fill_n(output, outputCapacity, static_cast<unsigned char>('#'));
        if (manner == ClaimsMore) {
            *outputLength = outputCapacity + 1;
            return true;
        }
        if (inputSize > outputCapacity)
            return false;
        std::transform(input, input + inputSize, output,
                       [](unsigned char byte) { return static_cast<unsigned char>(~byte); });
        *outputLength = inputSize;
        return true;
    }

    int maxBlockSize;
    Manner manner;
};

bool Read(std::string const& text, OAuth2TokenSpec& spec)
{
    return SSOServicesPrivate::JsonToOAuth2TokenSpec(text.c_str(), spec);
}
bool Read(std::string const& text, OAuth2Token& token)
{
    return SSOServicesPrivate::JsonToOAuth2Token(text.c_str(), token);
}
bool Read(std::string const& text, NetworkCookie& cookie)
{
    return SSOServicesPrivate::JsonToNetworkCookie(text.c_str(), cookie);
}
bool Read(std::string const& text, NetworkCookieJar& jar)
{
    return SSOServicesPrivate::JsonToNetworkCookieJar(text.c_str(), jar);
}

std::string Write(OAuth2TokenSpec const& spec)
{
    std::string text = "left over";
    Same("a spec is written", true, SSOServicesPrivate::OAuth2TokenSpecToJson(spec, text));
    return text;
}
std::string Write(OAuth2Token const& token)
{
    std::string text = "left over";
    Same("a token is written", true, SSOServicesPrivate::OAuth2TokenToJson(token, text));
    return text;
}
std::string Write(NetworkCookie const& cookie)
{
    std::string text = "left over";
    Same("a cookie is written", true, SSOServicesPrivate::NetworkCookieToJson(cookie, text));
    return text;
}
std::string Write(NetworkCookieJar const& jar)
{
    std::string text = "left over";
    Same("a jar is written", true, SSOServicesPrivate::NetworkCookieJarToJson(jar, text));
    return text;
}

// Something that a reader has to replace.
void Fill(OAuth2TokenSpec& spec)
{
    spec.SetType(static_cast<OAuth2TokenType>(-7));
    spec.SetScope(L"before");
}
void Fill(OAuth2Token& token)
{
    OAuth2TokenSpec spec;
    Fill(spec);
    SSOServicesPrivate::Initialize(token, L"before", spec);
}
void Fill(NetworkCookie& cookie)
{
    cookie.SetName("before");
    cookie.SetDomain(L"before");
    cookie.SetHttpOnly(true);
    cookie.SetExpiryDate(-1);
}
void Fill(NetworkCookieJar& jar)
{
    NetworkCookie cookie;
    Fill(cookie);
    jar.AddCookie(cookie);
}

/// How a reader is to end, as far as the keys read by `take` tell.
std::string ExpectedEnd(Json::Value const* json,
                        std::function<void(Json::Value const&)> const& take)
{
    if (json == nullptr || json->isNull())
        return "false";
    return Try([&] {
        take(*json);
        return true;
    });
}

std::wstring WideKey(Json::Value const& json, char const* key)
{
    return Reference::Widen(json[key].asString());
}

void TakeSpec(Json::Value const& json, OAuth2TokenSpec const* read)
{
    int const type = json["type"].asInt();
    std::wstring const scope = WideKey(json, "scope").c_str();
    bool const legacy = json["legacy"].asBool();
    if (read == nullptr)
        return;
    Same("the spec's type", type, static_cast<int>(read->GetType()));
    Same("the spec's scope", scope, ScopeOf(*read));
    Json::Value written;
    SSOServicesPrivate::OAuth2TokenSpecToJson(*read, written);
    Same("the spec's mark", legacy, written["legacy"].asBool());
}

void TakeCookie(Json::Value const& json, NetworkCookie const* read)
{
    std::string const name = json["Name"].asString();
    std::string const value = json["Value"].asString();
    std::wstring const domain = WideKey(json, "Domain").c_str();
    std::wstring const path = WideKey(json, "Path").c_str();
    bool const secure = json["IsSecure"].asBool();
    bool const httpOnly = json["IsHttpOnly"].asBool();
    long long const expiryDate = json["ExpiryDate"].asInt64();
    if (read == nullptr)
        return;
    Same("the cookie's name", name, BytesOf(*read, &NetworkCookie::GetName));
    Same("the cookie's value", value, BytesOf(*read, &NetworkCookie::GetValue));
    Same("the cookie's domain", domain, WideOf(*read, &NetworkCookie::GetDomain));
    Same("the cookie's path", path, WideOf(*read, &NetworkCookie::GetPath));
    Same("whether the cookie is secure", secure, read->IsSecure());
    Same("whether the cookie is for HTTP only", httpOnly, read->IsHttpOnly());
    Same("the cookie's expiry", expiryDate, read->GetExpiryDate());
}

void TakeJar(Json::Value const& json, NetworkCookieJar const* read)
{
    int count = 0;
    for (Json::Value const& member : json["Cookies"]) {
        NetworkCookie const cookie = read == nullptr ? NetworkCookie() : read->GetCookie(count);
        NetworkCookie const* const checked = read == nullptr ? nullptr : &cookie;
        TakeCookie(member.isNull() ? Json::Value(Json::objectValue) : member, checked);
        ++count;
    }
    if (read != nullptr)
        Same("how many cookies", count, read->GetCookieCount());
}

/// From the first write on, the text stays. Answers that text.
template <class Object>
std::string CheckStable(Object const& first, std::string const& end)
{
    std::string const written = Write(first);
    Object second;
    Same("what was written can be read", end, Try([&] { return Read(written, second); }));
    Same("what was written is written again", written, Write(second));
    return written;
}

template <class Object>
void Check(std::string const& text, Json::Value const* json,
           void (*take)(Json::Value const&, Object const*))
{
    Object object;
    Fill(object);
    std::string const before = Write(object);
    std::string const end = Try([&] { return Read(text, object); });
    Same("how a read ends",
         ExpectedEnd(json, [take](Json::Value const& value) { take(value, nullptr); }), end);
    if (end == "true")
        take(*json, &object);
    if (end == "false")
        Same("a read that answers false changes nothing", before, Write(object));
    CheckStable(object, "true");
}

void CheckToken(std::string const& text, Json::Value const* json)
{
    OAuth2Token token;
    Fill(token);
    std::string clear;
    std::string end = ExpectedEnd(json, [&](Json::Value const& value) {
        if (!value["OAuth2TokenSpec"].isNull())
            TakeSpec(value["OAuth2TokenSpec"], nullptr);
        clear = value["OAuth2AccessToken"].asString();
        std::string const encrypted = value["EncryptedOAuth2AccessToken"].asString();
        std::string decoded;
        switch (Reference::Decode64(encrypted, decoded)) {
        case Reference::Decoding::Done:
            break;
        case Reference::Decoding::NotInAlphabet:
            throw boost::archive::iterators::dataflow_exception();
        case Reference::Decoding::MorePaddingThanBytes:
            throw std::out_of_range("padding");
        }
    });
    if (end == "true" && clear.empty())
        end = "false";
    Same("how the read of a token ends", end, Try([&] { return Read(text, token); }));
    Same("the token's text", end == "true" ? Reference::Widen(clear) : L"before", TextOf(token));
    if (end == "true" && !(*json)["OAuth2TokenSpec"].isNull()) {
        OAuth2TokenSpec const spec = token.GetSpec();
        TakeSpec((*json)["OAuth2TokenSpec"], &spec);
    }
    CheckStable(token, token.IsValid() ? "true" : "false");
}

void CheckEncrypted(std::string const& text, std::shared_ptr<Cryptor> const& cryptor,
                    Cryptor::Manner manner)
{
    OAuth2Token token;
    Fill(token);
    std::string const end =
        Try([&] { return SSOServicesPrivate::JsonToOAuth2Token(text.c_str(), token, cryptor); });
    if (end == "false")
        Same("a token that is not read keeps its text", std::wstring(L"before"), TextOf(token));

    std::string written = "left over";
    bool const isWritten = SSOServicesPrivate::OAuth2TokenToJson(token, written, cryptor);
    std::size_t const size = Reference::Narrow(TextOf(token)).size();
    bool const fits =
        token.GetSpec().GetType() != OAuth2TokenTypeDefault || size <= cryptor->RsaCapacity();
    Same("whether a token is encrypted", manner == Cryptor::Works && fits, isWritten);
    Same("a token that is not encrypted leaves no text", !isWritten, written.empty());
    if (!isWritten)
        return;
    OAuth2Token second;
    Same("what was encrypted can be read", true,
         SSOServicesPrivate::JsonToOAuth2Token(written.c_str(), second, cryptor));
    Same("the decrypted text", TextOf(token), TextOf(second));
    std::string rewritten;
    SSOServicesPrivate::OAuth2TokenToJson(second, rewritten, cryptor);
    Same("what was encrypted is written again", written, rewritten);
}

std::vector<std::string> const Texts = {"",
                                        "user:profile data:read",
                                        "b a",
                                        "token",
                                        "sessionid",
                                        "example.com",
                                        "/path",
                                        std::string("a\0b", 3),
                                        "\xC3\xA4\xE2\x82\xAC",
                                        "\xF0\x9F\x98\x80",
                                        "\xED\xA0\x80",
                                        "\xFF",
                                        "QUJD",
                                        "QQ==",
                                        "====",
                                        "=A=A",
                                        "Q",
                                        "not base64"};

Json::Value MakeSpec(JsonMaker& maker)
{
    if (maker.Seldom())
        return maker.Odd();
    Json::Value spec;
    if (maker.Byte() % 4 != 0)
        spec["type"] = maker.Seldom() ? maker.Odd() : static_cast<int>(maker.Byte() % 4);
    maker.SetText(spec, "scope");
    if (maker.Byte() % 4 != 0)
        spec["legacy"] = maker.Seldom() ? maker.Odd() : maker.Byte() % 2 == 0;
    return spec;
}

Json::Value MakeCookie(JsonMaker& maker)
{
    if (maker.Seldom())
        return maker.Odd();
    Json::Value cookie(Json::objectValue);
    for (char const* key : {"Name", "Value", "Domain", "Path"})
        maker.SetText(cookie, key);
    for (char const* key : {"IsSecure", "IsHttpOnly"})
        if (maker.Byte() % 4 != 0)
            cookie[key] = maker.Seldom() ? maker.Odd() : maker.Byte() % 2 == 0;
    if (maker.Byte() % 4 != 0)
        cookie["ExpiryDate"] = maker.Seldom() ? maker.Odd() : static_cast<int>(maker.Byte()) - 9;
    return cookie;
}

// One object that all the readers find their keys in.
Json::Value Make(JsonMaker& maker)
{
    Json::Value root = maker.Byte() % 2 == 0 ? MakeSpec(maker) : MakeCookie(maker);
    if (!root.isObject())
        return root;
    root["OAuth2TokenSpec"] = MakeSpec(maker);
    maker.SetText(root, "OAuth2AccessToken");
    maker.SetText(root, "EncryptedOAuth2AccessToken");
    if (maker.Seldom()) {
        root["Cookies"] = maker.Odd();
    } else {
        bool const named = maker.Seldom();
        for (unsigned i = maker.Byte() % 4; i > 0; --i) {
            if (named)
                root["Cookies"][std::to_string(i)] = MakeCookie(maker);
            else
                root["Cookies"].append(MakeCookie(maker));
        }
    }
    return root;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // A document ends at its first zero, like every text that is handed over so.
    std::string const text = Document(data, size, Texts, Make).c_str();

    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    std::unique_ptr<Json::CharReader> const reader(builder.newCharReader());
    Json::Value json;
    std::string errors;
    std::string const parsing = Try([&] {
        return !text.empty() &&
               reader->parse(text.data(), text.data() + text.size(), &json, &errors);
    });
    // Nested too deeply: the parser's own exception, and nobody's value.
    if (parsing != "true" && parsing != "false") {
        NetworkCookieJar jar;
        Same("how a read ends", parsing, Try([&] { return Read(text, jar); }));
        return 0;
    }
    Json::Value const* const parsed = parsing == "true" ? &json : nullptr;

    Check<OAuth2TokenSpec>(text, parsed, TakeSpec);
    Check<NetworkCookie>(text, parsed, TakeCookie);
    Check<NetworkCookieJar>(text, parsed, TakeJar);
    CheckToken(text, parsed);
    // Some block size that goes with the input, below none at all too.
    int const maxBlockSize = static_cast<int>(text.size() * 7 % 300) - 2;
    for (Cryptor::Manner const manner : {Cryptor::Works, Cryptor::Refuses, Cryptor::ClaimsMore})
        CheckEncrypted(text, std::make_shared<Cryptor>(maxBlockSize, manner), manner);
    return 0;
}
