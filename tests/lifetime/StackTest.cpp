// Documents that are nested as deeply as they may be, on a thread with little stack.

#include <string>

#include <gmock/gmock.h>

#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <SSOServicesPrivate.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/System.h"
#include "framework/ThisBuild.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServices::OAuth2TokenSpec;
using Rig::Installation;
using Rig::Outcome;

namespace {

constexpr std::size_t enoughStack = 384 * 1024;
constexpr std::size_t levels = 998;

/// A member that nobody reads, before one that shows that all was read.
std::string Nested(std::string const& behind)
{
    return R"({"deep": )" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + ", " +
           behind + "}";
}

HOST_PROGRAM(ReadsOnLittleStack)
{
    std::size_t const stack = std::stoul(arguments[0]);
    Rig::RunOnStack(stack, [&] {
        OAuth2TokenSpec spec;
        std::string const document = Nested(R"("type": 7)");
        report("read", SSOServicesPrivate::JsonToOAuth2TokenSpec(document.c_str(), spec));
        report("type", spec.GetType());
        report("server", SSOClientPrivate::GetSSOServerAppPath());
        report("plugin", SSOClientPrivate::GetSSOClientPluginModule());
    });
}

} // namespace

TEST(Stack, Of384KiBIsEnoughForDocumentsNestedNearlyAThousandTimes)
{
    if (Rig::IsSanitized())
        GTEST_SKIP() << "with a sanitizer each level takes more";
    Installation installation;
    installation.ClientConfig(Nested(R"("ssoServer": {"searchPaths": "{root}/server"})"))
        .ServerApp()
        .Compatibility(Nested(R"("ssoClientPlugin": [{"module": "Chosen", "modulePath": "{root}",
            "compatibleSsoServicesVersion": {"minVersion": "10"}}])"));
    Outcome const outcome = installation.Run("ReadsOnLittleStack", {std::to_string(enoughStack)});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_FALSE(outcome.ending.crashed);
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_EQ(outcome["read"], true);
    EXPECT_EQ(outcome["type"], 7);
    EXPECT_EQ(outcome["server"], "{root}/server");
    EXPECT_EQ(outcome["plugin"], "{root}/Chosen");
}
