// OpenSSL 3.

#include "Keys.h"

#include <algorithm>
#include <array>
#include <utility>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>

namespace Sample {

namespace {

template <auto release>
struct Releaser {
    template <typename T>
    void operator()(T* object) const
    {
        release(object);
    }
};
using Pair = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY_free>>;
using PairContext = std::unique_ptr<EVP_PKEY_CTX, Releaser<EVP_PKEY_CTX_free>>;
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, Releaser<EVP_CIPHER_CTX_free>>;

class OpenSslKeys : public Keys {
public:
    OpenSslKeys() : pair(EVP_PKEY_Q_keygen(nullptr, nullptr, "RSA", BlockSize * std::size_t{8})) {}
    ~OpenSslKeys() override { Wipe(key.data(), key.size()); }
    OpenSslKeys(OpenSslKeys const&) = delete;
    OpenSslKeys& operator=(OpenSslKeys const&) = delete;

    bool Complete() { return pair && RAND_priv_bytes(key.data(), KeySize) == 1; }

    bool RsaEncrypt(Byte const* text, std::size_t textSize, Byte* block) override
    {
        std::size_t size = BlockSize;
        PairContext const context = Oaep(EVP_PKEY_encrypt_init);
        return context && EVP_PKEY_encrypt(context.get(), block, &size, text, textSize) == 1;
    }
    bool RsaDecrypt(Byte const* block, Byte* text, std::size_t& textSize) override
    {
        textSize = BlockSize;
        PairContext const context = Oaep(EVP_PKEY_decrypt_init);
        return context && EVP_PKEY_decrypt(context.get(), text, &textSize, block, BlockSize) == 1;
    }

    bool Seal(Byte const* text, std::size_t textSize, Byte* sealed) override
    {
        Byte* const nonce = sealed;
        Byte* const ciphertext = nonce + NonceSize;
        Byte* const tag = ciphertext + textSize;
        int stored = 0;
        CipherContext const context(EVP_CIPHER_CTX_new());
        EVP_CIPHER_CTX* const cipher = context.get();
        return cipher && RAND_bytes(nonce, NonceSize) == 1 &&
               EVP_EncryptInit_ex2(cipher, EVP_aes_256_gcm(), key.data(), nonce, nullptr) == 1 &&
               EVP_EncryptUpdate(cipher, ciphertext, &stored, text, static_cast<int>(textSize)) ==
                   1 &&
               EVP_EncryptFinal_ex(cipher, tag, &stored) == 1 && // stores nothing
               EVP_CIPHER_CTX_ctrl(cipher, EVP_CTRL_AEAD_GET_TAG, TagSize, tag) == 1;
    }
    bool Open(Byte const* sealed, Byte* text, std::size_t textSize) override
    {
        Byte const* const nonce = sealed;
        Byte const* const ciphertext = nonce + NonceSize;
        std::array<Byte, TagSize> tag{}; // a copy, as OpenSSL takes no constant one
        std::copy_n(ciphertext + textSize, TagSize, tag.data());
        int stored = 0;
        CipherContext const context(EVP_CIPHER_CTX_new());
        EVP_CIPHER_CTX* const cipher = context.get();
        return cipher &&
               EVP_DecryptInit_ex2(cipher, EVP_aes_256_gcm(), key.data(), nonce, nullptr) == 1 &&
               EVP_DecryptUpdate(cipher, text, &stored, ciphertext, static_cast<int>(textSize)) ==
                   1 &&
               EVP_CIPHER_CTX_ctrl(cipher, EVP_CTRL_AEAD_SET_TAG, TagSize, tag.data()) == 1 &&
               EVP_DecryptFinal_ex(cipher, tag.data(), &stored) == 1; // stores nothing
    }

private:
    PairContext Oaep(int (*initialize)(EVP_PKEY_CTX*)) const
    {
        PairContext context(EVP_PKEY_CTX_new_from_pkey(nullptr, pair.get(), nullptr));
        if (!context || initialize(context.get()) != 1 ||
            EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING) != 1 ||
            EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha256()) != 1)
            return nullptr;
        return context;
    }

    Pair const pair;
    std::array<Byte, KeySize> key{};
};

} // namespace

std::unique_ptr<Keys> MakeKeys()
{
    auto keys = std::make_unique<OpenSslKeys>();
    return keys->Complete() ? std::move(keys) : nullptr;
}

void Wipe(void* memory, std::size_t size) { OPENSSL_cleanse(memory, size); }

} // namespace Sample
