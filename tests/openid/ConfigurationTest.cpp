#include "openid/session/Configuration.h"

#include <string>

#include <gmock/gmock.h>

#include "openid/TestFolder.h"
#include "openid/platform/Files.h"

using namespace Halvorix::OpenId;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

std::string const Complete = R"({
    // An administrator's remark.
    "servers": {
        "production": {
            "issuer": "https://login.example/tenant",
            "clientId": "desktop",
            "scopes": "openid profile offline_access",
            "redirectPorts": [49152, 49153],
            "accountUrl": "https://login.example/account",
            "deviceLogin": true
        },
        "test": {"issuer": "http://localhost:8080", "clientId": "desktop-test"}
    },
    "timeouts": {"login": 120, "network": 5},
    "store": "%Home%/somewhere/else"
})";

/// With these members in the one server, or in the place of `servers`.
std::string WithServer(std::string const& members)
{
    return R"({"servers": {"production": {)" + members + "}}}";
}

std::string const Least = R"("issuer": "https://login.example", "clientId": "desktop")";

void ExpectRefused(std::string const& text, std::string const& reason)
{
    auto const configuration = ParseConfiguration(text, "HxSSOOpenID.json");
    ASSERT_FALSE(configuration) << text;
    EXPECT_EQ(configuration.Why().kind, Failure::Kind::Configuration);
    EXPECT_THAT(configuration.Why().reason, HasSubstr("HxSSOOpenID.json: " + reason)) << text;
    EXPECT_FALSE(configuration.Why().remedy.empty()) << text;
}

PluginConfiguration Accepted(std::string const& text)
{
    auto const configuration = ParseConfiguration(text, "HxSSOOpenID.json");
    EXPECT_TRUE(configuration) << configuration.Why().reason;
    return configuration ? *configuration : PluginConfiguration();
}

} // namespace

TEST(Configuration, IsReadWhole)
{
    PluginConfiguration const configuration = Accepted(Complete);
    ASSERT_EQ(configuration.servers.size(), 2u);
    ServerConfiguration const& production = configuration.servers.at("production");
    EXPECT_EQ(production.issuer, "https://login.example/tenant");
    EXPECT_EQ(production.clientId, "desktop");
    EXPECT_EQ(production.scopes, "offline_access openid profile");
    EXPECT_THAT(production.redirectPorts, ElementsAre(49152, 49153));
    EXPECT_EQ(production.accountUrl, "https://login.example/account");
    EXPECT_TRUE(production.deviceLogin);
    EXPECT_EQ(configuration.servers.at("test").issuer, "http://localhost:8080");
    EXPECT_EQ(configuration.loginTimeout, std::chrono::seconds(120));
    EXPECT_EQ(configuration.networkTimeout, std::chrono::seconds(5));
    EXPECT_EQ(configuration.store, KnownFolder("Home") / "somewhere" / "else");
    EXPECT_THAT(configuration.remarks, IsEmpty());
}

TEST(Configuration, HasDefaults)
{
    PluginConfiguration const configuration = Accepted(WithServer(Least));
    ServerConfiguration const& server = configuration.servers.at("production");
    EXPECT_EQ(server.scopes, "openid");
    EXPECT_THAT(server.redirectPorts, IsEmpty());
    EXPECT_EQ(server.accountUrl, "");
    EXPECT_FALSE(server.deviceLogin);
    EXPECT_EQ(configuration.loginTimeout, std::chrono::seconds(300));
    EXPECT_EQ(configuration.networkTimeout, std::chrono::seconds(30));
    EXPECT_EQ(configuration.store, KnownFolder("LocalAppData") / "HxSSO" / "OpenID");
}

TEST(Configuration, RemarksUnknownKeysWhereverTheyStand)
{
    PluginConfiguration const configuration =
        Accepted(R"({"Store": 1, "servers": {"a": {)" + Least +
                 R"(, "clientSecret": "x"}}, "timeouts": {"Login": 3}})");
    EXPECT_THAT(
        configuration.remarks,
        ElementsAre("HxSSOOpenID.json: key Store is not known and is ignored",
                    "HxSSOOpenID.json: key servers.a.clientSecret is not known and is ignored",
                    "HxSSOOpenID.json: key timeouts.Login is not known and is ignored"));
}

TEST(Configuration, AddsOpenidWithARemark)
{
    PluginConfiguration const configuration =
        Accepted(WithServer(Least + R"(, "scopes": "profile email")"));
    EXPECT_EQ(configuration.servers.at("production").scopes, "email openid profile");
    EXPECT_THAT(configuration.remarks,
                ElementsAre("HxSSOOpenID.json: servers.production.scopes lacks openid, which is "
                            "asked for all the same"));
}

