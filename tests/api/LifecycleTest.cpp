#include <algorithm>
#include <exception>
#include <locale>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"

using namespace Halvorix::WebServices;
using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServicesUI::WebServicesUIManager;
using Rig::Installation;
using Rig::Outcome;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

/// Which managers there are: "ui", "web", both or none.
std::string Managers()
{
    std::string managers;
    if (WebServicesUIManager::IsInitialized())
        managers += WebServicesUIManager::GetInstance() != nullptr ? "ui " : "ui without instance ";
    else if (WebServicesUIManager::GetInstance() != nullptr)
        managers += "instance without ui ";
    if (WebServicesManager::IsInitialized())
        managers += WebServicesManager::GetInstance() != nullptr ? "web" : "web without instance";
    else if (WebServicesManager::GetInstance() != nullptr)
        managers += "instance without web";
    return managers;
}

/// A step of a host's life, as Lives spells it.
bool Step(char step)
{
    switch (step) {
    case 'U':
        return WebServicesUIManager::Initialize(true);
    case 'V':
        return WebServicesUIManager::Initialize(false);
    case 'u':
        return WebServicesUIManager::Uninitialize();
    case 'W':
        return WebServicesManager::Initialize(true);
    case 'X':
        return WebServicesManager::Initialize(false);
    case 'w':
        return WebServicesManager::Uninitialize();
    default: // a question in between
        SSOClientPrivate::ClearEventQueue();
        return true;
    }
}

/// One life after another, each from its beginning; what there was after its steps is told
/// under their names.
HOST_PROGRAM(LivesThrough)
{
    for (std::string const& steps : arguments) {
        Json::Value states(Json::arrayValue);
        for (char const step : steps)
            states.append(Step(step) ? Managers() : "refused");
        report.Add(steps, states);
        if (&steps == &arguments.back())
            break; // left to the end of the process
        while (WebServicesUIManager::IsInitialized())
            WebServicesUIManager::Uninitialize();
        while (WebServicesManager::IsInitialized())
            WebServicesManager::Uninitialize();
    }
}

/// What the plugin heard, in short: "load" for a whole load, and the operations
/// of the module without its name.
std::vector<std::string> Heard(Outcome const& outcome)
{
    std::string const module = "ISSOClientModule::";
    std::vector<std::string> heard;
    for (std::string const& call : outcome.calls) {
        if (call == "GetSSOClientFactory()")
            heard.push_back("load");
        else if (call == "ISSOClientPrivate::ClearEventQueue()")
            heard.push_back("question");
        else if (call.compare(0, module.size(), module) == 0 &&
                 call.find("SetOpenSslModule") == std::string::npos)
            heard.push_back(call.substr(module.size()));
    }
    return heard;
}

struct Life {
    char const* name;
    char const* steps;
    std::vector<std::string> states; // after each step
    std::vector<std::string> heard;
};

void PrintTo(Life const& life, std::ostream* out) { *out << life.steps; }

std::vector<std::string> States(Outcome const& outcome, Life const& life)
{
    std::vector<std::string> states;
    for (Json::Value const& state : outcome[life.steps])
        states.push_back(state.asString());
    return states;
}

std::string const initializeUI = "InitializeUI(true, false)";
std::string const uninitializeUI = "UninitializeUI()";
std::string const initialize = "Initialize(true, false)";
std::string const uninitialize = "Uninitialize()";

