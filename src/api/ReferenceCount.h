#pragma once

namespace Halvorix::SSOServices {

/// Counts an Initialize; true if it is the one that has to do something.
inline bool IsFirstInitialize(int& count, bool hasInstance)
{
    ++count;
    return count <= 1 && !hasInstance;
}

/// Counts an Uninitialize; true if it is the one that has to do something.
inline bool IsLastUninitialize(int& count)
{
    if (count < 1)
        return false;
    --count;
    return count <= 0;
}

} // namespace Halvorix::SSOServices
