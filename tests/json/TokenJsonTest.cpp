#include <climits>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <boost/archive/iterators/dataflow_exception.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include "types/Values.h"

using namespace HxSSOTest;
using namespace std::string_literals;
using testing::EndsWith;
using testing::StrEq;
using testing::ThrowsMessage;

namespace {

using Functions = SSOServicesPrivate;

std::string Written(OAuth2TokenSpec const& spec)
{
    std::string text = "old";
    EXPECT_TRUE(Functions::OAuth2TokenSpecToJson(spec, text));
    return text;
}

bool IsLegacy(OAuth2TokenSpec const& spec)
{
    return Written(spec).find("\"legacy\" : true") != std::string::npos;
}

OAuth2TokenSpec OldSpec() { return SpecOf(R"({"type":9,"scope":"old","legacy":true})"); }

void ExpectSpec(OAuth2TokenSpec const& spec, std::int32_t type, std::wstring const& scope,
                bool legacy)
{
    EXPECT_EQ(spec.GetType(), type);
    EXPECT_EQ(Scope(spec), scope);
    EXPECT_EQ(spec.GetScope(nullptr, 0), static_cast<int>(scope.size())); // behind a zero, too
    EXPECT_EQ(IsLegacy(spec), legacy);
}

void ExpectOldSpec(OAuth2TokenSpec const& spec) { ExpectSpec(spec, 9, L"old", true); }

// Reads the same document as a value and as a text.
OAuth2TokenSpec ReadSpec(std::string const& text)
{
    OAuth2TokenSpec fromValue = OldSpec();
    OAuth2TokenSpec fromText = OldSpec();
    EXPECT_TRUE(Functions::JsonToOAuth2TokenSpec(Value(text), fromValue)) << text;
    EXPECT_TRUE(Functions::JsonToOAuth2TokenSpec(text.c_str(), fromText)) << text;
    EXPECT_TRUE(fromValue == fromText) << text;
    return fromText;
}

OAuth2Token OldToken() { return Token(L"old token", OldSpec()); }

struct TokenReading {
    bool answer;
    OAuth2Token token;
};

TokenReading ReadToken(std::string const& text)
{
    OAuth2Token fromValue = OldToken();
    OAuth2Token fromText = OldToken();
    bool const answer = Functions::JsonToOAuth2Token(text.c_str(), fromText);
    EXPECT_EQ(Functions::JsonToOAuth2Token(Value(text), fromValue), answer) << text;
    EXPECT_TRUE(fromValue == fromText) << text;
    return {answer, fromText};
}

} // namespace

TEST(SpecJson, IsWrittenAsStyledText)
{
    EXPECT_EQ(Written(OAuth2TokenSpec()), "{\n"
                                          "\t\"legacy\" : false,\n"
                                          "\t\"scope\" : \"\",\n"
                                          "\t\"type\" : 1\n"
                                          "}");
    EXPECT_EQ(Written(ReadSpec(R"({"type":-7,"scope":"b \"a\"","legacy":true})")),
              "{\n"
              "\t\"legacy\" : true,\n"
              "\t\"scope\" : \"b \\\"a\\\"\",\n"
              "\t\"type\" : -7\n"
              "}");
}

TEST(SpecJson, IsWrittenWithNonAsciiAsEscapes)
{
    EXPECT_EQ(Written(OAuth2TokenSpec(Type(2), L"\u00e9 \u20ac")),
              "{\n"
              "\t\"legacy\" : false,\n"
              "\t\"scope\" : \"\\u00e9 \\u20ac\",\n"
              "\t\"type\" : 2\n"
              "}");
}

