// A program with more rights than its caller takes nothing from the caller's environment:
// it would load the plugin that the caller names.

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>

#include "framework/ThisBuild.h"

namespace {

namespace fs = std::filesystem;

class Privilege : public testing::Test {
protected:
    Privilege()
    {
        fs::create_directories(folder / "config/Halvorix/HxSSO");
        std::ofstream(folder / "config/Halvorix/HxSSO/Location") << "/planted";
        fs::copy(fs::read_symlink("/proc/self/exe").parent_path() / "privileged-host", program);
    }
    ~Privilege() override { fs::remove_all(folder); }

    std::string Output() const
    {
        std::string const variables =
            "HOME=/planted XDG_CONFIG_HOME=/planted XDG_DATA_HOME=/planted "
            "XDG_CONFIG_DIRS=" +
            (folder / "config").string();
        FILE* const pipe = ::popen((variables + " " + program.string()).c_str(), "r");
        std::string output;
        std::array<char, 4096> piece;
        while (std::size_t const count = std::fread(piece.data(), 1, piece.size(), pipe))
            output.append(piece.data(), count);
        EXPECT_EQ(::pclose(pipe), 0);
        return output;
    }

    fs::path const folder =
        fs::temp_directory_path() / ("hxsso-privilege-" + std::to_string(::getpid()));
    fs::path const program = folder / "host";
};

} // namespace

TEST_F(Privilege, OfNobodyElseUsesTheEnvironment)
{
    EXPECT_EQ(Output(), "secure 0\nfolder /planted\nfolder /planted\nlocation /planted\n");
}

TEST_F(Privilege, OfAnotherUserDoesNotUseTheEnvironment)
{
    if (Rig::IsSanitized())
        GTEST_SKIP() << "a sanitizer cannot look for leaks in a program with rights of its own";
    constexpr uid_t nobody = 65534;
    if (::chown(program.c_str(), nobody, nobody) != 0 || ::chmod(program.c_str(), 06755) != 0)
        GTEST_SKIP() << "this user may not give a program to another one";
    fs::permissions(folder, fs::perms(0755));
    std::string const output = Output();
    if (output.compare(0, 9, "secure 0\n") == 0)
        GTEST_SKIP() << "programs have no rights of their own in " << folder;
    EXPECT_THAT(output, testing::Not(testing::HasSubstr("planted")));
    EXPECT_THAT(output, testing::StartsWith("secure 1\nfolder \nfolder \nlocation "));
}
