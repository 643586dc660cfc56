#include "openid/protocol/Answers.h"

#include <algorithm>
#include <cstddef>

#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

constexpr char const* AskAdministrator = "ask the provider's administrator";
constexpr char const* TryLater = "try again later";
constexpr char const* CheckAddress =
    "check the issuer in the configuration, and ask the provider's administrator";

/// `error` and its description (RFC 6749, section 5.2).
struct ProviderError {
    std::string code, description;
};

bool IsErrorCode(std::string const& text)
{
    return !text.empty() && text.size() <= 100 &&
           std::all_of(text.begin(), text.end(), [](char character) {
               return character >= 0x20 && character < 0x7F && character != '"' &&
                      character != '\\';
           });
}

/// A provider may repeat what it was sent, and its words go to a log.
std::string WithoutSecrets(std::string text, std::vector<std::string_view> const& secrets)
{
    constexpr std::string_view hidden = "(hidden)";
    constexpr std::size_t shortestSecret = 6; // A shorter one would be found in any text.
    for (std::string_view const secret : secrets)
        if (secret.size() >= shortestSecret)
            for (std::size_t at = text.find(secret); at != std::string::npos;
                 at = text.find(secret, at + hidden.size()))
                text.replace(at, secret.size(), hidden);
    return text;
}

/// The value of a parameter of a WWW-Authenticate header (RFC 6750, section 3).
std::string QuotedParameter(std::string const& header, std::string_view name)
{
    std::string const start = std::string(name) + "=\"";
    std::size_t at = header.find(start);
    // Not the end of a longer name.
    while (at != std::string::npos && at > 0 && header[at - 1] != ' ' && header[at - 1] != ',')
        at = header.find(start, at + 1);
    if (at == std::string::npos)
        return {};
    at += start.size();
    std::size_t const end = header.find('"', at);
    return end == std::string::npos ? std::string() : header.substr(at, end - at);
}

ProviderError ReadError(HttpResponse const& response, Question const& question)
{
    std::string reason;
    Json::Value body = ParseJsonObject(response.body, reason);
    ProviderError error{TextMember(body, "error"), TextMember(body, "error_description")};
    WipeJson(body);
    if (error.code.empty()) {
        std::string const header = response.Header("www-authenticate");
        error = {QuotedParameter(header, "error"), QuotedParameter(header, "error_description")};
    }
    error.code = WithoutSecrets(error.code, question.secrets);
    if (!IsErrorCode(error.code))
        error.code.clear();
    error.description = Told(error.description, question);
    return error;
}

Failure::Kind KindOf(HttpResponse const& response, bool hasCode)
{
    int const status = response.status;
    if (status == 408 || status == 429 || status == 503)
        return Failure::Kind::Network;
    if (status < 500 && hasCode)
        return Failure::Kind::Refused;
    // Some providers say no by these alone. With a page or another's JSON they come from what
    // stands before the provider, which must not sign anybody out.
    bool const isEmpty = response.body.find_first_not_of(" \t\r\n") == std::string::npos;
    if (isEmpty && (status == 400 || status == 401))
        return Failure::Kind::Refused;
    return Failure::Kind::Provider;
}

Failure FailureOfStatus(HttpResponse const& response, Question const& question)
{
    int const status = response.status;
    std::string did = "answered with status " + std::to_string(status);
    Failure failure;
    if (status >= 300 && status < 400) {
        failure = FailureOf(question, Failure::Kind::Provider,
                            did + ", a redirect, which is never followed", CheckAddress);
    } else if (status >= 400 && status < 600) {
        ProviderError const error = ReadError(response, question);
        Failure::Kind const kind = KindOf(response, !error.code.empty());
        if (!error.code.empty())
            did += ", " + error.code;
        if (!error.description.empty())
            did += ": " + error.description;
        std::string const wait = Told(response.Header("retry-after"), question);
        if (kind == Failure::Kind::Network && !wait.empty())
            did += ", to be asked again after " + wait +
                   (wait.find_first_not_of("0123456789") == std::string::npos ? " s" : "");
        failure = FailureOf(question, kind, did,
                            kind == Failure::Kind::Network ? TryLater : AskAdministrator);
        failure.code = error.code;
    } else {
        failure = FailureOf(question, Failure::Kind::Provider, did + ", which has no meaning here",
                            CheckAddress);
    }
    failure.status = status;
    return failure;
}

