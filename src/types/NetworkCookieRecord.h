#pragma once

#include <string>

#include "../../include/NetworkCookie.h"
#include "../support/SecretText.h"

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

} // namespace Halvorix::WebServices
