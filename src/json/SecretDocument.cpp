#include "json/SecretDocument.h"

#include <cstddef>

#include "support/SecretText.h"

namespace Halvorix::SSOServices {

namespace {

// As deep as a document can be read or is written: jsoncpp's own limit.
void WipeTexts(Json::Value& value)
{
    char const* begin = nullptr;
    char const* end = nullptr;
    if (value.isString() && value.getString(&begin, &end))
        Wipe(const_cast<char*>(begin), static_cast<std::size_t>(end - begin));
    else if (value.isArray() || value.isObject())
        for (Json::Value& member : value)
            WipeTexts(member);
}

} // namespace

SecretDocument::~SecretDocument() { WipeTexts(value); }

} // namespace Halvorix::SSOServices
