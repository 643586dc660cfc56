// What comes to the listener, byte by byte, and what is answered.

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "openid/protocol/CallbackRequest.h"

namespace {

using namespace Halvorix::OpenId;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;

ExpectedCallback const TheExpected{"127.0.0.1:1234", "right"};
std::string const Host = "Host: 127.0.0.1:1234\r\n";
std::string const RightLine = "GET /callback?code=c+d&state=right HTTP/1.1\r\n";

TEST(CallbackRequest, GivesItsParameters)
{
    auto const answer = ReadCallback(RightLine + Host + "Accept: */*\r\n\r\n", TheExpected);
    EXPECT_EQ(answer.status, 200u);
    ASSERT_TRUE(answer.response);
    EXPECT_THAT(*answer.response, ElementsAre(Pair("code", "c d"), Pair("state", "right")));
    EXPECT_EQ(answer.title, "You are back from signing in");
}

TEST(CallbackRequest, MayBeOfAnyVersionWithItsHost)
{
    EXPECT_TRUE(ReadCallback("GET /callback?state=right HTTP/1.0\r\n" + Host + "\r\n", TheExpected)
                    .response);
    EXPECT_TRUE(ReadCallback("GET /callback?state=right HTTP/1.1\r\nhOST:127.0.0.1:1234\r\n\r\n",
                             TheExpected)
                    .response);
}

TEST(CallbackRequest, IsRefusedForAnythingElse)
{
    std::string const end = Host + "\r\n";
    std::string many = "GET /callback?state=right", longLine = "GET /callback?state=right&x=";
    for (int i = 0; i < 20; ++i)
        many += "&a=b";
    longLine += std::string(17000, 'x');
    struct Row {
        std::string head;
        unsigned status;
    };
    for (auto const& [head, status] : std::vector<Row>{
             {"", 400},
             {"\r\n\r\n", 400},
             {"x", 400},
             {"\x16\x03\x01\x02", 400},
             {std::string(1000, '\0'), 400},
             {"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", 400},
             {"GET\r\n\r\n", 400},
             {RightLine, 400},
             {RightLine + Host, 400},
             {RightLine + "\r\n", 400},
             {"GET /callback?state=right HTTP/1.0\r\n\r\n", 400},
             {"GET /callback?state=right\r\n\r\n", 400},
             {RightLine + "Host: localhost:1234\r\n\r\n", 400},
             {RightLine + "Host: 127.0.0.1\r\n\r\n", 400},
             {RightLine + "Host: 127.0.0.1:12345\r\n\r\n", 400},
             {RightLine + "Host: evil.example:1234\r\n\r\n", 400},
             {RightLine + Host + end, 400},
             {RightLine + "Host: evil.example\r\n" + end, 400},
             {"POST /callback?state=right HTTP/1.1\r\n" + end, 405},
             {"HEAD /callback?state=right HTTP/1.1\r\n" + end, 405},
             {"OPTIONS /callback?state=right HTTP/1.1\r\nOrigin: https://evil.example\r\n" + end,
              405},
             {"get /callback?state=right HTTP/1.1\r\n" + end, 405},
             {"GET /callback?state=right HTTP/1.1\r\nContent-Length: 1\r\n" + end, 400},
             {"GET /callback?state=right HTTP/1.1\r\nTransfer-Encoding: chunked\r\n" + end, 400},
             {"GET /callback?state=right HTTP/1.1\r\nContent-Length: -1\r\n" + end, 400},
             {"GET / HTTP/1.1\r\n" + end, 404},
             {"GET /favicon.ico HTTP/1.1\r\n" + end, 404},
             {"GET /callback/?state=right HTTP/1.1\r\n" + end, 404},
             {"GET /Callback?state=right HTTP/1.1\r\n" + end, 404},
             {"GET //callback?state=right HTTP/1.1\r\n" + end, 404},
             {"GET /x/../callback?state=right HTTP/1.1\r\n" + end, 404},
             {"GET http://127.0.0.1:1234/callback?state=right HTTP/1.1\r\n" + end, 404},
             {"GET /callback HTTP/1.1\r\n" + end, 400},
             {"GET /callback? HTTP/1.1\r\n" + end, 400},
             {"GET /callback?code=c HTTP/1.1\r\n" + end, 400},
             {"GET /callback?code=c&state=wrong HTTP/1.1\r\n" + end, 400},
             {"GET /callback?code=c&state= HTTP/1.1\r\n" + end, 400},
             {"GET /callback?code=c&State=right HTTP/1.1\r\n" + end, 400},
             {"GET /callback?state=right&state=right HTTP/1.1\r\n" + end, 400},
             {"GET /callback?state=right&state=wrong HTTP/1.1\r\n" + end, 400},
             {"GET /callback?state=right&code=%zz HTTP/1.1\r\n" + end, 400},
             {"GET /callback?state=ri ght HTTP/1.1\r\n" + end, 400},
             {many + " HTTP/1.1\r\n" + end, 400},
             {longLine + " HTTP/1.1\r\n" + end, 431}}) {
        auto const answer = ReadCallback(head, TheExpected);
        EXPECT_EQ(answer.status, status) << head.substr(0, 200);
        EXPECT_FALSE(answer.response);
        EXPECT_EQ(answer.title, "Request refused");
    }
}

TEST(CallbackRequest, IsNeverRightWithoutAStateThatIsWaitedFor)
{
    EXPECT_FALSE(
        ReadCallback("GET /callback?state= HTTP/1.1\r\n" + Host + "\r\n", {TheExpected.host, ""})
            .response);
}

TEST(CallbackRequest, TellsAnErrorOnItsPage)
{
    auto const answer = ReadCallback("GET /callback?error=access_denied&state=right&"
                                     "error_description=%3Cscript%3Ealert(1)%3C%2Fscript%3E%0A%26"
                                     " HTTP/1.1\r\n" +
                                         Host + "\r\n",
                                     TheExpected);
    EXPECT_EQ(answer.status, 200u);
    ASSERT_TRUE(answer.response);
    EXPECT_EQ(answer.title, "Sign-in failed");
    std::string const page = WriteAnswer(answer);
    EXPECT_THAT(page, HasSubstr("<h1>Sign-in failed</h1><p>The provider answered: access_denied: "
                                "&lt;script&gt;alert(1)&lt;/script&gt; &amp;</p>"));
    EXPECT_THAT(page, Not(HasSubstr("<script")));
}

TEST(CallbackRequest, IsAnsweredByAPlainPageThatNobodyKeeps)
{
    CallbackAnswer answer;
    answer.status = 200;
    answer.title = "a'b\"c";
    answer.text = "d";
    std::string const body = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
                             "<title>a&#39;b&quot;c</title></head>\n<body><h1>a&#39;b&quot;c</h1>"
                             "<p>d</p></body></html>\n";
    EXPECT_EQ(WriteAnswer(answer),
              "HTTP/1.1 200 OK\r\n"
              "Content-Type: text/html; charset=utf-8\r\n"
              "Content-Length: " +
                  std::to_string(body.size()) +
                  "\r\n"
                  "Connection: close\r\n"
                  "Cache-Control: no-store\r\n"
                  "Referrer-Policy: no-referrer\r\n"
                  "X-Content-Type-Options: nosniff\r\n"
                  "Content-Security-Policy: default-src 'none'; base-uri 'none'; form-action "
                  "'none'; frame-ancestors 'none'\r\n\r\n" +
                  body);
}

TEST(CallbackRequest, IsAnsweredWithTheNameOfItsStatus)
{
    for (auto const& [status, line] : std::vector<std::pair<unsigned, std::string>>{
             {400, "HTTP/1.1 400 Bad Request\r\nContent-Type"},
             {404, "HTTP/1.1 404 Not Found\r\nContent-Type"},
             {405, "HTTP/1.1 405 Method Not Allowed\r\nAllow: GET\r\nContent-Type"},
             {431, "HTTP/1.1 431 Request Header Fields Too Large\r\nContent-Type"}}) {
        CallbackAnswer answer;
        answer.status = status;
        EXPECT_THAT(WriteAnswer(answer), testing::StartsWith(line));
    }
}

} // namespace
