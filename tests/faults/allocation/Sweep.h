#pragma once

#include <functional>

namespace Faults {

/// An operation that is to be tried with each of its allocations failing. What
/// it works on is held by the one who fills this in.
struct Operation {
    /// Sets up what it works on, from nothing; nothing fails meanwhile.
    std::function<void()> prepare = [] {};
    std::function<void()> run;
    /// Expects what it gives if nothing fails.
    std::function<void()> expectGood = [] {};
    /// Expects what may be if an allocation failed and no exception tells it.
    std::function<void()> expectToldFailure = nullptr; // as expectGood, if there is none
    /// Uses what it worked on after std::bad_alloc came out.
    std::function<void()> useAfterwards = [] {};
    /// Drops all of it again.
    std::function<void()> discard = [] {};
    /// What a library under this one leaves behind at most when it fails.
    long blocksThatOthersLose = 0;
};

/// Fails the first allocation, then the second and so on, until the operation
/// comes to its end; once with that allocation failing alone, once with all
/// that follow. Only std::bad_alloc comes out, nothing leaks, the library's lock
/// is free, and the same again without a failure is good. The number of
/// allocations that failed is printed.
void FailEachAllocation(Operation const& operation);

} // namespace Faults
