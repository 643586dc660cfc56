#pragma once

#include <memory>
#include <string>
#include <vector>

#include <NetworkCookie.h>
#include "support/SecretText.h"

namespace Halvorix::WebServices {

struct NetworkCookie::Record {
    std::string name;                    // bytes
    SSOServices::SecretText<char> value; // bytes
    std::wstring domain;
    std::wstring path;
    bool secure = false;
    bool httpOnly = false;
    long long expiryDate = 0;
};

struct NetworkCookieJar::Record {
    std::vector<std::unique_ptr<NetworkCookie>> cookies;
};

} // namespace Halvorix::WebServices
