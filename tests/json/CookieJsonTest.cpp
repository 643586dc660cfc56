#include <climits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include <NetworkCookie.h>
#include <SSOServicesPrivate.h>
#include "types/Values.h"

using namespace HxSSOTest;
using namespace std::string_literals;
using testing::EndsWith;
using testing::StrEq;
using testing::ThrowsMessage;

namespace {

using Functions = SSOServicesPrivate;
using Names = std::vector<std::string>;

CookieFields const Old = {"old name", "old value", L"old domain", L"old path", true, true, 99};

void Fill(NetworkCookieJar& jar, Names const& names)
{
    jar.DeleteAll();
    for (std::string const& name : names) {
        jar.AddCookie(Named(name));
    }
}

Names NamesOf(NetworkCookieJar const& jar)
{
    Names names;
    for (int i = 0; i < jar.GetCookieCount(); ++i) {
        names.push_back(Name(jar.GetCookie(i)));
    }
    return names;
}

std::string Written(NetworkCookie const& cookie)
{
    std::string text = "old";
    EXPECT_TRUE(Functions::NetworkCookieToJson(cookie, text));
    return text;
}

NetworkCookie ReadCookie(std::string const& text)
{
    NetworkCookie cookie = Cookie(Old);
    EXPECT_TRUE(Functions::JsonToNetworkCookie(text.c_str(), cookie)) << text;
    return cookie;
}

// Reads the same document as a text and as a value into jars that hold a cookie.
Names ReadJar(std::string const& text)
{
    NetworkCookieJar fromText;
    NetworkCookieJar fromValue;
    Fill(fromText, {"former"});
    Fill(fromValue, {"former"});
    EXPECT_TRUE(Functions::JsonToNetworkCookieJar(text.c_str(), fromText)) << text;
    EXPECT_TRUE(Functions::JsonToNetworkCookieJar(Value(text), fromValue)) << text;
    EXPECT_EQ(NamesOf(fromText), NamesOf(fromValue)) << text;
    return NamesOf(fromText);
}

std::string const DefaultDocument = "{\n"
                                    "\t\"Domain\" : \"\",\n"
                                    "\t\"ExpiryDate\" : 0,\n"
                                    "\t\"IsHttpOnly\" : false,\n"
                                    "\t\"IsSecure\" : false,\n"
                                    "\t\"Name\" : \"\",\n"
                                    "\t\"Path\" : \"\",\n"
                                    "\t\"Value\" : \"\"\n"
                                    "}";

} // namespace

TEST(CookieJson, IsWrittenAsStyledText)
{
    EXPECT_EQ(Written(NetworkCookie()), DefaultDocument);
    EXPECT_EQ(Written(Cookie({"n", "\"v\"", L"d\u00e9", L"/p", true, false, -1})),
              "{\n"
              "\t\"Domain\" : \"d\\u00e9\",\n"
              "\t\"ExpiryDate\" : -1,\n"
              "\t\"IsHttpOnly\" : false,\n"
              "\t\"IsSecure\" : true,\n"
              "\t\"Name\" : \"n\",\n"
              "\t\"Path\" : \"/p\",\n"
              "\t\"Value\" : \"\\\"v\\\"\"\n"
              "}");
}

TEST(CookieJson, ReadsBackWhatItWrote)
{
    for (CookieFields const& fields : {
             CookieFields{},
             Old,
             CookieFields{"n", "v", L"d", L"p", true, false, -1},
             CookieFields{"n\xC3\xA9", "\xE2\x82\xAC", L"d\u00e9", L"/\u20ac", false, true,
                          5000000000},
             CookieFields{" ", "a=b; c", L".example.org", L"/", false, false, LLONG_MAX},
             CookieFields{"", "", L"", L"", false, false, LLONG_MIN},
         }) {
        ExpectFields(ReadCookie(Written(Cookie(fields))), fields);
    }
}

