// The requests of a sign-in by the system's HTTP library alone, and nothing done with the answers.
// Reads lines of what to do:
//
//   listen                 prints the port at which a browser comes back
//   ask URL BEARER BODY    a request; "-" for what it has not
//   run                    waits for the browser, if it is to come; carries all of it out over one
//                          connection, forgets it, and prints the nanoseconds

#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>

#include "framework/System.h"
#include "openid/BareHttp.h"

namespace asio = boost::asio;
using asio::ip::tcp;

namespace {

struct Request {
    std::string url, bearer, body;
};

std::string OrNothing(std::string const& word) { return word == "-" ? std::string() : word; }

void AnswerBrowser(asio::io_context& context, tcp::acceptor& acceptor)
{
    tcp::socket socket(context);
    acceptor.accept(socket);
    std::string request;
    asio::read_until(socket, asio::dynamic_buffer(request), "\r\n\r\n");
    std::string const page = "You are back from signing in.";
    asio::write(socket, asio::buffer("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                                     std::to_string(page.size()) + "\r\n\r\n" + page));
}

} // namespace

int main()
try {
    asio::io_context context;
    std::unique_ptr<tcp::acceptor> acceptor;
    std::vector<Request> requests;
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string what, url, bearer, body;
        words >> what >> url >> bearer >> body;
        if (what == "listen") {
            acceptor = std::make_unique<tcp::acceptor>(
                context, tcp::endpoint(asio::ip::address_v4::loopback(), 0));
            std::cout << acceptor->local_endpoint().port() << std::endl;
        } else if (what == "ask") {
            requests.push_back({url, OrNothing(bearer), OrNothing(body)});
        } else if (what == "run") {
            auto const start = Bench::OwnTime();
            if (acceptor)
                AnswerBrowser(context, *acceptor);
            {
                Bench::BareHttp http;
                for (Request const& request : requests)
                    http.Ask(request.url, request.bearer, request.body);
            }
            auto const time = Bench::OwnTime() - start;
            std::cout << time.count() << std::endl;
            acceptor.reset();
            requests.clear();
        }
    }
    return 0;
} catch (std::exception const& exception) {
    std::cerr << exception.what() << '\n';
    return 1;
}
