#pragma once

#include <cstddef>
#include <memory>

namespace Sample {

using Byte = unsigned char;

constexpr unsigned int BlockSize = 256;              ///< Of RSA with 2048 bits.
constexpr unsigned int RsaTextSize = BlockSize - 66; ///< What OAEP with SHA-256 leaves of it.
constexpr unsigned int KeySize = 32;
constexpr unsigned int NonceSize = 12;
constexpr unsigned int TagSize = 16;

/// An RSA pair and an AES key, with what the system does with them: a folder for
/// each system. The caller has checked all sizes, which fit an int; an operation
/// that fails may leave anything in its output.
class Keys {
public:
    virtual ~Keys() = default;
    /// @param block room for BlockSize bytes, which are filled
    virtual bool RsaEncrypt(Byte const* text, std::size_t textSize, Byte* block) = 0;
    /// @param text room for BlockSize bytes
    virtual bool RsaDecrypt(Byte const* block, Byte* text, std::size_t& textSize) = 0;
    /// @param sealed room for nonce, text and tag, which are filled
    virtual bool Seal(Byte const* text, std::size_t textSize, Byte* sealed) = 0;
    /// False unless every byte is as Seal left it.
    virtual bool Open(Byte const* sealed, Byte* text, std::size_t textSize) = 0;
};

/// New keys; null if the system makes none.
std::unique_ptr<Keys> MakeKeys();

/// Overwrites a secret, also where the compiler sees that nobody reads it again.
void Wipe(void* memory, std::size_t size);

} // namespace Sample