TEST(CookieJson, WritesTheExpiryDateAsANumber)
{
    for (long long date : {-1LL, 0LL, 4294967296LL, LLONG_MAX, LLONG_MIN}) {
        NetworkCookie cookie;
        cookie.SetExpiryDate(date);
        EXPECT_NE(Written(cookie).find("\"ExpiryDate\" : " + std::to_string(date) + ",\n"),
                  std::string::npos);
    }
}

TEST(CookieJson, KeepsBytesOfNameAndValue)
{
    ExpectFields(ReadCookie(R"({"Name":"a\u0000b","Value":"\u0000"})"),
                 {"a\0b"s, "\0"s, L"", L"", false, false, 0});
    ExpectFields(ReadCookie(R"({"Name":"\u00e9","Value":"\u20ac"})"),
                 {"\xC3\xA9", "\xE2\x82\xAC", L"", L"", false, false, 0});
    // Bytes that are no text stand in the document as they came.
    ExpectFields(ReadCookie("{\"Name\":\"caf\xE9\",\"Value\":\"\xFF\"}"),
                 {"caf\xE9", "\xFF", L"", L"", false, false, 0});
}

TEST(CookieJson, WritesZeroBytesOfNameAndValue)
{
    std::string const text = Written(ReadCookie(R"({"Name":"a\u0000b","Value":"\u0000"})"));
    EXPECT_NE(text.find("\"Name\" : \"a\\u0000b\""), std::string::npos);
    EXPECT_NE(text.find("\"Value\" : \"\\u0000\""), std::string::npos);
}

TEST(CookieJson, ConvertsDomainAndPath)
{
    ExpectFields(ReadCookie(R"({"Domain":"\u00e9","Path":"\u20ac"})"),
                 {"", "", L"\u00e9", L"\u20ac", false, false, 0});
    ExpectFields(ReadCookie("{\"Domain\":\"caf\xE9\",\"Path\":\"\xFF\",\"ExpiryDate\":3}"),
                 {"", "", L"", L"", false, false, 3});
}

TEST(CookieJson, CountsZeroUnitsOfDomainAndPath)
{
    NetworkCookie const cookie = ReadCookie(R"({"Domain":"ab\u0000cd","Path":"\u0000"})");
    EXPECT_EQ(cookie.GetDomain(nullptr, 0), 5);
    EXPECT_EQ(GetterText(cookie, &NetworkCookie::GetDomain), L"ab");
    EXPECT_EQ(cookie.GetPath(nullptr, 0), 1);
}

TEST(CookieJson, ReplacesEveryField)
{
    for (
        char const* text :
        {"{}", R"({"other":1,"name":"x"})",
         R"({"Name":null,"Value":null,"Domain":null,"Path":null,"IsSecure":null,"IsHttpOnly":null,"ExpiryDate":null})"}) {
        ExpectFields(ReadCookie(text), {});
    }
    ExpectFields(ReadCookie(R"({"Path":"p"})"), {"", "", L"", L"p", false, false, 0});
}

TEST(CookieJson, CoercesTypes)
{
    ExpectFields(ReadCookie(R"({"Name":12,"Value":true,"Domain":-3,"Path":false,)"
                            R"("IsSecure":2,"IsHttpOnly":0.5,"ExpiryDate":true})"),
                 {"12", "true", L"-3", L"false", true, true, 1});
    ExpectFields(ReadCookie(R"({"IsSecure":0,"IsHttpOnly":0.0,"ExpiryDate":1.9})"),
                 {"", "", L"", L"", false, false, 1});
    ExpectFields(ReadCookie(R"({"ExpiryDate":-1.9})"), {"", "", L"", L"", false, false, -1});
    ExpectFields(ReadCookie(R"({"ExpiryDate":false})"), {});
}

