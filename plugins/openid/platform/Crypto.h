#pragma once

#include <string>
#include <string_view>

/// @file
/// Random numbers, hashes and signatures by the system (CNG) or OpenSSL. Any thread.

namespace Halvorix::OpenId {

/// `size` bytes fit for keys. Throws std::runtime_error if the system has none.
std::string RandomBytes(std::size_t size);

/// The SHA-2 hash of 256, 384 or 512 bits, as bytes.
std::string Sha2(int bits, std::string_view data);

/// A public key, its numbers as bytes, the highest first.
struct PublicKey {
    enum class Kind { Rsa, EllipticCurve };
    Kind kind = Kind::Rsa;
    std::string modulus, exponent; ///< RSA
    int curve = 0;                 ///< Bits of the NIST curve: 256, 384 or 521.
    std::string x, y;              ///< Of the point, each as long as the curve's field.
};

enum class SignatureScheme { Pkcs1, Pss, Ecdsa };

/// Whether `signature` (for ECDSA r and s, each as long as the curve's field) is the key's over
/// the data hashed with `hashBits`. PSS with a salt as long as the hash. False also for a key
/// that does not fit the scheme, for a point off the curve, and for RSA of fewer than 2048 or
/// more than 16384 bits.
bool VerifySignature(SignatureScheme scheme, int hashBits, PublicKey const& key,
                     std::string_view data, std::string_view signature);

/// What only this user on this machine can make clear again (DPAPI); the bytes as they are
/// where a file's mode protects them. Empty if the system refuses, with its words in `reason`.
std::string Protect(std::string_view clear, std::string& reason);

/// What the way back gave. The bytes may be a secret: their reader wipes them.
struct Unprotected {
    enum class State {
        Clear,
        Damaged, ///< Nobody can use them any more.
        Failed,  ///< They may be good: another user's, or the system lacks this one's keys for now.
    };
    State state = State::Clear;
    std::string bytes;
    std::string reason; ///< Of anything but Clear.
};
Unprotected Unprotect(std::string_view guarded);

} // namespace Halvorix::OpenId
