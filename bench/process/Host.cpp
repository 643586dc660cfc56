// The smallest host: from nothing to a token. `bench-host ours` asks the library,
// `bench-host floor` does by hand what every such road has: the locale, the two
// files, the plugin and its procedure. Prints the nanoseconds to the first answer.

#include <cstdio>
#include <locale>
#include <string>

#include <boost/locale/generator.hpp>

#include <OAuth2Token.h>
#include <WebServicesManager.h>

#include "framework/Floor.h"
#include "framework/System.h"

using namespace Bench;
using namespace Halvorix::WebServices;

namespace {

bool FirstAnswerOfFloor()
{
    std::locale::global(boost::locale::generator()(""));
    FloorReadJsonFile(ThisFolder() / "SSOClient.config");
    FloorReadJsonFile(ThisFolder() / "bench-server" / "SSOVersionCompatibility.config");
    ConnectFloor(LoadPlugin(PluginFile()));
    return FloorIsLoggedIn();
}

bool FirstAnswerOfLibrary()
{
    WebServicesManager::Initialize(false);
    return WebServicesManager::GetInstance()->IsLoggedIn();
}

bool TokenOfFloor()
{
    Token token;
    return FloorTokenRequest("data:read user:profile", token) && !token.text.empty();
}

bool TokenOfLibrary()
{
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"data:read user:profile");
    OAuth2Token token;
    return WebServicesManager::GetInstance()->GetOAuth2AccessToken(spec, token, nullptr, false) &&
           token.IsValid();
}

} // namespace

int main(int argc, char** argv)
{
    bool const floor = argc > 1 && std::string(argv[1]) == "floor";
    auto const start = OwnTime();
    bool const loggedIn = floor ? FirstAnswerOfFloor() : FirstAnswerOfLibrary();
    auto const end = OwnTime();
    if (!loggedIn || !(floor ? TokenOfFloor() : TokenOfLibrary()))
        return 1;
    std::printf("%lld\n", static_cast<long long>((end - start).count()));
    return 0;
}
