// Tokens as documents that may be stored: encrypted by a cryptor of the host,
// which it also shares with the plugin. The documents need no plugin.

#include <iostream>
#include <memory>

#include <OAuth2Token.h>
#include <SSOServerManager.h>
#include <SSOServicesPrivate.h>
#include <SampleCryptor.h>

#include "Show.h"

using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;

namespace {

void ShowDocument(std::wstring const& text, OAuth2TokenType type,
                  std::shared_ptr<IRsaCryptor> const& cryptor)
{
    OAuth2Token token;
    SSOServicesPrivate::Initialize(token, text, OAuth2TokenSpec(type, L"data:read"));

    std::string document;
    bool const written = SSOServicesPrivate::OAuth2TokenToJson(token, document, cryptor);
    std::cout << "encrypted token of type " << type << ": OAuth2TokenToJson answers "
              << Answer(written) << std::endl;
    if (!written)
        return;
    std::cout << document << "\n"
              << "token in clear: "
              << (document.find(Utf8(text)) == std::string::npos ? "no" : "yes") << std::endl;

    OAuth2Token readBack;
    bool const read = SSOServicesPrivate::JsonToOAuth2Token(document.c_str(), readBack, cryptor);
    std::cout << "read back: JsonToOAuth2Token answers " << Answer(read) << ", the same token "
              << Answer(readBack == token) << std::endl;
}

} // namespace

void ShowEncryptedToken()
{
    std::shared_ptr<IRsaCryptor> const cryptor = std::make_shared<Sample::SampleCryptor>();
    SSOServicesManager::SetRsaCryptor(cryptor);
    bool const shared = SSOServicesManager::GetRsaCryptor() == cryptor;
    std::cout << "cryptor: the plugin has " << (shared ? "the host's" : "none") << std::endl;

    // Numbers of types other than the default are the plugin's. The type chooses
    // the cryptor's algorithm, and this cryptor's second one takes no short text.
    OAuth2TokenType const otherType{2};
    ShowDocument(L"sample-secret", OAuth2TokenTypeDefault, cryptor);
    ShowDocument(L"sample-secret-of-more-than-28-bytes", otherType, cryptor);
    ShowDocument(L"sample-secret", otherType, cryptor);

    // Back from the plugin, which lives longer than the host's code.
    SSOServicesManager::SetRsaCryptor(nullptr);
    std::cout << "cryptor: the plugin has "
              << (SSOServicesManager::GetRsaCryptor() ? "one" : "none") << " any more" << std::endl;
}