TEST(CookieJson, ReadsExpiryDatesOfSixtyFourBits)
{
    struct Row {
        char const* number;
        long long date;
    };
    for (Row const& row : {
             Row{"9223372036854775807", LLONG_MAX},
             Row{"-9223372036854775808", LLONG_MIN},
             // Too small for an integer, it is read as a fraction, which has no
             // neighbour between the two.
             Row{"-9223372036854775809", LLONG_MIN},
             Row{"4294967296", 4294967296},
             Row{"1e3", 1000},
             Row{"-0", 0},
         }) {
        std::string const text = "{\"ExpiryDate\":"s + row.number + "}";
        EXPECT_EQ(ReadCookie(text).GetExpiryDate(), row.date) << row.number;
    }
}

TEST(CookieJson, ThrowsForWrongTypes)
{
    struct Row {
        char const* text;
        char const* message;
    };
    for (Row const& row : {
             Row{R"({"Name":[]})", "Type is not convertible to string"},
             Row{R"({"Value":{}})", "Type is not convertible to string"},
             Row{R"({"Domain":["a"]})", "Type is not convertible to string"},
             Row{R"({"Path":{}})", "Type is not convertible to string"},
             Row{R"({"IsSecure":"true"})", "Value is not convertible to bool."},
             Row{R"({"IsSecure":[]})", "Value is not convertible to bool."},
             Row{R"({"IsSecure":{}})", "Value is not convertible to bool."},
             Row{R"({"IsHttpOnly":""})", "Value is not convertible to bool."},
             Row{R"({"IsHttpOnly":[]})", "Value is not convertible to bool."},
             Row{R"({"IsHttpOnly":{}})", "Value is not convertible to bool."},
             Row{R"({"ExpiryDate":"1"})", "Value is not convertible to Int64."},
             Row{R"({"ExpiryDate":[]})", "Value is not convertible to Int64."},
             Row{R"({"ExpiryDate":{}})", "Value is not convertible to Int64."},
             Row{R"({"ExpiryDate":9223372036854775808})", "LargestUInt out of Int64 range"},
             Row{R"({"ExpiryDate":18446744073709551615})", "LargestUInt out of Int64 range"},
             Row{R"({"ExpiryDate":1e20})", "double out of Int64 range"},
             Row{R"({"ExpiryDate":-1e20})", "double out of Int64 range"},
         }) {
        SCOPED_TRACE(row.text);
        NetworkCookie cookie;
        EXPECT_THAT([&] { Functions::JsonToNetworkCookie(row.text, cookie); },
                    ThrowsMessage<Json::LogicError>(StrEq(row.message)));
    }
}

TEST(CookieJson, ThrowsForARootThatIsNoObject)
{
    for (char const* text : {"[]", "[{}]", "\"text\"", "\"\"", "5", "0", "1.5", "true", "false"}) {
        SCOPED_TRACE(text);
        NetworkCookie cookie = Cookie(Old);
        EXPECT_THAT([&] { Functions::JsonToNetworkCookie(text, cookie); },
                    ThrowsMessage<Json::LogicError>(EndsWith("requires objectValue or nullValue")));
        ExpectFields(cookie, Old);
    }
}

// The keys are read in this order, and each is stored at once.
TEST(CookieJson, StoresWhatWasReadBeforeAnException)
{
    std::vector<std::string> const good = {
        R"("Name":"n")",       R"("Value":"v")",        R"("Domain":"d")",  R"("Path":"p")",
        R"("IsSecure":false)", R"("IsHttpOnly":false)", R"("ExpiryDate":5)"};
    std::vector<std::string> const bad = {
        R"("Name":[])",     R"("Value":[])",      R"("Domain":[])",    R"("Path":[])",
        R"("IsSecure":[])", R"("IsHttpOnly":[])", R"("ExpiryDate":[])"};
    for (std::size_t failing = 0; failing < good.size(); ++failing) {
        SCOPED_TRACE(bad[failing]);
        std::string text = "{";
        for (std::size_t key = 0; key < good.size(); ++key) {
            text += (key == 0 ? "" : ",") + (key == failing ? bad : good)[key];
        }
        text += "}";
        NetworkCookie cookie = Cookie(Old);
        EXPECT_THROW(Functions::JsonToNetworkCookie(text.c_str(), cookie), Json::LogicError);
        CookieFields expected = Old;
        if (failing > 0) {
            expected.name = "n";
        }
        if (failing > 1) {
            expected.value = "v";
        }
        if (failing > 2) {
            expected.domain = L"d";
        }
        if (failing > 3) {
            expected.path = L"p";
        }
        if (failing > 4) {
            expected.secure = false;
        }
        if (failing > 5) {
            expected.httpOnly = false;
        }
        ExpectFields(cookie, expected);
    }
}

