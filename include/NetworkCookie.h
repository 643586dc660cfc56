#pragma once

#include "HxSSOServicesExport.h"

class SSOServicesPrivate;

namespace Halvorix::WebServices {

/// One HTTP cookie, held and passed on without being interpreted.
///
/// A value; copies are independent. Not to be shared between threads while one
/// of them writes. Memory exhaustion leaves by exception; nothing else throws.
class HXSSO_API NetworkCookie {
public:
    /// Empty texts, flags false, expiry 0.
    NetworkCookie();
    NetworkCookie(NetworkCookie const& other);            ///< An independent copy.
    NetworkCookie& operator=(NetworkCookie const& other); ///< An independent copy.
    ~NetworkCookie();

    /// Name in bytes, in the encoding it was set in. A null buffer asks for the
    /// count; otherwise a name too long is cut. A terminator is stored only if there is room
    /// after the bytes; if the answer equals `size`, there is no terminator. An empty
    /// name stores a terminator.
    /// @param buffer the caller's, or null
    /// @param size capacity in bytes, not negative
    /// @return bytes stored, or, for a null buffer, their count
    int GetName(char* buffer, int size) const;
    /// @param name terminated, not null
    void SetName(char const* name);
    /// Value in bytes, by the rules of GetName.
    int GetValue(char* buffer, int size) const;
    /// @param value terminated, not null
    void SetValue(char const* value);
    /// Domain attribute. A null buffer asks for the length; otherwise a text too
    /// long is cut, and the buffer is always terminated.
    /// @param buffer the caller's, or null
    /// @param size capacity in wchar_t units, terminator included
    /// @return units stored, or, for a null buffer, the length, both without terminator;
    ///     0 and nothing written for a buffer with a size below 1
    int GetDomain(wchar_t* buffer, int size) const;
    /// @param domain terminated; null means empty
    void SetDomain(wchar_t const* domain);
    /// Path attribute, by the rules of GetDomain.
    int GetPath(wchar_t* buffer, int size) const;
    /// @param path terminated; null means empty
    void SetPath(wchar_t const* path);
    bool IsSecure() const;           ///< The secure flag.
    void SetSecure(bool secure);     ///< Sets the secure flag.
    bool IsHttpOnly() const;         ///< The HTTP-only flag.
    void SetHttpOnly(bool httpOnly); ///< Sets the HTTP-only flag.
    /// The expiry date, a plain number whose unit is the plugin's.
    long long GetExpiryDate() const;
    /// Stores any number.
    void SetExpiryDate(long long expiryDate);

private:
    friend class ::SSOServicesPrivate;
    struct Record;
    Record* record;
};

/// Cookies in the order in which they were added. It owns them and cannot be
/// copied. Threads and exceptions as NetworkCookie.
class HXSSO_API NetworkCookieJar {
public:
    NetworkCookieJar();
    ~NetworkCookieJar();
    NetworkCookieJar(NetworkCookieJar const&) = delete;
    NetworkCookieJar& operator=(NetworkCookieJar const&) = delete;

    /// Appends a copy; nothing is replaced. Always true.
    bool AddCookie(NetworkCookie const& cookie);
    int GetCookieCount() const; ///< Number of cookies.
    /// A copy of the cookie at `index`, counted from 0; a default cookie for an
    /// index outside the jar.
    NetworkCookie GetCookie(int index) const;
    void DeleteAll(); ///< Leaves the jar empty.

private:
    friend class ::SSOServicesPrivate;
    struct Record;
    Record* record;
};

} // namespace Halvorix::WebServices
