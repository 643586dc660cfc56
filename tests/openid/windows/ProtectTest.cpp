// DPAPI, and what is particular about starting programs on Windows.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "framework/Variable.h"
#include "openid/TestFolder.h"
#include "openid/platform/Crypto.h"
#include "openid/platform/Files.h"
#include "openid/platform/System.h"

namespace Halvorix::OpenId {

namespace {

using Rig::TestFolder;
using Rig::WriteTo;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

} // namespace

TEST(Protect, HidesWhatItProtects)
{
    std::string const clear = "{\"refresh_token\": \"of-nobody\"}";
    std::string reason;

    std::string const guarded = Protect(clear, reason);

    EXPECT_THAT(guarded, Not(HasSubstr("of-nobody")));
    EXPECT_NE(Protect(clear, reason), guarded); // another salt
}

TEST(Unprotect, RefusesWhatIsDamaged)
{
    std::string reason;
    std::string const guarded = Protect("a secret of some length, so that there are bytes", reason);
    for (std::size_t const at : {guarded.size() / 2, guarded.size() - 40, guarded.size() - 1}) {
        std::string damaged = guarded;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        reason.clear();
        EXPECT_EQ(Unprotect(damaged, reason), "") << at;
        EXPECT_THAT(reason, Not(IsEmpty())) << at;
    }
    for (std::string const& foreign : {std::string(), std::string("{}"), guarded.substr(1),
                                       guarded.substr(0, 10), std::string(1000, '\0')}) {
        reason.clear();
        EXPECT_EQ(Unprotect(foreign, reason), "");
        EXPECT_THAT(reason, Not(IsEmpty()));
    }
}

// cmd.exe would run what stands behind an "&" of the address.
TEST(OpenInBrowser, StartsNoBatchFile)
{
    TestFolder const folder;
    for (char const* const name :
         {"browser.bat", "browser.CMD", "browser.cmd. ", "browser.bat\""}) {
        Rig::SetVariable("HXSSO_OPENID_BROWSER", PathText(folder / name));
        std::string reason;

        EXPECT_FALSE(OpenInBrowser("https://login.example/?a=b&calc.exe", reason)) << name;
        EXPECT_THAT(reason, HasSubstr("batch file"));
    }
    Rig::SetVariable("HXSSO_OPENID_BROWSER", "");
}

TEST(ReadFile, TakesNoPipe)
{
    FileContent const content = ReadFile("\\\\.\\pipe\\hxsso-no-such-pipe", 100);
    EXPECT_NE(content.state, FileContent::State::Read);
    EXPECT_NE(ReadFile("NUL", 100).state, FileContent::State::Read);
}

TEST(ReplacePrivateFile, WaitsForWhoeverHasTheFileOpenForAMoment)
{
    TestFolder const folder;
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(folder / "file", "old", reason)) << reason;
    auto reader = std::make_unique<std::ifstream>(folder / "file");
    std::thread closing([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        reader.reset();
    });

    EXPECT_TRUE(ReplacePrivateFile(folder / "file", "new", reason)) << reason;
    closing.join();

    EXPECT_EQ(Rig::ContentOf(folder / "file"), "new");
}

} // namespace Halvorix::OpenId
