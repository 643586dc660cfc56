// A module whose constructors use the library, while another thread uses it, too: the
// system's loader lets nobody else in meanwhile.

#include <filesystem>
#include <fstream>
#include <thread>

#include <gmock/gmock.h>

#include <NetworkCookie.h>
#include <SSOClientPrivate.h>
#include <SSOServicesPrivate.h>
#include "framework/HostProgram.h"
#include "framework/Installation.h"
#include "framework/LateBinding.h"
#include "framework/Variable.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServices::NetworkCookie;
using Rig::Installation;
using Rig::Outcome;

namespace {

namespace fs = std::filesystem;

HOST_PROGRAM(UsesTheLibraryBesideAModulesConstructor)
{
    fs::path const inside = fs::u8path(Rig::Variable("HXSSO_MODULE_INSIDE"));
    bool answered = false;
    std::thread other([&] {
        while (!fs::exists(inside))
            std::this_thread::yield();
        NetworkCookie cookie;
        answered = arguments[1] == "document"
                       ? SSOServicesPrivate::JsonToNetworkCookie("{}", cookie)
                       : !SSOClientPrivate::GetSSOClientConfigFile().empty();
    });
    report("bound", Rig::BindModule(arguments[0]) != nullptr);
    other.join();
    report("answered", answered);
    report("answeredInside", fs::exists(inside.parent_path() / "answered"));
}

class AModulesConstructor : public testing::TestWithParam<char const*> {};

} // namespace

TEST_P(AModulesConstructor, IsNotWaitedForUnderALockOfTheLibrary)
{
    std::string const use = GetParam();
    Installation installation;
    installation.Plugin("UsingModule", "app")
        .Environment("HXSSO_MODULE_INSIDE", installation.Text("app/inside"))
        .Environment("HXSSO_MODULE_USES", use)
        .Limit(std::chrono::seconds(20));
    Outcome const outcome =
        installation.Run("UsesTheLibraryBesideAModulesConstructor",
                         {installation.Text("app/" + Rig::ModuleName("UsingModule")), use});
    EXPECT_FALSE(outcome.ending.timedOut);
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    EXPECT_EQ(outcome["bound"], true);
    EXPECT_EQ(outcome["answered"], true);
    EXPECT_EQ(outcome["answeredInside"], true);
}

INSTANTIATE_TEST_SUITE_P(Lifetime, AModulesConstructor, testing::Values("document", "path"),
                         [](auto const& info) { return std::string(info.param); });
