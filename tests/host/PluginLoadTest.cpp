#include <gmock/gmock.h>

#include "WebServicesManager.h"
#include "framework/HostProgram.h"
#include "framework/Installation.h"

using Halvorix::WebServices::WebServicesManager;

namespace {

HOST_PROGRAM(AsksWhetherLoggedIn)
{
    report("initialize", WebServicesManager::Initialize(false));
    report("isLoggedIn", WebServicesManager::GetInstance()->IsLoggedIn());
}

} // namespace

TEST(PluginLoad, TellsTheWholeRoad)
{
    Rig::Installation installation;
    Rig::Outcome const outcome = installation.Complete().Run("AsksWhetherLoggedIn");
    EXPECT_EQ(outcome.ending.status, 0) << outcome.errors;
    for (auto const& l : outcome.log) std::cerr << l << "\n";
    for (auto const& l : outcome.calls) std::cerr << l << "\n";
    for (auto const& [k,v] : outcome.values) std::cerr << k << " " << v << "\n";
    for (auto const& l : outcome.console) std::cerr << l << "\n";
}
