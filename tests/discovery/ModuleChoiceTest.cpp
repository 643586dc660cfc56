#include <algorithm>
#include <fstream>

#include <gmock/gmock.h>

#include "discovery/Lines.h"
#include "discovery/Place.h"
#include "framework/CompatibilityFor.h"

using namespace Rig;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string const Plugin = "client plugin";
std::string const OpenSsl = "openssl";
std::string const PluginKey = "ssoClientPlugin";
std::string const ExePath = "{root}/app/";
// A name with the system's ending: some add it where it is missing.
std::string const Chosen = ModuleName("Chosen");

std::string const RequiresArray =
    "Json::LogicError: in Json::Value::operator[](ArrayIndex)const: requires arrayValue";
// Versions of the JSON library name the failing function differently.
std::string const RequiresRange = ": requires objectValue or nullValue";

std::string Group(std::string const& key, std::string const& value)
{
    return "{\"" + key + "\": " + value + "}";
}

/// A module in app/, by its version and the range of the library's versions.
std::string Entry(std::string const& module, std::string const& version,
                  std::string const& range = R"({"minVersion": "10.22"})")
{
    return R"({"module": ")" + module + R"(", "modulePath": "%ExePath%", "version": )" + version +
           R"(, "compatibleSsoServicesVersion": )" + range + "}";
}

/// A server application beside a compatibility file of this content.
class Choice : public Place {
public:
    explicit Choice(std::string const& content)
    {
        ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})");
        ServerApp().Compatibility(content);
    }

    /// What is chosen from these entries.
    static std::string From(std::string const& entries)
    {
        Choice choice(Group(PluginKey, "[" + entries + "]"));
        std::vector<std::string> const answers = Ask(choice, {"GetSSOClientPluginModule"}).answers;
        return answers.size() == 1 ? answers[0] : "no answer";
    }
};

/// The lines of the way to the compatibility file beside the server application.
std::vector<LogMessage> RoadToFile()
{
    return {SearchesConfig(),
            FindsConfig(),
            LoadsConfig(),
            HasNoLocation(),
            SearchesServer("HxSSO.exe", LibraryFirst + "\n{root}/server"),
            FindsServer("{root}/server/HxSSO.exe"),
            SearchesCompatibility(),
            FindsCompatibility()};
}

std::vector<LogMessage> operator+(std::vector<LogMessage> left,
                                  std::vector<LogMessage> const& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

std::vector<LogMessage> Repeated(int count, std::vector<LogMessage> const& lines)
{
    std::vector<LogMessage> all;
    for (int i = 0; i < count; ++i)
        all = all + lines;
    return all;
}

} // namespace

TEST(ModuleChoice, PrefersTheHighestVersionThatFits)
{
    std::string const none = R"({"maxVersion": "9"})";
    EXPECT_EQ(Choice::From(Entry("a", R"("3.0")") + "," + Entry("b", R"("4.0")")), ExePath + "b");
    EXPECT_EQ(Choice::From(Entry("a", R"("4.0")") + "," + Entry("b", R"("3.0")")), ExePath + "a");
    // By number, and the longer one of two that begin alike.
    EXPECT_EQ(Choice::From(Entry("a", R"("9.0")") + "," + Entry("b", R"("10.0")")), ExePath + "b");
    EXPECT_EQ(Choice::From(Entry("a", R"("4")") + "," + Entry("b", R"("4.0")")), ExePath + "b");
    EXPECT_EQ(Choice::From(Entry("a", R"("1.beta")") + "," + Entry("b", R"("1.RC")")),
              ExePath + "b");
    // The file's order breaks ties.
    EXPECT_EQ(Choice::From(Entry("a", R"("3.0")") + "," + Entry("b", R"("3.0")")), ExePath + "a");
    EXPECT_EQ(Choice::From(Entry("a", R"("3.RC")") + "," + Entry("b", R"(" 3 . rc ")")),
              ExePath + "a");
    EXPECT_EQ(Choice::From(Entry("a", R"("1")") + "," + Entry("b", R"("2")") + "," +
                           Entry("c", R"("2")") + "," + Entry("d", R"("1")")),
              ExePath + "b");
    std::string many = Entry("first", R"("3.0")");
    for (int i = 0; i < 40; ++i)
        many += "," + Entry("later", i % 2 == 0 ? R"("3.0")" : R"("2.0")");
    EXPECT_EQ(Choice::From(many), ExePath + "first");
    // The highest does not fit, so the next one does.
    EXPECT_EQ(Choice::From(Entry("a", R"("3.0")") + "," + Entry("b", R"("5.0")", none) + "," +
                           Entry("c", R"("4.0")")),
              ExePath + "c");
    EXPECT_EQ(Choice::From(Entry("a", R"("3.0")", none) + "," + Entry("b", R"("5.0")", none)), "");
}

