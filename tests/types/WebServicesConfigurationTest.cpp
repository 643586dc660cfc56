#include <WebServicesConfiguration.h>

#include <cstdint>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "support/GetterTexts.h"
#include "support/GuardedBuffer.h"

using Halvorix::WebServices::Server;
using Halvorix::WebServices::WebServicesConfiguration;
using HxSSOTest::GetterText;
using HxSSOTest::GuardedBuffer;

namespace {

struct Field {
    char const* name;
    void (WebServicesConfiguration::*set)(wchar_t const*);
    int (WebServicesConfiguration::*get)(wchar_t*, int) const;
    wchar_t const* text;
};

using W = WebServicesConfiguration;

// All fields but the inert one. Not constexpr: to Visual Studio the address of an imported
// function is no constant.
Field const Fields[] = {
    {"ConsumerKey", &W::SetConsumerKey, &W::GetConsumerKey, L"consumer key"},
    {"ConsumerSecret", &W::SetConsumerSecret, &W::GetConsumerSecret, L"consumer secret"},
    {"SerialNumber", &W::SetSerialNumber, &W::GetSerialNumber, L"000-11111111"},
    {"ProductLineCode", &W::SetProductLineCode, &W::GetProductLineCode, L"PLC"},
    {"UPIRelease", &W::SetUPIRelease, &W::GetUPIRelease, L"release"},
    {"UPIMaster", &W::SetUPIMaster, &W::GetUPIMaster, L"master"},
    {"UPIBuild", &W::SetUPIBuild, &W::GetUPIBuild, L"build"},
    {"FeatureName", &W::SetFeatureName, &W::GetFeatureName, L"feature"},
    {"FeatureVersion", &W::SetFeatureVersion, &W::GetFeatureVersion, L"1.2.3"},
    {"OAuth2ConsumerKey", &W::SetOAuth2ConsumerKey, &W::GetOAuth2ConsumerKey, L"oauth key"},
    {"OAuth2ConsumerSecret", &W::SetOAuth2ConsumerSecret, &W::GetOAuth2ConsumerSecret,
     L"oauth secret"},
    {"OAuth2AccessTokenScope", &W::SetOAuth2AccessTokenScope, &W::GetOAuth2AccessTokenScope,
     L"data:write data:read"},
};

void Fill(WebServicesConfiguration& configuration)
{
    configuration.SetServer(static_cast<Server>(7));
    for (Field const& field : Fields) {
        (configuration.*field.set)(field.text);
    }
}

void ExpectFilled(WebServicesConfiguration const& configuration)
{
    EXPECT_EQ(configuration.GetServer(), static_cast<Server>(7));
    for (Field const& field : Fields) {
        EXPECT_EQ(GetterText(configuration, field.get), field.text) << field.name;
    }
    EXPECT_EQ(configuration.GetCIPUserId(nullptr, 0), 0);
}

void ExpectDefault(WebServicesConfiguration const& configuration)
{
    EXPECT_EQ(configuration.GetServer(), static_cast<Server>(0));
    for (Field const& field : Fields) {
        EXPECT_EQ((configuration.*field.get)(nullptr, 0), 0) << field.name;
    }
    EXPECT_EQ(configuration.GetCIPUserId(nullptr, 0), 0);
}

} // namespace

TEST(WebServicesConfiguration, StartsEmpty) { ExpectDefault(WebServicesConfiguration()); }

TEST(WebServicesConfiguration, KeepsEveryFieldApart)
{
    WebServicesConfiguration configuration;
    Fill(configuration);
    ExpectFilled(configuration);

    for (Field const& changed : Fields) {
        WebServicesConfiguration one;
        (one.*changed.set)(L"x");
        for (Field const& field : Fields) {
            EXPECT_EQ((one.*field.get)(nullptr, 0), field.name == changed.name ? 1 : 0)
                << changed.name << " seen through " << field.name;
        }
    }
}

TEST(WebServicesConfiguration, ReplacesTextsAndServer)
{
    WebServicesConfiguration configuration;
    Fill(configuration);
    for (Field const& field : Fields) {
        (configuration.*field.set)(L"");
    }
    configuration.SetServer(static_cast<Server>(0));
    ExpectDefault(configuration);
}

TEST(WebServicesConfiguration, StoresACopyOfTheArgument)
{
    for (Field const& field : Fields) {
        WebServicesConfiguration configuration;
        std::wstring argument = L"first";
        (configuration.*field.set)(argument.c_str());
        argument.assign(5, L'z');
        EXPECT_EQ(GetterText(configuration, field.get), L"first") << field.name;
    }
}

TEST(WebServicesConfiguration, KeepsTextsAsGiven)
{
    wchar_t const* const text = L" \t b  a b \u00e9\u20ac\n ";
    for (Field const& field : Fields) {
        WebServicesConfiguration configuration;
        (configuration.*field.set)(text);
        EXPECT_EQ(GetterText(configuration, field.get), text) << field.name;
    }
}

