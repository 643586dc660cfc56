#pragma once

#include <json/value.h>

namespace Halvorix::SSOServices {

/// A document of the library's own whose texts are wiped at its end. All of them
/// are copies that jsoncpp made: it holds no Json::StaticString.
class SecretDocument {
public:
    SecretDocument() = default;
    explicit SecretDocument(Json::ValueType type) : value(type) {}
    ~SecretDocument();
    SecretDocument(SecretDocument const&) = delete;
    SecretDocument& operator=(SecretDocument const&) = delete;

    Json::Value& operator*() { return value; }
    Json::Value* operator->() { return &value; }

private:
    Json::Value value;
};

} // namespace Halvorix::SSOServices
