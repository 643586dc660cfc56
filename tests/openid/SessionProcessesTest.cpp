// Several processes with one login, over a real network and real locks.

#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "openid/Child.h"
#include "openid/TestBrowser.h"
#include "openid/TestFolder.h"
#include "openid/TestProvider.h"
#include "openid/TestServer.h"
#include "openid/platform/Crypto.h"
#include "openid/session/Session.h"
#include "openid/session/TokenStore.h"

using namespace Halvorix::OpenId;
using Rig::ContentOf;
using Rig::TestBrowser;
using Rig::TestFolder;
using Rig::TestProvider;
using Rig::TestServer;

namespace {

constexpr int Processes = 8;
constexpr int Rounds = 50;

PluginConfiguration ConfigurationOf(std::string const& issuer, std::filesystem::path const& store)
{
    PluginConfiguration configuration;
    configuration.servers["production"].issuer = issuer;
    configuration.servers["production"].clientId = "client-1";
    configuration.store = store;
    return configuration;
}

HttpRequest AsRequest(std::string const& text, std::string const& origin)
{
    HttpRequest request;
    std::istringstream lines(text);
    std::string target, line;
    lines >> request.method >> target;
    std::getline(lines, line);
    while (std::getline(lines, line) && line != "\r") {
        auto const colon = line.find(": ");
        request.headers.emplace_back(line.substr(0, colon), line.substr(colon + 2));
        request.headers.back().second.pop_back();
    }
    request.url = origin + target;
    request.body = text.substr(std::min(text.size(), text.find("\r\n\r\n") + 4));
    return request;
}

/// Lets all processes go on at once: each asks for the next round and is answered when all have
/// asked, once the token that they share has expired.
class Rendezvous {
public:
    explicit Rendezvous(std::function<void()> prepareRound) : prepareRound(std::move(prepareRound))
    {
    }

    void Arrive()
    {
        std::unique_lock<std::mutex> lock(mutex);
        int const mine = round;
        if (++arrived == Processes) {
            prepareRound();
            arrived = 0;
            ++round;
            all.notify_all();
        }
        all.wait_for(lock, std::chrono::minutes(2), [&] { return round > mine; });
    }

private:
    std::function<void()> const prepareRound;
    std::mutex mutex;
    std::condition_variable all;
    int arrived = 0, round = 0;
};

/// A provider over a real network, whose users are processes of their own.
struct World {
    TestFolder folder;
    std::filesystem::path const store = folder / "store";
    std::unique_ptr<TestProvider> provider;
    std::mutex mutex; // Of what follows; the meeting is called with it held.
    std::function<void()> atMeeting;
    std::set<std::string> tokens; ///< What the processes got in a round, as hashes.
    Rendezvous rendezvous{[this] { Meet(); }};
    TestServer server{[this](TestServer::Connection& connection) { Serve(connection); }};

    World() { provider = std::make_unique<TestProvider>(server.Url("")); }

    void Meet()
    {
        std::lock_guard<std::mutex> const guard(mutex);
        atMeeting();
    }

    void Serve(TestServer::Connection& connection)
    {
        std::string const text = connection.Request();
        if (text.empty())
            return;
        HttpRequest const request = AsRequest(text, server.Url(""));
        std::string const meeting = server.Url("/meeting?");
        if (request.url.compare(0, meeting.size(), meeting) == 0) {
            {
                std::lock_guard<std::mutex> const guard(mutex);
                tokens.insert(request.url.substr(meeting.size()));
            }
            rendezvous.Arrive();
            connection.Send(Rig::HttpAnswer("200 OK", ""));
            return;
        }
        HttpResponse const response = provider->Answer(request);
        connection.Send(Rig::HttpAnswer(std::to_string(response.status) + " Answer", response.body,
                                        "Content-Type: application/json\r\n"));
    }

    bool SignIn()
    {
        TestBrowser browser(*provider);
        Outside outside;
        outside.openBrowser = [&](std::string const& url, std::string&) {
            return browser.Open(url);
        };
        auto const log = std::make_shared<LogFile>();
        log->Open(folder.Path());
        Session session(ConfigurationOf(provider->Issuer(), store), log, outside);
        return session.LoginInBrowser("");
    }

