#pragma once

namespace Halvorix::WebServices {

/// Encrypts and decrypts token texts for the JSON functions of
/// SSOServicesPrivate. Implemented by the host or by the plugin.
///
/// Input is counted, not terminated. An operation writes at most
/// `outputCapacity` bytes, stores their number in `*outputLength` and returns
/// true, or returns false.
class IRsaCryptor {
public:
    virtual ~IRsaCryptor() = default;
    /// Size in bytes, one less than the capacity that the RSA pair is given.
    virtual int GetMaxBlockSize() = 0;
    virtual void Reserved1() {}
    virtual void Reserved2() {}
    virtual bool RsaEncrypt(unsigned char const* input, unsigned long long inputSize,
                            unsigned char* output, unsigned long long outputCapacity,
                            unsigned long long* outputLength) = 0;
    virtual bool RsaDecrypt(unsigned char const* input, unsigned long long inputSize,
                            unsigned char* output, unsigned long long outputCapacity,
                            unsigned long long* outputLength) = 0;
    virtual bool EncryptBuffer(unsigned char const* input, unsigned long long inputSize,
                               unsigned char* output, unsigned long long outputCapacity,
                               unsigned long long* outputLength) = 0;
    virtual bool DecryptBuffer(unsigned char const* input, unsigned long long inputSize,
                               unsigned char* output, unsigned long long outputCapacity,
                               unsigned long long* outputLength) = 0;
};

} // namespace Halvorix::WebServices
