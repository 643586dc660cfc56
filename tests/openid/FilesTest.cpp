#include "openid/platform/Files.h"

#include <gmock/gmock.h>

#include <set>
#include <thread>

#include "openid/Child.h"
#include "openid/TestFolder.h"

namespace Halvorix::OpenId {

namespace {

using namespace std::chrono_literals;
using Rig::Child;
using Rig::ContentOf;
using Rig::TestFolder;
using Rig::WriteTo;
using State = FileContent::State;
using std::filesystem::path;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// A content that shows whether it is whole: its first letter tells its length.
std::string ContentNumber(int number)
{
    char const letter = static_cast<char>('a' + number % 26);
    return std::string(static_cast<std::size_t>(1000 + (letter - 'a') * 3000), letter);
}

bool IsWhole(std::string const& content)
{
    return !content.empty() && content == ContentNumber(content[0] - 'a');
}

std::chrono::steady_clock::duration Since(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::steady_clock::now() - begin;
}

void WaitFor(path const& file)
{
    auto const begin = std::chrono::steady_clock::now();
    while (!exists(file) && Since(begin) < 30s)
        std::this_thread::sleep_for(2ms);
    ASSERT_TRUE(exists(file));
}

} // namespace

TEST(PathText, IsUtf8InBothDirections)
{
    std::string const text = PathText(PathFromText("/f\xC3\xB6lder/\xE2\x82\xAC/\xF0\x9F\x98\x80"));

    EXPECT_EQ(text, "/f\xC3\xB6lder/\xE2\x82\xAC/\xF0\x9F\x98\x80");
    EXPECT_EQ(PathText(PathFromText("")), "");
}

TEST(ModuleFolder, IsThatOfTheTestProgram)
{
    EXPECT_TRUE(ModuleFolder().is_absolute());
    EXPECT_TRUE(exists(ModuleFolder() / "openid") || exists(ModuleFolder() / "openid.exe"));
}

TEST(KnownFolder, IsAbsoluteOrUnknown)
{
    for (char const* const name : {"ProgramFiles", "AppData", "LocalAppData", "Home"})
        EXPECT_TRUE(KnownFolder(name).is_absolute()) << name;
    for (char const* const name : {"", "home", "Desktop", "%AppData%"})
        EXPECT_TRUE(KnownFolder(name).empty()) << name;
}

TEST(ReadFile, GivesAllBytes)
{
    TestFolder const folder;
    std::string const bytes("a\0b\r\nc\n\x1A\xFF", 9);
    WriteTo(folder / "file", bytes);

    FileContent const content = ReadFile(folder / "file", 9);

    EXPECT_EQ(content.state, State::Read) << content.reason;
    EXPECT_EQ(content.bytes, bytes);
}

TEST(ReadFile, TellsWhatIsMissing)
{
    TestFolder const folder;
    WriteTo(folder / "file", "");

    EXPECT_EQ(ReadFile(folder / "none", 10).state, State::Missing);
    EXPECT_EQ(ReadFile(folder / "none" / "below", 10).state, State::Missing);
    EXPECT_EQ(ReadPrivateFile(folder / "none", 10).state, State::Missing);
    EXPECT_EQ(ReadFile(folder / "file", 10).state, State::Read);
}

TEST(ReadFile, RefusesAFolder)
{
    TestFolder const folder;

    for (auto const read : {&ReadFile, &ReadPrivateFile}) {
        FileContent const content = read(folder.Path(), 100);
        EXPECT_EQ(content.state, State::Refused);
        EXPECT_THAT(content.reason, Not(IsEmpty()));
    }
}

TEST(ReadFile, RefusesWhatIsTooLarge)
{
    TestFolder const folder;
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(folder / "file", std::string(100001, 'x'), reason)) << reason;

    for (auto const read : {&ReadFile, &ReadPrivateFile}) {
        FileContent const content = read(folder / "file", 100000);
        EXPECT_EQ(content.state, State::Refused);
        EXPECT_EQ(content.reason, "it is larger than 100000 bytes");
        EXPECT_THAT(content.bytes, IsEmpty());
        EXPECT_EQ(read(folder / "file", 100001).state, State::Read);
    }
}

TEST(ReplacePrivateFile, WritesAndReplaces)
{
    TestFolder const folder;
    std::string reason;
    for (std::string const& bytes : {std::string("first"), std::string(),
                                     std::string("\0\n\r\n\xFF", 5), std::string(200000, 'x')}) {
        ASSERT_TRUE(ReplacePrivateFile(folder / "file", bytes, reason)) << reason;

        FileContent const content = ReadPrivateFile(folder / "file", 1 << 20);
        EXPECT_EQ(content.state, State::Read) << content.reason;
        EXPECT_EQ(content.bytes, bytes);
        EXPECT_FALSE(exists(folder / "file.new"));
    }
    EXPECT_EQ(reason, "");
}

