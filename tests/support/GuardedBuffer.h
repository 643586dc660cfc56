#pragma once

#include <cstddef>
#include <string>

namespace HxSSOTest {

/// A caller's buffer between units that nobody may write to.
template <class Unit>
class GuardedBuffer {
public:
    explicit GuardedBuffer(int capacity)
        : capacity(static_cast<std::size_t>(capacity)),
          units(this->capacity + 2 * Guard, static_cast<Unit>(Fill))
    {
    }

    Unit* Data() { return units.data() + Guard; }

    /// The leading units, whatever they are.
    std::basic_string<Unit> First(std::size_t count) const { return units.substr(Guard, count); }

    /// All units of the capacity.
    std::basic_string<Unit> Content() const { return First(capacity); }

    /// What a buffer holds into which nothing was written.
    std::basic_string<Unit> Untouched() const
    {
        return std::basic_string<Unit>(capacity, static_cast<Unit>(Fill));
    }

    bool GuardsIntact() const
    {
        std::basic_string<Unit> const guard(Guard, static_cast<Unit>(Fill));
        return units.substr(0, Guard) == guard && units.substr(Guard + capacity) == guard;
    }

private:
    static constexpr std::size_t Guard = 8;
    static constexpr char Fill = '#';

    std::size_t capacity;
    std::basic_string<Unit> units;
};

} // namespace HxSSOTest
