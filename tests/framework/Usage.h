#pragma once

#include <cstddef>

namespace Rig {

/// What the system counts for this process.
struct Usage {
    std::size_t memory; // bytes: resident and its own on Linux, committed on Windows
    int handles;        // open file descriptors or handles
    int threads;
};

Usage CurrentUsage();

} // namespace Rig
