#pragma once

#include <atomic>

namespace Halvorix::SSOServices {

/// Counts an Initialize; true if it is the one that has to do something.
inline bool IsFirstInitialize(std::atomic<int>& count, bool hasInstance)
{
    return ++count <= 1 && !hasInstance;
}

/// Counts an Uninitialize; true if it is the one that has to do something.
inline bool IsLastUninitialize(std::atomic<int>& count)
{
    if (count < 1)
        return false;
    return --count <= 0;
}

} // namespace Halvorix::SSOServices
