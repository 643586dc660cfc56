#include "host/SupportFileSearchPaths.h"

#include <mutex>
#include <utility>

#include "support/ProcessEnd.h"
#include "support/Undestroyed.h"

namespace Halvorix::SSOServices {

namespace {

struct State {
    std::mutex mutex;
    std::vector<std::wstring> paths;
};

Undestroyed<State> undestroyed;

} // namespace

std::vector<std::wstring> SupportFileSearchPaths()
{
    State& state = undestroyed.value;
    auto const lock = LockBriefly(state.mutex);
    return state.paths;
}

void StoreSupportFileSearchPaths(std::vector<std::wstring> paths)
{
    State& state = undestroyed.value;
    auto const lock = LockBriefly(state.mutex);
    state.paths = std::move(paths);
}

} // namespace Halvorix::SSOServices
