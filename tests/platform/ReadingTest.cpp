// How the two files are read: in which order, and what is left of a reading that
// ends in an exception.

#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <json/writer.h>

#include "platform/OverFakeSystem.h"

using Halvorix::SSOServices::SSOClientConfig;
using Halvorix::SSOServices::SSOPathResolver;
using Halvorix::SSOServices::Version;
using Rig::fakeSystem;
using testing::ElementsAreArray;
using testing::HasSubstr;

namespace {

class Reading : public Rig::OverFakeSystem {};

/// Shows what it has read.
class Reader : public SSOPathResolver {
public:
    Reader() : SSOPathResolver(Version{"10"}, {}) {}

    /// In the order of the reading; the list of directories is one text.
    std::vector<std::string> Values() const
    {
        SSOClientConfig const& read = GetClientConfig();
        std::vector<std::string> values{
            Narrow(read.appName),  Narrow(read.exeName),
            read.processName,      read.serverName,
            Narrow(read.bundleId), Narrow(read.versionCompatibilityConfigFilePath)};
        values.push_back(read.searchPaths.empty() ? "" : Narrow(read.searchPaths.front()));
        values.push_back(Narrow(read.openSslModuleName));
        values.push_back(Narrow(read.openSslModulePath));
        return values;
    }

private:
    static std::string Narrow(std::wstring const& text) { return {text.begin(), text.end()}; }
};

struct Key {
    char const* member;
    char const* name;
};

/// In the order of the reading.
std::vector<Key> const keys{
    {"ssoServer", "appName"},     {"ssoServer", "exeName"},
    {"ssoServer", "processName"}, {"ssoServer", "serverName"},
    {"ssoServer", "bundleId"},    {"ssoServer", "VersionCompatibilityConfigfilePath"},
    {"ssoServer", "searchPaths"}, {"openssl", "moduleName"},
    {"openssl", "modulePath"}};

std::string ValueOf(Key const& key) { return std::string("of-") + key.name; }

} // namespace

TEST_F(Reading, OfTheConfigurationKeepsWhatCameBeforeAWrongTypeAndNothingBehindIt)
{
    fakeSystem.openings = {{Halvorix::Platform::LocationView::Own, 2}};
    for (Key const& wrong : keys) {
        SCOPED_TRACE(wrong.name);
        Json::Value root;
        for (Key const& key : keys)
            root[key.member][key.name] = ValueOf(key);
        root[wrong.member][wrong.name] = Json::Value(Json::arrayValue);
        Write("SSOClient.config", Json::writeString(Json::StreamWriterBuilder(), root));
        Reader reader;
        EXPECT_THROW(reader.GetSSOServerAppPath(), Json::LogicError);
        std::vector<std::string> expected;
        for (Key const& key : keys) {
            if (&key == &wrong)
                break;
            expected.push_back(ValueOf(key));
        }
        // The defaults are missing, too.
        expected.resize(keys.size());
        EXPECT_THAT(reader.Values(), ElementsAreArray(expected));
    }
}

TEST_F(Reading, AsksOnceForTheKindOfProcessHoweverManyModulesThereAre)
{
    std::string const entry = R"({"module": "plugin.dll", "modulePath": "/plugin",
        "compatibleSsoServicesVersion": {"minVersion": "10"}})";
    Write("SSOVersionCompatibility.config", R"({"ssoClientPlugin": [)" + entry + ", " + entry +
                                                ", " + entry + R"(], "openssl": [)" + entry + "]}");
    EXPECT_EQ(resolver.GetSSOClientPluginModule(), L"/plugin/plugin.dll");
    EXPECT_EQ(fakeSystem.processQuestions, 1);
    resolver.GetOpenSslModule();
    EXPECT_EQ(fakeSystem.processQuestions, 2);
}

// An object whose path vanishes and whose version is no text: the version is read
// before the path is blamed.
TEST_F(Reading, OfAVersionComesBeforeTheTestOfThePath)
{
    Write("SSOVersionCompatibility.config", "{}");
    EXPECT_EQ(resolver.GetSSOClientPluginModule(), L"");
    // The file is found by now; without a root nothing is left of its entry's path.
    fakeSystem.leadingSlashIsRoot = false;
    Write("SSOVersionCompatibility.config",
          R"({"ssoClientPlugin": [{"module": "plugin.dll", "modulePath": "//", "version": []}]})");
    EXPECT_THAT([&] { resolver.GetSSOClientPluginModule(); },
                testing::ThrowsMessage<Json::LogicError>("Type is not convertible to string"));
    EXPECT_THAT(log, testing::Each(testing::Not(HasSubstr(L"Object ignored"))));
}

// The path is kept as it was spelled, and is the answer from then on.
TEST_F(Reading, OfAnOpenSslOverrideKeepsItThoughItsExpansionThrows)
{
    Write("SSOClient.config",
          R"({"openssl": {"moduleName": "crypto.dll", "modulePath": "%SSOServerAppPath%//ssl"}})");
    int searches = 0;
    SSOPathResolver throwing(Version{"10"}, [&](std::wstring const& text, Halvorix::Log::LogLevel) {
        if (text.find(L"Searching for SSO server app") == 0) {
            ++searches;
            throw std::runtime_error("no room");
        }
    });
    EXPECT_THROW(throwing.GetOpenSslModule(), std::runtime_error);
    EXPECT_EQ(throwing.GetOpenSslModule(), L"%SSOServerAppPath%/ssl/crypto.dll");
    EXPECT_EQ(searches, 1);
}
