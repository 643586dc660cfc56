// A forwarded call in a process that has no plugin: in a program of its own,
// since a load is tried once.

#include <cstdio>

#include <SSOClientPrivate.h>
#include <WebServicesManager.h>

#include "framework/Floor.h"
#include "framework/Main.h"

using namespace Bench;
using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServices::WebServicesManager;

namespace {

void FailedLoad_Floor(benchmark::State& state)
{
    std::wstring const file = ThisFolder().wstring() + L"/libHxSSOServices.so.10.22.0.1800";
    for (auto _ : state)
        FloorBanner(file);
}

void FailedLoad_Ours(benchmark::State& state)
{
    WebServicesManager const& manager = *WebServicesManager::GetInstance();
    for (auto _ : state)
        benchmark::DoNotOptimize(manager.IsLoggedIn());
}

// So many and no more: the library keeps each line, and the floor does likewise.
constexpr int Lines = 4000;

BENCHMARK(FailedLoad_Floor)->Name("forwarded call after a failed load|floor")->Iterations(Lines);
BENCHMARK(FailedLoad_Ours)->Name("forwarded call after a failed load|ours")->Iterations(Lines);

} // namespace

int main(int argc, char** argv)
{
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"bench-no-such-file");
    WebServicesManager::Initialize(false);
    if (WebServicesManager::GetInstance()->IsLoggedIn()) {
        std::fputs("there is a plugin\n", stderr);
        return 1;
    }
    return RunBenchmarks(argc, argv);
}
