#include "openid/BareHttp.h"

#include <curl/curl.h>

#include <stdexcept>

namespace Bench {

struct BareHttp::Handles {
    CURL* const easy = ::curl_easy_init();
};

namespace {

std::size_t Take(char* bytes, std::size_t one, std::size_t count, void* text)
{
    static_cast<std::string*>(text)->append(bytes, one * count);
    return one * count;
}

} // namespace

BareHttp::BareHttp() : handles(std::make_unique<Handles>()) {}

BareHttp::~BareHttp() { ::curl_easy_cleanup(handles->easy); }

std::string BareHttp::Ask(std::string const& url, std::string const& bearer,
                          std::string const& body)
{
    CURL* const easy = handles->easy;
    std::string answer;
    ::curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    if (body.empty())
        ::curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    else
        ::curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body.c_str());
    std::string const line = "Authorization: Bearer " + bearer;
    curl_slist* const headers =
        bearer.empty() ? nullptr : ::curl_slist_append(nullptr, line.c_str());
    ::curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
    ::curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Take);
    ::curl_easy_setopt(easy, CURLOPT_WRITEDATA, &answer);
    CURLcode const result = ::curl_easy_perform(easy);
    ::curl_slist_free_all(headers);
    long status = 0;
    ::curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    if (result != CURLE_OK || status != 200)
        throw std::runtime_error(url + ": " + ::curl_easy_strerror(result) + ", " +
                                 std::to_string(status) + " " + answer);
    return answer;
}

} // namespace Bench
