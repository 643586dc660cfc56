#include "openid/platform/Crypto.h"

#include "openid/platform/KeyRules.h"
#include "openid/platform/SecretBytes.h"
#include "openid/platform/windows/Windows.h"

#include <bcrypt.h>
#include <dpapi.h>

#include <stdexcept>

namespace Halvorix::OpenId {

namespace {

class Algorithm {
public:
    explicit Algorithm(wchar_t const* name)
    {
        if (!BCRYPT_SUCCESS(::BCryptOpenAlgorithmProvider(&handle, name, nullptr, 0)))
            handle = nullptr;
    }
    ~Algorithm()
    {
        if (handle != nullptr)
            ::BCryptCloseAlgorithmProvider(handle, 0);
    }
    Algorithm(Algorithm const&) = delete;
    Algorithm& operator=(Algorithm const&) = delete;

    BCRYPT_ALG_HANDLE Get() const { return handle; }

private:
    BCRYPT_ALG_HANDLE handle = nullptr;
};

/// A public key in CNG's own form. Without a handle if the system refuses it, as it does for a
/// point off the curve.
class ImportedKey {
public:
    ImportedKey(wchar_t const* algorithmName, wchar_t const* form, std::string blob)
        : algorithm(algorithmName)
    {
        if (algorithm.Get() == nullptr ||
            !BCRYPT_SUCCESS(::BCryptImportKeyPair(algorithm.Get(), nullptr, form, &handle,
                                                  reinterpret_cast<PUCHAR>(blob.data()),
                                                  static_cast<ULONG>(blob.size()), 0)))
            handle = nullptr;
    }
    ~ImportedKey()
    {
        if (handle != nullptr)
            ::BCryptDestroyKey(handle);
    }
    ImportedKey(ImportedKey const&) = delete;
    ImportedKey& operator=(ImportedKey const&) = delete;

