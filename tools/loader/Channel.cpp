#include "loader/Channel.h"

#include <json/writer.h>

#include "common/ChildProcess.h"

namespace Halvorix::PluginLoader {

Channel::Channel() : descriptor(Tools::TakeStandardOutput()) {}

void Channel::Step(char const* check, std::string const& during)
{
    Json::Value record;
    record["step"] = during;
    record["check"] = check;
    Write(record);
}

void Channel::Write(Json::Value const& record)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    Tools::WriteAll(descriptor, Json::writeString(builder, record) + "\n");
}

void Channel::End()
{
    Json::Value record;
    record["end"] = true;
    Write(record);
}

void Channel::Take(Tools::Check check)
{
    Json::Value record;
    record["check"] = check.name;
    record["result"] = Tools::Spelled(check.result);
    record["detail"] = check.detail;
    Write(record);
}

} // namespace Halvorix::PluginLoader