TEST(ModuleChoice, TakesABlankVersionLast)
{
    for (char const* const blank : {R"("")", R"(" ")", R"("..")", "null"}) {
        SCOPED_TRACE(blank);
        EXPECT_EQ(Choice::From(Entry("a", blank) + "," + Entry("b", R"("0")")), ExePath + "b");
        EXPECT_EQ(Choice::From(Entry("a", blank)), ExePath + "a");
        EXPECT_EQ(Choice::From(Entry("a", blank) + "," + Entry("b", blank)), ExePath + "a");
    }
    EXPECT_EQ(Choice::From(R"({"module": "a", "modulePath": "%ExePath%",
                              "compatibleSsoServicesVersion": {"minVersion": "1"}})"),
              ExePath + "a");
}

TEST(ModuleChoice, ReadsRanges)
{
    struct {
        char const* range;
        bool fits;
    } const cases[] = {
        {R"({"minVersion": "10.22", "maxVersion": "10.22.00.1800"})", true},
        {R"({"minVersion": "10.22.00.1800", "maxVersion": "10.22.00.1800"})", true},
        {R"({"minVersion": "10"})", true},
        {R"({"minVersion": "10.22.00.1801"})", false},
        {R"({"minVersion": "10.22.00.1800.0"})", false},
        {R"({"minVersion": "10.22.0.1800"})", true},
        {R"({"minVersion": "11"})", false},
        {R"({"maxVersion": "10"})", true},
        {R"({"maxVersion": "10.22"})", true},
        {R"({"maxVersion": "10.22.0"})", false},
        {R"({"maxVersion": "10.22.0.1800"})", false},
        {R"({"maxVersion": "10.21.99"})", false},
        // Reversed bounds are mended.
        {R"({"minVersion": "11", "maxVersion": "9"})", true},
        {R"({"minVersion": " 10 . 22 ", "maxVersion": "..10..22.."})", true},
        {R"({"minVersion": "9", "maxVersion": " "})", true},
        {R"({"versions": ["10.22.00.1800"]})", true},
        {R"({"versions": ["1", "", "10.22"]})", true},
        {R"({"versions": ["10.22.0.1800", "10.22.00.1801"]})", false},
        {R"({"versions": ["10.22.00.1800.1"]})", false},
        // One more way in, beside the bounds.
        {R"({"minVersion": "11", "versions": ["10"]})", true},
        {R"({"minVersion": "10", "versions": ["9"]})", true},
        {R"({"minVersion": "10", "versions": "9"})", true},
        {R"({"minVersion": "10", "versions": {}})", true},
        {R"({"minVersion": null, "maxVersion": "11", "versions": null, "more": []})", true},
        // Numbers become text, by the JSON library's own rule: 10.22 is
        // 10.220000000000001 then.
        {R"({"minVersion": 10})", true},
        {R"({"minVersion": 11})", false},
        {R"({"minVersion": 10.22})", false},
        {R"({"maxVersion": 10.22})", true},
        {R"({"minVersion": 10.5, "maxVersion": 10.75})", true},
        {R"({"versions": [10.22]})", false},
        {R"({"versions": [10]})", true},
        // "true" is above any number that has no letters.
        {R"({"minVersion": true})", false},
        {R"({"maxVersion": true})", true},
    };
    for (auto const& [range, fits] : cases)
        EXPECT_EQ(Choice::From(Entry("a", R"("1")", range)), fits ? ExePath + "a" : "") << range;
}

TEST(ModuleChoice, ReadsNumbersAsVersions)
{
    EXPECT_EQ(Choice::From(Entry("a", R"("10.23")") + "," + Entry("b", "10.22")), ExePath + "b");
    EXPECT_EQ(Choice::From(Entry("a", "9") + "," + Entry("b", "10")), ExePath + "b");
    EXPECT_EQ(Choice::From(Entry("a", R"("5")") + "," + Entry("b", "false")), ExePath + "b");
    // Also at the other keys.
    Choice choice(Group(PluginKey, R"([{"module": 5, "modulePath": true, "version": 1,
                                      "compatibleSsoServicesVersion": {"minVersion": 1}}])"));
    EXPECT_THAT(Ask(choice, {"GetSSOClientPluginModule"}).answers, ElementsAre("true/5"));
}

