// A host in its smallest form: signs the user in and asks for a token. It has an
// answer for every state, also for a machine that has no plugin. What a host may
// want besides is in the files beside this one.

#include <ctime>
#include <iostream>
#include <locale>
#include <string>

#include <boost/locale/encoding_utf.hpp>
#include <boost/locale/utf8_codecvt.hpp>

#include <OAuth2Token.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>

#include "Show.h"

using namespace Halvorix::WebServices;
using namespace Halvorix::WebServicesUI;

// The standard library has no conversion left that is neither deprecated nor at
// the mercy of the process's locale.
std::string Utf8(std::wstring const& text) { return boost::locale::conv::utf_to_utf<char>(text); }

char const* Answer(bool answer) { return answer ? "true" : "false"; }

namespace {

using TextGetter = int (WebServicesManager::*)(wchar_t*, int) const;

std::string GetText(WebServicesManager const& manager, TextGetter getter)
{
    std::wstring text(static_cast<std::size_t>((manager.*getter)(nullptr, 0)), L'\0');
    // The text may have become another one since: what was stored counts.
    int const stored = (manager.*getter)(text.data(), static_cast<int>(text.size()) + 1);
    text.resize(static_cast<std::size_t>(stored));
    return Utf8(text);
}

std::string DateText(unsigned int secondsSince1970)
{
    std::time_t const time = secondsSince1970;
    char text[sizeof "1970-01-01 00:00:00 UTC"];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", std::gmtime(&time));
    return text;
}

void ShowToken(WebServicesManager& manager)
{
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"user:profile data:read");
    OAuth2Token token;
    if (manager.GetOAuth2AccessToken(spec, token, nullptr, false)) {
        std::cout << "access token: " << Utf8(token.GetToken()) << "\n"
                  << "expires: " << DateText(manager.GetOAuth2TokenExpiryDate(spec)) << std::endl;
        return;
    }
    std::cout << "access token: none (GetOAuth2AccessToken answers false)\n"
              << "expires: never (GetOAuth2TokenExpiryDate answers "
              << manager.GetOAuth2TokenExpiryDate(spec) << ")" << std::endl;
}

} // namespace

void ShowUser(WebServicesManager const& manager)
{
    if (manager.IsLoggedIn()) {
        std::cout << "signed in: " << GetText(manager, &WebServicesManager::GetUserNameW) << " "
                  << GetText(manager, &WebServicesManager::GetUserEmail) << std::endl;
        return;
    }
    std::cout << "signed in: no (IsLoggedIn answers false)\n"
              << "user name: none (GetUserNameW answers " << manager.GetUserNameW(nullptr, 0) << ")"
              << std::endl;
}

int main()
{
    // With no plugin to take its log, the library writes it to std::wcout, with "?" for
    // what that cannot show. So std::cout and std::wcout leave C's streams, and both of
    // them write UTF-8.
    std::ios::sync_with_stdio(false);
    std::wcout.imbue(std::locale(std::locale(), new boost::locale::utf8_codecvt<wchar_t>));

    // True also with no plugin: what tells are the answers of the calls below.
    WebServicesManager::Initialize();
    WebServicesManager& manager = *WebServicesManager::GetInstance();

    std::cout << "RestoreLogin answers " << Answer(manager.RestoreLogin()) << std::endl;
    ShowUser(manager);
    ShowToken(manager);

    ShowCookieLogin(manager);
    ShowUrlOverrides();
    ShowServer();
    ShowEncryptedToken();
    WebServicesUIManager::Initialize();
    ShowUserInterface(*WebServicesUIManager::GetInstance());

    // In this order: the end of the user interface also ends the library's hold on
    // the plugin, and a call behind it would load the plugin once more.
    WebServicesManager::Uninitialize();
    WebServicesUIManager::Uninitialize();
    return 0;
}
