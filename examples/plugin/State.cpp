#include "State.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>

#include "Texts.h"

namespace Sample {

namespace {

constexpr unsigned int TokenLifetime = 60 * 60;     // seconds
constexpr unsigned int LoginLifetime = 8 * 60 * 60; // seconds

unsigned int Now() { return static_cast<unsigned int>(std::time(nullptr)); }

std::array<Account, 2> const& Accounts()
{
    static std::array<Account, 2> const accounts{{
        {L"1001", L"zoe", L"sample", L"Zo\u00EB", L"Marsh", L"zoe.marsh@sample.example"},
        {L"1002", L"adam", L"sample", L"Adam", L"Field", L"adam.field@sample.example"},
    }};
    return accounts;
}

std::array<wchar_t const*, 2> const serverNames{L"production", L"staging"};
std::array<wchar_t const*, 4> const urlNames{L"login", L"logout", L"account", L"token"};

// Scopes that differ in case are the same.
Json::Value Key(Json::Value spec)
{
    std::string scope = spec["scope"].asString();
    for (char& c : scope)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    spec["scope"] = scope;
    return spec;
}

} // namespace

Account const* FindAccount(wchar_t const* loginName)
{
    std::wstring const name = Given(loginName);
    auto const found =
        std::find_if(Accounts().begin(), Accounts().end(), [&](Account const& account) {
            return name.empty() || account.loginName == name;
        });
    return found == Accounts().end() ? nullptr : &*found;
}

Account const* FindAccountByCookie(Json::Value const& jar)
{
    if (!jar.isObject() || !jar["Cookies"].isArray())
        return nullptr;
    for (Json::Value const& cookie : jar["Cookies"])
        for (Account const& account : Accounts())
            if (cookie.isObject() && cookie["Name"] == "sample-user" &&
                cookie["Value"] == ToUtf8(account.id))
                return &account;
    return nullptr;
}

Json::Value AccountToJson(Account const& account)
{
    Json::Value json;
    json["id"] = ToUtf8(account.id);
    json["loginName"] = ToUtf8(account.loginName);
    json["name"] = ToUtf8(account.firstName + L" " + account.lastName);
    json["email"] = ToUtf8(account.email);
    return json;
}

bool Token::IsExpired() const { return !text.empty() && expiryDate <= Now(); }

Json::Value ReadSpec(char const* json)
{
    Json::Value const spec = ReadJson(json);
    bool const good = spec.isObject() && spec["type"].isInt() && spec["scope"].isString();
    return good ? spec : Json::Value();
}

State::State() : known(FindAccount(nullptr))
{
    spec["type"] = static_cast<int>(OAuth2TokenTypeDefault);
    spec["scope"] = "user:profile";
    spec["legacy"] = false;
}

bool State::SignIn(Account const* account)
{
    if (account == nullptr)
        return false;
    SignOut();
    user = known = account;
    pending = nullptr;
    loginExpiryDate = Now() + LoginLifetime;
    Json::Value cookie;
    cookie["Name"] = "sample-user";
    cookie["Value"] = ToUtf8(account->id);
    cookie["Domain"] = "sample.example";
    cookie["Path"] = "/";
    cookie["IsSecure"] = cookie["IsHttpOnly"] = true;
    cookie["ExpiryDate"] = Json::Int64(loginExpiryDate);
    cookies["Cookies"].append(cookie);
    filledCaches = enabledCaches;
    Raise(Event::LoggedIn);
    return true;
}

bool State::SignOut()
{
    pending = known = nullptr;
    if (user == nullptr)
        return false;
    user = nullptr;
    loginExpiryDate = 0;
    cookies.clear();
    accessToken = {};
    oauth2Tokens.clear();
    filledCaches.clear();
    Raise(Event::LoggedOut);
    return true;
}

bool State::Restore() { return user != nullptr || SignIn(known); }

bool State::IsLoginValid() const { return user != nullptr && loginExpiryDate > Now(); }

void State::Issue(Token& token, std::wstring const& name)
{
    Raise(token.text.empty() ? Event::TokenAcquired : Event::TokenRefreshed);
    token.text = L"sample-" + name + L"-" + user->id + L"-" + std::to_wstring(++issued);
    token.expiryDate = Now() + TokenLifetime;
}

Token const* State::GetAccessToken(bool renew)
{
    if (user == nullptr)
        return nullptr;
    if (renew || !accessToken.IsAvailable())
        Issue(accessToken, L"access");
    return &accessToken;
}

Token const* State::GetOAuth2Token(Json::Value const& wanted, bool renew)
{
    if (user == nullptr || !oauth2Enabled || wanted.isNull())
        return nullptr;
    Token& token = oauth2Tokens[Key(wanted)];
    if (renew || !token.IsAvailable())
        Issue(token, L"oauth2");
    return &token;
}

Token State::StoredOAuth2Token(Json::Value const& wanted) const
{
    auto const found = wanted.isNull() ? oauth2Tokens.end() : oauth2Tokens.find(Key(wanted));
    return found == oauth2Tokens.end() ? Token() : found->second;
}

bool State::EnableOAuth2(bool enable)
{
    oauth2Enabled = enable;
    if (!enable)
        oauth2Tokens.clear();
    return true;
}

std::wstring State::Url(std::wstring const& name) const
{
    auto const overrides = urlOverrides.find(server);
    if (overrides != urlOverrides.end() && overrides->second.count(name) != 0)
        return overrides->second.at(name);
    if (std::find(urlNames.begin(), urlNames.end(), name) == urlNames.end())
        return {};
    return L"https://" + ServerName(server) + L".sample.example/" + name;
}

std::wstring State::Url(WebServicesUrlCode code) const
{
    auto const index = static_cast<std::size_t>(code);
    return index < urlNames.size() ? Url(urlNames[index]) : std::wstring();
}

std::wstring ServerName(Server server)
{
    auto const index = static_cast<std::size_t>(server);
    return index < serverNames.size() ? serverNames[index] : L"";
}

std::wstring PathOf(std::wstring const& file)
{
    auto const folder = std::filesystem::temp_directory_path() / "HxSSOSample" / "";
    return ToWide(folder.generic_u8string()) + file;
}

} // namespace Sample
