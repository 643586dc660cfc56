#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/archive/iterators/dataflow_exception.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include <plugin/IRsaCryptor.h>
#include "types/Values.h"

using Halvorix::WebServices::IRsaCryptor;
using namespace HxSSOTest;
using namespace std::string_literals;

namespace {

using Functions = SSOServicesPrivate;
using Size = unsigned long long;
using Operations = std::vector<std::string>;

struct Call {
    std::string operation;
    std::string input;
    Size capacity;
};

class RecordingCryptor : public IRsaCryptor {
public:
    std::vector<Call> calls;
    int maxBlockSize = 244;
    bool result = true;
    std::string output = "out";
    std::optional<Size> claimedLength; // in place of the output's own
    bool throws = false;
    long ownersDuringCall = 0;
    std::weak_ptr<IRsaCryptor> self;

    Operations CalledOperations() const
    {
        Operations operations;
        for (Call const& call : calls) {
            operations.push_back(call.operation);
        }
        return operations;
    }

    int GetMaxBlockSize() override { return maxBlockSize; }
    bool RsaEncrypt(unsigned char const* in, Size size, unsigned char* out, Size capacity,
                    Size* length) override
    {
        return Run("RsaEncrypt", in, size, out, capacity, length);
    }
    bool RsaDecrypt(unsigned char const* in, Size size, unsigned char* out, Size capacity,
                    Size* length) override
    {
        return Run("RsaDecrypt", in, size, out, capacity, length);
    }
    bool EncryptBuffer(unsigned char const* in, Size size, unsigned char* out, Size capacity,
                       Size* length) override
    {
        return Run("EncryptBuffer", in, size, out, capacity, length);
    }
    bool DecryptBuffer(unsigned char const* in, Size size, unsigned char* out, Size capacity,
                       Size* length) override
    {
        return Run("DecryptBuffer", in, size, out, capacity, length);
    }

private:
    bool Run(char const* operation, unsigned char const* in, Size size, unsigned char* out,
             Size capacity, Size* length)
    {
        calls.push_back({operation, size == 0 ? "" : std::string(in, in + size), capacity});
        ownersDuringCall = self.use_count();
        if (throws) {
            throw std::runtime_error("cryptor");
        }
        std::copy_n(output.begin(), std::min<Size>(output.size(), capacity), out);
        *length = claimedLength.value_or(output.size());
        return result;
    }
};

std::shared_ptr<RecordingCryptor> Cryptor()
{
    auto cryptor = std::make_shared<RecordingCryptor>();
    cryptor->self = cryptor;
    return cryptor;
}

OAuth2TokenSpec Spec(std::int32_t type) { return OAuth2TokenSpec(Type(type), L"scope"); }

OAuth2Token TokenOfType(std::int32_t type, std::wstring const& text)
{
    return Token(text, Spec(type));
}

std::string const EncryptedKey = "EncryptedOAuth2AccessToken";
std::string const ClearKey = "OAuth2AccessToken";

// Types other than the default, which is 1.
std::int32_t const OtherTypes[] = {0, 2, -1, INT32_MAX, INT32_MIN};

} // namespace

TEST(TokenEncryption, UsesTheRsaPairForTheDefaultType)
{
    auto const cryptor = Cryptor();
    Json::Value json;
    EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(1, L"t\u00e9"), json, cryptor));
    ASSERT_EQ(cryptor->calls.size(), 1U);
    EXPECT_EQ(cryptor->calls[0].operation, "RsaEncrypt");
    EXPECT_EQ(cryptor->calls[0].input, "t\xC3\xA9");
    EXPECT_EQ(cryptor->calls[0].capacity, 245U);
}

