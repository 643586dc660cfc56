// SSOServicesPrivate: OAuth2 specs and tokens.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <json/value.h>

#include <SSOServicesPrivate.h>
#include <plugin/IRsaCryptor.h>
#include "json/Base64.h"
#include "json/JsonDocument.h"
#include "json/SecretDocument.h"
#include "support/SecretText.h"
#include "support/TextConversion.h"
#include "types/OAuth2Records.h"

using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;

namespace {

using Operation = bool (IRsaCryptor::*)(unsigned char const*, unsigned long long, unsigned char*,
                                        unsigned long long, unsigned long long*);

// One direction: a token of the default type goes through RSA, every other one through the
// buffer operation, whose capacity is so many times the input.
struct Cipher {
    Operation rsa;
    Operation buffer;
    std::size_t capacityPerByte;
};

constexpr Cipher Encryption{&IRsaCryptor::RsaEncrypt, &IRsaCryptor::EncryptBuffer, 2};
constexpr Cipher Decryption{&IRsaCryptor::RsaDecrypt, &IRsaCryptor::DecryptBuffer, 1};

std::uint64_t RsaCapacity(IRsaCryptor& cryptor)
{
    return static_cast<std::uint64_t>(
        std::max<std::int64_t>(0, std::int64_t{cryptor.GetMaxBlockSize()} + 1));
}

// The buffer pair gets its capacities in 32 bits.
std::uint32_t BufferCapacity(std::size_t size) { return static_cast<std::uint32_t>(size); }

// False if the cryptor fails, or claims more than it had room for.
bool Transform(IRsaCryptor& cryptor, Cipher const& cipher, OAuth2TokenType type,
               std::string const& input, SecretText<char>& output)
{
    bool const isRsa = type == OAuth2TokenTypeDefault;
    Operation const operation = isRsa ? cipher.rsa : cipher.buffer;
    std::uint64_t const capacity =
        isRsa ? RsaCapacity(cryptor) : BufferCapacity(cipher.capacityPerByte * input.size());
    output->assign(capacity, '\0');
    unsigned long long length = 0;
    if (!(cryptor.*operation)(reinterpret_cast<unsigned char const*>(input.data()), input.size(),
                              reinterpret_cast<unsigned char*>(output->data()), capacity,
                              &length) ||
        length > capacity)
        return false;
    output->resize(length);
    return true;
}

} // namespace

bool SSOServicesPrivate::OAuth2TokenSpecToJson(OAuth2TokenSpec const& spec, Json::Value& json)
{
    json["type"] = static_cast<Json::Int>(spec.record->type);
    json["scope"] = WideToUtf8(spec.record->scope);
    json["legacy"] = spec.record->legacy;
    return true;
}

bool SSOServicesPrivate::OAuth2TokenSpecToJson(OAuth2TokenSpec const& spec, std::string& text)
{
    Json::Value json;
    OAuth2TokenSpecToJson(spec, json);
    text = WriteJsonDocument(json);
    return true;
}

bool SSOServicesPrivate::JsonToOAuth2TokenSpec(Json::Value const& json, OAuth2TokenSpec& spec)
{
    if (json.isNull())
        return false;
    // A missing type is 0 and not the default. The scope ends at its first zero
    // and is not brought into normal form.
    spec.record->type = static_cast<OAuth2TokenType>(json["type"].asInt());
    std::wstring const scope = WideText(json["scope"]);
    spec.record->scope = scope.substr(0, scope.find(L'\0'));
    spec.record->legacy = json["legacy"].asBool();
    return true;
}

bool SSOServicesPrivate::JsonToOAuth2TokenSpec(char const* text, OAuth2TokenSpec& spec)
{
    Json::Value json;
    return ParseJsonDocument(text, json) && JsonToOAuth2TokenSpec(json, spec);
}

bool SSOServicesPrivate::OAuth2TokenToJson(OAuth2Token const& token, Json::Value& json)
{
    return OAuth2TokenToJson(token, json, nullptr);
}

bool SSOServicesPrivate::OAuth2TokenToJson(OAuth2Token const& token, std::string& text)
{
    return OAuth2TokenToJson(token, text, nullptr);
}

bool SSOServicesPrivate::OAuth2TokenToJson(OAuth2Token const& token, Json::Value& json,
                                           std::shared_ptr<IRsaCryptor> cryptor)
{
    SecretText<char> const clear(WideToUtf8(*token.record->token));
    if (cryptor) {
        SecretText<char> encrypted;
        if (!Transform(*cryptor, Encryption, token.record->spec.GetType(), *clear, encrypted))
            return false;
        json["EncryptedOAuth2AccessToken"] = *SecretText<char>(Base64Encode(*encrypted));
    } else {
        json["OAuth2AccessToken"] = *clear;
    }
    Json::Value spec;
    OAuth2TokenSpecToJson(token.record->spec, spec);
    json["OAuth2TokenSpec"] = spec;
    return true;
}

bool SSOServicesPrivate::OAuth2TokenToJson(OAuth2Token const& token, std::string& text,
                                           std::shared_ptr<IRsaCryptor> cryptor)
{
    Wipe(text);
    SecretDocument json;
    if (!OAuth2TokenToJson(token, *json, std::move(cryptor)))
        return false;
    text = WriteJsonDocument(*json);
    return true;
}

bool SSOServicesPrivate::JsonToOAuth2Token(Json::Value const& json, OAuth2Token& token)
{
    return JsonToOAuth2Token(json, token, nullptr);
}

bool SSOServicesPrivate::JsonToOAuth2Token(char const* text, OAuth2Token& token)
{
    return JsonToOAuth2Token(text, token, nullptr);
}

bool SSOServicesPrivate::JsonToOAuth2Token(Json::Value const& json, OAuth2Token& token,
                                           std::shared_ptr<IRsaCryptor> cryptor)
{
    if (json.isNull())
        return false;
    // The spec is replaced even if the text then fails to read.
    JsonToOAuth2TokenSpec(json["OAuth2TokenSpec"], token.record->spec);
    SecretText<char> const clear(json["OAuth2AccessToken"].asString());
    // Decoded before the clear text is looked at: malformed base64 always fails.
    SecretText<char> const encrypted(Base64Decode(json["EncryptedOAuth2AccessToken"].asString()));
    if (!clear->empty()) {
        token.record->token = Utf8ToWide(*clear);
        return true;
    }
    SecretText<char> decrypted;
    if (!cryptor ||
        !Transform(*cryptor, Decryption, token.record->spec.GetType(), *encrypted, decrypted))
        return false;
    token.record->token = Utf8ToWide(*decrypted);
    return true;
}

bool SSOServicesPrivate::JsonToOAuth2Token(char const* text, OAuth2Token& token,
                                           std::shared_ptr<IRsaCryptor> cryptor)
{
    SecretDocument json;
    return ParseJsonDocument(text, *json) && JsonToOAuth2Token(*json, token, std::move(cryptor));
}

void SSOServicesPrivate::Initialize(OAuth2Token& token, std::wstring const& text,
                                    OAuth2TokenSpec const& spec)
{
    token.record->token = text;
    token.record->spec = spec;
}