TEST(WebServicesConfiguration, KeepsAScopeWithDoubledAndTrailingBlanks)
{
    WebServicesConfiguration configuration;
    configuration.SetOAuth2AccessTokenScope(L"write  read  ");
    EXPECT_EQ(GetterText(configuration, &WebServicesConfiguration::GetOAuth2AccessTokenScope),
              L"write  read  ");
}

TEST(WebServicesConfiguration, CutsEveryTextToTheBuffer)
{
    for (Field const& field : Fields) {
        SCOPED_TRACE(field.name);
        WebServicesConfiguration configuration;
        (configuration.*field.set)(L"abc");

        EXPECT_EQ((configuration.*field.get)(nullptr, -1), 3);
        struct Row {
            int capacity;
            int answer;
            std::wstring stored;
        };
        for (Row const& row : {
                 Row{4, 3, std::wstring(L"abc\0", 4)},
                 Row{3, 2, std::wstring(L"ab\0", 3)},
                 Row{1, 0, std::wstring(1, L'\0')},
                 Row{0, 0, L""},
             }) {
            SCOPED_TRACE(row.capacity);
            GuardedBuffer<wchar_t> buffer(row.capacity);
            EXPECT_EQ((configuration.*field.get)(buffer.Data(), row.capacity), row.answer);
            EXPECT_EQ(buffer.Content(), row.stored);
            EXPECT_TRUE(buffer.GuardsIntact());
        }
        GuardedBuffer<wchar_t> buffer(4);
        EXPECT_EQ((configuration.*field.get)(buffer.Data(), -4), 0);
        EXPECT_EQ(buffer.Content(), buffer.Untouched());
    }
}

TEST(WebServicesConfiguration, NeverHasACIPUserId)
{
    WebServicesConfiguration configuration;
    configuration.SetCIPUserId(L"x");
    EXPECT_EQ(configuration.GetCIPUserId(nullptr, 0), 0);

    GuardedBuffer<wchar_t> buffer(4);
    EXPECT_EQ(configuration.GetCIPUserId(buffer.Data(), 4), 0);
    EXPECT_EQ(buffer.First(1), std::wstring(1, L'\0'));
    EXPECT_TRUE(buffer.GuardsIntact());

    GuardedBuffer<wchar_t> none(4);
    EXPECT_EQ(configuration.GetCIPUserId(none.Data(), 0), 0);
    EXPECT_EQ(none.Content(), none.Untouched());

    configuration.SetCIPUserId(nullptr);
    EXPECT_EQ(configuration.GetCIPUserId(nullptr, 0), 0);

    WebServicesConfiguration const copy(configuration);
    EXPECT_EQ(copy.GetCIPUserId(nullptr, 0), 0);
}

TEST(WebServicesConfiguration, CIPUserIdTouchesNoOtherField)
{
    WebServicesConfiguration configuration;
    Fill(configuration);
    configuration.SetCIPUserId(L"x");
    ExpectFilled(configuration);
}

TEST(WebServicesConfiguration, KeepsAnyServerNumber)
{
    WebServicesConfiguration configuration;
    for (std::int32_t number : {1, -1, 4711, INT32_MAX, INT32_MIN}) {
        configuration.SetServer(static_cast<Server>(number));
        EXPECT_EQ(static_cast<std::int32_t>(configuration.GetServer()), number);
    }
}

TEST(WebServicesConfiguration, CopiesAreIndependent)
{
    WebServicesConfiguration original;
    Fill(original);
    WebServicesConfiguration copy(original);
    ExpectFilled(copy);

    for (Field const& field : Fields) {
        (copy.*field.set)(L"changed");
    }
    copy.SetServer(static_cast<Server>(1));
    ExpectFilled(original);

    Fill(copy);
    for (Field const& field : Fields) {
        (original.*field.set)(L"changed");
    }
    original.SetServer(static_cast<Server>(1));
    ExpectFilled(copy);
}

TEST(WebServicesConfiguration, AssignsEveryField)
{
    WebServicesConfiguration source;
    Fill(source);
    WebServicesConfiguration target;
    target.SetConsumerKey(L"old");
    EXPECT_EQ(&(target = source), &target);
    ExpectFilled(target);

    source.SetConsumerKey(L"changed");
    ExpectFilled(target);

    target = WebServicesConfiguration();
    ExpectDefault(target);
}

TEST(WebServicesConfiguration, SurvivesSelfAssignment)
{
    WebServicesConfiguration configuration;
    Fill(configuration);
    WebServicesConfiguration const& itself = configuration;
    EXPECT_EQ(&(configuration = itself), &configuration);
    ExpectFilled(configuration);
}

TEST(WebServicesConfiguration, IsDeletedThroughItsBase)
{
    class Derived : public WebServicesConfiguration {
    public:
        explicit Derived(bool& destroyed) : destroyed(destroyed) {}
        ~Derived() override { destroyed = true; }

    private:
        bool& destroyed;
    };

    bool destroyed = false;
    std::unique_ptr<WebServicesConfiguration> configuration(new Derived(destroyed));
    Fill(*configuration);
    configuration.reset();
    EXPECT_TRUE(destroyed);
}
