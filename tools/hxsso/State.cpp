// Who is signed in, and where one can be. Nothing here asks the network.

#include <SSOClientPrivate.h>

#include "common/Report.h"
#include "hxsso/Commands.h"
#include "hxsso/PluginTexts.h"
#include "hxsso/SignOn.h"
#include "hxsso/Text.h"

namespace Halvorix::HxSSO {

namespace {

using SSOServices::SSOClientPrivate;
using WebServices::WebServicesManager;

/// A plugin whose numbers have no end is passed over.
constexpr int MostServers = 1000;

std::string Line(char const* name, std::string const& text)
{
    return text.empty() ? text : std::string(name) + Tools::Presentable(text) + '\n';
}

std::string TextIn(Json::Value const& state, char const* member)
{
    return state[member].isString() ? state[member].asString() : std::string();
}

std::string TimeIn(Json::Value const& state, char const* member)
{
    // As far as a calendar goes.
    constexpr std::int64_t most = 253402300799;
    return state[member].isInt64() && state[member].asInt64() > 0 && state[member].asInt64() <= most
               ? AsTime(state[member].asInt64())
               : std::string();
}

std::string Joined(std::string const& name, std::string const& issuer)
{
    return name.empty() || issuer.empty() ? name + issuer : name + ", " + issuer;
}

} // namespace

Answer TellStatus(Options const& options)
{
    SignOn const session(options.Value("--server"));
    if (session.Obstacle().status != Status::Done)
        return session.Obstacle();
    WebServicesManager const& manager = session.Manager();
    bool const isSignedIn = session.IsSignedIn();
    if (!isSignedIn) {
        Answer why = session.NobodySignedIn();
        if (why.status != Status::NotSignedIn)
            return why;
    }
    User const user = UserOf(manager);
    std::string const name = NameOfServer(manager), issuer = Issuer();
    Json::Value const state = SessionState();
    std::string const clientId = TextIn(state, "clientId"), since = TimeIn(state, "signedInAt");
    Json::Value const refreshable =
        state["refreshable"].isBool() ? state["refreshable"] : Json::Value();
    std::int64_t const tokenEnd = manager.GetOAuth2TokenExpiryDate();
    std::int64_t const loginEnd = manager.GetLoginExpiryDate();

    Answer answer;
    answer.result = AsJson(user);
    answer.result["signedIn"] = isSignedIn;
    answer.result["server"] = TextOrNull(name);
    answer.result["issuer"] = TextOrNull(issuer);
    answer.result["clientId"] = TextOrNull(clientId);
    answer.result["signedInAt"] = TextOrNull(since);
    answer.result["loginExpiresAt"] = TimeOrNull(loginEnd);
    answer.result["tokenExpiresAt"] = TimeOrNull(tokenEnd);
    answer.result["refreshable"] = refreshable;

    answer.status = isSignedIn ? Status::Done : Status::NotSignedIn;
    answer.text = isSignedIn ? "Signed in as " + Described(user) + '\n' : "Not signed in\n";
    answer.text += Line("server  ", Joined(name, issuer)) + Line("client  ", clientId);
    if (isSignedIn) {
        answer.text += Line("since   ", since);
        if (tokenEnd != 0)
            answer.text += Line("token   ", "until " + AsTime(tokenEnd));
        if (loginEnd != 0)
            answer.text +=
                Line("login   ", "until " + AsTime(loginEnd) + ", since there is no refresh token");
    }
    return answer;
}

Answer WhoAmI(Options const& options)
{
    SignOn const session(options.Value("--server"));
    if (session.Obstacle().status != Status::Done)
        return session.Obstacle();
    if (!session.IsSignedIn())
        return session.NobodySignedIn();
    User const user = UserOf(session.Manager());
    Answer answer;
    answer.result = AsJson(user);
    answer.result["claims"] = Claims();
    std::string const& name = !user.loginName.empty() ? user.loginName
                              : !user.email.empty()   ? user.email
                                                      : user.id;
    answer.text = Tools::Presentable(name) + '\n';
    return answer;
}

Answer ListServers(Options const&)
{
    SignOn const session({});
    if (session.Obstacle().status != Status::Done)
        return session.Obstacle();
    WebServicesManager& manager = session.Manager();
    auto const usual = manager.GetServer();
    Answer answer;
    answer.result["servers"] = Json::Value(Json::arrayValue);
    for (int number = 0; number < MostServers; ++number) {
        auto const server = static_cast<WebServices::Server>(number);
        std::string const name = ToUtf8(SSOClientPrivate::ServerToServerName(server));
        if (name.empty() || !manager.SetServer(server))
            break;
        bool const isSignedIn = session.IsSignedIn();
        if (!isSignedIn) {
            Answer why = session.NobodySignedIn();
            if (why.status != Status::NotSignedIn)
                return why;
        }
        std::string const issuer = Issuer();
        Json::Value entry = AsJson(isSignedIn ? UserOf(manager) : User());
        entry["server"] = name;
        entry["issuer"] = TextOrNull(issuer);
        entry["isDefault"] = server == usual;
        entry["signedIn"] = isSignedIn;
        answer.result["servers"].append(entry);
        answer.text += std::string(server == usual ? "* " : "  ") +
                       Tools::Presentable(Joined(name, issuer)) + ": " +
                       (isSignedIn ? Described(UserOf(manager)) : "not signed in") + '\n';
    }
    return answer;
}

} // namespace Halvorix::HxSSO