TEST(ReplacePrivateFile, TellsAFolderThatIsMissing)
{
    TestFolder const folder;
    std::string reason;

    EXPECT_FALSE(ReplacePrivateFile(folder / "none" / "file", "x", reason));
    EXPECT_THAT(reason, Not(IsEmpty()));
}

TEST(ReplacePrivateFile, LeavesTheOldOneWhereItFails)
{
    TestFolder const folder;
    create_directory(folder / "file");
    WriteTo(folder / "file" / "inside", "x");
    std::string reason;

    EXPECT_FALSE(ReplacePrivateFile(folder / "file", "new", reason));

    EXPECT_THAT(reason, Not(IsEmpty()));
    EXPECT_EQ(ContentOf(folder / "file" / "inside"), "x");
}

TEST(ReplacePrivateFile, TakesWhatAKilledOneHasLeft)
{
    TestFolder const folder;
    WriteTo(folder / "file", "old");
    WriteTo(folder / "file.new", std::string(5000, 'h'));
    std::string reason;

    EXPECT_TRUE(ReplacePrivateFile(folder / "file", "new", reason)) << reason;

    EXPECT_EQ(ContentOf(folder / "file"), "new");
    EXPECT_FALSE(exists(folder / "file.new"));
}

TEST(ReplacePrivateFile, IsSeenWholeByWhoeverReads)
{
    TestFolder const folder;
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(folder / "file", ContentNumber(0), reason)) << reason;
    std::atomic<bool> isDone{false};
    std::atomic<int> broken{0};
    std::thread reader([&] {
        while (!isDone) {
            broken += IsWhole(ReadPrivateFile(folder / "file", 1 << 20).bytes) ? 0 : 1;
            // Wine replaces no file that is open.
            std::this_thread::sleep_for(1ms);
        }
    });
    int failed = 0;
    for (int i = 0; i < 100; ++i)
        failed += ReplacePrivateFile(folder / "file", ContentNumber(i), reason) ? 0 : 1;
    isDone = true;
    reader.join();

    EXPECT_EQ(broken, 0);
    EXPECT_EQ(failed, 0) << reason;
}

TEST(ReplacePrivateFile, LeavesAWholeFileWithManyWriters)
{
    TestFolder const folder;
    std::atomic<int> failed{0};
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 4; ++writer)
        writers.emplace_back([&, writer] {
            std::string reason;
            for (int i = 0; i < 20; ++i)
                failed +=
                    ReplacePrivateFile(folder / "file", ContentNumber(writer * 5 + i % 5), reason)
                        ? 0
                        : 1;
        });
    for (std::thread& writer : writers)
        writer.join();

    EXPECT_EQ(failed, 0);
    EXPECT_TRUE(IsWhole(ContentOf(folder / "file")));
    EXPECT_FALSE(exists(folder / "file.new"));
}

CHILD_PROGRAM(ReplaceUntilKilled)
{
    path const file = PathFromText(arguments[0]);
    std::string reason;
    for (int i = 0;; ++i)
        if (!ReplacePrivateFile(file, ContentNumber(i), reason))
            return 1;
}

TEST(ReplacePrivateFile, LeavesAWholeFileWhenItsProcessIsKilled)
{
    TestFolder const folder;
    path const file = folder / "file";
    std::string reason;
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(ReplacePrivateFile(file, "x", reason)) << reason;
        Child writer("ReplaceUntilKilled", {PathText(file)});
        auto const begin = std::chrono::steady_clock::now();
        // It is at work, and a little further each time.
        while (ContentOf(file) == "x" && Since(begin) < 30s)
            std::this_thread::sleep_for(1ms);
        std::this_thread::sleep_for(731us * i);
        writer.Kill();

        std::string const content = ContentOf(file);
        ASSERT_TRUE(IsWhole(content)) << content.size() << " bytes at point " << i;
    }
}

TEST(AppendPrivateFile, AddsAtTheEnd)
{
    TestFolder const folder;

    EXPECT_TRUE(AppendPrivateFile(folder / "log", "one\n"));
    EXPECT_TRUE(AppendPrivateFile(folder / "log", "two\n"));

    EXPECT_EQ(ContentOf(folder / "log"), "one\ntwo\n");
    EXPECT_FALSE(AppendPrivateFile(folder / "none" / "log", "x"));
    EXPECT_FALSE(AppendPrivateFile(folder.Path(), "x"));
}