TEST(SpecJson, IsWrittenAsTypedMembers)
{
    Json::Value json;
    EXPECT_TRUE(Functions::OAuth2TokenSpecToJson(OAuth2TokenSpec(Type(INT_MIN), L"\u00e9"), json));
    ASSERT_TRUE(json.isObject());
    EXPECT_EQ(json.size(), 3U);
    EXPECT_EQ(json["type"].type(), Json::intValue);
    EXPECT_EQ(json["type"].asInt(), INT_MIN);
    EXPECT_EQ(json["scope"].type(), Json::stringValue);
    EXPECT_EQ(json["scope"].asString(), "\xC3\xA9");
    EXPECT_EQ(json["legacy"].type(), Json::booleanValue);
    EXPECT_FALSE(json["legacy"].asBool());
}

TEST(SpecJson, KeepsOtherMembersOfAValue)
{
    Json::Value json;
    json["other"] = 5;
    json["type"] = "replaced";
    EXPECT_TRUE(Functions::OAuth2TokenSpecToJson(OAuth2TokenSpec(), json));
    EXPECT_EQ(json.size(), 4U);
    EXPECT_EQ(json["other"].asInt(), 5);
    EXPECT_EQ(json["type"].asInt(), 1);
}

TEST(SpecJson, ThrowsForAValueThatCannotTakeMembers)
{
    for (char const* text : {"5", "\"text\"", "true", "[]", "1.5"}) {
        Json::Value json = Value(text);
        EXPECT_THROW(Functions::OAuth2TokenSpecToJson(OAuth2TokenSpec(), json), Json::LogicError)
            << text;
        json = Value(text);
        EXPECT_THROW(Functions::OAuth2TokenToJson(OAuth2Token(), json), Json::LogicError) << text;
    }
}

TEST(SpecJson, ReadsBackWhatItWrote)
{
    for (std::int32_t type : {0, 1, 2, -7, INT_MAX, INT_MIN}) {
        for (wchar_t const* scope : {L"", L"a b", L"\u00e9 \u20ac \uffff"}) {
            OAuth2TokenSpec const spec(Type(type), scope);
            OAuth2TokenSpec const back = ReadSpec(Written(spec));
            EXPECT_TRUE(back == spec);
            EXPECT_EQ(Scope(back), Scope(spec));
        }
    }
    OAuth2TokenSpec const old = OldSpec();
    EXPECT_TRUE(ReadSpec(Written(old)) == old);
}

TEST(SpecJson, ReadsMissingAndNullKeysAsNothing)
{
    ExpectSpec(ReadSpec("{}"), 0, L"", false);
    EXPECT_FALSE(ReadSpec("{}") == OAuth2TokenSpec());
    ExpectSpec(ReadSpec(R"({"other":1})"), 0, L"", false);
    ExpectSpec(ReadSpec(R"({"Type":5,"SCOPE":"a"})"), 0, L"", false);
    ExpectSpec(ReadSpec(R"({"type":null,"scope":null,"legacy":null})"), 0, L"", false);
    ExpectSpec(ReadSpec(R"({"type":5})"), 5, L"", false);
    ExpectSpec(ReadSpec(R"({"scope":"a"})"), 0, L"a", false);
    ExpectSpec(ReadSpec(R"({"legacy":true})"), 0, L"", true);
}

TEST(SpecJson, TakesTheScopeAsItStands)
{
    ExpectSpec(ReadSpec(R"({"scope":"  b   a\t"})"), 0, L"  b   a\t", false);
    ExpectSpec(ReadSpec(R"({"scope":"\u00e9\u20ac"})"), 0, L"\u00e9\u20ac", false);
}

TEST(SpecJson, CutsTheScopeAtAZeroCharacter)
{
    ExpectSpec(ReadSpec(R"({"scope":"ab\u0000cd"})"), 0, L"ab", false);
    ExpectSpec(ReadSpec(R"({"scope":"\u0000cd"})"), 0, L"", false);
}

TEST(SpecJson, ReadsAScopeThatIsNoUtf8AsEmpty)
{
    Json::Value json;
    json["type"] = 3;
    json["scope"] = "caf\xE9";
    OAuth2TokenSpec spec = OldSpec();
    EXPECT_TRUE(Functions::JsonToOAuth2TokenSpec(json, spec));
    ExpectSpec(spec, 3, L"", false);
}

