#include "doctor/JsonReport.h"

#include <iostream>

#include <json/value.h>
#include <json/writer.h>

#include "common/Utf8.h"
#include "doctor/Words.h"

namespace Halvorix::Doctor {

namespace {

constexpr int FormatVersion = 2;

Json::Value OrNull(std::string const& text) { return text.empty() ? Json::Value() : text; }

Json::Value ToJson(std::string const& text) { return text; }

Json::Value ToJson(Position at)
{
    Json::Value value;
    if (at.line != 0) {
        value["line"] = at.line;
        value["column"] = at.column;
    }
    return value;
}

Json::Value ToJson(NamedText const& named)
{
    Json::Value value;
    value["name"] = named.name;
    value["value"] = OrNull(named.text);
    return value;
}

// What stands in lists.
Json::Value ToJson(Directory const& item);
Json::Value ToJson(Oddity const& item);
Json::Value ToJson(KeyValue const& item);
Json::Value ToJson(Module const& item);
Json::Value ToJson(Tools::Check const& item);
Json::Value ToJson(Interruption const& item);
Json::Value ToJson(LogMessage const& item);
Json::Value ToJson(Problem const& item);

template <class Item>
Json::Value ToJson(std::vector<Item> const& items)
{
    Json::Value list(Json::arrayValue);
    for (Item const& item : items)
        list.append(ToJson(item));
    return list;
}

Json::Value ToJson(Directory const& directory)
{
    Json::Value value;
    value["path"] = directory.path;
    value["result"] = Code(directory.finding);
    value["unresolvedVariables"] = ToJson(directory.unknown);
    value["similarName"] = OrNull(directory.similar);
    return value;
}

Json::Value ToJson(Search const& search)
{
    Json::Value value;
    value["name"] = search.file;
    value["directories"] = ToJson(search.tried);
    return value;
}

Json::Value ToJson(std::optional<ParseError> const& error)
{
    Json::Value value;
    if (error) {
        value["damage"] = Code(error->damage);
        value["position"] = ToJson(error->at);
        value["message"] = error->message;
        value["text"] = error->line;
    }
    return value;
}

Json::Value ToJson(Oddity const& oddity)
{
    Json::Value value;
    value["position"] = ToJson(oddity.at);
    value["key"] = oddity.key;
    value["code"] = oddity.code;
    value["text"] = oddity.text;
    value["stopsReading"] = oddity.stopsReading;
    return value;
}

Json::Value ToJson(Program const& program)
{
    Json::Value value;
    value["executable"] = program.executable;
    value["isNamed"] = program.isNamed;
    value["executableFlaw"] = OrNull(program.executableFlaw);
    value["executableMachine"] = OrNull(program.executableMachine);
    value["locale"] = program.locale;
    value["executableDirectory"] = program.directory;
    value["workingDirectory"] = program.workingDirectory;
    value["knownFolders"] = ToJson(program.folders);
    value["pathVariables"] = ToJson(program.variables);
    return value;
}

Json::Value LibraryOf(Program const& program)
{
    Json::Value value;
    value["version"] = program.version;
    value["build"] = program.build;
    value["file"] = OrNull(program.libraryFile);
    value["flaw"] = OrNull(program.libraryFlaw);
    value["machine"] = OrNull(program.libraryMachine);
    value["fileVersion"] = OrNull(program.fileVersion);
    value["checks"] = ToJson(program.libraryChecks);
    return value;
}

Json::Value ToJson(KeyValue const& key)
{
    Json::Value value;
    value["key"] = key.key;
    value["value"] = key.origin == Origin::Unset ? Json::Value() : key.value;
    value["origin"] = Code(key.origin);
    value["position"] = ToJson(key.at);
    return value;
}

Json::Value ToJson(ClientConfig const& config)
{
    Json::Value value;
    value["override"] = OrNull(config.override);
    value["search"] = config.override.empty() ? ToJson(config.search) : Json::Value();
    value["file"] = config.state == ConfigState::NoFile ? Json::Value() : config.file;
    value["state"] = Code(config.state);
    value["parseError"] = ToJson(config.parseError);
    if (config.unasked) {
        value["unaskedLocation"]["path"] = config.unasked->path;
        value["unaskedLocation"]["holdsServerApplication"] = config.unasked->holdsServerApp;
    } else {
        value["unaskedLocation"] = Json::Value();
    }
    value["keys"] = ToJson(config.keys);
    value["oddities"] = ToJson(config.oddities);
    return value;
}

void AddDetails(Presence const& presence, Json::Value& value)
{
    value["lookError"] = OrNull(presence.reason);
    value["flaw"] = OrNull(presence.flaw);
    value["similarName"] = OrNull(presence.similar);
}

Json::Value ToJson(ServerApp const& server)
{
    Json::Value value;
    value["search"] = ToJson(server.search);
    value["directory"] = OrNull(server.directory);
    value["executable"] = OrNull(server.executable);
    value["executableExists"] = server.presence.isThere;
    AddDetails(server.presence, value);
    return value;
}

Json::Value ToJson(Module const& module)
{
    Json::Value value;
    value["number"] = module.number;
    value["position"] = ToJson(module.at);
    value["module"] = module.name;
    value["path"] = module.path;
    value["expandedPath"] = module.expandedPath;
    value["version"] = module.version;
    value["range"] = module.range;
    value["verdict"] = Code(module.fit);
    value["detail"] = module.detail;
    value["file"] = OrNull(module.file);
    value["exists"] = module.presence.isThere;
    value["lookError"] = OrNull(module.presence.reason);
    value["unresolvedVariables"] = ToJson(module.unknown);
    return value;
}

Json::Value ToJson(ModuleList const& list)
{
    Json::Value value;
    value["modules"] = ToJson(list.modules);
    value["problem"] = OrNull(list.problem);
    return value;
}

Json::Value ToJson(Compatibility const& compatibility)
{
    Json::Value value;
    value["search"] = ToJson(compatibility.search);
    value["file"] = OrNull(compatibility.file);
    value["parseError"] = ToJson(compatibility.parseError);
    value["oddities"] = ToJson(compatibility.oddities);
    value["ssoClientPlugin"] = ToJson(compatibility.plugins);
    value["openssl"] = ToJson(compatibility.openSsl);
    return value;
}

Json::Value ToJson(Tools::Check const& check)
{
    Json::Value value;
    value["check"] = check.name;
    value["result"] = Tools::Spelled(check.result);
    value["detail"] = check.detail;
    return value;
}

Json::Value ToJson(Plugin const& plugin)
{
    Json::Value value;
    value["file"] = OrNull(plugin.file);
    value["exists"] = plugin.presence.isThere;
    AddDetails(plugin.presence, value);
    value["checks"] = ToJson(plugin.fileChecks);
    value["loadChecks"] = ToJson(plugin.loadChecks);
    return value;
}

Json::Value ToJson(OpenSsl const& openSsl)
{
    Json::Value value;
    value["file"] = OrNull(openSsl.file);
    value["exists"] = openSsl.presence.isThere;
    AddDetails(openSsl.presence, value);
    value["isOverride"] = openSsl.isOverride;
    return value;
}

Json::Value ToJson(Interruption const& interruption)
{
    Json::Value value;
    value["during"] = interruption.during;
    value["text"] = interruption.text;
    return value;
}

Json::Value ToJson(LogMessage const& line)
{
    Json::Value value;
    value["level"] = line.level;
    value["text"] = line.text;
    return value;
}

Json::Value ToJson(std::optional<RealLoad> const& load)
{
    Json::Value value;
    if (load) {
        value["worked"] = load->worked;
        value["death"] = OrNull(load->death);
        value["log"] = ToJson(load->lines);
    }
    return value;
}

Json::Value ToJson(Problem const& problem)
{
    Json::Value value;
    value["code"] = problem.code;
    value["text"] = problem.text;
    value["remedy"] = problem.remedy;
    value["isFatal"] = problem.isFatal;
    return value;
}

Json::Value ToJson(Verdict const& verdict)
{
    Json::Value value;
    value["canWork"] = verdict.canWork;
    value["pluginWasLoaded"] = verdict.isLoaded;
    value["line"] = Told(verdict);
    value["problems"] = ToJson(verdict.problems);
    return value;
}

} // namespace

void WriteJson(Findings const& findings, Verdict const& verdict)
{
    Json::Value document;
    document["formatVersion"] = FormatVersion;
    document["library"] = LibraryOf(findings.program);
    document["program"] = ToJson(findings.program);
    document["clientConfig"] = ToJson(findings.config);
    document["serverApplication"] = ToJson(findings.server);
    document["compatibilityFile"] = ToJson(findings.compatibility);
    document["plugin"] = ToJson(findings.plugin);
    document["opensslModule"] = ToJson(findings.openSsl);
    document["interruptions"] = ToJson(findings.interruptions);
    document["load"] = ToJson(findings.load);
    document["verdict"] = ToJson(verdict);
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    // What no reader of a terminal is to be steered by stays the same text as an escape.
    std::cout << Tools::Escaped(Json::writeString(builder, document)) << std::endl;
}

} // namespace Halvorix::Doctor
