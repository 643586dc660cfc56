#pragma once

#include <string>
#include <vector>

#include "framework/Installation.h"

namespace Rig {

/// What came of questions to the library, one after another in one process.
struct Asked {
    /// An answer of each question that has one; "Json::LogicError: " and the
    /// like with the text of an exception.
    std::vector<std::string> answers;
    /// What was logged up to the load of the plugin.
    std::vector<LogMessage> lines;
    Outcome outcome;
};

/// Each question is the name of a function of SSOClientPrivate or of
/// SetSupportFileSearchPaths, then "=" and the argument if it takes one. Besides:
///   Load            loads the plugin, so that the early log reaches its logger
///   Rescue          the same, with a compatibility file in the current directory
///   Rescue=file     or in place of a file, so that there is a plugin to load
///   Release         drops the manager: the next question meets a new one
///   Threaded        GetSessionState on a thread of its own
///   Copy=from>to, Remove=file    relative to the installation's directory
///   Deny=file       "denied", and nobody can read it from then on; or "readable"
/// "{root}" becomes the installation's directory.
Asked Ask(Installation& installation, std::vector<std::string> const& questions);

/// The server application's directory as its installation leaves it, for as
/// long as the object lives.
class Location {
public:
    Location(Installation const& installation, std::string text);
    ~Location();
    Location(Location const&) = delete;
    Location& operator=(Location const&) = delete;

private:
    std::filesystem::path root;
};

} // namespace Rig
