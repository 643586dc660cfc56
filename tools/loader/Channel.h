#pragma once

#include <string>

#include <json/value.h>

#include "common/Report.h"

namespace Halvorix::PluginLoader {

/// To the tool that has started this process. Each record is a line of JSON, written
/// at once, so that none is lost when the plugin ends the process.
class Channel : public Tools::Report {
public:
    /// Takes the standard output away from all others.
    Channel();

    /// What is done from here on, and the check to which it belongs.
    void Step(char const* check, std::string const& during);
    void Write(Json::Value const& record);
    /// Nothing comes after it.
    void End();

private:
    void Take(Tools::Check check) override;

    int descriptor;
};

} // namespace Halvorix::PluginLoader
