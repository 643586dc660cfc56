#pragma once

#include <cstddef>
#include <cstring>
#include <string>

namespace Halvorix::SSOServices {

/// Overwrites memory for good, even where nobody reads it again.
inline void Wipe(void* memory, std::size_t size)
{
    // Read anew each time: for all that the compiler knows it is something else
    // than memset by now, with an effect that must not be dropped.
    static void* (*volatile const fill)(void*, int, std::size_t) = std::memset;
    fill(memory, 0, size);
}

/// Overwrites all that a text has room for, and leaves it empty.
template <class Unit>
void Wipe(std::basic_string<Unit>& text)
{
    text.resize(text.capacity()); // which never allocates
    Wipe(text.data(), text.size() * sizeof(Unit));
    text.clear();
}

/// A text that leaves nothing of itself behind when it ends or is assigned to.
template <class Unit>
class SecretText {
public:
    using Text = std::basic_string<Unit>;

    SecretText() = default;
    explicit SecretText(Text const& other) : text(other) {}
    /// Leaves nothing in `other`: a short text lies in the string itself and would
    /// stay there.
    explicit SecretText(Text&& other) noexcept
    {
        text.swap(other);
        Wipe(other);
    }
    SecretText(SecretText const&) = default;
    SecretText& operator=(SecretText const& other)
    {
        *this = other.text;
        return *this;
    }
    SecretText& operator=(Text const& other)
    {
        *this = Text(other);
        return *this;
    }
    /// Leaves nothing in `other` either.
    SecretText& operator=(Text&& other) noexcept
    {
        // Short texts lie in the strings themselves, where a swap with a longer one would
        // leave them: so the old text goes first, with the memory that it has.
        Wipe(text);
        Text().swap(text);
        text.swap(other);
        Wipe(other);
        return *this;
    }
    ~SecretText() { Wipe(text); }

    Text const& operator*() const { return text; }
    Text const* operator->() const { return &text; }
    /// To be filled, within the room that it has: growth would leave a copy.
    Text& operator*() { return text; }
    Text* operator->() { return &text; }

private:
    Text text;
};

} // namespace Halvorix::SSOServices
