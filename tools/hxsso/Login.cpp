// Signing in and out.

#include <vector>

#include <WebServicesUIManager.h>

#include "hxsso/Commands.h"
#include "hxsso/PluginLog.h"
#include "hxsso/PluginTexts.h"
#include "hxsso/SignOn.h"
#include "hxsso/System.h"
#include "hxsso/Text.h"

namespace Halvorix::HxSSO {

namespace {

using namespace WebServices;
using WebServicesUI::WebServicesUIManager;

/// Far more than a provider's address has; the plugin does not cut one.
constexpr int LongestAddress = 32 * 1024;

/// Its end releases the plugin, and makes the library forget which file leads to it: nothing may
/// be asked after that.
class UserInterface {
public:
    UserInterface() = default;
    UserInterface(UserInterface const&) = delete;
    UserInterface& operator=(UserInterface const&) = delete;
    ~UserInterface()
    {
        if (WebServicesUIManager::IsInitialized())
            WebServicesUIManager::Uninitialize();
    }

    WebServicesUIManager& Begin()
    {
        WebServicesUIManager::Initialize(false);
        return *WebServicesUIManager::GetInstance();
    }
};

/// In the browser that the plugin opens.
bool LoginInBrowser(UserInterface& userInterface, std::string const& hint)
{
    TellProgress("The browser opens; sign in there. Without a browser here: Ctrl-C, and "
                 "hxsso login --no-browser");
    return userInterface.Begin().Login(ToWide(hint).c_str());
}

/// In one that the user opens.
bool LoginAtAddress(WebServicesManager& manager, std::string const& hint)
{
    std::vector<wchar_t> address(LongestAddress);
    LoginErrorEx error = LoginErrorEx::Preset;
    int value = 0;
    if (!manager.InitiateLogin(ToWide(hint).c_str(), address.data(), LongestAddress, error, value))
        return false;
    TellProgress("Open this address in a browser on this machine, to which it comes back:");
    TellProgress(ToUtf8(address.data()));
    return manager.CompleteLogin();
}

Answer SignedIn(SignOn const& session, bool wasSignedIn)
{
    User const user = UserOf(session.Manager());
    std::string const issuer = Issuer();
    Answer answer;
    answer.result = AsJson(user);
    answer.result["server"] = TextOrNull(NameOfServer(session.Manager()));
    answer.result["issuer"] = TextOrNull(issuer);
    answer.result["wasSignedIn"] = wasSignedIn;
    answer.text = std::string(wasSignedIn ? "Already signed in as " : "Signed in as ") +
                  Described(user) + (issuer.empty() ? issuer : " at " + issuer) + '\n';
    return answer;
}

/// A login that could not be written is of no use here.
bool EndsWithThisProcess()
{
    Json::Value const stored = SessionState()["stored"];
    return stored.isBool() && !stored.asBool();
}

} // namespace

Answer Login(Options const& options)
{
    UserInterface userInterface; // ends after the session
    SignOn const session(options.Value("--server"));
    if (session.Obstacle().status != Status::Done)
        return session.Obstacle();
    // Who names a user may mean another one.
    if (!options.Has("--hint") && session.Manager().RestoreLogin())
        return SignedIn(session, true);
    EndOnInterrupt("\nhxsso: the sign-in was ended\n");
    std::string const hint = options.Value("--hint");
    bool const done = options.Has("--no-browser") ? LoginAtAddress(session.Manager(), hint)
                                                  : LoginInBrowser(userInterface, hint);
    if (done && EndsWithThisProcess())
        return ReasonInPluginLog(Status::Provider,
                                 Failed(Status::Provider, "the login cannot be stored",
                                        "see that this user may write to the plugin's store"),
                                 "The login is known");
    if (done)
        return SignedIn(session, false);
    return ReasonInPluginLog(Status::Provider,
                             Failed(Status::Provider, "nobody signed in",
                                    "try again; the plugin's log tells the reason"));
}

Answer Logout(Options const& options)
{
    SignOn const session(options.Value("--server"));
    if (session.Obstacle().status != Status::Done)
        return session.Obstacle();
    WebServicesManager& manager = session.Manager();
    if (!manager.IsLoggedIn())
        return session.NobodySignedIn();
    std::string const issuer = Issuer();
    Answer answer;
    answer.result = AsJson(UserOf(manager));
    answer.result["server"] = TextOrNull(NameOfServer(manager));
    answer.result["issuer"] = TextOrNull(issuer);
    if (!manager.Logout())
        return session.Refusal("the user is still signed in");
    answer.text = "Signed out" + (issuer.empty() ? issuer : " at " + issuer) + '\n';
    return answer;
}

} // namespace Halvorix::HxSSO
