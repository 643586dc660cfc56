#pragma once

#include <string>

#include <json/value.h>

#include "common/Report.h"

namespace Halvorix::PluginCheck {

/// As lines of text, each written at once so that none is lost if the plugin ends
/// the process, or as one JSON document at the end.
class WrittenReport : public Tools::Report {
public:
    explicit WrittenReport(bool asJson) : isJson(asJson) {}

    /// The last line, or the document.
    void Close(std::string const& module);

private:
    void Take(Tools::Check check) override;

    bool isJson;
    Json::Value checks{Json::arrayValue};
};

} // namespace Halvorix::PluginCheck
