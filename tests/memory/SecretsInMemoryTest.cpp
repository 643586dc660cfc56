#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <json/value.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include <WebServicesConfiguration.h>
#include <plugin/IRsaCryptor.h>
#include "framework/Secrets.h"
#include "memory/FreedMemory.h"
#include "support/TextConversion.h"

using namespace Halvorix::WebServices;
using Rig::FreedMemory;
using Functions = SSOServicesPrivate;
namespace Secrets = Rig::Secrets;

namespace {

std::string const Token = Secrets::AccessToken;
std::wstring const WideToken = Secrets::Wide(Token);
std::string const Cookie = Secrets::CookieValue;
std::string const Padding(3000, '.');

/// A cryptor whose cipher is the text itself, the hardest case: all that is
/// meant to be unreadable is the secret, too.
class PlainCryptor : public IRsaCryptor {
public:
    enum Behaviour { Works, Fails, Throws };
    explicit PlainCryptor(Behaviour behaviour = Works) : behaviour(behaviour) {}

    int GetMaxBlockSize() override { return 4096; }
    bool RsaEncrypt(unsigned char const* in, unsigned long long size, unsigned char* out,
                    unsigned long long, unsigned long long* length) override
    {
        return Copy(in, size, out, length);
    }
    bool RsaDecrypt(unsigned char const* in, unsigned long long size, unsigned char* out,
                    unsigned long long, unsigned long long* length) override
    {
        return Copy(in, size, out, length);
    }
    bool EncryptBuffer(unsigned char const* in, unsigned long long size, unsigned char* out,
                       unsigned long long, unsigned long long* length) override
    {
        return Copy(in, size, out, length);
    }
    bool DecryptBuffer(unsigned char const* in, unsigned long long size, unsigned char* out,
                       unsigned long long, unsigned long long* length) override
    {
        return Copy(in, size, out, length);
    }

private:
    bool Copy(unsigned char const* in, unsigned long long size, unsigned char* out,
              unsigned long long* length)
    {
        std::memcpy(out, in, size);
        *length = size;
        if (behaviour == Throws)
            throw std::runtime_error("cryptor");
        return behaviour == Works;
    }

