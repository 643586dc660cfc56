#include "../../include/WebServicesUIManager.h"

#include "../../include/WebServicesManager.h"
#include "../support/ProcessState.h"
#include "Forward.h"
#include "ReferenceCount.h"
#include "SpecText.h"

namespace Halvorix::WebServicesUI {

using namespace SSOServices;
using WebServices::WebServicesManager;

struct WebServicesUIManager::Implementation {};

WebServicesUIManager::WebServicesUIManager() : implementation(new Implementation) {}

WebServicesUIManager::~WebServicesUIManager() { delete implementation; }

bool WebServicesUIManager::Initialize() { return Initialize(false); }

bool WebServicesUIManager::Initialize(bool flag)
{
    if (IsFirstInitialize(webServicesUIManagerCount, webServicesUIManager != nullptr)) {
        AskModule([&](auto& module) { module.InitializeUI(flag, false); });
        WebServicesManager::Initialize(flag);
        webServicesUIManager = new WebServicesUIManager;
    }
    return true;
}

bool WebServicesUIManager::Initialize(bool flag, bool) { return Initialize(flag); }

bool WebServicesUIManager::Initialize(WebServices::OAuth2TokenSpec const& spec)
{
    if (IsFirstInitialize(webServicesUIManagerCount, webServicesUIManager != nullptr)) {
        std::string const text = SpecText(spec);
        AskModule([&](auto& module) { module.InitializeUI(text.c_str()); });
        WebServicesManager::Initialize(spec);
        webServicesUIManager = new WebServicesUIManager;
    }
    return true;
}

bool WebServicesUIManager::Uninitialize()
{
    if (IsLastUninitialize(webServicesUIManagerCount)) {
        delete webServicesUIManager.exchange(nullptr);
        AskModule([](auto& module) { module.UninitializeUI(); });
        WebServicesManager::Uninitialize();
        // Also while the host still holds an Initialize of its own, on purpose.
        SSOClientManager::ReleaseInstance();
        webServicesUIManagerCount = 0;
    }
    return true;
}

WebServicesUIManager* WebServicesUIManager::GetInstance() { return webServicesUIManager; }

bool WebServicesUIManager::IsInitialized() { return webServicesUIManagerCount > 0; }

// The library has no message boxes and no locale: these are empty on purpose.
void WebServicesUIManager::EnablePlatformIndependentMessageBoxStyle(bool) {}

bool WebServicesUIManager::IsPlatformIndependentMessageBoxStyleEnabled() { return true; }

void WebServicesUIManager::SetCurrentLocale(wchar_t const*) {}

int WebServicesUIManager::GetCurrentLocale(wchar_t* buffer, int capacity) const
{
    if (buffer != nullptr && capacity > 0)
        *buffer = L'\0';
    return 0;
}

unsigned long long WebServicesUIManager::GetHostApplicationWindow()
{
    return AskUI(0, [](auto& ui) { return ui.GetHostApplicationWindow(); });
}

void WebServicesUIManager::SetHostApplicationWindow(unsigned long long window)
{
    AskUI([&](auto& ui) { ui.SetHostApplicationWindow(window); });
}

bool WebServicesUIManager::Login()
{
    return AskUI(false, [](auto& ui) { return ui.Login(); });
}

bool WebServicesUIManager::Login(wchar_t const* text)
{
    return AskUI(false, [&](auto& ui) { return ui.Login(text); });
}

bool WebServicesUIManager::Logout()
{
    return AskUI(false, [](auto& ui) { return ui.Logout(); });
}

bool WebServicesUIManager::ShowAccountSettings()
{
    return AskUI(false, [](auto& ui) { return ui.ShowAccountSettings(); });
}

bool WebServicesUIManager::IsLoginInProgress() const
{
    return AskUI(false, [](auto& ui) { return ui.IsLoginInProgress(); });
}

// Not operations of the plugin's user interface: they work without one.
bool WebServicesUIManager::IsLoggedIn() const
{
    return AskClient(false, [](auto& client) { return client.IsLoggedIn(); });
}

bool WebServicesUIManager::IsLoginValid() const
{
    return AskClient(false, [](auto& client) { return client.IsLoginValid(); });
}

void WebServicesUIManager::AddObserver(IWebServicesUIObserver* observer)
{
    AskUI([&](auto& ui) { ui.AddObserver(observer); });
}

void WebServicesUIManager::RemoveObserver(IWebServicesUIObserver* observer)
{
    AskUI([&](auto& ui) { ui.RemoveObserver(observer); });
}

} // namespace Halvorix::WebServicesUI