TEST(ModuleChoice, NormalisesPathAndModule)
{
    auto const chosen = [](std::string const& module, std::string const& path) {
        return Choice::From(R"({"module": ")" + module + R"(", "modulePath": ")" + path +
                            R"(", "compatibleSsoServicesVersion": {"minVersion": "1"}})");
    };
    EXPECT_EQ(chosen("m", "%SSOSERVERAPPPATH%\\\\sub//"), "{root}/server/sub/m");
    EXPECT_EQ(chosen("sub//m/", "%ExePath%"), "{root}/app/sub/m");
    EXPECT_EQ(chosen("m", "%Unknown%/x"), "%Unknown%/x/m");
    EXPECT_EQ(chosen("Modul ü.dll", "{root}/Bücher ☃"), "{root}/Bücher ☃/Modul ü.dll");
    EXPECT_EQ(chosen("\\u00fc", "\\u2603"), "☃/ü");
    // Only the path has variables.
    EXPECT_EQ(chosen("%ExePath%", "x"), "x/%ExePath%");
}

TEST(ModuleChoice, SaysWhyItIgnoresAnEntry)
{
    for (std::string const& key : {PluginKey, OpenSsl}) {
        SCOPED_TRACE(key);
        std::string const range = R"("compatibleSsoServicesVersion": )";
        std::string const path = R"({"module": "m", "modulePath": "%ExePath%", )";
        struct {
            std::string entry;
            std::vector<LogMessage> lines;
        } const cases[] = {
            {"null", {}},
            {"{}", {MissesKey("'module'", key)}},
            {R"({"module": "", "modulePath": "x"})", {MissesKey("'module'", key)}},
            {R"({"module": null, "modulePath": "x"})", {MissesKey("'module'", key)}},
            {"{\"module\": \"\xFF\", \"modulePath\": \"x\"}", {MissesKey("'module'", key)}},
            {R"({"module": "m"})", {MissesKey("'modulePath' or 'modulePathWoW64'", key)}},
            {R"({"module": "m", "modulePath": ""})",
             {MissesKey("'modulePath' or 'modulePathWoW64'", key)}},
            // No path for processes of the other kind takes its place.
            {R"({"module": "m", "modulePathWoW64": "%ExePath%", "version": "9", )" + range +
                 R"({"minVersion": "1"}})",
             {MissesKey("'modulePath' or 'modulePathWoW64'", key)}},
            {path + R"("version": "9"})", {MissesRange()}},
            {path + range + "null}", {MissesRange()}},
            {path + range + "{}}", {RefusesRange()}},
            {path + range + "[]}", {RefusesRange()}},
            {path + range + R"({"more": 1}})", {RefusesRange()}},
            {path + range + R"({"minVersion": "", "maxVersion": null, "versions": []}})",
             {RefusesRange()}},
            {path + range + R"({"minVersion": " ", "maxVersion": "..", "versions": ["", " "]}})",
             {RefusesRange()}},
        };
        std::string entries = "[";
        std::vector<LogMessage> refusals;
        for (auto const& expected : cases) {
            entries += expected.entry + ",\n";
            refusals = refusals + expected.lines;
        }
        Choice choice(Group(key, entries + Entry(Chosen, R"("1")") + "]"));
        Found const asked =
            Ask(choice, {key == OpenSsl ? "GetOpenSslModule" : "GetSSOClientPluginModule"});
        EXPECT_THAT(asked.answers, ElementsAre(ExePath + Chosen));
        std::vector<LogMessage> const end =
            refusals + std::vector<LogMessage>{key == OpenSsl ? FindsOpenSsl(ExePath + Chosen)
                                                              : FindsPlugin(ExePath + Chosen)};
        ASSERT_GE(asked.lines.size(), end.size());
        EXPECT_THAT(
            std::vector<LogMessage>(asked.lines.end() - static_cast<std::ptrdiff_t>(end.size()),
                                    asked.lines.end()),
            ElementsAreArray(end));
        EXPECT_EQ(asked.lines[asked.lines.size() - end.size() - 1],
                  SearchesModule(key == OpenSsl ? OpenSsl : Plugin));
    }
}

