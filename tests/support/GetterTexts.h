#pragma once

#include <cstddef>
#include <string>

namespace HxSSOTest {

/// What a getter answers to a caller that asks for the length first.
template <class Unit, class Object>
std::basic_string<Unit> GetterText(Object const& object, int (Object::*getter)(Unit*, int) const)
{
    int const length = (object.*getter)(nullptr, 0);
    std::basic_string<Unit> text(static_cast<std::size_t>(length) + 1, Unit());
    int const stored = (object.*getter)(text.data(), length + 1);
    text.resize(static_cast<std::size_t>(stored));
    return text;
}

} // namespace HxSSOTest