TEST(SpecJson, CoercesTypes)
{
    ExpectSpec(ReadSpec(R"({"type":true})"), 1, L"", false);
    ExpectSpec(ReadSpec(R"({"type":false})"), 0, L"", false);
    ExpectSpec(ReadSpec(R"({"type":2.9})"), 2, L"", false);
    ExpectSpec(ReadSpec(R"({"type":-2.9})"), -2, L"", false);
    ExpectSpec(ReadSpec(R"({"type":2147483647})"), INT_MAX, L"", false);
    ExpectSpec(ReadSpec(R"({"type":-2147483648})"), INT_MIN, L"", false);
    ExpectSpec(ReadSpec(R"({"legacy":1})"), 0, L"", true);
    ExpectSpec(ReadSpec(R"({"legacy":-3})"), 0, L"", true);
    ExpectSpec(ReadSpec(R"({"legacy":0.5})"), 0, L"", true);
    ExpectSpec(ReadSpec(R"({"legacy":0})"), 0, L"", false);
    ExpectSpec(ReadSpec(R"({"legacy":0.0})"), 0, L"", false);
    ExpectSpec(ReadSpec(R"({"scope":12})"), 0, L"12", false);
    ExpectSpec(ReadSpec(R"({"scope":true})"), 0, L"true", false);
    ExpectSpec(ReadSpec(R"({"scope":false})"), 0, L"false", false);
}

TEST(SpecJson, ThrowsForWrongTypes)
{
    struct Row {
        char const* text;
        char const* message;
    };
    for (Row const& row : {
             Row{R"({"type":"1"})", "Value is not convertible to Int."},
             Row{R"({"type":""})", "Value is not convertible to Int."},
             Row{R"({"type":[]})", "Value is not convertible to Int."},
             Row{R"({"type":{}})", "Value is not convertible to Int."},
             Row{R"({"type":-2147483649})", "LargestInt out of Int range"},
             Row{R"({"type":-9223372036854775808})", "LargestInt out of Int range"},
             Row{R"({"type":18446744073709551615})", "LargestUInt out of Int range"},
             Row{R"({"type":1e10})", "double out of Int range"},
             Row{R"({"type":-1e300})", "double out of Int range"},
             Row{R"({"legacy":"true"})", "Value is not convertible to bool."},
             Row{R"({"legacy":""})", "Value is not convertible to bool."},
             Row{R"({"legacy":[]})", "Value is not convertible to bool."},
             Row{R"({"legacy":{}})", "Value is not convertible to bool."},
             Row{R"({"scope":[]})", "Type is not convertible to string"},
             Row{R"({"scope":{}})", "Type is not convertible to string"},
             Row{R"({"scope":["a"]})", "Type is not convertible to string"},
         }) {
        SCOPED_TRACE(row.text);
        OAuth2TokenSpec spec;
        EXPECT_THAT([&] { Functions::JsonToOAuth2TokenSpec(row.text, spec); },
                    ThrowsMessage<Json::LogicError>(StrEq(row.message)));
        EXPECT_THAT([&] { Functions::JsonToOAuth2TokenSpec(Value(row.text), spec); },
                    ThrowsMessage<Json::LogicError>(StrEq(row.message)));
    }
    OAuth2TokenSpec spec;
    // Just above 32 bits, whatever sign the library gives the number.
    EXPECT_THAT([&] { Functions::JsonToOAuth2TokenSpec(R"({"type":2147483648})", spec); },
                ThrowsMessage<Json::LogicError>(EndsWith("out of Int range")));
}