    Behaviour behaviour;
};

/// Does it with every block watched. What the action hands out is the caller's,
/// who keeps it until the watch is over.
template <class Action>
void ExpectNothingLeft(std::string const& secret, Action action)
{
    FreedMemory const memory(secret);
    action();
    EXPECT_EQ(memory.WithSecret(), 0);
    EXPECT_GT(memory.Searched(), 0);
}

std::string TokenDocument(std::string const& members)
{
    return R"({"OAuth2TokenSpec": {"type": 2, "scope": "a"}, )" + members + "}";
}

std::string ClearDocument() { return TokenDocument(R"("OAuth2AccessToken": ")" + Token + '"'); }

OAuth2Token NewToken(OAuth2TokenType type = OAuth2TokenTypeDefault)
{
    OAuth2Token token;
    Functions::Initialize(token, WideToken, OAuth2TokenSpec(type, L"a"));
    return token;
}

std::string EncryptedDocument(OAuth2TokenType type)
{
    std::string text;
    Functions::OAuth2TokenToJson(NewToken(type), text, std::make_shared<PlainCryptor>());
    return text;
}

OAuth2TokenType const OtherType = static_cast<OAuth2TokenType>(2);

} // namespace

TEST(SecretsInMemory, ATokenThatEndsOrIsReplacedIsWiped)
{
    std::wstring const longer = WideToken + std::wstring(100, L'.');
    ExpectNothingLeft(Token, [&] {
        OAuth2Token token;
        Functions::Initialize(token, WideToken, OAuth2TokenSpec());
        Functions::Initialize(token, longer, OAuth2TokenSpec());
        OAuth2Token copy(token);
        copy = OAuth2Token();
        copy = token;
        EXPECT_EQ(copy.GetToken(), longer);
        token = copy;
        token = *&token;
        EXPECT_EQ(token.GetToken(), longer);
    });
}

TEST(SecretsInMemory, ACookieThatEndsOrIsReplacedIsWiped)
{
    std::string const longer = Cookie + Padding;
    ExpectNothingLeft(Cookie, [&] {
        NetworkCookie cookie;
        cookie.SetValue(Cookie.c_str());
        cookie.SetValue(longer.c_str());
        NetworkCookie copy(cookie);
        copy = NetworkCookie();
        copy = cookie;
        NetworkCookieJar jar;
        for (int i = 0; i < 20; ++i)
            jar.AddCookie(copy);
        EXPECT_EQ(jar.GetCookie(3).GetValue(nullptr, 0), static_cast<int>(longer.size()));
        jar.DeleteAll();
        jar.AddCookie(copy);
    });
}

TEST(SecretsInMemory, TheSecretsOfAConfigurationAreWiped)
{
    std::wstring const secret = Secrets::Wide(Secrets::ConsumerSecret);
    ExpectNothingLeft(Secrets::ConsumerSecret, [&] {
        WebServicesConfiguration configuration;
        configuration.SetConsumerSecret(secret.c_str());
        configuration.SetOAuth2ConsumerSecret(secret.c_str());
        WebServicesConfiguration copy(configuration);
        copy.SetConsumerSecret(L"");
        copy = configuration;
        EXPECT_EQ(copy.GetOAuth2ConsumerSecret(nullptr, 0), static_cast<int>(secret.size()));
    });
}

TEST(SecretsInMemory, AReadTokenLeavesNothing)
{
    std::string const document = ClearDocument();
    ExpectNothingLeft(Token, [&] {
        OAuth2Token token;
        EXPECT_TRUE(Functions::JsonToOAuth2Token(document.c_str(), token));
        EXPECT_EQ(token.GetToken(), WideToken);
        EXPECT_TRUE(Functions::JsonToOAuth2Token(document.c_str(), token));
    });
}

TEST(SecretsInMemory, ADecryptedTokenLeavesNothing)
{
    for (OAuth2TokenType const type : {OAuth2TokenTypeDefault, OtherType}) {
        std::string const document = EncryptedDocument(type);
        ExpectNothingLeft(Token, [&] {
            OAuth2Token token;
            auto const cryptor = std::make_shared<PlainCryptor>();
            EXPECT_TRUE(Functions::JsonToOAuth2Token(document.c_str(), token, cryptor));
            EXPECT_EQ(token.GetToken(), WideToken);
        });
    }
}

TEST(SecretsInMemory, AWrittenTokenLeavesNothingButWhatTheCallerGot)
{
    for (OAuth2TokenType const type : {OAuth2TokenTypeDefault, OtherType}) {
        OAuth2Token const token = NewToken(type);
        std::string clear;
        std::string encrypted;
        ExpectNothingLeft(Token, [&] {
            EXPECT_TRUE(Functions::OAuth2TokenToJson(token, clear));
            auto const cryptor = std::make_shared<PlainCryptor>();
            EXPECT_TRUE(Functions::OAuth2TokenToJson(token, encrypted, cryptor));
        });
        EXPECT_NE(clear.find(Token), std::string::npos);
        EXPECT_EQ(Rig::Secrets::FoundIn(encrypted), std::vector<std::string>{Token});
    }
}

// What the target held before goes the same way.
TEST(SecretsInMemory, AWriterWipesTheTextThatItReplaces)
{
    std::string text = Token + Padding;
    text.shrink_to_fit();
    OAuth2Token const other;
    ExpectNothingLeft(Token, [&] { Functions::OAuth2TokenToJson(other, text); });
}

TEST(SecretsInMemory, ATokenOfThreeByteCharactersLeavesNothing)
{
    std::wstring const wide = WideToken + std::wstring(500, L'\u20ac');
    OAuth2Token token;
    Functions::Initialize(token, wide, OAuth2TokenSpec());
    std::string text;
    ExpectNothingLeft(Token, [&] {
        Functions::OAuth2TokenToJson(token, text);
        OAuth2Token read;
        Functions::JsonToOAuth2Token(text.c_str(), read);
        EXPECT_EQ(read.GetToken(), wide);
    });
}

TEST(SecretsInMemory, CookiesLeaveNothingInEitherDirection)
{
    NetworkCookie cookie;
    cookie.SetName("n");
    cookie.SetValue((Cookie + Padding).c_str());
    NetworkCookieJar jar;
    for (int i = 0; i < 5; ++i)
        jar.AddCookie(cookie);
    std::string one;
    std::string all;
    Json::Value json;
    json["Cookies"] = Json::Value(Json::StaticString("what was there"));
    ExpectNothingLeft(Cookie, [&] {
        EXPECT_TRUE(Functions::NetworkCookieToJson(cookie, one));
        EXPECT_TRUE(Functions::NetworkCookieJarToJson(jar, all));
        EXPECT_TRUE(Functions::NetworkCookieJarToJson(jar, json));
        NetworkCookie readCookie;
        NetworkCookieJar readJar;
        EXPECT_TRUE(Functions::JsonToNetworkCookie(one.c_str(), readCookie));
        EXPECT_TRUE(Functions::JsonToNetworkCookieJar(all.c_str(), readJar));
        EXPECT_TRUE(Functions::JsonToNetworkCookieJar(json, readJar));
        EXPECT_EQ(readJar.GetCookieCount(), 5);
    });
}

TEST(SecretsInMemory, ExceptionsAndRefusalsLeaveNothing)
{
    std::string const token = R"("OAuth2AccessToken": ")" + Token + '"';
    std::string const wrongSpec = R"({"OAuth2TokenSpec": 1, )" + token + "}";
    std::string const badBase64 =
        TokenDocument(R"("EncryptedOAuth2AccessToken": ")" + Token + R"(", )" + token);
    std::string const tooMuchPadding =
        TokenDocument(R"("EncryptedOAuth2AccessToken": "====", )" + token);
    std::string const cut = ClearDocument().substr(0, ClearDocument().size() - 1);
    std::string const notUtf8 = TokenDocument(R"("OAuth2AccessToken": ")" + Token + "\xFF\"");
    std::string const encrypted = EncryptedDocument(OtherType);
    OAuth2Token const filled = NewToken();
    std::string text;
    ExpectNothingLeft(Token, [&] {
        OAuth2Token read;
        for (std::string const* const document : {&wrongSpec, &badBase64, &tooMuchPadding})
            EXPECT_THROW(Functions::JsonToOAuth2Token(document->c_str(), read), std::exception);
        EXPECT_FALSE(Functions::JsonToOAuth2Token(cut.c_str(), read));
        EXPECT_TRUE(Functions::JsonToOAuth2Token(notUtf8.c_str(), read));
        EXPECT_FALSE(Functions::JsonToOAuth2Token(encrypted.c_str(), read));
        auto const fails = std::make_shared<PlainCryptor>(PlainCryptor::Fails);
        auto const throws = std::make_shared<PlainCryptor>(PlainCryptor::Throws);
        EXPECT_FALSE(Functions::JsonToOAuth2Token(encrypted.c_str(), read, fails));
        EXPECT_THROW(Functions::JsonToOAuth2Token(encrypted.c_str(), read, throws),
                     std::runtime_error);
        EXPECT_FALSE(Functions::OAuth2TokenToJson(filled, text, fails));
        EXPECT_THROW(Functions::OAuth2TokenToJson(filled, text, throws), std::runtime_error);
        EXPECT_TRUE(text.empty());
    });
}

TEST(SecretsInMemory, ConversionsLeaveNothingButTheirAnswer)
{
    std::string const undecodable = Token + Padding + "\xC3";
    std::wstring wide;
    std::string narrow;
    ExpectNothingLeft(Token, [&] {
        wide = Halvorix::SSOServices::Utf8ToWide(Token);
        narrow = Halvorix::SSOServices::WideToUtf8(wide);
        EXPECT_TRUE(Halvorix::SSOServices::Utf8ToWide(undecodable).empty());
    });
    EXPECT_EQ(narrow, Token);
}

// The one exception: the copies that jsoncpp makes for itself, one of a text that
// it reads and two of one that it writes. The library does not reach them.
TEST(SecretsInMemory, TheJsonLibraryLeavesItsOwnCopiesAndNoMore)
{
    std::string const document = ClearDocument();
    OAuth2Token token;
    std::string text;
    {
        FreedMemory const memory(Token);
        Functions::JsonToOAuth2Token(document.c_str(), token);
        EXPECT_LE(memory.WithSecretOfOthers(), 1);
    }
    {
        FreedMemory const memory(Token);
        Functions::OAuth2TokenToJson(token, text);
        EXPECT_LE(memory.WithSecretOfOthers(), 2);
    }
}
