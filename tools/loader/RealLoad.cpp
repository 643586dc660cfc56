#include "RealLoad.h"

#include <exception>
#include <filesystem>
#include <memory>

#include "../../include/plugin/ISSOClientModule.h"
#include "../common/ChildProcess.h"
#include "../common/PluginRun.h"
#include "../common/System.h"
#include "../doctor/TargetProgram.h"
#include "../doctor/Text.h"
#include "LoadChecks.h"
#include "discovery/PathText.h"
#include "host/SSOClientManager.h"
#include "host/SupportFileSearchPaths.h"

namespace Halvorix::PluginLoader {

namespace {

using SSOServices::SSOClientManager;

std::wstring WideText(Json::Value const& request, char const* member)
{
    return Doctor::Wide(Tools::TextOf(request, member));
}

void Interrupted(std::string const& text, Channel& channel)
{
    Json::Value record;
    record["interruption"] = text;
    channel.Write(record);
}

} // namespace

void LoadByLibrary(Json::Value const& request, Channel& channel)
{
    Doctor::SetTargetProgram({std::filesystem::u8path(Tools::TextOf(request, "executable")),
                              std::filesystem::u8path(Tools::TextOf(request, "library"))});
    // A host gets its locale from the library's first use.
    SSOClientManager::GetInstance();
    SSOServices::StoreSupportFileSearchPaths(
        SSOServices::SplitSupportPathList(WideText(request, "searchPaths")));
    std::string last;
    auto const tee = [&](std::wstring const& text, Log::LogLevel level) {
        Json::Value record;
        record["level"] = static_cast<int>(level);
        record["text"] = last = Doctor::Shown(text);
        channel.Write(record);
        SSOClientManager::LogWrite(text, level);
    };
    SSOClientManager manager(tee);
    channel.Step("load", "while the library loads it");
    LoadFirst(request, channel); // what that says, the load itself will say better
    try {
        if (std::wstring const config = WideText(request, "config"); !config.empty())
            manager.Ask([&config](SSOServices::SSOPathResolver& resolver) {
                resolver.SetSSOClientConfigFileOverride(config);
            });
        std::shared_ptr<SSOServices::ISSOClientModule> module;
        manager.GetSSOClientModule(module);
        // An interface may be missing; the library says so of a factory that it has.
        Json::Value record;
        record["worked"] = module != nullptr ||
                           last == Doctor::Shown(SSOServices::Messages::NoSSOClientModule.text);
        channel.Write(record);
    } catch (std::exception const& exception) {
        Interrupted(Tools::Presentable(exception.what()), channel);
    } catch (...) {
        Interrupted("what is no std::exception", channel);
    }
    // What it has of the plugin is not let go: no more of the plugin is asked.
    channel.End();
    Tools::EndProcess();
}

} // namespace Halvorix::PluginLoader
