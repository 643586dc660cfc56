// Signing in and out.

#include <sstream>
#include <string>
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

Answer NobodySignedIn()
{
    return ReasonInPluginLog(Status::Provider,
                             Failed(Status::Provider, "nobody signed in",
                                    "try again; the plugin's log tells the reason"));
}

/// In the browser that the plugin opens.
Answer LoginInBrowser(UserInterface& userInterface, std::string const& hint)
{
    TellProgress("The browser opens; sign in there. Without a browser here, as over SSH: Ctrl-C, "
                 "and hxsso login --device");
    return userInterface.Begin().Login(ToWide(hint).c_str()) ? Answer() : NobodySignedIn();
}

/// In one that the user opens.
Answer LoginAtAddress(WebServicesManager& manager, std::string const& hint)
{
    std::vector<wchar_t> address(LongestAddress);
    LoginErrorEx error = LoginErrorEx::Preset;
    int value = 0;
    if (!manager.InitiateLogin(ToWide(hint).c_str(), address.data(), LongestAddress, error, value))
        return NobodySignedIn();
    TellProgress("Open this address in a browser on this machine, to which it comes back:");
    TellProgress(ToUtf8(address.data()));
    return manager.CompleteLogin() ? Answer() : NobodySignedIn();
}

/// What the open plugin gives for another device: the address, the code, and perhaps an address
/// with the code in it.
std::vector<std::string> LinesForDevice(std::wstring const& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(ToUtf8(text));
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// On any device, such as a telephone, while this one waits.
Answer LoginOnDevice(WebServicesManager& manager, std::string const& hint)
{
    constexpr int onAnotherDevice = 1;
    std::vector<wchar_t> text(LongestAddress);
    LoginError error = LoginError::Preset;
    int value = 0;
    if (!manager.InitiateLogin(ToWide(hint).c_str(), onAnotherDevice, text.data(), LongestAddress,
                               error, value))
        return NobodySignedIn();
    auto const lines = LinesForDevice(text.data());
    // Another plugin may take no notice of the number.
    if (lines.size() < 2)
        return Failed(Status::Provider, "the sign-on plugin offers no sign-in on another device",
                      "run 'hxsso login' where there is a browser");
    TellProgress("On any device with a browser, open this address:");
    TellProgress(lines[0]);
    TellProgress("and enter this code:");
    TellProgress(lines[1]);
    if (lines.size() > 2)
        TellProgress("or open this one, which has the code in it:");
    for (std::size_t i = 2; i < lines.size(); ++i)
        TellProgress(lines[i]);
    TellProgress("Waiting; Ctrl-C ends the sign-in");
    return manager.CompleteLogin() ? Answer() : NobodySignedIn();
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

/// The provider may renew the login for it, and what it gives then must not be lost.
bool Restores(SignOn const& session)
{
    InterruptsHeldBack const heldBack;
    return session.Manager().RestoreLogin();
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
    if (options.Has("--device") && options.Has("--no-browser"))
        return Failed(Status::WrongUse, "--device and --no-browser do not go together", "give one");
    UserInterface userInterface; // ends after the session
    SignOn const session(options.Value("--server"));
    if (session.Obstacle().status != Status::Done)
        return session.Obstacle();
    // Who names a user may mean another one.
    if (!options.Has("--hint") && Restores(session))
        return SignedIn(session, true);
    EndOnInterrupt("\nhxsso: the sign-in was ended\n");
    std::string const hint = options.Value("--hint");
    WebServicesManager& manager = session.Manager();
    Answer answer = options.Has("--device")       ? LoginOnDevice(manager, hint)
                    : options.Has("--no-browser") ? LoginAtAddress(manager, hint)
                                                  : LoginInBrowser(userInterface, hint);
    if (answer.status != Status::Done)
        return answer;
    if (EndsWithThisProcess())
        return ReasonInPluginLog(Status::Provider,
                                 Failed(Status::Provider, "the login cannot be stored",
                                        "see that this user may write to the plugin's store"),
                                 "The login is known");
    return SignedIn(session, false);
}

Answer Logout(Options const& options)
{
    SignOn const session(options.Value("--server"));
    if (session.Obstacle().status != Status::Done)
        return session.Obstacle();
    WebServicesManager& manager = session.Manager();
    std::string const issuer = Issuer();
    Answer answer;
    answer.result = AsJson(UserOf(manager));
    answer.result["server"] = TextOrNull(NameOfServer(manager));
    answer.result["issuer"] = TextOrNull(issuer);
    // Also while nobody seems to be signed in: a login that was set aside is forgotten, too.
    if (!manager.Logout())
        return ReasonInPluginLog(Status::Provider,
                                 session.IsSignedIn()
                                     ? Failed(Status::Provider, "the user is still signed in",
                                              "the plugin's log tells the reason")
                                     : session.NobodySignedIn());
    // The user is signed out all the same.
    Answer const left = ReasonInPluginLog(Status::Done, {}, "The refresh token was forgotten");
    answer.error = left.error;
    answer.remedy = left.remedy;
    answer.text = "Signed out" + (issuer.empty() ? issuer : " at " + issuer) + '\n';
    return answer;
}

} // namespace Halvorix::HxSSO
