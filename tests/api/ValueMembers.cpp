#include "api/MemberWalk.h"

#include <memory>
#include <optional>

#include <SSOServicesPrivate.h>
#include "framework/Secrets.h"
#include "types/Values.h"

using namespace Halvorix::WebServices;

namespace MemberWalk {

namespace {

std::string const secret = Rig::Secrets::AccessToken;
std::wstring const wideSecret = Rig::Secrets::Wide(secret);
std::string const consumerSecret = Rig::Secrets::ConsumerSecret;

/// A configuration with all its texts, each of its own.
void Fill(WebServicesConfiguration& configuration)
{
    configuration.SetServer(static_cast<Server>(-7));
    configuration.SetConsumerKey(L"a");
    configuration.SetConsumerSecret(Rig::Secrets::Wide(consumerSecret).c_str());
    configuration.SetSerialNumber(L"c");
    configuration.SetProductLineCode(L"d");
    configuration.SetCIPUserId(L"e");
    configuration.SetUPIRelease(L"f");
    configuration.SetUPIMaster(L"g");
    configuration.SetUPIBuild(L"h");
    configuration.SetFeatureName(L"i");
    configuration.SetFeatureVersion(L"j");
    configuration.SetOAuth2ConsumerKey(L"k");
    configuration.SetOAuth2ConsumerSecret(L"l");
    configuration.SetOAuth2AccessTokenScope(L" m  n ");
}

std::string const filledConfiguration =
    "-7 ConsumerKey=a ConsumerSecret=" + consumerSecret +
    " SerialNumber=c ProductLineCode=d UPIRelease=f UPIMaster=g "
    "UPIBuild=h FeatureName=i FeatureVersion=j OAuth2ConsumerKey=k OAuth2ConsumerSecret=l "
    "OAuth2AccessTokenScope= m  n ";

struct HostsConfiguration : WebServicesConfiguration {
    explicit HostsConfiguration(bool& isDestroyed) : isDestroyed(isDestroyed) {}
    HostsConfiguration(HostsConfiguration const&) = delete;
    HostsConfiguration& operator=(HostsConfiguration const&) = delete;
    ~HostsConfiguration() override { isDestroyed = true; }
    bool& isDestroyed;
};

using ConfigurationGetter = int (WebServicesConfiguration::*)(wchar_t*, int) const;
using ConfigurationSetter = void (WebServicesConfiguration::*)(wchar_t const*);

/// Each setter changes its own text and no other, each getter gives it whole,
/// cut and as a length.
void AddText(std::vector<Member>& members, std::string const& name, ConfigurationGetter getter,
             ConfigurationSetter setter)
{
    members.push_back(OfTheLibrary(
        "WebServicesConfiguration::Set" + name + "(wchar_t const*)",
        [setter] {
            WebServicesConfiguration configuration;
            (configuration.*setter)(L"x  y ");
            return Told(configuration);
        },
        "0 " + name + "=x  y "));
    members.push_back(OfTheLibrary(
        "WebServicesConfiguration::Get" + name + "(wchar_t*, int) const",
        [getter, setter] {
            WebServicesConfiguration configuration;
            (configuration.*setter)(L"abc");
            Room<wchar_t> whole(4);
            Room<wchar_t> part(3);
            Room<wchar_t> none(0);
            int const asked = (configuration.*getter)(nullptr, 0);
            int const stored = (configuration.*getter)(whole.Data(), whole.Capacity());
            int const cut = (configuration.*getter)(part.Data(), part.Capacity());
            int const zero = (configuration.*getter)(none.Data(), none.Capacity());
            return Told(asked, stored, whole, cut, part, zero, none);
        },
        R"(3, 3, 'abc\0', 2, 'ab\0', 0, untouched)"));
}

} // namespace

std::vector<Member> ConfigurationMembers()
{
    std::vector<Member> members{
        OfTheLibrary(
            "WebServicesConfiguration::WebServicesConfiguration()",
            [] { return Told(WebServicesConfiguration()); }, "0"),
        OfTheLibrary(
            "WebServicesConfiguration::WebServicesConfiguration(WebServicesConfiguration const&)",
            [] {
                WebServicesConfiguration source;
                Fill(source);
                WebServicesConfiguration const copy(source);
                source.SetConsumerKey(L"changed");
                return Told(copy);
            },
            filledConfiguration),
        OfTheLibrary(
            "WebServicesConfiguration::operator=(WebServicesConfiguration const&)",
            [] {
                WebServicesConfiguration source;
                Fill(source);
                WebServicesConfiguration copy;
                bool const same = &(copy = source) == &copy;
                WebServicesConfiguration const& itself = copy;
                copy = itself;
                source.SetConsumerKey(L"changed");
                return Told(same, copy);
            },
            "true, " + filledConfiguration),
        OfTheLibrary(
            "WebServicesConfiguration::~WebServicesConfiguration()",
            [] {
                bool isDestroyed = false;
                auto source = std::make_unique<HostsConfiguration>(isDestroyed);
                Fill(*source);
                WebServicesConfiguration const copy(*source);
                delete static_cast<WebServicesConfiguration*>(source.release());
                return Told(isDestroyed, copy);
            },
            "true, " + filledConfiguration),
        OfTheLibrary(
            "WebServicesConfiguration::GetServer() const",
            [] { return Told(WebServicesConfiguration().GetServer()); }, "0"),
        OfTheLibrary(
            "WebServicesConfiguration::SetServer(Server)",
            [] {
                WebServicesConfiguration configuration;
                configuration.SetServer(static_cast<Server>(-2000000003));
                return Told(configuration);
            },
            "-2000000003"),
        // The one text that stays empty.
        OfTheLibrary(
            "WebServicesConfiguration::SetCIPUserId(wchar_t const*)",
            [] {
                WebServicesConfiguration configuration;
                configuration.SetCIPUserId(L"x");
                configuration.SetCIPUserId(nullptr);
                return Told(configuration);
            },
            "0"),
        OfTheLibrary(
            "WebServicesConfiguration::GetCIPUserId(wchar_t*, int) const",
            [] {
                WebServicesConfiguration configuration;
                configuration.SetCIPUserId(L"x");
                Room<wchar_t> room(4);
                Room<wchar_t> none(0);
                int const asked = configuration.GetCIPUserId(nullptr, 0);
                int const stored = configuration.GetCIPUserId(room.Data(), room.Capacity());
                int const zero = configuration.GetCIPUserId(none.Data(), none.Capacity());
                return Told(asked, stored, room, zero, none);
            },
            R"(0, 0, '\0', 0, untouched)"),
    };
    using Class = WebServicesConfiguration;
    AddText(members, "ConsumerKey", &Class::GetConsumerKey, &Class::SetConsumerKey);
    AddText(members, "ConsumerSecret", &Class::GetConsumerSecret, &Class::SetConsumerSecret);
    AddText(members, "SerialNumber", &Class::GetSerialNumber, &Class::SetSerialNumber);
    AddText(members, "ProductLineCode", &Class::GetProductLineCode, &Class::SetProductLineCode);
    AddText(members, "UPIRelease", &Class::GetUPIRelease, &Class::SetUPIRelease);
    AddText(members, "UPIMaster", &Class::GetUPIMaster, &Class::SetUPIMaster);
    AddText(members, "UPIBuild", &Class::GetUPIBuild, &Class::SetUPIBuild);
    AddText(members, "FeatureName", &Class::GetFeatureName, &Class::SetFeatureName);
    AddText(members, "FeatureVersion", &Class::GetFeatureVersion, &Class::SetFeatureVersion);
    AddText(members, "OAuth2ConsumerKey", &Class::GetOAuth2ConsumerKey,
            &Class::SetOAuth2ConsumerKey);
    AddText(members, "OAuth2ConsumerSecret", &Class::GetOAuth2ConsumerSecret,
            &Class::SetOAuth2ConsumerSecret);
    AddText(members, "OAuth2AccessTokenScope", &Class::GetOAuth2AccessTokenScope,
            &Class::SetOAuth2AccessTokenScope);
    return members;
}

namespace {

OAuth2TokenSpec Spec(int type, wchar_t const* scope)
{
    return OAuth2TokenSpec(static_cast<OAuth2TokenType>(type), scope);
}

/// As only a document can make one.
OAuth2TokenSpec LegacySpec()
{
    OAuth2TokenSpec spec;
    SSOServicesPrivate::JsonToOAuth2TokenSpec(R"({"type": -7, "scope": "b A", "legacy": true})",
                                              spec);
    return spec;
}

OAuth2Token Token(std::wstring const& text, OAuth2TokenSpec const& spec)
{
    OAuth2Token token;
    SSOServicesPrivate::Initialize(token, text, spec);
    return token;
}

std::vector<Member> SpecMembers()
{
    return {
        OfTheLibrary(
            "OAuth2TokenSpec::OAuth2TokenSpec()", [] { return Told(OAuth2TokenSpec()); }, "1 ''"),
        OfTheLibrary(
            "OAuth2TokenSpec::OAuth2TokenSpec(OAuth2TokenType, wchar_t const*)",
            [] { return Told(Spec(-7, L"  user:profile  data:read data:write ")); },
            "-7 'data:read data:write user:profile'"),
        OfTheLibrary(
            "OAuth2TokenSpec::OAuth2TokenSpec(OAuth2TokenSpec const&)",
            [] {
                OAuth2TokenSpec source = LegacySpec();
                OAuth2TokenSpec const copy(source);
                source.SetScope(L"changed");
                return Told(copy);
            },
            "-7 'b A' legacy"),
        OfTheLibrary(
            "OAuth2TokenSpec::operator=(OAuth2TokenSpec const&)",
            [] {
                OAuth2TokenSpec source = LegacySpec();
                OAuth2TokenSpec copy;
                bool const same = &(copy = source) == &copy;
                OAuth2TokenSpec const& itself = copy;
                copy = itself;
                source.SetScope(L"changed");
                return Told(same, copy);
            },
            "true, -7 'b A' legacy"),
        OfTheLibrary(
            "OAuth2TokenSpec::~OAuth2TokenSpec()",
            [] {
                std::optional<OAuth2TokenSpec> source = LegacySpec();
                OAuth2TokenSpec const copy(*source);
                source.reset();
                return Told(copy);
            },
            "-7 'b A' legacy"),
        OfTheLibrary(
            "OAuth2TokenSpec::operator==(OAuth2TokenSpec const&) const",
            [] {
                OAuth2TokenSpec const spec = Spec(2, L"b a");
                return Told(spec == Spec(2, L"A B"), spec == Spec(3, L"b a"), spec == Spec(2, L"b"),
                            LegacySpec() == Spec(-7, L"b A"), spec == spec);
            },
            "true, false, false, false, true"),
        OfTheLibrary(
            "OAuth2TokenSpec::operator!=(OAuth2TokenSpec const&) const",
            [] {
                OAuth2TokenSpec const spec = Spec(2, L"b a");
                return Told(spec != Spec(2, L"A B"), spec != Spec(3, L"b a"), spec != Spec(2, L"b"),
                            LegacySpec() != Spec(-7, L"b A"), spec != spec);
            },
            "false, true, true, true, false"),
        OfTheLibrary(
            "OAuth2TokenSpec::GetType() const",
            [] { return Told(Spec(2000000004, L"").GetType()); }, "2000000004"),
        OfTheLibrary(
            "OAuth2TokenSpec::SetType(OAuth2TokenType)",
            [] {
                OAuth2TokenSpec spec;
                bool const answer = spec.SetType(static_cast<OAuth2TokenType>(-7));
                return Told(answer, spec);
            },
            "true, -7 ''"),
        OfTheLibrary(
            "OAuth2TokenSpec::GetScope(wchar_t*, int) const",
            [] {
                OAuth2TokenSpec const spec = Spec(1, L"b a");
                Room<wchar_t> whole(4);
                Room<wchar_t> part(3);
                Room<wchar_t> none(0);
                int const asked = spec.GetScope(nullptr, 0);
                int const stored = spec.GetScope(whole.Data(), whole.Capacity());
                int const cut = spec.GetScope(part.Data(), part.Capacity());
                int const zero = spec.GetScope(none.Data(), none.Capacity());
                return Told(asked, stored, whole, cut, part, zero, none);
            },
            R"(3, 3, 'a b\0', 2, 'a \0', 0, untouched)"),
        OfTheLibrary(
            "OAuth2TokenSpec::SetScope(wchar_t const*) const",
            [] {
                OAuth2TokenSpec const spec = Spec(5, L"old");
                bool const answer = spec.SetScope(L"c  b a ");
                return Told(answer, spec);
            },
            "true, 5 'a b c'"),
    };
}

} // namespace

std::vector<Member> TokenMembers()
{
    std::vector<Member> members = SpecMembers();
    std::vector<Member> const ofTokens{
        OfTheLibrary(
            "OAuth2Token::OAuth2Token()", [] { return Told(OAuth2Token()); }, "'' of 1 ''"),
        OfTheLibrary(
            "OAuth2Token::OAuth2Token(OAuth2Token const&)",
            [] {
                OAuth2Token source = Token(wideSecret, LegacySpec());
                OAuth2Token const copy(source);
                source = OAuth2Token();
                return Told(copy);
            },
            "'" + secret + "' of -7 'b A' legacy"),
        OfTheLibrary(
            "OAuth2Token::operator=(OAuth2Token const&)",
            [] {
                OAuth2Token source = Token(wideSecret, LegacySpec());
                OAuth2Token copy;
                bool const same = &(copy = source) == &copy;
                OAuth2Token const& itself = copy;
                copy = itself;
                source = OAuth2Token();
                return Told(same, copy);
            },
            "true, '" + secret + "' of -7 'b A' legacy"),
        OfTheLibrary(
            "OAuth2Token::~OAuth2Token()",
            [] {
                std::optional<OAuth2Token> source = Token(wideSecret, LegacySpec());
                OAuth2Token const copy(*source);
                source.reset();
                return Told(copy);
            },
            "'" + secret + "' of -7 'b A' legacy"),
        OfTheLibrary(
            "OAuth2Token::operator==(OAuth2Token const&) const",
            [] {
                OAuth2Token const token = Token(L"t", Spec(2, L"a"));
                return Told(token == Token(L"t", Spec(2, L"A")),
                            token == Token(L"T", Spec(2, L"a")),
                            token == Token(L"t", Spec(3, L"a")), token == token);
            },
            "true, false, false, true"),
        OfTheLibrary(
            "OAuth2Token::operator!=(OAuth2Token const&) const",
            [] {
                OAuth2Token const token = Token(L"t", Spec(2, L"a"));
                return Told(token != Token(L"t", Spec(2, L"A")),
                            token != Token(L"T", Spec(2, L"a")),
                            token != Token(L"t", Spec(3, L"a")), token != token);
            },
            "false, true, true, false"),
        OfTheLibrary(
            "OAuth2Token::IsValid() const",
            [] { return Told(OAuth2Token().IsValid(), Token(L" ", Spec(1, L"")).IsValid()); },
            "false, true"),
        OfTheLibrary(
            "OAuth2Token::GetTokenSize() const",
            [] {
                return Told(OAuth2Token().GetTokenSize(),
                            Token(L"token", Spec(1, L"")).GetTokenSize());
            },
            "0, 5"),
        OfTheLibrary(
            "OAuth2Token::GetToken() const",
            [] {
                OAuth2Token const none;
                OAuth2Token const token = Token(L"token", Spec(1, L""));
                return Told(none.GetToken(), token.GetToken());
            },
            "'', 'token'"),
        OfTheLibrary(
            "OAuth2Token::GetToken(wchar_t*, int) const",
            [] {
                OAuth2Token const token = Token(L"abc", Spec(1, L""));
                Room<wchar_t> whole(4);
                Room<wchar_t> tooSmall(3);
                Room<wchar_t> none(0);
                int const asked = token.GetToken(nullptr, 0);
                int const stored = token.GetToken(whole.Data(), whole.Capacity());
                int const refused = token.GetToken(tooSmall.Data(), tooSmall.Capacity());
                int const zero = token.GetToken(none.Data(), none.Capacity());
                return Told(asked, stored, whole, refused, tooSmall, zero, none);
            },
            R"(3, 3, 'abc\0', 0, '\0', 0, untouched)"),
        OfTheLibrary(
            "OAuth2Token::GetSpec() const",
            [] {
                OAuth2Token const token = Token(L"t", Spec(6, L"a"));
                OAuth2TokenSpec const spec = token.GetSpec();
                spec.SetScope(L"changed");
                return Told(token.GetSpec(), spec);
            },
            "6 'a', 6 'changed'"),
    };
    members.insert(members.end(), ofTokens.begin(), ofTokens.end());
    return members;
}

namespace {

NetworkCookie Cookie()
{
    return HxSSOTest::Cookie({"n", "v", L"d", L"p", true, true, -5000000007});
}

std::string const filledCookie = "n=v;d;p;secure;httpOnly;-5000000007";

Member NarrowGetter(std::string const& name, int (NetworkCookie::*getter)(char*, int) const,
                    void (NetworkCookie::*setter)(char const*))
{
    return OfTheLibrary(
        "NetworkCookie::" + name + "(char*, int) const",
        [getter, setter] {
            NetworkCookie cookie;
            (cookie.*setter)("abc");
            Room<char> whole(4);
            Room<char> exact(3);
            Room<char> part(2);
            Room<char> none(0);
            int const asked = (cookie.*getter)(nullptr, 0);
            int const stored = (cookie.*getter)(whole.Data(), whole.Capacity());
            int const fitting = (cookie.*getter)(exact.Data(), exact.Capacity());
            int const cut = (cookie.*getter)(part.Data(), part.Capacity());
            int const zero = (cookie.*getter)(none.Data(), none.Capacity());
            return Told(asked, stored, whole, fitting, exact, cut, part, zero, none);
        },
        R"(3, 3, 'abc\0', 3, 'abc', 2, 'ab', 0, untouched)");
}

Member WideGetter(std::string const& name, int (NetworkCookie::*getter)(wchar_t*, int) const,
                  void (NetworkCookie::*setter)(wchar_t const*))
{
    return OfTheLibrary(
        "NetworkCookie::" + name + "(wchar_t*, int) const",
        [getter, setter] {
            NetworkCookie cookie;
            (cookie.*setter)(L"abc");
            Room<wchar_t> whole(4);
            Room<wchar_t> part(3);
            Room<wchar_t> none(0);
            int const asked = (cookie.*getter)(nullptr, 0);
            int const stored = (cookie.*getter)(whole.Data(), whole.Capacity());
            int const cut = (cookie.*getter)(part.Data(), part.Capacity());
            int const zero = (cookie.*getter)(none.Data(), none.Capacity());
            return Told(asked, stored, whole, cut, part, zero, none);
        },
        R"(3, 3, 'abc\0', 2, 'ab\0', 0, untouched)");
}

/// A setter on a cookie with other values, which have to stay.
template <class Argument, class Text>
Member CookieSetter(std::string const& name, void (NetworkCookie::*setter)(Argument),
                    Text const& value, std::string const& told)
{
    return OfTheLibrary(
        "NetworkCookie::" + name,
        [setter, value] {
            NetworkCookie cookie = Cookie();
            (cookie.*setter)(value);
            return Told(cookie);
        },
        told);
}

std::vector<Member> SingleCookieMembers()
{
    return {
        OfTheLibrary(
            "NetworkCookie::NetworkCookie()", [] { return Told(NetworkCookie()); }, "=;;;;;0"),
        OfTheLibrary(
            "NetworkCookie::NetworkCookie(NetworkCookie const&)",
            [] {
                NetworkCookie source = Cookie();
                NetworkCookie const copy(source);
                source.SetName("changed");
                return Told(copy);
            },
            filledCookie),
        OfTheLibrary(
            "NetworkCookie::operator=(NetworkCookie const&)",
            [] {
                NetworkCookie source = Cookie();
                NetworkCookie copy;
                bool const same = &(copy = source) == &copy;
                NetworkCookie const& itself = copy;
                copy = itself;
                source.SetName("changed");
                return Told(same, copy);
            },
            "true, " + filledCookie),
        OfTheLibrary(
            "NetworkCookie::~NetworkCookie()",
            [] {
                std::optional<NetworkCookie> source = Cookie();
                NetworkCookie const copy(*source);
                source.reset();
                return Told(copy);
            },
            filledCookie),
        NarrowGetter("GetName", &NetworkCookie::GetName, &NetworkCookie::SetName),
        NarrowGetter("GetValue", &NetworkCookie::GetValue, &NetworkCookie::SetValue),
        WideGetter("GetDomain", &NetworkCookie::GetDomain, &NetworkCookie::SetDomain),
        WideGetter("GetPath", &NetworkCookie::GetPath, &NetworkCookie::SetPath),
        CookieSetter("SetName(char const*)", &NetworkCookie::SetName, "new",
                     "new=v;d;p;secure;httpOnly;-5000000007"),
        CookieSetter("SetValue(char const*)", &NetworkCookie::SetValue, "new",
                     "n=new;d;p;secure;httpOnly;-5000000007"),
        CookieSetter("SetDomain(wchar_t const*)", &NetworkCookie::SetDomain, nullptr,
                     "n=v;;p;secure;httpOnly;-5000000007"),
        CookieSetter("SetPath(wchar_t const*)", &NetworkCookie::SetPath, L"new",
                     "n=v;d;new;secure;httpOnly;-5000000007"),
        CookieSetter("SetSecure(bool)", &NetworkCookie::SetSecure, false,
                     "n=v;d;p;;httpOnly;-5000000007"),
        CookieSetter("SetHttpOnly(bool)", &NetworkCookie::SetHttpOnly, false,
                     "n=v;d;p;secure;;-5000000007"),
        CookieSetter("SetExpiryDate(long long)", &NetworkCookie::SetExpiryDate, -1,
                     "n=v;d;p;secure;httpOnly;-1"),
        OfTheLibrary(
            "NetworkCookie::IsSecure() const",
            [] {
                NetworkCookie cookie;
                bool const before = cookie.IsSecure();
                cookie.SetSecure(true);
                return Told(before, cookie.IsSecure(), cookie.IsHttpOnly());
            },
            "false, true, false"),
        OfTheLibrary(
            "NetworkCookie::IsHttpOnly() const",
            [] {
                NetworkCookie cookie;
                bool const before = cookie.IsHttpOnly();
                cookie.SetHttpOnly(true);
                return Told(before, cookie.IsHttpOnly(), cookie.IsSecure());
            },
            "false, true, false"),
        OfTheLibrary(
            "NetworkCookie::GetExpiryDate() const", [] { return Told(Cookie().GetExpiryDate()); },
            "-5000000007"),
    };
}

} // namespace

std::vector<Member> CookieMembers()
{
    std::vector<Member> members = SingleCookieMembers();
    std::vector<Member> const ofJars{
        OfTheLibrary(
            "NetworkCookieJar::NetworkCookieJar()", [] { return Told(NetworkCookieJar()); }, "[]"),
        OfTheLibrary(
            "NetworkCookieJar::~NetworkCookieJar()",
            [] {
                auto jar = std::make_unique<NetworkCookieJar>();
                jar->AddCookie(Cookie());
                NetworkCookie const cookie = jar->GetCookie(0);
                jar.reset();
                return Told(cookie);
            },
            filledCookie),
        OfTheLibrary(
            "NetworkCookieJar::AddCookie(NetworkCookie const&)",
            [] {
                NetworkCookieJar jar;
                NetworkCookie cookie = Cookie();
                bool const first = jar.AddCookie(cookie);
                bool const second = jar.AddCookie(cookie);
                cookie.SetName("changed");
                bool const third = jar.AddCookie(cookie);
                return Told(first, second, third, jar);
            },
            "true, true, true, [" + filledCookie + " " + filledCookie +
                " changed=v;d;p;secure;httpOnly;-5000000007]"),
        OfTheLibrary(
            "NetworkCookieJar::GetCookieCount() const",
            [] {
                NetworkCookieJar jar;
                int const before = jar.GetCookieCount();
                jar.AddCookie(NetworkCookie());
                jar.AddCookie(NetworkCookie());
                return Told(before, jar.GetCookieCount());
            },
            "0, 2"),
        OfTheLibrary(
            "NetworkCookieJar::GetCookie(int) const",
            [] {
                NetworkCookieJar jar;
                jar.AddCookie(NetworkCookie());
                jar.AddCookie(Cookie());
                jar.GetCookie(1).SetName("changed");
                return Told(jar.GetCookie(0), jar.GetCookie(1), jar.GetCookie(2));
            },
            "=;;;;;0, " + filledCookie + ", =;;;;;0"),
        OfTheLibrary(
            "NetworkCookieJar::DeleteAll()",
            [] {
                NetworkCookieJar jar;
                jar.DeleteAll();
                jar.AddCookie(Cookie());
                jar.DeleteAll();
                std::string const emptied = Told(jar);
                jar.AddCookie(NetworkCookie());
                return emptied + ", " + Told(jar);
            },
            "[], [=;;;;;0]"),
    };
    members.insert(members.end(), ofJars.begin(), ofJars.end());
    return members;
}

} // namespace MemberWalk