TEST(ModuleChoice, BlamesTheVersionForAPathOfNothingButSlashes)
{
    for (char const* const path : {"/", "///", "\\\\\\\\"}) {
        SCOPED_TRACE(path);
        Choice choice(Group(PluginKey, R"([{"module": "m", "modulePath": ")" + std::string(path) +
                                           R"(", "version": "9",
            "compatibleSsoServicesVersion": {"minVersion": "1"}}, )" +
                                           Entry(Chosen, R"("1")") + "]"));
        Found const asked = Ask(choice, {"GetSSOClientPluginModule"});
        // A root where there is one slash to it.
        if (!IsWindows()) {
            EXPECT_THAT(asked.answers, ElementsAre("/m"));
            continue;
        }
        EXPECT_THAT(asked.answers, ElementsAre(ExePath + Chosen));
        EXPECT_THAT(asked.lines,
                    ElementsAreArray(RoadToFile() +
                                     std::vector<LogMessage>{SearchesModule(Plugin),
                                                             MissesKey("'version'", PluginKey),
                                                             FindsPlugin(ExePath + Chosen)}));
    }
}

TEST(ModuleChoice, RepeatsItselfUntilItSucceeds)
{
    std::string const none = Entry("a", R"("1")", R"({"minVersion": "11"})");
    Choice choice(R"({"ssoClientPlugin": [)" + none + R"(], "openssl": [)" + none + "]}");
    choice.File("better.config",
                R"({"openssl": [{"module": "m", "modulePath": "x",
                    "compatibleSsoServicesVersion": {"minVersion": "1"}}]})");
    Found const asked =
        Ask(choice, {"GetSSOClientPluginModule", "GetSSOClientPluginModule", "GetOpenSslModule",
                     "GetOpenSslModule", "Copy=better.config>server/SSOVersionCompatibility.config",
                     "GetOpenSslModule", "GetOpenSslModule"});
    EXPECT_THAT(asked.answers, ElementsAre("", "", "", "", "x/m", "x/m"));
    EXPECT_THAT(asked.lines,
                ElementsAreArray(
                    RoadToFile() + Repeated(2, {SearchesModule(Plugin), MissesModule(Plugin)}) +
                    Repeated(2, {SearchesOpenSslOverride(), MissesOpenSslOverride(),
                                 SearchesModule(OpenSsl), MissesModule(OpenSsl)}) +
                    std::vector<LogMessage>{SearchesOpenSslOverride(), MissesOpenSslOverride(),
                                            SearchesModule(OpenSsl), FindsOpenSsl("x/m")}));
}

TEST(ModuleChoice, MissesAGroupThatIsNotThere)
{
    for (std::string const group :
         {"", R"("openssl": null,)", R"("openssl": [],)", R"("openssl": {},)",
          R"("openssl": "text",)", R"("openssl": 5,)", R"("openssl": true,)",
          R"("openssl": [null, null],)"}) {
        SCOPED_TRACE(group);
        std::string const plugin = ExePath + Chosen;
        Choice choice("{" + group + R"("ssoClientPlugin": [)" + Entry(Chosen, "1") +
                      R"(], "more": 1})");
        Found const asked = Ask(choice, {"GetSSOClientPluginModule", "GetOpenSslModule"});
        EXPECT_THAT(asked.answers, ElementsAre(plugin, ""));
        EXPECT_THAT(asked.lines,
                    ElementsAreArray(
                        RoadToFile() +
                        std::vector<LogMessage>{SearchesModule(Plugin), FindsPlugin(plugin),
                                                SearchesOpenSslOverride(), MissesOpenSslOverride(),
                                                SearchesModule(OpenSsl), HasNoModules(OpenSsl),
                                                MissesModule(OpenSsl)}));
    }
    for (char const* const content :
         {"{}", "null", R"({"openssl": []})", R"({"SSOClientPlugin": []})"}) {
        SCOPED_TRACE(content);
        Choice choice(content);
        Found const asked = Ask(choice, {"GetSSOClientPluginModule"});
        EXPECT_THAT(asked.lines,
                    ElementsAreArray(RoadToFile() + std::vector<LogMessage>{SearchesModule(Plugin),
                                                                            HasNoModules(PluginKey),
                                                                            MissesModule(Plugin)}));
    }
}

