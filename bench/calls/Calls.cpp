// Calls that reach the plugin, each beside the least that it could be.

#include <string>

#include <OAuth2Token.h>
#include <WebServicesManager.h>

#include "../framework/Floor.h"
#include "../framework/Main.h"
#include "Connected.h"

using namespace Bench;
using namespace Halvorix::WebServices;

namespace {

void IsLoggedIn_Floor(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(FloorIsLoggedIn());
}

void IsLoggedIn_Ours(benchmark::State& state)
{
    WebServicesManager const& manager = *WebServicesManager::GetInstance();
    for (auto _ : state)
        benchmark::DoNotOptimize(manager.IsLoggedIn());
}

void GetUserId_Floor(benchmark::State& state)
{
    wchar_t buffer[64];
    for (auto _ : state)
        benchmark::DoNotOptimize(FloorGetUserId(buffer, 64));
}

void GetUserId_Ours(benchmark::State& state)
{
    WebServicesManager const& manager = *WebServicesManager::GetInstance();
    wchar_t buffer[64];
    for (auto _ : state)
        benchmark::DoNotOptimize(manager.GetUserId(buffer, 64));
}

void TokenRequest_Floor(benchmark::State& state)
{
    std::string const scope = "data:read user:profile";
    Token token;
    for (auto _ : state)
        benchmark::DoNotOptimize(FloorTokenRequest(scope, token));
}

void TokenRequest_Ours(benchmark::State& state)
{
    WebServicesManager& manager = *WebServicesManager::GetInstance();
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"data:read user:profile");
    OAuth2Token token;
    for (auto _ : state)
        benchmark::DoNotOptimize(manager.GetOAuth2AccessToken(spec, token, nullptr, false));
}

// One thread, two and four.
void Threads(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Threads(1)->Threads(2)->Threads(4)->UseRealTime();
}

BENCHMARK(IsLoggedIn_Floor)->Name("forwarded call, IsLoggedIn|floor")->Apply(Threads);
BENCHMARK(IsLoggedIn_Ours)->Name("forwarded call, IsLoggedIn|ours")->Apply(Threads);
BENCHMARK(GetUserId_Floor)->Name("forwarded call, GetUserId|floor")->Apply(Threads);
BENCHMARK(GetUserId_Ours)->Name("forwarded call, GetUserId|ours")->Apply(Threads);
BENCHMARK(TokenRequest_Floor)->Name("token request|floor");
BENCHMARK(TokenRequest_Ours)->Name("token request|ours");

} // namespace

int main(int argc, char** argv)
{
    Connect();
    return RunBenchmarks(argc, argv);
}
