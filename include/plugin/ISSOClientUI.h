#pragma once

#include <string>

#include "PluginTypes.h"
#include "SlotOrder.h"

namespace Halvorix::SSOServices {

/// The operations behind WebServicesUIManager and WebServicesAutomation. Called
/// with no lock held, on the host's thread.
class ISSOClientUI {
private:
    /// Keeps a position among the overloads of Login that no call can reach.
    struct ReservedLogin {};

public:
    virtual ~ISSOClientUI() = default;
    virtual void Reserved1() {} ///< Never called.
    virtual void Reserved2() {} ///< Never called.
    /// The native window handle of the host, 0 for none.
    virtual unsigned long long GetHostApplicationWindow() = 0;
    /// @name Operations
    /// @{

    /// As the public method of this name.
    virtual void SetHostApplicationWindow(unsigned long long window) = 0;
    HXSSO_OVERLOADS_5(virtual bool Login(wchar_t const*, wchar_t const*, bool, bool,
                                         std::wstring&) = 0,
                      virtual void Login(ReservedLogin){},
                      virtual bool Login(wchar_t const*, wchar_t const*, bool) = 0,
                      virtual bool Login(wchar_t const*) = 0, virtual bool Login() = 0);
    virtual bool IsLoginInProgress() = 0;
    virtual bool Logout() = 0;
    virtual bool ShowAccountSettings() = 0;
    virtual void Reserved3() {} ///< Never called.
    virtual void Reserved4() {} ///< Never called.
    virtual void AddObserver(WebServicesUI::IWebServicesUIObserver* observer) = 0;
    virtual void Reserved5() {} ///< Never called.
    virtual void RemoveObserver(WebServicesUI::IWebServicesUIObserver* observer) = 0;
    /// @}
};

} // namespace Halvorix::SSOServices
