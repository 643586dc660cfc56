#pragma once

#include <chrono>
#include <map>
#include <string>

#include "PluginTypes.h"
#include "SlotOrder.h"

namespace Halvorix::SSOServices {

/// The operations behind SSOClientPrivate, each with the arguments and the
/// result of the public function of its name. Called with no lock held, from
/// any thread.
class ISSOClientPrivate {
public:
    virtual ~ISSOClientPrivate() = default;
    /// @name Operations
    /// @{

    /// As the public function of this name.
    virtual std::wstring GetLoginInfo(BufferTransformCallback callback) = 0;
    virtual void Reserved1() {} ///< Never called.
    HXSSO_OVERLOADS_2(virtual std::wstring GetUrl(std::wstring name) = 0,
                      virtual std::wstring GetUrl(WebServices::WebServicesUrlCode code) = 0);
    virtual std::map<std::wstring, std::wstring> GetUrlOverrides(WebServices::Server server) = 0;
    virtual bool SetUrlOverrides(WebServices::Server server,
                                 std::map<std::wstring, std::wstring> const& overrides) = 0;
    virtual bool ClearUrlOverrides(WebServices::Server server) = 0;
    virtual std::wstring ServerToServerName(WebServices::Server server) = 0;
    virtual WebServices::Server ServerNameToServer(std::wstring name) = 0;
    virtual std::wstring Encrypt(std::wstring const& text) = 0;
    virtual void GetCurrentConfigurationConsumerKey(std::wstring&, std::wstring&) = 0;
    virtual std::wstring GetSettingsPath() = 0;
    virtual std::wstring GetLoginStateFile() = 0;
    virtual void Reserved2() {} ///< Never called.
    virtual void Reserved3() {} ///< Never called.
    virtual void Reserved4() {} ///< Never called.
    virtual StdUtil::RetrySchedule GetActiveOAuth2TokenRefreshRetrySchedule() = 0;
    virtual bool SetOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule const& schedule) = 0;
    HXSSO_OVERLOADS_2(virtual std::wstring GetLoginStateCacheFile(std::wstring,
                                                                  WebServices::Server server,
                                                                  bool) = 0,
                      virtual std::wstring GetLoginStateCacheFile(std::wstring,
                                                                  WebServices::Server server) = 0);
    virtual bool RestoreLogin(bool) = 0;
    virtual void RaiseEvent(WebServices::WebServicesPrivateCore::WebServicesEvent event, bool) = 0;
    virtual std::string
    ToJsonString(WebServices::WebServicesConfiguration const* configuration) = 0;
    virtual bool FromJsonString(WebServices::WebServicesConfiguration* configuration,
                                std::string const& text) = 0;
    virtual bool Equals(WebServices::WebServicesConfiguration const& left,
                        WebServices::WebServicesConfiguration const& right) = 0;
    virtual void LockLoginStateFile() = 0;
    virtual void UnlockLoginStateFile() = 0;
    virtual bool Ping(std::map<std::string, std::string>& answers) = 0;
    virtual void Reserved5() {} ///< Never called.
    virtual void ClearEventQueue() = 0;
    virtual bool FreezeSSOServerProcess(BufferTransformCallback callback) = 0;
    virtual std::chrono::seconds GetKillFrozenServerTimeout() = 0;
    virtual bool SetKillFrozenServerTimeout(std::chrono::seconds timeout) = 0;
    virtual std::string GetSessionState() = 0;
    /// @}
};

} // namespace Halvorix::SSOServices
