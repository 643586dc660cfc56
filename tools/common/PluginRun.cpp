#include "common/PluginRun.h"

#include <exception>
#include <sstream>

#include <json/reader.h>
#include <json/writer.h>

#include "common/ChildProcess.h"
#include "common/System.h"
#include "common/Utf8.h"
#include "platform/Platform.h"

namespace Halvorix::Tools {

namespace {

std::filesystem::path LoaderFile()
{
    std::filesystem::path const own = FromWide(Platform::ExecutableFile());
    std::filesystem::path file = own.parent_path() / "hxsso-plugin-loader";
    file += own.extension();
    return file;
}

// More than any load makes.
constexpr std::size_t MostRecords = 100000;

// What is none, since a plugin may write anywhere, is passed over.
std::vector<Json::Value> RecordsIn(std::string const& output)
{
    std::vector<Json::Value> records;
    std::istringstream lines(output);
    for (std::string line; records.size() < MostRecords && std::getline(lines, line);) {
        try {
            Json::Value record;
            if (Json::Reader().parse(line, record) && record.isObject() && !record.empty())
                records.push_back(std::move(record));
        } catch (std::exception const&) {
            continue; // nested too deeply
        }
    }
    return records;
}

Result ResultOf(std::string const& text)
{
    for (Result const result : {Result::Ok, Result::Failed})
        if (text == Spelled(result))
            return result;
    return Result::Note;
}

} // namespace

std::string TextOf(Json::Value const& record, char const* member)
{
    Json::Value const& value = record[member];
    return value.isString() ? value.asString() : std::string();
}

PluginRun RunPluginLoader(Json::Value const& request, std::chrono::seconds limit)
{
    PluginRun run;
    run.check = "loader";
    std::filesystem::path const loader = LoaderFile();
    std::error_code unknown;
    if (!std::filesystem::is_regular_file(loader, unknown)) {
        run.death = Utf8(loader) + " is missing: it comes with this program and loads plugins";
        return run;
    }
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    ChildRun const child = RunChild(loader, Json::writeString(builder, request), limit);
    bool hasBegun = false;
    bool hasEnded = false;
    std::string during;
    for (Json::Value& record : RecordsIn(child.output)) {
        hasEnded = false; // nothing comes behind the end
        if (record.isMember("step")) {
            hasBegun = true;
            during = TextOf(record, "step");
            run.check = TextOf(record, "check");
        } else if (record.isMember("end")) {
            hasEnded = true;
        } else {
            run.records.push_back(std::move(record));
        }
    }
    if (!hasBegun)
        run.death = Utf8(loader.filename()) + " " +
                    (child.isStarted ? child.end : "cannot be started: " + child.end);
    else if (!hasEnded || !child.isGood)
        run.death = "the plugin " + child.end + " " + during;
    return run;
}

Json::Value ListOf(std::vector<std::filesystem::path> const& files)
{
    Json::Value list(Json::arrayValue);
    for (std::filesystem::path const& file : files)
        list.append(Utf8(file));
    return list;
}

void CheckLoaded(std::filesystem::path const& file, FileFindings const& findings,
                 std::chrono::seconds limit, Report& report)
{
    Json::Value request;
    request["file"] = Utf8(file);
    request["first"] = ListOf(findings.first);
    request["dependencyFolder"] =
        Utf8(findings.dependencyFolder.empty() ? file.parent_path() : findings.dependencyFolder);
    PluginRun const run = RunPluginLoader(request, limit);
    for (Json::Value const& record : run.records)
        report.Add(TextOf(record, "check").c_str(), ResultOf(TextOf(record, "result")),
                   TextOf(record, "detail"));
    if (!run.death.empty())
        report.Add(run.check.c_str(), Result::Failed, run.death);
}

bool ReadTimeLimit(std::string const& text, std::chrono::seconds& limit)
{
    constexpr std::size_t mostDigits = 4;
    if (text.empty() || text.size() > mostDigits ||
        text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    limit = std::chrono::seconds(std::stoi(text));
    return limit.count() > 0;
}

} // namespace Halvorix::Tools
