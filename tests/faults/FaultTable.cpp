#include "faults/FaultTable.h"

#include <utility>

namespace Faults {

namespace {

using Rig::Installation;
using Rig::ModuleName;

constexpr char const* MemberOfNoObject =
    "in Json::Value::resolveReference(key, end): requires objectValue";
constexpr char const* IndexOfNoArray =
    "in Json::Value::operator[](ArrayIndex)const: requires arrayValue";
constexpr char const* FindInNoObject =
    "in Json::Value::find(begin, end): requires objectValue or nullValue";
constexpr char const* NoText = "Type is not convertible to string";
constexpr char const* TooDeep = "Exceeded stackLimit in readValue().";

constexpr char const* ConfigInvalid = "Failed to load client config file ";
constexpr char const* CompatibilityInvalid = ". Possibly json format is not valid.";
constexpr char const* NoPluginListed = "list is empty under key ssoClientPlugin in ";
constexpr char const* NoOpenSslListed = "list is empty under key openssl in ";
constexpr char const* NoPluginFits = "Failed to find compatible client plugin version for ";
constexpr char const* NoOpenSslFits = "Failed to find compatible openssl version for ";
constexpr char const* BlankModule = "Blank or missing key 'module' in ";
constexpr char const* BlankPath = "Blank or missing key 'modulePath' or 'modulePathWoW64' in ";
constexpr char const* BlankVersion = "Blank or missing key 'version' in ";
constexpr char const* NoRange = "Missing object 'compatibleSsoServicesVersion' in ";
constexpr char const* EmptyRange = "Invalid version range in ";

constexpr char const* Range = R"("compatibleSsoServicesVersion": {"minVersion": "10"})";

std::string Nested() { return std::string(5000, '['); }

std::string Module(std::string const& members) { return "[{" + members + "}]"; }

std::string const Named = R"("module": "m", "modulePath": "/p", "version": "1")";

class Table {
public:
    Table()
    {
        AddClientConfig();
        AddServerAndCompatibility();
        AddLists();
        AddModules();
        AddPlugin();
    }

    std::vector<Fault> faults;

private:
    void Add(std::string name, std::string place, std::function<void(Circumstances&)> happen)
    {
        faults.push_back({std::move(name), std::move(place), std::move(happen)});
    }

    void Config(char const* name, Presence presence, std::string const& content, char const* told,
                char const* raised = "")
    {
        Document document{presence, content, {}, raised};
        if (*told != '\0')
            document.told = {told};
        Add(name, "client config", [document](Circumstances& c) { c.clientConfig = document; });
    }

    void Compatibility(char const* name, Presence presence, std::string const& content,
                       std::vector<std::string> const& told, char const* raised = "")
    {
        Document const document{presence, content, told, raised};
        Add(name, "compatibility file",
            [document](Circumstances& c) { c.compatibility = document; });
    }

    void Plugins(char const* name, std::string const& json, std::vector<std::string> const& told,
                 char const* raised = "")
    {
        ModuleList const list{json, told, raised, false};
        Add(name, "plugin list", [list](Circumstances& c) { c.plugins = list; });
    }

    void OpenSsl(char const* name, std::string const& json, std::vector<std::string> const& told,
                 char const* raised = "")
    {
        ModuleList const list{json, told, raised, false};
        Add(name, "openssl", [list](Circumstances& c) { c.openSsl = list; });
    }

    void Modules(char const* name, ModuleKind kind, std::function<void(Installation&)> place)
    {
        Add(name, "module", [kind, place](Circumstances& c) {
            c.module = kind;
            c.placeModule = place;
        });
    }

    void Reacts(std::string const& operation, bool mayBeEmpty)
    {
        auto const reacting = [operation](Reaction reaction) {
            return [operation, reaction](Circumstances& c) { c.reactions[operation] = reaction; };
        };
        if (mayBeEmpty)
            Add(operation + " gives nothing", operation, reacting(Reaction::Empty));
        Add(operation + " throws", operation, reacting(Reaction::Throws));
        Add(operation + " throws a number", operation, reacting(Reaction::ThrowsNumber));
    }

    void AddClientConfig()
    {
        Config("client config missing", Presence::Missing, "", "");
        Config("client config a folder", Presence::Folder, "", ConfigInvalid);
        Config("client config unreadable", Presence::Unreadable, "{}", ConfigInvalid);
        Config("client config empty", Presence::File, "", ConfigInvalid);
        Config("client config cut", Presence::File, "{\"ssoServer\": {", ConfigInvalid);
        Config("client config no text", Presence::File, std::string("\0\x01\xff\xfe", 4),
               ConfigInvalid);
        Config("client config an array", Presence::File, "[]", "", MemberOfNoObject);
        Config("client config a number", Presence::File, "7", "", MemberOfNoObject);
        Config("client config with a list for a text", Presence::File,
               R"({"ssoServer": {"serverName": []}})", "", NoText);
        Config("client config with a number for an object", Presence::File, R"({"openssl": 7})", "",
               MemberOfNoObject);
        Config("client config too deep", Presence::File, Nested(), "", TooDeep);
    }

    void AddServerAndCompatibility()
    {
        Add("server missing", "server", [](Circumstances& c) { c.serverApp = Presence::Missing; });
        Add("server a folder", "server", [](Circumstances& c) { c.serverApp = Presence::Folder; });
        std::vector<std::string> const invalid = {CompatibilityInvalid, NoPluginListed,
                                                  NoPluginFits};
        Compatibility("compatibility missing", Presence::Missing, "", {});
        Compatibility("compatibility a folder", Presence::Folder, "", invalid);
        Compatibility("compatibility unreadable", Presence::Unreadable, "{}", invalid);
        Compatibility("compatibility blank", Presence::File, " ", invalid);
        Compatibility("compatibility cut", Presence::File, "{\"ssoClientPlugin\": [", invalid);
        Compatibility("compatibility an array", Presence::File, "[]", {}, MemberOfNoObject);
        Compatibility("compatibility too deep", Presence::File, Nested(), {}, TooDeep);
    }

