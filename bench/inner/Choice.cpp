// The choice of the plugin from a long file, none of whose modules fits: then it
// is repeated with each question, and looks at all of them.

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <json/reader.h>
#include <json/value.h>

#include "framework/Main.h"
#include "inner/ResolverInTree.h"

using Bench::ResolverInTree;

namespace {

std::string VersionText(std::int64_t i)
{
    std::int64_t const mixed = i * 7919 % 100003;
    return "1." + std::to_string(mixed / 1000) + "." + std::to_string(mixed % 1000);
}

std::string File(std::int64_t count)
{
    std::string text = "{\n    \"ssoClientPlugin\": [";
    for (std::int64_t i = 0; i < count; ++i) {
        text += i == 0 ? "\n" : ",\n";
        text += R"(        {
            "module": "Plugin.dll",
            "modulePath": "%SSOServerAppPath%/plugin",
            "version": ")" +
                VersionText(i) + R"(",
            "compatibleSsoServicesVersion": {"minVersion": "9.1", "maxVersion": "9.22.00.1800"}
        })";
    }
    return text + "\n    ]\n}\n";
}

struct Module {
    std::string module;
    std::string path;
    std::array<long, 3> version;
    std::string minVersion;
    std::string maxVersion;
};

void Choice_Floor(benchmark::State& state)
{
    ResolverInTree const tree(File(state.range(0)));
    for (auto _ : state) {
        std::ifstream stream(tree.root / "SSOVersionCompatibility.config", std::ios::binary);
        std::ostringstream content;
        content << stream.rdbuf();
        Json::Value root;
        Json::Reader().parse(content.str(), root);
        std::vector<Module> modules;
        for (Json::Value const& element : root["ssoClientPlugin"]) {
            Module module;
            module.module = element["module"].asString();
            module.path = element["modulePath"].asString();
            std::string const version = element["version"].asString();
            char* at = nullptr;
            module.version[0] = std::strtol(version.c_str(), &at, 10);
            module.version[1] = std::strtol(at + 1, &at, 10);
            module.version[2] = std::strtol(at + 1, &at, 10);
            Json::Value const& range = element["compatibleSsoServicesVersion"];
            module.minVersion = range["minVersion"].asString();
            module.maxVersion = range["maxVersion"].asString();
            modules.push_back(std::move(module));
        }
        std::stable_sort(modules.begin(), modules.end(),
                         [](Module const& a, Module const& b) { return a.version > b.version; });
        benchmark::DoNotOptimize(modules.data());
    }
}

void Choice_Ours(benchmark::State& state)
{
    ResolverInTree tree(File(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(tree.resolver.GetSSOClientPluginModule());
    if (!tree.resolver.GetSSOClientPluginModule().empty())
        state.SkipWithError("a module fits");
}

void Counts(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(10)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Choice_Floor)->Name("choice among modules|floor")->Apply(Counts);
BENCHMARK(Choice_Ours)->Name("choice among modules|ours")->Apply(Counts);

} // namespace