struct Advice {
    HttpFailure failure;
    Failure::Kind kind;
    char const* did;
    char const* remedy;
};

constexpr Advice Advices[] = {
    {HttpFailure::Name, Failure::Kind::Network, "has a host name that could not be looked up",
     "check the network connection and the address"},
    {HttpFailure::Connection, Failure::Kind::Network, "could not be reached",
     "check the network connection, the proxy and the firewall"},
    {HttpFailure::Certificate, Failure::Kind::Network, "has no TLS certificate that is trusted",
     "install the authority of its certificate in the system's store, and check the clock"},
    {HttpFailure::Proxy, Failure::Kind::Network, "is behind a proxy that refused the credentials",
     "set the credentials of the proxy"},
    {HttpFailure::Timeout, Failure::Kind::Network, "did not answer in time",
     "try again later, and check the network connection"},
    {HttpFailure::TooLarge, Failure::Kind::Provider, "answered with too much", CheckAddress},
    {HttpFailure::Cancelled, Failure::Kind::Cancelled, "was not waited for: the host cancelled",
     "sign in again"},
    {HttpFailure::Other, Failure::Kind::Network, "could not be asked",
     "check the network connection and the address"},
};

Failure FailureOfTransport(HttpResponse const& response, Question const& question)
{
    for (Advice const& advice : Advices) {
        if (advice.failure != response.failure)
            continue;
        std::string did = advice.did;
        std::string const words = Told(response.reason, question);
        if (!words.empty())
            did += " (" + words + ")";
        return FailureOf(question, advice.kind, did, advice.remedy);
    }
    return FailureOf(question, Failure::Kind::Network, "could not be asked", TryLater);
}

bool IsOfType(HttpResponse const& response, std::string_view type)
{
    return EqualIgnoringCase(response.Header("content-type").substr(0, type.size()), type);
}

/// Told apart, since it is what a wrong address, a portal or a proxy sends.
bool IsHtml(HttpResponse const& response)
{
    std::size_t const start = response.body.find_first_not_of(" \t\r\n");
    return IsOfType(response, "text/html") ||
           (start != std::string::npos && response.body[start] == '<');
}

} // namespace

std::string Told(std::string const& text, Question const& question)
{
    return OneLine(WithoutSecrets(text, question.secrets));
}

Failure FailureOf(Question const& question, Failure::Kind kind, std::string const& did,
                  std::string remedy)
{
    Failure failure;
    failure.kind = kind;
    failure.reason = question.what + ' ' + ForLog(question.url) + ' ' + did;
    failure.remedy = std::move(remedy);
    return failure;
}

std::optional<Failure> FindFailure(HttpResponse const& response, Question const& question)
{
    if (response.failure != HttpFailure::None)
        return FailureOfTransport(response, question);
    if (response.status < 200 || response.status > 299)
        return FailureOfStatus(response, question);
    return std::nullopt;
}

Outcome<Json::Value> ReadJsonAnswer(HttpResponse const& response, Question const& question)
{
    if (auto failure = FindFailure(response, question))
        return *failure;
    std::string reason;
    Json::Value json = ParseJsonObject(response.body, reason);
    if (!json.isNull())
        return json;
    if (IsOfType(response, "application/jwt"))
        reason = "is a signed token (JWT), which is not supported, instead of JSON";
    else if (IsHtml(response))
        reason = "is a page (HTML) instead of JSON";
    else if (response.body.empty())
        reason = "is empty instead of JSON";
    Failure failure = FailureOf(question, Failure::Kind::Provider,
                                "answered with status " + std::to_string(response.status) +
                                    ", but the answer " + reason,
                                CheckAddress);
    failure.status = response.status;
    return failure;
}

} // namespace Halvorix::OpenId
