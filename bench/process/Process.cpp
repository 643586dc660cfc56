// Cold starts: each iteration is a process of its own.

#include <chrono>
#include <string>

#include "framework/Main.h"
#include "framework/System.h"

namespace {

// As the host measured it itself, without the start of its process.
void FirstAnswer(benchmark::State& state, std::string const& who)
{
    for (auto _ : state)
        state.SetIterationTime(std::stod(Bench::Run("bench-host", {who})) * 1e-9);
}

void Process(benchmark::State& state, std::string const& who)
{
    for (auto _ : state) {
        auto const start = Bench::TimeWithChildren();
        Bench::Run("bench-host", {who});
        state.SetIterationTime(
            std::chrono::duration<double>(Bench::TimeWithChildren() - start).count());
    }
}

void Few(benchmark::internal::Benchmark* benchmark)
{
    benchmark->UseManualTime()->Iterations(5)->Unit(benchmark::kMicrosecond);
}

BENCHMARK_CAPTURE(FirstAnswer, floor, "floor")->Name("first answer, cold|floor")->Apply(Few);
BENCHMARK_CAPTURE(FirstAnswer, ours, "ours")->Name("first answer, cold|ours")->Apply(Few);
BENCHMARK_CAPTURE(Process, floor, "floor")->Name("whole process to a token|floor")->Apply(Few);
BENCHMARK_CAPTURE(Process, ours, "ours")->Name("whole process to a token|ours")->Apply(Few);

} // namespace

int main(int argc, char** argv) { return Bench::RunBenchmarks(argc, argv); }