TEST(TokenEncryption, UsesTheBufferPairForEveryOtherType)
{
    for (std::int32_t type : OtherTypes) {
        SCOPED_TRACE(type);
        auto const cryptor = Cryptor();
        Json::Value json;
        EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(type, L"t\u00e9"), json, cryptor));
        ASSERT_EQ(cryptor->calls.size(), 1U);
        EXPECT_EQ(cryptor->calls[0].operation, "EncryptBuffer");
        EXPECT_EQ(cryptor->calls[0].input, "t\xC3\xA9");
        EXPECT_EQ(cryptor->calls[0].capacity, 6U);
    }
}

TEST(TokenEncryption, TakesTheRsaCapacityFromTheCryptor)
{
    for (int size : {0, 3, 1000}) {
        auto const cryptor = Cryptor();
        cryptor->maxBlockSize = size;
        cryptor->output = "";
        Json::Value json;
        EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), json, cryptor));
        ASSERT_EQ(cryptor->calls.size(), 1U);
        EXPECT_EQ(cryptor->calls[0].capacity, static_cast<Size>(size) + 1);

        OAuth2Token token;
        EXPECT_TRUE(Functions::JsonToOAuth2Token(
            R"({"OAuth2TokenSpec":{"type":1},"EncryptedOAuth2AccessToken":"Zm9v"})", token,
            cryptor));
        ASSERT_EQ(cryptor->calls.size(), 2U);
        EXPECT_EQ(cryptor->calls[1].capacity, static_cast<Size>(size) + 1);
    }
}

TEST(TokenEncryption, WritesTheOutputAsBase64InPlaceOfTheClearText)
{
    for (std::int32_t type : {1, 2}) {
        SCOPED_TRACE(type);
        auto const cryptor = Cryptor();
        cryptor->output = "\0\xFF\n"s;
        std::string text = "old";
        EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(type, L"text"), text, cryptor));
        EXPECT_EQ(text, "{\n"
                        "\t\"EncryptedOAuth2AccessToken\" : \"AP8K\",\n"
                        "\t\"OAuth2TokenSpec\" : \n"
                        "\t{\n"
                        "\t\t\"legacy\" : false,\n"
                        "\t\t\"scope\" : \"scope\",\n"
                        "\t\t\"type\" : " +
                            std::to_string(type) +
                            "\n"
                            "\t}\n"
                            "}");
    }
}

TEST(TokenEncryption, TakesNoMoreThanTheOutputLength)
{
    auto const cryptor = Cryptor();
    cryptor->output = "foobar";
    cryptor->claimedLength = 4;
    Json::Value json;
    EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), json, cryptor));
    EXPECT_EQ(json[EncryptedKey].asString(), "Zm9vYg==");
    cryptor->claimedLength = 0;
    EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), json, cryptor));
    EXPECT_EQ(json[EncryptedKey].asString(), "");
}

TEST(TokenEncryption, TakesAnOutputAsLongAsTheCapacity)
{
    auto const cryptor = Cryptor();
    cryptor->maxBlockSize = 5;
    cryptor->output = "foobar";
    Json::Value json;
    EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), json, cryptor));
    EXPECT_EQ(json[EncryptedKey].asString(), "Zm9vYmFy");
    EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(2, L"abc"), json, cryptor));
    EXPECT_EQ(json[EncryptedKey].asString(), "Zm9vYmFy");
}

TEST(TokenEncryption, KeepsOtherMembersOfAValue)
{
    Json::Value json;
    json["other"] = 5;
    EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), json, Cryptor()));
    EXPECT_EQ(json.getMemberNames(),
              (Json::Value::Members{EncryptedKey, "OAuth2TokenSpec", "other"}));
}

TEST(TokenEncryption, EncryptsNoBytesForAnEmptyToken)
{
    for (std::int32_t type : {1, 2}) {
        SCOPED_TRACE(type);
        auto const cryptor = Cryptor();
        cryptor->output = "";
        Json::Value json;
        EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(type, L""), json, cryptor));
        ASSERT_EQ(cryptor->calls.size(), 1U);
        EXPECT_EQ(cryptor->calls[0].input, "");
        EXPECT_EQ(cryptor->calls[0].capacity, type == 1 ? 245U : 0U);
        EXPECT_EQ(json[EncryptedKey], Json::Value(""));
    }
}

