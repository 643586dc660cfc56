// Paths of a length, with a variable at the front or one in every ten elements.

#include <string>

#include "framework/Main.h"
#include "inner/ResolverInTree.h"

using Bench::ResolverInTree;

namespace {

constexpr wchar_t const* Few = L"%SSOServerAppPath%/";
constexpr wchar_t const* Element = L"element\\";

std::wstring Path(std::int64_t length, bool many)
{
    std::wstring text = Few;
    for (int i = 1; text.size() < static_cast<std::size_t>(length); ++i)
        text += many && i % 10 == 0 ? Few : Element;
    return text;
}

void Expansion_Floor(benchmark::State& state, bool many)
{
    std::wstring const text = Path(state.range(0), many);
    for (auto _ : state) {
        std::wstring copy;
        copy.reserve(text.size());
        for (wchar_t const unit : text)
            copy.push_back(unit);
        benchmark::DoNotOptimize(copy.data());
    }
}

void Expansion_Ours(benchmark::State& state, bool many)
{
    ResolverInTree tree("{}");
    std::wstring const text = Path(state.range(0), many);
    for (auto _ : state) {
        std::wstring path = text;
        tree.resolver.ExpandPathVariables(path);
        benchmark::DoNotOptimize(path.data());
    }
}

void Lengths(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(100)->Arg(10000)->Arg(1000000);
}

BENCHMARK_CAPTURE(Expansion_Floor, few, false)
    ->Name("expansion, one variable|floor")
    ->Apply(Lengths);
BENCHMARK_CAPTURE(Expansion_Ours, few, false)->Name("expansion, one variable|ours")->Apply(Lengths);
BENCHMARK_CAPTURE(Expansion_Floor, many, true)
    ->Name("expansion, many variables|floor")
    ->Apply(Lengths);
BENCHMARK_CAPTURE(Expansion_Ours, many, true)
    ->Name("expansion, many variables|ours")
    ->Apply(Lengths);

} // namespace
