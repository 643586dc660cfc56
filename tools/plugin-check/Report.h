#pragma once

#include <string>

#include <json/value.h>

namespace Halvorix::PluginCheck {

enum class Result { Ok, Failed, Note };

/// What holds and what does not, in the order in which it was found: as lines of
/// text, each written at once so that none is lost if the plugin ends the
/// process, or as one JSON document at the end.
class Report {
public:
    explicit Report(bool asJson) : isJson(asJson) {}

    /// @param check short name of what was looked at
    void Add(char const* check, Result result, std::string const& text);

    bool HasFailed() const { return failures != 0; }

    /// The last line, or the document.
    void Close(std::string const& module);

private:
    bool isJson;
    int failures = 0;
    Json::Value checks{Json::arrayValue};
};

} // namespace Halvorix::PluginCheck
