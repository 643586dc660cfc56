#include "loader/RealLoad.h"

#include <exception>
#include <filesystem>
#include <memory>

#include <plugin/ISSOClientModule.h>
#include "common/ChildProcess.h"
#include "common/PluginRun.h"
#include "common/System.h"
#include "discovery/PathText.h"
#include "doctor/Searches.h"
#include "doctor/TargetProgram.h"
#include "doctor/Text.h"
#include "host/SSOClientManager.h"
#include "host/SupportFileSearchPaths.h"
#include "loader/LoadChecks.h"
#include "support/LogSink.h"

namespace Halvorix::PluginLoader {

namespace {

using SSOServices::SSOClientManager;

std::wstring WideText(Json::Value const& request, char const* member)
{
    return Doctor::Wide(Tools::TextOf(request, member));
}

// One that has its variables searched for again and again says the same without end.
constexpr std::size_t MostLog = std::size_t{4} << 20U;
struct LogLimit {};

void Interrupted(std::string const& text, bool isLimit, Channel& channel)
{
    Json::Value record;
    record["interruption"] = text;
    record["isLimit"] = isLimit;
    channel.Write(record);
}

} // namespace

void LoadByLibrary(Json::Value const& request, Channel& channel)
{
    Doctor::SetTargetProgram({std::filesystem::u8path(Tools::TextOf(request, "executable")),
                              std::filesystem::u8path(Tools::TextOf(request, "library"))});
    // A plugin may be named by a path that is relative to it.
    Tools::SearchAsIn(Doctor::CurrentTargetProgram().executable);
    // A host gets its locale from the library's first use.
    SSOClientManager::GetInstance();
    SSOServices::StoreSupportFileSearchPaths(
        SSOServices::SplitSupportPathList(WideText(request, "searchPaths")));
    std::string last;
    std::size_t told = 0;
    auto const tee = [&](std::wstring const& text, Log::LogLevel level) {
        Json::Value record;
        record["level"] = static_cast<int>(level);
        record["text"] = last = Doctor::Shown(text);
        told += last.size();
        if (told > MostLog)
            throw LogLimit();
        channel.Write(record);
        SSOServices::LogWrite(text, level);
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
    } catch (Doctor::QuestionLimit const& limit) {
        Interrupted(limit.text, true, channel);
    } catch (LogLimit const&) {
        Interrupted("writes more than 4 MiB of log, the limit of what is shown", true, channel);
    } catch (std::exception const& exception) {
        Interrupted(Tools::Presentable(exception.what()), false, channel);
    } catch (...) {
        Interrupted("what is no std::exception", false, channel);
    }
    // What it has of the plugin is not let go: no more of the plugin is asked.
    channel.End();
    Tools::EndProcess();
}

} // namespace Halvorix::PluginLoader