TEST(CookieJson, IsFalseForNothingToRead)
{
    NetworkCookie cookie = Cookie(Old);
    for (char const* text : {static_cast<char const*>(nullptr), "", "null", "{", "x", "// {}"}) {
        EXPECT_FALSE(Functions::JsonToNetworkCookie(text, cookie)) << (text ? text : "(null)");
    }
    ExpectFields(cookie, Old);
}

TEST(CookieJson, ToleratesCommentsAndFurtherText)
{
    EXPECT_EQ(Name(ReadCookie("/* a */ {\"Name\" : \"x\", // b\n\"Name\":\"y\"} {\"Name\":\"z\"}")),
              "y");
}

TEST(CookieJarJson, IsWrittenAsStyledText)
{
    NetworkCookieJar jar;
    std::string text = "old";
    EXPECT_TRUE(Functions::NetworkCookieJarToJson(jar, text));
    EXPECT_EQ(text, "{\n\t\"Cookies\" : []\n}");

    Fill(jar, {"b", "a"});
    EXPECT_TRUE(Functions::NetworkCookieJarToJson(jar, text));
    EXPECT_EQ(text, "{\n"
                    "\t\"Cookies\" : \n"
                    "\t[\n"
                    "\t\t{\n"
                    "\t\t\t\"Domain\" : \"\",\n"
                    "\t\t\t\"ExpiryDate\" : 0,\n"
                    "\t\t\t\"IsHttpOnly\" : false,\n"
                    "\t\t\t\"IsSecure\" : false,\n"
                    "\t\t\t\"Name\" : \"b\",\n"
                    "\t\t\t\"Path\" : \"\",\n"
                    "\t\t\t\"Value\" : \"\"\n"
                    "\t\t},\n"
                    "\t\t{\n"
                    "\t\t\t\"Domain\" : \"\",\n"
                    "\t\t\t\"ExpiryDate\" : 0,\n"
                    "\t\t\t\"IsHttpOnly\" : false,\n"
                    "\t\t\t\"IsSecure\" : false,\n"
                    "\t\t\t\"Name\" : \"a\",\n"
                    "\t\t\t\"Path\" : \"\",\n"
                    "\t\t\t\"Value\" : \"\"\n"
                    "\t\t}\n"
                    "\t]\n"
                    "}");
}

TEST(CookieJarJson, ReplacesOnlyItsOwnMemberOfAValue)
{
    NetworkCookieJar jar;
    Fill(jar, {"a"});
    Json::Value json;
    json["other"] = 5;
    json["Cookies"] = "replaced";
    EXPECT_TRUE(Functions::NetworkCookieJarToJson(jar, json));
    EXPECT_EQ(json.size(), 2U);
    EXPECT_EQ(json["other"].asInt(), 5);
    ASSERT_TRUE(json["Cookies"].isArray());
    ASSERT_EQ(json["Cookies"].size(), 1U);
    EXPECT_EQ(json["Cookies"][0].size(), 7U);
    EXPECT_EQ(json["Cookies"][0]["Name"].asString(), "a");
    EXPECT_EQ(json["Cookies"][0]["ExpiryDate"].type(), Json::intValue);

    Json::Value null;
    jar.DeleteAll();
    EXPECT_TRUE(Functions::NetworkCookieJarToJson(jar, null));
    EXPECT_EQ(null, Value(R"({"Cookies":[]})"));
}