CHILD_PROGRAM(AppendLines)
{
    bool isAdded = true;
    for (int i = 0; i < 200; ++i)
        isAdded = AppendPrivateFile(PathFromText(arguments[0]),
                                    arguments[1] + std::string(120, arguments[1][0]) + "\n") &&
                  isAdded;
    return isAdded ? 0 : 1;
}

TEST(AppendPrivateFile, KeepsTheLinesOfSeveralProcessesApart)
{
    TestFolder const folder;
    std::string const file = PathText(folder / "log");
    Child first("AppendLines", {file, "a"});
    Child second("AppendLines", {file, "b"});
    Child third("AppendLines", {file, "c"});
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_EQ(second.Wait(), 0);
    EXPECT_EQ(third.Wait(), 0);

    std::istringstream lines(ContentOf(folder / "log"));
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        ASSERT_EQ(line, std::string(121, line[0]));
    EXPECT_EQ(count, 600);
}

TEST(RemovePrivateFile, LeavesNothing)
{
    TestFolder const folder;
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(folder / "file", "secret", reason));
    WriteTo(folder / "file.new", "half");
    WriteTo(folder / "file.gone", "killed");

    EXPECT_TRUE(RemovePrivateFile(folder / "file"));

    EXPECT_TRUE(is_empty(folder.Path()));
    EXPECT_TRUE(RemovePrivateFile(folder / "file"));
}

TEST(RemovePrivateFile, TakesAFileThatFitsIntoNoMemory)
{
    TestFolder const folder;
    WriteTo(folder / "file", "x");
    std::error_code refused;
    resize_file(folder / "file", std::uintmax_t(1) << 42, refused); // a hole
    if (refused)
        GTEST_SKIP() << "no file may be so large: " << refused.message();

    EXPECT_TRUE(RemovePrivateFile(folder / "file"));
    EXPECT_TRUE(is_empty(folder.Path()));
}

TEST(RemovePrivateFile, RemovesNoFolder)
{
    TestFolder const folder;
    create_directory(folder / "file");
    WriteTo(folder / "file" / "inside", "x");

    EXPECT_FALSE(RemovePrivateFile(folder / "file"));
}

TEST(RenameFile, TakesThePlaceOfWhatIsThere)
{
    TestFolder const folder;
    WriteTo(folder / "from", "new");
    WriteTo(folder / "to", "old");

    EXPECT_TRUE(RenameFile(folder / "from", folder / "to"));

    EXPECT_EQ(ContentOf(folder / "to"), "new");
    EXPECT_FALSE(exists(folder / "from"));
    EXPECT_FALSE(RenameFile(folder / "from", folder / "to"));
}

TEST(FileStamp, ChangesWithTheFile)
{
    TestFolder const folder;
    std::string reason;
    EXPECT_EQ(FileStamp(folder / "file"), "");
    std::set<std::string> stamps;
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(ReplacePrivateFile(folder / "file", "same", reason));
        std::string const stamp = FileStamp(folder / "file");
        EXPECT_THAT(stamp, Not(IsEmpty()));
        EXPECT_EQ(FileStamp(folder / "file"), stamp);
        stamps.insert(stamp);
    }
    EXPECT_EQ(stamps.size(), 20u);
}

TEST(PreparePrivateFolder, MakesAllAboveIt)
{
    TestFolder const folder;
    std::string reason;

    EXPECT_TRUE(PreparePrivateFolder(folder / "a" / "b" / "c", reason)) << reason;
    EXPECT_TRUE(is_directory(folder / "a" / "b" / "c"));
    EXPECT_TRUE(PreparePrivateFolder(folder / "a" / "b" / "c", reason)) << reason;
    EXPECT_TRUE(PreparePrivateFolder(folder / "d" / "", reason)) << reason;
    EXPECT_TRUE(is_directory(folder / "d"));
}

TEST(PreparePrivateFolder, TellsAFileInItsPlace)
{
    TestFolder const folder;
    WriteTo(folder / "file", "x");
    std::string reason;

    EXPECT_FALSE(PreparePrivateFolder(folder / "file", reason));
    EXPECT_THAT(reason, Not(IsEmpty()));
    reason.clear();
    EXPECT_FALSE(PreparePrivateFolder(folder / "file" / "below", reason));
    EXPECT_THAT(reason, Not(IsEmpty()));
}

