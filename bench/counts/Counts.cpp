// The hot paths for a profiler that counts instructions: `bench-counts PATH WHO`
// makes a thousand calls inside CountedCalls, which the profiler is told to watch.

#include <cstdio>
#include <string>

#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <WebServicesManager.h>

#include "calls/Connected.h"
#include "framework/Floor.h"

using namespace Bench;
using namespace Halvorix::WebServices;
using Halvorix::SSOServices::SSOClientPrivate;

extern "C" {
__attribute__((noinline)) void CountedCalls(void (*call)())
{
    for (int i = 0; i < 1000; ++i)
        call();
}
}

namespace {

void ForwardedFloor() { FloorIsLoggedIn(); }
void ForwardedOurs()
{
    static WebServicesManager const& manager = *WebServicesManager::GetInstance();
    manager.IsLoggedIn();
}

void TokenFloor()
{
    static std::string const scope = "data:read user:profile";
    static Token token;
    FloorTokenRequest(scope, token);
}

void TokenOurs()
{
    static OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"data:read user:profile");
    static OAuth2Token token;
    WebServicesManager::GetInstance()->GetOAuth2AccessToken(spec, token, nullptr, false);
}

void FailedFloor()
{
    static std::wstring const file = ThisFolder().wstring() + L"/libHxSSOServices.so.10.22.0.1800";
    FloorBanner(file);
}

struct Path {
    char const* name;
    bool connected;
    void (*floor)();
    void (*ours)();
};

constexpr Path Paths[] = {
    {"forwarded", true, ForwardedFloor, ForwardedOurs},
    {"token", true, TokenFloor, TokenOurs},
    {"failed", false, FailedFloor, ForwardedOurs},
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    for (Path const& path : Paths) {
        if (std::string(argv[1]) != path.name)
            continue;
        if (path.connected) {
            Connect();
        } else {
            SSOClientPrivate::SetSSOClientConfigFileOverride(L"bench-no-such-file");
            WebServicesManager::Initialize(false);
        }
        void (*const call)() = std::string(argv[2]) == "floor" ? path.floor : path.ours;
        call(); // what only the first one costs
        CountedCalls(call);
        return 0;
    }
    return 2;
}
