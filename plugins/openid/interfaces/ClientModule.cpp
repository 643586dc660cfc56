// The plugin as a whole.

#include <mutex>

#include <plugin/Defaults.h>

#include "openid/interfaces/HostTexts.h"
#include "openid/interfaces/Interfaces.h"
#include "openid/interfaces/OnSession.h"
#include "openid/interfaces/TokenSpecs.h"

namespace Halvorix::OpenId {

namespace {

using namespace SSOServices;

class OpenIdClientModule : public OnSession<SSOClientModuleDefaults> {
public:
    using OnSession::OnSession;
    using SSOClientModuleDefaults::Initialize;
    using SSOClientModuleDefaults::InitializeUI;

    void Initialize(char const* specJson) override
    {
        Ask([&](Session& session) {
            if (auto const spec = ReadSpec(specJson))
                session.SetDefaultSpec(MeantBy(*spec));
        });
    }
    void InitializeUI(char const* specJson) override { Initialize(specJson); }
    // The user stays signed in. A login that is in progress has nobody left to end it.
    void Uninitialize() override
    {
        Ask([](Session& session) {
            session.CancelAnyLogin();
            session.Events().Clear();
        });
    }

    std::shared_ptr<WebServices::IRsaCryptor> GetRsaCryptor() override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        return cryptor;
    }
    void SetRsaCryptor(std::shared_ptr<WebServices::IRsaCryptor> other) override
    {
        // The one before is released after the lock: its end is the host's code.
        std::lock_guard<std::mutex> const lock(mutex);
        cryptor.swap(other);
    }

    int GetSupportFileSearchPaths(wchar_t* buffer, int capacity) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        return CopyText(searchPaths, buffer, capacity);
    }
    void SetSupportFileSearchPaths(wchar_t const* paths) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        searchPaths = Given(paths);
    }
    int GetProductName(wchar_t* buffer, int capacity) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        return CopyText(productName, buffer, capacity);
    }
    void SetProductName(wchar_t const* name) override
    {
        std::lock_guard<std::mutex> const lock(mutex);
        productName = Given(name);
    }

private:
    std::mutex mutex; ///< Of what follows, which is the hosts' alone.
    std::shared_ptr<WebServices::IRsaCryptor> cryptor;
    std::string searchPaths, productName = "HxSSO OpenID";
};

} // namespace

std::shared_ptr<ISSOClientModule> MakeClientModule(std::shared_ptr<Session> session)
{
    return std::make_shared<OpenIdClientModule>(std::move(session));
}

} // namespace Halvorix::OpenId
