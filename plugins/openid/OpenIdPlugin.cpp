// The factory: one session, which all interfaces share.

#include <memory>

#include <plugin/Plugin.h>

#include "openid/interfaces/Interfaces.h"

namespace Halvorix::OpenId {

namespace {

using namespace SSOServices;

class Factory : public ISSOClientFactory {
public:
    Factory() : log(std::make_shared<LogFile>()), session(OpenSession(log)) {}

    std::shared_ptr<ISSOLogManager> GetSSOLogManager() override { return logManager; }
    std::shared_ptr<ISSOClientModule> GetSSOClientModule() override { return module; }
    std::shared_ptr<ISSOClient> GetSSOClient() override { return client; }
    std::shared_ptr<ISSOClientUI> GetSSOClientUI() override { return ui; }
    std::shared_ptr<ISSOClientPrivate> GetSSOClientPrivate() override { return trusted; }
    std::shared_ptr<ISSOServerManager> GetSSOServerManager() override { return server; }

private:
    std::shared_ptr<LogFile> const log;
    std::shared_ptr<Session> const session;
    std::shared_ptr<ISSOLogManager> const logManager = MakeLogManager(log);
    std::shared_ptr<ISSOClientModule> const module = MakeClientModule(session);
    std::shared_ptr<ISSOClient> const client = MakeClient(session);
    std::shared_ptr<ISSOClientUI> const ui = MakeClientUI(session);
    std::shared_ptr<ISSOClientPrivate> const trusted = MakeClientPrivate(session);
    std::shared_ptr<ISSOServerManager> const server = MakeServerManager();
};

} // namespace

} // namespace Halvorix::OpenId

std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory()
{
    // Never destroyed: the library asks it up to the end of the process.
    static auto const& factory = *new auto(std::make_shared<Halvorix::OpenId::Factory>());
    return factory;
}