TEST(TokenEncryption, LeavesTheTargetsWhenTheCryptorFails)
{
    for (std::int32_t type : {1, 2}) {
        SCOPED_TRACE(type);
        auto const cryptor = Cryptor();
        cryptor->result = false;
        Json::Value json;
        json["other"] = 5;
        json[EncryptedKey] = "old";
        Json::Value const before = json;
        EXPECT_FALSE(Functions::OAuth2TokenToJson(TokenOfType(type, L"text"), json, cryptor));
        EXPECT_EQ(json, before);

        Json::Value null;
        EXPECT_FALSE(Functions::OAuth2TokenToJson(TokenOfType(type, L"text"), null, cryptor));
        EXPECT_TRUE(null.isNull());

        std::string text = "old";
        EXPECT_FALSE(Functions::OAuth2TokenToJson(TokenOfType(type, L"text"), text, cryptor));
        EXPECT_EQ(text, "");
    }
}

TEST(TokenEncryption, FailsWhenTheCryptorClaimsMoreThanItsCapacity)
{
    for (std::int32_t type : {1, 2}) {
        for (Size claimed : {Size(246), ~Size(0)}) {
            SCOPED_TRACE(claimed);
            auto const cryptor = Cryptor();
            cryptor->claimedLength = claimed;
            Json::Value json;
            EXPECT_FALSE(Functions::OAuth2TokenToJson(TokenOfType(type, L"text"), json, cryptor));
            EXPECT_TRUE(json.isNull());
            std::string text = "old";
            EXPECT_FALSE(Functions::OAuth2TokenToJson(TokenOfType(type, L"text"), text, cryptor));
            EXPECT_EQ(text, "");
        }
    }
}

TEST(TokenEncryption, LetsAnExceptionOfTheCryptorPass)
{
    auto const cryptor = Cryptor();
    cryptor->throws = true;
    std::string text = "old";
    EXPECT_THROW(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), text, cryptor),
                 std::runtime_error);
    EXPECT_EQ(text, "");
    OAuth2Token token = TokenOfType(1, L"old");
    EXPECT_THROW(
        Functions::JsonToOAuth2Token(R"({"EncryptedOAuth2AccessToken":"Zm9v"})", token, cryptor),
        std::runtime_error);
    EXPECT_EQ(Text(token), L"old");
    EXPECT_EQ(cryptor.use_count(), 1);
}

TEST(TokenEncryption, WritesClearTextForAnEmptyPointer)
{
    Json::Value with;
    Json::Value without;
    EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), with, nullptr));
    EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), without));
    EXPECT_EQ(with, without);
    EXPECT_EQ(with[ClearKey].asString(), "text");
    EXPECT_FALSE(with.isMember(EncryptedKey));

    std::string text;
    std::string textWithout;
    EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), text, nullptr));
    EXPECT_TRUE(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), textWithout));
    EXPECT_EQ(text, textWithout);
}

TEST(TokenEncryption, HoldsTheCryptorForTheCallOnly)
{
    auto const cryptor = Cryptor();
    Json::Value json;
    std::string text;
    OAuth2Token token;
    Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), json, cryptor);
    EXPECT_GT(cryptor->ownersDuringCall, 1);
    EXPECT_EQ(cryptor.use_count(), 1);
    Functions::OAuth2TokenToJson(TokenOfType(2, L"text"), text, cryptor);
    EXPECT_EQ(cryptor.use_count(), 1);
    EXPECT_TRUE(Functions::JsonToOAuth2Token(json, token, cryptor));
    EXPECT_EQ(cryptor.use_count(), 1);
    EXPECT_TRUE(Functions::JsonToOAuth2Token(text.c_str(), token, cryptor));
    EXPECT_EQ(cryptor.use_count(), 1);
    cryptor->result = false;
    EXPECT_FALSE(Functions::OAuth2TokenToJson(TokenOfType(1, L"text"), text, cryptor));
    EXPECT_FALSE(Functions::JsonToOAuth2Token(json, token, cryptor));
    EXPECT_EQ(cryptor.use_count(), 1);
}

