#pragma once

#include <string>

#include "HxSSOServicesExport.h"
#include "plugin/PluginTypes.h"

namespace Halvorix::WebServices {
class OAuth2TokenSpec;
}

namespace Halvorix::WebServicesUI {

/// The interactive sign-on: dialogs, which are the plugin's, and the host's
/// window. It wraps the life of WebServicesManager.
///
/// Threads, exceptions, texts and the answers without a plugin are as in WebServicesManager; a
/// plugin may demand more of the thread that shows a dialog. After an Initialize that threw,
/// Uninitialize still ends one WebServicesManager::Initialize. If the load or the plugin's
/// InitializeUI threw, that one may be the host's own: initialize it again.
class HXSSO_API WebServicesUIManager {
public:
    /// @name Life
    /// Counted like WebServicesManager, on its own. Initialize and Uninitialize belong
    /// to one thread at a time; the last Uninitialize must not overlap any other call
    /// into the library, since it also ends the library's plugin manager: the next call
    /// loads the plugin again.
    /// @{

    /// The same as Initialize(false).
    static bool Initialize();
    /// The first call hands the flag to the plugin, then runs
    /// WebServicesManager::Initialize(flag). Always true, even without a plugin.
    static bool Initialize(bool flag);
    /// The same as Initialize(flag): the second argument is ignored.
    static bool Initialize(bool flag, bool ignored);
    /// As Initialize(bool), but hands the spec to the plugin instead of the flag.
    static bool Initialize(WebServices::OAuth2TokenSpec const& spec);
    /// The last call tells the plugin, runs WebServicesManager::Uninitialize and
    /// releases the plugin manager. One too many changes nothing. Always true.
    static bool Uninitialize();
    /// The instance, owned by the library; null before Initialize and after the
    /// last Uninitialize.
    static WebServicesUIManager* GetInstance();
    /// Whether Initialize ran more often than Uninitialize.
    static bool IsInitialized();
    /// @}

    /// Does nothing: dialogs are the plugin's.
    static void EnablePlatformIndependentMessageBoxStyle(bool enable);
    /// Always true.
    static bool IsPlatformIndependentMessageBoxStyleEnabled();
    /// Does nothing: the library shows no text of its own. The argument is not read.
    void SetCurrentLocale(wchar_t const* locale);
    /// Always the empty text and 0; a buffer that is not null, of a capacity
    /// above 0 (wchar_t units), receives the terminator.
    int GetCurrentLocale(wchar_t* buffer, int capacity) const;

    /// The native window handle that the plugin stores.
    unsigned long long GetHostApplicationWindow();
    /// Hands the native window handle of the host to the plugin.
    void SetHostApplicationWindow(unsigned long long window);
    bool Login();                    ///< The plugin's dialog.
    bool Login(wchar_t const* text); ///< The plugin's dialog.
    bool Logout();                   ///< The plugin's answer.
    bool ShowAccountSettings();      ///< The plugin's dialog.
    bool IsLoginInProgress() const;  ///< The plugin's answer.
    bool IsLoggedIn() const;         ///< As WebServicesManager::IsLoggedIn.
    bool IsLoginValid() const;       ///< As WebServicesManager::IsLoginValid.
    /// As WebServicesManager::AddObserver.
    void AddObserver(IWebServicesUIObserver* observer);
    void RemoveObserver(IWebServicesUIObserver* observer); ///< Ends what AddObserver began.

private:
    WebServicesUIManager();
    ~WebServicesUIManager();
    WebServicesUIManager(WebServicesUIManager const&) = delete;
    WebServicesUIManager& operator=(WebServicesUIManager const&) = delete;

    struct Implementation;
    Implementation* implementation;
};

/// Scripted sign-on, without any Initialize. Arguments go to the plugin unseen; without a
/// plugin the answer is false.
class HXSSO_API WebServicesAutomation {
public:
    /// The plugin's answer. By convention `first` is the login name and `second` the password;
    /// what the flags mean is the plugin's.
    static bool Login(wchar_t const* first, wchar_t const* second, bool flag);
    /// Likewise; `text` receives a message for the user, and without a plugin stays as it was.
    static bool Login(wchar_t const* first, wchar_t const* second, bool flag, bool secondFlag,
                      std::wstring& text);
};

} // namespace Halvorix::WebServicesUI