TEST(SpecJson, ThrowsForARootThatIsNoObject)
{
    for (char const* text : {"[]", "[1]", "\"text\"", "\"\"", "5", "0", "1.5", "true", "false"}) {
        SCOPED_TRACE(text);
        OAuth2TokenSpec spec = OldSpec();
        EXPECT_THAT([&] { Functions::JsonToOAuth2TokenSpec(text, spec); },
                    ThrowsMessage<Json::LogicError>(EndsWith("requires objectValue or nullValue")));
        EXPECT_THAT([&] { Functions::JsonToOAuth2TokenSpec(Value(text), spec); },
                    ThrowsMessage<Json::LogicError>(EndsWith("requires objectValue or nullValue")));
        ExpectOldSpec(spec);
    }
}

TEST(SpecJson, StoresWhatWasReadBeforeAnException)
{
    OAuth2TokenSpec spec = OldSpec();
    EXPECT_THROW(Functions::JsonToOAuth2TokenSpec(R"({"type":"x","scope":"new"})", spec),
                 Json::LogicError);
    ExpectOldSpec(spec);

    EXPECT_THROW(Functions::JsonToOAuth2TokenSpec(R"({"type":5,"scope":[],"legacy":false})", spec),
                 Json::LogicError);
    ExpectSpec(spec, 5, L"old", true);

    EXPECT_THROW(Functions::JsonToOAuth2TokenSpec(R"({"type":6,"scope":"new","legacy":"x"})", spec),
                 Json::LogicError);
    ExpectSpec(spec, 6, L"new", true);
}

TEST(SpecJson, IsFalseForNothingToRead)
{
    OAuth2TokenSpec spec = OldSpec();
    EXPECT_FALSE(Functions::JsonToOAuth2TokenSpec(Json::Value(), spec));
    for (char const* text : {static_cast<char const*>(nullptr), "", "null", " null ", "{", "x",
                             "{\"type\":5,", "// nothing"}) {
        EXPECT_FALSE(Functions::JsonToOAuth2TokenSpec(text, spec)) << (text ? text : "(null)");
    }
    ExpectOldSpec(spec);
}

TEST(SpecJson, ToleratesCommentsFurtherTextAndEqualKeys)
{
    OAuth2TokenSpec spec = OldSpec();
    EXPECT_TRUE(Functions::JsonToOAuth2TokenSpec(
        "/* a */ {\"type\":1, // b\n\"scope\":\"a\",\"type\":4} {\"type\":5} rest", spec));
    ExpectSpec(spec, 4, L"a", false);
    EXPECT_TRUE(Functions::JsonToOAuth2TokenSpec("\xEF\xBB\xBF{\"type\":6}", spec));
    ExpectSpec(spec, 6, L"", false);
}

TEST(TokenJson, IsWrittenAsStyledText)
{
    std::string text = "old";
    EXPECT_TRUE(
        Functions::OAuth2TokenToJson(Token(L"t\u00e9xt", OAuth2TokenSpec(Type(2), L"b a")), text));
    EXPECT_EQ(text, "{\n"
                    "\t\"OAuth2AccessToken\" : \"t\\u00e9xt\",\n"
                    "\t\"OAuth2TokenSpec\" : \n"
                    "\t{\n"
                    "\t\t\"legacy\" : false,\n"
                    "\t\t\"scope\" : \"a b\",\n"
                    "\t\t\"type\" : 2\n"
                    "\t}\n"
                    "}");
}

TEST(TokenJson, IsWrittenWithAnEmptyText)
{
    std::string text = "old";
    EXPECT_TRUE(Functions::OAuth2TokenToJson(OAuth2Token(), text));
    EXPECT_EQ(text, "{\n"
                    "\t\"OAuth2AccessToken\" : \"\",\n"
                    "\t\"OAuth2TokenSpec\" : \n"
                    "\t{\n"
                    "\t\t\"legacy\" : false,\n"
                    "\t\t\"scope\" : \"\",\n"
                    "\t\t\"type\" : 1\n"
                    "\t}\n"
                    "}");
}

