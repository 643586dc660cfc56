#include "openid/platform/Crypto.h"

#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>

#include <memory>
#include <stdexcept>

#include "openid/platform/KeyRules.h"

namespace Halvorix::OpenId {

namespace {

struct FreeByOpenSsl {
    void operator()(BIGNUM* number) const { ::BN_free(number); }
    void operator()(ECDSA_SIG* signature) const { ::ECDSA_SIG_free(signature); }
    void operator()(EVP_MD_CTX* context) const { ::EVP_MD_CTX_free(context); }
    void operator()(EVP_PKEY* key) const { ::EVP_PKEY_free(key); }
    void operator()(EVP_PKEY_CTX* context) const { ::EVP_PKEY_CTX_free(context); }
    void operator()(OSSL_PARAM* parameters) const { ::OSSL_PARAM_free(parameters); }
    void operator()(OSSL_PARAM_BLD* builder) const { ::OSSL_PARAM_BLD_free(builder); }
};
template <class Value>
using Own = std::unique_ptr<Value, FreeByOpenSsl>;

/// What fails here is nothing that the host's own code should find among its errors.
class OwnErrors {
public:
    OwnErrors() { ::ERR_set_mark(); }
    ~OwnErrors() { ::ERR_pop_to_mark(); }
    OwnErrors(OwnErrors const&) = delete;
    OwnErrors& operator=(OwnErrors const&) = delete;
};

unsigned char const* Bytes(std::string_view text)
{
    return reinterpret_cast<unsigned char const*>(text.data());
}

EVP_MD const* Hash(int bits)
{
    switch (bits) {
    case 256:
        return ::EVP_sha256();
    case 384:
        return ::EVP_sha384();
    case 512:
        return ::EVP_sha512();
    default:
        throw std::invalid_argument("SHA-2 has no " + std::to_string(bits) + " bits here");
    }
}

Own<BIGNUM> Number(std::string_view bytes)
{
    return Own<BIGNUM>(::BN_bin2bn(Bytes(bytes), static_cast<int>(bytes.size()), nullptr));
}

Own<EVP_PKEY> FromParameters(char const* algorithm, OSSL_PARAM_BLD* builder)
{
    Own<OSSL_PARAM> const parameters(::OSSL_PARAM_BLD_to_param(builder));
    Own<EVP_PKEY_CTX> const context(::EVP_PKEY_CTX_new_from_name(nullptr, algorithm, nullptr));
    EVP_PKEY* key = nullptr;
    if (parameters && context && ::EVP_PKEY_fromdata_init(context.get()) == 1)
        ::EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, parameters.get());
    return Own<EVP_PKEY>(key);
}

/// Null for a key that OpenSSL refuses.
Own<EVP_PKEY> RsaKey(PublicKey const& key)
{
    Own<BIGNUM> const modulus = Number(key.modulus);
    Own<BIGNUM> const exponent = Number(key.exponent);
    Own<OSSL_PARAM_BLD> const builder(::OSSL_PARAM_BLD_new());
    if (!builder ||
        ::OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_RSA_N, modulus.get()) != 1 ||
        ::OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_RSA_E, exponent.get()) != 1)
        return nullptr;
    return FromParameters("RSA", builder.get());
}

/// Null for a point off the curve.
Own<EVP_PKEY> CurveKey(PublicKey const& key)
{
    std::string const name = "P-" + std::to_string(key.curve);
    std::string const point = '\x04' + key.x + key.y;
    Own<OSSL_PARAM_BLD> const builder(::OSSL_PARAM_BLD_new());
    if (!builder ||
        ::OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, name.c_str(),
                                          0) != 1 ||
        ::OSSL_PARAM_BLD_push_octet_string(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, point.data(),
                                           point.size()) != 1)
        return nullptr;
    Own<EVP_PKEY> made = FromParameters("EC", builder.get());
    Own<EVP_PKEY_CTX> const context(
        made ? ::EVP_PKEY_CTX_new_from_pkey(nullptr, made.get(), nullptr) : nullptr);
    return context && ::EVP_PKEY_public_check(context.get()) == 1 ? std::move(made) : nullptr;
}

/// r and s one behind the other as OpenSSL takes them; empty if they are none.
std::string InAsn1(std::string_view signature)
{
    std::size_t const half = signature.size() / 2;
    Own<BIGNUM> r = Number(signature.substr(0, half));
    Own<BIGNUM> s = Number(signature.substr(half));
    Own<ECDSA_SIG> const both(::ECDSA_SIG_new());
    if (!both || ::ECDSA_SIG_set0(both.get(), r.get(), s.get()) != 1)
        return {};
    [[maybe_unused]] auto const* const ownedR = r.release();
    [[maybe_unused]] auto const* const ownedS = s.release();
    unsigned char* der = nullptr;
    int const size = ::i2d_ECDSA_SIG(both.get(), &der);
    if (size <= 0)
        return {};
    std::string text(reinterpret_cast<char*>(der), static_cast<std::size_t>(size));
    OPENSSL_free(der);
    return text;
}

bool SetPss(EVP_PKEY_CTX* context)
{
    return ::EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PSS_PADDING) == 1 &&
           ::EVP_PKEY_CTX_set_rsa_pss_saltlen(context, RSA_PSS_SALTLEN_DIGEST) == 1;
}

} // namespace

std::string RandomBytes(std::size_t size)
{
    OwnErrors const errors;
    std::string bytes(size, '\0');
    if (::RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(size)) != 1)
        throw std::runtime_error("OpenSSL has no random numbers");
    return bytes;
}

std::string Sha2(int bits, std::string_view data)
{
    OwnErrors const errors;
    std::string hash(static_cast<std::size_t>(bits) / 8, '\0');
    if (::EVP_Digest(data.data(), data.size(), reinterpret_cast<unsigned char*>(hash.data()),
                     nullptr, Hash(bits), nullptr) != 1)
        throw std::runtime_error("OpenSSL has no SHA-2");
    return hash;
}

bool VerifySignature(SignatureScheme scheme, int hashBits, PublicKey const& key,
                     std::string_view data, std::string_view signature)
{
    PublicKey const normal = Normal(key);
    if (!CanVerify(scheme, hashBits, normal, signature.size()))
        return false;
    OwnErrors const errors;
    bool const isCurve = scheme == SignatureScheme::Ecdsa;
    Own<EVP_PKEY> const made = isCurve ? CurveKey(normal) : RsaKey(normal);
    Own<EVP_MD_CTX> const context(::EVP_MD_CTX_new());
    EVP_PKEY_CTX* padding = nullptr;
    if (!made || !context ||
        ::EVP_DigestVerifyInit(context.get(), &padding, Hash(hashBits), nullptr, made.get()) != 1 ||
        (scheme == SignatureScheme::Pss && !SetPss(padding)))
        return false;
    std::string const plain = isCurve ? InAsn1(signature) : std::string(signature);
    return ::EVP_DigestVerify(context.get(), Bytes(plain), plain.size(), Bytes(data),
                              data.size()) == 1;
}

// The file's mode protects it.
std::string Protect(std::string_view clear, std::string&) { return std::string(clear); }

Unprotected Unprotect(std::string_view guarded)
{
    return {Unprotected::State::Clear, std::string(guarded), {}};
}

} // namespace Halvorix::OpenId
