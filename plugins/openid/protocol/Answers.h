#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

#include "openid/platform/Http.h"
#include "openid/protocol/Outcome.h"

namespace Halvorix::OpenId {

/// What a provider was asked for, to tell it in a log.
struct Question {
    std::string what; ///< "the token endpoint"
    std::string url;
    /// What was sent and an error's description might repeat.
    std::vector<std::string_view> secrets;
};

/// What a provider wrote, on a line of a log: without what it was sent.
std::string Told(std::string const& text, Question const& question);
/// A failure of this question: "the token endpoint https://... " and what it did.
Failure FailureOf(Question const& question, Failure::Kind kind, std::string const& did,
                  std::string remedy);
/// Why there is nothing to be read in an answer; no value for a status from 200 to 299.
std::optional<Failure> FindFailure(HttpResponse const& response, Question const& question);
/// The JSON object of an answer. It may hold secrets: its reader wipes it.
Outcome<Json::Value> ReadJsonAnswer(HttpResponse const& response, Question const& question);

} // namespace Halvorix::OpenId
