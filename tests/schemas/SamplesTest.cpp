#include <algorithm>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <json/reader.h>

#include "discovery/Lines.h"
#include "discovery/Place.h"
#include "framework/ThisBuild.h"

// The files that the schemas in docs/schemas are held against, read by the
// library. check.py tells what their folders mean.

using namespace Rig;

namespace {

namespace fs = std::filesystem;

struct Sample {
    std::string name;
    std::string content;
};

std::vector<Sample> Samples(std::string const& folder)
{
    std::vector<Sample> samples;
    for (auto const& entry : fs::directory_iterator(SourceFile("tests/schemas") / folder)) {
        std::ifstream stream(entry.path(), std::ios::binary);
        samples.push_back(
            {entry.path().filename().u8string(), {std::istreambuf_iterator<char>(stream), {}}});
    }
    std::sort(samples.begin(), samples.end(),
              [](Sample const& a, Sample const& b) { return a.name < b.name; });
    EXPECT_FALSE(samples.empty()) << folder;
    return samples;
}

bool BeginsWith(std::string const& text, std::string const& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

bool Threw(Found const& asked)
{
    return std::any_of(asked.answers.begin(), asked.answers.end(),
                       [](std::string const& answer) { return BeginsWith(answer, "Json::"); });
}

bool HasLine(Found const& asked, int level, std::string const& beginning)
{
    return std::any_of(asked.lines.begin(), asked.lines.end(), [&](LogMessage const& line) {
        return line.level == level && BeginsWith(line.text, beginning);
    });
}

Found ReadClientConfig(std::string const& content)
{
    Place place;
    place.ClientConfig(content);
    return Ask(place, {"GetSSOServerAppPath", "GetSSOServerName", "GetSSOServerProcessName",
                       "GetOpenSslModule"});
}

bool IsClientConfigRefused(Found const& asked)
{
    return Threw(asked) || HasLine(asked, Error, "Failed to load client config file");
}

/// What the file says, by the JSON library alone; the defaults are the reader's.
struct Values {
    explicit Values(std::string const& content)
    {
        Json::Value root;
        EXPECT_TRUE(Json::Reader().parse(content, root));
        Json::Value& server = root["ssoServer"];
        std::string const exeName = server["exeName"].asString();
        appName = FirstOf({server["appName"].asString(), exeName, "HxSSO.exe"});
        serverName = FirstOf({server["serverName"].asString(), "Halvorix.SSO.DefaultServer-v2"});
        processName = FirstOf({server["processName"].asString(), serverName});
        Json::Value& openssl = root["openssl"];
        hasOpenSsl =
            !openssl["moduleName"].asString().empty() && !openssl["modulePath"].asString().empty();
    }

    static std::string FirstOf(std::vector<std::string> const& texts)
    {
        return *std::find_if(texts.begin(), texts.end(), [](auto& text) { return !text.empty(); });
    }

    std::string appName, serverName, processName;
    bool hasOpenSsl;
};

void ExpectClientConfigsAreRead(std::string const& folder)
{
    for (Sample const& sample : Samples("SSOClient/" + folder)) {
        SCOPED_TRACE(sample.name);
        Found const asked = ReadClientConfig(sample.content);
        EXPECT_FALSE(IsClientConfigRefused(asked));
        Values const values(sample.content);
        EXPECT_TRUE(HasLine(asked, Info, "Searching for SSO server app " + values.appName + " in"));
        EXPECT_THAT(asked.answers, testing::ElementsAre(testing::_, values.serverName,
                                                        values.processName, testing::_));
        EXPECT_EQ(asked.Logged(MissesOpenSslOverride()) == 0, values.hasOpenSsl);
    }
}

Found ReadCompatibility(std::string const& content)
{
    Place place;
    place.ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})");
    place.ServerApp().Compatibility(content);
    return Ask(place, {"GetSSOClientPluginModule", "GetOpenSslModule"});
}

/// What is said of the file itself: no plugin may fit, and no OpenSSL be listed.
bool IsCompatibilityRefused(Found const& asked)
{
    for (char const* const beginning :
         {"Failed to load file ", "Blank or missing key ", "Missing object ",
          "Invalid version range ",
          "Version compatibility list is empty under key ssoClientPlugin"})
        if (HasLine(asked, Error, beginning))
            return true;
    return Threw(asked);
}

void ExpectCompatibilitiesAreRead(std::string const& folder)
{
    for (Sample const& sample : Samples("SSOVersionCompatibility/" + folder)) {
        SCOPED_TRACE(sample.name);
        Found const asked = ReadCompatibility(sample.content);
        EXPECT_FALSE(IsCompatibilityRefused(asked));
        ASSERT_FALSE(asked.answers.empty());
        EXPECT_EQ(asked.answers[0], "{root}/app/Chosen.dll");
    }
}

} // namespace

TEST(ClientConfigSamples, AreReadAsTheSchemaSays) { ExpectClientConfigsAreRead("accepted"); }

TEST(ClientConfigSamples, AreReadThoughTheSchemaWarns)
{
    ExpectClientConfigsAreRead("reader-only");
}

TEST(ClientConfigSamples, AreRefusedAsTheSchemaSays)
{
    for (Sample const& sample : Samples("SSOClient/refused"))
        EXPECT_TRUE(IsClientConfigRefused(ReadClientConfig(sample.content))) << sample.name;
}

TEST(CompatibilitySamples, AreReadAsTheSchemaSays) { ExpectCompatibilitiesAreRead("accepted"); }

TEST(CompatibilitySamples, AreReadThoughTheSchemaWarns)
{
    ExpectCompatibilitiesAreRead("reader-only");
}

TEST(CompatibilitySamples, AreRefusedAsTheSchemaSays)
{
    for (Sample const& sample : Samples("SSOVersionCompatibility/refused"))
        EXPECT_TRUE(IsCompatibilityRefused(ReadCompatibility(sample.content))) << sample.name;
}

TEST(CompatibilitySamples, DependOnTheKindOfProcess)
{
    for (Sample const& sample : Samples("SSOVersionCompatibility/schema-only"))
        EXPECT_TRUE(IsCompatibilityRefused(ReadCompatibility(sample.content))) << sample.name;
}
