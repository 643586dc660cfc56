// A plugin that has every interface and writes no operation of its own.

#include <filesystem>
#include <fstream>

#include <plugin/Defaults.h>

#include "framework/Variable.h"

namespace {

using namespace Halvorix::SSOServices;

class Factory : public SSOClientFactoryDefaults {
public:
    std::shared_ptr<ISSOLogManager> GetSSOLogManager() override
    {
        return std::make_shared<SSOLogManagerDefaults>();
    }
    std::shared_ptr<ISSOClientModule> GetSSOClientModule() override
    {
        return std::make_shared<SSOClientModuleDefaults>();
    }
    std::shared_ptr<ISSOClient> GetSSOClient() override
    {
        return std::make_shared<SSOClientDefaults>();
    }
    std::shared_ptr<ISSOClientUI> GetSSOClientUI() override
    {
        return std::make_shared<SSOClientUIDefaults>();
    }
    std::shared_ptr<ISSOClientPrivate> GetSSOClientPrivate() override
    {
        return std::make_shared<SSOClientPrivateDefaults>();
    }
    std::shared_ptr<ISSOServerManager> GetSSOServerManager() override
    {
        return std::make_shared<SSOServerManagerDefaults>();
    }
};

} // namespace

std::shared_ptr<ISSOClientFactory> GetSSOClientFactory()
{
    // So that a test knows that the answers are these.
    std::ofstream(std::filesystem::u8path(Rig::Variable("HXSSO_PLUGIN_RECORD")),
                  std::ios::binary | std::ios::app)
        << "[\"GetSSOClientFactory\"]\n";
    return std::make_shared<Factory>();
}
