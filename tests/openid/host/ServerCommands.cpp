#include <memory>

#include <SSOServerManager.h>
#include <plugin/Defaults.h>

#include "openid/host/Commands.h"

using Halvorix::SSOServices::SSOServerManager;
using Halvorix::SSOServices::SSOServicesManager;
using Halvorix::WebServices::RsaCryptorDefaults;

void AddServer(Commands& commands)
{
    using std::chrono::milliseconds;
    commands["Server.GetSSOServerAppFile"] = [](Arguments&) {
        return TextOf(&SSOServerManager::GetSSOServerAppFile);
    };
    commands["Server.GetSSOServerAppExeFile"] = [](Arguments&) {
        return TextOf(&SSOServerManager::GetSSOServerAppExeFile);
    };
    commands["Server.StartSSOServerProcess"] = [](Arguments&) {
        long long id = 7;
        return SSOServerManager::StartSSOServerProcess(milliseconds(1), id);
    };
    commands["Server.IsSSOServerProcessRunning"] = [](Arguments&) {
        long long id = 7;
        return SSOServerManager::IsSSOServerProcessRunning(id) ||
               SSOServerManager::IsSSOServerProcessRunning();
    };
    commands["Server.IsSSOServerProcessReady"] = [](Arguments&) {
        return SSOServerManager::IsSSOServerProcessReady();
    };
    commands["Server.QuitSSOServerProcess"] = [](Arguments&) {
        return SSOServerManager::QuitSSOServerProcess(milliseconds(1));
    };
    commands["Server.QuitAllSSOServerProcesses"] = [](Arguments&) {
        return SSOServerManager::QuitAllSSOServerProcesses(milliseconds(1));
    };
    // Whether the one that was set comes back, and none before.
    commands["Services.SetRsaCryptor"] = [](Arguments&) {
        auto const cryptor = std::make_shared<RsaCryptorDefaults>();
        bool const none = SSOServicesManager::GetRsaCryptor() == nullptr;
        SSOServicesManager::SetRsaCryptor(cryptor);
        bool const same = SSOServicesManager::GetRsaCryptor() == cryptor;
        SSOServicesManager::SetRsaCryptor(nullptr);
        return none && same && cryptor.use_count() == 1;
    };
}
