#pragma once

#include <utility>

namespace Halvorix::OpenId {

/// Does something at the end of a block, however that comes.
template <class Action>
class AtEnd {
public:
    explicit AtEnd(Action action) : action(std::move(action)) {}
    ~AtEnd() { action(); }
    AtEnd(AtEnd const&) = delete;
    AtEnd& operator=(AtEnd const&) = delete;

private:
    Action action;
};

} // namespace Halvorix::OpenId
