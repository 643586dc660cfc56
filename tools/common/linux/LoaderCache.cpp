#include "common/linux/LoaderCache.h"

#include <string_view>

#include "common/Files.h"

namespace Halvorix::Tools {

namespace {

constexpr std::string_view Mark = "glibc-ld.so.cache1.1";
constexpr std::string_view OldMark = "ld.so-1.7.0";
constexpr std::uint64_t MostNames = 262144;

// As it lies in the file.
struct Head {
    char mark[20];
    std::uint32_t nameCount;
    std::uint32_t textSize;
    std::uint32_t flags;
    std::uint32_t extensions;
    std::uint32_t unused[3];
};
static_assert(sizeof(Head) == 48);

struct Entry {
    std::int32_t flags;
    std::uint32_t name; // both as places in the file
    std::uint32_t file;
    std::uint32_t systemVersion;
    std::uint64_t hardware;
};
static_assert(sizeof(Entry) == 24);

// Behind a list of the form before, if there is one: sixteen bytes, then twelve for
// each entry, rounded up to eight.
std::uint64_t BeginOf(ByteView const& bytes)
{
    char mark[OldMark.size()] = {};
    if (!bytes.Bytes(0, mark, sizeof(mark)) || std::string_view(mark, sizeof(mark)) != OldMark)
        return 0;
    return (16 + bytes.NumberOrZero(12, 4) * 12 + 7) / 8 * 8;
}

} // namespace

LoaderCache ReadLoaderCache(ByteView const& bytes)
{
    LoaderCache cache;
    std::uint64_t const begin = BeginOf(bytes);
    Head head{};
    if (!bytes.Read(begin, head) || std::string_view(head.mark, sizeof(head.mark)) != Mark ||
        head.nameCount > MostNames)
        return cache;
    for (std::uint64_t i = 0; i < head.nameCount; ++i) {
        Entry entry{};
        if (!bytes.Read(begin + sizeof(head) + i * sizeof(entry), entry))
            break;
        std::string const name = bytes.Name(begin + entry.name);
        std::string file = bytes.Name(begin + entry.file, 4096);
        // Those for a kind of processor alone come behind the ones for all.
        std::vector<std::string>& files = cache[name];
        if (!name.empty() && !file.empty() && file.front() == '/')
            files.insert(entry.hardware == 0 ? files.begin() : files.end(), std::move(file));
    }
    return cache;
}

LoaderCache const& SystemLoaderCache()
{
    static LoaderCache const cache = [] {
        OpenedFile const opened = OpenFile("/etc/ld.so.cache");
        return opened.bytes == nullptr ? LoaderCache() : ReadLoaderCache(ByteView(*opened.bytes));
    }();
    return cache;
}

} // namespace Halvorix::Tools
