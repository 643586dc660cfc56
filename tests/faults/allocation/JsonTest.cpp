// The value classes as JSON, both ways, with each allocation failing.

#include <cstring>
#include <memory>

#include <gtest/gtest.h>
#include <json/value.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include <plugin/IRsaCryptor.h>
#include "faults/allocation/Sweep.h"
#include "json/Base64.h"
#include "json/JsonDocument.h"

using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;

namespace {

/// Copies; needs no memory of its own.
class CopyingCryptor : public IRsaCryptor {
public:
    int GetMaxBlockSize() override { return 255; }
    bool RsaEncrypt(unsigned char const* input, unsigned long long inputSize, unsigned char* output,
                    unsigned long long outputCapacity, unsigned long long* outputLength) override
    {
        return Copy(input, inputSize, output, outputCapacity, outputLength);
    }
    bool RsaDecrypt(unsigned char const* input, unsigned long long inputSize, unsigned char* output,
                    unsigned long long outputCapacity, unsigned long long* outputLength) override
    {
        return Copy(input, inputSize, output, outputCapacity, outputLength);
    }
    bool EncryptBuffer(unsigned char const* input, unsigned long long inputSize,
                       unsigned char* output, unsigned long long outputCapacity,
                       unsigned long long* outputLength) override
    {
        return Copy(input, inputSize, output, outputCapacity, outputLength);
    }
    bool DecryptBuffer(unsigned char const* input, unsigned long long inputSize,
                       unsigned char* output, unsigned long long outputCapacity,
                       unsigned long long* outputLength) override
    {
        return Copy(input, inputSize, output, outputCapacity, outputLength);
    }

private:
    static bool Copy(unsigned char const* input, unsigned long long size, unsigned char* output,
                     unsigned long long capacity, unsigned long long* length)
    {
        if (size > capacity)
            return false;
        std::memcpy(output, input, size);
        *length = size;
        return true;
    }
};

std::wstring const TokenText = L"a token that is long enough to need memory";

OAuth2Token GoodToken()
{
    OAuth2Token token;
    SSOServicesPrivate::Initialize(token, TokenText, {OAuth2TokenTypeDefault, L"data:read user"});
    return token;
}

NetworkCookie GoodCookie()
{
    NetworkCookie cookie;
    cookie.SetName("a name that needs memory");
    cookie.SetValue("a value that needs memory");
    cookie.SetDomain(L"login.sample.example");
    cookie.SetPath(L"/a/path/that/needs/memory");
    cookie.SetExpiryDate(1234567890123);
    return cookie;
}

NetworkCookieJar& FillJar(NetworkCookieJar& jar)
{
    jar.AddCookie(GoodCookie());
    jar.AddCookie(GoodCookie());
    return jar;
}

/// Writes a text, which is whole or not there at all.
template <class Write>
void SweepWriter(Write write)
{
    std::string whole;
    write(whole);
    std::unique_ptr<std::string> text;
    Faults::Operation operation;
    operation.prepare = [&] { text = std::make_unique<std::string>("old text that needs memory"); };
    operation.run = [&] { write(*text); };
    operation.expectGood = [&] { EXPECT_EQ(*text, whole); };
    operation.useAfterwards = [&] { EXPECT_NE(*text, whole); };
    operation.discard = [&] { text.reset(); };
    Faults::FailEachAllocation(operation);
}

/// Reads a document into a value, as text if it is given so: a text that the
/// stream could not take in whole reads as no JSON.
template <class Value, class Read>
void SweepReader(Read read, std::function<void(Value const&)> expectRead)
{
    bool answer = false;
    std::unique_ptr<Value> value;
    Faults::Operation operation;
    operation.prepare = [&] {
        value = std::make_unique<Value>();
        answer = false;
    };
    operation.run = [&] { answer = read(*value); };
    operation.expectGood = [&] {
        EXPECT_TRUE(answer);
        expectRead(*value);
    };
    operation.expectToldFailure = [&] {
        if (answer)
            expectRead(*value);
    };
    operation.useAfterwards = [&] {
        EXPECT_TRUE(read(*value));
        expectRead(*value);
    };
    operation.discard = [&] { value.reset(); };
    Faults::FailEachAllocation(operation);
}

void ExpectGoodToken(OAuth2Token const& token) { EXPECT_TRUE(token == GoodToken()); }

void ExpectGoodJar(NetworkCookieJar const& jar)
{
    ASSERT_EQ(jar.GetCookieCount(), 2);
    char name[32] = {};
    jar.GetCookie(1).GetName(name, 32);
    EXPECT_STREQ(name, "a name that needs memory");
}

std::string TextOf(OAuth2Token const& token, std::shared_ptr<IRsaCryptor> const& cryptor = nullptr)
{
    std::string text;
    SSOServicesPrivate::OAuth2TokenToJson(token, text, cryptor);
    return text;
}

} // namespace

