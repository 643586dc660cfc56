// A host that measures itself, signed in by the plugin of its installation:
//
//   bench-openid-host first            from nothing to a login that is known
//   bench-openid-host tokens COUNT     one token request of so many; then how many reads they made
//   bench-openid-host renewals COUNT   each renewal by itself
//   bench-openid-host login            writes the address for the browser, waits for a line, and
//                                      measures from the callback to a token
//
// Prints nanoseconds, a line for each. bench/openid/measure.py starts it and is its browser.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>

#include <OAuth2Token.h>
#include <WebServicesManager.h>

#include "framework/System.h"

using namespace Bench;
using namespace Halvorix::WebServices;

namespace {

WebServicesManager& Manager() { return *WebServicesManager::GetInstance(); }

OAuth2TokenSpec Spec() { return {OAuth2TokenTypeDefault, L"data:read"}; }

void Require(bool condition, char const* otherwise)
{
    if (!condition)
        throw std::runtime_error(otherwise);
}

void AskForToken(OAuth2TokenSpec const& spec)
{
    OAuth2Token token;
    Require(Manager().GetOAuth2AccessToken(spec, token, nullptr, false) && token.IsValid(),
            "no token");
}

void Restore() { Require(Manager().RestoreLogin(), "nobody is signed in"); }

void Print(std::chrono::nanoseconds time)
{
    std::printf("%lld\n", static_cast<long long>(time.count()));
    std::fflush(stdout);
}

void First()
{
    auto const start = OwnTime();
    WebServicesManager::Initialize(false);
    Restore();
    auto const time = OwnTime() - start;
    AskForToken(Spec());
    Print(time);
}

void Tokens(int count)
{
    WebServicesManager::Initialize(false);
    Restore();
    OAuth2TokenSpec const spec = Spec();
    AskForToken(spec);
    auto const before = ReadsSoFar();
    auto const start = OwnTime();
    for (int i = 0; i < count; ++i)
        AskForToken(spec);
    auto const time = OwnTime() - start;
    auto const reads = ReadsSoFar() - before;
    Print(time / count);
    // The files of the start were read. Where even these were not counted, nothing is.
    std::printf("%lld\n", before == 0 ? -1 : reads);
}

void Renewals(int count)
{
    WebServicesManager::Initialize(false);
    Restore();
    OAuth2TokenSpec const spec = Spec();
    for (int i = 0; i < count; ++i) {
        auto const start = OwnTime();
        Require(Manager().RefreshOAuth2Token(spec, true), "no renewal");
        Print(OwnTime() - start);
    }
}

void Login()
{
    WebServicesManager::Initialize(false);
    wchar_t address[4096] = {};
    Require(Manager().InitiateLogin(address, 4096), "no login");
    std::wstring const text = address; // of ASCII
    std::string narrow(text.size(), ' ');
    std::transform(text.begin(), text.end(), narrow.begin(),
                   [](wchar_t unit) { return static_cast<char>(unit); });
    std::cout << narrow << std::endl;
    std::getline(std::cin, narrow);
    auto const start = OwnTime();
    Require(Manager().CompleteLogin(), "the login failed");
    int const size = Manager().GetOAuth2AccessToken(nullptr, 0, nullptr, false);
    auto const time = OwnTime() - start;
    Require(size > 0, "no token");
    Print(time);
}

} // namespace

int main(int count, char** arguments)
try {
    std::string const what = count > 1 ? arguments[1] : "";
    int const times = count > 2 ? std::atoi(arguments[2]) : 0;
    if (what == "first")
        First();
    else if (what == "tokens")
        Tokens(times);
    else if (what == "renewals")
        Renewals(times);
    else if (what == "login")
        Login();
    else
        return 2;
    return 0;
} catch (std::exception const& exception) {
    std::fprintf(stderr, "%s\n", exception.what());
    return 1;
}
