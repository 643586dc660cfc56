#include "faults/allocation/Sweep.h"

#include <exception>
#include <future>
#include <iostream>
#include <new>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <SSOClientPrivate.h>
#include "faults/allocation/Allocator.h"
#include "framework/System.h"

namespace Faults {

namespace {

enum class Ended { Well, WithBadAlloc, Otherwise };

// Far more than any operation here allocates.
constexpr int Endless = 100000;

Ended RunOnce(Operation const& operation, int n, FailureMode mode, bool& failed)
{
    // LeakSanitizer could only be told to pass over all that the other library leaves.
    CountedByUsAlone const counted(operation.blocksThatOthersLose > 0);
    Failure const failure(n, mode);
    Ended ended = Ended::Well;
    try {
        operation.run();
    } catch (std::bad_alloc const&) {
        ended = Ended::WithBadAlloc;
    } catch (...) {
        ended = Ended::Otherwise;
    }
    failed = Failure::HasHappened();
    return ended;
}

void RunWell(Operation const& operation)
{
    operation.prepare();
    operation.run();
    operation.expectGood();
    operation.discard();
}

bool LockIsFree()
{
    std::packaged_task<void()> take(
        [] { Halvorix::SSOServices::SSOClientPrivate::GetModuleDirPath(std::wstring()); });
    std::future<void> const taken = take.get_future();
    std::thread thread(std::move(take));
    if (taken.wait_for(std::chrono::seconds(20)) != std::future_status::ready) {
        std::cerr << "the lock is not free" << std::endl;
        std::_Exit(9); // the thread cannot be ended
    }
    thread.join();
    return true;
}

// On Windows the runtime releases blocks that this executable allocates, and the
// other way round, unseen.
bool SeesEveryBlock() { return !Rig::IsWindows(); }

// False at the end of the sweep.
bool FailsAt(Operation const& operation, int n, FailureMode mode)
{
    // Not by a stream: that would leave something in the locale of the moment.
    SCOPED_TRACE("allocation " + std::to_string(n) +
                 (mode == FailureMode::Once ? "" : " and all that follow"));
    long const liveBefore = LiveBlocks();
    bool failed = false;
    operation.prepare();
    Ended const ended = RunOnce(operation, n, mode, failed);
    EXPECT_NE(ended, Ended::Otherwise) << "another exception than std::bad_alloc";
    EXPECT_TRUE(failed || ended == Ended::Well);
    if (ended == Ended::WithBadAlloc)
        operation.useAfterwards();
    else if (failed && operation.expectToldFailure)
        operation.expectToldFailure();
    else
        operation.expectGood();
    EXPECT_TRUE(LockIsFree());
    operation.discard();
    RunWell(operation);
    if (SeesEveryBlock()) {
        long const left = LiveBlocks() - liveBefore;
        EXPECT_GE(left, 0);
        EXPECT_LE(left, operation.blocksThatOthersLose) << "leaked";
    }
    return failed;
}

} // namespace

void FailEachAllocation(Operation const& operation)
{
    // What is made once and kept, such as facets and the tables of the runtime.
    RunWell(operation);
    RunWell(operation);
    LockIsFree(); // makes a manager if there is none
    operation.discard();
    if (!SeesEveryBlock())
        std::cout << "leaks are not counted: the runtime has operators of its own" << std::endl;
    int count = 0;
    for (FailureMode const mode : {FailureMode::Once, FailureMode::FromThereOn}) {
        int n = 1;
        while (n < Endless && !testing::Test::HasFatalFailure() && FailsAt(operation, n, mode))
            ++n;
        EXPECT_LT(n, Endless);
        count += n - 1;
        if (testing::Test::HasFailure())
            break;
    }
    // On Windows an operation may allocate by the runtime alone.
    if (SeesEveryBlock()) {
        EXPECT_GT(count, 0);
    }
    std::cout << "allocations failed: " << count << std::endl;
}

} // namespace Faults
