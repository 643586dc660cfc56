#pragma once

#include "HxSSOServicesExport.h"
#include "plugin/PluginTypes.h"

namespace Halvorix::WebServices {

/// Who an application is to the sign-on service: its consumer credentials,
/// product identifiers and the server it wants. Stored as given; serialised and
/// compared by the plugin (SSOClientPrivate).
///
/// Getters: a null buffer asks for the length; otherwise a text too long is cut
/// and the buffer is always terminated. `size` is the capacity in wchar_t units,
/// terminator included. The answer is the units stored, or, for a null buffer, the length, both
/// without terminator; 0 and nothing written for a buffer with a size below 1. Setters take a
/// terminated text, not null, and store a copy.
///
/// A value; copies are independent. Not to be shared between threads while one
/// of them writes. Memory exhaustion leaves by exception; nothing else throws.
class HXSSO_API WebServicesConfiguration {
public:
    /// Every text empty, server 0.
    WebServicesConfiguration();
    /// An independent copy.
    WebServicesConfiguration(WebServicesConfiguration const& other);
    /// An independent copy.
    WebServicesConfiguration& operator=(WebServicesConfiguration const& other);
    virtual ~WebServicesConfiguration();

    Server GetServer() const; ///< The service environment.
    /// Stores any number, unchecked.
    void SetServer(Server server);

    int GetConsumerKey(wchar_t* buffer, int size) const;     ///< The application's consumer key.
    void SetConsumerKey(wchar_t const* text);                ///< Stores a copy.
    int GetConsumerSecret(wchar_t* buffer, int size) const;  ///< The consumer secret.
    void SetConsumerSecret(wchar_t const* text);             ///< Stores a copy.
    int GetSerialNumber(wchar_t* buffer, int size) const;    ///< The product's serial number.
    void SetSerialNumber(wchar_t const* text);               ///< Stores a copy.
    int GetProductLineCode(wchar_t* buffer, int size) const; ///< The product line code.
    void SetProductLineCode(wchar_t const* text);            ///< Stores a copy.
    int GetCIPUserId(wchar_t* buffer, int size) const;       ///< Always the empty text.
    void SetCIPUserId(wchar_t const* text);                  ///< Does nothing; null is allowed.
    int GetUPIRelease(wchar_t* buffer, int size) const;      ///< Release part of the identifier.
    void SetUPIRelease(wchar_t const* text);                 ///< Stores a copy.
    int GetUPIMaster(wchar_t* buffer, int size) const;       ///< Master part of the identifier.
    void SetUPIMaster(wchar_t const* text);                  ///< Stores a copy.
    int GetUPIBuild(wchar_t* buffer, int size) const;        ///< Build part of the identifier.
    void SetUPIBuild(wchar_t const* text);                   ///< Stores a copy.
    int GetFeatureName(wchar_t* buffer, int size) const;     ///< The feature that uses the service.
    void SetFeatureName(wchar_t const* text);                ///< Stores a copy.
    int GetFeatureVersion(wchar_t* buffer, int size) const;  ///< Version of that feature.
    void SetFeatureVersion(wchar_t const* text);             ///< Stores a copy.
    int GetOAuth2ConsumerKey(wchar_t* buffer, int size) const;    ///< Consumer key for OAuth2.
    void SetOAuth2ConsumerKey(wchar_t const* text);               ///< Stores a copy.
    int GetOAuth2ConsumerSecret(wchar_t* buffer, int size) const; ///< Consumer secret for OAuth2.
    void SetOAuth2ConsumerSecret(wchar_t const* text);            ///< Stores a copy.
    /// Scope of the access token, exactly as it was given.
    int GetOAuth2AccessTokenScope(wchar_t* buffer, int size) const;
    void SetOAuth2AccessTokenScope(wchar_t const* text); ///< Stores a copy.

private:
    struct Record;
    Record* record;
};

} // namespace Halvorix::WebServices
