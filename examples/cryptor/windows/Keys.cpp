// AES by BCrypt. RSA by the older CryptoAPI, whose OAEP is the one with SHA-1,
// because BCrypt has no OAEP in Wine 8; on Windows alone, BCryptEncrypt with
// BCRYPT_PAD_OAEP and BCRYPT_SHA256_ALGORITHM takes its place.

#include "Keys.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include <windows.h>

#include <bcrypt.h>
#include <wincrypt.h>

namespace Sample {

namespace {

// BCrypt takes what it only reads through pointers to what it could write.
Byte* Read(Byte const* bytes) { return const_cast<Byte*>(bytes); }

bool RandomBytes(Byte* bytes, std::size_t size)
{
    return BCryptGenRandom(nullptr, bytes, static_cast<ULONG>(size),
                           BCRYPT_USE_SYSTEM_PREFERRED_RNG) == 0;
}

class WindowsKeys : public Keys {
public:
    WindowsKeys() = default;
    ~WindowsKeys() override
    {
        if (key != nullptr)
            BCryptDestroyKey(key);
        if (aes != nullptr)
            BCryptCloseAlgorithmProvider(aes, 0);
        if (pair != 0)
            CryptDestroyKey(pair);
        if (provider != 0)
            CryptReleaseContext(provider, 0);
    }
    WindowsKeys(WindowsKeys const&) = delete;
    WindowsKeys& operator=(WindowsKeys const&) = delete;

    bool Complete() { return CompletePair() && CompleteKey(); }

    bool RsaEncrypt(Byte const* text, std::size_t textSize, Byte* block) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        auto size = static_cast<DWORD>(textSize);
        std::copy_n(text, textSize, block);
        return CryptEncrypt(pair, 0, TRUE, CRYPT_OAEP, block, &size, BlockSize) != FALSE &&
               size == BlockSize;
    }
    bool RsaDecrypt(Byte const* block, Byte* text, std::size_t& textSize) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        auto size = static_cast<DWORD>(BlockSize);
        std::copy_n(block, BlockSize, text);
        bool const done = CryptDecrypt(pair, 0, TRUE, CRYPT_OAEP, text, &size) != FALSE;
        textSize = size;
        return done;
    }

    bool Seal(Byte const* text, std::size_t textSize, Byte* sealed) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        Byte* const ciphertext = sealed + NonceSize;
        auto const size = static_cast<ULONG>(textSize);
        ULONG stored = 0;
        auto mode = Mode(sealed, ciphertext + textSize);
        return RandomBytes(sealed, NonceSize) &&
               BCryptEncrypt(key, Read(text), size, &mode, nullptr, 0, ciphertext, size, &stored,
                             0) == 0;
    }
    bool Open(Byte const* sealed, Byte* text, std::size_t textSize) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        Byte const* const ciphertext = sealed + NonceSize;
        auto const size = static_cast<ULONG>(textSize);
        ULONG stored = 0;
        auto mode = Mode(Read(sealed), Read(ciphertext + textSize));
        return BCryptDecrypt(key, Read(ciphertext), size, &mode, nullptr, 0, text, size, &stored,
                             0) == 0;
    }

private:
    // With no key container: the pair is never stored.
    bool CompletePair()
    {
        return CryptAcquireContextW(&provider, nullptr, nullptr, PROV_RSA_AES,
                                    CRYPT_VERIFYCONTEXT) != FALSE &&
               CryptGenKey(provider, AT_KEYEXCHANGE, BlockSize * 8 << 16, &pair) != FALSE;
    }
    bool CompleteKey()
    {
        Byte bytes[KeySize];
        bool const done =
            RandomBytes(bytes, KeySize) &&
            BCryptOpenAlgorithmProvider(&aes, BCRYPT_AES_ALGORITHM, nullptr, 0) == 0 &&
            BCryptSetProperty(aes, BCRYPT_CHAINING_MODE,
                              Read(reinterpret_cast<Byte const*>(BCRYPT_CHAIN_MODE_GCM)),
                              sizeof BCRYPT_CHAIN_MODE_GCM, 0) == 0 &&
            BCryptGenerateSymmetricKey(aes, &key, nullptr, 0, bytes, KeySize, 0) == 0;
        Wipe(bytes, KeySize);
        return done;
    }

    static BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO Mode(Byte* nonce, Byte* tag)
    {
        BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO mode;
        BCRYPT_INIT_AUTH_MODE_INFO(mode);
        mode.pbNonce = nonce;
        mode.cbNonce = NonceSize;
        mode.pbTag = tag;
        mode.cbTag = TagSize;
        return mode;
    }

    std::mutex mutex; // one key, one thread: the system leaves it to its callers
    HCRYPTPROV provider = 0;
    HCRYPTKEY pair = 0;
    BCRYPT_ALG_HANDLE aes = nullptr;
    BCRYPT_KEY_HANDLE key = nullptr;
};

} // namespace

std::unique_ptr<Keys> MakeKeys()
{
    auto keys = std::make_unique<WindowsKeys>();
    return keys->Complete() ? std::move(keys) : nullptr;
}

void Wipe(void* memory, std::size_t size) { SecureZeroMemory(memory, size); }

} // namespace Sample
