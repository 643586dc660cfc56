#include "json/JsonDocument.h"

#include <locale>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

using namespace Halvorix::SSOServices;

namespace {

Json::Value Parsed(std::string const& text)
{
    Json::Value value;
    EXPECT_TRUE(ParseJsonDocument(text.c_str(), value)) << text;
    return value;
}

std::string Nested(int depth) { return std::string(depth, '[') + std::string(depth, ']'); }

} // namespace

TEST(JsonDocument, ReadsValuesOfEveryType)
{
    EXPECT_TRUE(Parsed("null").isNull());
    EXPECT_EQ(Parsed("true"), Json::Value(true));
    EXPECT_EQ(Parsed("-5"), Json::Value(-5));
    EXPECT_EQ(Parsed("1.5"), Json::Value(1.5));
    EXPECT_EQ(Parsed(R"("a\u00e9")"), Json::Value("a\xC3\xA9"));
    EXPECT_EQ(Parsed("[1,[]]").size(), 2U);
    EXPECT_EQ(Parsed(R"({"a":{"b":2}})")["a"]["b"], Json::Value(2));
}

TEST(JsonDocument, RefusesWhatIsNoJson)
{
    for (char const* text : {"",
                             " ",
                             "{",
                             "}",
                             "[",
                             "[1",
                             "{\"a\"}",
                             "{\"a\":}",
                             "{a:1}",
                             "{'a':1}",
                             "['a']",
                             "{1:2}",
                             "[1,,2]",
                             "tru",
                             "nul",
                             "\"abc",
                             "NaN",
                             "Infinity",
                             "// only a comment",
                             "/*"}) {
        Json::Value value;
        EXPECT_FALSE(ParseJsonDocument(text, value)) << text;
    }
    Json::Value value;
    EXPECT_FALSE(ParseJsonDocument(nullptr, value));
}

TEST(JsonDocument, ToleratesCommentsAndDropsThem)
{
    Json::Value const value =
        Parsed("// before\n/* and */ {\n"
               "  // inside\n  \"a\" : /* here */ 1 /* there */, // and there\n"
               "  \"b\" : 2 /* too */\n} // behind\n");
    EXPECT_EQ(value, Parsed(R"({"a":1,"b":2})"));
    EXPECT_EQ(WriteJsonDocument(value), "{\n\t\"a\" : 1,\n\t\"b\" : 2\n}");
}

TEST(JsonDocument, IgnoresWhatFollowsTheFirstValue)
{
    EXPECT_EQ(Parsed(R"({"a":1} {"a":2})")["a"], Json::Value(1));
    EXPECT_EQ(Parsed(R"({"a":1} garbage ]}")")["a"], Json::Value(1));
    EXPECT_EQ(Parsed("5 6"), Json::Value(5));
}

TEST(JsonDocument, TakesTheLastOfEqualKeys)
{
    EXPECT_EQ(Parsed(R"({"a":1,"a":2,"a":3})"), Parsed(R"({"a":3})"));
}

TEST(JsonDocument, ToleratesAByteOrderMark)
{
    EXPECT_EQ(Parsed("\xEF\xBB\xBF{\"a\":1}"), Parsed(R"({"a":1})"));
}

TEST(JsonDocument, ThrowsForValuesNestedAboveAThousandDeep)
{
    EXPECT_TRUE(Parsed(Nested(1000)).isArray());
    Json::Value value;
    EXPECT_THROW(ParseJsonDocument(Nested(1001).c_str(), value), Json::RuntimeError);
    EXPECT_THROW(ParseJsonDocument(Nested(50000).c_str(), value), Json::RuntimeError);
}

TEST(JsonDocument, WritesStyledText)
{
    Json::Value value;
    value["z"] = 1;
    value["B"] = true;
    value["a"]["inner"] = "text";
    value["list"].append(1);
    value["none"] = Json::Value();
    value["object"] = Json::Value(Json::objectValue);
    value["array"] = Json::Value(Json::arrayValue);
    EXPECT_EQ(WriteJsonDocument(value), "{\n"
                                        "\t\"B\" : true,\n"
                                        "\t\"a\" : \n"
                                        "\t{\n"
                                        "\t\t\"inner\" : \"text\"\n"
                                        "\t},\n"
                                        "\t\"array\" : [],\n"
                                        "\t\"list\" : \n"
                                        "\t[\n"
                                        "\t\t1\n"
                                        "\t],\n"
                                        "\t\"none\" : null,\n"
                                        "\t\"object\" : {},\n"
                                        "\t\"z\" : 1\n"
                                        "}");
}

TEST(JsonDocument, WritesScalarsAlone)
{
    EXPECT_EQ(WriteJsonDocument(Json::Value()), "null");
    EXPECT_EQ(WriteJsonDocument(Json::Value(-5)), "-5");
    EXPECT_EQ(WriteJsonDocument(Json::Value("a")), "\"a\"");
}

TEST(JsonDocument, WritesNonAsciiAndControlCharactersAsEscapes)
{
    EXPECT_EQ(WriteJsonDocument(Json::Value("\xC3\xA9\xE2\x82\xAC")), "\"\\u00e9\\u20ac\"");
    EXPECT_EQ(WriteJsonDocument(Json::Value("\xF0\x9F\x98\x80")), "\"\\ud83d\\ude00\"");
    EXPECT_EQ(WriteJsonDocument(Json::Value(std::string("a\0b", 3))), "\"a\\u0000b\"");
    EXPECT_EQ(WriteJsonDocument(Json::Value("\t\n\"\\/")), "\"\\t\\n\\\"\\\\/\"");
}

// The library replaces the global locale, and a stream takes it over.
TEST(JsonDocument, WritesAndReadsWholeNumbersWithoutRegardToTheLocale)
{
    class Grouping : public std::numpunct<char> {
    protected:
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale const previous = std::locale::global(std::locale(std::locale(), new Grouping));
    std::string const written = WriteJsonDocument(Json::Value(1234567));
    Json::Value read;
    bool const parsed = ParseJsonDocument(R"({"whole":1234567})", read);
    std::locale::global(previous);
    EXPECT_EQ(written, "1234567");
    ASSERT_TRUE(parsed);
    EXPECT_EQ(read["whole"].asInt(), 1234567);
}
