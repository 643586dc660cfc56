#include "../../include/SSOServerManager.h"
#include "Forward.h"

namespace Halvorix::SSOServices {

std::shared_ptr<WebServices::IRsaCryptor> SSOServicesManager::GetRsaCryptor()
{
    return AskModule(nullptr, [](auto& module) { return module.GetRsaCryptor(); });
}

void SSOServicesManager::SetRsaCryptor(std::shared_ptr<WebServices::IRsaCryptor> cryptor)
{
    AskModule([&](auto& module) { module.SetRsaCryptor(cryptor); });
}

} // namespace Halvorix::SSOServices
