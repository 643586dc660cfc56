#pragma once

#include <cstring>
#include <memory>

#include "support/SecretText.h"

namespace Halvorix::SSOServices {

struct WipeAndRelease {
    void operator()(char* text) const
    {
        Wipe(text, std::strlen(text));
        delete[] text;
    }
};

/// A terminated text that the plugin allocated, with a token or cookies in it.
using PluginText = std::unique_ptr<char[], WipeAndRelease>;

} // namespace Halvorix::SSOServices
