// What is particular about lock files on Windows.

#include <gmock/gmock.h>

#include "openid/TestFolder.h"
#include "openid/platform/Files.h"

namespace Halvorix::OpenId {

using namespace std::chrono_literals;
using Rig::TestFolder;
using Rig::WriteTo;

TEST(FileLock, LetsNobodyPutAnotherFileInItsPlace)
{
    TestFolder const folder;
    std::string reason;
    auto lock = FileLock::Acquire(folder / "lock", 0ms, reason);
    ASSERT_NE(lock, nullptr) << reason;
    WriteTo(folder / "another", "");
    std::error_code refused;

    EXPECT_FALSE(remove(folder / "lock", refused));
    EXPECT_TRUE(refused);
    rename(folder / "lock", folder / "moved", refused);
    EXPECT_TRUE(refused);
    rename(folder / "another", folder / "lock", refused);
    EXPECT_TRUE(refused);

    lock.reset();
    EXPECT_TRUE(remove(folder / "lock", refused)) << refused.message();
}

} // namespace Halvorix::OpenId
