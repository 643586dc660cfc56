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
    virtual void Reserved1() {} ///< Never called.
    virtual void Reserved2() {} ///< Never called.
    /// For tokens of the default type.
    virtual bool RsaEncrypt(unsigned char const* input, unsigned long long inputSize,
                            unsigned char* output, unsigned long long outputCapacity,
                            unsigned long long* outputLength) = 0;
    /// For tokens of the default type.
    virtual bool RsaDecrypt(unsigned char const* input, unsigned long long inputSize,
                            unsigned char* output, unsigned long long outputCapacity,
                            unsigned long long* outputLength) = 0;
    /// For tokens of any other type.
    virtual bool EncryptBuffer(unsigned char const* input, unsigned long long inputSize,
                               unsigned char* output, unsigned long long outputCapacity,
                               unsigned long long* outputLength) = 0;
    /// For tokens of any other type.
    virtual bool DecryptBuffer(unsigned char const* input, unsigned long long inputSize,
                               unsigned char* output, unsigned long long outputCapacity,
                               unsigned long long* outputLength) = 0;
};

} // namespace Halvorix::WebServices
