// What the library waits for at the end of the process, by what the system leaves of it.

#include <mutex>

#include <gtest/gtest.h>

#include "platform/OverFakeSystem.h"
#include "support/ProcessEnd.h"

using namespace Halvorix::SSOServices;
using Rig::fakeSystem;

namespace {

class TheEnd : public Rig::OverFakeSystem {
protected:
    ~TheEnd() override { processIsEnding = false; }
    std::mutex mutex;
};

} // namespace

TEST_F(TheEnd, DoesNotWaitForALockOfAThreadThatIsNoMore)
{
    fakeSystem.threadsEndBeforeModules = true;
    mutex.lock();
    processIsEnding = true;
    EXPECT_FALSE(LockBriefly(mutex).owns_lock());
    mutex.unlock();
    EXPECT_TRUE(LockBriefly(mutex).owns_lock());
}

TEST_F(TheEnd, LocksWhereThreadsStillRun)
{
    EXPECT_TRUE(LockBriefly(mutex).owns_lock());
    processIsEnding = true;
    EXPECT_TRUE(LockBriefly(mutex).owns_lock());
}

TEST_F(TheEnd, LetsNoWorkBegin)
{
    EXPECT_TRUE(WorkBeforeTheEnd().MayBegin());
    processIsEnding = true;
    EXPECT_FALSE(WorkBeforeTheEnd().MayBegin());
}
