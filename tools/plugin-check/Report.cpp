#include "Report.h"

#include <iomanip>
#include <iostream>

#include <json/writer.h>

#include "support/TextConversion.h"

namespace Halvorix::PluginCheck {

namespace {

char const* Spelled(Result result)
{
    switch (result) {
    case Result::Ok:
        return "ok";
    case Result::Failed:
        return "FAILED";
    case Result::Note:
        break;
    }
    return "note";
}

// One line of UTF-8, whatever the text of an exception of the plugin's is.
std::string Presentable(std::string text)
{
    bool const isUtf8 = text.empty() || !SSOServices::Utf8ToWide(text).empty();
    for (char& unit : text) {
        auto const code = static_cast<unsigned char>(unit);
        if (code < 0x20 || code == 0x7f)
            unit = ' ';
        else if (code >= 0x80 && !isUtf8)
            unit = '?';
    }
    return text;
}

} // namespace

void Report::Add(char const* check, Result result, std::string const& text)
{
    std::string const detail = Presentable(text);
    if (result == Result::Failed)
        ++failures;
    if (!isJson) {
        std::cout << std::left << std::setw(8) << Spelled(result) << std::setw(14) << check
                  << detail << std::endl;
        return;
    }
    Json::Value entry(Json::objectValue);
    entry["check"] = check;
    entry["result"] = Spelled(result);
    entry["detail"] = detail;
    checks.append(entry);
}

void Report::Close(std::string const& module)
{
    if (!isJson) {
        if (failures == 0)
            std::cout << "All holds." << std::endl;
        else
            std::cout << failures << (failures == 1 ? " thing does" : " things do") << " not hold."
                      << std::endl;
        return;
    }
    Json::Value document(Json::objectValue);
    document["module"] = module;
    document["holds"] = failures == 0;
    document["checks"] = checks;
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    std::cout << Json::writeString(builder, document) << std::endl;
}

} // namespace Halvorix::PluginCheck
