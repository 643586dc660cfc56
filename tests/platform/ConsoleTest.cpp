#include <filesystem>
#include <fstream>
#include <iostream>
#include <locale>
#include <sstream>
#include <string>

#include <boost/locale/utf8_codecvt.hpp>
#include <gtest/gtest.h>

#include "platform/Platform.h"

namespace Platform = Halvorix::Platform;

namespace {

/// std::wcout into a file, as after sync_with_stdio(false).
class ConsoleFile : public testing::Test {
protected:
    ConsoleFile()
    {
        buffer.pubimbue(std::locale::classic()); // whatever another test has made global
        buffer.open(file.string(), std::ios::out | std::ios::binary);
        before = std::wcout.rdbuf(&buffer);
    }
    ~ConsoleFile() override
    {
        std::wcout.rdbuf(before);
        buffer.close();
        std::filesystem::remove(file);
    }

    std::string Content() const
    {
        std::ostringstream content;
        content << std::ifstream(file, std::ios::binary).rdbuf();
        return content.str();
    }

    std::filesystem::path const file =
        std::filesystem::temp_directory_path() /
        ("hxsso-console-" +
         std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    std::wfilebuf buffer;
    std::wstreambuf* before;
};

} // namespace

TEST_F(ConsoleFile, ShowsAQuestionMarkForWhatItCannotHold)
{
    Platform::ShowOnConsole(L"snow \x2603 man");
    Platform::ShowOnConsole(L"after it");
    EXPECT_TRUE(std::wcout.good());
    EXPECT_EQ(Content(), "snow ? man\nafter it\n");
}

// A character of two units on one system, of one on the other; and halves of one.
TEST_F(ConsoleFile, ShowsACharacterBeyondTheFirst65536)
{
    buffer.pubimbue(std::locale(std::locale::classic(), new boost::locale::utf8_codecvt<wchar_t>));
    Platform::ShowOnConsole(L"face \U0001F600 here");
    Platform::ShowOnConsole(std::wstring(L"half ") + static_cast<wchar_t>(0xD83D) + L" here");
    Platform::ShowOnConsole(std::wstring(L"half ") + static_cast<wchar_t>(0xDE00) + L" here");
    Platform::ShowOnConsole(L"after it");
    EXPECT_TRUE(std::wcout.good());
    EXPECT_EQ(Content(), "face \xF0\x9F\x98\x80 here\nhalf ? here\nhalf ? here\nafter it\n");
}

TEST_F(ConsoleFile, IsLeftAloneWhereTheHostsStreamHasFailed)
{
    std::wcout.setstate(std::ios::badbit);
    Platform::ShowOnConsole(L"line");
    EXPECT_TRUE(std::wcout.bad());
    std::wcout.clear();
    EXPECT_EQ(Content(), "");
}
