#include "common/ByteView.h"

#include <algorithm>
#include <cstring>

namespace Halvorix::Tools {

bool TextSource::Read(std::uint64_t offset, char* to, std::size_t size)
{
    std::memcpy(to, text.data() + offset, size);
    return true;
}

// Null if it cannot be read.
ByteView::Block const* ByteView::BlockOf(std::uint64_t offset) const
{
    std::uint64_t const number = offset / BlockSize;
    Block& block = blocks[number % blocks.size()];
    if (block.number == number)
        return &block;
    std::uint64_t const begin = number * BlockSize;
    block.bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(BlockSize, size - begin)));
    bool const isRead = source.Read(begin, block.bytes.data(), block.bytes.size());
    block.number = isRead ? number : UINT64_MAX;
    return isRead ? &block : nullptr;
}

bool ByteView::Bytes(std::uint64_t offset, void* to, std::size_t count) const
{
    if (!Holds(offset, count))
        return false;
    char* target = static_cast<char*>(to);
    while (count > 0) {
        Block const* const block = BlockOf(offset);
        std::size_t const at = offset % BlockSize;
        if (block == nullptr)
            return false;
        std::size_t const part = std::min(count, block->bytes.size() - at);
        std::memcpy(target, block->bytes.data() + at, part);
        target += part;
        offset += part;
        count -= part;
    }
    return true;
}

std::optional<std::uint64_t> ByteView::Number(std::uint64_t offset, unsigned count) const
{
    unsigned char bytes[8];
    if (count > sizeof(bytes) || !Bytes(offset, bytes, count))
        return std::nullopt;
    std::uint64_t number = 0;
    for (unsigned i = 0; i < count; ++i)
        number |= std::uint64_t{bytes[i]} << (8 * i);
    return number;
}

std::string ByteView::Name(std::uint64_t offset, std::size_t longest) const
{
    std::string name;
    while (offset < size && name.size() < longest) {
        Block const* const block = BlockOf(offset);
        if (block == nullptr)
            return {};
        std::size_t const at = offset % BlockSize;
        std::size_t const part = std::min(longest - name.size(), block->bytes.size() - at);
        char const* const begin = block->bytes.data() + at;
        void const* const end = std::memchr(begin, '\0', part);
        if (end != nullptr)
            return name.append(begin, static_cast<char const*>(end));
        name.append(begin, part);
        offset += part;
    }
    return {};
}

std::vector<bool> ByteView::Contains(std::vector<std::string_view> const& texts) const
{
    std::vector<bool> found(texts.size());
    std::size_t longest = 1;
    for (std::string_view const text : texts)
        longest = std::max(longest, text.size());
    constexpr std::size_t step = 1U << 20U;
    std::string part;
    for (std::uint64_t at = 0; at < size; at += step) {
        // The end of the part before, where a text may have begun.
        std::uint64_t const begin = at < longest ? 0 : at - longest;
        part.resize(static_cast<std::size_t>(std::min<std::uint64_t>(at + step, size) - begin));
        if (!source.Read(begin, part.data(), part.size()))
            break;
        for (std::size_t i = 0; i < texts.size(); ++i)
            found[i] = found[i] || part.find(texts[i]) != std::string::npos;
    }
    return found;
}

} // namespace Halvorix::Tools
