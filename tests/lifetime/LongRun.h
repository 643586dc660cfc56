#pragma once

namespace Rig {

/// How often a long run is looked at.
constexpr int Samples = 10;

} // namespace Rig
