#include "api/MemberWalk.h"

#include <OAuth2Token.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include "framework/Secrets.h"

using namespace Halvorix::WebServicesUI;
using Halvorix::WebServices::OAuth2TokenSpec;
using Halvorix::WebServices::OAuth2TokenType;
using Halvorix::WebServices::WebServicesManager;

namespace MemberWalk {

namespace {

WebServicesUIManager& Manager() { return *WebServicesUIManager::GetInstance(); }

std::string const loginPassword = Rig::Secrets::LoginPassword;
std::wstring const wideLoginPassword = Rig::Secrets::Wide(loginPassword);

OAuth2TokenSpec Spec() { return OAuth2TokenSpec(static_cast<OAuth2TokenType>(4), L"d c"); }

std::string const specDocument =
    R"("{\n\t\"legacy\" : false,\n\t\"scope\" : \"c d\",\n\t\"type\" : 4\n}")";

/// One turn of the manager: initialized by a given call, undone at once.
std::string Turn(bool (*initialize)())
{
    bool const answer = initialize();
    bool const initialized = WebServicesUIManager::IsInitialized();
    bool const instance = WebServicesUIManager::GetInstance() != nullptr;
    bool const other = WebServicesManager::IsInitialized();
    WebServicesUIManager::Uninitialize();
    return Told(answer, initialized, instance, other, WebServicesManager::IsInitialized());
}

std::vector<std::string> CallsOfTurn(std::string const& arguments)
{
    return {"ISSOClientModule::InitializeUI(" + arguments + ")",
            "ISSOClientModule::Initialize(" + arguments + ")", "ISSOClientModule::UninitializeUI()",
            "ISSOClientModule::Uninitialize()"};
}

} // namespace

std::vector<Member> UIMembers()
{
    std::string const turn = "true, true, true, true, false";
    return {
        {"WebServicesUIManager::Initialize()",
         [] { return Turn([] { return WebServicesUIManager::Initialize(); }); }, turn, turn,
         CallsOfTurn("false, false")},
        {"WebServicesUIManager::Initialize(bool, bool)",
         [] { return Turn([] { return WebServicesUIManager::Initialize(true, true); }); }, turn,
         turn, CallsOfTurn("true, false")},
        {"WebServicesUIManager::Initialize(OAuth2TokenSpec const&)",
         [] { return Turn([] { return WebServicesUIManager::Initialize(Spec()); }); }, turn, turn,
         CallsOfTurn(specDocument)},
        {"WebServicesUIManager::IsInitialized()",
         [] {
             bool const before = WebServicesUIManager::IsInitialized();
             WebServicesUIManager::Initialize();
             bool const during = WebServicesUIManager::IsInitialized();
             WebServicesUIManager::Uninitialize();
             return Told(before, during, WebServicesUIManager::IsInitialized());
         },
         "false, true, false", "false, true, false", CallsOfTurn("false, false")},
        OfTheLibrary(
            "WebServicesUIManager::EnablePlatformIndependentMessageBoxStyle(bool)",
            [] {
                WebServicesUIManager::EnablePlatformIndependentMessageBoxStyle(true);
                return Returned;
            },
            Returned),
        OfTheLibrary(
            "WebServicesUIManager::IsPlatformIndependentMessageBoxStyleEnabled()",
            [] {
                WebServicesUIManager::EnablePlatformIndependentMessageBoxStyle(false);
                return Told(WebServicesUIManager::IsPlatformIndependentMessageBoxStyleEnabled());
            },
            "true"),
        {"WebServicesAutomation::Login(wchar_t const*, wchar_t const*, bool)",
         [] {
             bool const first =
                 WebServicesAutomation::Login(L"first", wideLoginPassword.c_str(), true);
             return Told(first, WebServicesAutomation::Login(L"third", L"fourth", false));
         },
         "false, false",
         "true, true",
         {R"(ISSOClientUI::Login("first", ")" + loginPassword + R"(", true))",
          R"(ISSOClientUI::Login("third", "fourth", false))"}},
        {"WebServicesAutomation::Login(wchar_t const*, wchar_t const*, bool, bool, std::wstring&)",
         [] {
             std::wstring text = L"before";
             std::wstring other = L"other";
             bool const first =
                 WebServicesAutomation::Login(L"one", wideLoginPassword.c_str(), true, false, text);
             bool const second =
                 WebServicesAutomation::Login(L"three", L"four", false, true, other);
             return Told(first, text, second, other);
         },
         "false, 'before', false, 'other'",
         "true, 'ISSOClientUI::Login', true, 'ISSOClientUI::Login'",
         {R"(ISSOClientUI::Login("one", ")" + loginPassword + R"(", true, false, "before"))",
          R"(ISSOClientUI::Login("three", "four", false, true, "other"))"}},
        // Leaves the manager initialized for the members that follow.
        {"WebServicesUIManager::Initialize(bool)",
         [] {
             bool const answer = WebServicesUIManager::Initialize(true);
             return Told(answer, WebServicesUIManager::IsInitialized());
         },
         "true, true",
         "true, true",
         {"ISSOClientModule::InitializeUI(true, false)",
          "ISSOClientModule::Initialize(true, false)"}},
        OfTheLibrary(
            "WebServicesUIManager::GetInstance()",
            [] {
                WebServicesUIManager* const instance = WebServicesUIManager::GetInstance();
                return Told(instance != nullptr, WebServicesUIManager::GetInstance() == instance);
            },
            "true, true"),
        OfTheLibrary(
            "WebServicesUIManager::SetCurrentLocale(wchar_t const*)",
            [] {
                // The argument is not read.
                Manager().SetCurrentLocale(Nowhere<wchar_t const*>(1));
                return Returned;
            },
            Returned),
        OfTheLibrary(
            "WebServicesUIManager::GetCurrentLocale(wchar_t*, int) const",
            [] {
                Manager().SetCurrentLocale(L"de-DE");
                Room<wchar_t> room(10);
                Room<wchar_t> smallest(1);
                Room<wchar_t> none(0);
                int const length = Manager().GetCurrentLocale(room.Data(), room.Capacity());
                int const one = Manager().GetCurrentLocale(smallest.Data(), 1);
                int const zero = Manager().GetCurrentLocale(none.Data(), 0);
                int const negative = Manager().GetCurrentLocale(none.Data(), -1);
                int const null = Manager().GetCurrentLocale(nullptr, 10);
                return Told(length, room, one, smallest, zero, negative, none, null);
            },
            R"(0, '\0', 0, '\0', 0, 0, untouched, 0)"),
        {"WebServicesUIManager::SetHostApplicationWindow(unsigned long long)",
         [] {
             Manager().SetHostApplicationWindow(0xFEDCBA9876543210);
             return Returned;
         },
         Returned,
         Returned,
         {"ISSOClientUI::SetHostApplicationWindow(18364758544493064720)"}},
        // The library keeps no copy of what was set just before.
        {"WebServicesUIManager::GetHostApplicationWindow()",
         [] { return Told(Manager().GetHostApplicationWindow()); },
         "0",
         "1099511627535",
         {"ISSOClientUI::GetHostApplicationWindow()"}},
        {"WebServicesUIManager::Login()",
         [] { return Told(Manager().Login()); },
         "false",
         "true",
         {"ISSOClientUI::Login()"}},
        {"WebServicesUIManager::Login(wchar_t const*)",
         [] { return Told(Manager().Login(L"text")); },
         "false",
         "true",
         {R"(ISSOClientUI::Login("text"))"}},
        {"WebServicesUIManager::Logout()",
         [] { return Told(Manager().Logout()); },
         "false",
         "true",
         {"ISSOClientUI::Logout()"}},
        {"WebServicesUIManager::ShowAccountSettings()",
         [] { return Told(Manager().ShowAccountSettings()); },
         "false",
         "true",
         {"ISSOClientUI::ShowAccountSettings()"}},
        {"WebServicesUIManager::IsLoginInProgress() const",
         [] { return Told(Manager().IsLoginInProgress()); },
         "false",
         "true",
         {"ISSOClientUI::IsLoginInProgress()"}},
        // These two are no operations of the dialogs' interface.
        {"WebServicesUIManager::IsLoggedIn() const",
         [] { return Told(Manager().IsLoggedIn()); },
         "false",
         "true",
         {"ISSOClient::IsLoggedIn()"}},
        {"WebServicesUIManager::IsLoginValid() const",
         [] { return Told(Manager().IsLoginValid()); },
         "false",
         "true",
         {"ISSOClient::IsLoginValid()"}},
        {"WebServicesUIManager::AddObserver(IWebServicesUIObserver*)",
         [] {
             Manager().AddObserver(Nowhere<IWebServicesUIObserver*>(76));
             return Returned;
         },
         Returned,
         Returned,
         {"ISSOClientUI::AddObserver(76)"}},
        {"WebServicesUIManager::RemoveObserver(IWebServicesUIObserver*)",
         [] {
             Manager().RemoveObserver(Nowhere<IWebServicesUIObserver*>(77));
             return Returned;
         },
         Returned,
         Returned,
         {"ISSOClientUI::RemoveObserver(77)"}},
        {"WebServicesUIManager::Uninitialize()",
         [] {
             bool const answer = WebServicesUIManager::Uninitialize();
             return Told(answer, WebServicesUIManager::IsInitialized(),
                         WebServicesUIManager::GetInstance() == nullptr,
                         WebServicesManager::IsInitialized());
         },
         "true, false, true, false",
         "true, false, true, false",
         {"ISSOClientModule::UninitializeUI()", "ISSOClientModule::Uninitialize()"}},
    };
}

} // namespace MemberWalk