    BCRYPT_KEY_HANDLE Get() const { return handle; }

private:
    Algorithm const algorithm;
    BCRYPT_KEY_HANDLE handle = nullptr;
};

wchar_t const* HashName(int bits)
{
    switch (bits) {
    case 256:
        return BCRYPT_SHA256_ALGORITHM;
    case 384:
        return BCRYPT_SHA384_ALGORITHM;
    case 512:
        return BCRYPT_SHA512_ALGORITHM;
    default:
        throw std::invalid_argument("SHA-2 has no " + std::to_string(bits) + " bits here");
    }
}

template <class Header>
std::string BlobOf(Header const& header, std::string const& numbers)
{
    return std::string(reinterpret_cast<char const*>(&header), sizeof header) + numbers;
}

std::string RsaBlob(PublicKey const& key)
{
    BCRYPT_RSAKEY_BLOB header{};
    header.Magic = BCRYPT_RSAPUBLIC_MAGIC;
    header.BitLength = static_cast<ULONG>(key.modulus.size() * 8);
    header.cbPublicExp = static_cast<ULONG>(key.exponent.size());
    header.cbModulus = static_cast<ULONG>(key.modulus.size());
    return BlobOf(header, key.exponent + key.modulus);
}

struct Curve {
    wchar_t const* algorithm;
    ULONG magic;
};

Curve CurveOf(int bits)
{
    switch (bits) {
    case 256:
        return {BCRYPT_ECDSA_P256_ALGORITHM, BCRYPT_ECDSA_PUBLIC_P256_MAGIC};
    case 384:
        return {BCRYPT_ECDSA_P384_ALGORITHM, BCRYPT_ECDSA_PUBLIC_P384_MAGIC};
    default:
        return {BCRYPT_ECDSA_P521_ALGORITHM, BCRYPT_ECDSA_PUBLIC_P521_MAGIC};
    }
}

std::string CurveBlob(PublicKey const& key)
{
    BCRYPT_ECCKEY_BLOB header{};
    header.dwMagic = CurveOf(key.curve).magic;
    header.cbKey = static_cast<ULONG>(key.x.size());
    return BlobOf(header, key.x + key.y);
}

bool Verify(ImportedKey const& key, void* padding, std::string hash, std::string signature,
            ULONG flags)
{
    return key.Get() != nullptr &&
           BCRYPT_SUCCESS(::BCryptVerifySignature(
               key.Get(), padding, reinterpret_cast<PUCHAR>(hash.data()),
               static_cast<ULONG>(hash.size()), reinterpret_cast<PUCHAR>(signature.data()),
               static_cast<ULONG>(signature.size()), flags));
}

/// A copy that DPAPI does not write to, though its type says so.
DATA_BLOB BlobOf(std::string& bytes)
{
    return {static_cast<DWORD>(bytes.size()), reinterpret_cast<BYTE*>(bytes.data())};
}

/// What DPAPI has made; its own memory is wiped.
std::string Taken(DATA_BLOB const& made)
{
    std::string const bytes(reinterpret_cast<char*>(made.pbData), made.cbData);
    Wipe(made.pbData, made.cbData);
    ::LocalFree(made.pbData);
    return bytes;
}

/// Whether it begins as what DPAPI makes: its version, a GUID, the version of the key.
bool IsProtected(std::string_view bytes)
{
    constexpr std::string_view version("\1\0\0\0", 4);
    return bytes.size() >= 24 && bytes.substr(0, version.size()) == version;
}

} // namespace

std::string RandomBytes(std::size_t size)
{
    std::string bytes(size, '\0');
    if (!BCRYPT_SUCCESS(::BCryptGenRandom(nullptr, reinterpret_cast<PUCHAR>(bytes.data()),
                                          static_cast<ULONG>(size),
                                          BCRYPT_USE_SYSTEM_PREFERRED_RNG)))
        throw std::runtime_error("the system has no random numbers");
    return bytes;
}

std::string Sha2(int bits, std::string_view data)
{
    Algorithm const algorithm(HashName(bits));
    std::string hash(static_cast<std::size_t>(bits) / 8, '\0');
    // Not written to, though its type says so.
    auto* const input = reinterpret_cast<PUCHAR>(const_cast<char*>(data.data()));
    if (algorithm.Get() == nullptr ||
        !BCRYPT_SUCCESS(
            ::BCryptHash(algorithm.Get(), nullptr, 0, input, static_cast<ULONG>(data.size()),
                         reinterpret_cast<PUCHAR>(hash.data()), static_cast<ULONG>(hash.size()))))
        throw std::runtime_error("the system has no SHA-2");
    return hash;
}

bool VerifySignature(SignatureScheme scheme, int hashBits, PublicKey const& key,
                     std::string_view data, std::string_view signature)
{
    PublicKey const normal = Normal(key);
    if (!CanVerify(scheme, hashBits, normal, signature.size()))
        return false;
    std::string const hash = Sha2(hashBits, data);
    std::string const bytes(signature);
    if (scheme == SignatureScheme::Ecdsa) {
        ImportedKey const imported(CurveOf(normal.curve).algorithm, BCRYPT_ECCPUBLIC_BLOB,
                                   CurveBlob(normal));
        return Verify(imported, nullptr, hash, bytes, 0);
    }
    ImportedKey const imported(BCRYPT_RSA_ALGORITHM, BCRYPT_RSAPUBLIC_BLOB, RsaBlob(normal));
    if (scheme == SignatureScheme::Pss) {
        BCRYPT_PSS_PADDING_INFO padding{HashName(hashBits), static_cast<ULONG>(hashBits / 8)};
        return Verify(imported, &padding, hash, bytes, BCRYPT_PAD_PSS);
    }
    BCRYPT_PKCS1_PADDING_INFO padding{HashName(hashBits)};
    return Verify(imported, &padding, hash, bytes, BCRYPT_PAD_PKCS1);
}

std::string Protect(std::string_view clear, std::string& reason)
{
    std::string copy(clear);
    WipeAtEnd const wiping(copy);
    DATA_BLOB input = BlobOf(copy);
    DATA_BLOB output{};
    if (::CryptProtectData(&input, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN,
                           &output))
        return Taken(output);
    reason = ErrorText(::GetLastError());
    return {};
}

Unprotected Unprotect(std::string_view guarded)
{
    using State = Unprotected::State;
    std::string copy(guarded);
    DATA_BLOB input = BlobOf(copy);
    DATA_BLOB output{};
    if (::CryptUnprotectData(&input, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN,
                             &output))
        return {State::Clear, Taken(output), {}};
    DWORD const error = ::GetLastError();
    // In a logon without a password, or of another user, the error is one of keys or files. What
    // DPAPI did not make has more errors than one.
    bool const isDamaged = error == ERROR_INVALID_DATA || !IsProtected(guarded);
    return {isDamaged ? State::Damaged : State::Failed, {}, ErrorText(error)};
}

} // namespace Halvorix::OpenId
