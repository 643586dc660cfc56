#pragma once

#include <memory>

#include <plugin/IRsaCryptor.h>

namespace Sample {

class Keys;

/// Encrypts token texts with two keys that are made at random with the object
/// and end with it: what it encrypts no other object and no later process reads.
/// To be copied and given keys that last.
///
/// RSA pair: RSA-OAEP with 2048 bits, for texts of up to 190 bytes. On Windows with
///   SHA-1, elsewhere with SHA-256: windows/Keys.cpp tells why.
/// Buffer pair: AES-256-GCM. A document is nonce (12 bytes), ciphertext, tag (16
///   bytes), so it needs 28 bytes more than the text; the JSON functions offer
///   twice the text, and a text below 28 bytes is refused.
///
/// An operation answers false, with nothing stored in the length and nothing of the
/// text left in the output, for a text that does not fit, for bytes that this
/// object has not encrypted, and if the system could not make the keys. None
/// throws. Any thread, several at once.
///
/// Whoever gave it to a plugin takes it back before the process ends: a plugin
/// lives on behind the end of main, where its code and the system's may not.
class SampleCryptor : public Halvorix::WebServices::IRsaCryptor {
public:
    SampleCryptor();
    ~SampleCryptor() override;
    SampleCryptor(SampleCryptor const&) = delete;
    SampleCryptor& operator=(SampleCryptor const&) = delete;

    int GetMaxBlockSize() override;
    /// Needs room for 256 bytes.
    bool RsaEncrypt(unsigned char const* input, unsigned long long inputSize, unsigned char* output,
                    unsigned long long outputCapacity, unsigned long long* outputLength) override;
    /// Needs room for 256 bytes, however short the text.
    bool RsaDecrypt(unsigned char const* input, unsigned long long inputSize, unsigned char* output,
                    unsigned long long outputCapacity, unsigned long long* outputLength) override;
    bool EncryptBuffer(unsigned char const* input, unsigned long long inputSize,
                       unsigned char* output, unsigned long long outputCapacity,
                       unsigned long long* outputLength) override;
    bool DecryptBuffer(unsigned char const* input, unsigned long long inputSize,
                       unsigned char* output, unsigned long long outputCapacity,
                       unsigned long long* outputLength) override;

private:
    std::unique_ptr<Keys> const keys;
};

} // namespace Sample
