// Servers, clients, addresses and proxies.

#include <string>

#include <gmock/gmock.h>

#include "openid/SessionWorld.h"

using namespace Halvorix::OpenId;
using Rig::SessionWorld;
using Rig::TestProvider;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

struct ThreeServers : SessionWorld {
    ThreeServers()
    {
        ServerConfiguration const server = configuration.servers["production"];
        configuration.servers["beta"] = configuration.servers["zeta"] = server;
        configuration.servers["beta"].clientId = "client-beta";
        configuration.servers["production"].accountUrl = "https://login.example/account";
        session = NewSession();
    }
    std::shared_ptr<Session> session;
};

} // namespace

TEST(SessionServers, AreNumberedByNameAfterProduction)
{
    ThreeServers world;
    EXPECT_EQ(world.session->Server(), 0);
    EXPECT_EQ(world.session->ServerName(0), "production");
    EXPECT_EQ(world.session->ServerName(1), "beta");
    EXPECT_EQ(world.session->ServerName(2), "zeta");
    EXPECT_EQ(world.session->ServerName(3), "");
    EXPECT_EQ(world.session->ServerName(-1), "");
    EXPECT_EQ(world.session->ServerNumber("zeta"), 2);
    EXPECT_EQ(world.session->ServerNumber("Production"), -1);
}

TEST(SessionServers, AreChosenByNumber)
{
    ThreeServers world;
    EXPECT_TRUE(world.session->SelectServer(1));
    EXPECT_EQ(world.session->Server(), 1);
    EXPECT_EQ(world.session->ChosenServer().clientId, "client-beta");
    EXPECT_FALSE(world.session->SelectServer(3));
    EXPECT_FALSE(world.session->SelectServer(-1));
    EXPECT_EQ(world.session->Server(), 1);
    EXPECT_NE(world.session->StoreFile(0), world.session->StoreFile(1));
    EXPECT_EQ(world.session->StoreFile(0), world.session->StoreFile(2));
    EXPECT_TRUE(world.session->StoreFile(3).empty());
    EXPECT_EQ(world.session->StoreFile(0).parent_path(), world.session->StoreFolder());
}

TEST(SessionServers, AreAskedWithTheHostsClient)
{
    ThreeServers world;
    auto const before = world.session->StoreFile(0);
    world.session->UseClient("of-the-host", "profile Data:Read");
    EXPECT_EQ(world.session->ChosenServer().clientId, "of-the-host");
    EXPECT_EQ(world.session->ChosenServer().scopes, "Data:Read openid profile");
    EXPECT_NE(world.session->StoreFile(0), before);
    auto const login = world.session->BeginLogin("");
    ASSERT_TRUE(login);
    EXPECT_THAT(*login->url, HasSubstr("client_id=of-the-host"));
    world.session->CancelLogin(*login);
    world.session->UseClient("", "");
    EXPECT_EQ(world.session->ChosenServer().clientId, "client-1");
    EXPECT_EQ(world.session->ChosenServer().scopes, "offline_access openid profile");
}

TEST(SessionServers, TellTheirAddresses)
{
    ThreeServers world;
    std::string const issuer = "https://login.example";
    EXPECT_EQ(world.session->Url("issuer"), issuer);
    EXPECT_EQ(world.session->Url("account"), issuer + "/account");
    EXPECT_EQ(world.provider.Count("discovery"), 0);
    EXPECT_EQ(world.session->Url("authorization"), issuer + "/authorization");
    EXPECT_EQ(world.session->Url("token"), issuer + "/token");
    EXPECT_EQ(world.session->Url("userinfo"), issuer + "/userinfo");
    EXPECT_EQ(world.session->Url("jwks"), issuer + "/keys");
    EXPECT_EQ(world.session->Url("revocation"), issuer + "/revocation");
    EXPECT_EQ(world.session->Url("end_session"), issuer + "/end_session");
    EXPECT_EQ(world.session->Url("device_authorization"), "");
    EXPECT_EQ(world.session->Url("Token"), "");
    EXPECT_EQ(world.session->Url(""), "");
    EXPECT_EQ(world.provider.Count("discovery"), 1);
}

TEST(SessionServers, TellNoAddressesWhileTheNetworkIsAway)
{
    ThreeServers world;
    world.provider.Order([](TestProvider::Behaviour& behaviour) { behaviour.isAway = true; });
    EXPECT_EQ(world.session->Url("token"), "");
    EXPECT_THAT(world.LogText(), HasSubstr("Error Cannot learn the provider's addresses: "));
    EXPECT_EQ(world.session->Url("issuer"), "https://login.example");
}

