#include "openid/session/Log.h"

#include <filesystem>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "openid/Child.h"
#include "openid/TestFolder.h"
#include "openid/platform/Files.h"

using namespace Halvorix::OpenId;
using Halvorix::Log::LogLevel;
using Rig::ContentOf;
using Rig::TestFolder;
using testing::HasSubstr;
using testing::Not;

namespace {

std::vector<std::string> Lines(std::filesystem::path const& file)
{
    std::vector<std::string> lines;
    std::istringstream stream(ContentOf(file));
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

Failure Sample()
{
    Failure failure;
    failure.reason = "the disk is full";
    failure.remedy = "make room";
    return failure;
}

} // namespace

TEST(Log, HasTimeProcessLevelAndTextInEachLine)
{
    TestFolder const folder;
    LogFile log;
    log.Open(folder.Path());
    log.Info("Signed in");
    log.Failed("Cannot sign in", Sample());
    log.Write(LogLevel::Warning, L"Caf\u00e9");
    auto const lines = Lines(folder / "HxSSOOpenID.log");
    ASSERT_EQ(lines.size(), 3u);
    std::string const start = "[0-9]+-[0-9]+-[0-9]+T[0-9]+:[0-9]+:[0-9]+Z [0-9]+ ";
    auto const isLine = [&](std::string const& line, std::string const& text) {
        return std::regex_match(line, std::regex(start + text));
    };
    EXPECT_TRUE(isLine(lines[0], "Info Signed in")) << lines[0];
    EXPECT_TRUE(isLine(lines[1], "Error Cannot sign in: the disk is full. Fix: make room"))
        << lines[1];
    EXPECT_TRUE(isLine(lines[2], "Warning Caf\xC3\xA9")) << lines[2];
}

TEST(Log, KeepsWhatComesBeforeItsFolderIsKnown)
{
    TestFolder const folder;
    LogFile log;
    log.Info("early");
    log.Open(folder / "new" / "folder");
    log.Info("late");
    auto const lines = Lines(folder / "new" / "folder" / "HxSSOOpenID.log");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(lines[0], HasSubstr("early"));
    EXPECT_THAT(lines[1], HasSubstr("late"));
}

TEST(Log, KeepsTheLastThousandLinesThatWait)
{
    TestFolder const folder;
    LogFile log;
    for (int i = 1; i <= 1500; ++i)
        log.Info("line " + std::to_string(i) + ".");
    log.Open(folder.Path());
    auto const lines = Lines(folder / "HxSSOOpenID.log");
    ASSERT_EQ(lines.size(), 1000u);
    EXPECT_THAT(lines.front(), HasSubstr("line 501."));
    EXPECT_THAT(lines.back(), HasSubstr("line 1500."));
}

TEST(Log, ShowsControlCharactersAsText)
{
    TestFolder const folder;
    LogFile log;
    log.Open(folder.Path());
    log.Write(LogLevel::Info, L"a\x1B[31m\u009B32m\r\nb\tc");
    auto const lines = Lines(folder / "HxSSOOpenID.log");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_THAT(lines[0], HasSubstr("a\\x1B[31m\\x9B32m\\x0D\\nb\\x09c"));
}

TEST(Log, BeginsANewFileOverOneMebibyte)
{
    TestFolder const folder;
    LogFile log;
    log.Open(folder.Path());
    std::string const text(100'000, 'x');
    for (int i = 0; i < 25; ++i)
        log.Info(text);
    auto const current = std::filesystem::file_size(folder / "HxSSOOpenID.log");
    auto const old = std::filesystem::file_size(folder / "HxSSOOpenID.old.log");
    EXPECT_LE(current, (1u << 20) + 2 * text.size());
    EXPECT_LE(old, (1u << 20) + 2 * text.size());
    EXPECT_GT(old, 1u << 20);
}

TEST(Log, DropsLinesWhereItCannotWrite)
{
    TestFolder const folder;
    Rig::WriteTo(folder / "file", "in the way");
    LogFile log;
    log.Open(folder / "file" / "folder");
    log.Info("lost");
    log.Open(folder.Path());
    log.Info("found");
    EXPECT_THAT(ContentOf(folder / "HxSSOOpenID.log"), Not(HasSubstr("lost")));
    EXPECT_THAT(ContentOf(folder / "HxSSOOpenID.log"), HasSubstr("found"));
}

TEST(Log, KeepsTheLinesOfSeveralThreadsWhole)
{
    TestFolder const folder;
    LogFile log;
    log.Open(folder.Path());
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&log] {
            for (int line = 0; line < 100; ++line)
                log.Info("<" + std::string(200, 'x') + ">");
        });
    for (std::thread& thread : threads)
        thread.join();
    auto const lines = Lines(folder / "HxSSOOpenID.log");
    ASSERT_EQ(lines.size(), 400u);
    for (std::string const& line : lines)
        EXPECT_EQ(line.substr(line.size() - 202), "<" + std::string(200, 'x') + ">");
}

CHILD_PROGRAM(WritesLogLines)
{
    LogFile log;
    log.Open(PathFromText(arguments.at(0)));
    for (int i = 0; i < 300; ++i)
        log.Info(arguments.at(1) + std::string(4000, '.') + arguments.at(1));
    return 0;
}

TEST(Log, LosesNoLineWhenSeveralProcessesFindItTooLarge)
{
    TestFolder const folder;
    {
        Rig::Child first("WritesLogLines", {PathText(folder.Path()), "a"});
        Rig::Child second("WritesLogLines", {PathText(folder.Path()), "b"});
        EXPECT_EQ(first.Wait(), 0);
        EXPECT_EQ(second.Wait(), 0);
    }
    // 2.4 MB: at least one file was begun anew, and what is left of the last two is whole.
    auto const old = Lines(folder / "HxSSOOpenID.old.log");
    auto const now = Lines(folder / "HxSSOOpenID.log");
    EXPECT_GT(old.size(), 250u);
    for (auto const* const lines : {&old, &now})
        for (std::string const& line : *lines)
            EXPECT_TRUE(line.back() == 'a' || line.back() == 'b') << line.substr(0, 80);
}
