// What a file's mode, owner and kind are to the plugin, and a writer that is killed at each of its
// calls of the system.

#include <gmock/gmock.h>

#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <future>
#include <set>
#include <thread>

#include "framework/Variable.h"
#include "openid/TestFolder.h"
#include "openid/platform/Files.h"

namespace Halvorix::OpenId {

namespace {

using Rig::ContentOf;
using Rig::TestFolder;
using Rig::WriteTo;
using State = FileContent::State;
using std::filesystem::path;
using namespace std::chrono_literals;

mode_t ModeOf(path const& file)
{
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// What is looked at with care, and does not make the reader wait.
FileContent ReadAtOnce(FileContent (*read)(path const&, std::size_t), path const& file)
{
    auto const begin = std::chrono::steady_clock::now();
    FileContent content = read(file, 100);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
    return content;
}

/// By this process.
long TimesOpened(path const& file)
{
    std::error_code gone;
    return std::count_if(
        std::filesystem::directory_iterator("/proc/self/fd"), {},
        [&](auto const& entry) { return read_symlink(entry.path(), gone) == file; });
}

} // namespace

TEST(PrivateFiles, AreForTheirUserAloneWhateverTheMask)
{
    TestFolder const folder;
    std::string reason;
    mode_t const before = ::umask(0);

    EXPECT_TRUE(PreparePrivateFolder(folder / "a" / "b", reason)) << reason;
    EXPECT_TRUE(ReplacePrivateFile(folder / "file", "x", reason)) << reason;
    EXPECT_TRUE(AppendPrivateFile(folder / "log", "x"));
    EXPECT_NE(FileLock::Acquire(folder / "lock", 0ms, reason), nullptr) << reason;
    ::umask(before);

    EXPECT_EQ(ModeOf(folder / "a"), 0700u);
    EXPECT_EQ(ModeOf(folder / "a" / "b"), 0700u);
    EXPECT_EQ(ModeOf(folder / "file"), 0600u);
    EXPECT_EQ(ModeOf(folder / "log"), 0600u);
    EXPECT_EQ(ModeOf(folder / "lock"), 0600u);
}

TEST(PrivateFiles, ThatOthersMayOpenAreRefused)
{
    TestFolder const folder;
    WriteTo(folder / "file", "secret");
    for (mode_t const mode : {0640, 0604, 0660, 0620, 0601, 0644, 0777}) {
        ::chmod((folder / "file").c_str(), mode);
        FileContent const content = ReadPrivateFile(folder / "file", 100);
        EXPECT_EQ(content.state, State::Refused) << mode;
        EXPECT_EQ(content.reason, "other users may open it");
        EXPECT_EQ(content.bytes, "");
        EXPECT_EQ(ReadFile(folder / "file", 100).bytes, "secret");
    }
    ::chmod((folder / "file").c_str(), 0600);
    EXPECT_EQ(ReadPrivateFile(folder / "file", 100).bytes, "secret");
}

TEST(PrivateFiles, OfAnotherUserAreRefused)
{
    TestFolder const folder;
    create_directory(folder / "folder");
    for (char const* const name : {"file", "log", "lock"}) {
        WriteTo(folder / name, "x");
        ::chmod((folder / name).c_str(), 0600);
    }
    for (char const* const name : {"file", "log", "lock", "folder"}) {
        if (::chown((folder / name).c_str(), 65534, 65534) != 0)
            GTEST_SKIP() << "only root can give a file away";
    }
    std::string reason;

    EXPECT_EQ(ReadPrivateFile(folder / "file", 100).reason, "it belongs to another user");
    EXPECT_FALSE(AppendPrivateFile(folder / "log", "y"));
    EXPECT_EQ(ContentOf(folder / "log"), "x");
    EXPECT_EQ(FileLock::Acquire(folder / "lock", 0ms, reason), nullptr);
    EXPECT_EQ(reason, "it belongs to another user");
    EXPECT_FALSE(PreparePrivateFolder(folder / "folder", reason));
    EXPECT_EQ(reason, "it belongs to another user");
    EXPECT_EQ(ReadFile(folder / "file", 100).state, State::Read);
}

TEST(PrivateFiles, ThatAreSymbolicLinksAreRefused)
{
    TestFolder const folder;
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(folder / "target", "secret", reason));
    create_directory(folder / "real");
    for (char const* const name : {"file", "log", "lock", "file.new"})
        create_symlink(folder / "target", folder / name);
    create_symlink(folder / "real", folder / "folder");
    create_symlink(folder / "nowhere", folder / "dangling");

