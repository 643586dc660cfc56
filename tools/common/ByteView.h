#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Halvorix::Tools {

/// The bytes of a file that may be damaged or made to harm: each read is
/// checked, and one beyond the end gives nothing.
class ByteView {
public:
    explicit ByteView(std::string_view content) : bytes(content) {}

    std::uint64_t Size() const { return bytes.size(); }

    bool Holds(std::uint64_t offset, std::uint64_t size) const
    {
        return offset <= bytes.size() && size <= bytes.size() - offset;
    }

    /// Little-endian, as all systems of this library are.
    std::optional<std::uint64_t> Number(std::uint64_t offset, unsigned size) const
    {
        if (!Holds(offset, size))
            return std::nullopt;
        std::uint64_t number = 0;
        for (unsigned i = 0; i < size; ++i)
            number |= std::uint64_t{static_cast<unsigned char>(bytes[offset + i])} << (8 * i);
        return number;
    }

    /// 0 beyond the end.
    std::uint64_t NumberOrZero(std::uint64_t offset, unsigned size) const
    {
        return Number(offset, size).value_or(0);
    }

    /// A terminated text that is fit to be shown; empty if it is too long for a
    /// name or runs beyond the end.
    std::string Name(std::uint64_t offset) const
    {
        constexpr std::size_t longest = 512;
        if (offset >= bytes.size())
            return {};
        std::string_view const rest = bytes.substr(offset, longest);
        std::size_t const end = rest.find('\0');
        std::string name(rest.substr(0, end == std::string_view::npos ? 0 : end));
        for (char& unit : name)
            if (unit < ' ' || unit > '~')
                unit = '?';
        return name;
    }

    bool Contains(std::string_view text) const
    {
        return bytes.find(text) != std::string_view::npos;
    }

private:
    std::string_view bytes;
};

} // namespace Halvorix::Tools
