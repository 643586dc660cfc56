#include "openid/protocol/CallbackRequest.h"

#include <algorithm>

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>

#include "support/SecretText.h"

namespace Halvorix::OpenId {

namespace {

namespace http = boost::beast::http;

CallbackAnswer RefusedRequest(unsigned status, char const* why)
{
    CallbackAnswer answer;
    answer.status = status;
    answer.title = "Request refused";
    answer.text = why;
    return answer;
}

std::string Find(Parameters const& parameters, std::string_view name, std::size_t& count)
{
    std::string found;
    count = 0;
    for (auto const& [key, value] : parameters)
        if (key == name && ++count == 1)
            found = value;
    return found;
}

CallbackAnswer AnswerResponse(Parameters parameters)
{
    CallbackAnswer answer;
    answer.status = 200;
    std::size_t count = 0;
    std::string const error = OneLine(Find(parameters, "error", count));
    std::string const description = OneLine(Find(parameters, "error_description", count));
    if (error.empty()) {
        answer.title = "You are back from signing in";
        answer.text = "You can close this page and go on in the application.";
    } else {
        answer.title = "Sign-in failed";
        answer.text = "The provider answered: " + error;
        if (!description.empty())
            answer.text += ": " + description;
    }
    answer.response = std::move(parameters);
    return answer;
}

CallbackAnswer ReadTarget(std::string_view target, ExpectedCallback const& expected)
{
    std::size_t const question = target.find('?');
    if (target.substr(0, question) != CallbackPath)
        return RefusedRequest(404, "There is nothing at this address.");
    auto parameters = DecodeForm(question == std::string_view::npos ? std::string_view()
                                                                    : target.substr(question + 1));
    if (!parameters || parameters->size() > MostParameters)
        return RefusedRequest(400, "This request cannot be read.");
    std::size_t count = 0;
    SSOServices::SecretText<char> const state(Find(*parameters, "state", count));
    if (expected.state.empty() || count != 1 || !EqualSecrets(*state, expected.state))
        return RefusedRequest(400, "This page does not belong to the sign-in that is waited for.");
    return AnswerResponse(std::move(*parameters));
}

char const* Phrase(unsigned status)
{
    switch (status) {
    case 200:
        return "OK";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 431:
        return "Request Header Fields Too Large";
    default:
        return "Bad Request";
    }
}

std::string Escaped(std::string const& text)
{
    std::string result;
    for (char const character : text) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\'':
            result += "&#39;";
            break;
        default:
            result += character;
        }
    }
    return result;
}

/// @param target what stood in the place of the head's
CallbackAnswer ReadRequest(std::string_view head, std::string_view target,
                           ExpectedCallback const& expected)
{
    http::request_parser<http::empty_body> parser;
    parser.header_limit(LargestRequest);
    boost::beast::error_code error;
    parser.put(boost::asio::buffer(head.data(), head.size()), error);
    if (!parser.is_header_done())
        return RefusedRequest(400, "This request cannot be read.");
    auto const& request = parser.get();
    // A name of another host's that leads here would let its pages read the answer.
    if (request.count(http::field::host) != 1 || request[http::field::host] != expected.host)
        return RefusedRequest(400, "This request is for another host.");
    if (request.method() != http::verb::get)
        return RefusedRequest(405, "Only GET is answered.");
    if (parser.chunked() || parser.content_length().value_or(0) != 0)
        return RefusedRequest(400, "A request with a content is not answered.");
    return ReadTarget(target, expected);
}

/// Between the method and the version: visible characters alone.
std::string_view TargetOf(std::string_view head)
{
    std::size_t const blank = head.find(' ');
    if (blank == std::string_view::npos)
        return {};
    head.remove_prefix(blank + 1);
    std::string_view const target = head.substr(0, head.find(' '));
    bool const isVisible = std::all_of(target.begin(), target.end(), [](char character) {
        return static_cast<unsigned char>(character) > 0x20 && character != 0x7F;
    });
    return isVisible ? target : std::string_view();
}

} // namespace

CallbackAnswer ReadCallback(std::string_view head, ExpectedCallback const& expected)
{
    if (head.size() > LargestRequest)
        return RefusedRequest(431, "This request is too large.");
    std::string_view const target = TargetOf(head);
    if (target.empty())
        return RefusedRequest(400, "This request cannot be read.");
    // Beast would leave copies of the code behind: it sees a target without it.
    auto const before = static_cast<std::size_t>(target.data() - head.data());
    std::string request(head.substr(0, before));
    request += '/';
    request += head.substr(before + target.size());
    return ReadRequest(request, target, expected);
}

std::string WriteAnswer(CallbackAnswer const& answer)
{
    std::string const page = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
                             "<title>" +
                             Escaped(answer.title) + "</title></head>\n<body><h1>" +
                             Escaped(answer.title) + "</h1><p>" + Escaped(answer.text) +
                             "</p></body></html>\n";
    return "HTTP/1.1 " + std::to_string(answer.status) + ' ' + Phrase(answer.status) + "\r\n" +
           (answer.status == 405 ? "Allow: GET\r\n" : "") +
           "Content-Type: text/html; charset=utf-8\r\n"
           "Content-Length: " +
           std::to_string(page.size()) +
           "\r\n"
           "Connection: close\r\n"
           "Cache-Control: no-store\r\n"
           "Referrer-Policy: no-referrer\r\n"
           "X-Content-Type-Options: nosniff\r\n"
           "Content-Security-Policy: default-src 'none'; base-uri 'none'; form-action 'none'; "
           "frame-ancestors 'none'\r\n"
           "\r\n" +
           page;
}

} // namespace Halvorix::OpenId
