#include "faults/LoadModel.h"

namespace Faults {

std::string LoadModel::Call(std::string const& getter, std::string const& operation)
{
    try {
        if (!EnsurePluginLoaded())
            return "fixed";
        if (!Ask("ISSOClientFactory::" + getter)) {
            Say("ISSOClientFactory::" + getter + " returned null.");
            return "fixed";
        }
        Ask(operation);
        return "usual";
    } catch (Thrown const& thrown) {
        return "threw " + thrown.text;
    }
}

void LoadModel::ReleaseManager() { loadBegun = hasModule = hasFactory = false; }

bool LoadModel::EnsurePluginLoaded()
{
    if (hasFactory)
        return true;
    if (hasLogger)
        Ask("ILogger::WriteLine"); // the banner
    return LoadPlugin() && hasFactory;
}

bool LoadModel::LoadPlugin()
{
    if (hasModule)
        return true;
    if (loadBegun)
        return false;
    loadBegun = true;
    if (!ChoosePlugin() || given.module == ModuleKind::Missing) {
        Say("Client plugin module not found: ");
        return false;
    }
    if (given.module == ModuleKind::DoesNotLoad) {
        Say("Failed to load client plugin module ");
        return false;
    }
    hasModule = true;
    if (given.module == ModuleKind::NoFactoryProcedure) {
        Say("Failed to get factory proc from client plugin module ");
        return false;
    }
    ++factoryCalls;
    if (!Ask("GetSSOClientFactory"))
        return false;
    hasFactory = true;
    SetUpPlugin();
    return true;
}

bool LoadModel::ChoosePlugin()
{
    RaiseIfAny(given.clientConfig.raised);
    TellAll(given.clientConfig.told);
    bool const serverFound = given.serverApp != Presence::Missing;
    if (!serverFound)
        Say("Failed to find SSO server app ");
    if (!serverFound || given.compatibility.presence == Presence::Missing) {
        Say("Failed to find version compatibility file ");
        Say("Version compatibility file SSOVersionCompatibility.config not found");
        Say("Failed to find compatible client plugin version for ");
        Say("since version compatibility file ");
        return false;
    }
    RaiseIfAny(given.compatibility.raised);
    if (!given.compatibility.told.empty()) {
        TellAll(given.compatibility.told);
        return false;
    }
    RaiseIfAny(given.plugins.raised);
    TellAll(given.plugins.told);
    return given.plugins.hasFittingModule;
}

void LoadModel::SetUpPlugin()
{
    bool const server = Ask("ISSOClientFactory::GetSSOServerManager");
    if (server)
        Ask("ISSOServerManager::SetSSOServerAppFiles");
    if (Ask("ISSOClientFactory::GetSSOLogManager")) {
        hasLogger = Ask("ISSOLogManager::GetLogger");
        if (hasLogger)
            Ask("ILogger::WriteLine"); // the early log is never empty here
    }
    if (server) {
        Ask("ISSOServerManager::SetSSOServerProcessName");
        Ask("ISSOServerManager::SetSSOServerName");
    }
    if (Ask("ISSOClientFactory::GetSSOClientModule")) {
        RaiseIfAny(given.openSsl.raised);
        TellAll(given.openSsl.told);
        if (!given.openSsl.hasFittingModule || !given.openSslFile)
            Say("Openssl module not found: ");
        Ask("ISSOClientModule::SetOpenSslModule");
    }
}

bool LoadModel::Ask(std::string const& operation) const
{
    Reaction const reaction = given.ReactionOf(operation);
    if (reaction == Reaction::Throws)
        throw Thrown{TextThrownBy(operation)};
    if (reaction == Reaction::ThrowsNumber)
        throw Thrown{"something else"};
    return reaction != Reaction::Empty;
}

void LoadModel::Say(std::string const& line)
{
    told.insert(line);
    if (hasLogger)
        Ask("ILogger::WriteLine");
}

void LoadModel::TellAll(std::vector<std::string> const& lines)
{
    for (std::string const& line : lines)
        Say(line);
}

void LoadModel::RaiseIfAny(std::string const& text)
{
    if (!text.empty())
        throw Thrown{text};
}

} // namespace Faults
