#include <gtest/gtest.h>

#include "platform/Platform.h"

namespace Platform = Halvorix::Platform;

// The process's own memory is a regular file there whose beginning cannot be read.
TEST(Files, ThatCannotBeReadAreEmpty)
{
    EXPECT_EQ(Platform::ReadRegularFile(L"/proc/self/mem", std::ios::binary), "");
    EXPECT_EQ(Platform::ReadRegularFile(L"/proc/self", std::ios::binary), "");
    EXPECT_EQ(Platform::ReadRegularFile(L"/no/such/file", std::ios::binary), "");
    EXPECT_NE(Platform::ReadRegularFile(L"/proc/self/status", std::ios::binary), "");
}
