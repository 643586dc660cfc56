#include <WebServicesUIManager.h>

#include <atomic>

#include <WebServicesManager.h>
#include "api/InitializeCount.h"
#include "api/Plugin.h"
#include "api/SpecText.h"

namespace Halvorix::WebServicesUI {

using namespace SSOServices;
using WebServices::WebServicesManager;

namespace {

InitializeCount initializations;
std::atomic<WebServicesUIManager*> instance{nullptr};

} // namespace

struct WebServicesUIManager::Implementation {};

WebServicesUIManager::WebServicesUIManager() : implementation(new Implementation) {}

WebServicesUIManager::~WebServicesUIManager() { delete implementation; }

bool WebServicesUIManager::Initialize() { return Initialize(false); }

bool WebServicesUIManager::Initialize(bool flag)
{
    if (initializations.Add() && instance == nullptr) {
        if (auto const module = Plugin<ISSOClientModule>())
            module->InitializeUI(flag, false);
        WebServicesManager::Initialize(flag);
        instance = new WebServicesUIManager;
    }
    return true;
}

bool WebServicesUIManager::Initialize(bool flag, bool) { return Initialize(flag); }

bool WebServicesUIManager::Initialize(WebServices::OAuth2TokenSpec const& spec)
{
    if (initializations.Add() && instance == nullptr) {
        std::string const text = SpecText(spec);
        if (auto const module = Plugin<ISSOClientModule>())
            module->InitializeUI(text.c_str());
        WebServicesManager::Initialize(spec);
        instance = new WebServicesUIManager;
    }
    return true;
}

bool WebServicesUIManager::Uninitialize()
{
    if (initializations.Remove()) {
        delete instance.exchange(nullptr);
        if (auto const module = Plugin<ISSOClientModule>())
            module->UninitializeUI();
        WebServicesManager::Uninitialize();
        // Also while the host still holds an Initialize of its own, on purpose.
        SSOClientManager::ReleaseInstance();
        initializations.Reset();
    }
    return true;
}

WebServicesUIManager* WebServicesUIManager::GetInstance() { return instance; }

bool WebServicesUIManager::IsInitialized() { return initializations.IsAny(); }

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
    auto const ui = Plugin<ISSOClientUI>();
    return ui ? ui->GetHostApplicationWindow() : 0;
}

void WebServicesUIManager::SetHostApplicationWindow(unsigned long long window)
{
    if (auto const ui = Plugin<ISSOClientUI>())
        ui->SetHostApplicationWindow(window);
}

bool WebServicesUIManager::Login()
{
    auto const ui = Plugin<ISSOClientUI>();
    return ui ? ui->Login() : false;
}

bool WebServicesUIManager::Login(wchar_t const* text)
{
    auto const ui = Plugin<ISSOClientUI>();
    return ui ? ui->Login(text) : false;
}

bool WebServicesUIManager::Logout()
{
    auto const ui = Plugin<ISSOClientUI>();
    return ui ? ui->Logout() : false;
}

bool WebServicesUIManager::ShowAccountSettings()
{
    auto const ui = Plugin<ISSOClientUI>();
    return ui ? ui->ShowAccountSettings() : false;
}

bool WebServicesUIManager::IsLoginInProgress() const
{
    auto const ui = Plugin<ISSOClientUI>();
    return ui ? ui->IsLoginInProgress() : false;
}

// Not operations of the plugin's user interface: they work without one.
bool WebServicesUIManager::IsLoggedIn() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsLoggedIn() : false;
}

bool WebServicesUIManager::IsLoginValid() const
{
    auto const client = Plugin<ISSOClient>();
    return client ? client->IsLoginValid() : false;
}

void WebServicesUIManager::AddObserver(IWebServicesUIObserver* observer)
{
    if (auto const ui = Plugin<ISSOClientUI>())
        ui->AddObserver(observer);
}

void WebServicesUIManager::RemoveObserver(IWebServicesUIObserver* observer)
{
    if (auto const ui = Plugin<ISSOClientUI>())
        ui->RemoveObserver(observer);
}

} // namespace Halvorix::WebServicesUI
