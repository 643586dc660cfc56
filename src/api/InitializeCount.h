#pragma once

#include <atomic>

namespace Halvorix::SSOServices {

/// How many Initialize calls of a manager no Uninitialize has undone yet. Under no lock: hosts
/// initialise and uninitialise from one thread at a time, and may ask from others meanwhile.
class InitializeCount {
public:
    /// Counts an Initialize; true for the first.
    bool Add() { return ++count <= 1; }

    /// Undoes one, if there is one; true for the last.
    bool Remove() { return count >= 1 && --count <= 0; }

    void Reset() { count = 0; }
    bool IsAny() const { return count > 0; }

private:
    std::atomic<int> count{0};
};

} // namespace Halvorix::SSOServices