    void AddLists()
    {
        std::vector<std::string> const none = {NoPluginListed, NoPluginFits};
        Plugins("no plugins", "null", none);
        Plugins("plugins a text", "\"text\"", none);
        Plugins("plugins an object", R"({"a": {}})", {}, IndexOfNoArray);
        Plugins("plugins of numbers", "[7]", {}, MemberOfNoObject);
        Plugins("plugin without a name", Module(""), {BlankModule, NoPluginListed, NoPluginFits});
        Plugins("plugin without a path", Module(R"("module": "m")"),
                {BlankPath, NoPluginListed, NoPluginFits});
        Plugins("plugin with a list for a name", Module(R"("module": [])"), {}, NoText);
        Plugins("plugin without a range", Module(Named), {NoRange, NoPluginListed, NoPluginFits});
        Plugins("plugin with an empty range",
                Module(Named + R"(, "compatibleSsoServicesVersion": {})"),
                {EmptyRange, NoPluginListed, NoPluginFits});
        Plugins("plugin with a number for a range",
                Module(Named + R"(, "compatibleSsoServicesVersion": 7)"), {}, FindInNoObject);
        Plugins("plugin for another version",
                Module(Named + R"(, "compatibleSsoServicesVersion": {"minVersion": "11"})"),
                {NoPluginFits});

        std::vector<std::string> const noOpenSsl = {NoOpenSslListed, NoOpenSslFits};
        OpenSsl("no openssl", "null", noOpenSsl);
        OpenSsl("openssl an object", R"({"a": {}})", {}, IndexOfNoArray);
        Add("openssl file missing", "openssl", [](Circumstances& c) { c.openSslFile = false; });
    }

    void AddModules()
    {
        std::string const file = "server/plugin/" + ModuleName("RecordingPlugin");
        Modules("module missing", ModuleKind::Missing, [](Installation&) {});
        Modules("module a folder", ModuleKind::DoesNotLoad,
                [file](Installation& installation) { installation.Folder(file); });
        Modules("module of text", ModuleKind::DoesNotLoad, [file](Installation& installation) {
            installation.File(file, "this is no module");
        });
        Modules("module empty", ModuleKind::DoesNotLoad,
                [file](Installation& installation) { installation.File(file, ""); });
        Modules("module lacking a dependency", ModuleKind::DoesNotLoad,
                [file](Installation& installation) {
                    installation.Plugin("DependentPlugin");
                    std::filesystem::rename(
                        installation.Path("server/plugin/" + ModuleName("DependentPlugin")),
                        installation.Path(file));
                });
        Modules("module with the plain name", ModuleKind::NoFactoryProcedure,
                [file](Installation& installation) {
                    installation.Plugin("PlainNamePlugin");
                    std::filesystem::rename(
                        installation.Path("server/plugin/" + ModuleName("PlainNamePlugin")),
                        installation.Path(file));
                });
    }

    void AddPlugin()
    {
        Reacts("GetSSOClientFactory", true);
        for (char const* const getter :
             {"GetSSOServerManager", "GetSSOLogManager", "GetSSOClientModule", "GetSSOClient",
              "GetSSOClientUI", "GetSSOClientPrivate"})
            Reacts(std::string("ISSOClientFactory::") + getter, true);
        Reacts("ISSOLogManager::GetLogger", true);
        for (char const* const operation :
             {"ILogger::WriteLine", "ISSOServerManager::SetSSOServerAppFiles",
              "ISSOServerManager::SetSSOServerProcessName", "ISSOServerManager::SetSSOServerName",
              "ISSOClientModule::SetOpenSslModule", "ISSOClientModule::Initialize",
              "ISSOClientModule::InitializeUI", "ISSOClientModule::UninitializeUI",
              "ISSOClient::IsLoggedIn", "ISSOClientUI::IsLoginInProgress",
              "ISSOClientPrivate::GetSessionState", "ISSOServerManager::IsSSOServerProcessReady"})
            Reacts(operation, false);
    }
};

} // namespace

std::vector<Fault> const& AllFaults()
{
    static Table const table;
    return table.faults;
}

std::vector<std::string> const& AllToldLines()
{
    static std::vector<std::string> const lines = {
        ConfigInvalid,
        "Failed to find SSO server app ",
        "Failed to find version compatibility file ",
        "Version compatibility file SSOVersionCompatibility.config not found",
        "since version compatibility file ",
        CompatibilityInvalid,
        NoPluginListed,
        NoOpenSslListed,
        NoPluginFits,
        NoOpenSslFits,
        BlankModule,
        BlankPath,
        BlankVersion,
        NoRange,
        EmptyRange,
        "Client plugin module not found: ",
        "Failed to load client plugin module ",
        "Failed to get factory proc from client plugin module ",
        "Openssl module not found: ",
        "ISSOClientFactory::GetSSOClientModule returned null.",
        "ISSOClientFactory::GetSSOServerManager returned null.",
        "ISSOClientFactory::GetSSOClient returned null.",
        "ISSOClientFactory::GetSSOClientUI returned null.",
        "ISSOClientFactory::GetSSOClientPrivate returned null."};
    return lines;
}

} // namespace Faults
