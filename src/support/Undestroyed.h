#pragma once

namespace Halvorix::SSOServices {

/// Construction without destruction, for what threads of the host may use until the
/// process is gone, and destructors that run after the library's own end.
template <class Value>
union Undestroyed {
    constexpr Undestroyed() : value() {}
    ~Undestroyed() {}
    Undestroyed(Undestroyed const&) = delete;
    Undestroyed& operator=(Undestroyed const&) = delete;
    Value value;
};

} // namespace Halvorix::SSOServices