TEST(ModuleChoice, RefusesAFileThatIsNoJson)
{
    std::vector<LogMessage> const refusal{SearchesModule(Plugin), RefusesFile(),
                                          HasNoModules(PluginKey), MissesModule(Plugin)};
    for (std::string const& content : std::initializer_list<std::string>{
             "", "\r\n", "{", "not JSON", "\xEF\xBB\xBF{}", "{'openssl': []}"}) {
        SCOPED_TRACE(content);
        Choice choice(content);
        Found const asked = Ask(choice, {"GetSSOClientPluginModule", "GetSSOClientPluginModule"});
        EXPECT_THAT(asked.answers, ElementsAre("", ""));
        EXPECT_THAT(asked.lines, ElementsAreArray(RoadToFile() + Repeated(2, refusal)));
    }
    Choice folder("{}");
    folder.Remove("server/SSOVersionCompatibility.config")
        .Folder("server/SSOVersionCompatibility.config");
    Found const asked = Ask(folder, {"GetSSOClientPluginModule"});
    EXPECT_THAT(asked.answers, ElementsAre(""));
    EXPECT_THAT(asked.lines, ElementsAreArray(RoadToFile() + refusal));
}

TEST(ModuleChoice, AcceptsCommentsAndLineEnds)
{
    EXPECT_EQ(Choice::From("// one\r\n/* two */" + Entry("a", "1 // three\r\n")), ExePath + "a");
    Choice choice("// comment\r\n" + Group(PluginKey, "[" + Entry("a", "1") + "]") + " and more");
    EXPECT_THAT(Ask(choice, {"GetSSOClientPluginModule"}).answers, ElementsAre(ExePath + "a"));
}

TEST(ModuleChoice, MustNotBeNestedDeeperThanAThousandTimes)
{
    auto const nested = [](std::size_t depth) {
        return R"({"more": )" + std::string(depth, '[') + std::string(depth, ']') +
               R"(, "ssoClientPlugin": [)" + Entry("a", "1") + "]}";
    };
    Choice good(nested(999));
    EXPECT_THAT(Ask(good, {"GetSSOClientPluginModule"}).answers, ElementsAre(ExePath + "a"));
    Choice bad(nested(1000));
    bad.File("good.config", "{}");
    std::string const thrown = "Json::Exception: Exceeded stackLimit in readValue().";
    EXPECT_THAT(
        Ask(bad, {"GetSSOClientPluginModule", "GetOpenSslModule",
                  "Copy=good.config>server/SSOVersionCompatibility.config", "GetOpenSslModule"})
            .answers,
        ElementsAre(thrown, thrown, ""));
}

TEST(ModuleChoice, ThrowsWhatTheJsonLibraryThrowsForAWrongType)
{
    std::string const range = R"("compatibleSsoServicesVersion": )";
    std::string const path = R"({"module": "m", "modulePath": "x", )";
    auto const plugins = [](std::string const& value) { return Group(PluginKey, value); };
    struct {
        std::string content;
        std::string thrown;
    } const cases[] = {
        {"[]", RequiresObject},
        {"[{}]", RequiresObject},
        {"5", RequiresObject},
        {"\"text\"", RequiresObject},
        {"false", RequiresObject},
        {plugins(R"({"x": 1})"), RequiresArray},
        {plugins(R"({"0": {"module": "m"}})"), RequiresArray},
        {plugins(R"(["x"])"), RequiresObject},
        {plugins("[5]"), RequiresObject},
        {plugins("[true]"), RequiresObject},
        {plugins("[[]]"), RequiresObject},
        {plugins("[null, " + Entry(Chosen, "1") + ", 5]"), RequiresObject},
        {plugins(R"([{"module": []}])"), RequiresText},
        {plugins(R"([{"module": {}}])"), RequiresText},
        {plugins(R"([{"module": "m", "modulePath": ["x"]}])"), RequiresText},
        {plugins("[" + path + R"("version": {"x": 1}}])"), RequiresText},
        {plugins("[" + path + range + R"("10.22"}])"), RequiresRange},
        {plugins("[" + path + range + "10}]"), RequiresRange},
        {plugins("[" + path + range + "true}]"), RequiresRange},
        {plugins("[" + path + range + "\"\"}]"), RequiresRange},
        {plugins("[" + path + range + "[{}]}]"), RequiresRange},
        {plugins("[" + path + range + R"({"minVersion": []}}])"), RequiresText},
        {plugins("[" + path + range + R"({"minVersion": "1", "maxVersion": {}}}])"), RequiresText},
        {plugins("[" + path + range + R"({"versions": ["10", ["x"]]}}])"), RequiresText},
    };
    for (auto const& [content, thrown] : cases) {
        SCOPED_TRACE(content);
        Choice choice(content);
        choice.File("good.config", R"({"ssoClientPlugin": [{"module": "m", "modulePath": "x",
            "compatibleSsoServicesVersion": {"minVersion": "1"}}]})");
        // Read anew each time.
        Found const asked = Ask(choice, {"GetSSOClientPluginModule", "GetSSOClientPluginModule",
                                         "Copy=good.config>server/SSOVersionCompatibility.config",
                                         "GetSSOClientPluginModule"});
        auto const throws = AllOf(StartsWith("Json::LogicError: "), EndsWith(thrown));
        EXPECT_THAT(asked.answers, ElementsAre(throws, throws, "x/m"));
        EXPECT_THAT(asked.lines,
                    ElementsAreArray(RoadToFile() + Repeated(3, {SearchesModule(Plugin)}) +
                                     std::vector<LogMessage>{FindsPlugin("x/m")}));
    }
    Choice openssl(Group(OpenSsl, "[5]"));
    EXPECT_THAT(Ask(openssl, {"GetSSOClientPluginModule", "GetOpenSslModule"}).answers,
                ElementsAre("", RequiresObject));
    Choice object(Group(PluginKey, "[" + path + range + R"({"versions": {"a": "10"}}}])"));
    std::vector<std::string> const answers = Ask(object, {"GetSSOClientPluginModule"}).answers;
    ASSERT_EQ(answers.size(), 1u);
    EXPECT_THAT(answers[0], HasSubstr("Json::LogicError: in Json::Value::operator[](ArrayIndex)"));
}