TEST(SessionServers, HaveAddressesInTheirPlaceThatAHostWants)
{
    ThreeServers world;
    std::map<std::string, std::string> const urls{{"authorization", "https://elsewhere.example/a"},
                                                  {"account", "https://elsewhere.example/b"}};
    EXPECT_TRUE(world.session->SetUrlOverrides(0, urls));
    EXPECT_EQ(world.session->UrlOverrides(0), urls);
    EXPECT_THAT(world.session->UrlOverrides(1), IsEmpty());
    EXPECT_EQ(world.session->Url("account"), "https://elsewhere.example/b");
    auto const login = world.session->BeginLogin("");
    ASSERT_TRUE(login);
    EXPECT_EQ(login->url->find("https://elsewhere.example/a?"), 0u);
    world.session->CancelLogin(*login);
    EXPECT_TRUE(world.session->ClearUrlOverrides(0));
    EXPECT_EQ(world.session->Url("account"), "https://login.example/account");
    EXPECT_THAT(world.session->UrlOverrides(0), IsEmpty());
}

TEST(SessionServers, RefuseAddressesThatWouldBeAskedWithSecrets)
{
    ThreeServers world;
    std::map<std::string, std::string> const good{{"account", "https://elsewhere.example/"}};
    ASSERT_TRUE(world.session->SetUrlOverrides(0, good));
    for (char const* const name : {"token", "jwks", "issuer", "Account", ""})
        EXPECT_FALSE(world.session->SetUrlOverrides(0, {{name, "https://elsewhere.example/"}}))
            << name;
    for (char const* const url : {"http://elsewhere.example/", "http://127.0.0.1/",
                                  "http://localhost:8080/", "elsewhere.example", "", "file:///x"})
        EXPECT_FALSE(world.session->SetUrlOverrides(0, {{"account", url}})) << url;
    EXPECT_FALSE(world.session->SetUrlOverrides(3, good));
    EXPECT_FALSE(world.session->ClearUrlOverrides(-1));
    EXPECT_EQ(world.session->UrlOverrides(0), good);
}

TEST(SessionProxies, AreFoundByHostAndPort)
{
    SessionWorld world;
    auto const session = world.NewSession();
    EXPECT_FALSE(session->HasProxyCredentials());
    EXPECT_FALSE(session->FindProxyCredential("proxy", 3128));
    session->SetProxyCredential({"", 0, "anywhere", "password-0"});
    session->SetProxyCredential({"proxy", 3128, "first", "password-1"});
    session->SetProxyCredential({"proxy", 3128, "second", "password-2"});
    EXPECT_TRUE(session->HasProxyCredentials());
    auto const exact = session->FindProxyCredential("proxy", 3128);
    ASSERT_TRUE(exact);
    EXPECT_EQ(exact->user, "second");
    EXPECT_EQ(exact->password, "password-2");
    auto const any = session->FindProxyCredential("proxy", 8080);
    ASSERT_TRUE(any);
    EXPECT_EQ(any->user, "anywhere");
    EXPECT_EQ(any->password, "password-0");
    session->ClearProxyCredentials();
    EXPECT_FALSE(session->HasProxyCredentials());
}

TEST(SessionProxies, GetTheCredentialsWithEachRequest)
{
    SessionWorld world;
    std::vector<ProxyCredential> given;
    Outside outside;
    outside.send = [&](HttpRequest const& request) {
        given = request.proxyCredentials;
        return world.provider.Answer(request);
    };
    Session session(world.configuration, std::make_shared<LogFile>(), outside);
    session.SetProxyCredential({"proxy", 3128, "user", "password-1"});
    EXPECT_NE(session.Url("token"), "");
    ASSERT_EQ(given.size(), 1u);
    EXPECT_EQ(given[0].user, "user");
    EXPECT_EQ(given[0].password, "password-1");
}

TEST(SessionDefaults, AreTheHosts)
{
    SessionWorld world;
    auto const session = world.NewSession();
    EXPECT_EQ(session->DefaultSpec().type, 1);
    EXPECT_EQ(session->DefaultSpec().scope, "");
    session->SetDefaultSpec({3, "b a a"});
    EXPECT_EQ(session->DefaultSpec().type, 3);
    EXPECT_EQ(session->DefaultSpec().scope, "a b");
    session->EnableOAuth2(false);
    EXPECT_FALSE(session->OAuth2Enabled());
    session->EnableOAuth2(true);
    EXPECT_TRUE(session->OAuth2Enabled());
    // What a sign-in brings is the token that the host asks for by default.
    ASSERT_TRUE(session->LoginInBrowser(""));
    EXPECT_TRUE(session->TokenAtHand({3, ""}).usable);
    EXPECT_FALSE(session->TokenAtHand({1, ""}).usable);
}
