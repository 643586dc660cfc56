#pragma once

#include <benchmark/benchmark.h>

namespace Bench {

/// Repetitions come by the command line; a benchmark's name is its row of the
/// table, a bar, and "floor" or "ours".
int RunBenchmarks(int argc, char** argv);

} // namespace Bench
