#include <new>
#include <stdexcept>

#include <WebServicesConfiguration.h>
#include <gmock/gmock.h>

#include "openid/SessionWorld.h"
#include "openid/interfaces/HostTexts.h"
#include "openid/interfaces/Interfaces.h"

using namespace Halvorix::OpenId;
using testing::HasSubstr;

namespace {

/// A session with one server, whose network does what a test says, and its log.
class Interfaces : public testing::Test {
protected:
    Interfaces()
    {
        auto const log = std::make_shared<LogFile>();
        log->Open(folder.Path());
        PluginConfiguration configuration;
        configuration.servers["production"] = {"https://login.example", "client", "openid", {}, {}};
        configuration.store = folder.Path();
        Outside outside;
        outside.send = [this](HttpRequest const&) { return send(); };
        session = std::make_shared<Session>(configuration, log, outside);
        client = MakeClient(session);
    }

    std::string Log() const { return Rig::ContentOf(folder / "HxSSOOpenID.log"); }

    Rig::TestFolder folder;
    std::function<HttpResponse()> send = [] { return HttpResponse(); };
    std::shared_ptr<Session> session;
    std::shared_ptr<Halvorix::SSOServices::ISSOClient> client;
};

TEST_F(Interfaces, AnExceptionIsTheFixedAnswerAndALine)
{
    send = []() -> HttpResponse { throw std::runtime_error("the ground gave way"); };
    wchar_t buffer[9] = L"?";
    EXPECT_EQ(client->GetUrl(Halvorix::WebServices::WebServicesUrlCode{0}, buffer, 9), 0);
    EXPECT_FALSE(client->InitiateLogin(buffer, 9));
    EXPECT_THAT(Log(), HasSubstr("Error An operation broke off: the ground gave way. Fix: report "
                                 "this line with those before it"));
}

TEST_F(Interfaces, ExhaustedMemoryReachesTheHost)
{
    send = []() -> HttpResponse { throw std::bad_alloc(); };
    EXPECT_THROW(client->GetUrl(Halvorix::WebServices::WebServicesUrlCode{0}, nullptr, 0),
                 std::bad_alloc);
}

TEST_F(Interfaces, ADocumentOfWrongTypesIsRefused)
{
    char* token = nullptr;
    for (char const* const spec : {R"({"type":"one"})", R"({"type":1,"scope":[]})", "[]", "7"}) {
        EXPECT_FALSE(client->EnableOAuth2(spec)) << spec;
        EXPECT_FALSE(client->GetOAuth2AccessToken(spec, token, nullptr, false)) << spec;
        EXPECT_FALSE(client->IsOAuth2TokenAvailable(spec)) << spec;
    }
    EXPECT_THAT(Log(), HasSubstr("An operation broke off: Value is not convertible to Int. Fix: "));
    EXPECT_FALSE(client->EnableOAuth2("")) << "no document at all";
    EXPECT_FALSE(client->EnableOAuth2(static_cast<char const*>(nullptr)));
    EXPECT_EQ(token, nullptr);
    EXPECT_TRUE(client->EnableOAuth2(R"({"type":2,"scope":"b a b"})"));
    EXPECT_EQ(session->DefaultSpec().type, 2);
    EXPECT_EQ(session->DefaultSpec().scope, "a b");
}

TEST_F(Interfaces, EqualConfigurationsAreOneObject)
{
    using Halvorix::WebServices::WebServicesConfiguration;
    WebServicesConfiguration const& first = client->GetConfiguration();
    WebServicesConfiguration mine;
    mine.SetConsumerKey(L"mine");
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(client->SetConfiguration(mine));
        EXPECT_NE(&client->GetConfiguration(), &first);
    }
    EXPECT_EQ(&client->GetConfiguration(), &client->GetConfiguration());
    EXPECT_EQ(session->ChosenServer().clientId, "mine");
    EXPECT_EQ(first.GetConsumerKey(nullptr, 0), 6) << "client: as it was when it was asked for";
}

TEST(InterfacesLogin, TheHostFinishesTheOneThatItInitiated)
{
    Rig::SessionWorld world;
    auto const session = world.NewSession();
    auto const host = MakeClient(session);
    bool isFinished = true;
    world.beforeBrowser = [&] { isFinished = host->CompleteLogin(); };
    EXPECT_TRUE(MakeClientUI(session)->Login()) << world.LogText();
    EXPECT_FALSE(isFinished) << "that sign-in is the user interface's";
    EXPECT_EQ(world.LinesWith("Cannot sign in: no sign-in was begun, or it was ended"), 1);

    wchar_t address[4096];
    ASSERT_TRUE(host->InitiateLogin(address, 4096));
    world.browser.Open(ToUtf8(address));
    EXPECT_TRUE(host->CompleteLogin()) << world.LogText();
    EXPECT_FALSE(host->CompleteLogin());
}

TEST(HostTexts, AreCutAndTerminated)
{
    wchar_t buffer[] = L"????";
    EXPECT_EQ(CopyText(std::string("abc"), static_cast<wchar_t*>(nullptr), 0), 3);
    EXPECT_EQ(CopyText(std::string("abc"), buffer, 0), 0);
    EXPECT_EQ(buffer[0], L'?');
    EXPECT_EQ(CopyText(std::string("abc"), buffer, 3), 2);
    EXPECT_STREQ(buffer, L"ab");
    EXPECT_EQ(CopyText(std::string("abc"), buffer, 4), 3);
    EXPECT_STREQ(buffer, L"abc");
}

TEST(HostTexts, SecretsComeWholeOrNotAtAll)
{
    wchar_t buffer[] = L"????";
    EXPECT_EQ(CopyWhole(Secret("abc"), nullptr, 0), 3);
    EXPECT_EQ(CopyWhole(Secret("abc"), buffer, 0), 0);
    EXPECT_EQ(buffer[0], L'?');
    EXPECT_EQ(CopyWhole(Secret("abc"), buffer, 3), 0);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(CopyWhole(Secret("abc"), buffer, 4), 3);
    EXPECT_STREQ(buffer, L"abc");
}

} // namespace
