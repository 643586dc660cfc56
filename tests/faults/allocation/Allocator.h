#pragma once

#include <new>

// The executable's operators new and delete are replaced: they count what is
// alive, and fail when they are told to. Where the C++ runtime is a module with
// operators of its own, what it allocates by itself is not seen.
namespace Faults {

enum class FailureMode {
    Once,        // the n-th allocation alone
    FromThereOn, // as when the memory is used up
};

/// While it lives, the n-th allocation from its construction on fails, counted
/// from 1, with std::bad_alloc. One at a time, and one thread beside it.
class Failure {
public:
    Failure(int n, FailureMode mode);
    ~Failure();
    Failure(Failure const&) = delete;
    Failure& operator=(Failure const&) = delete;

    /// Whether it has come to that.
    static bool HasHappened();
};

/// Blocks that are allocated and not yet released.
long LiveBlocks();

/// While it lives, LeakSanitizer passes over what is allocated: for what is known
/// to be lost, and counted instead.
class CountedByUsAlone {
public:
    explicit CountedByUsAlone(bool doesApply);
    ~CountedByUsAlone();
    CountedByUsAlone(CountedByUsAlone const&) = delete;
    CountedByUsAlone& operator=(CountedByUsAlone const&) = delete;

private:
    [[maybe_unused]] bool const applies;
};

} // namespace Faults