TEST(TokenJson, KeepsOtherMembersOfAValueAndReplacesTheSpec)
{
    Json::Value json;
    json["other"] = 5;
    json["OAuth2TokenSpec"]["stale"] = 1;
    json["EncryptedOAuth2AccessToken"] = "kept";
    EXPECT_TRUE(Functions::OAuth2TokenToJson(Token(L"text", OAuth2TokenSpec()), json));
    EXPECT_EQ(json.size(), 4U);
    EXPECT_EQ(json["other"].asInt(), 5);
    EXPECT_EQ(json["EncryptedOAuth2AccessToken"].asString(), "kept");
    EXPECT_EQ(json["OAuth2AccessToken"].asString(), "text");
    EXPECT_FALSE(json["OAuth2TokenSpec"].isMember("stale"));
    EXPECT_EQ(json["OAuth2TokenSpec"].size(), 3U);
}

TEST(TokenJson, ReadsBackWhatItWrote)
{
    for (std::wstring const& text : {L"text"s, L" "s, L"\u00e9\u20ac\uffff"s, L"\"\\/\n"s, L"a\0b"s,
                                     std::wstring(10000, L'x')}) {
        for (OAuth2TokenSpec const& spec :
             {OldSpec(), OAuth2TokenSpec(), OAuth2TokenSpec(Type(-1), L"b a")}) {
            OAuth2Token const token = Token(text, spec);
            std::string json;
            EXPECT_TRUE(Functions::OAuth2TokenToJson(token, json));
            TokenReading const back = ReadToken(json);
            EXPECT_TRUE(back.answer);
            EXPECT_TRUE(back.token == token);
            EXPECT_EQ(Text(back.token), text);
            EXPECT_EQ(back.token.GetSpec().GetType(), spec.GetType());
            EXPECT_EQ(IsLegacy(back.token.GetSpec()), IsLegacy(spec));
        }
    }
}

TEST(TokenJson, WritesSurrogatesByThemselves)
{
    // Each becomes three bytes, which the JSON writer does not take for text.
    std::wstring const pair = {static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)};
    Json::Value json;
    EXPECT_TRUE(Functions::OAuth2TokenToJson(Token(pair, OAuth2TokenSpec()), json));
    EXPECT_EQ(json["OAuth2AccessToken"].asString(), "\xED\xA0\xBD\xED\xB8\x80");
    OAuth2Token back;
    EXPECT_TRUE(Functions::JsonToOAuth2Token(json, back));
    EXPECT_EQ(Text(back), pair);
}

TEST(TokenJson, KeepsTheTextBehindAZeroCharacter)
{
    TokenReading const reading = ReadToken(R"({"OAuth2AccessToken":"a\u0000b"})");
    EXPECT_TRUE(reading.answer);
    EXPECT_EQ(Text(reading.token), L"a\0b"s);
}

TEST(TokenJson, IsFalseWithoutAClearText)
{
    for (char const* text : {
             "{}",
             R"({"OAuth2AccessToken":""})",
             R"({"OAuth2AccessToken":null})",
             R"({"other":1})",
             R"({"OAuth2TokenSpec":null})",
             R"({"EncryptedOAuth2AccessToken":"Zm9v"})",
         }) {
        SCOPED_TRACE(text);
        TokenReading const reading = ReadToken(text);
        EXPECT_FALSE(reading.answer);
        EXPECT_EQ(Text(reading.token), L"old token");
        ExpectOldSpec(reading.token.GetSpec());
    }
}

TEST(TokenJson, ReplacesTheSpecEvenWhenItIsFalse)
{
    TokenReading const reading =
        ReadToken(R"({"OAuth2TokenSpec":{"type":3,"scope":"b a"},"OAuth2AccessToken":""})");
    EXPECT_FALSE(reading.answer);
    EXPECT_EQ(Text(reading.token), L"old token");
    ExpectSpec(reading.token.GetSpec(), 3, L"b a", false);
}

