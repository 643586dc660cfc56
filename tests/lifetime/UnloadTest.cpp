// A library that a host binds late: what is left of it when the host lets it go.

#include <filesystem>

#include <gmock/gmock.h>

#include "framework/Installation.h"
#include "host/Expected.h"

using Rig::Installation;
using Rig::Outcome;
using testing::AnyOf;
using testing::Contains;
using testing::EndsWith;

namespace {

char const* const goodLocale = "12 true good";

class Unload : public testing::Test {
protected:
    Unload() { installation.Host("late-bound-host"); }

    Outcome RunLateBound(std::string const& program)
    {
        Outcome outcome =
            installation.Run(program, {installation.Text("lib/" + Rig::LibraryFiles().front())});
        EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
        EXPECT_FALSE(outcome.ending.crashed) << outcome.ending.status;
        EXPECT_FALSE(outcome.ending.timedOut);
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome["program"], "returned");
        return outcome;
    }

    Installation installation;
};

} // namespace

TEST_F(Unload, TakesALibraryAwayThatWasNotUsed)
{
    Outcome const outcome = RunLateBound("BindsWithoutUse");
    EXPECT_EQ(outcome["gone"], true);
    EXPECT_EQ(outcome["locale"], goodLocale);
}

TEST_F(Unload, LeavesPluginAndLocaleUsable)
{
    installation.Complete();
    Outcome const outcome = RunLateBound("UnbindsAfterUse");
    EXPECT_EQ(outcome["ready"], true);
    EXPECT_EQ(outcome["locale"], goodLocale);
    EXPECT_EQ(outcome["readyAgain"], true);
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 1);
}

// No plugin holds the library then, but the locale that it has set is its code.
TEST_F(Unload, LeavesTheLocaleUsableWithoutAPlugin)
{
    Outcome const outcome = RunLateBound("UnbindsAfterUse");
    EXPECT_EQ(outcome["ready"], false);
    EXPECT_EQ(outcome["locale"], goodLocale);
    EXPECT_EQ(outcome["readyAgain"], false);
}

TEST_F(Unload, LeavesTheLocaleUsableAfterAWholeLife)
{
    for (bool const hasPlugin : {false, true}) {
        SCOPED_TRACE(hasPlugin);
        if (hasPlugin)
            installation.Complete();
        Outcome const outcome = RunLateBound("UnbindsAfterItsLife");
        EXPECT_EQ(outcome["ready"], hasPlugin);
        EXPECT_EQ(outcome["locale"], goodLocale);
    }
}

// What reads documents is made once and never released: otherwise it would be lost
// with each unloading.
TEST_F(Unload, KeepsALibraryThatHasReadADocument)
{
    Outcome const outcome = RunLateBound("UnbindsAfterADocument");
    EXPECT_EQ(outcome["read"], false);
    EXPECT_EQ(outcome["gone"], false);
    EXPECT_EQ(outcome["locale"], goodLocale);
}

TEST_F(Unload, LeavesThePluginsObjectsUsable)
{
    installation.Complete().Script("ISSOClientModule::GetRsaCryptor", R"({"fresh": true})");
    Outcome const outcome = RunLateBound("HoldsAnObjectOverTheUnbinding");
    EXPECT_EQ(outcome["size"], 190);
    EXPECT_EQ(outcome.Called("~IRsaCryptor()"), 1);
}

// The library's own end comes before these where a module that came later ends
// first: it answers, without the plugin. Windows ends all modules behind the
// executable: there it loads once more after it was released.
TEST_F(Unload, AnswersCallsThatComeBehindItsEnd)
{
    int const loads = Rig::IsWindows() ? 2 : 1;
    for (bool const hasPlugin : {false, true}) {
        SCOPED_TRACE(hasPlugin);
        if (hasPlugin)
            installation.Complete();
        Outcome const outcome = RunLateBound("CallsBehindTheEnd");
        EXPECT_EQ(outcome["ready"], hasPlugin);
        EXPECT_EQ(outcome["readyAtTheEnd"], hasPlugin && Rig::IsWindows());
        EXPECT_EQ(outcome["initializedAtTheEnd"], true);
        EXPECT_EQ(outcome["uninitializedAtTheEnd"], true);
        EXPECT_EQ(outcome["readyAfterAll"], hasPlugin && Rig::IsWindows());
        EXPECT_EQ(outcome["localeAtTheEnd"], goodLocale);
        EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), hasPlugin ? loads : 0);
    }
}

