#include "api/MemberWalk.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include <SSOServerManager.h>
#include <plugin/Defaults.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/Secrets.h"
#include "framework/Variable.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::SSOServices::SSOServicesManager;
using Halvorix::WebServices::IRsaCryptor;
using MemberWalk::AllMembers;
using MemberWalk::Member;
using Rig::Installation;
using Rig::Outcome;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::StartsWith;
using namespace std::string_literals;
namespace Secrets = Rig::Secrets;

namespace {

std::string const addressOf = "address of ";

/// Puts a line of the host's own among the plugin's.
void WriteDown(Json::Value const& line)
{
    std::ofstream(std::filesystem::u8path(Rig::Variable("HXSSO_PLUGIN_RECORD")),
                  std::ios::binary | std::ios::app)
        << MemberWalk::Shown(line) << '\n';
}

void Announce(std::string const& member)
{
    Json::Value line(Json::arrayValue);
    line.append("Member");
    line.append(member);
    WriteDown(line);
}

std::string ToldBy(Member const& member)
{
    try {
        return member.action();
    } catch (int number) {
        return "threw " + std::to_string(number);
    } catch (std::exception const& exception) {
        return std::string("threw ") + exception.what();
    }
}

HOST_PROGRAM(WalksAllMembers)
{
    for (Member const& member : AllMembers()) {
        Announce(member.name);
        report(member.name, ToldBy(member));
    }
    for (auto const& [name, address] : MemberWalk::Addresses())
        report(addressOf + name, address);
}

bool IsOfTheLoad(std::string const& call)
{
    for (char const* const start :
         {"GetSSOClientFactory(", "ISSOClientFactory::", "ISSOLogManager::",
          "ISSOServerManager::SetSSOServerAppFiles(", "ISSOServerManager::SetSSOServerProcessName(",
          "ISSOServerManager::SetSSOServerName(", "ISSOClientModule::SetOpenSslModule("})
        if (call.compare(0, std::char_traits<char>::length(start), start) == 0)
            return true;
    return false;
}

/// The lifecycle's operations: without them there is no instance to walk on.
std::vector<std::string> const lifecycle{
    "ISSOClientModule::Initialize", "ISSOClientModule::Uninitialize",
    "ISSOClientModule::InitializeUI", "ISSOClientModule::UninitializeUI"};

bool IsOfTheLifecycle(std::string const& call)
{
    return std::find(lifecycle.begin(), lifecycle.end(), call.substr(0, call.find('('))) !=
           lifecycle.end();
}

using CallsOfMembers = std::map<std::string, std::vector<std::string>>;

/// What was written down for each member, in order.
CallsOfMembers ByMember(std::vector<std::string> const& calls)
{
    std::string const announcement = "Member(\"";
    CallsOfMembers byMember;
    std::string member;
    for (std::string const& call : calls) {
        if (call.compare(0, announcement.size(), announcement) == 0)
            member = call.substr(announcement.size(), call.size() - announcement.size() - 2);
        else
            byMember[member].push_back(call);
    }
    return byMember;
}

/// What reached the plugin from each member, in order.
CallsOfMembers CallsByMember(Outcome const& outcome)
{
    std::vector<std::string> calls = outcome.calls;
    calls.erase(std::remove_if(calls.begin(), calls.end(), IsOfTheLoad), calls.end());
    return ByMember(calls);
}

/// The expected calls with this run's addresses.
std::vector<std::string> ExpectedCalls(Member const& member, Outcome const& outcome)
{
    std::vector<std::string> calls = member.calls;
    for (std::string& call : calls)
        for (auto const& [name, value] : outcome.values) {
            if (name.compare(0, addressOf.size(), addressOf) != 0)
                continue;
            std::string const placeholder = "{" + name.substr(addressOf.size()) + "}";
            for (std::size_t at = call.find(placeholder); at != std::string::npos;
                 at = call.find(placeholder))
                call.replace(at, placeholder.size(), value.asString());
        }
    return calls;
}

/// With the texts that two members make a value of.
Installation& WithDocuments(Installation& installation, std::string const& more = "")
{
    return installation.Complete()
        .Script("ISSOClient::GetOAuth2AccessToken",
                R"({"text": "{\"OAuth2AccessToken\": \")"s + Secrets::AccessToken +
                    R"(\", \"OAuth2TokenSpec\": {\"type\": 3, \"scope\": \"c\"}}")" + more + "}")
        .Script("ISSOClient::InitiateLogout",
                R"({"text": "{\"Cookies\": [{\"Name\": \"first\", \"Value\": \")"s +
                    Secrets::CookieValue + R"(\"}, {\"Name\": \"second\"}]}")" + more + "}");
}

} // namespace

