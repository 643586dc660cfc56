#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "framework/HostProgram.h"

// The same executable is the test and, started by it in a process and a
// directory tree of its own, the host that is tested.
int main(int argc, char** argv)
{
    if (argc > 2 && argv[1] == std::string("--host-program"))
        return Rig::RunHostProgram(argv[2], std::vector<std::string>(argv + 3, argv + argc));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
