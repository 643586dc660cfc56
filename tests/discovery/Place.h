#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "framework/LogMessage.h"

namespace Rig {

/// A directory tree in which the library's objects look around in this process, over the
/// fake system: app/ has the executable, lib/ the library, work/ is the current directory.
/// What only files decide needs no process of its own.
class Place {
public:
    Place();
    /// With a name that is no ASCII in all paths.
    explicit Place(std::string const& folderName);
    ~Place();
    Place(Place const&) = delete;
    Place& operator=(Place const&) = delete;

    std::filesystem::path Path(std::string const& relative) const;
    /// The same in forward slashes, as the library spells it.
    std::string Text(std::string const& relative) const;

    Place& File(std::string const& relative, std::string const& content);
    Place& Folder(std::string const& relative);
    Place& Remove(std::string const& relative);
    /// "{root}" in the content becomes the tree's directory.
    Place& ClientConfig(std::string const& content, std::string const& folder = "app");
    Place& Compatibility(std::string const& content, std::string const& folder = "server");
    Place& ServerApp(std::string const& folder = "server");
    Place& LibraryBesideExecutable();

private:
    std::filesystem::path const root;
};

/// What came of questions to one resolver, one after another. In all texts the tree's own
/// directory reads "{root}".
struct Found {
    /// An answer of each question that has one; "Json::LogicError: " and the like with the
    /// text of an exception.
    std::vector<std::string> answers;
    std::vector<LogMessage> lines;

    /// Whether the line was logged, and how often.
    int Logged(LogMessage const& line) const;
};

/// Each question is the name of a member of SSOPathResolver, then "=" and the argument if it
/// takes one. Besides:
///   Copy=from>to, Remove=file    relative to the tree's directory
Found Ask(Place const& place, std::vector<std::string> const& questions);

} // namespace Rig