    /// As if two hours had gone by since the token came.
    void Expire() const
    {
        TokenStore tokenStore(store);
        auto login = tokenStore.Read(provider->Issuer(), "client-1");
        ASSERT_TRUE(login && *login);
        for (StoredToken& token : (*login)->tokens)
            token.receivedAt -= 7200;
        ASSERT_TRUE(tokenStore.Write(**login));
    }
};

std::string HashOf(std::string const& text) { return ToBase64Url(Sha2(256, text)); }

} // namespace

/// Arguments: the issuer, and the store's folder. Each round is a new session, which knows as
/// little as a new process.
CHILD_PROGRAM(AsksForTokens)
{
    std::string got = "start";
    for (int round = 0; round <= Rounds; ++round) {
        HttpRequest meeting;
        meeting.url = arguments.at(0) + "/meeting?" + got;
        meeting.timeout = std::chrono::minutes(2);
        if (SendHttp(meeting).status != 200)
            return 2;
        if (round == Rounds)
            return 0;
        Session session(ConfigurationOf(arguments.at(0), PathFromText(arguments.at(1))),
                        std::make_shared<LogFile>());
        got = HashOf(*session.AccessToken({1, ""}).text);
        if (!session.IsLoggedIn())
            return 3;
    }
    return 4;
}

TEST(SessionProcesses, WithOneExpiredTokenMakeExactlyOneRefresh)
{
    World world;
    ASSERT_TRUE(world.SignIn()) << Rig::ContentOf(world.folder / "HxSSOOpenID.log");
    int round = 0;
    std::unique_lock<std::mutex> lock(world.mutex);
    world.atMeeting = [&] {
        SCOPED_TRACE(round);
        EXPECT_EQ(world.provider->Count("refresh"), round);
        std::set<std::string> const expected{
            round == 0 ? "start" : HashOf(world.provider->Last("access_token"))};
        EXPECT_EQ(world.tokens, expected);
        world.tokens.clear();
        world.Expire();
        ++round;
    };
    lock.unlock();
    std::vector<std::unique_ptr<Rig::Child>> children;
    for (int i = 0; i < Processes; ++i)
        children.push_back(std::make_unique<Rig::Child>(
            "AsksForTokens",
            std::vector<std::string>{world.provider->Issuer(), PathText(world.store)}));
    for (auto const& child : children)
        EXPECT_EQ(child->Wait(std::chrono::minutes(4)), 0);
    lock.lock();
    EXPECT_EQ(round, Rounds + 1);
    EXPECT_EQ(world.provider->Count("refresh"), Rounds);
    EXPECT_EQ(world.provider->Reuses(), 0);
}

CHILD_PROGRAM(RefreshesForEver)
{
    auto const log = std::make_shared<LogFile>();
    log->Open(PathFromText(arguments.at(2)));
    Session session(ConfigurationOf(arguments.at(0), PathFromText(arguments.at(1))), log);
    while (session.IsLoggedIn())
        session.RefreshToken({1, ""});
    log->Info("nobody is signed in");
    return 0;
}

TEST(SessionProcesses, ThatAreKilledLeaveAStoreThatOthersCanUse)
{
    World world;
    // A provider that forgives reuse: a killed process may have asked and not have written.
    world.provider->Order([](TestProvider::Behaviour& behaviour) { behaviour.rotates = false; });
    ASSERT_TRUE(world.SignIn());
    auto const childLog = world.folder / "child" / "HxSSOOpenID.log";
    for (int i = 0; i < 15; ++i) {
        int const before = world.provider->Count("refresh");
        Rig::Child child("RefreshesForEver", {world.provider->Issuer(), PathText(world.store),
                                              PathText(childLog.parent_path())});
        auto const deadline = SinceBoot() + std::chrono::seconds(30);
        while (world.provider->Count("refresh") < before + 2 && SinceBoot() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ASSERT_GE(world.provider->Count("refresh"), before + 2) << ContentOf(childLog);
        std::this_thread::sleep_for(std::chrono::milliseconds(i));
        child.Kill();
        Session session(ConfigurationOf(world.provider->Issuer(), world.store),
                        std::make_shared<LogFile>());
        EXPECT_TRUE(session.IsLoggedIn());
        EXPECT_TRUE(session.RefreshToken({1, ""}));
    }
}