TEST(TokenDecryption, UsesTheRsaPairForTheDefaultType)
{
    auto const cryptor = Cryptor();
    cryptor->output = "n\xC3\xA9w";
    OAuth2Token token;
    EXPECT_TRUE(Functions::JsonToOAuth2Token(
        R"({"OAuth2TokenSpec":{"type":1,"scope":"b a"},"EncryptedOAuth2AccessToken":"AP8K"})",
        token, cryptor));
    ASSERT_EQ(cryptor->calls.size(), 1U);
    EXPECT_EQ(cryptor->calls[0].operation, "RsaDecrypt");
    EXPECT_EQ(cryptor->calls[0].input, "\0\xFF\n"s);
    EXPECT_EQ(cryptor->calls[0].capacity, 245U);
    EXPECT_EQ(Text(token), L"n\u00e9w");
    EXPECT_EQ(GetterText(token.GetSpec(), &OAuth2TokenSpec::GetScope), L"b a");
}

TEST(TokenDecryption, UsesTheBufferPairForEveryOtherType)
{
    for (std::int32_t type : OtherTypes) {
        SCOPED_TRACE(type);
        auto const cryptor = Cryptor();
        cryptor->output = "new";
        OAuth2Token token;
        Json::Value json;
        json["OAuth2TokenSpec"]["type"] = type;
        json[EncryptedKey] = "Zm9vYg=="; // foob
        EXPECT_TRUE(Functions::JsonToOAuth2Token(json, token, cryptor));
        ASSERT_EQ(cryptor->calls.size(), 1U);
        EXPECT_EQ(cryptor->calls[0].operation, "DecryptBuffer");
        EXPECT_EQ(cryptor->calls[0].input, "foob");
        EXPECT_EQ(cryptor->calls[0].capacity, 4U);
        EXPECT_EQ(Text(token), L"new");
    }
}

TEST(TokenDecryption, ChoosesByTheSpecAsItNowStands)
{
    struct Row {
        std::int32_t before;
        char const* member;
        char const* operation;
    };
    for (Row const& row : {
             Row{1, R"("OAuth2TokenSpec":{"type":2},)", "DecryptBuffer"},
             Row{2, R"("OAuth2TokenSpec":{"type":1},)", "RsaDecrypt"},
             Row{1, R"("OAuth2TokenSpec":{},)", "DecryptBuffer"}, // a missing type is 0
             Row{1, "", "RsaDecrypt"},
             Row{2, "", "DecryptBuffer"},
             Row{1, R"("OAuth2TokenSpec":null,)", "RsaDecrypt"},
         }) {
        SCOPED_TRACE(row.member);
        auto const cryptor = Cryptor();
        OAuth2Token token = TokenOfType(row.before, L"old");
        std::string const text = "{"s + row.member + R"("EncryptedOAuth2AccessToken":"Zm9v"})";
        EXPECT_TRUE(Functions::JsonToOAuth2Token(text.c_str(), token, cryptor));
        EXPECT_EQ(cryptor->CalledOperations(), Operations{row.operation});
    }
}

TEST(TokenDecryption, PrefersTheClearTextAndCallsNobody)
{
    auto const cryptor = Cryptor();
    OAuth2Token token;
    EXPECT_TRUE(Functions::JsonToOAuth2Token(
        R"({"OAuth2AccessToken":"clear","EncryptedOAuth2AccessToken":"Zm9v"})", token, cryptor));
    EXPECT_EQ(Text(token), L"clear");
    EXPECT_TRUE(cryptor->calls.empty());

    EXPECT_TRUE(Functions::JsonToOAuth2Token(
        R"({"OAuth2AccessToken":"","EncryptedOAuth2AccessToken":"Zm9v"})", token, cryptor));
    EXPECT_EQ(Text(token), L"out");
    EXPECT_EQ(cryptor->CalledOperations(), Operations{"RsaDecrypt"});
}

