#pragma once

namespace Bench {

/// Loads the plugin twice, for the floor by hand and for the library by its own
/// search, and ends the program where one of them answers wrongly: a benchmark
/// of fixed answers would tell nothing.
void Connect();

} // namespace Bench