TEST(TokenJson, KeepsTheSpecWithoutASpecMember)
{
    for (char const* text : {R"({"OAuth2AccessToken":"new"})",
                             R"({"OAuth2TokenSpec":null,"OAuth2AccessToken":"new"})"}) {
        TokenReading const reading = ReadToken(text);
        EXPECT_TRUE(reading.answer);
        EXPECT_EQ(Text(reading.token), L"new");
        ExpectOldSpec(reading.token.GetSpec());
    }
    TokenReading const empty = ReadToken(R"({"OAuth2TokenSpec":{},"OAuth2AccessToken":"new"})");
    ExpectSpec(empty.token.GetSpec(), 0, L"", false);
}

TEST(TokenJson, CoercesTheClearText)
{
    EXPECT_EQ(Text(ReadToken(R"({"OAuth2AccessToken":12})").token), L"12");
    EXPECT_EQ(Text(ReadToken(R"({"OAuth2AccessToken":true})").token), L"true");
    EXPECT_EQ(
        Text(ReadToken(R"({"OAuth2AccessToken":"x","EncryptedOAuth2AccessToken":1234})").token),
        L"x");
}

TEST(TokenJson, StoresAnEmptyTextForOneThatIsNoUtf8)
{
    Json::Value json;
    json["OAuth2AccessToken"] = "caf\xE9";
    OAuth2Token token = OldToken();
    EXPECT_TRUE(Functions::JsonToOAuth2Token(json, token));
    EXPECT_EQ(Text(token), L"");
    EXPECT_FALSE(token.IsValid());
}

TEST(TokenJson, DecodesTheEncryptedTextBeforeTheClearOneIsLookedAt)
{
    OAuth2Token token = OldToken();
    EXPECT_THROW(
        Functions::JsonToOAuth2Token(R"({"OAuth2TokenSpec":{"type":3},"OAuth2AccessToken":"new",)"
                                     R"("EncryptedOAuth2AccessToken":"not base64"})",
                                     token),
        boost::archive::iterators::dataflow_exception);
    EXPECT_EQ(Text(token), L"old token");
    EXPECT_EQ(token.GetSpec().GetType(), 3);

    EXPECT_THAT(
        [&] {
            Functions::JsonToOAuth2Token(
                R"({"OAuth2AccessToken":"new","EncryptedOAuth2AccessToken":"===="})", token);
        },
        ThrowsMessage<std::out_of_range>(StrEq("invalid string position")));
    EXPECT_EQ(Text(token), L"old token");
}

// And never with a part of what came behind that key.
TEST(TokenJson, LeavesTheSpecAsItWasBeforeAKeyOfTheWrongType)
{
    struct Row {
        char const* text;
        int type;
        wchar_t const* scope;
        bool legacy;
    };
    OAuth2TokenSpec const old = OldSpec();
    for (Row const& row :
         {Row{R"({"OAuth2TokenSpec":[]})", old.GetType(), L"old", true},
          Row{R"({"OAuth2TokenSpec":{"type":"x","scope":"new","legacy":false}})", old.GetType(),
              L"old", true},
          Row{R"({"OAuth2TokenSpec":{"type":4294967296,"scope":"new","legacy":false}})",
              old.GetType(), L"old", true},
          Row{R"({"OAuth2TokenSpec":{"type":5,"scope":[],"legacy":false}})", 5, L"old", true},
          Row{R"({"OAuth2TokenSpec":{"scope":{},"legacy":false}})", 0, L"old", true},
          Row{R"({"OAuth2TokenSpec":{"type":5,"scope":"new","legacy":"x"}})", 5, L"new", true},
          Row{R"({"OAuth2TokenSpec":{"type":5,"scope":"new"},"OAuth2AccessToken":[]})", 5, L"new",
              false}}) {
        SCOPED_TRACE(row.text);
        OAuth2Token fromText = OldToken();
        EXPECT_THROW(Functions::JsonToOAuth2Token(row.text, fromText), Json::LogicError);
        OAuth2Token fromValue = OldToken();
        EXPECT_THROW(Functions::JsonToOAuth2Token(Value(row.text), fromValue), Json::LogicError);
        for (OAuth2Token const& token : {fromText, fromValue}) {
            ExpectSpec(token.GetSpec(), row.type, row.scope, row.legacy);
            EXPECT_EQ(Text(token), L"old token");
        }
    }
}

