#include "framework/Main.h"

#include <thread>

namespace Bench {

int RunBenchmarks(int argc, char** argv)
{
    // A process that has never had two threads counts references without atomic
    // operations, which no real host is.
    std::thread([] {}).join();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace Bench
