// A call that the plugin answers, and a value class of the library.

#include <iostream>
#include <string>

#include <OAuth2Token.h>
#include <SSOServerManager.h>
#include <WebServicesManager.h>

int main()
{
    using namespace Halvorix;
    WebServices::OAuth2TokenSpec const spec(WebServices::OAuth2TokenTypeDefault, L"data:read");
    WebServices::OAuth2TokenSpec const copy(spec);
    std::cout << "copies are equal: " << (copy == spec) << std::endl;

    WebServices::WebServicesManager::Initialize();
    long long process = 0;
    bool const running = SSOServices::SSOServerManager::IsSSOServerProcessRunning(process);
    std::cout << "server: running " << running << ", process " << process << std::endl;
    WebServices::WebServicesManager::Uninitialize();
    return running ? 0 : 1;
}
