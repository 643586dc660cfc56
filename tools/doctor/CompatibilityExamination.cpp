#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "discovery/PathText.h"
#include "doctor/Examination.h"
#include "doctor/JsonInspection.h"
#include "doctor/Searches.h"
#include "doctor/Text.h"
#include "support/LibraryIdentity.h"

namespace Halvorix::Doctor {

namespace {

using SSOServices::CompareVersions;
using SSOServices::CompatibleModule;
using SSOServices::ModuleFlaw;
using SSOServices::Version;
using SSOServices::VersionRange;
using SSOServices::VersionToString;

std::string TextOf(Json::Value const& object, char const* key)
{
    if (!object.isObject())
        return {};
    Json::Value const& value = object[key];
    return value.isArray() || value.isObject() ? std::string() : value.asString();
}

std::string Spelled(VersionRange const& range)
{
    std::string text;
    auto const add = [&text](std::string const& part) {
        text += (text.empty() ? "" : ", ") + part;
    };
    if (!range.minVersion.empty())
        add("from " + VersionToString(range.minVersion));
    if (!range.maxVersion.empty())
        add("up to " + VersionToString(range.maxVersion));
    for (Version const& version : range.versions)
        add("also " + VersionToString(version));
    return Tools::Presentable(text);
}

constexpr char const* RangeKey = "compatibleSsoServicesVersion";

// All is told of each.
constexpr Json::ArrayIndex MostEntries = 40000;

/// The library's test for a file of the list.
using LookForModule = Presence (*)(std::wstring const&);

/// A record of the file beside what is told of it.
struct Read {
    Module told;
    std::optional<CompatibleModule> record; // nothing where it is dropped
    bool isWrongType = false;               // of what ended its reading
};

bool Serves(CompatibleModule const& record, Version const& own)
{
    CompatibleModule ignored;
    return SelectCompatibleModule(own, {record}, ignored);
}

bool DiffersByZeros(std::string const& one, std::string const& other)
{
    auto const isNumber = [](std::string const& part) {
        return part.find_first_not_of("0123456789") == std::string::npos;
    };
    auto const worth = [](std::string const& part) {
        return part.substr(std::min(part.find_first_not_of('0'), part.size()));
    };
    return one != other && isNumber(one) && isNumber(other) && worth(one) == worth(other);
}

// The first part in which a version that reads as the bound, as far as that goes, has other
// zeros.
std::optional<std::size_t> FindOtherZeros(Version const& own, Version const& bound)
{
    std::optional<std::size_t> first;
    if (bound.size() > own.size())
        return first;
    for (std::size_t i = 0; i < bound.size(); ++i) {
        bool const differs = DiffersByZeros(own[i], bound[i]);
        if (!differs && own[i] != bound[i])
            return std::nullopt;
        if (differs && !first)
            first = i;
    }
    return first;
}

std::string FirstParts(Version version, std::size_t count)
{
    version.resize(count);
    return VersionToString(version);
}

// Where they differ, and what to write: the bound in the version's own spelling.
void TellZeros(Read& read, char const* key, Version const& own, Version const& bound,
               char const* ranks)
{
    std::optional<std::size_t> const part = FindOtherZeros(own, bound);
    if (!part)
        return;
    read.told.detail += " (" + own[*part] + ranks + bound[*part] + ": the zeros count)";
    read.told.remedy =
        std::string("write \"") + key + "\": \"" + FirstParts(own, bound.size()) + "\"";
}

// Of the first one in a list that reads as the version.
void TellZerosOfList(Read& read, Version const& own, std::vector<Version> const& listed)
{
    for (Version const& version : listed) {
        std::optional<std::size_t> const part = FindOtherZeros(own, version);
        if (!part)
            continue;
        read.told.detail += " (" + own[*part] + " is not " + version[*part] + ": the zeros count)";
        read.told.remedy = "write \"" + FirstParts(own, version.size()) + "\" in place of \"" +
                           VersionToString(version) + "\" in versions";
        return;
    }
}

// By the range's own test, a bound at a time.
void TellBound(Read& read, Version const& own)
{
    VersionRange const& range = read.record->compatibleVersions.front();
    VersionRange lower;
    lower.minVersion = range.minVersion;
    VersionRange upper;
    upper.maxVersion = range.maxVersion;
    if (!lower.IsEmpty() && !lower.Contains(own)) {
        read.told.fit = Fit::BelowMinimum;
        read.told.detail = VersionToString(own) + " is below " + VersionToString(lower.minVersion);
        TellZeros(read, "minVersion", own, lower.minVersion, " ranks below ");
    } else if (!upper.IsEmpty() && !upper.Contains(own)) {
        read.told.fit = Fit::AboveMaximum;
        read.told.detail = VersionToString(own) + " is above " + VersionToString(upper.maxVersion);
        TellZeros(read, "maxVersion", own, upper.maxVersion, " ranks above ");
    } else {
        read.told.fit = Fit::NotListed;
        read.told.detail = VersionToString(own) + " is none of the versions listed";
        TellZerosOfList(read, own, range.versions);
    }
}

std::string WhyEmpty(Json::Value const& element, char const* key)
{
    return IsReadable(TextOf(element, key)) ? "blank or missing" : "not UTF-8 and reads as empty";
}

void TellFlaw(ModuleFlaw flaw, Json::Value const& element, Module& told)
{
    switch (flaw) {
    case ModuleFlaw::None:
        break;
    case ModuleFlaw::NoModule:
        told.detail = "module is " + WhyEmpty(element, "module");
        break;
    case ModuleFlaw::NoPath: {
        std::string const own = Resolver::ModulePathKey();
        std::string const other = own == "modulePath" ? "modulePathWoW64" : "modulePath";
        if (TextOf(element, own.c_str()).empty() && !TextOf(element, other.c_str()).empty()) {
            told.fit = Fit::NoPathForProcess;
            told.detail = "it has " + other + " only, and this process reads " + own;
        } else {
            told.detail = own + " is " + WhyEmpty(element, own.c_str());
        }
        break;
    }
    case ModuleFlaw::PathVanishes:
        told.detail = std::string(Resolver::ModulePathKey()) + " is nothing but slashes";
        break;
    case ModuleFlaw::NoRange:
        told.detail = "compatibleSsoServicesVersion is missing";
        break;
    case ModuleFlaw::EmptyRange:
        told.detail = "compatibleSsoServicesVersion is empty";
        break;
    }
}

// The library does so for the one that it chooses alone.
void TellFile(CompatibleModule const& record, LookForModule look, Module& told)
{
    try {
        std::wstring const file =
            SSOServices::NormalizePath(SSOServices::JoinPath(record.modulePath, record.module));
        told.file = Shown(file);
        told.presence = look(file);
    } catch (std::exception const& exception) {
        told.presence.reason = Tools::Presentable(exception.what());
    }
}

Read ReadElement(Resolver& resolver, Json::Value element, LookForModule look)
{
    Read read;
    Module& told = read.told;
    char const* const pathKey = Resolver::ModulePathKey();
    told.name = Tools::Presentable(TextOf(element, "module"));
    told.path = Tools::Presentable(TextOf(element, pathKey));
    told.version = Tools::Presentable(TextOf(element, "version"));
    if (element.isNull()) {
        told.fit = Fit::Null;
        return read;
    }
    try {
        CompatibleModule module;
        ModuleFlaw const flaw = resolver.ReadModule(element, pathKey, module);
        told.expandedPath = Shown(module.modulePath);
        told.unknown = VariablesIn(module.modulePath);
        if (flaw != ModuleFlaw::None) {
            TellFlaw(flaw, element, told);
            return read;
        }
        told.range = Spelled(module.compatibleVersions.front());
        TellFile(module, look, told);
        read.record = std::move(module);
    } catch (std::exception const& exception) {
        read.isWrongType = dynamic_cast<Json::Exception const*>(&exception) != nullptr;
        told.fit = Fit::StopsReading;
        told.detail = Tools::Presentable(exception.what());
    }
    return read;
}

bool IsSame(CompatibleModule const& a, CompatibleModule const& b)
{
    return a.module == b.module && a.modulePath == b.modulePath && a.version == b.version;
}

// The library's own sort and selection; the verdicts are told by their result.
// Without an answer of the library an exception has ended the choice.
void Judge(std::vector<Read>& reads, Version const& own, std::string const& answer,
           bool isOverridden)
{
    std::vector<CompatibleModule> list;
    for (Read const& read : reads)
        if (read.record)
            list.push_back(*read.record);
    SortByVersion(list);
    CompatibleModule selected;
    SelectCompatibleModule(own, list, selected);
    bool isChosen = false;
    for (Read& read : reads) {
        if (!read.record)
            continue;
        if (!Serves(*read.record, own)) {
            TellBound(read, own);
        } else if (isOverridden) {
            read.told.fit = Fit::Overridden;
        } else if (answer.empty()) {
            read.told.fit = Fit::Ignored;
            read.told.detail = "it fits, but an exception ends the choice";
        } else if (!isChosen && IsSame(*read.record, selected)) {
            read.told.fit = Fit::Chosen;
            isChosen = true;
        } else {
            bool const isEqual = CompareVersions(read.record->version, selected.version, -1) == 0;
            read.told.fit = isEqual ? Fit::LaterInFile : Fit::LowerVersion;
        }
    }
}

// Parts are compared as numbers only where both are some.
void FindTextVersion(Json::Value const& bound, Position at, std::string const& key,
                     std::vector<Oddity>& oddities)
{
    Version version;
    if (bound.isString())
        SSOServices::ParseVersion(version, bound.asString());
    for (std::string const& part : version) {
        if (part.find_first_not_of("0123456789") == std::string::npos)
            continue;
        oddities.push_back({at,
                            key,
                            "not-a-number",
                            "has \"" + Tools::Presentable(part) +
                                "\", which is not a plain number and does not compare as one",
                            "write numbers with dots between them; a short bound such as "
                            "\"10.22\" holds for all that begins with it",
                            false,
                            {}});
        return;
    }
}

// False for what ends the read, where anything does.
bool CheckBound(JsonInspection const& file, Json::Value const& bound, Position at,
                std::string const& key, bool isRead, std::vector<Oddity>& oddities)
{
    if (!bound.isArray() && !bound.isObject()) {
        file.CheckQuotes(bound, key, at, oddities);
        if (bound.isBool())
            oddities.back().remedy = "write a version in quotes, such as \"10.22\"";
        FindTextVersion(bound, at, key, oddities);
        return isRead;
    }
    oddities.push_back(WrongType(at, key, bound, "a text", isRead));
    return false;
}

/// @param isRead  no value before it has ended the read of the entry, but something did
void FindRangeOddities(JsonInspection const& file, Json::Value const& range,
                       std::string const& name, bool isRead, std::vector<Oddity>& oddities)
{
    if (range.isNull())
        return;
    if (!range.isObject()) {
        oddities.push_back(
            WrongType(file.PositionOf(RangeKey, range), name, range, "an object", isRead));
        return;
    }
    std::string const prefix = name + ".";
    for (char const* const key : {"minVersion", "maxVersion"})
        isRead = CheckBound(file, range[key], file.PositionOf(key, range[key]), prefix + key,
                            isRead, oddities);
    Json::Value const& versions = range["versions"];
    if (!versions.isNull() && !versions.isArray())
        oddities.push_back(WrongType(file.PositionOf("versions", versions), prefix + "versions",
                                     versions, "an array",
                                     isRead && versions.isObject() && !versions.empty()));
    for (Json::ArrayIndex i = 0; versions.isArray() && i < versions.size(); ++i)
        isRead = CheckBound(file, versions[i], file.PositionOf(versions[i]),
                            prefix + "versions[" + std::to_string(i) + "]", isRead, oddities);
    file.FindUnknown(range, prefix, {"minVersion", "maxVersion", "versions"}, oddities, {});
}

void FindOddities(JsonInspection const& file, Json::Value const& element, Read const& read,
                  std::string const& name, std::vector<Oddity>& oddities)
{
    if (element.isNull())
        return;
    if (!element.isObject()) {
        oddities.push_back(
            WrongType(file.PositionOf(element), name, element, "an object", read.isWrongType));
        return;
    }
    // In the order of the reading. One value at most ends it: none where the object
    // is dropped before, and nothing behind the first is looked at.
    bool isRead = read.isWrongType;
    for (auto const& [key, kind] :
         {std::pair("module", TextKind::Name), std::pair(Resolver::ModulePathKey(), TextKind::Path),
          std::pair("version", TextKind::Narrow)}) {
        if (file.CheckText(element, name + ".", key, kind, oddities))
            continue;
        oddities.back().stopsReading = isRead;
        isRead = false;
    }
    file.FindUnknown(
        element, name + ".",
        {"module", "modulePath", "modulePathWoW64", "version", "compatibleSsoServicesVersion"},
        oddities,
        {{"minVersion", RangeKey, false},
         {"maxVersion", RangeKey, false},
         {"versions", RangeKey, false}},
        name + ".");
    FindRangeOddities(file, element[RangeKey], name + "." + RangeKey, isRead, oddities);
}

// What is never read cannot end anything.
void TellUnread(std::vector<Read>& reads, std::vector<Oddity>& oddities)
{
    for (Read& read : reads) {
        if (read.told.fit != Fit::StopsReading)
            continue;
        read.told.fit = Fit::Ignored;
        read.told.detail = "not read, the client configuration names another: " + read.told.detail;
    }
    for (Oddity& oddity : oddities)
        oddity.stopsReading = false;
}

void ExamineList(Resolver& resolver, JsonInspection const& file, LookForModule look,
                 std::string const& answer, bool isOverridden, ModuleList& list,
                 std::vector<Oddity>& oddities)
{
    Json::Value const& group = static_cast<Json::Value const&>(file.root)[list.key];
    if (group.isNull()) {
        list.problem = "there is no " + list.key + " in the file";
        list.isNothingListed = true;
        return;
    }
    if (!group.isArray()) {
        // What has no size counts as empty, an object with members as a fault, if it
        // is read at all.
        bool const stops = !isOverridden && group.isObject() && !group.empty();
        oddities.push_back(
            WrongType(file.PositionOf(list.key, group), list.key, group, "an array", stops));
        list.problem = list.key + " is " + KindOf(group) + ", not an array";
        return;
    }
    Version own;
    SSOServices::ParseVersion(own, SSOServices::LibraryVersion);
    std::vector<Read> reads;
    std::vector<Oddity> found;
    for (Json::ArrayIndex i = 0; i < group.size(); ++i) {
        reads.push_back(ReadElement(resolver, group[i], look));
        Module& told = reads.back().told;
        told.number = i + 1;
        told.at = file.PositionOf(group[i]);
        std::size_t const before = found.size();
        FindOddities(file, group[i], reads.back(), list.key + "[" + std::to_string(i) + "]", found);
        // The exception speaks of the reader's own code.
        for (std::size_t k = before; k < found.size(); ++k)
            if (found[k].stopsReading)
                told.detail = InWords(found[k].key) + " " + found[k].text;
    }
    if (isOverridden)
        TellUnread(reads, found);
    oddities.insert(oddities.end(), found.begin(), found.end());
    Judge(reads, own, answer, isOverridden);
    bool const isAnyRecord = std::any_of(reads.begin(), reads.end(),
                                         [](Read const& read) { return read.record.has_value(); });
    for (Read& read : reads)
        list.modules.push_back(std::move(read.told));
    list.isNothingListed = list.modules.empty();
    if (list.isNothingListed)
        list.problem = list.key + " is empty";
    else if (!isAnyRecord)
        list.problem = "no entry of " + list.key + " is complete";
}

} // namespace

void ExamineCompatibility(Resolver& resolver, Findings& findings)
{
    Compatibility& told = findings.compatibility;
    told.plugins.key = "ssoClientPlugin";
    told.openSsl.key = "openssl";
    SSOServices::SSOClientConfig const& config = resolver.GetClientConfig();
    findings.openSsl.isOverride = resolver.IsClientConfigLoaded() &&
                                  !config.openSslModuleName.empty() &&
                                  !config.openSslModulePath.empty();
    told.search = LookThrough(SSOServices::CompatibilityFileName,
                              resolver.ResolvedSearchPaths(resolver.CompatibilityDirectories()));
    std::wstring const file = resolver.GetVersionCompatibilityFile();
    if (!LookFor(file).isThere)
        return;
    told.file = Shown(file);
    told.isInWorkingDirectory = file == SSOServices::CompatibilityFileName;
    JsonInspection const inspection(file, std::ios::in);
    told.parseError = inspection.error;
    if (inspection.error)
        return;
    if (!inspection.root.isObject() && !inspection.root.isNull()) {
        told.oddities.push_back(WrongType(inspection.PositionOf(inspection.root), "the top level",
                                          inspection.root, "an object", true));
        return;
    }
    for (ModuleList const* const list : {&told.plugins, &told.openSsl})
        if (inspection.root.isObject() &&
            static_cast<Json::Value const&>(inspection.root)[list->key].size() > MostEntries)
            told.parseError = {Damage::TooLarge,
                               {},
                               "has more than " + std::to_string(MostEntries) + " entries of " +
                                   list->key + ", the limit of what is looked at",
                               {}};
    if (told.parseError)
        return;
    ExamineList(resolver, inspection, LookForPlugin, findings.plugin.file, false, told.plugins,
                told.oddities);
    ExamineList(resolver, inspection, LookFor, findings.openSsl.file, findings.openSsl.isOverride,
                told.openSsl, told.oddities);
    // Editors find its schema by the third.
    inspection.FindUnknown(inspection.root, "", {"ssoClientPlugin", "openssl", "$schema"},
                           told.oddities,
                           {{"ssoServer", Shown(SSOServices::ClientConfigFileName), true}});
    inspection.FindRepeated(told.oddities);
    inspection.FindTrailing(told.oddities);
    Shorten(told.oddities);
}

} // namespace Halvorix::Doctor
