#pragma once

#include <memory>
#include <string>

#include "HxSSOServicesExport.h"
#include "plugin/PluginTypes.h"

namespace Json {
class Value;
}

namespace Halvorix::WebServices {
class NetworkCookie;
class NetworkCookieJar;
class OAuth2Token;
class OAuth2TokenSpec;
} // namespace Halvorix::WebServices

/// The value classes as JSON, in both directions, for trusted callers.
///
/// Documents are UTF-8, on Windows except for characters above U+FFFF
/// (docs/boundary-documents.md). The text writers replace the target by a styled
/// document; the text readers take a terminated text, tolerate comments and
/// ignore what follows the first value. A null pointer, an empty text, a text
/// that is not valid JSON and the document `null` read as false.
///
/// Nothing is kept and no lock is taken: any thread may call, with arguments that
/// no other thread changes. A document of wrong types lets an exception of jsoncpp
/// reach the caller, malformed base64 a boost::archive::iterators::dataflow_exception
/// or a std::out_of_range (all of them std::exception). What was read before the
/// exception stays stored.
/// None of these functions needs a plugin.
class HXSSO_API SSOServicesPrivate {
public:
    /// Sets "type", "scope" and "legacy" in `json`, other members stay. True.
    static bool OAuth2TokenSpecToJson(Halvorix::WebServices::OAuth2TokenSpec const& spec,
                                      Json::Value& json);
    /// Replaces `text` by the spec's document. True.
    static bool OAuth2TokenSpecToJson(Halvorix::WebServices::OAuth2TokenSpec const& spec,
                                      std::string& text);
    /// Missing keys read as type 0, empty scope, not legacy. The scope is taken
    /// as it stands. False for a null value, with the spec unchanged.
    static bool JsonToOAuth2TokenSpec(Json::Value const& json,
                                      Halvorix::WebServices::OAuth2TokenSpec& spec);
    /// The same from a text.
    static bool JsonToOAuth2TokenSpec(char const* text,
                                      Halvorix::WebServices::OAuth2TokenSpec& spec);

    /// Sets "OAuth2AccessToken", in clear, and "OAuth2TokenSpec". True.
    static bool OAuth2TokenToJson(Halvorix::WebServices::OAuth2Token const& token,
                                  Json::Value& json);
    /// The same into a text.
    static bool OAuth2TokenToJson(Halvorix::WebServices::OAuth2Token const& token,
                                  std::string& text);
    /// With a cryptor the token goes encrypted, as base64, into
    /// "EncryptedOAuth2AccessToken" in place of the clear text. The spec's type
    /// chooses: the default type the RSA pair, any other the buffer pair. False
    /// if the cryptor fails, with `json` unchanged.
    static bool OAuth2TokenToJson(Halvorix::WebServices::OAuth2Token const& token,
                                  Json::Value& json,
                                  std::shared_ptr<Halvorix::WebServices::IRsaCryptor> cryptor);
    /// The same into a text, which a failure leaves empty.
    static bool OAuth2TokenToJson(Halvorix::WebServices::OAuth2Token const& token,
                                  std::string& text,
                                  std::shared_ptr<Halvorix::WebServices::IRsaCryptor> cryptor);
    /// Reads spec and clear text. False for a null value and with no clear text;
    /// the spec may have been replaced by then.
    static bool JsonToOAuth2Token(Json::Value const& json,
                                  Halvorix::WebServices::OAuth2Token& token);
    /// The same from a text.
    static bool JsonToOAuth2Token(char const* text, Halvorix::WebServices::OAuth2Token& token);
    /// A clear text wins; without one the encrypted text is decrypted.
    /// Malformed base64 throws in any case.
    static bool JsonToOAuth2Token(Json::Value const& json,
                                  Halvorix::WebServices::OAuth2Token& token,
                                  std::shared_ptr<Halvorix::WebServices::IRsaCryptor> cryptor);
    /// The same from a text.
    static bool JsonToOAuth2Token(char const* text, Halvorix::WebServices::OAuth2Token& token,
                                  std::shared_ptr<Halvorix::WebServices::IRsaCryptor> cryptor);

    /// Stores text and spec in a token as they stand: the one direct way to fill
    /// one.
    static void Initialize(Halvorix::WebServices::OAuth2Token& token, std::wstring const& text,
                           Halvorix::WebServices::OAuth2TokenSpec const& spec);

    /// Replaces `text` by the cookie's document. True.
    static bool NetworkCookieToJson(Halvorix::WebServices::NetworkCookie const& cookie,
                                    std::string& text);
    /// Replaces all fields, missing keys by empty, false and 0.
    static bool JsonToNetworkCookie(char const* text, Halvorix::WebServices::NetworkCookie& cookie);
    /// Replaces `text` by the jar's document. True.
    static bool NetworkCookieJarToJson(Halvorix::WebServices::NetworkCookieJar const& jar,
                                       std::string& text);
    /// Sets "Cookies" in `json`, other members stay. True.
    static bool NetworkCookieJarToJson(Halvorix::WebServices::NetworkCookieJar const& jar,
                                       Json::Value& json);
    /// Replaces the jar's cookies. False leaves them; an exception leaves those
    /// that were read before it.
    static bool JsonToNetworkCookieJar(char const* text,
                                       Halvorix::WebServices::NetworkCookieJar& jar);
    /// The same from a value; false for a null value.
    static bool JsonToNetworkCookieJar(Json::Value const& json,
                                       Halvorix::WebServices::NetworkCookieJar& jar);

private:
    static bool NetworkCookieToJson(Halvorix::WebServices::NetworkCookie const& cookie,
                                    Json::Value& json);
    static bool JsonToNetworkCookie(Json::Value const& json,
                                    Halvorix::WebServices::NetworkCookie& cookie);
};
