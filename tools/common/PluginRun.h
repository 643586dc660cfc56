#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <json/value.h>

#include "common/FileChecks.h"
#include "common/Report.h"

namespace Halvorix::Tools {

constexpr std::chrono::seconds DefaultTimeLimit{30};

/// What came of code of a plugin that ran in a process of its own.
struct PluginRun {
    std::vector<Json::Value> records; ///< what was told, in order
    std::string check;                ///< what was being done at the end
    std::string death;                ///< how the process ended before its time; empty: it did not
};

/// Lets hxsso-plugin-loader, which lies beside this program and shares its C++ runtime
/// with plugins, do what the request says.
PluginRun RunPluginLoader(Json::Value const& request, std::chrono::seconds limit);

/// Loads the module as the library does and asks it what the library asks.
void CheckLoaded(std::filesystem::path const& file, FileFindings const& findings,
                 std::chrono::seconds limit, Report& report);

/// Files as a request has them.
Json::Value ListOf(std::vector<std::filesystem::path> const& files);

/// Text of a record's member; empty if it is none.
std::string TextOf(Json::Value const& record, char const* member);

/// Whole seconds of an option; nothing where it is no such number, or of no use.
bool ReadTimeLimit(std::string const& text, std::chrono::seconds& limit);

} // namespace Halvorix::Tools