    EXPECT_EQ(ReadPrivateFile(folder / "file", 100).reason, "it is a symbolic link");
    EXPECT_EQ(ReadFile(folder / "file", 100).bytes, "secret");
    EXPECT_EQ(ReadFile(folder / "dangling", 100).state, State::Missing);
    EXPECT_FALSE(AppendPrivateFile(folder / "log", "y"));
    EXPECT_EQ(FileLock::Acquire(folder / "lock", 0ms, reason), nullptr);
    EXPECT_EQ(reason, "it is a symbolic link");
    EXPECT_FALSE(PreparePrivateFolder(folder / "folder", reason));
    EXPECT_EQ(reason, "it is a symbolic link");
    reason.clear();
    EXPECT_FALSE(PreparePrivateFolder(folder / "folder" / "", reason));
    EXPECT_EQ(reason, "it is a symbolic link");
    EXPECT_FALSE(PreparePrivateFolder(folder / "dangling", reason));
    EXPECT_FALSE(ReplacePrivateFile(folder / "file", "new", reason)); // by way of file.new
    EXPECT_EQ(reason, "it is a symbolic link");

    EXPECT_EQ(ContentOf(folder / "target"), "secret");
}

TEST(ReplacePrivateFile, TakesThePlaceOfALink)
{
    TestFolder const folder;
    WriteTo(folder / "target", "of another");
    create_symlink(folder / "target", folder / "file");
    std::string reason;

    EXPECT_TRUE(ReplacePrivateFile(folder / "file", "new", reason)) << reason;

    EXPECT_EQ(ContentOf(folder / "target"), "of another");
    EXPECT_TRUE(is_regular_file(symlink_status(folder / "file")));
}

TEST(RemovePrivateFile, OverwritesNoTargetOfALink)
{
    TestFolder const folder;
    WriteTo(folder / "target", "of another");
    create_symlink(folder / "target", folder / "file");
    create_symlink(folder / "target", folder / "file.new");

    EXPECT_TRUE(RemovePrivateFile(folder / "file"));

    EXPECT_EQ(ContentOf(folder / "target"), "of another");
    EXPECT_FALSE(exists(symlink_status(folder / "file")));
}

TEST(RemovePrivateFile, OverwritesTheContent)
{
    TestFolder const folder;
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(folder / "file", "secret", reason));
    // The same file under another name, to look at it afterwards.
    create_hard_link(folder / "file", folder / "other");

    EXPECT_TRUE(RemovePrivateFile(folder / "file"));

    EXPECT_EQ(ContentOf(folder / "other"), std::string(6, '\0'));
}

TEST(PreparePrivateFolder, ClosesOneThatIsOpenToOthers)
{
    TestFolder const folder;
    create_directory(folder / "folder");
    ::chmod((folder / "folder").c_str(), 0755);
    std::string reason;

    EXPECT_TRUE(PreparePrivateFolder(folder / "folder", reason)) << reason;

    EXPECT_EQ(ModeOf(folder / "folder"), 0700u);
}

TEST(ReadFile, DoesNotWaitForAPipe)
{
    TestFolder const folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);

    for (auto const read : {&ReadFile, &ReadPrivateFile}) {
        FileContent const content = ReadAtOnce(read, folder / "pipe");
        EXPECT_EQ(content.state, State::Refused);
        EXPECT_EQ(content.reason, "it is not a regular file");
    }
    std::string reason;
    EXPECT_FALSE(AppendPrivateFile(folder / "pipe", "x"));
    EXPECT_EQ(FileLock::Acquire(folder / "pipe", 0ms, reason), nullptr);
    EXPECT_EQ(reason, "it is not a regular file");
}

TEST(ReadFile, TakesNeitherDeviceNorSocket)
{
    TestFolder const folder;
    int const socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (folder / "socket").native().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);

    for (auto const read : {&ReadFile, &ReadPrivateFile}) {
        EXPECT_EQ(ReadAtOnce(read, "/dev/zero").state, State::Refused);
        EXPECT_EQ(ReadAtOnce(read, "/dev/tty").state, State::Refused);
        EXPECT_EQ(ReadAtOnce(read, folder / "socket").state, State::Refused);
    }
    ::close(socket);
}

