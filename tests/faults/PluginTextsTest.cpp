// Whatever texts a plugin answers with, the host gets what is told for them.

#include <iostream>

#include <gtest/gtest.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <SSOServerManager.h>
#include <WebServicesManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"

using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;
using Rig::Installation;
using Rig::Outcome;

namespace {

constexpr std::size_t Huge = 1 << 24;

HOST_PROGRAM(TakesAToken)
{
    WebServicesManager::Initialize(false);
    OAuth2Token token;
    report.Try("call", [&] {
        report("answer", WebServicesManager::GetInstance()->GetOAuth2AccessToken(
                             OAuth2TokenSpec(), token, nullptr, false));
    });
    report("size", token.GetTokenSize());
    report("type", token.GetSpec().GetType());
}

HOST_PROGRAM(TakesAJar)
{
    WebServicesManager::Initialize(false);
    NetworkCookieJar jar;
    jar.AddCookie({});
    jar.AddCookie({});
    wchar_t buffer[16];
    report.Try("call", [&] {
        report("answer",
               WebServicesManager::GetInstance()->InitiateLogout(buffer, 16, jar, nullptr));
    });
    report("count", jar.GetCookieCount());
}

HOST_PROGRAM(TakesTexts)
{
    WebServicesManager::Initialize(false);
    WebServicesManager& manager = *WebServicesManager::GetInstance();
    report("wide", SSOClientPrivate::GetSettingsPath().size());
    report("narrow", SSOClientPrivate::GetSessionState().size());
    report("map", SSOClientPrivate::GetUrlOverrides(Server{}).begin()->second.size());
    std::map<std::string, std::string> answers;
    report("ping", SSOClientPrivate::Ping(answers));
    report("ping.text", answers["answer"].size());
    wchar_t file[8];
    report("cut", SSOServerManager::GetSSOServerAppFile(file, 8));
    report("cut.length", SSOServerManager::GetSSOServerAppFile(nullptr, 0));
    wchar_t id[8];
    report("buffer", manager.GetUserId(id, 8));
    wchar_t* info = nullptr;
    report("info", manager.GetUserInfo(info));
    report("info.null", info == nullptr);
    delete[] info;
    unsigned char* cookie = nullptr;
    report("cookie", manager.GetLoginCookie(cookie));
    delete[] cookie;
}

/// What the plugin answers, and what the host gets of it.
struct Case {
    char const* name;
    std::string action;
    std::string ending; // what the report says of the call
    Json::Value answer;
    int count; // of the token's units or the jar's cookies
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

// Wrong for a token and for a jar alike.
std::vector<Case> CommonCases(int left)
{
    return {{"null", Text("null"), Returned, false, left},
            {"empty", Text(R"("")"), Returned, false, left},
            {"blank", Text(R"(" ")"), Returned, false, left},
            {"no JSON", Text(R"("no JSON")"), Returned, false, left},
            {"JSON null", Text(R"("null")"), Returned, false, left},
            {"cut", Text(R"("{\"a\": ")"), Returned, false, left},
            {"cut at a zero", Text(R"("{\u0000}")"), Returned, false, left},
            {"huge", Repeated("x", Huge), Returned, false, left},
            {"too deep", Repeated("[", 5000), TooDeep, {}, left},
            {"far too deep", Repeated("[", Huge), TooDeep, {}, left},
            {"too deep by objects", Repeated(R"({\"a\":)", 100000), TooDeep, {}, left},
            {"bytes", Bytes("\xff\xfe\x01"), Returned, false, left}};
}

std::vector<Case> TokenCases()
{
    std::vector<Case> cases = CommonCases(0);
    for (Case const& one : std::vector<Case>{
             {"a number", Text("\"7\""), NoObject, {}, 0},
             {"an array", Text("\"[]\""), NoObject, {}, 0},
             {"nothing in it", Text("\"{}\""), Returned, false, 0},
             {"a list for the text", Text(R"("{\"OAuth2AccessToken\": []}")"), NoText, {}, 0},
             {"a number for the spec", Text(R"("{\"OAuth2TokenSpec\": 7}")"), NoObject, {}, 0},
             {"no base64",
              Text(R"("{\"EncryptedOAuth2AccessToken\": \"?\"}")"),
              "threw attempt to decode a value not in base64 char set",
              {},
              0},
             {"padding alone",
              Text(R"("{\"EncryptedOAuth2AccessToken\": \"====\"}")"),
              "threw invalid string position",
              {},
              0},
             {"no UTF-8", Bytes("{\"OAuth2AccessToken\": \"\xc3\"}"), Returned, true, 0},
             {"a zero in the text", Text(R"("{\"OAuth2AccessToken\": \"a\\u0000b\"}")"), Returned,
              true, 3},
             {"good", Text(R"("{\"OAuth2AccessToken\": \"abc\"} more")"), Returned, true, 3}})
        cases.push_back(one);
    return cases;
}

std::vector<Case> JarCases()
{
    std::vector<Case> cases = CommonCases(2);
    cases[0].answer = true; // no text is no failure here
    for (Case const& one : std::vector<Case>{
             {"a number", Text("\"7\""), NoObject, {}, 0},
             {"an array", Text("\"[]\""), NoObject, {}, 0},
             {"nothing in it", Text("\"{}\""), Returned, true, 0},
             {"a text for the list", Text(R"("{\"Cookies\": \"x\"}")"), Returned, true, 0},
             {"a number for a cookie", Text(R"("{\"Cookies\": [{}, 1]}")"), NoObject, {}, 1},
             {"a list for a name", Text(R"("{\"Cookies\": [{\"Name\": []}]}")"), NoText, {}, 0},
             {"a text for a flag",
              Text(R"("{\"Cookies\": [{\"IsSecure\": \"x\"}]}")"),
              "threw Value is not convertible to bool.",
              {},
              0},
             {"a date beyond all",
              Text(R"("{\"Cookies\": [{\"ExpiryDate\": 1e300}]}")"),
              "threw double out of Int64 range",
              {},
              0},
             {"no UTF-8", Bytes("{\"Cookies\": [{\"Domain\": \"\xff\", \"Name\": \"\xff\"}]}"),
              Returned, true, 1},
             {"null cookies", Text(R"("{\"Cookies\": [null, null, null]}")"), Returned, true, 3}})
        cases.push_back(one);
    return cases;
}

void TryCases(std::vector<Case> const& cases, char const* program, char const* operation,
              char const* counted)
{
    Installation installation;
    installation.Complete();
    for (Case const& one : cases) {
        SCOPED_TRACE(one.name);
        Outcome const outcome = installation.Script(operation, one.action).Run(program);
        EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
        EXPECT_EQ(outcome["program"], "returned");
        EXPECT_EQ(outcome["call"], one.ending);
        EXPECT_EQ(outcome["answer"], one.answer);
        EXPECT_EQ(outcome[counted], one.count);
    }
    std::cout << "faults tried: " << cases.size() << std::endl;
}

} // namespace

TEST(PluginTexts, OfATokenMayBeAnything)
{
    TryCases(TokenCases(), "TakesAToken", "ISSOClient::GetOAuth2AccessToken", "size");
}

TEST(PluginTexts, OfAJarMayBeAnything)
{
    TryCases(JarCases(), "TakesAJar", "ISSOClient::InitiateLogout", "count");
}

TEST(PluginTexts, OfAHugeTokenArrivesWhole)
{
    Installation installation;
    std::string const token(1 << 20, 'x');
    installation.Complete().Script("ISSOClient::GetOAuth2AccessToken",
                                   Text(R"("{\"OAuth2AccessToken\": \")" + token + R"(\"}")"));
    Outcome const outcome = installation.Run("TakesAToken");
    EXPECT_EQ(outcome["answer"], true);
    EXPECT_EQ(outcome["size"], 1 << 20);
}

TEST(PluginTexts, ByValueMayBeAnything)
{
    struct Wanted {
        std::string action;
        Json::UInt64 wide;
        Json::UInt64 narrow;
        int buffer; // of eight units
    };
    Installation installation;
    installation.Complete();
    std::vector<Wanted> const cases = {{Text(R"("")"), 0, 0, 0},
                                       {Text(R"("a\u0000b")"), 3, 3, 3},
                                       {Bytes("\xff\xfe"), 0, 2, 0},
                                       {Repeated("x", Huge), Huge, Huge, 7}};
    for (Wanted const& wanted : cases) {
        SCOPED_TRACE(wanted.action);
        for (char const* const operation :
             {"ISSOClientPrivate::GetSettingsPath", "ISSOClientPrivate::GetSessionState",
              "ISSOClientPrivate::GetUrlOverrides", "ISSOClientPrivate::Ping",
              "ISSOServerManager::GetSSOServerAppFile", "ISSOClient::GetUserId",
              "ISSOClient::GetUserInfo", "ISSOClient::GetLoginCookie"})
            installation.Script(operation, wanted.action);
        Outcome const outcome = installation.Run("TakesTexts");
        EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
        EXPECT_EQ(outcome["program"], "returned");
        EXPECT_EQ(outcome["wide"].asUInt64(), wanted.wide);
        EXPECT_EQ(outcome["map"].asUInt64(), wanted.wide);
        EXPECT_EQ(outcome["narrow"].asUInt64(), wanted.narrow);
        EXPECT_EQ(outcome["ping.text"].asUInt64(), wanted.narrow);
        EXPECT_EQ(outcome["buffer"], wanted.buffer);
        // A text with a zero in it ends there in a buffer.
        EXPECT_EQ(outcome["cut"], wanted.wide == 3 ? 1 : wanted.buffer);
        EXPECT_EQ(outcome["cut.length"].asUInt64(), wanted.wide);
    }
    std::cout << "faults tried: " << cases.size() << std::endl;
}