TEST(CookieJarJson, ReadsBackWhatItWroteInOrder)
{
    std::vector<CookieFields> const cookies = {
        {"n\xC3\xA9", "v", L"d\u00e9", L"/", true, false, -1}, Old, {},
        {"a", "", L"", L"/\u20ac", false, true, 5000000000},   Old,
    };
    NetworkCookieJar jar;
    for (CookieFields const& fields : cookies) {
        jar.AddCookie(Cookie(fields));
    }
    std::string text;
    EXPECT_TRUE(Functions::NetworkCookieJarToJson(jar, text));
    NetworkCookieJar back;
    Fill(back, {"former", "content"});
    EXPECT_TRUE(Functions::JsonToNetworkCookieJar(text.c_str(), back));
    ASSERT_EQ(back.GetCookieCount(), static_cast<int>(cookies.size()));
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        ExpectFields(back.GetCookie(static_cast<int>(i)), cookies[i]);
    }
}

TEST(CookieJarJson, ReadsAsEmptyWithoutMembers)
{
    for (char const* text :
         {"{}", R"({"other":[{"Name":"a"}]})", R"({"Cookies":[]})", R"({"Cookies":{}})",
          R"({"Cookies":null})", R"({"Cookies":"x"})", R"({"Cookies":5})", R"({"Cookies":1.5})",
          R"({"Cookies":true})", R"({"cookies":[{"Name":"a"}]})"}) {
        EXPECT_EQ(ReadJar(text), Names{}) << text;
    }
}

TEST(CookieJarJson, TakesANullMemberAsADefaultCookie)
{
    EXPECT_EQ(ReadJar(R"({"Cookies":[null,{"Name":"a"}]})"), (Names{"", "a"}));
    EXPECT_EQ(ReadJar(R"({"Cookies":[{"Name":"a"},null,null,{}]})"), (Names{"a", "", "", ""}));

    NetworkCookieJar jar;
    EXPECT_TRUE(Functions::JsonToNetworkCookieJar(
        R"({"Cookies":[{"Name":"a","IsSecure":true,"ExpiryDate":3},null]})", jar));
    ASSERT_EQ(jar.GetCookieCount(), 2);
    ExpectFields(jar.GetCookie(0), {"a", "", L"", L"", true, false, 3});
    ExpectFields(jar.GetCookie(1), {});
}

TEST(CookieJarJson, ReadsAnObjectsMembersInTheByteOrderOfTheirKeys)
{
    EXPECT_EQ(ReadJar(R"({"Cookies":{"x":{"Name":"a"}}})"), Names{"a"});
    EXPECT_EQ(ReadJar(R"({"Cookies":{"b":{"Name":"2"},"B":{"Name":"0"},"a":{"Name":"1"},)"
                      R"("\u00e9":{"Name":"3"}}})"),
              (Names{"0", "1", "2", "3"}));
    EXPECT_EQ(ReadJar(R"({"Cookies":{"a":null}})"), Names{""});
}

