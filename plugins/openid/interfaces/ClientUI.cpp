// Signing in with the system's browser. There is no window of our own.

#include <atomic>

#include <plugin/Defaults.h>

#include "openid/interfaces/HostTexts.h"
#include "openid/interfaces/Interfaces.h"
#include "openid/interfaces/OnSession.h"
#include "openid/platform/System.h"

namespace Halvorix::OpenId {

namespace {

using namespace SSOServices;

class OpenIdClientUI : public OnSession<SSOClientUIDefaults> {
public:
    using OnSession::OnSession;
    using SSOClientUIDefaults::Login; // the reserved overload is not to be hidden

    unsigned long long GetHostApplicationWindow() override { return window; }
    void SetHostApplicationWindow(unsigned long long handle) override { window = handle; }

    bool Login(wchar_t const*, wchar_t const*, bool, bool, std::wstring& message) override
    {
        message = L"Sign in with the browser: a password is not taken here.";
        return Login(nullptr, nullptr, false);
    }
    bool Login(wchar_t const*, wchar_t const*, bool) override
    {
        return Ask([](Session& session) {
            Report(session, "Cannot sign in with a password",
                   "the password grant is not to be used (RFC 9700)",
                   "call Login of WebServicesUIManager, which opens the browser");
            return false;
        });
    }
    bool Login(wchar_t const* loginHint) override
    {
        return Ask([&](Session& session) { return session.LoginInBrowser(Given(loginHint)); });
    }
    bool Login() override { return Login(nullptr); }
    bool IsLoginInProgress() override
    {
        return Ask([](Session& session) { return session.IsLoginInProgress(); });
    }
    bool Logout() override
    {
        return Ask([](Session& session) { return session.Logout(); });
    }
    bool ShowAccountSettings() override
    {
        return Ask([](Session& session) {
            std::string reason = "the configuration has no accountUrl for this server";
            std::string const url = session.Url("account");
            bool const shown = !url.empty() && OpenInBrowser(url, reason);
            if (!shown)
                Report(session, "Cannot show the account's settings", reason,
                       "set accountUrl in HxSSOOpenID.json, and a default browser");
            return shown;
        });
    }

private:
    std::atomic<unsigned long long> window{0};
};

} // namespace

std::shared_ptr<ISSOClientUI> MakeClientUI(std::shared_ptr<Session> session)
{
    return std::make_shared<OpenIdClientUI>(std::move(session));
}

} // namespace Halvorix::OpenId