TEST(PrivateFiles, MayHaveLongAndForeignNames)
{
    TestFolder const folder;
    path long_ = folder.Path();
    for (int i = 0; i < 6; ++i)
        long_ /= PathFromText(std::string(80, 'x') + "\xC3\xB6\xE2\x82\xAC");
    std::string reason;
    ASSERT_TRUE(PreparePrivateFolder(long_, reason)) << reason;

    EXPECT_TRUE(ReplacePrivateFile(long_ / "file", "content", reason)) << reason;
    EXPECT_EQ(ReadPrivateFile(long_ / "file", 100).bytes, "content");
    EXPECT_EQ(ReadFile(long_ / "file", 100).bytes, "content");
    EXPECT_TRUE(AppendPrivateFile(long_ / "log", "line"));
    EXPECT_THAT(FileStamp(long_ / "file"), Not(IsEmpty()));
    EXPECT_NE(FileLock::Acquire(long_ / "lock", 1s, reason), nullptr) << reason;
    EXPECT_TRUE(RenameFile(long_ / "file", long_ / "other"));
    EXPECT_TRUE(RemovePrivateFile(long_ / "other"));
    EXPECT_EQ(ReadFile(long_ / "other", 100).state, State::Missing);
    EXPECT_TRUE(RemovePrivateFile(long_ / "log"));
    EXPECT_TRUE(RemovePrivateFile(long_ / "lock"));
}

TEST(FileLock, IsFreeAtItsEnd)
{
    TestFolder const folder;
    std::string reason;
    for (int i = 0; i < 3; ++i) {
        auto const lock = FileLock::Acquire(folder / "lock", 0ms, reason);
        EXPECT_NE(lock, nullptr) << reason;
    }
}

TEST(FileLock, TellsWhatCannotBeOpened)
{
    TestFolder const folder;
    std::string reason;

    EXPECT_EQ(FileLock::Acquire(folder / "none" / "lock", 1s, reason), nullptr);
    EXPECT_THAT(reason, Not(IsEmpty()));
    EXPECT_EQ(FileLock::Acquire(folder.Path(), 1s, reason), nullptr);
}

CHILD_PROGRAM(HoldLock)
{
    std::string reason;
    auto const lock = FileLock::Acquire(PathFromText(arguments[0]), 10s, reason);
    if (!lock)
        return 1;
    WriteTo(PathFromText(arguments[1]), "x");
    std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(arguments[2])));
    return 0;
}

TEST(FileLock, KeepsOtherProcessesOutUpToTheLimit)
{
    TestFolder const folder;
    Child holder("HoldLock", {PathText(folder / "lock"), PathText(folder / "held"), "60000"});
    WaitFor(folder / "held");
    std::string reason;
    auto const begin = std::chrono::steady_clock::now();

    EXPECT_EQ(FileLock::Acquire(folder / "lock", 300ms, reason), nullptr);

    EXPECT_GE(Since(begin), 300ms);
    EXPECT_LT(Since(begin), 2s);
    EXPECT_EQ(reason, "another process has held it for 300 ms");
}

TEST(FileLock, EndsWithAProcessThatIsKilled)
{
    TestFolder const folder;
    Child holder("HoldLock", {PathText(folder / "lock"), PathText(folder / "held"), "60000"});
    WaitFor(folder / "held");
    std::string reason;
    ASSERT_EQ(FileLock::Acquire(folder / "lock", 0ms, reason), nullptr);

    holder.Kill();

    EXPECT_NE(FileLock::Acquire(folder / "lock", 2s, reason), nullptr) << reason;
}

TEST(FileLock, ComesWhenTheOtherProcessLetsGo)
{
    TestFolder const folder;
    Child holder("HoldLock", {PathText(folder / "lock"), PathText(folder / "held"), "300"});
    WaitFor(folder / "held");
    std::string reason;

    EXPECT_NE(FileLock::Acquire(folder / "lock", 10s, reason), nullptr) << reason;
}

CHILD_PROGRAM(CountUnderLock)
{
    for (int i = 0; i < 50; ++i) {
        std::string reason;
        auto const lock = FileLock::Acquire(PathFromText(arguments[0]), 30s, reason);
        if (!lock)
            return 1;
        path const file = PathFromText(arguments[1]);
        int const count = std::stoi(ReadPrivateFile(file, 100).bytes);
        if (!ReplacePrivateFile(file, std::to_string(count + 1), reason))
            return 2;
    }
    return 0;
}

TEST(FileLock, LetsOneProcessInAtATime)
{
    TestFolder const folder;
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(folder / "count", "0", reason));
    std::vector<std::string> const arguments{PathText(folder / "lock"), PathText(folder / "count")};
    Child first("CountUnderLock", arguments);
    Child second("CountUnderLock", arguments);
    Child third("CountUnderLock", arguments);
    Child fourth("CountUnderLock", arguments);
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_EQ(second.Wait(), 0);
    EXPECT_EQ(third.Wait(), 0);
    EXPECT_EQ(fourth.Wait(), 0);

    EXPECT_EQ(ContentOf(folder / "count"), "200");
}

} // namespace Halvorix::OpenId
