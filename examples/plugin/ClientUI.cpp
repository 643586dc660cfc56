// What is behind WebServicesUIManager and WebServicesAutomation. Where a real
// plugin shows a dialog, this one acts as if the user had agreed.

#include "Interfaces.h"
#include "State.h"
#include "Texts.h"

namespace Sample {

namespace {

class ClientUI : public OnSession<ISSOClientUI> {
public:
    using OnSession::OnSession;

    unsigned long long GetHostApplicationWindow() override { return Lock()->hostWindow; }
    void SetHostApplicationWindow(unsigned long long window) override
    {
        Lock()->hostWindow = window;
    }

    using ISSOClientUI::Login; // the reserved overload is not to be hidden
    /// By name and password; the message says what came of it.
    bool Login(wchar_t const* loginName, wchar_t const* password, bool, bool,
               std::wstring& message) override
    {
        Account const* const account = FindAccount(loginName);
        bool const known = account != nullptr && account->password == Given(password);
        message = known ? L"signed in" : L"wrong name or password";
        return known && Lock()->SignIn(account);
    }
    bool Login(wchar_t const* loginName, wchar_t const* password, bool flag) override
    {
        std::wstring message;
        return Login(loginName, password, flag, false, message);
    }
    bool Login(wchar_t const* loginName) override { return Lock()->SignIn(FindAccount(loginName)); }
    bool Login() override { return Login(nullptr); }
    bool IsLoginInProgress() override { return Lock()->pending != nullptr; }
    bool Logout() override { return Lock()->SignOut(); }
    bool ShowAccountSettings() override { return Lock()->user != nullptr; }

    void AddObserver(WebServicesUI::IWebServicesUIObserver* observer) override
    {
        Lock()->uiObservers.insert(observer);
    }
    void RemoveObserver(WebServicesUI::IWebServicesUIObserver* observer) override
    {
        Lock()->uiObservers.erase(observer);
    }
};

} // namespace

std::shared_ptr<ISSOClientUI> MakeClientUI(std::shared_ptr<Session> session)
{
    return std::make_shared<ClientUI>(std::move(session));
}

} // namespace Sample
