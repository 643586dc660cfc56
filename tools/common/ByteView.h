#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Halvorix::Tools {

/// What bytes are read from.
class ByteSource {
public:
    ByteSource() = default;
    virtual ~ByteSource() = default;
    ByteSource(ByteSource const&) = delete;
    ByteSource& operator=(ByteSource const&) = delete;

    virtual std::uint64_t Size() const = 0;
    /// Whether all of them came. The range lies within the size.
    virtual bool Read(std::uint64_t offset, char* to, std::size_t size) = 0;
};

/// A text in memory.
class TextSource : public ByteSource {
public:
    explicit TextSource(std::string_view content) : text(content) {}
    std::uint64_t Size() const override { return text.size(); }
    bool Read(std::uint64_t offset, char* to, std::size_t size) override;

private:
    std::string_view text;
};

/// The bytes of a file that may be damaged or made to harm: each read is
/// checked, and one beyond the end gives nothing. A few blocks are kept, whatever
/// the file's size.
class ByteView {
public:
    explicit ByteView(ByteSource& byteSource) : source(byteSource), size(byteSource.Size()) {}

    std::uint64_t Size() const { return size; }

    bool Holds(std::uint64_t offset, std::uint64_t count) const
    {
        return offset <= size && count <= size - offset;
    }

    bool Bytes(std::uint64_t offset, void* to, std::size_t count) const;

    /// A record as the system's headers declare it.
    template <class Record>
    bool Read(std::uint64_t offset, Record& record) const
    {
        return Bytes(offset, &record, sizeof(record));
    }

    /// Little-endian, as all systems of this library are.
    std::optional<std::uint64_t> Number(std::uint64_t offset, unsigned count) const;

    /// 0 beyond the end.
    std::uint64_t NumberOrZero(std::uint64_t offset, unsigned count) const
    {
        return Number(offset, count).value_or(0);
    }

    /// A terminated text; empty if it is longer than that or runs beyond the end.
    std::string Name(std::uint64_t offset, std::size_t longest = 512) const;

    /// Which of the texts it holds, read through once.
    std::vector<bool> Contains(std::vector<std::string_view> const& texts) const;

private:
    static constexpr std::size_t BlockSize = 16384;
    struct Block {
        std::uint64_t number = UINT64_MAX;
        std::vector<char> bytes;
    };
    Block const* BlockOf(std::uint64_t offset) const;

    ByteSource& source;
    std::uint64_t size;
    mutable std::array<Block, 16> blocks;
};

} // namespace Halvorix::Tools