TEST(ModuleChoice, LooksInTheConfiguredFolderAfterTheServerApplications)
{
    Place place;
    place.ServerApp("lib").Compatibility(CompatibilityFor("RecordingPlugin"), "other");
    place.ClientConfig(
        R"({"ssoServer": {"VersionCompatibilityConfigfilePath": "%ExePath%\\..//other/"}})");
    std::string const plugin = "{root}/lib/plugin/" + ModuleName("RecordingPlugin");
    std::string const file = "{root}/app/../other/" + BareFile;
    std::vector<LogMessage> const road{SearchesConfig(),
                                       FindsConfig(),
                                       LoadsConfig(),
                                       HasNoLocation(),
                                       SearchesServer(),
                                       FindsServer("{root}/lib/HxSSO.exe"),
                                       SearchesCompatibility("{root}/lib")};
    Found const asked = Ask(place, {"GetSSOClientPluginModule"});
    EXPECT_THAT(asked.answers, ElementsAre(plugin));
    EXPECT_THAT(asked.lines,
                ElementsAreArray(road + std::vector<LogMessage>{FindsCompatibility(file),
                                                                SearchesModule(Plugin, file),
                                                                FindsPlugin(plugin)}));
    // Nobody looks at it if there is one beside the server application.
    place.Compatibility(Group(PluginKey, "[" + Entry("a", "1") + "]"), "lib");
    EXPECT_THAT(Ask(place, {"GetSSOClientPluginModule"}).answers, ElementsAre(ExePath + "a"));
}

TEST(ModuleChoice, TakesTheConfiguredPlaceForAFolder)
{
    for (char const* const key :
         {R"("VersionCompatibilityConfigfilePath": "{root}/other/SSOVersionCompatibility.config")",
          R"("versionCompatibilityConfigFilePath": "{root}/other")",
          R"("VersionCompatibilityConfigFilePath": "{root}/other")",
          R"("VersionCompatibilityConfigfilePath": "%Unknown%/other")"}) {
        SCOPED_TRACE(key);
        Place place;
        place.ServerApp("lib").Compatibility("{}", "other");
        place.ClientConfig(std::string(R"({"ssoServer": {)") + key + "}}");
        Found const asked = Ask(place, {"GetSSOClientPluginModule"});
        EXPECT_THAT(asked.lines,
                    ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                                SearchesServer(), FindsServer("{root}/lib/HxSSO.exe"),
                                // The second place is not shown.
                                SearchesCompatibility("{root}/lib"),
                                MissesCompatibility("{root}/lib"), SearchesModule(Plugin, BareFile),
                                HasNoCompatibility(), MissesModuleWithoutFile(Plugin)));
    }
}

