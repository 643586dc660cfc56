#pragma once

#include "HxSSOServicesExport.h"
#include "plugin/PluginTypes.h"

class SSOServicesPrivate;

namespace Halvorix::WebServices {

/// Which token is meant: a type and a scope.
///
/// A value; copies are independent. Not to be shared between threads while one
/// of them writes, and SetScope writes through a constant reference too.
/// Memory exhaustion leaves by exception; nothing else throws.
class HXSSO_API OAuth2TokenSpec {
public:
    /// The default type and an empty scope.
    OAuth2TokenSpec();
    /// @param type any number, unchecked
    /// @param scope terminated text, not null, stored in normal form (SetScope)
    OAuth2TokenSpec(OAuth2TokenType type, wchar_t const* scope);
    OAuth2TokenSpec(OAuth2TokenSpec const& other);            ///< An independent copy.
    OAuth2TokenSpec& operator=(OAuth2TokenSpec const& other); ///< An independent copy.
    ~OAuth2TokenSpec();

    /// Same legacy mark, same type, and scopes that differ at most in case.
    bool operator==(OAuth2TokenSpec const& other) const;
    /// The complement of equality.
    bool operator!=(OAuth2TokenSpec const& other) const;

    OAuth2TokenType GetType() const; ///< The type as it was stored.
    /// Stores any number, unchecked. Always true.
    bool SetType(OAuth2TokenType type);
    /// The scope. A null buffer asks for the length; otherwise a scope too long
    /// is cut. The buffer is always terminated if it has room for a unit.
    /// @param buffer the caller's, or null
    /// @param size capacity in wchar_t units, terminator included
    /// @return units stored, or, for a null buffer, the length, both without terminator;
    ///     0 and nothing written for a buffer with a size below 1
    int GetScope(wchar_t* buffer, int size) const;
    /// Stores the scope in normal form: words separated by blanks, trimmed, in
    /// ascending order without regard to case, joined by one blank. Always true.
    /// Const, because the scope is stored through a pointer.
    /// @param scope terminated text, not null
    bool SetScope(wchar_t const* scope) const;

private:
    friend class ::SSOServicesPrivate;
    struct Record;
    Record* record;
};

/// A token's text with the spec it was issued for.
///
/// A value; copies are independent. Not to be shared between threads while one
/// of them writes. Memory exhaustion leaves by exception; nothing else throws.
class HXSSO_API OAuth2Token {
public:
    /// An empty text, which is not a valid token, and a default spec.
    OAuth2Token();
    OAuth2Token(OAuth2Token const& other);            ///< An independent copy.
    OAuth2Token& operator=(OAuth2Token const& other); ///< An independent copy.
    ~OAuth2Token();

    /// Equal texts, case included, and equal specs.
    bool operator==(OAuth2Token const& other) const;
    /// The complement of equality.
    bool operator!=(OAuth2Token const& other) const;

    /// Whether there is a text. Says nothing about expiry.
    bool IsValid() const;
    /// Length of the text in wchar_t units, without terminator.
    int GetTokenSize() const;
    /// The terminated text, never null, owned by the object and valid until it
    /// is assigned to or destroyed.
    wchar_t const* GetToken() const;
    /// The text, whole or not at all: if it does not fit, the buffer becomes the
    /// empty text and the answer is 0. A null buffer asks for the length.
    /// @param buffer the caller's, or null
    /// @param size capacity in wchar_t units, terminator included
    /// @return units stored, or, for a null buffer, the length, both without terminator;
    ///     0 and nothing written for a buffer with a size below 1
    int GetToken(wchar_t* buffer, int size) const;
    /// A copy of the spec.
    OAuth2TokenSpec GetSpec() const;

private:
    friend class ::SSOServicesPrivate;
    struct Record;
    Record* record;
};

} // namespace Halvorix::WebServices