TEST(CookieJarJson, ThrowsForAMemberThatIsNoObjectAndKeepsWhatWasRead)
{
    struct Row {
        char const* text;
        Names kept;
    };
    for (Row const& row : {
             Row{R"({"Cookies":[1]})", {}},
             Row{R"({"Cookies":["x"]})", {}},
             Row{R"({"Cookies":[true]})", {}},
             Row{R"({"Cookies":[[]]})", {}},
             Row{R"({"Cookies":{"a":1.5}})", {}},
             Row{R"({"Cookies":[{"Name":"a"},null,2,{"Name":"b"}]})", {"a", ""}},
             Row{R"({"Cookies":{"x":{"Name":"a"},"y":"no","z":{"Name":"b"}}})", {"a"}},
         }) {
        SCOPED_TRACE(row.text);
        NetworkCookieJar jar;
        Fill(jar, {"former"});
        EXPECT_THAT([&] { Functions::JsonToNetworkCookieJar(row.text, jar); },
                    ThrowsMessage<Json::LogicError>(EndsWith("requires objectValue or nullValue")));
        EXPECT_EQ(NamesOf(jar), row.kept);

        Fill(jar, {"former"});
        EXPECT_THAT([&] { Functions::JsonToNetworkCookieJar(Value(row.text), jar); },
                    ThrowsMessage<Json::LogicError>(EndsWith("requires objectValue or nullValue")));
        EXPECT_EQ(NamesOf(jar), row.kept);
    }
}

TEST(CookieJarJson, KeepsWhatWasReadBeforeABadField)
{
    NetworkCookieJar jar;
    Fill(jar, {"former"});
    EXPECT_THAT(
        [&] {
            Functions::JsonToNetworkCookieJar(
                R"({"Cookies":[{"Name":"a"},{"Name":"b","ExpiryDate":"x"},{"Name":"c"}]})", jar);
        },
        ThrowsMessage<Json::LogicError>(StrEq("Value is not convertible to Int64.")));
    EXPECT_EQ(NamesOf(jar), Names{"a"});
}

TEST(CookieJarJson, ThrowsForARootThatIsNoObjectAfterItEmptiedTheJar)
{
    for (char const* text : {"[]", R"([{"Name":"a"}])", "\"text\"", "5", "1.5", "false"}) {
        SCOPED_TRACE(text);
        NetworkCookieJar jar;
        Fill(jar, {"former"});
        EXPECT_THAT([&] { Functions::JsonToNetworkCookieJar(text, jar); },
                    ThrowsMessage<Json::LogicError>(EndsWith("requires objectValue or nullValue")));
        EXPECT_EQ(jar.GetCookieCount(), 0);
        Fill(jar, {"former"});
        EXPECT_THAT([&] { Functions::JsonToNetworkCookieJar(Value(text), jar); },
                    ThrowsMessage<Json::LogicError>(EndsWith("requires objectValue or nullValue")));
        EXPECT_EQ(jar.GetCookieCount(), 0);
    }
}

TEST(CookieJarJson, IsFalseForNothingToReadAndKeepsTheJar)
{
    NetworkCookieJar jar;
    Fill(jar, {"former", "content"});
    EXPECT_FALSE(Functions::JsonToNetworkCookieJar(Json::Value(), jar));
    for (char const* text :
         {static_cast<char const*>(nullptr), "", "null", "{", "x", R"({"Cookies":[{"Name":"a"})"}) {
        EXPECT_FALSE(Functions::JsonToNetworkCookieJar(text, jar)) << (text ? text : "(null)");
    }
    EXPECT_EQ(NamesOf(jar), (Names{"former", "content"}));
}

TEST(CookieJarJson, ToleratesCommentsAndFurtherText)
{
    NetworkCookieJar jar;
    EXPECT_TRUE(Functions::JsonToNetworkCookieJar(
        "// a\n{\"Cookies\":[{\"Name\":\"x\"} /* b */]} {\"Cookies\":[]}", jar));
    EXPECT_EQ(NamesOf(jar), Names{"x"});
}

TEST(CookieJarJson, ThrowsForATextNestedTooDeep)
{
    NetworkCookieJar jar;
    Fill(jar, {"former"});
    std::string const text =
        "{\"Cookies\":" + std::string(2000, '[') + std::string(2000, ']') + "}";
    EXPECT_THROW(Functions::JsonToNetworkCookieJar(text.c_str(), jar), Json::RuntimeError);
    EXPECT_EQ(NamesOf(jar), Names{"former"});
}
