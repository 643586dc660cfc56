// The plugin's configuration. A byte 1 first: the rest makes one.
//
// Property: what is accepted holds servers whose addresses are secure, ports and times that are in
// range, and a store; what is not ends in a reason and a remedy, a line each.

#include <string>
#include <vector>

#include "fuzz/JsonMaker.h"
#include "fuzz/Property.h"
#include "openid/protocol/Texts.h"
#include "openid/session/Configuration.h"

using namespace Halvorix::OpenId;
using namespace Fuzz;

namespace {

Json::Value MakeConfiguration(JsonMaker& maker)
{
    Json::Value json(Json::objectValue);
    for (unsigned i = maker.Byte() % 3; i > 0; --i) {
        Json::Value server(Json::objectValue);
        server["issuer"] = maker.Seldom() ? maker.Odd() : Json::Value("https://idp.example");
        server["clientId"] = maker.Seldom() ? maker.Odd() : Json::Value("client");
        for (char const* const name : {"scopes", "accountUrl"})
            if (maker.Seldom())
                maker.SetText(server, name);
        for (unsigned j = maker.Byte() % 3; j > 0; --j)
            server["redirectPorts"].append(maker.Seldom() ? maker.Odd()
                                                          : Json::Value(maker.Byte() * 300));
        if (maker.Seldom())
            server["deviceLogin"] = maker.Seldom() ? maker.Odd() : Json::Value(true);
        if (maker.Seldom())
            server[maker.Text()] = maker.Odd();
        json["servers"][maker.Text()] = maker.Seldom() ? maker.Odd() : server;
    }
    for (char const* const name : {"login", "network"})
        if (maker.Byte() % 4 == 0)
            json["timeouts"][name] = maker.Seldom() ? maker.Odd() : Json::Value(maker.Byte());
    if (maker.Byte() % 4 == 0)
        json["store"] = maker.TextValue();
    if (maker.Seldom())
        json[maker.Text()] = maker.Odd();
    return json;
}

void CheckLine(std::string const& line)
{
    Holds(!line.empty() && line.find_first_of("\r\n\x1B") == std::string::npos, "it is a line",
          line);
}

void CheckServer(ServerConfiguration const& server)
{
    Holds(IsSecureUrl(server.issuer), "the issuer is secure", server.issuer);
    Holds(!server.clientId.empty(), "there is a client");
    Holds((' ' + server.scopes + ' ').find(" openid ") != std::string::npos, "openid is asked for",
          server.scopes);
    Holds(server.accountUrl.empty() || IsSecureUrl(server.accountUrl), "the account is secure",
          server.accountUrl);
    for (int const port : server.redirectPorts)
        Holds(port >= 1 && port <= 65535, "it is a port", port);
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static std::vector<std::string> const texts{
        "production", "staging", "openid email", "%LocalAppData%/a", "/a/b", "%Unknown%/c", "a b"};
    auto const configuration =
        ParseConfiguration(Document(data, size, texts, MakeConfiguration), "HxSSOOpenID.json");
    if (!configuration) {
        CheckLine(configuration.Why().reason);
        CheckLine(configuration.Why().remedy);
        return 0;
    }
    Holds(!configuration->servers.empty(), "there is a server");
    for (auto const& [name, server] : configuration->servers)
        CheckServer(server);
    Holds(configuration->loginTimeout.count() > 0 && configuration->networkTimeout.count() > 0,
          "nobody waits forever");
    Holds(configuration->store.is_absolute(), "the store is somewhere");
    for (std::string const& remark : configuration->remarks)
        CheckLine(remark);
    return 0;
}