TEST(ModuleChoice, SearchesWithoutAServerApplication)
{
    Place place;
    place.Compatibility(Group(PluginKey, "[" + Entry(Chosen, "1") + "]"), "other")
        .ClientConfig(R"({"ssoServer": {"VersionCompatibilityConfigfilePath": "{root}/other"}})");
    std::string const file = "{root}/other/" + BareFile;
    Found const asked = Ask(place, {"GetSSOClientPluginModule"});
    EXPECT_THAT(asked.answers, ElementsAre(ExePath + Chosen));
    // Each resolution of the variable asks anew: for the line, for the first
    // attempt and for the second, which alone can hit.
    EXPECT_THAT(asked.lines,
                ElementsAreArray(
                    std::vector<LogMessage>{SearchesConfig(), FindsConfig(), LoadsConfig(),
                                            HasNoLocation(), SearchesServer(), MissesServer(),
                                            SearchesCompatibility("%SSOServerAppPath%")} +
                    Repeated(2, {SearchesServer(), MissesServer()}) +
                    std::vector<LogMessage>{FindsCompatibility(file), SearchesModule(Plugin, file),
                                            FindsPlugin(ExePath + Chosen)}));
}

TEST(ModuleChoice, SearchesForTheFileOnce)
{
    Place place;
    Found const asked =
        Ask(place, {"GetSSOClientPluginModule", "GetSSOClientPluginModule", "GetOpenSslModule"});
    EXPECT_THAT(asked.answers, ElementsAre("", "", ""));
    std::vector<LogMessage> const server{SearchesServer(), MissesServer()};
    std::vector<LogMessage> const plugin{SearchesModule(Plugin, BareFile), HasNoCompatibility(),
                                         MissesModuleWithoutFile(Plugin)};
    EXPECT_THAT(asked.lines,
                ElementsAreArray(
                    std::vector<LogMessage>{SearchesConfig(), MissesConfig()} + server +
                    std::vector<LogMessage>{SearchesCompatibility("%SSOServerAppPath%")} +
                    Repeated(2, server) +
                    std::vector<LogMessage>{MissesCompatibility("%SSOServerAppPath%")} +
                    Repeated(2, plugin) +
                    std::vector<LogMessage>{SearchesModule(OpenSsl, BareFile), HasNoCompatibility(),
                                            MissesModuleWithoutFile(OpenSsl)}));
}

TEST(ModuleChoice, ReadsTheFileFromTheCurrentDirectory)
{
    std::string const content = Group(PluginKey, "[" + Entry(Chosen, "1") + "]");
    // With no configured folder this is the second place.
    Place second;
    second.ServerApp("lib").Compatibility(content, "work");
    std::vector<std::string> const questions{"GetSSOClientPluginModule"};
    std::vector<LogMessage> const hit{SearchesModule(Plugin, BareFile),
                                      FindsPlugin(ExePath + Chosen)};
    EXPECT_THAT(
        Ask(second, questions).lines,
        ElementsAreArray(std::vector<LogMessage>{SearchesConfig(), MissesConfig(), SearchesServer(),
                                                 FindsServer("{root}/lib/HxSSO.exe"),
                                                 SearchesCompatibility("{root}/lib"),
                                                 FindsCompatibility(BareFile)} +
                         hit));
    // With one, a search that missed leaves the bare name.
    Place missed;
    missed.ServerApp("lib")
        .Compatibility(content, "work")
        .ClientConfig(R"({"ssoServer": {"VersionCompatibilityConfigfilePath": "{root}/other"}})");
    EXPECT_THAT(Ask(missed, questions).lines,
                ElementsAreArray(
                    std::vector<LogMessage>{
                        SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                        SearchesServer(), FindsServer("{root}/lib/HxSSO.exe"),
                        SearchesCompatibility("{root}/lib"), MissesCompatibility("{root}/lib")} +
                    hit));
}

TEST(ModuleChoice, NoticesThatTheFileIsGone)
{
    Choice choice("{}");
    Found const asked =
        Ask(choice, {"GetSSOClientPluginModule", "Remove=server/SSOVersionCompatibility.config",
                     "GetSSOClientPluginModule", "GetOpenSslModule"});
    EXPECT_THAT(asked.lines,
                ElementsAreArray(
                    RoadToFile() +
                    std::vector<LogMessage>{SearchesModule(Plugin), HasNoModules(PluginKey),
                                            MissesModule(Plugin), SearchesModule(Plugin),
                                            HasNoCompatibility(ServerFile),
                                            MissesModuleWithoutFile(Plugin, ServerFile),
                                            SearchesOpenSslOverride(), MissesOpenSslOverride(),
                                            SearchesModule(OpenSsl), HasNoCompatibility(ServerFile),
                                            MissesModuleWithoutFile(OpenSsl, ServerFile)}));
}

