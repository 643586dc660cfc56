#pragma once

#include <plugin/IRsaCryptor.h>
#include "framework/plugins/Call.h"

namespace Rig {

/// An object of the plugin's that a host may hold to the end of the process; its
/// own end is written down.
class FreshCryptor : public Halvorix::WebServices::IRsaCryptor {
public:
    FreshCryptor() = default;
    ~FreshCryptor() override { Call("~IRsaCryptor"); }
    FreshCryptor(FreshCryptor const&) = delete;
    FreshCryptor& operator=(FreshCryptor const&) = delete;

    int GetMaxBlockSize() override { return Call("IRsaCryptor::GetMaxBlockSize").Answer(190); }
    bool RsaEncrypt(unsigned char const*, unsigned long long, unsigned char*, unsigned long long,
                    unsigned long long*) override
    {
        return Refuse("IRsaCryptor::RsaEncrypt");
    }
    bool RsaDecrypt(unsigned char const*, unsigned long long, unsigned char*, unsigned long long,
                    unsigned long long*) override
    {
        return Refuse("IRsaCryptor::RsaDecrypt");
    }
    bool EncryptBuffer(unsigned char const*, unsigned long long, unsigned char*, unsigned long long,
                       unsigned long long*) override
    {
        return Refuse("IRsaCryptor::EncryptBuffer");
    }
    bool DecryptBuffer(unsigned char const*, unsigned long long, unsigned char*, unsigned long long,
                       unsigned long long*) override
    {
        return Refuse("IRsaCryptor::DecryptBuffer");
    }

private:
    static bool Refuse(char const* operation) { return Call(operation).Answer(false); }
};

} // namespace Rig
