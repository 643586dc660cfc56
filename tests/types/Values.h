#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <json/reader.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include "support/GetterTexts.h"

// Values of the public types: how tests make them, and all that can be asked of them.
namespace HxSSOTest {

using Halvorix::WebServices::NetworkCookie;
using Halvorix::WebServices::NetworkCookieJar;
using Halvorix::WebServices::OAuth2Token;
using Halvorix::WebServices::OAuth2TokenSpec;
using Halvorix::WebServices::OAuth2TokenType;

inline Json::Value Value(std::string const& text)
{
    Json::Value value;
    EXPECT_TRUE(Json::Reader().parse("[" + text + "]", value)) << text;
    return value[0];
}

template <class Comparable>
void ExpectEqual(Comparable const& a, Comparable const& b)
{
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(b == a);
    EXPECT_FALSE(a != b);
    EXPECT_FALSE(b != a);
}

template <class Comparable>
void ExpectUnequal(Comparable const& a, Comparable const& b)
{
    EXPECT_FALSE(a == b);
    EXPECT_FALSE(b == a);
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(b != a);
}

inline OAuth2TokenType Type(std::int32_t number) { return static_cast<OAuth2TokenType>(number); }

/// The only way to a legacy mark and to a scope that is not in normal form.
inline OAuth2TokenSpec SpecOf(char const* json)
{
    OAuth2TokenSpec spec;
    EXPECT_TRUE(SSOServicesPrivate::JsonToOAuth2TokenSpec(json, spec));
    return spec;
}

inline std::wstring Scope(OAuth2TokenSpec const& spec)
{
    return GetterText(spec, &OAuth2TokenSpec::GetScope);
}

inline OAuth2Token Token(std::wstring const& text, OAuth2TokenSpec const& spec = OAuth2TokenSpec())
{
    OAuth2Token token;
    SSOServicesPrivate::Initialize(token, text, spec);
    return token;
}

inline std::wstring Text(OAuth2Token const& token)
{
    return std::wstring(token.GetToken(), static_cast<std::size_t>(token.GetTokenSize()));
}

/// What a cookie holds; by itself what a new one does.
struct CookieFields {
    std::string name;
    std::string value;
    std::wstring domain;
    std::wstring path;
    bool secure = false;
    bool httpOnly = false;
    long long expiryDate = 0;
};

inline NetworkCookie Cookie(CookieFields const& fields)
{
    NetworkCookie cookie;
    cookie.SetName(fields.name.c_str());
    cookie.SetValue(fields.value.c_str());
    cookie.SetDomain(fields.domain.c_str());
    cookie.SetPath(fields.path.c_str());
    cookie.SetSecure(fields.secure);
    cookie.SetHttpOnly(fields.httpOnly);
    cookie.SetExpiryDate(fields.expiryDate);
    return cookie;
}

inline NetworkCookie Named(std::string const& name)
{
    CookieFields fields;
    fields.name = name;
    return Cookie(fields);
}

/// Counted, so that zero bytes count too.
inline std::string Bytes(NetworkCookie const& cookie,
                         int (NetworkCookie::*getter)(char*, int) const)
{
    std::string bytes(static_cast<std::size_t>((cookie.*getter)(nullptr, 0)), '\0');
    if (!bytes.empty())
        (cookie.*getter)(bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
}

inline std::string Name(NetworkCookie const& cookie)
{
    return Bytes(cookie, &NetworkCookie::GetName);
}

inline void ExpectFields(NetworkCookie const& cookie, CookieFields const& fields)
{
    EXPECT_EQ(Name(cookie), fields.name);
    EXPECT_EQ(Bytes(cookie, &NetworkCookie::GetValue), fields.value);
    EXPECT_EQ(GetterText(cookie, &NetworkCookie::GetDomain), fields.domain);
    EXPECT_EQ(GetterText(cookie, &NetworkCookie::GetPath), fields.path);
    // Behind a zero, too.
    EXPECT_EQ(cookie.GetDomain(nullptr, 0), static_cast<int>(fields.domain.size()));
    EXPECT_EQ(cookie.GetPath(nullptr, 0), static_cast<int>(fields.path.size()));
    EXPECT_EQ(cookie.IsSecure(), fields.secure);
    EXPECT_EQ(cookie.IsHttpOnly(), fields.httpOnly);
    EXPECT_EQ(cookie.GetExpiryDate(), fields.expiryDate);
}

} // namespace HxSSOTest