TEST(ModuleChoice, PrefersTheOpenSslOfTheClientConfiguration)
{
    struct {
        char const* openssl;
        char const* module;
    } const cases[] = {
        {R"("moduleName": "crypto.dll", "modulePath": "%ExePath%\\sub//")",
         "{root}/app/sub/crypto.dll"},
        {R"("moduleName": "crypto.dll", "modulePath": "%Unknown%/x")", "%Unknown%/x/crypto.dll"},
        {R"("moduleName": "%EXEPATH%", "modulePath": "x")", "x/{root}/app"},
        {R"("moduleName": "%AppPath%/m", "modulePath": "%Unknown%")", "%Unknown%/{root}/app/m"},
        {R"("moduleName": 5, "modulePath": true, "more": {})", "true/5"},
        {R"("moduleName": "Bücher ☃.dll", "modulePath": "\u00fc")", "ü/Bücher ☃.dll"},
    };
    for (auto const& [openssl, module] : cases) {
        SCOPED_TRACE(openssl);
        std::string expected = module;
        // The doubled slash before an absolute path goes.
        if (std::size_t const at = expected.find("/{root}");
            at != std::string::npos && !IsWindows())
            expected.erase(at, 1);
        Choice choice(CompatibilityFor("RecordingPlugin"));
        choice.ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}, "openssl": {)" +
                            std::string(openssl) + "}}");
        Found const asked = Ask(choice, {"GetOpenSslModule", "GetOpenSslModule"});
        EXPECT_THAT(asked.answers, ElementsAre(expected, expected));
        EXPECT_THAT(asked.lines,
                    ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                                SearchesOpenSslOverride(), FindsOpenSslOverride(expected)));
    }
}

TEST(ModuleChoice, LooksForTheServerApplicationFromTheOpenSslOfTheConfiguration)
{
    Choice choice(CompatibilityFor("RecordingPlugin"));
    choice.ClientConfig(
        R"({"ssoServer": {"searchPaths": "{root}/server"},
            "openssl": {"moduleName": "m", "modulePath": "%SSOServerAppPath%/x"}})");
    Found const asked = Ask(choice, {"GetOpenSslModule"});
    EXPECT_THAT(asked.answers, ElementsAre("{root}/server/x/m"));
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), HasNoLocation(),
                            SearchesOpenSslOverride(),
                            SearchesServer("HxSSO.exe", LibraryFirst + "\n{root}/server"),
                            FindsServer("{root}/server/HxSSO.exe"),
                            FindsOpenSslOverride("{root}/server/x/m")));
}

TEST(ModuleChoice, NeedsBothKeysOfAnOpenSslOverride)
{
    for (char const* const openssl :
         {R"({"moduleName": "m"})", R"({"modulePath": "x"})",
          R"({"moduleName": "m", "modulePath": ""})", R"({"moduleName": "", "modulePath": "x"})",
          R"({"moduleName": null, "modulePath": "x"})", "{}", "null"}) {
        SCOPED_TRACE(openssl);
        Choice choice(CompatibilityFor("RecordingPlugin"));
        choice.ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}, "openssl": )" +
                            std::string(openssl) + "}");
        Found const asked = Ask(choice, {"GetOpenSslModule"});
        EXPECT_THAT(asked.answers, ElementsAre("{root}/server/openssl/" + ModuleName("openssl")));
        EXPECT_THAT(asked.lines, Contains(SearchesOpenSslOverride()));
        EXPECT_THAT(asked.lines, Contains(MissesOpenSslOverride()));
    }
}

TEST(ModuleChoice, PassesTheOpenSslOverrideOverWithoutAConfiguration)
{
    Place place;
    place.ClientConfig("{").ServerApp("lib");
    place.Compatibility(CompatibilityFor("RecordingPlugin"), "lib");
    Found const asked = Ask(place, {"GetOpenSslModule"});
    std::string const file = "{root}/lib/" + BareFile;
    std::string const module = "{root}/lib/openssl/" + ModuleName("openssl");
    EXPECT_THAT(asked.answers, ElementsAre(module));
    EXPECT_THAT(asked.lines,
                ElementsAre(SearchesConfig(), FindsConfig(), LoadsConfig(), RefusesConfig(),
                            SearchesServer(), FindsServer("{root}/lib/HxSSO.exe"),
                            SearchesCompatibility("{root}/lib"), FindsCompatibility(file),
                            SearchesModule(OpenSsl, file), FindsOpenSsl(module)));
}
