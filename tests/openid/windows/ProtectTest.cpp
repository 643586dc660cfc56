// DPAPI, and what is particular about files, sockets and starting programs on Windows.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "framework/Variable.h"
#include "openid/TestFolder.h"
#include "openid/platform/Crypto.h"
#include "openid/platform/Files.h"
#include "openid/platform/ListeningSocket.h"
#include "openid/platform/System.h"
#include "openid/platform/windows/Windows.h"
#include "openid/session/TokenStore.h"

#include <winsock2.h>

namespace Halvorix::OpenId {

namespace {

using Rig::TestFolder;
using Rig::WriteTo;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char const* NotNeeded = "this system's DPAPI needs nothing that a process can lose";

/// While it lives, the process finds no provider of cryptography, which Wine's DPAPI needs.
class WithoutProviders {
public:
    WithoutProviders()
    {
        ::RegCreateKeyExW(HKEY_CURRENT_USER, Name, 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                          nullptr, &empty, nullptr);
        ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, empty);
    }
    ~WithoutProviders()
    {
        ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        ::RegCloseKey(empty);
        ::RegDeleteKeyW(HKEY_CURRENT_USER, Name);
    }
    WithoutProviders(WithoutProviders const&) = delete;
    WithoutProviders& operator=(WithoutProviders const&) = delete;

private:
    static constexpr wchar_t const* Name = L"Software\\HxSSOOpenIDTestWithoutProviders";
    HKEY empty = nullptr;
};

Handle OpenedBy(std::filesystem::path const& file, DWORD sharing)
{
    return Handle(::CreateFileW(file.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

void ExpectDamaged(std::string const& bytes)
{
    SCOPED_TRACE(bytes.substr(0, 20));
    Unprotected const made = Unprotect(bytes);
    EXPECT_EQ(made.state, Unprotected::State::Damaged) << made.reason;
    EXPECT_EQ(made.bytes, "");
    EXPECT_THAT(made.reason, Not(IsEmpty()));
}

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
        ExpectDamaged(damaged);
    }
    for (std::string const& foreign : {std::string(), std::string("{}"), guarded.substr(1),
                                       guarded.substr(0, 10), std::string(1000, '\0')})
        ExpectDamaged(foreign);
}

// As in a logon without the user's password, by a key of SSH or of a task.
TEST(Unprotect, TellsWhatDpapiCannotAnswerForNow)
{
    std::string reason;
    std::string const guarded = Protect("a secret", reason);
    {
        WithoutProviders const none;
        Unprotected const now = Unprotect(guarded);
        if (now.state == Unprotected::State::Clear)
            GTEST_SKIP() << NotNeeded;
        EXPECT_EQ(now.state, Unprotected::State::Failed) << now.reason;
        EXPECT_EQ(now.bytes, "");
        EXPECT_THAT(now.reason, Not(IsEmpty()));
        ExpectDamaged("{}");
        ExpectDamaged(std::string(1000, '\0'));
    }
    EXPECT_EQ(Unprotect(guarded).bytes, "a secret");
}

TEST(TokenStore, SetsNothingAsideThatDpapiCannotMakeClearForNow)
{
    TestFolder const folder;
    StoredLogin login;
    login.issuer = "https://login.example";
    login.clientId = "desktop";
    login.subject = "alice-1";
    TokenStore store(folder.Path());
    ASSERT_TRUE(store.Write(login));
    auto const file = store.FileOf(login.issuer, login.clientId);
    std::string const content = Rig::ContentOf(file);
    {
        WithoutProviders const none;
        if (Unprotect(content).state == Unprotected::State::Clear)
            GTEST_SKIP() << NotNeeded;
        auto const read = store.Read(login.issuer, login.clientId);
        ASSERT_FALSE(read);
        EXPECT_THAT(read.Why().reason, HasSubstr(PathText(file) + " cannot be read for now: "));
        EXPECT_EQ(read.Why().remedy, "log on to Windows with the password of the user whose login "
                                     "it is, or sign in again");
    }
    EXPECT_EQ(Rig::ContentOf(file), content);
    auto const read = store.Read(login.issuer, login.clientId);
    ASSERT_TRUE(read && *read);
    EXPECT_EQ((*read)->subject, "alice-1");
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

TEST(ReadFile, WaitsForWhoeverHasTheFileForHimselfForAMoment)
{
    TestFolder const folder;
    WriteTo(folder / "file", "content");
    FileContent content;
    // A machine that is busy may let go too late once.
    for (int tries = 0; tries < 20 && content.state != FileContent::State::Read; ++tries) {
        auto other = std::make_unique<Handle>(OpenedBy(folder / "file", 0));
        ASSERT_TRUE(*other);
        std::thread closing([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            other.reset();
        });
        content = ReadFile(folder / "file", 100);
        closing.join();
    }
    EXPECT_EQ(content.bytes, "content") << content.reason;
}

TEST(RemovePrivateFile, WaitsForWhoeverHasTheFileForHimselfForAMoment)
{
    TestFolder const folder;
    WriteTo(folder / "file", "a secret");
    WriteTo(folder / "file.new", "another");
    auto other = std::make_unique<Handle>(OpenedBy(folder / "file.new", 0));
    ASSERT_TRUE(*other);
    std::thread closing([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        other.reset();
    });

    EXPECT_TRUE(RemovePrivateFile(folder / "file"));
    closing.join();

    EXPECT_FALSE(exists(folder / "file"));
    EXPECT_FALSE(exists(folder / "file.new"));
}

TEST(RemovePrivateFile, LeavesNothingButZerosWhereSomebodyKeepsItOpen)
{
    TestFolder const folder;
    WriteTo(folder / "file", "a secret");
    WriteTo(folder / "file.new", "another");
    Handle const other = OpenedBy(folder / "file.new", FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_TRUE(other);

    EXPECT_TRUE(RemovePrivateFile(folder / "file"));

    EXPECT_FALSE(exists(folder / "file"));
    EXPECT_FALSE(exists(folder / "file.gone"));
    EXPECT_EQ(Rig::ContentOf(folder / "file.new"), std::string(7, '\0'));
}

TEST(RemovePrivateFile, FailsWhereTheContentStays)
{
    TestFolder const folder;
    WriteTo(folder / "file.new", "another");
    Handle const other = OpenedBy(folder / "file.new", FILE_SHARE_READ);
    ASSERT_TRUE(other);

    EXPECT_FALSE(RemovePrivateFile(folder / "file"));
}

TEST(KeepFromChildren, KeepsASocketFromThem)
{
    auto const socket = NewListeningSocket(false);
    ASSERT_GE(socket, 0);
    auto* const handle = reinterpret_cast<HANDLE>(socket);
    ::SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    DWORD flags = 0;
    ASSERT_TRUE(::GetHandleInformation(handle, &flags));
    ASSERT_EQ(flags & HANDLE_FLAG_INHERIT, DWORD{HANDLE_FLAG_INHERIT});

    KeepFromChildren(socket);

    ASSERT_TRUE(::GetHandleInformation(handle, &flags));
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0u);
    ::closesocket(static_cast<SOCKET>(socket));
}

} // namespace Halvorix::OpenId
