#include "faults/Circumstances.h"

#include <fstream>
#include <set>

namespace Faults {

namespace {

using Rig::Installation;
using Rig::ModuleName;

constexpr char const* Range =
    R"("compatibleSsoServicesVersion": {"minVersion": "10.22", "maxVersion": "10.22.00.1800"})";

std::string FittingModule(std::string const& name, std::string const& folder)
{
    return R"([{"module": ")" + ModuleName(name) + R"(", "modulePath": "{root}/server/)" + folder +
           R"(", "version": "1.0", )" + Range + "}]";
}

bool CanBeRead(std::filesystem::path const& file)
{
    return std::ifstream(file, std::ios::binary).good();
}

bool Place(Installation& installation, std::string const& file, Presence presence,
           std::string const& content)
{
    namespace fs = std::filesystem;
    std::error_code ignored;
    // Windows removes no file that is read-only.
    fs::permissions(installation.Path(file), fs::perms::owner_all, ignored);
    installation.Remove(file);
    switch (presence) {
    case Presence::Missing:
        return true;
    case Presence::Folder:
        installation.Folder(file);
        return true;
    case Presence::File:
    case Presence::Unreadable:
        break;
    }
    installation.File(file, content);
    if (presence == Presence::File)
        return true;
    fs::permissions(installation.Path(file), fs::perms::none, ignored);
    if (!CanBeRead(installation.Path(file)))
        return true;
    fs::permissions(installation.Path(file), fs::perms::owner_all, ignored);
    return false;
}

std::string ScriptOf(std::string const& operation, Reaction reaction)
{
    switch (reaction) {
    case Reaction::Usual:
        break;
    case Reaction::Empty:
        return R"({"empty": true})";
    case Reaction::Throws:
        return R"({"throw": ")" + TextThrownBy(operation) + R"("})";
    case Reaction::ThrowsNumber:
        return R"({"throw": 7})";
    }
    return "{}";
}

} // namespace

Circumstances::Circumstances()
{
    clientConfig.content =
        R"({"ssoServer": {"serverName": "Server", "processName": "Process"}, "openssl": {}})";
    plugins.json = FittingModule("RecordingPlugin", "plugin");
    openSsl.json = FittingModule("openssl", "openssl");
    placeModule = [](Installation& installation) { installation.Plugin(); };
}

Reaction Circumstances::ReactionOf(std::string const& operation) const
{
    auto const found = reactions.find(operation);
    return found == reactions.end() ? Reaction::Usual : found->second;
}

std::string TextThrownBy(std::string const& operation) { return operation + " says no"; }

bool Arrange(Circumstances const& circumstances, Installation& installation)
{
    std::string compatibility = circumstances.compatibility.content;
    if (compatibility.empty())
        compatibility = R"({"ssoClientPlugin": )" + circumstances.plugins.json +
                        R"(, "openssl": )" + circumstances.openSsl.json + "}";
    std::string const root = installation.Text("");
    for (std::size_t at = compatibility.find("{root}/"); at != std::string::npos;
         at = compatibility.find("{root}/"))
        compatibility.replace(at, 7, root);
    bool const done =
        Place(installation, "app/SSOClient.config", circumstances.clientConfig.presence,
              circumstances.clientConfig.content) &&
        Place(installation, "app/HxSSO.exe", circumstances.serverApp, "placeholder") &&
        Place(installation, "app/SSOVersionCompatibility.config",
              circumstances.compatibility.presence, compatibility) &&
        Place(installation, "server/openssl/" + ModuleName("openssl"),
              circumstances.openSslFile ? Presence::File : Presence::Missing, "placeholder");
    installation.Remove("server/plugin").Folder("server/plugin");
    circumstances.placeModule(installation);
    // Operations of an earlier arrangement go back to what is usual.
    static std::set<std::string> scripted;
    for (auto const& [operation, reaction] : circumstances.reactions)
        scripted.insert(operation);
    for (std::string const& operation : scripted)
        installation.Script(operation, ScriptOf(operation, circumstances.ReactionOf(operation)));
    return done;
}

} // namespace Faults
