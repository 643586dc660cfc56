// The version compatibility file, through the real choice of both modules.
//
// Property: what is chosen is the best record of the file by a brute-force
// reading of the rules here, which shares no code with the library for
// versions, ranges and the choice; the lines of the log are those of that
// reading. Wrong types end in the JSON library's exception and no other way.

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/system/system_error.hpp>
#include <json/reader.h>
#include <json/value.h>

#include "discovery/PathText.h"
#include "discovery/SSOPathResolver.h"
#include "fuzz/JsonMaker.h"
#include "fuzz/Property.h"
#include "fuzz/ScratchFolder.h"
#include "fuzz/TextReference.h"
#include "fuzz/VersionReference.h"
#include "host/SSOClientManager.h"
#include "platform/Platform.h"

using namespace Halvorix::SSOServices;
using namespace Fuzz;

namespace {

Reference::Version const Own = {"10", "22", "00", "1800"};
constexpr char const* ConfigFile = "SSOClient.config";
constexpr char const* CompatibilityFile = "server/SSOVersionCompatibility.config";

using Lines = std::vector<std::wstring>;

struct Outcome {
    std::wstring chosen;
    std::wstring exception;
    Lines lines;
};

/// Runs a choice and keeps what it answered or threw.
template <class Choose>
void Keep(Outcome& outcome, Choose choose)
{
    try {
        outcome.chosen = choose();
    } catch (Json::Exception const& error) {
        outcome.exception = L"JSON: " + Reference::Widen(error.what());
    } catch (boost::system::system_error const&) {
        outcome.exception = L"path";
    }
}

struct Kind {
    char const* key;
    std::wstring name;  // in the log
    std::wstring found; // in the line of a hit, which words one of the two differently
    std::wstring (SSOPathResolver::*question)();
};

struct Record {
    std::wstring module;
    std::wstring path;
    Reference::Version version;
    Reference::Range range;
};

bool IsAbove(Record const& a, Record const& b)
{
    return Reference::Compare(a.version, b.version, -1) == 1;
}

bool AreLevel(Record const& a, Record const& b) { return !IsAbove(a, b) && !IsAbove(b, a); }

// Texts among numbers can make a circle, and then no order is the right one.
bool AreOrdered(std::vector<Record> const& records)
{
    for (Record const& a : records)
        for (Record const& b : records)
            for (Record const& c : records)
                if ((IsAbove(a, b) && IsAbove(b, c) && !IsAbove(a, c)) ||
                    (AreLevel(a, b) && AreLevel(b, c) && !AreLevel(a, c)))
                    return false;
    return true;
}

class Reading {
public:
    Reading(Kind const& kind, std::wstring file) : kind(kind), file(std::move(file)) {}

    std::wstring Choose(std::string const& text)
    {
        std::wstring const key = Reference::Widen(kind.key);
        lines = {
            L"8 Searching for compatible " + kind.name +
            L" version for HxSSOServices version 10.22.00.1800 in version compatibility file " +
            file};
        Read(text, key);
        if (records.empty())
            Say(L"2 Version compatibility list is empty under key " + key +
                L" in version compatibility file " + file);
        Record const* best = nullptr;
        for (Record const& record : records)
            if (Reference::Contains(record.range, Own) &&
                (best == nullptr || IsAbove(record, *best)))
                best = &record;
        if (best == nullptr) {
            Say(L"2 Failed to find compatible " + kind.name +
                L" version for HxSSOServices version 10.22.00.1800 in version compatibility file " +
                file);
            return {};
        }
        std::wstring const chosen = PathOf(*best);
        Say(L"8 Found compatible " + kind.found +
            L" for HxSSOServices version 10.22.00.1800 in version compatibility file: " + chosen);
        return chosen;
    }

    static std::wstring PathOf(Record const& record)
    {
        return NormalizePath(JoinPath(record.path, record.module));
    }

    Kind const& kind;
    std::wstring file;
    std::vector<Record> records;
    Lines lines;

private:
    void Say(std::wstring const& line) { lines.push_back(line); }

    void Blank(wchar_t const* keys, std::wstring const& key)
    {
        Say(L"2 Blank or missing key " + std::wstring(keys) + L" in " + key +
            L" in version compatibility file " + file + L". Object ignored.");
    }

