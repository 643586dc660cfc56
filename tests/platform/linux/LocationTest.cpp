// The file that stands for the registry value.

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "platform/Platform.h"

namespace Platform = Halvorix::Platform;

namespace {

class Location : public testing::Test {
protected:
    Location() { std::filesystem::create_directories(folder / "full/Halvorix/HxSSO"); }
    ~Location() override { std::filesystem::remove_all(folder); }

    void Write(std::string const& content) const
    {
        std::ofstream(folder / "full/Halvorix/HxSSO/Location", std::ios::binary) << content;
    }

    /// Opens the key with these folders, which name the test's own by {}.
    Platform::ErrorCode Open(std::string directories)
    {
        for (std::size_t at = 0; (at = directories.find("{}")) != std::string::npos;)
            directories.replace(at, 2, folder.string());
        ::setenv("XDG_CONFIG_DIRS", directories.c_str(), 1);
        return Platform::OpenLocationKey(Platform::LocationView::Own, key);
    }

    std::filesystem::path const folder =
        std::filesystem::temp_directory_path() /
        ("hxsso-location-" +
         std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    Platform::LocationKey key = nullptr;
};

} // namespace

TEST_F(Location, PassesOverEmptyFolderNames)
{
    Write("/server\nmore");
    ASSERT_EQ(Open("::{}/none::{}/full:"), 0u);
    std::wstring text;
    EXPECT_TRUE(Platform::ReadLocation(key, text));
    EXPECT_EQ(text, L"/server");
    Platform::CloseLocationKey(key);
}

// Were the bytes left out, another folder would be searched.
TEST_F(Location, OfBytesThatAreNoCharactersIsNoOtherFolder)
{
    Write("/srv/a\xED\xA0\x80"
          "b\xFF/\xC3\xBC\n");
    ASSERT_EQ(Open("{}/full"), 0u);
    std::wstring text;
    EXPECT_TRUE(Platform::ReadLocation(key, text));
    EXPECT_EQ(text.substr(0, 6) + text.substr(text.size() - 4), L"/srv/ab\xFFFD/\xFC");
    EXPECT_NE(text.find(L'\xFFFD'), std::wstring::npos);
    Platform::CloseLocationKey(key);
}

TEST_F(Location, TellsWhyAFileCannotBeOpenedBeforeThatOneIsMissing)
{
    std::ofstream(folder / "file") << "no folder";
    EXPECT_EQ(Open("{}/none"), static_cast<Platform::ErrorCode>(ENOENT));
    EXPECT_EQ(Open("{}/file:{}/none"), static_cast<Platform::ErrorCode>(ENOTDIR));
}

// The first folder that has it counts, be it what it may.
TEST_F(Location, OfAPipeIsNotLookedForElsewhere)
{
    Write("/server");
    std::filesystem::path const place = folder / "pipe/Halvorix/HxSSO";
    std::filesystem::create_directories(place);
    ASSERT_EQ(::mkfifo((place / "Location").c_str(), 0600), 0);
    EXPECT_EQ(Open("{}/pipe:{}/full"), static_cast<Platform::ErrorCode>(EINVAL));
}

TEST_F(Location, ThatCannotBeReadIsNotLookedForElsewhere)
{
    Write("/server");
    std::filesystem::path const place = folder / "circle/Halvorix/HxSSO";
    std::filesystem::create_directories(place);
    std::filesystem::create_symlink("Location", place / "Location");
    EXPECT_EQ(Open("{}/circle:{}/full"), static_cast<Platform::ErrorCode>(ELOOP));
}

// Whether it has the file, nobody knows.
TEST_F(Location, IsLookedForBehindAFolderThatCannotBeLookedInto)
{
    Write("/server");
    std::filesystem::create_symlink("round", folder / "round");
    std::string const tooLong(300, 'x');
    ASSERT_EQ(Open("{}/round:{}/" + tooLong + ":{}/full"), 0u);
    Platform::CloseLocationKey(key);
    EXPECT_EQ(Open("{}/round:{}/none"), static_cast<Platform::ErrorCode>(ELOOP));
    EXPECT_EQ(Open("{}/" + tooLong), static_cast<Platform::ErrorCode>(ENAMETOOLONG));
}

TEST_F(Location, EndsWithItsFirstLine)
{
    std::wstring text;
    for (std::size_t const length : {0, 1, 16383, 16384, 16385, 40000}) {
        for (char const end : {'\n', '\0'}) {
            std::string const line(length, 'a');
            Write(line + end + "more");
            ASSERT_EQ(Open("{}/full"), 0u);
            EXPECT_TRUE(Platform::ReadLocation(key, text));
            EXPECT_EQ(text, std::wstring(line.begin(), line.end()));
            Platform::CloseLocationKey(key);
        }
    }
}

// The rest may be more than there is memory.
TEST_F(Location, IsNotReadBeyondItsFirstLine)
{
    for (char const end : {'\n', '\0'}) {
        Write(std::string("/server") + end + std::string(16 << 20, 'a'));
        ASSERT_EQ(Open("{}/full"), 0u);
        EXPECT_LE(static_cast<std::string*>(key)->size(), 16384u);
        Platform::CloseLocationKey(key);
    }
}

TEST_F(Location, OfAnEmptyFileCannotBeRead)
{
    Write("");
    ASSERT_EQ(Open("{}/full"), 0u);
    std::wstring text = L"untouched";
    EXPECT_FALSE(Platform::ReadLocation(key, text));
    EXPECT_EQ(text, L"untouched");
    Platform::CloseLocationKey(key);
}
