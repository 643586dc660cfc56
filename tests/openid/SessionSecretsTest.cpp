// What must not stand in files.

#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "openid/SessionWorld.h"
#include "openid/platform/Crypto.h"
#include "openid/platform/Files.h"

using namespace Halvorix::OpenId;
using Rig::All;
using Rig::SessionWorld;
using Rig::TestProvider;
using std::chrono::seconds;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

/// The files below a folder that hold one of the provider's secrets.
std::vector<std::string> FilesWithSecrets(fs::path const& folder, TestProvider const& provider)
{
    std::vector<std::string> found;
    for (auto const& entry : fs::recursive_directory_iterator(folder)) {
        std::string const content = Rig::ContentOf(entry.path());
        for (std::string const& secret : provider.Secrets())
            if (secret.size() > 8 && content.find(secret) != std::string::npos)
                found.push_back(PathText(entry.path().filename()) + ": " + secret);
    }
    return found;
}

/// Whether a file's mode protects what is in it, and not the content itself.
bool IsStoreInClear()
{
    std::string reason;
    return Protect("a secret", reason) == "a secret";
}

} // namespace

TEST(SessionSecrets, StandInNoLogAndInTheStoreOnlyProtected)
{
    SessionWorld world;
    auto const session = world.NewSession();
    session->SetProxyCredential({"proxy", 3128, "user", "planted-proxy-password"});
    ASSERT_TRUE(session->LoginInBrowser(""));
    world.Pass(seconds(3600));
    ASSERT_FALSE(session->AccessToken(All).text->empty());
    ASSERT_TRUE(session->RefreshToken(All));
    ASSERT_TRUE(session->AccessToken({1, "all:secrets"}).text->empty());
    EXPECT_GT(world.provider.Secrets().size(), 10u);
    EXPECT_THAT(FilesWithSecrets(world.folder / "log", world.provider), IsEmpty());
    if (!IsStoreInClear()) {
        EXPECT_THAT(FilesWithSecrets(session->StoreFolder(), world.provider), IsEmpty());
    }

    ASSERT_TRUE(session->Logout());
    EXPECT_THAT(FilesWithSecrets(world.folder.Path(), world.provider), IsEmpty());
    EXPECT_EQ(world.LinesWith("planted"), 0);
}

TEST(SessionSecrets, StandInNoLineAboutAProviderThatRepeatsThem)
{
    SessionWorld world;
    auto const session = world.NewSession();
    ASSERT_TRUE(session->LoginInBrowser(""));
    std::string const refreshToken = world.provider.Last("refresh_token");
    for (char const* const code : {"invalid_request", "invalid_grant"}) {
        world.Pass(seconds(3600));
        world.provider.Order([&](TestProvider::Behaviour& behaviour) {
            behaviour.refreshStatus = 400;
            behaviour.refreshBody = R"({"error": ")" + std::string(code) +
                                    R"(", "error_description": "no )" + refreshToken + "\"}";
        });
        EXPECT_TRUE(session->AccessToken(All).text->empty());
    }
    EXPECT_FALSE(session->IsLoggedIn());
    EXPECT_EQ(world.LinesWith("Error "), 2) << world.LogText();
    EXPECT_THAT(FilesWithSecrets(world.folder / "log", world.provider), IsEmpty());
}
