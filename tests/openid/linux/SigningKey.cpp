#include "openid/SigningKey.h"

#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <stdexcept>

namespace Rig {

namespace {

using Halvorix::OpenId::PublicKey;

struct Free {
    void operator()(EVP_PKEY* key) const { ::EVP_PKEY_free(key); }
    void operator()(EVP_MD_CTX* context) const { ::EVP_MD_CTX_free(context); }
    void operator()(ECDSA_SIG* signature) const { ::ECDSA_SIG_free(signature); }
    void operator()(BIGNUM* number) const { ::BN_free(number); }
};

void Check(bool done, char const* what)
{
    if (!done)
        throw std::runtime_error(std::string("OpenSSL: ") + what);
}

EVP_PKEY* MakeKey(SigningKey::Kind kind)
{
    switch (kind) {
    case SigningKey::Kind::Rsa:
        return EVP_RSA_gen(2048);
    case SigningKey::Kind::WeakRsa:
        return EVP_RSA_gen(1024);
    case SigningKey::Kind::P256:
        return EVP_EC_gen("P-256");
    case SigningKey::Kind::P384:
        return EVP_EC_gen("P-384");
    case SigningKey::Kind::P521:
        break;
    }
    return EVP_EC_gen("P-521");
}

std::string Bytes(BIGNUM const* number, std::size_t size)
{
    std::string bytes(size, '\0');
    Check(::BN_bn2binpad(number, reinterpret_cast<unsigned char*>(bytes.data()),
                         static_cast<int>(size)) >= 0,
          "a number");
    return bytes;
}

/// @param size 0 for as many bytes as it has
std::string Parameter(EVP_PKEY const* key, char const* name, std::size_t size)
{
    BIGNUM* number = nullptr;
    Check(::EVP_PKEY_get_bn_param(key, name, &number) == 1, name);
    std::unique_ptr<BIGNUM, Free> const owner(number);
    return Bytes(number, size != 0 ? size : static_cast<std::size_t>(BN_num_bytes(number)));
}

} // namespace

struct SigningKey::Key {
    std::unique_ptr<EVP_PKEY, Free> pair;
    Kind kind;

    bool IsRsa() const { return kind == Kind::Rsa || kind == Kind::WeakRsa; }
    std::size_t FieldSize() const
    {
        return (static_cast<std::size_t>(::EVP_PKEY_get_bits(pair.get())) + 7) / 8;
    }
    /// r and s, each as long as the field, in place of ASN.1.
    std::string PlainSignature(std::string const& der) const
    {
        auto const* at = reinterpret_cast<unsigned char const*>(der.data());
        std::unique_ptr<ECDSA_SIG, Free> const signature(
            ::d2i_ECDSA_SIG(nullptr, &at, static_cast<long>(der.size())));
        Check(signature != nullptr, "d2i_ECDSA_SIG");
        return Bytes(::ECDSA_SIG_get0_r(signature.get()), FieldSize()) +
               Bytes(::ECDSA_SIG_get0_s(signature.get()), FieldSize());
    }
};

SigningKey::SigningKey(Kind kind)
{
    auto made = std::make_shared<Key>();
    made->pair.reset(MakeKey(kind));
    made->kind = kind;
    Check(made->pair != nullptr, "no key");
    key = made;
}

std::string SigningKey::Sign(std::string const& algorithm, std::string_view data) const
{
    std::unique_ptr<EVP_MD_CTX, Free> const context(::EVP_MD_CTX_new());
    std::string const hash = "SHA" + algorithm.substr(2);
    EVP_PKEY_CTX* padding = nullptr;
    Check(::EVP_DigestSignInit_ex(context.get(), &padding, hash.c_str(), nullptr, nullptr,
                                  key->pair.get(), nullptr) == 1,
          "EVP_DigestSignInit_ex");
    if (algorithm[0] == 'P')
        Check(::EVP_PKEY_CTX_set_rsa_padding(padding, RSA_PKCS1_PSS_PADDING) == 1 &&
                  ::EVP_PKEY_CTX_set_rsa_pss_saltlen(padding, RSA_PSS_SALTLEN_DIGEST) == 1,
              "PSS");
    auto const* const bytes = reinterpret_cast<unsigned char const*>(data.data());
    std::size_t size = 0;
    Check(::EVP_DigestSign(context.get(), nullptr, &size, bytes, data.size()) == 1,
          "EVP_DigestSign");
    std::string signature(size, '\0');
    Check(::EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size,
                           bytes, data.size()) == 1,
          "EVP_DigestSign");
    signature.resize(size);
    return key->IsRsa() ? signature : key->PlainSignature(signature);
}

PublicKey SigningKey::Public() const
{
    PublicKey numbers;
    if (key->IsRsa()) {
        numbers.modulus = Parameter(key->pair.get(), OSSL_PKEY_PARAM_RSA_N, 0);
        numbers.exponent = Parameter(key->pair.get(), OSSL_PKEY_PARAM_RSA_E, 0);
        return numbers;
    }
    numbers.kind = PublicKey::Kind::EllipticCurve;
    numbers.curve = ::EVP_PKEY_get_bits(key->pair.get());
    numbers.x = Parameter(key->pair.get(), OSSL_PKEY_PARAM_EC_PUB_X, key->FieldSize());
    numbers.y = Parameter(key->pair.get(), OSSL_PKEY_PARAM_EC_PUB_Y, key->FieldSize());
    return numbers;
}

} // namespace Rig
