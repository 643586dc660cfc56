#include "openid/SigningKey.h"

#include "openid/platform/KeyRules.h"
#include "openid/platform/windows/Windows.h"

#include <bcrypt.h>

#include <stdexcept>

namespace Rig {

namespace {

using Halvorix::OpenId::FieldSize;
using Halvorix::OpenId::PublicKey;
using Halvorix::OpenId::Sha2;

void Check(NTSTATUS status, char const* what)
{
    if (!BCRYPT_SUCCESS(status))
        throw std::runtime_error(std::string("CNG: ") + what + ": " + std::to_string(status));
}

struct Form {
    wchar_t const* algorithm;
    ULONG bits;
};

Form FormOf(SigningKey::Kind kind)
{
    switch (kind) {
    case SigningKey::Kind::Rsa:
        return {BCRYPT_RSA_ALGORITHM, 2048};
    case SigningKey::Kind::WeakRsa:
        return {BCRYPT_RSA_ALGORITHM, 1024};
    case SigningKey::Kind::P256:
        return {BCRYPT_ECDSA_P256_ALGORITHM, 256};
    case SigningKey::Kind::P384:
        return {BCRYPT_ECDSA_P384_ALGORITHM, 384};
    case SigningKey::Kind::P521:
        break;
    }
    return {BCRYPT_ECDSA_P521_ALGORITHM, 521};
}

wchar_t const* HashName(int bits)
{
    return bits == 256   ? BCRYPT_SHA256_ALGORITHM
           : bits == 384 ? BCRYPT_SHA384_ALGORITHM
                         : BCRYPT_SHA512_ALGORITHM;
}

} // namespace

struct SigningKey::Key {
    explicit Key(Kind aKind) : kind(aKind)
    {
        Form const form = FormOf(kind);
        Check(::BCryptOpenAlgorithmProvider(&algorithm, form.algorithm, nullptr, 0), "algorithm");
        Check(::BCryptGenerateKeyPair(algorithm, &pair, form.bits, 0), "new key");
        Check(::BCryptFinalizeKeyPair(pair, 0), "finished key");
    }
    /// A copy.
    Key(Key const& other, wchar_t const* form) : kind(other.kind)
    {
        std::string blob = other.Export(form);
        Check(::BCryptOpenAlgorithmProvider(&algorithm, FormOf(kind).algorithm, nullptr, 0),
              "algorithm");
        Check(::BCryptImportKeyPair(algorithm, nullptr, form, &pair,
                                    reinterpret_cast<PUCHAR>(blob.data()),
                                    static_cast<ULONG>(blob.size()), 0),
              "import");
    }
    ~Key()
    {
        if (pair != nullptr)
            ::BCryptDestroyKey(pair);
        if (algorithm != nullptr)
            ::BCryptCloseAlgorithmProvider(algorithm, 0);
    }
    Key(Key const&) = delete;
    Key& operator=(Key const&) = delete;

    bool IsRsa() const { return kind == Kind::Rsa || kind == Kind::WeakRsa; }
    std::string Export(wchar_t const* form) const
    {
        ULONG size = 0;
        Check(::BCryptExportKey(pair, nullptr, form, nullptr, 0, &size, 0), "export");
        std::string blob(size, '\0');
        Check(::BCryptExportKey(pair, nullptr, form, reinterpret_cast<PUCHAR>(blob.data()), size,
                                &size, 0),
              "export");
        blob.resize(size);
        return blob;
    }

    Kind const kind;
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    BCRYPT_KEY_HANDLE pair = nullptr;
};

SigningKey::SigningKey(Kind kind) : key(std::make_shared<Key>(kind)) {}

std::string SigningKey::Sign(std::string const& algorithm, std::string_view data) const
{
    int const bits = std::stoi(algorithm.substr(2));
    std::string hash = Sha2(bits, data);
    BCRYPT_PKCS1_PADDING_INFO pkcs1{HashName(bits)};
    BCRYPT_PSS_PADDING_INFO pss{HashName(bits), static_cast<ULONG>(bits / 8)};
    void* padding = nullptr;
    ULONG flags = 0;
    if (algorithm[0] == 'R') {
        padding = &pkcs1;
        flags = BCRYPT_PAD_PKCS1;
    } else if (algorithm[0] == 'P') {
        padding = &pss;
        flags = BCRYPT_PAD_PSS;
    }
    // On Wine 8 a handle of RSA that has signed with one padding refuses the other.
    auto const own = key->IsRsa() ? std::make_shared<Key>(*key, BCRYPT_RSAFULLPRIVATE_BLOB) : key;
    std::string signature(1024, '\0');
    ULONG size = 0;
    Check(::BCryptSignHash(own->pair, padding, reinterpret_cast<PUCHAR>(hash.data()),
                           static_cast<ULONG>(hash.size()),
                           reinterpret_cast<PUCHAR>(signature.data()),
                           static_cast<ULONG>(signature.size()), &size, flags),
          "signature");
    signature.resize(size);
    return signature;
}

PublicKey SigningKey::Public() const
{
    PublicKey numbers;
    if (key->IsRsa()) {
        std::string const blob = key->Export(BCRYPT_RSAPUBLIC_BLOB);
        auto const& header = *reinterpret_cast<BCRYPT_RSAKEY_BLOB const*>(blob.data());
        numbers.exponent = blob.substr(sizeof header, header.cbPublicExp);
        numbers.modulus = blob.substr(sizeof header + header.cbPublicExp, header.cbModulus);
        return numbers;
    }
    std::string const blob = key->Export(BCRYPT_ECCPUBLIC_BLOB);
    numbers.kind = PublicKey::Kind::EllipticCurve;
    numbers.curve = static_cast<int>(FormOf(key->kind).bits);
    std::size_t const size = FieldSize(numbers.curve);
    numbers.x = blob.substr(sizeof(BCRYPT_ECCKEY_BLOB), size);
    numbers.y = blob.substr(sizeof(BCRYPT_ECCKEY_BLOB) + size, size);
    return numbers;
}

} // namespace Rig