TEST(FileLock, EndsThoughAForkedChildLivesOn)
{
    TestFolder const folder;
    std::string reason;
    auto lock = FileLock::Acquire(folder / "lock", 0ms, reason);
    ASSERT_NE(lock, nullptr) << reason;
    pid_t const child = ::fork();
    if (child == 0) {
        ::sleep(60);
        ::_exit(0);
    }

    lock.reset();

    EXPECT_NE(FileLock::Acquire(folder / "lock", 0ms, reason), nullptr) << reason;
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST(FileLock, IsThatOfItsName)
{
    TestFolder const folder;
    std::string reason;
    auto lock = FileLock::Acquire(folder / "lock", 0ms, reason);
    ASSERT_NE(lock, nullptr) << reason;
    auto waiting = std::async(std::launch::async, [&] {
        std::string why;
        return FileLock::Acquire(folder / "lock", 30s, why);
    });
    while (TimesOpened(folder / "lock") < 2)
        std::this_thread::sleep_for(1ms);

    // Somebody tidies up while the second one waits.
    WriteTo(folder / "another", "");
    rename(folder / "another", folder / "lock");
    lock.reset();

    auto const second = waiting.get();
    EXPECT_NE(second, nullptr);
    EXPECT_EQ(FileLock::Acquire(folder / "lock", 0ms, reason), nullptr);
    EXPECT_EQ(reason, "another process has held it for 0 ms");
}

TEST(KnownFolder, IsThatOfTheConvention)
{
    std::string const data = Rig::Variable("XDG_DATA_HOME");
    std::string const config = Rig::Variable("XDG_CONFIG_HOME");
    std::string const home = Rig::Variable("HOME");
    Rig::SetVariable("HOME", "/home/me");
    Rig::SetVariable("XDG_DATA_HOME", "");
    Rig::SetVariable("XDG_CONFIG_HOME", "relative");
    EXPECT_EQ(KnownFolder("LocalAppData"), "/home/me/.local/share");
    EXPECT_EQ(KnownFolder("AppData"), "/home/me/.config");
    EXPECT_EQ(KnownFolder("Home"), "/home/me");
    EXPECT_EQ(KnownFolder("ProgramFiles"), "/opt");
    Rig::SetVariable("XDG_DATA_HOME", "/data");
    Rig::SetVariable("XDG_CONFIG_HOME", "/config");
    EXPECT_EQ(KnownFolder("LocalAppData"), "/data");
    EXPECT_EQ(KnownFolder("AppData"), "/config");
    Rig::SetVariable("HOME", "relative");
    Rig::SetVariable("XDG_DATA_HOME", "");
    EXPECT_EQ(KnownFolder("LocalAppData"), "");
    EXPECT_EQ(KnownFolder("Home"), "");
    Rig::SetVariable("HOME", home);
    Rig::SetVariable("XDG_DATA_HOME", data);
    Rig::SetVariable("XDG_CONFIG_HOME", config);
}

namespace {

/// Runs something in a process of its own and kills that when it has entered or left a call of
/// the system so many times. False if it has ended before.
template <class Action>
bool KilledAtCall(int number, Action action)
{
    pid_t const child = ::fork();
    if (child == 0) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        action();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    for (int stops = 0; WIFSTOPPED(status); ++stops) {
        if (stops == number) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return true;
        }
        ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        ::waitpid(child, &status, 0);
    }
    return false;
}

bool MayTrace()
{
    return KilledAtCall(1, [] { ::getppid(); });
}

} // namespace

TEST(ReplacePrivateFile, LeavesTheOldOrTheNewAtWhateverCallItIsKilled)
{
    if (!MayTrace())
        GTEST_SKIP() << "no process may be traced here";
    TestFolder const folder;
    path const file = folder / "file";
    std::string const before(9000, 'o');
    std::string const after(20000, 'n');
    std::string reason;
    int old = 0;
    int fresh = 0;
    bool isKilled = true;
    for (int call = 0; isKilled; ++call) {
        ASSERT_TRUE(ReplacePrivateFile(file, before, reason)) << reason;
        isKilled = KilledAtCall(call, [&] {
            std::string ignored;
            ReplacePrivateFile(file, after, ignored);
        });
        std::string const content = ContentOf(file);
        ASSERT_TRUE(content == before || content == after) << content.size() << " at call " << call;
        (content == before ? old : fresh) += 1;
        ASSERT_EQ(ReadPrivateFile(file, 1 << 20).state, State::Read) << "at call " << call;
    }
    // Of both kinds there are several: open, write, sync, and the folder's after the rename.
    EXPECT_GT(old, 8);
    EXPECT_GT(fresh, 3);
}

TEST(RemovePrivateFile, LeavesTheWholeFileOrNoneAtWhateverCallItIsKilled)
{
    if (!MayTrace())
        GTEST_SKIP() << "no process may be traced here";
    TestFolder const folder;
    path const file = folder / "file";
    std::string const bytes(9000, 's');
    std::string reason;
    bool isKilled = true;
    for (int call = 0; isKilled; ++call) {
        ASSERT_TRUE(ReplacePrivateFile(file, bytes, reason)) << reason;
        isKilled = KilledAtCall(call, [&] { RemovePrivateFile(file); });
        FileContent const content = ReadPrivateFile(file, 1 << 20);
        ASSERT_TRUE(content.state == State::Missing || content.bytes == bytes)
            << "at call " << call;
        ASSERT_TRUE(RemovePrivateFile(file));
        ASSERT_TRUE(is_empty(folder.Path())) << "at call " << call;
    }
}

} // namespace Halvorix::OpenId
