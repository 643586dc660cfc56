#include "openid/platform/Http.h"

#include <algorithm>

#include "openid/platform/HttpParts.h"
#include "openid/platform/SecretBytes.h"

namespace Halvorix::OpenId {

namespace {

std::string SmallLetters(std::string_view text)
{
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return small;
}

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    std::size_t const begin = std::min(text.find_first_not_of(blanks), text.size());
    text.remove_prefix(begin);
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

bool IsOfAddress(char c) { return c > ' ' && c < 0x7F && c != '\\'; }

/// Characters that would end a header, or its name.
bool IsHeader(std::pair<std::string, std::string> const& header)
{
    using namespace std::string_view_literals;
    return !header.first.empty() &&
           header.first.find_first_of(": \t\r\n\0"sv) == std::string::npos &&
           header.second.find_first_of("\r\n\0"sv) == std::string::npos;
}

/// The status in "HTTP/1.1 200 OK"; 0 for anything else.
int StatusOf(std::string_view line)
{
    std::size_t const blank = line.find(' ');
    std::string_view const digits = Trimmed(line.substr(std::min(blank, line.size()))).substr(0, 3);
    bool const isNumber =
        digits.size() == 3 && digits.find_first_not_of("0123456789") == std::string_view::npos;
    return isNumber ? std::stoi(std::string(digits)) : 0;
}

} // namespace

std::string HttpResponse::Header(std::string const& name) const
{
    auto const found = std::find_if(headers.begin(), headers.end(),
                                    [&](auto const& header) { return header.first == name; });
    return found == headers.end() ? std::string() : found->second;
}

void Fail(HttpResponse& response, HttpFailure failure, std::string reason)
{
    Wipe(response.body);
    response = {};
    response.failure = failure;
    response.reason = std::move(reason);
}

std::string WhyNotSent(HttpRequest const& request)
{
    if (request.method != "GET" && request.method != "POST")
        return "the method " + request.method + " is not known";
    if (!std::all_of(request.url.begin(), request.url.end(), &IsOfAddress))
        return "the address has characters in it that none has";
    if (!std::all_of(request.headers.begin(), request.headers.end(), &IsHeader))
        return "a header has a line break in it";
    return {};
}

std::string HeaderLine(std::pair<std::string, std::string> const& header)
{
    return header.first + ": " + header.second;
}

void AddHeaderLine(HttpResponse& response, std::string_view line)
{
    if (line.substr(0, 5) == "HTTP/") {
        response.headers.clear();
        response.status = StatusOf(line);
        return;
    }
    std::size_t const colon = line.find(':');
    if (colon != std::string_view::npos)
        response.headers.emplace_back(SmallLetters(Trimmed(line.substr(0, colon))),
                                      std::string(Trimmed(line.substr(colon + 1))));
}

void CheckWhole(HttpResponse& response)
{
    std::string const length = response.Header("content-length");
    bool const isNumber = !length.empty() && length.size() < 16 &&
                          length.find_first_not_of("0123456789") == std::string::npos;
    if (response.status == 407)
        Fail(response, HttpFailure::Proxy, "the proxy asks for credentials");
    else if (response.status == 0)
        Fail(response, HttpFailure::Connection, "the server gave no status");
    else if (isNumber && response.body.size() < std::stoull(length) && response.status != 204 &&
             response.status != 304)
        Fail(response, HttpFailure::Connection, "the answer ended early");
}

int ProxyFit(std::string const& host, int port, std::string const& proxyHost, int proxyPort)
{
    bool const isForHost = host.empty() || SmallLetters(host) == SmallLetters(proxyHost);
    bool const isForPort = port == 0 || proxyPort == 0 || port == proxyPort;
    if (!isForHost || !isForPort)
        return 0;
    // Those of one port may be meant for another than the unknown one.
    int const byPort = port == 0 ? 2 : proxyPort == 0 ? 1 : 3;
    return host.empty() ? byPort : byPort + 3;
}

ProxyCredential const* CredentialFor(HttpRequest const& request, std::string const& host, int port)
{
    ProxyCredential const* best = nullptr;
    int bestFit = 0;
    for (ProxyCredential const& credential : request.proxyCredentials) {
        int const fit = ProxyFit(credential.host, credential.port, host, port);
        if (fit > bestFit) {
            best = &credential;
            bestFit = fit;
        }
    }
    return best;
}

} // namespace Halvorix::OpenId
