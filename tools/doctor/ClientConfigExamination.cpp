#include <algorithm>
#include <optional>

#include "discovery/PathText.h"
#include "doctor/Examination.h"
#include "doctor/JsonInspection.h"
#include "doctor/Location.h"
#include "doctor/Searches.h"
#include "doctor/Text.h"
#include "platform/Platform.h"

namespace Halvorix::Doctor {

namespace {

using SSOServices::SSOClientConfig;

struct Key {
    char const* section;
    char const* name;
    TextKind kind;
    std::string (*value)(SSOClientConfig const&);
};

// In the order in which the library reads them; the search paths apart.
constexpr Key Keys[] = {
    {"ssoServer", "appName", TextKind::Name,
     [](SSOClientConfig const& c) { return Shown(c.appName); }},
    {"ssoServer", "exeName", TextKind::Name,
     [](SSOClientConfig const& c) { return Shown(c.exeName); }},
    {"ssoServer", "processName", TextKind::Narrow,
     [](SSOClientConfig const& c) { return c.processName; }},
    {"ssoServer", "serverName", TextKind::Narrow,
     [](SSOClientConfig const& c) { return c.serverName; }},
    {"ssoServer", "bundleId", TextKind::Wide,
     [](SSOClientConfig const& c) { return Shown(c.bundleId); }},
    {"ssoServer", "VersionCompatibilityConfigfilePath", TextKind::Path,
     [](SSOClientConfig const& c) { return Shown(c.versionCompatibilityConfigFilePath); }},
    {"ssoServer", "searchPaths", TextKind::PathList, nullptr},
    {"openssl", "moduleName", TextKind::Name,
     [](SSOClientConfig const& c) { return Shown(c.openSslModuleName); }},
    {"openssl", "modulePath", TextKind::Path,
     [](SSOClientConfig const& c) { return Shown(c.openSslModulePath); }},
};

std::vector<Key> KeysOf(std::string const& section)
{
    std::vector<Key> keys;
    for (Key const& key : Keys)
        if (key.section == section)
            keys.push_back(key);
    return keys;
}

// Where the others of them are read, and what the other file has.
std::vector<KeyElsewhere> KeysOutside(std::string const& section)
{
    std::vector<KeyElsewhere> keys{
        {"ssoClientPlugin", Shown(SSOServices::CompatibilityFileName), true}};
    for (Key const& key : Keys)
        if (key.section != section)
            keys.push_back({key.name, key.section, false});
    return keys;
}

// False where the library ends with an exception.
bool CheckSection(JsonInspection const& file, std::string const& name,
                  std::vector<Oddity>& oddities)
{
    Json::Value const& section = static_cast<Json::Value const&>(file.root)[name];
    if (section.isNull())
        return true;
    if (!section.isObject()) {
        oddities.push_back(
            WrongType(file.PositionOf(name, section), name, section, "an object", true));
        return false;
    }
    bool isRead = true;
    std::vector<std::string> names;
    for (Key const& key : KeysOf(name)) {
        isRead = file.CheckText(section, name + ".", key.name, key.kind, oddities) && isRead;
        names.emplace_back(key.name);
    }
    file.FindUnknown(section, name + ".", names, oddities, KeysOutside(name));
    return isRead;
}

void FindHalfOverride(JsonInspection const& file, std::vector<Oddity>& oddities)
{
    Json::Value const& section = static_cast<Json::Value const&>(file.root)["openssl"];
    if (!section.isObject())
        return;
    bool const hasName = section.isMember("moduleName");
    if (hasName != section.isMember("modulePath"))
        oddities.push_back(
            {file.PositionOf("openssl", section),
             "openssl",
             "half-override",
             std::string("has ") + (hasName ? "moduleName" : "modulePath") +
                 " only, which overrides nothing",
             std::string("add ") + (hasName ? "modulePath" : "moduleName") + ", or remove both",
             false,
             {}});
}

// Its list of OpenSSL has the key of a section of this one.
void TellOtherFile(JsonInspection const& file, std::vector<Oddity>& oddities)
{
    if (!file.root.isMember("ssoClientPlugin"))
        return;
    for (Oddity& oddity : oddities) {
        if (!oddity.stopsReading)
            continue;
        oddity.text += "; this looks like a version compatibility file";
        oddity.remedy = "put the client configuration there";
    }
}

void FindOddities(JsonInspection const& file, std::vector<Oddity>& oddities)
{
    if (file.root.isNull())
        return;
    if (!file.root.isObject()) {
        oddities.push_back(
            WrongType(file.PositionOf(file.root), "the top level", file.root, "an object", true));
        return;
    }
    CheckSection(file, "ssoServer", oddities);
    CheckSection(file, "openssl", oddities);
    FindHalfOverride(file, oddities);
    // Editors find its schema by the third.
    file.FindUnknown(file.root, "", {"ssoServer", "openssl", "$schema"}, oddities, KeysOutside(""));
    TellOtherFile(file, oddities);
    file.FindRepeated(oddities);
    file.FindTrailing(oddities);
    std::stable_sort(oddities.begin(), oddities.end(), [](Oddity const& a, Oddity const& b) {
        return a.at.line != b.at.line ? a.at.line < b.at.line : a.at.column < b.at.column;
    });
}

// The member in the file, null if it has none or is of no use.
Json::Value const& Member(JsonInspection const& file, Key const& key)
{
    Json::Value const& root = file.root;
    if (!root.isObject() || !root[key.section].isObject())
        return Json::Value::nullSingleton();
    return root[key.section][key.name];
}

// What the library reads there; empty where it reads nothing.
std::string TextOf(Json::Value const& value, TextKind kind)
{
    if (value.isArray() || value.isObject())
        return {};
    std::string text = value.asString();
    return kind != TextKind::Narrow && !IsReadable(text) ? std::string() : text;
}

void AddSearchPaths(SSOClientConfig const& config, bool hasLocation, Position at,
                    std::vector<KeyValue>& keys)
{
    for (std::size_t i = 0; i < config.searchPaths.size(); ++i) {
        // That of the server application's installation comes last, if at all.
        bool const isLocation = hasLocation && i + 1 == config.searchPaths.size();
        keys.push_back({"ssoServer.searchPaths", Shown(config.searchPaths[i]),
                        isLocation ? Origin::Registry : Origin::File,
                        isLocation ? Position() : at});
    }
    if (config.searchPaths.empty())
        keys.push_back({"ssoServer.searchPaths", "", Origin::Unset, {}});
}

void AddKeys(Resolver const& resolver, JsonInspection const* file, ClientConfig& told)
{
    SSOClientConfig const& config = resolver.GetClientConfig();
    for (Key const& key : Keys) {
        Json::Value const& member =
            file == nullptr ? Json::Value::nullSingleton() : Member(*file, key);
        std::string const text = TextOf(member, key.kind);
        Position const at =
            file == nullptr || text.empty() ? Position() : file->PositionOf(key.name, member);
        if (key.value == nullptr) {
            AddSearchPaths(config, told.hasLocation, at, told.keys);
            continue;
        }
        std::string value = Tools::Presentable(key.value(config));
        Origin const origin = value.empty()  ? Origin::Unset
                              : text.empty() ? Origin::Default
                                             : Origin::File;
        told.keys.push_back({std::string(key.section) + "." + key.name, std::move(value), origin,
                             origin == Origin::File ? at : Position()});
    }
}

// What looks like two paths with a comma between them, and is the name of a folder.
void DropFoldersWithCommas(Resolver& resolver, std::vector<Oddity>& oddities)
{
    auto const isFolder = [&resolver](Oddity const& oddity) {
        if (oddity.code != "comma-in-path")
            return false;
        std::size_t const begin = oddity.text.find('"') + 1;
        std::string const path = oddity.text.substr(begin, oddity.text.rfind('"') - begin);
        return LookFor(resolver.ResolvedSearchPaths({Wide(path)}).front()).isThere;
    };
    oddities.erase(std::remove_if(oddities.begin(), oddities.end(), isFolder), oddities.end());
}

ConfigState StateOf(Resolver const& resolver, JsonInspection const& file)
{
    if (resolver.IsClientConfigLoaded())
        return ConfigState::Read;
    return file.error && !file.error->StopsReading() ? ConfigState::NotJson : ConfigState::Stopped;
}

// It is asked only where a configuration was read.
void TellUnaskedLocation(Resolver& resolver, std::optional<std::wstring> const& location,
                         ClientConfig& config)
{
    if (!location)
        return;
    std::wstring const& appName = resolver.GetClientConfig().appName;
    // As it would have been searched.
    std::wstring const directory = resolver.ResolvedSearchPaths({*location}).front();
    config.unasked = {Shown(*location), LookFor(SSOServices::JoinPath(directory, appName)).isThere};
}

} // namespace

void ExamineClientConfig(Resolver& resolver, Findings& findings)
{
    ClientConfig& config = findings.config;
    InstalledLocation const location = ReadInstalledLocation();
    config.locationOddities = OdditiesOf(location, Shown(resolver.GetClientConfig().appName));
    config.override = Shown(resolver.GetSSOClientConfigFileOverride());
    if (config.override.empty())
        config.search = LookThrough(SSOServices::ClientConfigFileName,
                                    DirectoriesSearchedFor(SSOServices::ClientConfigFileName));
    std::wstring const file = resolver.GetSSOClientConfigFile();
    config.file = Shown(file);
    if (!LookFor(file).isThere) {
        AddKeys(resolver, nullptr, config);
        TellUnaskedLocation(resolver, location.directory, config);
        return;
    }
    config.isInWorkingDirectory =
        config.override.empty() && file == SSOServices::ClientConfigFileName;
    JsonInspection const inspection(file, std::ios::binary);
    config.state = StateOf(resolver, inspection);
    config.parseError = inspection.error;
    if (config.state == ConfigState::NotJson)
        TellUnaskedLocation(resolver, location.directory, config);
    if (!inspection.error)
        FindOddities(inspection, config.oddities);
    DropFoldersWithCommas(resolver, config.oddities);
    Shorten(config.oddities);
    // What was stored before an exception stays stored, and no default follows it.
    AddKeys(resolver, inspection.error ? nullptr : &inspection, config);
}

} // namespace Halvorix::Doctor