std::vector<Life> Lives()
{
    return {
        // U and V are Initialize(true) and Initialize(false) of the dialogs'
        // manager, W and X of the other; u and w are their Uninitialize; with ?
        // the host asks something in between.
        {"BothBegin", "U", {"ui web"}, {"load", initializeUI, initialize}},
        {"TheHostsOwnComesFirst", "WU", {"web", "ui web"}, {"load", initialize, initializeUI}},
        {"ALaterCallIsOnlyCounted",
         "UVw",
         // The other count went up once: one step down ends it.
         {"ui web", "ui web", "ui "},
         {"load", initializeUI, initialize, uninitialize}},
        {"NotTheLastEnd",
         "UUu",
         {"ui web", "ui web", "ui web"},
         {"load", initializeUI, initialize}},
        {"TheLastEnd",
         "Uu?",
         {"ui web", "", ""},
         {"load", initializeUI, initialize, uninitializeUI, uninitialize, "load", "question"}},
        {"TwiceAndTwice",
         "UUuu",
         {"ui web", "ui web", "ui web", ""},
         {"load", initializeUI, initialize, uninitializeUI, uninitialize}},
        // The plugin is loaded anew and not initialized again.
        {"TheLastEndBesideTheHostsOwn",
         "WUu?w",
         {"web", "ui web", "web", "web", ""},
         {"load", initialize, initializeUI, uninitializeUI, "load", "question", uninitialize}},
        {"TheLastEndBesideTwoOfTheHosts",
         "WXUuww",
         {"web", "web", "ui web", "web", "web", ""},
         {"load", initialize, initializeUI, uninitializeUI, "load", uninitialize}},
        {"TheHostsOwnComesLater",
         "UXuw",
         {"ui web", "ui web", "web", ""},
         {"load", initializeUI, initialize, uninitializeUI, "load", uninitialize}},
        {"NothingToEnd", "u", {""}, {}},
        {"NothingToEndBesideTheHostsOwn",
         "Wu?",
         {"web", "web", "web"},
         {"load", initialize, "question"}},
        {"OneEndTooMany",
         "Uuu?",
         {"ui web", "", "", ""},
         {"load", initializeUI, initialize, uninitializeUI, uninitialize, "load", "question"}},
        {"OneEndTooManyIsNotOwed",
         "uuUu",
         {"", "", "ui web", ""},
         {"load", initializeUI, initialize, uninitializeUI, uninitialize}},
        // The host ends what the dialogs' manager began.
        {"TheHostTakesTheOthersEnd",
         "Uwu",
         {"ui web", "ui ", ""},
         {"load", initializeUI, initialize, uninitialize, uninitializeUI}},
        {"Anew",
         "UuU",
         {"ui web", "", "ui web"},
         {"load", initializeUI, initialize, uninitializeUI, uninitialize, "load", initializeUI,
          initialize}},
        {"TheOtherAlone",
         "WXww?",
         {"web", "web", "web", "", ""},
         {"load", initialize, uninitialize, "question"}},
        {"TheOtherAnew",
         "WwXw",
         {"web", "", "web", ""},
         {"load", initialize, uninitialize, "Initialize(false, false)", uninitialize}},
        {"TheOtherOneEndTooMany", "wwWw", {"", "", "web", ""}, {"load", initialize, uninitialize}},
    };
}

} // namespace

class LifecycleOfBoth : public testing::TestWithParam<Life> {};

TEST_P(LifecycleOfBoth, IsCountedAndToldToThePlugin)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("LivesThrough", {GetParam().steps});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_THAT(States(outcome, GetParam()), ElementsAreArray(GetParam().states));
    EXPECT_THAT(Heard(outcome), ElementsAreArray(GetParam().heard));
}

INSTANTIATE_TEST_SUITE_P(Lifecycle, LifecycleOfBoth, testing::ValuesIn(Lives()),
                         [](auto const& info) { return std::string(info.param.name); });

TEST(Lifecycle, IsCountedTheSameWithoutAPlugin)
{
    std::vector<std::string> steps;
    for (Life const& life : Lives())
        steps.emplace_back(life.steps);
    Installation installation;
    Outcome const outcome = installation.Run("LivesThrough", steps);
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    for (Life const& life : Lives())
        EXPECT_THAT(States(outcome, life), ElementsAreArray(life.states)) << life.name;
    EXPECT_THAT(outcome.calls, IsEmpty());
}

TEST(Lifecycle, DoesNotLoadThePluginToEndNothing)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("LivesThrough", {"uw"});
    EXPECT_THAT(outcome.calls, IsEmpty());
    EXPECT_THAT(outcome.log, IsEmpty());
    EXPECT_THAT(outcome.console, IsEmpty());
}

// What a plugin sees that asks while it is told.
TEST(Lifecycle, HasItsStepsInOrder)
{
    Installation installation;
    installation.Complete();
    for (char const* const operation :
         {"Initialize", "InitializeUI", "Uninitialize", "UninitializeUI"})
        installation.Script(std::string("ISSOClientModule::") + operation, R"({"callBack": true})");
    Outcome const outcome = installation.Run("LivesThrough", {"Uu"});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    std::vector<std::string> answers;
    for (std::string const& call : outcome.calls)
        if (call.compare(0, 11, "CalledBack(") == 0)
            answers.push_back(call);
    std::string const path = R"(CalledBack("{root}/app", )";
    std::string const state = R"(, "ISSOClientPrivate::GetSessionState"))";
    // The other manager is counted after InitializeUI and before Initialize; it
    // is counted down after UninitializeUI and before Uninitialize.
    EXPECT_THAT(answers, ElementsAre(path + "false" + state, path + "true" + state,
                                     path + "true" + state, path + "false" + state));
}

namespace {

HOST_PROGRAM(InitializesTheDialogsWithASpec)
{
    OAuth2TokenSpec const spec(static_cast<OAuth2TokenType>(2), L"b a");
    OAuth2TokenSpec const other(static_cast<OAuth2TokenType>(3), L"c");
    report("first", WebServicesUIManager::Initialize(spec));
    report("managers", Managers());
    report("second", WebServicesUIManager::Initialize(other));
    report("ofTheOther", WebServicesManager::Initialize(other));
    WebServicesUIManager::Uninitialize();
    report("stillThere", Managers());
}

} // namespace