TEST_F(Unload, AnswersAFirstCallThatComesBehindItsEnd)
{
    for (bool const hasPlugin : {false, true}) {
        SCOPED_TRACE(hasPlugin);
        if (hasPlugin)
            installation.Complete();
        Outcome const outcome = RunLateBound("CallsFirstBehindTheEnd");
        EXPECT_EQ(outcome["readyAtTheEnd"], hasPlugin && Rig::IsWindows());
        EXPECT_EQ(outcome["localeAtTheEnd"], goodLocale);
    }
}

// Each copy is a library of its own, with its own count, its own manager and its own
// load of the plugin, which is one module.
TEST_F(Unload, LeavesTwoCopiesOfTheLibraryApart)
{
    installation.Complete().Folder("second");
    std::string const file = Rig::LibraryFiles().front();
    std::filesystem::copy_file(installation.Path("lib/" + file),
                               installation.Path("second/" + file));
    Outcome const outcome = installation.Run(
        "BindsTwoCopies", {installation.Text("lib/" + file), installation.Text("second/" + file)});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_FALSE(outcome.ending.crashed) << outcome.ending.status;
    EXPECT_EQ(outcome["program"], "returned");
    EXPECT_EQ(outcome["bound"], true);
    EXPECT_EQ(outcome["initialized"], true);
    EXPECT_EQ(outcome["initializedOfFirst"], true);
    EXPECT_EQ(outcome["initializedOfSecond"], false);
    EXPECT_EQ(outcome["readyOfSecond"], true);
    EXPECT_EQ(outcome["uninitialized"], true);
    EXPECT_EQ(outcome["readyOfSecondAgain"], true);
    EXPECT_EQ(outcome["readyOfFirstAgain"], true);
    EXPECT_EQ(outcome["locale"], goodLocale);
    // By its name Windows knows the first copy alone.
    std::string const banner = Rig::Banner();
    std::string second = banner;
    if (!Rig::IsWindows())
        second.replace(second.find("/lib/"), 5, "/second/");
    EXPECT_GE(outcome.LoggedAt(Rig::Info, banner), 1);
    EXPECT_GE(outcome.LoggedAt(Rig::Info, second), 1);
    // The first copy loads again after its release, the second does not.
    EXPECT_EQ(outcome.Called("GetSSOClientFactory()"), 3);
}

// The library's folder is that of the file which is mapped. What lies at the same
// relative name in the directory to which the host has gone is another's.
TEST_F(Unload, KeepsItsFolderWhereverTheHostHasGone)
{
    installation.Complete()
        .Remove("app/SSOClient.config")
        .ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})", "lib")
        .ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/planted"}})", "elsewhere/lib")
        .Folder("elsewhere/work");
    Outcome const outcome =
        installation.Run("BindsByARelativeNameAndMoves", {"../lib/" + Rig::LibraryFiles().front(),
                                                          installation.Text("elsewhere/work")});
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["ready"], true);
    EXPECT_EQ(
        outcome.LoggedAt(Rig::Info, "Found client config file at {root}/lib/SSOClient.config"), 1);
    EXPECT_EQ(outcome.LoggedAt(Rig::Info, Rig::Banner()), 1);
}

// On Windows the library asks for its own file with room for 260 units. Its folder has
// room in all of these names.
TEST_F(Unload, NamesALongLibraryAsFarAsThereIsRoom)
{
    std::string const file = Rig::LibraryFiles().front();
    std::size_t const root = installation.Text("app").size() - 4;
    for (std::size_t const length : {258, 259, 260, 261}) {
        SCOPED_TRACE(length);
        std::string const folder(length - root - 2 - file.size(), 'x');
        installation.Folder(folder);
        std::filesystem::copy_file(installation.Path("lib/" + file),
                                   installation.Path(folder + "/" + file));
        installation.ClientConfig("{}", folder);
        std::string const library = folder + "/" + file;
        Outcome const outcome = installation.Run("UnbindsAfterUse", {installation.Text(library)});
        EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
        EXPECT_EQ(outcome["program"], "returned");
        std::string const told = "{root}/" + library;
        std::size_t const room = Rig::IsWindows() ? 260 - root + 6 : told.size();
        // Not all systems count the terminator in.
        EXPECT_THAT(outcome.console,
                    Contains(AnyOf(EndsWith("File: " + told.substr(0, room) + ")"),
                                   EndsWith("File: " + told.substr(0, room - 1) + ")"))));
        EXPECT_EQ(
            outcome.OnConsole("Found client config file at {root}/" + folder + "/SSOClient.config"),
            1);
    }
}
