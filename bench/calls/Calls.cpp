// Calls that reach the plugin, each beside the least that it could be.

#include <string>

#include <OAuth2Token.h>
#include <WebServicesManager.h>

#include "calls/Connected.h"
#include "framework/Floor.h"
#include "framework/Main.h"

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

// One thread, two and four, by the processor time of all of them: how long a thread waits
// depends on what else the machine does.
void Threads(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Threads(1)->Threads(2)->Threads(4)->MeasureProcessCPUTime();
}

BENCHMARK(IsLoggedIn_Floor)->Name("forwarded call|floor")->Apply(Threads);
BENCHMARK(IsLoggedIn_Ours)->Name("forwarded call|ours")->Apply(Threads);
BENCHMARK(TokenRequest_Floor)->Name("token request|floor");
BENCHMARK(TokenRequest_Ours)->Name("token request|ours");

} // namespace

int main(int argc, char** argv)
{
    Connect();
    return RunBenchmarks(argc, argv);
}
