// Whatever texts a plugin answers with, the host gets what is told for them.

#include <iostream>

#include <gtest/gtest.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <SSOServerManager.h>
#include <SSOServicesPrivate.h>
#include <WebServicesManager.h>
#include "api/MemberWalk.h"
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/Scripts.h"

using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;
using Rig::Installation;
using Rig::Outcome;

namespace {

constexpr std::size_t Huge = 1 << 24;

/// The text of a token as far as a test looks, and the type of its spec.
std::wstring Begin(OAuth2Token const& token)
{
    return std::wstring(token.GetToken()).substr(0, 8) + L"|" +
           std::to_wstring(token.GetSpec().GetType());
}

HOST_PROGRAM(TakesTokens)
{
    WebServicesManager::Initialize(false);
    Rig::WithEachScript(arguments, [&](std::string const& prefix) {
        OAuth2Token token;
        SSOServicesPrivate::Initialize(token, L"before", OAuth2TokenSpec());
        report.Try(prefix + "call", [&] {
            report(prefix + "answer", WebServicesManager::GetInstance()->GetOAuth2AccessToken(
                                          OAuth2TokenSpec(), token, nullptr, false));
        });
        report(prefix + "size", token.GetTokenSize());
        report(prefix + "left", Begin(token));
    });
}

HOST_PROGRAM(TakesJars)
{
    WebServicesManager::Initialize(false);
    Rig::WithEachScript(arguments, [&](std::string const& prefix) {
        NetworkCookie cookie;
        cookie.SetName("mine");
        NetworkCookieJar jar;
        jar.AddCookie(cookie);
        MemberWalk::Room<wchar_t> room(10);
        report.Try(prefix + "call", [&] {
            report(prefix + "answer", WebServicesManager::GetInstance()->InitiateLogout(
                                          room.Data(), room.Capacity(), jar, nullptr));
        });
        report(prefix + "size", jar.GetCookieCount());
        report(prefix + "left", MemberWalk::Shown(jar));
        report(prefix + "room", room.Text());
    });
}

HOST_PROGRAM(TakesTexts)
{
    WebServicesManager::Initialize(false);
    Rig::WithEachScript(arguments, [&](std::string const& prefix) {
        WebServicesManager& manager = *WebServicesManager::GetInstance();
        report(prefix + "wide", SSOClientPrivate::GetSettingsPath().size());
        report(prefix + "narrow", SSOClientPrivate::GetSessionState().size());
        report(prefix + "map", SSOClientPrivate::GetUrlOverrides(Server{}).begin()->second.size());
        std::map<std::string, std::string> answers;
        SSOClientPrivate::Ping(answers);
        report(prefix + "ping.text", answers["answer"].size());
        wchar_t file[8];
        report(prefix + "cut", SSOServerManager::GetSSOServerAppFile(file, 8));
        report(prefix + "cut.length", SSOServerManager::GetSSOServerAppFile(nullptr, 0));
        wchar_t id[8];
        report(prefix + "buffer", manager.GetUserId(id, 8));
        wchar_t* info = nullptr;
        manager.GetUserInfo(info);
        delete[] info;
        unsigned char* cookie = nullptr;
        manager.GetLoginCookie(cookie);
        delete[] cookie;
    });
}

/// What the plugin does, and what the host gets of it.
struct Case {
    char const* name;
    std::string action;
    std::string ending; // what the report says of the call
    Json::Value answer; // none where the call throws
    int size;           // of the token in units, or of the jar in cookies
    std::string left;   // the token's beginning and its type; the jar's cookies
};

std::string Text(std::string const& json) { return R"({"text": )" + json + "}"; }

std::string Bytes(std::string const& bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (char const byte : bytes) {
        text += digits[static_cast<unsigned char>(byte) >> 4];
        text += digits[static_cast<unsigned char>(byte) & 15];
    }
    return R"({"bytes": ")" + text + R"("})";
}

std::string Repeated(std::string const& text, std::size_t count)
{
    return R"({"text": ")" + text + R"(", "repeat": )" + std::to_string(count) + "}";
}

constexpr char const* Returned = "returned";
constexpr char const* NoObject =
    "threw in Json::Value::find(begin, end): requires objectValue or nullValue";
constexpr char const* NoText = "threw Type is not convertible to string";
constexpr char const* TooDeep = "threw Exceeded stackLimit in readValue().";

// Wrong for a token and for a jar alike: these stay as they were.
std::vector<Case> CommonCases(int size, std::string const& left)
{
    return {{"null", Text("null"), Returned, false, size, left},
            {"null and refused", R"({"answer": 0, "text": null})", Returned, false, size, left},
            {"empty", Text(R"("")"), Returned, false, size, left},
            {"blank", Text(R"(" ")"), Returned, false, size, left},
            {"no JSON", Text(R"("no JSON")"), Returned, false, size, left},
            {"JSON null", Text(R"("null")"), Returned, false, size, left},
            {"cut", Text(R"("{\"a\": ")"), Returned, false, size, left},
            {"cut at a zero", Text(R"("{\u0000}")"), Returned, false, size, left},
            {"huge", Repeated("x", Huge), Returned, false, size, left},
            {"too deep", Repeated("[", 5000), TooDeep, {}, size, left},
            {"far too deep", Repeated("[", Huge), TooDeep, {}, size, left},
            {"too deep by objects", Repeated(R"({\"a\":)", 100000), TooDeep, {}, size, left},
            {"bytes", Bytes("\xff\xfe\x01"), Returned, false, size, left},
            {"an exception", R"({"throw": "not today"})", "threw not today", {}, size, left}};
}

std::vector<Case> TokenCases()
{
    std::string const before = "before|1";
    std::vector<Case> cases = CommonCases(6, before);
    for (Case const& one : std::vector<Case>{
             {"a number", Text("\"7\""), NoObject, {}, 6, before},
             {"an array", Text("\"[]\""), NoObject, {}, 6, before},
             {"nothing in it", Text("\"{}\""), Returned, false, 6, before},
             {"a spec alone", Text(R"("{\"OAuth2TokenSpec\": {\"type\": 4}}")"), Returned, false, 6,
              "before|4"},
             {"a list for the text behind a spec",
              Text(R"("{\"OAuth2AccessToken\": [], \"OAuth2TokenSpec\": {\"type\": 5}}")"),
              NoText,
              {},
              6,
              "before|5"},
             {"a number for the spec",
              Text(R"("{\"OAuth2TokenSpec\": 7}")"),
              NoObject,
              {},
              6,
              before},
             {"no base64 beside a clear text",
              Text(R"("{\"OAuth2AccessToken\": \"x\", \"EncryptedOAuth2AccessToken\": \"?\"}")"),
              "threw attempt to decode a value not in base64 char set",
              {},
              6,
              before},
             {"padding alone",
              Text(R"("{\"EncryptedOAuth2AccessToken\": \"====\"}")"),
              "threw invalid string position",
              {},
              6,
              before},
             {"no UTF-8", Bytes("{\"OAuth2AccessToken\": \"\xc3\"}"), Returned, true, 0, "|1"},
             {"a zero in the text", Text(R"("{\"OAuth2AccessToken\": \"a\\u0000b\"}")"), Returned,
              true, 3, "a|1"},
             {"good", Text(R"("{\"OAuth2AccessToken\": \"abc\"} more")"), Returned, true, 3,
              "abc|1"},
             {"good and huge",
              Text(R"("{\"OAuth2AccessToken\": \")" + std::string(1 << 20, 'x') + R"(\"}")"),
              Returned, true, 1 << 20, "xxxxxxxx|1"}})
        cases.push_back(one);
    return cases;
}

std::vector<Case> JarCases()
{
    std::vector<Case> cases = CommonCases(1, "[mine=;;;;;0]");
    cases[0].answer = true; // unlike a token, cookies need not come
    for (Case const& one : std::vector<Case>{
             {"good", Text(R"("{\"Cookies\": [{\"Name\": \"a\"}]}")"), Returned, true, 1,
              "[a=;;;;;0]"},
             // The jar is emptied before the document is looked at.
             {"a number", Text("\"7\""), NoObject, {}, 0, "[]"},
             {"an array", Text("\"[]\""), NoObject, {}, 0, "[]"},
             {"nothing in it", Text("\"{}\""), Returned, true, 0, "[]"},
             {"a text for the list", Text(R"("{\"Cookies\": \"x\"}")"), Returned, true, 0, "[]"},
             {"a number behind a cookie",
              Text(R"("{\"Cookies\": [{\"Name\": \"a\"}, 1]}")"),
              NoObject,
              {},
              1,
              "[a=;;;;;0]"},
             {"a list for a name",
              Text(R"("{\"Cookies\": [{\"Name\": []}]}")"),
              NoText,
              {},
              0,
              "[]"},
             {"a text for a flag",
              Text(R"("{\"Cookies\": [{\"IsSecure\": \"x\"}]}")"),
              "threw Value is not convertible to bool.",
              {},
              0,
              "[]"},
             {"a date beyond all",
              Text(R"("{\"Cookies\": [{\"ExpiryDate\": 1e300}]}")"),
              "threw double out of Int64 range",
              {},
              0,
              "[]"},
             {"no UTF-8", Bytes("{\"Cookies\": [{\"Domain\": \"\xff\", \"Path\": \"\xff\"}]}"),
              Returned, true, 1, "[=;;;;;0]"},
             {"null cookies", Text(R"("{\"Cookies\": [null, null]}")"), Returned, true, 2,
              "[=;;;;;0 =;;;;;0]"}})
        cases.push_back(one);
    return cases;
}

Outcome TryCases(std::vector<Case> const& cases, char const* program, char const* operation)
{
    std::vector<std::string> actions;
    for (Case const& one : cases)
        actions.push_back(one.action);
    Outcome outcome = Rig::RunWithActions(program, {operation}, actions);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases[i].name);
        std::string const prefix = std::to_string(i) + ".";
        EXPECT_EQ(outcome[prefix + "call"], cases[i].ending);
        EXPECT_EQ(outcome[prefix + "answer"], cases[i].answer);
        EXPECT_EQ(outcome[prefix + "size"], cases[i].size);
        EXPECT_EQ(outcome[prefix + "left"], cases[i].left);
    }
    std::cout << "faults tried: " << cases.size() << std::endl;
    return outcome;
}

} // namespace

TEST(PluginTexts, OfATokenMayBeAnything)
{
    TryCases(TokenCases(), "TakesTokens", "ISSOClient::GetOAuth2AccessToken");
}

TEST(PluginTexts, OfAJarMayBeAnything)
{
    std::vector<Case> const cases = JarCases();
    Outcome const outcome = TryCases(cases, "TakesJars", "ISSOClient::InitiateLogout");
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(outcome[std::to_string(i) + ".room"], R"('\0')") << cases[i].name;
    EXPECT_EQ(outcome.Called(R"(ISSOClient::InitiateLogout("", 10, true, 0))"),
              static_cast<int>(cases.size()));
}

TEST(PluginTexts, ByValueMayBeAnything)
{
    struct Wanted {
        std::string action;
        Json::UInt64 wide;
        Json::UInt64 narrow;
        int buffer; // of eight units
    };
    std::vector<Wanted> const cases = {{Text(R"("")"), 0, 0, 0},
                                       {Text(R"("a\u0000b")"), 3, 3, 3},
                                       {Bytes("\xff\xfe"), 0, 2, 0},
                                       {Repeated("x", Huge), Huge, Huge, 7}};
    std::vector<std::string> actions;
    for (Wanted const& wanted : cases)
        actions.push_back(wanted.action);
    Outcome const outcome = Rig::RunWithActions(
        "TakesTexts",
        {"ISSOClientPrivate::GetSettingsPath", "ISSOClientPrivate::GetSessionState",
         "ISSOClientPrivate::GetUrlOverrides", "ISSOClientPrivate::Ping",
         "ISSOServerManager::GetSSOServerAppFile", "ISSOClient::GetUserId",
         "ISSOClient::GetUserInfo", "ISSOClient::GetLoginCookie"},
        actions);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        Wanted const& wanted = cases[i];
        SCOPED_TRACE(wanted.action);
        std::string const prefix = std::to_string(i) + ".";
        EXPECT_EQ(outcome[prefix + "wide"].asUInt64(), wanted.wide);
        EXPECT_EQ(outcome[prefix + "map"].asUInt64(), wanted.wide);
        EXPECT_EQ(outcome[prefix + "narrow"].asUInt64(), wanted.narrow);
        EXPECT_EQ(outcome[prefix + "ping.text"].asUInt64(), wanted.narrow);
        EXPECT_EQ(outcome[prefix + "buffer"], wanted.buffer);
        // A text with a zero in it ends there in a buffer.
        EXPECT_EQ(outcome[prefix + "cut"], wanted.wide == 3 ? 1 : wanted.buffer);
        EXPECT_EQ(outcome[prefix + "cut.length"].asUInt64(), wanted.wide);
    }
}