    void Read(std::string const& text, std::wstring const& key)
    {
        Json::Value root;
        if (!Json::Reader().parse(text, root)) {
            Say(L"2 Failed to load file " + file + L". Possibly json format is not valid.");
            return;
        }
        Json::Value& group = root[kind.key];
        for (Json::ArrayIndex i = 0; i < group.size(); ++i)
            if (!std::as_const(group)[i].isNull())
                Read(group[i], key);
    }

    void Read(Json::Value& element, std::wstring const& key)
    {
        Record record;
        record.module = Reference::Widen(element["module"].asString());
        if (record.module.empty())
            return Blank(L"'module'", key);
        char const* const pathKey =
            Halvorix::Platform::IsWow64Process() ? "modulePathWoW64" : "modulePath";
        record.path = Reference::Widen(element[pathKey].asString());
        if (record.path.empty())
            return Blank(L"'modulePath' or 'modulePathWoW64'", key);
        Expand(record.path);
        record.version = Reference::Parse(element["version"].asString());
        if (record.path.empty())
            return Blank(L"'version'", key);
        Json::Value const& range = element["compatibleSsoServicesVersion"];
        if (range.isNull())
            return Say(L"2 Missing object 'compatibleSsoServicesVersion' in version compatibility "
                       L"file " +
                       file + L". Object ignored.");
        record.range = RangeOf(range);
        if (Reference::IsEmpty(record.range))
            return Say(L"2 Invalid version range in 'compatibleSsoServicesVersion' object in "
                       L"version compatibility file " +
                       file + L". Object ignored.");
        records.push_back(record);
    }

    static Reference::Range RangeOf(Json::Value const& value)
    {
        if (value.empty())
            return {};
        std::string const lowest = value["minVersion"].asString();
        std::string const highest = value["maxVersion"].asString();
        Json::Value const& versions = value["versions"];
        std::vector<std::string> listed;
        for (Json::ArrayIndex i = 0; i < versions.size(); ++i)
            listed.push_back(versions[i].asString());
        return Reference::MakeRange(lowest, highest, listed);
    }

    static void Expand(std::wstring& path);
};

ScratchFolder const& Folder()
{
    static ScratchFolder const folder;
    return folder;
}

class Chooser {
public:
    Chooser()
        : resolver(Own, [this](std::wstring line, Halvorix::Log::LogLevel level) {
              lines.push_back(std::to_wstring(static_cast<int>(level)) + L' ' + line);
          })
    {
        resolver.SetSSOClientConfigFileOverride(Folder().File(ConfigFile));
        resolver.GetSSOServerAppPath();
    }