TEST(MemberWalk, GivesTheFixedAnswersWithoutAPlugin)
{
    Installation installation;
    Outcome const outcome = installation.Run("WalksAllMembers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    for (Member const& member : AllMembers())
        EXPECT_EQ(outcome[member.name], member.alone) << member.name;
    EXPECT_THAT(CallsByMember(outcome), IsEmpty());
    EXPECT_TRUE(outcome.log.empty());
}

TEST(MemberWalk, ReachesThePluginAndBringsItsAnswersBack)
{
    Installation installation;
    Outcome const outcome = WithDocuments(installation).Run("WalksAllMembers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    CallsOfMembers calls = CallsByMember(outcome);
    for (Member const& member : AllMembers()) {
        EXPECT_EQ(outcome[member.name], member.asked) << member.name;
        EXPECT_THAT(calls[member.name], ElementsAreArray(ExpectedCalls(member, outcome)))
            << member.name;
    }
    EXPECT_THAT(calls[""], IsEmpty());
    // One load, and one more after each release but the last.
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 5);
}

TEST(MemberWalk, HoldsNoLockWhileThePluginWorks)
{
    Installation installation;
    Outcome const outcome = WithDocuments(installation, R"(, "probe": 20)")
                                .Script("*", R"({"probe": 20})")
                                .Run("WalksAllMembers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    CallsOfMembers calls = CallsByMember(outcome);
    for (Member const& member : AllMembers()) {
        std::vector<std::string> expected;
        for (std::string const& call : ExpectedCalls(member, outcome)) {
            expected.push_back(call);
            expected.push_back("LockIsFree(\"" + call.substr(0, call.find('(')) + "\", true)");
        }
        EXPECT_THAT(calls[member.name], ElementsAreArray(expected)) << member.name;
    }
}

namespace {

HOST_PROGRAM(LoadsThePlugin) { report("state", SSOClientPrivate::GetSessionState()); }

} // namespace

// That the test above can fail: the load does hold the lock.
TEST(MemberWalk, WouldNoticeALockThatIsHeld)
{
    Installation installation;
    Outcome const outcome = installation.Complete()
                                .Script("ISSOClientModule::SetOpenSslModule", R"({"probe": 1})")
                                .Run("LoadsThePlugin");
    EXPECT_EQ(outcome["state"], "ISSOClientPrivate::GetSessionState");
    EXPECT_EQ(outcome.Called(R"(LockIsFree("ISSOClientModule::SetOpenSslModule", false))"), 1);
}

TEST(MemberWalk, BringsARefusalBack)
{
    Installation installation;
    installation.Complete().Script("*", R"({"answer": 0})");
    // Nothing says who releases a text that comes with a refusal.
    for (char const* const operation : {"GetOAuth2AccessToken", "InitiateLogout"})
        installation.Script(std::string("ISSOClient::") + operation,
                            R"({"answer": 0, "text": null})");
    Outcome const outcome = installation.Run("WalksAllMembers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    int refusals = 0;
    for (Member const& member : AllMembers()) {
        // The answers true of the lifecycle are the library's own.
        if (member.asked.compare(0, 4, "true") != 0 || member.calls.empty() ||
            IsOfTheLifecycle(member.calls.front()))
            continue;
        ++refusals;
        EXPECT_THAT(outcome[member.name].asString(), StartsWith("false")) << member.name;
    }
    EXPECT_GT(refusals, 50);
}

// A plugin that is there and offers nothing is answered for like a missing one.
TEST(MemberWalk, GivesTheFixedAnswersWithoutInterfaces)
{
    Installation installation;
    WithDocuments(installation);
    for (char const* const name : {"GetSSOClientModule", "GetSSOClient", "GetSSOClientUI",
                                   "GetSSOClientPrivate", "GetSSOServerManager"})
        installation.Script(std::string("ISSOClientFactory::") + name, R"({"empty": true})");
    Outcome const outcome = installation.Run("WalksAllMembers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    for (Member const& member : AllMembers())
        EXPECT_EQ(outcome[member.name], member.calls.empty() ? member.asked : member.alone)
            << member.name;
    EXPECT_THAT(CallsByMember(outcome), IsEmpty());
}

// A plugin that writes no operation of its own cannot be told from none, but by the two
// texts that the library stores itself: an empty one ends the caller's buffer.
TEST(MemberWalk, GivesTheFixedAnswersByTheDefaultsOfPlugins)
{
    Installation installation;
    WithDocuments(installation)
        .Compatibility(Rig::CompatibilityFor("DefaultsPlugin"))
        .Plugin("DefaultsPlugin");
    Outcome const outcome = installation.Run("WalksAllMembers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    std::string const emptyTexts = R"(0, 0, 0, '\0', 0, '\0', 0, 0, untouched)";
    std::map<std::string, std::string> const others{
        {"SSOClientPrivate::GetSSOClientPluginModule()",
         "'{root}/server/plugin/" + Rig::ModuleName("DefaultsPlugin") + "'"},
        {"SSOServerManager::GetSSOServerAppFile(wchar_t*, int)", emptyTexts},
        {"SSOServerManager::GetSSOServerAppExeFile(wchar_t*, int)", emptyTexts}};
    for (Member const& member : AllMembers()) {
        auto const other = others.find(member.name);
        std::string const& answer = member.calls.empty() ? member.asked : member.alone;
        EXPECT_EQ(outcome[member.name], other != others.end() ? other->second : answer)
            << member.name;
    }
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 5);
    EXPECT_TRUE(outcome.log.empty());
}

TEST(Defaults, EncryptNothing)
{
    Halvorix::WebServices::RsaCryptorDefaults cryptor;
    unsigned char const input[] = "text";
    unsigned char output[16] = "before";
    unsigned long long length = 81;
    EXPECT_EQ(cryptor.GetMaxBlockSize(), 0);
    EXPECT_FALSE(cryptor.RsaEncrypt(input, 4, output, 16, &length));
    EXPECT_FALSE(cryptor.RsaDecrypt(input, 4, output, 16, &length));
    EXPECT_FALSE(cryptor.EncryptBuffer(input, 4, output, 16, &length));
    EXPECT_FALSE(cryptor.DecryptBuffer(input, 4, output, 16, &length));
    EXPECT_EQ(length, 81u);
    EXPECT_STREQ(reinterpret_cast<char const*>(output), "before");
}

class ThrownByThePlugin : public testing::TestWithParam<std::pair<char const*, char const*>> {};

TEST_P(ThrownByThePlugin, ReachesTheCallerOfEveryMember)
{
    auto const [action, told] = GetParam();
    Installation installation;
    installation.Complete().Script("*", action);
    for (std::string const& operation : lifecycle)
        installation.Script(operation, "{}");
    Outcome const outcome = installation.Run("WalksAllMembers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["program"], "returned");
    CallsOfMembers calls = CallsByMember(outcome);
    for (Member const& member : AllMembers()) {
        if (member.calls.empty() || IsOfTheLifecycle(member.calls.front())) {
            EXPECT_EQ(outcome[member.name], member.asked) << member.name;
            continue;
        }
        EXPECT_EQ(outcome[member.name], told) << member.name;
        // The first operation ended the action, and the next member works.
        EXPECT_THAT(calls[member.name],
                    testing::ElementsAre(ExpectedCalls(member, outcome).front()))
            << member.name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    MemberWalk, ThrownByThePlugin,
    testing::Values(std::pair(R"({"throw": "no service"})", "threw no service"),
                    std::pair(R"({"throw": 17})", "threw 17")),
    [](auto const& info) { return std::string(info.index == 0 ? "Exception" : "Number"); });

namespace {

/// Each interface is one of its own, whose end is written down.
Installation& WithFreshInterfaces(Installation& installation)
{
    for (char const* const name : {"GetSSOClientModule", "GetSSOClient", "GetSSOClientUI",
                                   "GetSSOClientPrivate", "GetSSOServerManager"})
        installation.Script(std::string("ISSOClientFactory::") + name, R"({"fresh": true})");
    return installation;
}

/// All from each load's beginning to the release of its last interface is left out.
std::vector<std::string> WithoutLoads(std::vector<std::string> const& calls)
{
    std::vector<std::string> others;
    bool loading = false;
    for (std::string const& call : calls) {
        loading = loading || call == "GetSSOClientFactory()";
        if (!loading)
            others.push_back(call);
        loading = loading && call != "~ISSOServerManager()";
    }
    return others;
}

/// Operations with what is to stand around each of them.
std::vector<std::string> WithTheirInterfaces(std::vector<std::string> const& operations)
{
    std::vector<std::string> calls;
    for (std::string const& operation : operations) {
        std::string const name = operation.substr(1, operation.find(':') - 1);
        calls.push_back("ISSOClientFactory::Get" + name + "()");
        calls.push_back(operation);
        calls.push_back("~I" + name + "()");
    }
    return calls;
}

} // namespace

TEST(MemberWalk, AsksForAnInterfaceAnewAndHoldsItUntilItsCallReturns)
{
    Installation installation;
    WithFreshInterfaces(WithDocuments(installation));
    Outcome const outcome = installation.Run("WalksAllMembers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    CallsOfMembers calls = ByMember(WithoutLoads(outcome.calls));
    for (Member const& member : AllMembers()) {
        EXPECT_EQ(outcome[member.name], member.asked) << member.name;
        EXPECT_THAT(calls[member.name],
                    ElementsAreArray(WithTheirInterfaces(ExpectedCalls(member, outcome))))
            << member.name;
    }
}

TEST(MemberWalk, ReleasesTheInterfaceOfACallThatThrows)
{
    Installation installation;
    WithFreshInterfaces(installation.Complete()).Script("*", R"({"throw": "no service"})");
    for (std::string const& operation : lifecycle)
        installation.Script(operation, "{}");
    Outcome const outcome = installation.Run("WalksAllMembers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    CallsOfMembers calls = ByMember(WithoutLoads(outcome.calls));
    for (Member const& member : AllMembers()) {
        std::vector<std::string> operations = ExpectedCalls(member, outcome);
        if (!operations.empty() && !IsOfTheLifecycle(operations.front()))
            operations.resize(1); // which ended the action
        EXPECT_THAT(calls[member.name], ElementsAreArray(WithTheirInterfaces(operations)))
            << member.name;
    }
}

namespace {

// Nobody looks at it: what is told is its end.
std::shared_ptr<IRsaCryptor> CryptorOfTheHost()
{
    return {MemberWalk::Nowhere<IRsaCryptor*>(87), [](IRsaCryptor*) {
                Json::Value line(Json::arrayValue);
                line.append("~IRsaCryptor of the host");
                WriteDown(line);
            }};
}

HOST_PROGRAM(GivesItsCryptorAway) { SSOServicesManager::SetRsaCryptor(CryptorOfTheHost()); }

} // namespace

// First the interface, then the argument.
TEST(SSOServicesManager, ReleasesTheInterfaceBeforeTheCryptor)
{
    Installation installation;
    WithFreshInterfaces(installation.Complete())
        .Script("ISSOClientModule::SetRsaCryptor", R"({"empty": true})");
    Outcome const outcome = installation.Run("GivesItsCryptorAway");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_THAT(WithoutLoads(outcome.calls),
                testing::ElementsAre("ISSOClientFactory::GetSSOClientModule()",
                                     "ISSOClientModule::SetRsaCryptor(87)", "~ISSOClientModule()",
                                     "~IRsaCryptor of the host()"));
}