TEST(JsonAllocation, FailingWritesNoCutToken)
{
    OAuth2Token const token = GoodToken();
    SweepWriter([&](std::string& text) { SSOServicesPrivate::OAuth2TokenToJson(token, text); });
}

TEST(JsonAllocation, FailingWritesNoCutEncryptedToken)
{
    OAuth2Token const token = GoodToken();
    auto const cryptor = std::make_shared<CopyingCryptor>();
    SweepWriter(
        [&](std::string& text) { SSOServicesPrivate::OAuth2TokenToJson(token, text, cryptor); });
}

TEST(JsonAllocation, FailingWritesNoCutSpec)
{
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"data:read user:profile");
    SweepWriter([&](std::string& text) { SSOServicesPrivate::OAuth2TokenSpecToJson(spec, text); });
}

TEST(JsonAllocation, FailingWritesNoCutCookie)
{
    NetworkCookie const cookie = GoodCookie();
    SweepWriter([&](std::string& text) { SSOServicesPrivate::NetworkCookieToJson(cookie, text); });
}

TEST(JsonAllocation, FailingWritesNoCutJar)
{
    NetworkCookieJar jar;
    FillJar(jar);
    SweepWriter([&](std::string& text) { SSOServicesPrivate::NetworkCookieJarToJson(jar, text); });
}

TEST(JsonAllocation, FailingLeavesATokenThatReads)
{
    std::string const text = TextOf(GoodToken());
    SweepReader<OAuth2Token>(
        [&](OAuth2Token& token) {
            return SSOServicesPrivate::JsonToOAuth2Token(text.c_str(), token);
        },
        ExpectGoodToken);
}

TEST(JsonAllocation, FailingLeavesATokenThatDecrypts)
{
    auto const cryptor = std::make_shared<CopyingCryptor>();
    std::string const text = TextOf(GoodToken(), cryptor);
    SweepReader<OAuth2Token>(
        [&](OAuth2Token& token) {
            return SSOServicesPrivate::JsonToOAuth2Token(text.c_str(), token, cryptor);
        },
        ExpectGoodToken);
}

TEST(JsonAllocation, FailingLeavesATokenThatReadsFromAValue)
{
    Json::Value json;
    SSOServicesPrivate::OAuth2TokenToJson(GoodToken(), json);
    SweepReader<OAuth2Token>(
        [&](OAuth2Token& token) { return SSOServicesPrivate::JsonToOAuth2Token(json, token); },
        ExpectGoodToken);
}

TEST(JsonAllocation, FailingLeavesASpecThatReads)
{
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"data:read user:profile");
    std::string text;
    SSOServicesPrivate::OAuth2TokenSpecToJson(spec, text);
    SweepReader<OAuth2TokenSpec>(
        [&](OAuth2TokenSpec& read) {
            return SSOServicesPrivate::JsonToOAuth2TokenSpec(text.c_str(), read);
        },
        [&](OAuth2TokenSpec const& read) { EXPECT_TRUE(read == spec); });
}

TEST(JsonAllocation, FailingLeavesACookieThatReads)
{
    std::string text;
    SSOServicesPrivate::NetworkCookieToJson(GoodCookie(), text);
    SweepReader<NetworkCookie>(
        [&](NetworkCookie& cookie) {
            return SSOServicesPrivate::JsonToNetworkCookie(text.c_str(), cookie);
        },
        [](NetworkCookie const& cookie) { EXPECT_EQ(cookie.GetExpiryDate(), 1234567890123); });
}

TEST(JsonAllocation, FailingLeavesAJarThatReads)
{
    NetworkCookieJar jar;
    std::string text;
    SSOServicesPrivate::NetworkCookieJarToJson(FillJar(jar), text);
    SweepReader<NetworkCookieJar>(
        [&](NetworkCookieJar& read) {
            return SSOServicesPrivate::JsonToNetworkCookieJar(text.c_str(), read);
        },
        ExpectGoodJar);
}

TEST(JsonAllocation, FailingInBase64ReachesTheCaller)
{
    std::string const bytes(100, 'x');
    std::string const encoded = Base64Encode(bytes);
    std::string result;
    Faults::Operation operation;
    operation.run = [&] { result = Base64Decode(encoded); };
    operation.expectGood = [&] { EXPECT_EQ(result, bytes); };
    operation.discard = [&] { std::string().swap(result); };
    Faults::FailEachAllocation(operation);
    operation.run = [&] { result = Base64Encode(bytes); };
    operation.expectGood = [&] { EXPECT_EQ(result, encoded); };
    Faults::FailEachAllocation(operation);
}
