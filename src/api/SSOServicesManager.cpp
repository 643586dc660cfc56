#include <SSOServerManager.h>
#include "api/Plugin.h"

namespace Halvorix::SSOServices {

std::shared_ptr<WebServices::IRsaCryptor> SSOServicesManager::GetRsaCryptor()
{
    auto const module = Plugin<ISSOClientModule>();
    return module ? module->GetRsaCryptor() : nullptr;
}

void SSOServicesManager::SetRsaCryptor(std::shared_ptr<WebServices::IRsaCryptor> cryptor)
{
    if (auto const module = Plugin<ISSOClientModule>())
        module->SetRsaCryptor(cryptor);
}

} // namespace Halvorix::SSOServices
