#pragma once

#include <string>

#include <json/value.h>

namespace Halvorix::HxSSO {

/// The exit statuses.
enum class Status {
    Done = 0,
    NotSignedIn = 1,
    WrongUse = 2,
    NoPlugin = 3,
    Provider = 4, ///< or the network, or the user at the browser, or the plugin's store
    Failed = 5,   ///< something else, such as output that cannot be written
};

/// What a command comes to. No token is in it: that is written by its command.
struct Answer {
    Status status = Status::Done;
    std::string text;   ///< lines for standard output
    Json::Value result; ///< its place in the document of --json
    std::string error;  ///< one line; empty: none
    std::string remedy; ///< of the error; may be empty
};

Answer Failed(Status status, std::string error, std::string remedy = {});

/// The document that docs/schemas/hxsso.schema.json describes.
std::string Document(std::string const& command, Answer const& answer);

/// Tells it on the standard streams. The exit status, which is another one if the output cannot
/// be written.
int Tell(std::string const& command, Answer const& answer, bool asJson);

/// The error alone, on standard error.
void TellError(Answer const& answer);

/// A line about what goes on, for a person, on standard error.
void TellProgress(std::string const& line);

} // namespace Halvorix::HxSSO
