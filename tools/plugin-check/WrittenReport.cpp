#include "plugin-check/WrittenReport.h"

#include <iomanip>
#include <iostream>

#include <json/writer.h>

#include "common/Utf8.h"

namespace Halvorix::PluginCheck {

void WrittenReport::Take(Tools::Check check)
{
    if (!isJson) {
        std::cout << std::left << std::setw(8) << Tools::Spelled(check.result) << std::setw(14)
                  << check.name << check.detail << std::endl;
        return;
    }
    Json::Value entry(Json::objectValue);
    entry["check"] = check.name;
    entry["result"] = Tools::Spelled(check.result);
    entry["detail"] = check.detail;
    checks.append(entry);
}

void WrittenReport::Close(std::string const& module)
{
    if (!isJson) {
        if (Failures() == 0)
            std::cout << "All checks passed." << std::endl;
        else
            std::cout << Failures() << (Failures() == 1 ? " check" : " checks") << " failed."
                      << std::endl;
        return;
    }
    Json::Value document(Json::objectValue);
    document["module"] = module;
    document["holds"] = Failures() == 0;
    document["checks"] = checks;
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    // What no reader of a terminal is to be steered by stays the same text as an escape.
    std::cout << Tools::Escaped(Json::writeString(builder, document)) << std::endl;
}

} // namespace Halvorix::PluginCheck