// What counts as empty is the text before its conversion.
TEST(TokenDecryption, CallsNobodyForAClearTextThatIsNoUtf8)
{
    auto const cryptor = Cryptor();
    Json::Value json;
    json[ClearKey] = "\xFF";
    json[EncryptedKey] = "Zm9v";
    OAuth2Token token = TokenOfType(1, L"old");
    EXPECT_TRUE(Functions::JsonToOAuth2Token(json, token, cryptor));
    EXPECT_EQ(Text(token), L"");
    EXPECT_TRUE(cryptor->calls.empty());
}

TEST(TokenDecryption, IsCalledWithNoBytesForAnEmptyObject)
{
    for (std::int32_t type : {1, 2}) {
        SCOPED_TRACE(type);
        auto const cryptor = Cryptor();
        cryptor->output = "";
        OAuth2Token token = TokenOfType(type, L"old");
        EXPECT_TRUE(Functions::JsonToOAuth2Token("{}", token, cryptor));
        ASSERT_EQ(cryptor->calls.size(), 1U);
        EXPECT_EQ(cryptor->calls[0].operation, type == 1 ? "RsaDecrypt" : "DecryptBuffer");
        EXPECT_EQ(cryptor->calls[0].input, "");
        EXPECT_EQ(cryptor->calls[0].capacity, type == 1 ? 245U : 0U);
        EXPECT_EQ(Text(token), L"");
    }
}

TEST(TokenDecryption, TakesNoMoreThanTheOutputLength)
{
    auto const cryptor = Cryptor();
    cryptor->output = "a\0bcd"s;
    cryptor->claimedLength = 3;
    OAuth2Token token;
    EXPECT_TRUE(
        Functions::JsonToOAuth2Token(R"({"EncryptedOAuth2AccessToken":"Zm9v"})", token, cryptor));
    EXPECT_EQ(Text(token), L"a\0b"s);
}

TEST(TokenDecryption, StoresAnEmptyTextForOutputThatIsNoUtf8)
{
    auto const cryptor = Cryptor();
    cryptor->output = "\xFF";
    OAuth2Token token = TokenOfType(1, L"old");
    EXPECT_TRUE(
        Functions::JsonToOAuth2Token(R"({"EncryptedOAuth2AccessToken":"Zm9v"})", token, cryptor));
    EXPECT_EQ(Text(token), L"");
}

TEST(TokenDecryption, LeavesTheTextWhenTheCryptorFails)
{
    for (std::int32_t type : {1, 2}) {
        SCOPED_TRACE(type);
        auto const cryptor = Cryptor();
        cryptor->result = false;
        OAuth2Token token = TokenOfType(7, L"old");
        Json::Value json;
        json["OAuth2TokenSpec"]["type"] = type;
        json[EncryptedKey] = "Zm9v";
        EXPECT_FALSE(Functions::JsonToOAuth2Token(json, token, cryptor));
        EXPECT_EQ(Text(token), L"old");
        EXPECT_EQ(token.GetSpec().GetType(), type);
        EXPECT_EQ(cryptor->calls.size(), 1U);
    }
}

TEST(TokenDecryption, FailsWhenTheCryptorClaimsMoreThanItsCapacity)
{
    for (std::int32_t type : {1, 2}) {
        for (Size claimed : {Size(246), ~Size(0)}) {
            SCOPED_TRACE(claimed);
            auto const cryptor = Cryptor();
            cryptor->claimedLength = claimed;
            OAuth2Token token = TokenOfType(type, L"old");
            EXPECT_FALSE(Functions::JsonToOAuth2Token(R"({"EncryptedOAuth2AccessToken":"Zm9v"})",
                                                      token, cryptor));
            EXPECT_EQ(Text(token), L"old");
        }
    }
}

