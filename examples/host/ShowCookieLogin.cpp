// A login that took place in a browser of the host, by its cookies, and a logout
// that returns the cookies which the browser is to forget.

#include <iostream>

#include <NetworkCookie.h>

#include "Show.h"

using namespace Halvorix::WebServices;

namespace {

std::string Name(NetworkCookie const& cookie)
{
    // Bytes, not text: there is no terminator behind a name that fills its buffer.
    std::string name(static_cast<std::size_t>(cookie.GetName(nullptr, 0)), '\0');
    cookie.GetName(name.data(), static_cast<int>(name.size()));
    return name;
}

} // namespace

void ShowCookieLogin(WebServicesManager& manager)
{
    NetworkCookie cookie;
    cookie.SetName("sample-user");
    cookie.SetValue("1002");
    cookie.SetDomain(L"sample.example");
    cookie.SetPath(L"/");
    cookie.SetSecure(true);
    NetworkCookieJar jar;
    jar.AddCookie(cookie);
    std::cout << "cookie login: CompleteLogin answers " << Answer(manager.CompleteLogin(jar))
              << std::endl;
    ShowUser(manager);

    wchar_t page[1024];
    NetworkCookieJar toForget;
    bool const initiated = manager.InitiateLogout(page, 1024, toForget, nullptr);
    std::cout << "logout: InitiateLogout answers " << Answer(initiated) << std::endl;
    if (initiated)
        std::cout << "logout page: " << Utf8(page) << std::endl;
    for (int i = 0; i < toForget.GetCookieCount(); ++i)
        std::cout << "cookie to forget: " << Name(toForget.GetCookie(i)) << std::endl;
    std::cout << "logout: CompleteLogout answers " << Answer(manager.CompleteLogout()) << std::endl;
    ShowUser(manager);
}