TEST(Configuration, RefusesWhatIsNoJsonAndNamesTheLine)
{
    ExpectRefused("", "is not valid JSON (");
    ExpectRefused("{\n\"servers\": }", "is not valid JSON (Line 2, Column 12: ");
    ExpectRefused("{} {}", "is not valid JSON (");
    ExpectRefused(R"({"a": 1, "a": 2})", "is not valid JSON (");
    ExpectRefused(std::string(100'000, '['), "is not valid JSON (");
    ExpectRefused("[]", "the file is not an object");
}

TEST(Configuration, RefusesMissingAndEmptyKeys)
{
    ExpectRefused("{}", "servers is missing");
    ExpectRefused(R"({"servers": {}})", "servers is empty");
    ExpectRefused(R"({"servers": {"": {)" + Least + "}}}", "a server has an empty name");
    ExpectRefused(WithServer(R"("clientId": "x")"), "servers.production.issuer is missing");
    ExpectRefused(WithServer(R"("issuer": "https://login.example")"),
                  "servers.production.clientId is missing");
    ExpectRefused(WithServer(R"("issuer": "https://login.example", "clientId": "")"),
                  "servers.production.clientId is empty");
}

TEST(Configuration, RefusesWrongTypes)
{
    ExpectRefused(R"({"servers": []})", "servers is not an object");
    ExpectRefused(R"({"servers": {"a": "b"}})", "servers.a is not an object");
    ExpectRefused(WithServer(R"("issuer": null, "clientId": "x")"),
                  "servers.production.issuer is not a text");
    ExpectRefused(WithServer(Least + R"(, "scopes": ["openid"])"),
                  "servers.production.scopes is not a text");
    ExpectRefused(WithServer(Least + R"(, "redirectPorts": 80)"),
                  "servers.production.redirectPorts is not a list");
    for (char const* const port : {"0", "65536", "-1", "1.5", "\"80\"", "4294967376"})
        ExpectRefused(WithServer(Least + R"(, "redirectPorts": [)" + port + "]"),
                      "servers.production.redirectPorts is not a whole number from 1 to 65535");
    std::string const start = R"({"servers": {"a": {)" + Least + "}}, ";
    ExpectRefused(start + R"("timeouts": 3})", "timeouts is not an object");
    ExpectRefused(start + R"("timeouts": {"login": 0}})",
                  "timeouts.login is not a whole number from 1 to 3600");
    ExpectRefused(start + R"("timeouts": {"network": "5"}})",
                  "timeouts.network is not a whole number from 1 to 300");
    ExpectRefused(start + R"("store": 1})", "store is not a text");
}

TEST(Configuration, RefusesAddressesThatAreNotSecure)
{
    for (char const* const issuer :
         {"http://login.example", "login.example", "ftp://login.example", "https://u@login.example",
          "https://login.example/#x", "https://login.example/?x=1", "http://127.0.0.1.example"})
        ExpectRefused(WithServer(R"("clientId": "x", "issuer": ")" + std::string(issuer) + '"'),
                      "servers.production.issuer is not an https address");
    ExpectRefused(WithServer(Least + R"(, "accountUrl": "http://login.example")"),
                  "servers.production.accountUrl is not an https address");
    ExpectRefused(WithServer(Least + R"(, "deviceLogin": "true")"),
                  "servers.production.deviceLogin is neither true nor false");
}

TEST(Configuration, RefusesScopesWithForeignCharacters)
{
    ExpectRefused(WithServer(Least + R"(, "scopes": "openid\tprofile")"),
                  "servers.production.scopes has characters that a scope cannot have");
    ExpectRefused(WithServer(Least + R"(, "scopes": "openid caf\u00e9")"),
                  "servers.production.scopes has characters that a scope cannot have");
}

TEST(Configuration, KnowsThreeVariablesOfPaths)
{
    std::string const start = R"({"servers": {"a": {)" + Least + R"(}}, "store": ")";
    EXPECT_EQ(Accepted(start + R"(%LocalAppData%"})").store, KnownFolder("LocalAppData"));
    EXPECT_EQ(Accepted(start + R"(%AppData%/x"})").store, KnownFolder("AppData") / "x");
    EXPECT_EQ(Accepted(start + R"(%Home%/x"})").store, KnownFolder("Home") / "x");
    std::string const whole = PathText(std::filesystem::temp_directory_path() / "x");
    std::string escaped;
    for (char const c : whole)
        escaped += c == '\\' ? "\\\\" : std::string(1, c);
    EXPECT_EQ(Accepted(start + escaped + "\"}").store, PathFromText(whole));
    for (char const* const store : {"%ProgramFiles%/x", "%home%/x", "%Home%x", "%Home", "%PATH%"})
        ExpectRefused(start + store + "\"}", "store begins with a variable that is not known");
    ExpectRefused(start + "x/y\"}", "store is not a whole path");
}

TEST(Configuration, IsReadFromItsFile)
{
    Rig::TestFolder const folder;
    auto const file = folder / "HxSSOOpenID.json";
    auto const missing = ReadConfiguration(file);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.Why().reason, PathText(file) + " is missing");
    Rig::WriteTo(file, "\xEF\xBB\xBF" + Complete);
    EXPECT_TRUE(ReadConfiguration(file));
    Rig::WriteTo(file, std::string(2 << 20, ' '));
    auto const large = ReadConfiguration(file);
    ASSERT_FALSE(large);
    EXPECT_THAT(large.Why().reason, HasSubstr(PathText(file) + " cannot be read: "));
}
