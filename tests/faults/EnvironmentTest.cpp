// What the environment of a host may hold.

#include <iostream>

#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include <WebServicesManager.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServices::WebServicesManager;
using Rig::Installation;
using Rig::Outcome;

namespace {

HOST_PROGRAM(LoadsInAnyEnvironment)
{
    report.Try("initialize", [] { WebServicesManager::Initialize(false); });
    report.Try("call", [&] { report("state", SSOClientPrivate::GetSessionState()); });
    std::wstring path = L"%AppData%|%LocalAppData%|%ProgramFiles%|%ExePath%";
    report.Try("expand", [&] { SSOClientPrivate::ExpandPathVariables(path); });
    report("logFile", SSOClientPrivate::GetLogFile());
}

struct Setting {
    char const* name;
    std::string value;
};

std::vector<Setting> Settings()
{
    std::string const huge(100000, 'x');
    std::vector<Setting> settings;
    // The other system tells its folders by itself.
    if (!Rig::IsWindows())
        settings = {{"XDG_CONFIG_DIRS", ":"},
                    {"XDG_CONFIG_DIRS", ":::/nowhere::"},
                    {"XDG_CONFIG_DIRS", huge},
                    {"XDG_CONFIG_HOME", "\xff\xfe"},
                    {"XDG_CONFIG_DIRS", "\xc3"},
                    {"XDG_DATA_HOME", huge},
                    {"HOME", ""},
                    {"HOME", "relative"},
                    {"TMPDIR", "/nowhere"}};
    for (char const* const value :
         {"", "C", "POSIX", "xx_YY", "xx_YY.UTF-8", "de_DE.nonsense", "tr_TR.UTF-8", ".", "@", "/",
          "a_b.c@d", "en@=", "en@x=y;z", "en_US.UTF-8@calendar="})
        settings.push_back({"LC_ALL", value});
    for (std::size_t const length : {9, 12, 13, 200, 5000})
        settings.push_back({"LC_ALL", std::string(length, 'x') + ".UTF-8"});
    // What comes of a value does not depend on the variable.
    for (char const* const variable : {"LANG", "LC_CTYPE"})
        for (char const* const value : {"de_DE.nonsense", "tr_TR.UTF-8", "en@="})
            settings.push_back({variable, value});
    return settings;
}

} // namespace

TEST(Environment, MayHoldAnything)
{
    int tried = 0;
    for (Setting const& setting : Settings()) {
        SCOPED_TRACE(setting.name + std::string("=") + setting.value.substr(0, 60));
        Installation installation;
        installation.Complete().Environment("LC_ALL", "").Environment(setting.name, setting.value);
        Outcome const outcome = installation.Run("LoadsInAnyEnvironment");
        EXPECT_FALSE(outcome.ending.timedOut);
        EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
        for (char const* const call : {"initialize", "call", "expand", "program"})
            EXPECT_EQ(outcome[call], "returned") << call;
        EXPECT_EQ(outcome["state"], "ISSOClientPrivate::GetSessionState");
        ++tried;
    }
    std::cout << "faults tried: " << tried << std::endl;
}

// On Windows a narrow path still goes through the locale there, whose exception reaches
// the caller, who can go on. Linux has narrow names itself.
TEST(Environment, MayHaveNoWordsForAPath)
{
    int tried = 0;
    for (char const* const locale : {"C", "POSIX", "en_US.UTF-16", "en_US.ISO-8859-1"}) {
        SCOPED_TRACE(locale);
        Installation installation("Bücher ☃");
        installation.Complete().Environment("LC_ALL", locale);
        Outcome const outcome = installation.Run("LoadsInAnyEnvironment");
        EXPECT_FALSE(outcome.ending.timedOut);
        EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
        EXPECT_EQ(outcome["program"], "returned");
        auto const words = Rig::IsWindows() ? "path codecvt" : "returned";
        for (char const* const call : {"initialize", "call", "expand"})
            EXPECT_THAT(outcome[call].asString(),
                        testing::AnyOf("returned", testing::HasSubstr(words)))
                << call;
        if (!Rig::IsWindows()) {
            EXPECT_EQ(outcome["state"], "ISSOClientPrivate::GetSessionState");
        }
        ++tried;
    }
    std::cout << "faults tried: " << tried << std::endl;
}