    SSOPathResolver resolver;
    Lines lines;
};

// The variables are the resolver's; what is held here is the choice.
void Reading::Expand(std::wstring& path)
{
    static Chooser chooser;
    chooser.resolver.ExpandPathVariables(path);
}

Outcome Choose(Chooser& chooser, Kind const& kind)
{
    chooser.lines.clear();
    Outcome outcome;
    Keep(outcome, [&] { return (chooser.resolver.*kind.question)(); });
    outcome.lines = chooser.lines;
    return outcome;
}

/// Whether the lines end with those; the search for the file comes before them.
bool EndsWith(Lines const& lines, Lines const& end)
{
    return lines.size() >= end.size() && std::equal(end.rbegin(), end.rend(), lines.rbegin());
}

void Check(std::string const& text, Kind const& kind)
{
    Reading reading(kind, Folder().File(CompatibilityFile));
    Outcome expected;
    Keep(expected, [&] { return reading.Choose(text); });
    Chooser chooser;
    Outcome const actual = Choose(chooser, kind);

    if (AreOrdered(reading.records) || !expected.exception.empty()) {
        Same("how a choice ends", expected.exception, actual.exception);
        Same("what is chosen", expected.chosen, actual.chosen);
        Holds(EndsWith(actual.lines, reading.lines), "the lines of a choice", reading.lines,
              actual.lines);
    } else if (actual.exception.empty()) {
        bool const fits =
            std::any_of(reading.records.begin(), reading.records.end(), [&](Record const& record) {
                return Reference::Contains(record.range, Own) &&
                       Reading::PathOf(record) == actual.chosen;
            });
        Same("something is chosen", expected.chosen.empty(), actual.chosen.empty());
        Holds(fits || actual.chosen.empty(), "what is chosen fits", actual.chosen);
    }

    // Asked again, the same object repeats a choice that failed and keeps one
    // that did not.
    Outcome const again = Choose(chooser, kind);
    Same("the answer to the same question", actual.chosen, again.chosen);
    Same("the end of the same question", actual.exception, again.exception);
    if (!actual.chosen.empty())
        Same("the lines of a choice that stands", Lines(), again.lines);
    else if (actual.exception.empty())
        Holds(EndsWith(again.lines, reading.lines), "the lines of a choice repeated", reading.lines,
              again.lines);
}

std::vector<std::string> const Texts = {"10.22.00.1800",
                                        "10.22",
                                        "10.22.0",
                                        "10",
                                        "9",
                                        "11",
                                        "10.22.00.1801",
                                        "10.22.99",
                                        "1.0",
                                        "2.0",
                                        "2.00",
                                        "3.RC",
                                        "3.beta",
                                        "5a",
                                        "5b",
                                        "99999999999999999999",
                                        "-9223372036854775808",
                                        "9223372036854775807",
                                        " . 10 . 22 ",
                                        "",
                                        "..",
                                        "Plugin.dll",
                                        "Other.dll",
                                        "%SSOServerAppPath%/plugin",
                                        "%ExePath%",
                                        "C:/plugins\\",
                                        "//",
                                        "%unknown%/x"};

Json::Value MakeRange(JsonMaker& maker)
{
    if (maker.Seldom())
        return maker.Odd();
    Json::Value range;
    if (maker.Byte() % 2 == 0)
        range["minVersion"] = maker.TextValue();
    if (maker.Byte() % 2 == 0)
        range["maxVersion"] = maker.TextValue();
    for (unsigned count = maker.Byte() % 4; count > 0; --count)
        range["versions"].append(maker.TextValue());
    return range;
}

Json::Value MakeRecord(JsonMaker& maker)
{
    if (maker.Seldom())
        return maker.Odd();
    Json::Value record;
    // Names that tell the records apart, with few that are missing.
    record["module"] = maker.Seldom() ? maker.Odd() : "m" + std::to_string(maker.Byte()) + ".dll";
    record["modulePath"] = maker.Seldom() ? maker.TextValue() : "%SSOServerAppPath%/plugin";
    record["modulePathWoW64"] = record["modulePath"];
    maker.SetText(record, "version");
    if (!maker.Seldom())
        record["compatibleSsoServicesVersion"] = MakeRange(maker);
    return record;
}

Json::Value Make(JsonMaker& maker)
{
    if (maker.Seldom())
        return maker.Odd();
    Json::Value root;
    for (char const* key : {"ssoClientPlugin", "openssl"}) {
        if (maker.Seldom()) {
            root[key] = maker.Odd();
            continue;
        }
        for (unsigned count = maker.Byte() % 6; count > 0; --count)
            root[key].append(MakeRecord(maker));
    }
    return root;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static bool const prepared = [] {
        SSOClientManager::GetInstance(); // sets the locale by which paths are converted
        // A name that lies nowhere else.
        Json::Value config;
        config["ssoServer"]["appName"] = "fuzzed-server";
        config["ssoServer"]["searchPaths"] = Reference::Narrow(Folder().File("server"));
        Folder().Write(ConfigFile, Json::writeString(Json::StreamWriterBuilder(), config));
        Folder().Write("server/fuzzed-server", "");
        return true;
    }();
    Holds(prepared, "the folder is there");

    std::string const text = Document(data, size, Texts, Make);
    Folder().Write(CompatibilityFile, text);
    Check(text, {"ssoClientPlugin", L"client plugin", L"client plugin",
                 &SSOPathResolver::GetSSOClientPluginModule});
    Check(text, {"openssl", L"openssl", L"openssl version", &SSOPathResolver::GetOpenSslModule});
    return 0;
}
