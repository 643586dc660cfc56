#include "framework/HostProgram.h"

#include <filesystem>
#include <iostream>
#include <map>

#include <json/writer.h>

#include "framework/Variable.h"
#include "support/TextConversion.h"

namespace Rig {

namespace {

std::map<std::string, HostProgram>& Programs()
{
    static std::map<std::string, HostProgram> programs;
    return programs;
}

} // namespace

Report::Report(std::string const& file)
    : stream(std::filesystem::u8path(file), std::ios::binary | std::ios::app)
{
}

void Report::Add(std::string const& name, Json::Value const& value)
{
    Json::Value line(Json::arrayValue);
    line.append(name);
    line.append(value);
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    stream << Json::writeString(builder, line) << std::endl;
}

Json::Value Report::TextAsJson(std::string const& text) { return text; }

Json::Value Report::TextAsJson(std::wstring const& text)
{
    return Halvorix::SSOServices::WideToUtf8(text);
}

bool RegisterHostProgram(std::string const& name, HostProgram program)
{
    return Programs().emplace(name, program).second;
}

int RunHostProgram(std::string const& name, std::vector<std::string> const& arguments)
{
    auto const program = Programs().find(name);
    if (program == Programs().end()) {
        std::cerr << "no host program " << name << '\n';
        return 2;
    }
    Report report(Variable("HXSSO_REPORT"));
    report.Try("program", [&] { program->second(report, arguments); });
    return 0;
}

} // namespace Rig
