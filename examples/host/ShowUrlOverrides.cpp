// A server whose URLs are replaced for a while, for example by those of a test
// environment. For trusted hosts.

#include <iostream>
#include <map>

#include <SSOClientPrivate.h>

#include "Show.h"

using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;

namespace {

void ShowLoginPage(Server server)
{
    auto const overrides = SSOClientPrivate::GetUrlOverrides(server);
    std::string const page = Utf8(SSOClientPrivate::GetUrl(L"login"));
    std::cout << "URL overrides: " << overrides.size() << ", login page "
              << (page.empty() ? "none" : page) << std::endl;
}

} // namespace

void ShowUrlOverrides()
{
    Server const server{}; // the plugin's first
    std::map<std::wstring, std::wstring> const overrides{{L"login", L"https://test.example/login"}};
    std::cout << "SetUrlOverrides answers "
              << Answer(SSOClientPrivate::SetUrlOverrides(server, overrides)) << std::endl;
    ShowLoginPage(server);
    std::cout << "ClearUrlOverrides answers " << Answer(SSOClientPrivate::ClearUrlOverrides(server))
              << std::endl;
    ShowLoginPage(server);
}
