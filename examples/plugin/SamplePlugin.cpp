// A whole client plugin, with everything in memory: no server process, no
// network, no dialogs. To be copied and filled with a real service.
//
// What a plugin's documentation has to tell its hosts, here for the sample:
//
// Releasing. Results of SignRequest, SignUrlForBrowser, GetUserInfo,
//   GetLoginCookie, GetServiceEntitlement and GetServiceEntitlementEx come from
//   new[]. Host, library and plugin share one heap: release them with delete[].
// Accounts. Login names "zoe" and "adam", password "sample" (State.cpp). Where a
//   login name is expected, null and the empty text mean the first account.
// Signing in. RestoreLogin does it silently, until the user has logged out.
//   InitiateLogin names the account, CompleteLogin() signs it in; with cookies
//   the account is the one whose id is the value of the cookie "sample-user".
// Numbers. Server 0 production, 1 staging. WebServicesUrlCode 0 login, 1 logout,
//   2 account, 3 token. ServiceEntitlement 1 entitled, 0 not. A login error of 0
//   is none, with value 200; otherwise the error is as preset, with value 404.
//   Events as in State.h. All other numbers are taken as they come.
// Dates. Seconds since 1970, UTC; 0 for none.
// Tokens. Live for an hour, and are issued when asked for. Available: issued
//   and not expired. Expired: issued and past their date.
// Flags and callbacks. Flags ask for dialogs or haste, of which there are none;
//   callbacks protect what leaves the process, which nothing does. Both are
//   ignored unless a comment says otherwise.
// Log. The file that HXSSO_SAMPLE_LOG names, else "WebServices.log" in the
//   system's temporary folder.
// Observers. Kept until they are removed. How they are called is an agreement
//   between a service and its hosts, and this sample has none.

#include "Interfaces.h"
#include "State.h"

namespace Sample {

namespace {

// The same objects each time: the library asks anew on every call.
class Factory : public ISSOClientFactory {
public:
    std::shared_ptr<ISSOLogManager> GetSSOLogManager() override { return logManager; }
    std::shared_ptr<ISSOClientModule> GetSSOClientModule() override { return module; }
    std::shared_ptr<ISSOClient> GetSSOClient() override { return client; }
    std::shared_ptr<ISSOClientUI> GetSSOClientUI() override { return clientUI; }
    std::shared_ptr<ISSOClientPrivate> GetSSOClientPrivate() override { return clientPrivate; }
    std::shared_ptr<ISSOServerManager> GetSSOServerManager() override { return serverManager; }

private:
    std::shared_ptr<Session> const session = std::make_shared<Session>();
    std::shared_ptr<ISSOLogManager> const logManager = MakeLogManager();
    std::shared_ptr<ISSOClientModule> const module = MakeClientModule(session);
    std::shared_ptr<ISSOClient> const client = MakeClient(session);
    std::shared_ptr<ISSOClientUI> const clientUI = MakeClientUI(session);
    std::shared_ptr<ISSOClientPrivate> const clientPrivate = MakeClientPrivate(session);
    std::shared_ptr<ISSOServerManager> const serverManager = MakeServerManager(session);
};

} // namespace

} // namespace Sample

std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory()
{
    // A host that ends and begins again loads the plugin twice: it finds its
    // session as it left it.
    static auto const factory = std::make_shared<Sample::Factory>();
    return factory;
}
