#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "support/SecretText.h"

namespace Halvorix::OpenId {

using SSOServices::Wipe;

/// Adds to a text that may hold a secret: where it has to grow, nothing stays in the memory that it
/// had before.
inline void AppendSecret(std::string& text, char const* bytes, std::size_t size)
{
    if (text.capacity() - text.size() < size) {
        std::string larger;
        larger.reserve(std::max(text.size() + size, text.capacity() * 2));
        larger.append(text);
        Wipe(text);
        text.swap(larger);
    }
    text.append(bytes, size);
}

/// Wipes a text of somebody else's at the end of a scope.
class WipeAtEnd {
public:
    explicit WipeAtEnd(std::string& aText) : text(aText) {}
    ~WipeAtEnd() { Wipe(text); }
    WipeAtEnd(WipeAtEnd const&) = delete;
    WipeAtEnd& operator=(WipeAtEnd const&) = delete;

private:
    std::string& text;
};

} // namespace Halvorix::OpenId
