#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

/// Of a request's head, in bytes.
constexpr std::size_t LargestRequest = 16'384;
constexpr std::size_t MostParameters = 20;
constexpr char const* CallbackPath = "/callback";

/// What a listener expects of a request.
struct ExpectedCallback {
    std::string host;  ///< "127.0.0.1:PORT" or "[::1]:PORT"; without the port if it is 80.
    std::string state; ///< Of the authorization request.
};

/// What is to be answered to a request.
struct CallbackAnswer {
    unsigned status = 400;
    std::string title, text; ///< Of the page; plain text.
    /// Those of the response that is waited for; none for any other request.
    std::optional<Parameters> response;
};

/// Reads a request's head: all bytes up to its empty line, or what came in its place. What stands
/// behind it is passed over.
CallbackAnswer ReadCallback(std::string_view head, ExpectedCallback const& expected);
/// The answer as it is sent.
std::string WriteAnswer(CallbackAnswer const& answer);

} // namespace Halvorix::OpenId