TEST(TokenDecryption, DecodesBeforeItCallsAnybody)
{
    auto const cryptor = Cryptor();
    OAuth2Token token = TokenOfType(1, L"old");
    EXPECT_THROW(
        Functions::JsonToOAuth2Token(R"({"EncryptedOAuth2AccessToken":"Zm9v\n"})", token, cryptor),
        boost::archive::iterators::dataflow_exception);
    EXPECT_THROW(
        Functions::JsonToOAuth2Token(R"({"EncryptedOAuth2AccessToken":"===="})", token, cryptor),
        std::out_of_range);
    EXPECT_TRUE(cryptor->calls.empty());
    EXPECT_EQ(cryptor.use_count(), 1);
}

TEST(TokenDecryption, CallsNobodyForNothingToRead)
{
    auto const cryptor = Cryptor();
    OAuth2Token token = TokenOfType(1, L"old");
    EXPECT_FALSE(Functions::JsonToOAuth2Token(Json::Value(), token, cryptor));
    for (char const* text : {static_cast<char const*>(nullptr), "", "null", "{"}) {
        EXPECT_FALSE(Functions::JsonToOAuth2Token(text, token, cryptor));
    }
    EXPECT_TRUE(cryptor->calls.empty());
    EXPECT_EQ(Text(token), L"old");
}

TEST(TokenDecryption, NeedsACryptor)
{
    OAuth2Token token = TokenOfType(7, L"old");
    EXPECT_FALSE(Functions::JsonToOAuth2Token(
        R"({"OAuth2TokenSpec":{"type":1},"EncryptedOAuth2AccessToken":"Zm9v"})", token, nullptr));
    EXPECT_EQ(Text(token), L"old");
    EXPECT_EQ(token.GetSpec().GetType(), 1);
}

TEST(TokenDecryption, ReadsBackWhatWasEncrypted)
{
    // Turns every byte over, so that twice is nothing.
    class Turning : public RecordingCryptor {
    public:
        bool EncryptBuffer(unsigned char const* in, Size size, unsigned char* out, Size capacity,
                           Size* length) override
        {
            EXPECT_LE(size, capacity);
            std::transform(in, in + size, out,
                           [](unsigned char byte) { return static_cast<unsigned char>(~byte); });
            *length = size;
            return true;
        }
        bool DecryptBuffer(unsigned char const* in, Size size, unsigned char* out, Size capacity,
                           Size* length) override
        {
            return EncryptBuffer(in, size, out, capacity, length);
        }
        bool RsaEncrypt(unsigned char const* in, Size size, unsigned char* out, Size capacity,
                        Size* length) override
        {
            return EncryptBuffer(in, size, out, capacity, length);
        }
        bool RsaDecrypt(unsigned char const* in, Size size, unsigned char* out, Size capacity,
                        Size* length) override
        {
            return EncryptBuffer(in, size, out, capacity, length);
        }
    };
    auto const cryptor = std::make_shared<Turning>();
    for (std::int32_t type : {1, 2}) {
        for (std::wstring const& text :
             {L"text"s, L"\u00e9\u20ac\0x"s, std::wstring(80, L'\u20ac')}) {
            OAuth2Token const token = TokenOfType(type, text);
            std::string json;
            EXPECT_TRUE(Functions::OAuth2TokenToJson(token, json, cryptor));
            EXPECT_EQ(json.find("\"OAuth2AccessToken\""), std::string::npos);
            OAuth2Token back;
            EXPECT_TRUE(Functions::JsonToOAuth2Token(json.c_str(), back, cryptor));
            EXPECT_TRUE(back == token);
        }
    }
}