TEST(TokenJson, ThrowsForWrongTypes)
{
    struct Row {
        char const* text;
        char const* tail;
    };
    for (Row const& row : {
             Row{"[]", "requires objectValue or nullValue"},
             Row{"[{}]", "requires objectValue or nullValue"},
             Row{"\"text\"", "requires objectValue or nullValue"},
             Row{"5", "requires objectValue or nullValue"},
             Row{"1.5", "requires objectValue or nullValue"},
             Row{"false", "requires objectValue or nullValue"},
             Row{R"({"OAuth2TokenSpec":[]})", "requires objectValue or nullValue"},
             Row{R"({"OAuth2TokenSpec":"x"})", "requires objectValue or nullValue"},
             Row{R"({"OAuth2TokenSpec":0})", "requires objectValue or nullValue"},
             Row{R"({"OAuth2TokenSpec":true})", "requires objectValue or nullValue"},
             Row{R"({"OAuth2TokenSpec":{"type":"x"}})", "Value is not convertible to Int."},
             Row{R"({"OAuth2TokenSpec":{"legacy":"x"}})", "Value is not convertible to bool."},
             Row{R"({"OAuth2TokenSpec":{"scope":[]}})", "Type is not convertible to string"},
             Row{R"({"OAuth2AccessToken":[]})", "Type is not convertible to string"},
             Row{R"({"OAuth2AccessToken":{}})", "Type is not convertible to string"},
             Row{R"({"OAuth2AccessToken":"a","EncryptedOAuth2AccessToken":[]})",
                 "Type is not convertible to string"},
             Row{R"({"OAuth2AccessToken":"a","EncryptedOAuth2AccessToken":{}})",
                 "Type is not convertible to string"},
         }) {
        SCOPED_TRACE(row.text);
        OAuth2Token token = OldToken();
        EXPECT_THAT([&] { Functions::JsonToOAuth2Token(row.text, token); },
                    ThrowsMessage<Json::LogicError>(EndsWith(row.tail)));
        EXPECT_THAT([&] { Functions::JsonToOAuth2Token(Value(row.text), token); },
                    ThrowsMessage<Json::LogicError>(EndsWith(row.tail)));
        EXPECT_EQ(Text(token), L"old token");
    }
}

TEST(TokenJson, IsFalseForNothingToRead)
{
    OAuth2Token token = OldToken();
    EXPECT_FALSE(Functions::JsonToOAuth2Token(Json::Value(), token));
    for (char const* text : {static_cast<char const*>(nullptr), "", "null", "{", "x",
                             "{\"OAuth2AccessToken\":\"a\""}) {
        EXPECT_FALSE(Functions::JsonToOAuth2Token(text, token)) << (text ? text : "(null)");
    }
    EXPECT_TRUE(token == OldToken());
}

TEST(TokenJson, ToleratesCommentsAndFurtherText)
{
    OAuth2Token token;
    EXPECT_TRUE(Functions::JsonToOAuth2Token(
        "// a\n{\"OAuth2AccessToken\" : /* b */ \"new\"} // c\n{\"OAuth2AccessToken\":\"other\"}",
        token));
    EXPECT_EQ(Text(token), L"new");
}

TEST(TokenJson, ThrowsForATextNestedTooDeep)
{
    OAuth2Token token = OldToken();
    std::string const text = "{\"x\":" + std::string(2000, '[') + std::string(2000, ']') + "}";
    EXPECT_THROW(Functions::JsonToOAuth2Token(text.c_str(), token), Json::RuntimeError);
    EXPECT_TRUE(token == OldToken());
}
