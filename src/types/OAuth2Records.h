#pragma once

#include <string>

#include <OAuth2Token.h>
#include "support/SecretText.h"

namespace Halvorix::WebServices {

struct OAuth2TokenSpec::Record {
    bool legacy = false; // no accessor: travels by JSON, copies and comparison
    OAuth2TokenType type = OAuth2TokenTypeDefault;
    std::wstring scope;
};

struct OAuth2Token::Record {
    SSOServices::SecretText<wchar_t> token;
    OAuth2TokenSpec spec;
};

} // namespace Halvorix::WebServices