TEST(Lifecycle, HandsTheSpecOfTheDialogsManagerToBothOperations)
{
    Installation installation;
    Outcome const outcome = installation.Complete().Run("InitializesTheDialogsWithASpec");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["first"], true);
    EXPECT_EQ(outcome["managers"], "ui web");
    EXPECT_EQ(outcome["second"], true);
    EXPECT_EQ(outcome["ofTheOther"], true);
    EXPECT_EQ(outcome["stillThere"], "ui web");
    std::string const document =
        R"(("{\n\t\"legacy\" : false,\n\t\"scope\" : \"a b\",\n\t\"type\" : 2\n}"))";
    EXPECT_THAT(Heard(outcome),
                ElementsAre("load", "InitializeUI" + document, "Initialize" + document));
}

TEST(Lifecycle, BeginsWithASpecWithoutAPluginToo)
{
    Installation installation;
    Outcome const outcome = installation.Run("InitializesTheDialogsWithASpec");
    EXPECT_EQ(outcome["first"], true);
    EXPECT_EQ(outcome["managers"], "ui web");
    EXPECT_EQ(outcome["stillThere"], "ui web");
}

namespace {

HOST_PROGRAM(MeetsAPluginThatThrows)
{
    report.Try("initialize", [] { WebServicesManager::Initialize(); });
    report("counted", WebServicesManager::IsInitialized());
    report("instance", WebServicesManager::GetInstance() != nullptr);
    report("again", WebServicesManager::Initialize());
    report("stillNoInstance", WebServicesManager::GetInstance() == nullptr);
    WebServicesManager::Uninitialize();
    report.Try("uninitialize", [] { WebServicesManager::Uninitialize(); });
    report("ended", WebServicesManager::IsInitialized());
    report("state", SSOClientPrivate::GetSessionState());
}

} // namespace

TEST(Lifecycle, LetsThePluginsExceptionsThrough)
{
    Installation installation;
    Outcome const outcome = installation.Complete()
                                .Script("ISSOClientModule::Initialize", R"({"throw": "not today"})")
                                .Script("ISSOClientModule::Uninitialize", R"({"throw": 3})")
                                .Run("MeetsAPluginThatThrows");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["initialize"], "threw not today");
    // It was counted before the plugin was asked, the instance comes behind.
    EXPECT_EQ(outcome["counted"], true);
    EXPECT_EQ(outcome["instance"], false);
    EXPECT_EQ(outcome["again"], true);
    EXPECT_EQ(outcome["stillNoInstance"], true);
    EXPECT_EQ(outcome["uninitialize"], "threw something else");
    EXPECT_EQ(outcome["ended"], false);
    EXPECT_EQ(outcome["state"], "ISSOClientPrivate::GetSessionState");
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 1);
}

namespace {

HOST_PROGRAM(SetsSearchPathsAndLoadsTwice)
{
    std::wstring const paths(arguments[0].begin(), arguments[0].end());
    WebServicesManager::SetSupportFileSearchPaths(paths.c_str());
    WebServicesUIManager::Initialize();
    WebServicesUIManager::Uninitialize();
    report("state", SSOClientPrivate::GetSessionState());
}

} // namespace

TEST(Lifecycle, KeepsTheSupportPathsForTheNextManager)
{
    Installation installation;
    installation.Complete().Remove("app/SSOClient.config");
    installation.ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})", "support");
    Outcome const outcome =
        installation.Run("SetsSearchPathsAndLoadsTwice", {installation.Text("support")});
    EXPECT_EQ(outcome["state"], "ISSOClientPrivate::GetSessionState");
    EXPECT_EQ(
        outcome.LoggedAt(Rig::Info, "Found client config file at {root}/support/SSOClient.config"),
        2);
}

namespace {

HOST_PROGRAM(AsksBothManagers)
{
    WebServicesUIManager::Initialize();
    WebServicesUIManager* const dialogs = WebServicesUIManager::GetInstance();
    WebServicesManager* const other = WebServicesManager::GetInstance();
    report("loggedIn", dialogs->IsLoggedIn());
    report("loggedInOfTheOther", other->IsLoggedIn());
    report("valid", dialogs->IsLoginValid());
    report("validOfTheOther", other->IsLoginValid());
    report("dialog", dialogs->Login());
}

} // namespace

TEST(Lifecycle, AnswersQuestionsOfTheLoginWithoutAnyDialogs)
{
    Installation installation;
    Outcome const outcome = installation.Complete()
                                .Script("ISSOClientFactory::GetSSOClientUI", R"({"empty": true})")
                                .Script("ISSOClient::IsLoginValid", R"({"answer": 0})")
                                .Run("AsksBothManagers");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["loggedIn"], true);
    EXPECT_EQ(outcome["loggedInOfTheOther"], true);
    EXPECT_EQ(outcome["valid"], false);
    EXPECT_EQ(outcome["validOfTheOther"], false);
    EXPECT_EQ(outcome["dialog"], false);
    EXPECT_EQ(outcome.Called("ISSOClient::IsLoggedIn()"), 2);
    EXPECT_EQ(outcome.Called("ISSOClient::IsLoginValid()"), 2);
    // The two questions did not go by way of the dialogs' interface.
    EXPECT_EQ(outcome.Called("ISSOClientFactory::GetSSOClientUI()"), 1);
}
