#include "loader/LoadChecks.h"

#include <exception>
#include <memory>
#include <string>

#include <plugin/ILogger.h>
#include <plugin/ISSOClient.h>
#include <plugin/ISSOClientFactory.h>
#include <plugin/ISSOClientModule.h>
#include <plugin/ISSOClientPrivate.h>
#include <plugin/ISSOClientUI.h>
#include <plugin/ISSOLogManager.h>
#include <plugin/ISSOServerManager.h>
#include "common/ChildProcess.h"
#include "common/PluginRun.h"
#include "common/System.h"
#include "common/Utf8.h"
#include "platform/Platform.h"
#include "support/SystemError.h"
#include "support/TextConversion.h"

namespace Halvorix::PluginLoader {

namespace {

using SSOServices::ISSOClientFactory;
using Tools::Result;
using FactoryProcedure = std::shared_ptr<ISSOClientFactory> (*)();

std::string SystemReason()
{
    std::string reason =
        SSOServices::WideToUtf8(SSOServices::FormatSystemError(Platform::LastError()));
    while (!reason.empty() && (reason.back() == '\n' || reason.back() == '\r'))
        reason.pop_back();
    return reason.empty() ? "the system gives no reason" : reason;
}

// False, and told, if an exception came out.
template <class Action>
bool Try(char const* check, std::string const& what, Channel& report, Action action)
{
    report.Step(check, "in " + what);
    try {
        action();
        return true;
    } catch (std::exception const& exception) {
        report.Add(check, Result::Failed, what + " throws: " + exception.what());
    } catch (...) {
        report.Add(check, Result::Failed, what + " throws what is no std::exception");
    }
    return false;
}

class InterfaceWalk {
public:
    InterfaceWalk(ISSOClientFactory& pluginFactory, Channel& aReport)
        : factory(pluginFactory), report(aReport)
    {
    }

    template <class Interface>
    std::shared_ptr<Interface> Ask(char const* name,
                                   std::shared_ptr<Interface> (ISSOClientFactory::*getter)())
    {
        std::shared_ptr<Interface> answer;
        if (!Try("interfaces", std::string("Get") + (name + 1), report,
                 [&] { answer = (factory.*getter)(); }))
            return answer;
        // A plugin may do without all of them but the one that signs in.
        if (!answer && std::string(name) == "ISSOClient") {
            isClientEmpty = true;
            return answer;
        }
        std::string& list = answer ? present : empty;
        list += (list.empty() ? "" : ", ") + std::string(name);
        return answer;
    }

    void Tell() const
    {
        if (!present.empty())
            report.Add("interfaces", Result::Ok, present);
        if (isClientEmpty)
            report.Add("interfaces", Result::Failed,
                       "empty: ISSOClient, without which nobody can sign in");
        if (!empty.empty())
            report.Add("interfaces", Result::Note, "empty: " + empty);
    }

private:
    ISSOClientFactory& factory;
    Channel& report;
    std::string present;
    std::string empty;
    bool isClientEmpty = false;
};

void CheckLogger(SSOServices::ISSOLogManager* logs, Channel& report)
{
    std::shared_ptr<SSOServices::ILogger> logger;
    if (logs != nullptr &&
        !Try("logger", "GetLogger", report, [&] { logger = logs->GetLogger(L"HxSSOServices"); }))
        return;
    if (logger) {
        if (Try("logger", "WriteLine", report, [&] {
                logger->WriteLine(L"A check of the plugin writes this line.", Log::LogLevel::Info);
            }))
            report.Add("logger", Result::Ok, "comes from the plugin, and takes a line");
    } else
        report.Add("logger", Result::Note,
                   logs == nullptr ? "none, since there is no ISSOLogManager"
                                   : "none: GetLogger gives an empty one");
}

void LoadAndAsk(Json::Value const& request, Channel& report)
{
    std::filesystem::path const file = std::filesystem::u8path(Tools::TextOf(request, "file"));
    report.Step("load", "while it is loaded");
    if (!LoadFirst(request, report))
        return;
    std::string const folder = Tools::TextOf(request, "dependencyFolder");
    Platform::SetDependencyDirectory(SSOServices::Utf8ToWide(folder).c_str());
    Platform::ModuleHandle const module = Platform::LoadModule(Tools::Wide(file));
    std::string const reason = module == nullptr ? SystemReason() : std::string();
    Platform::SetDependencyDirectory(nullptr);
    if (module == nullptr) {
        report.Add("load", Result::Failed, reason);
        return;
    }
    report.Add("load", Result::Ok, "loaded");
    auto const procedure = reinterpret_cast<FactoryProcedure>(
        Platform::FindProcedure(module, Platform::FactoryProcedureName()));
    if (procedure == nullptr) {
        report.Add("factory", Result::Failed, "no procedure: " + SystemReason());
        return;
    }
    std::shared_ptr<ISSOClientFactory> factory;
    if (!Try("factory", "GetSSOClientFactory", report, [&] { factory = procedure(); }))
        return;
    if (!factory) {
        report.Add("factory", Result::Failed,
                   "GetSSOClientFactory gives an empty one: the plugin declines");
        return;
    }
    report.Add("factory", Result::Ok, "given");

    // In the order in which the library asks.
    InterfaceWalk walk(*factory, report);
    walk.Ask("ISSOServerManager", &ISSOClientFactory::GetSSOServerManager);
    auto const logs = walk.Ask("ISSOLogManager", &ISSOClientFactory::GetSSOLogManager);
    walk.Ask("ISSOClientModule", &ISSOClientFactory::GetSSOClientModule);
    walk.Ask("ISSOClient", &ISSOClientFactory::GetSSOClient);
    walk.Ask("ISSOClientUI", &ISSOClientFactory::GetSSOClientUI);
    walk.Ask("ISSOClientPrivate", &ISSOClientFactory::GetSSOClientPrivate);
    walk.Tell();
    CheckLogger(logs.get(), report);
    // Before the plugin hears that its objects are let go.
    report.End();
    Tools::EndProcess();
}

} // namespace

bool LoadFirst(Json::Value const& request, Channel& report)
{
    for (Json::Value const& needed : request["first"]) {
        std::filesystem::path const file = std::filesystem::u8path(needed.asString());
        if (!Platform::LoadedModuleFile(Tools::Wide(file.filename())).empty())
            continue; // one of this process itself
        if (Platform::LoadModule(Tools::Wide(file)) == nullptr) {
            report.Add("load", Result::Failed,
                       Tools::Utf8(file.filename()) + " of the host: " + SystemReason());
            return false;
        }
        Tools::ServeSymbols(file);
    }
    return true;
}

void CheckLoaded(Json::Value const& request, Channel& channel)
{
    LoadAndAsk(request, channel);
    channel.End();
    Tools::EndProcess();
}

} // namespace Halvorix::PluginLoader
