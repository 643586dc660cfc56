#pragma once

#include <string>

#include "../../include/NetworkCookie.h"

namespace Halvorix::WebServices {

struct NetworkCookie::Record {
    std::string name;  // bytes
    std::string value; // bytes
    std::wstring domain;
    std::wstring path;
    bool secure = false;
    bool httpOnly = false;
    long long expiryDate = 0;
};

} // namespace Halvorix::WebServices
