// What a browser, or anybody else on this machine, sends to the listener. A byte 1 first: the rest
// is the target of a request that is right otherwise.
//
// Property: only a request for this host with the one right state gives a response, and all are
// answered by a whole page that shows nothing of them as markup.

#include <algorithm>
#include <string>

#include "fuzz/Property.h"
#include "openid/protocol/CallbackRequest.h"

using namespace Halvorix::OpenId;
using namespace Fuzz;

namespace {

ExpectedCallback const TheExpected{"127.0.0.1:1234", "right"};

bool IsKnownStatus(unsigned status)
{
    return status == 200 || status == 400 || status == 404 || status == 405 || status == 431;
}

void CheckPage(std::string const& sent, CallbackAnswer const& answer)
{
    std::size_t const end = sent.find("\r\n\r\n");
    Holds(end != std::string::npos, "an answer has a head", sent);
    std::string const head = sent.substr(0, end), page = sent.substr(end + 4);
    Holds(head.find("\r\nContent-Length: " + std::to_string(page.size()) + "\r\n") !=
              std::string::npos,
          "the length is told", sent);
    Holds(head.find("\r\nConnection: close\r\n") != std::string::npos, "it is the last", sent);
    // <!DOCTYPE>, html, head, meta, title, body, h1 and p, six of them closed.
    Same("elements of the page", std::size_t(14),
         static_cast<std::size_t>(std::count(page.begin(), page.end(), '<')));
    Holds(std::none_of(answer.text.begin(), answer.text.end(),
                       [](char unit) { return unit >= 0 && unit < 0x20; }),
          "the text is one line", answer.text);
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string head = AsText(data, size);
    if (!head.empty() && head.front() == 1)
        head = "GET /callback?" + head.substr(1) + " HTTP/1.1\r\nHost: 127.0.0.1:1234\r\n\r\n";
    CallbackAnswer const answer = ReadCallback(head, TheExpected);
    Holds(IsKnownStatus(answer.status), "the status is known", head);
    Same("a response comes with the status 200", answer.status == 200, answer.response.has_value());
    if (answer.response) {
        auto const isState = [](auto const& one) { return one.first == "state"; };
        auto const& response = *answer.response;
        Same("states", std::size_t(1),
             static_cast<std::size_t>(std::count_if(response.begin(), response.end(), isState)));
        Same("the state", TheExpected.state,
             std::find_if(response.begin(), response.end(), isState)->second);
        Holds(response.size() <= MostParameters, "it is no larger than allowed", head);
        Holds(head.find(TheExpected.host) != std::string::npos, "it is for this host", head);
        Holds(head.rfind("GET /callback?", 0) == 0, "it is for this address", head);
    }
    CheckPage(WriteAnswer(answer), answer);
    return 0;
}
