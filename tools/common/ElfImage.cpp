#include <algorithm>

#include "ModuleImage.h"

namespace Halvorix::Tools {

namespace {

enum SegmentType : std::uint64_t { Load = 1, Dynamic = 2 };

enum DynamicTag : std::uint64_t {
    End = 0,
    Needed = 1,
    Hash = 4,
    StringTable = 5,
    SymbolTable = 6,
    RPath = 15,
    RunPath = 29,
    GnuHash = 0x6ffffef5,
    Flags1 = 0x6ffffffb,
};
constexpr std::uint64_t IsProgramFlag = 0x08000000;

std::string MachineName(std::uint64_t machine, bool is64)
{
    switch (machine) {
    case 3:
        return "x86";
    case 62:
        return is64 ? "x86-64" : "x32";
    case 183:
        return "ARM64";
    case 40:
        return "ARM";
    default:
        return "machine type " + std::to_string(machine) + (is64 ? "" : ", 32 bits");
    }
}

class ElfReader {
public:
    explicit ElfReader(ByteView const& elfBytes)
        : bytes(elfBytes), is64(elfBytes.NumberOrZero(4, 1) == 2), word(is64 ? 8 : 4)
    {
    }

    void Read(ModuleImage& image)
    {
        if (!bytes.Holds(0, is64 ? 64 : 52)) {
            image.format = ImageFormat::None;
            return;
        }
        if (bytes.NumberOrZero(5, 1) != 1) {
            image.machine = "a big-endian machine";
            image.isModule = true;
            return;
        }
        image.machine = MachineName(bytes.NumberOrZero(18, 2), is64);
        image.isModule = bytes.NumberOrZero(16, 2) == 3;
        segments = bytes.NumberOrZero(is64 ? 32 : 28, word);
        segmentSize = bytes.NumberOrZero(is64 ? 54 : 42, 2);
        segmentCount = bytes.NumberOrZero(is64 ? 56 : 44, 2);
        if (segmentSize < (is64 ? 56U : 32U) ||
            !bytes.Holds(segments, segmentSize * segmentCount)) {
            image.flaw = "its header is cut short";
            return;
        }
        if (!SegmentsAreWhole())
            image.flaw = "it is cut short: a segment lies beyond its end";
        else if (!ReadDynamicTable(image))
            image.flaw = "its dynamic table cannot be read";
        else if (!ReadExports(image))
            image.flaw = "its symbol table cannot be read";
    }

private:
    std::uint64_t SegmentField(std::uint64_t segment, unsigned at64, unsigned at32) const
    {
        return bytes.NumberOrZero(segments + segment * segmentSize + (is64 ? at64 : at32), word);
    }

    std::uint64_t TypeOf(std::uint64_t segment) const
    {
        return bytes.NumberOrZero(segments + segment * segmentSize, 4);
    }
    std::uint64_t OffsetOfSegment(std::uint64_t segment) const
    {
        return SegmentField(segment, 8, 4);
    }
    std::uint64_t AddressOf(std::uint64_t segment) const { return SegmentField(segment, 16, 8); }
    std::uint64_t SizeOf(std::uint64_t segment) const { return SegmentField(segment, 32, 16); }

    bool SegmentsAreWhole() const
    {
        for (std::uint64_t i = 0; i < segmentCount; ++i)
            if (TypeOf(i) == Load && !bytes.Holds(OffsetOfSegment(i), SizeOf(i)))
                return false;
        return true;
    }

    // Where the file holds what will lie at an address; nothing is found at Size.
    std::uint64_t OffsetOf(std::uint64_t address) const
    {
        for (std::uint64_t i = 0; i < segmentCount; ++i)
            if (TypeOf(i) == Load && address >= AddressOf(i) && address - AddressOf(i) < SizeOf(i))
                return OffsetOfSegment(i) + (address - AddressOf(i));
        return bytes.Size();
    }

    // Twice over the table: names are places in the string table, which may be
    // told behind them.
    bool ReadDynamicTable(ModuleImage& image)
    {
        for (std::uint64_t i = 0; i < segmentCount; ++i) {
            if (TypeOf(i) == Dynamic) {
                dynamic = OffsetOfSegment(i);
                dynamicSize = SizeOf(i);
            }
        }
        if (dynamicSize == 0 || !bytes.Holds(dynamic, dynamicSize))
            return false;
        strings = OffsetOf(Entry(StringTable));
        if (strings == bytes.Size())
            return false;
        for (std::uint64_t at = 0; at + entrySize <= dynamicSize; at += entrySize) {
            std::uint64_t const tag = bytes.NumberOrZero(dynamic + at, word);
            std::uint64_t const value = bytes.NumberOrZero(dynamic + at + word, word);
            if (tag == End)
                break;
            if (tag == Needed)
                image.imports.push_back(bytes.Name(strings + value));
            if (image.imports.size() > MostImports ||
                (tag == Needed && image.imports.back().empty()))
                return false;
            if (tag == RunPath)
                image.runPath = bytes.Name(strings + value);
            if (tag == RPath)
                image.inheritedRunPath = bytes.Name(strings + value);
            if (tag == Flags1 && (value & IsProgramFlag) != 0)
                image.isModule = false;
        }
        return true;
    }

    std::uint64_t Entry(DynamicTag wanted) const
    {
        for (std::uint64_t at = 0; at + entrySize <= dynamicSize; at += entrySize) {
            std::uint64_t const tag = bytes.NumberOrZero(dynamic + at, word);
            if (tag == wanted)
                return bytes.NumberOrZero(dynamic + at + word, word);
            if (tag == End)
                break;
        }
        return 0;
    }

    bool ReadExports(ModuleImage& image) const
    {
        std::uint64_t const symbols = OffsetOf(Entry(SymbolTable));
        std::uint64_t const symbolSize = is64 ? 24 : 16;
        std::uint64_t const count = SymbolCount();
        if (count > bytes.Size() || !bytes.Holds(symbols, count * symbolSize))
            return false;
        for (std::uint64_t i = 0; i < count; ++i) {
            std::uint64_t const symbol = symbols + i * symbolSize;
            // Without a section it is an import.
            if (bytes.NumberOrZero(symbol + (is64 ? 6 : 14), 2) == 0)
                continue;
            std::string name = bytes.Name(strings + bytes.NumberOrZero(symbol, 4));
            if (NamesFactoryProcedure(name))
                image.factoryNames.push_back(std::move(name));
        }
        return true;
    }

    // The number of symbols is told by their hash tables alone.
    std::uint64_t SymbolCount() const
    {
        if (std::uint64_t const address = Entry(Hash); address != 0)
            return bytes.NumberOrZero(OffsetOf(address) + 4, 4);
        std::uint64_t const address = Entry(GnuHash);
        if (address == 0)
            return 0;
        std::uint64_t const table = OffsetOf(address);
        std::uint64_t const bucketCount = bytes.NumberOrZero(table, 4);
        std::uint64_t const first = bytes.NumberOrZero(table + 4, 4);
        std::uint64_t const filterSize = bytes.NumberOrZero(table + 8, 4);
        std::uint64_t const buckets = table + 16 + filterSize * word;
        std::uint64_t const chains = buckets + bucketCount * 4;
        if (!bytes.Holds(buckets, bucketCount * 4))
            return 0;
        std::uint64_t last = 0;
        for (std::uint64_t i = 0; i < bucketCount; ++i)
            last = std::max(last, bytes.NumberOrZero(buckets + i * 4, 4));
        if (last < first)
            return first;
        // The chain of the last bucket ends with an odd number.
        while (auto const entry = bytes.Number(chains + (last - first) * 4, 4)) {
            ++last;
            if ((*entry & 1) != 0)
                return last;
        }
        return 0;
    }

    ByteView const& bytes;
    bool is64;
    unsigned word;
    std::uint64_t entrySize = std::uint64_t{2} * word; // of the dynamic table
    std::uint64_t segments = 0;
    std::uint64_t segmentSize = 0;
    std::uint64_t segmentCount = 0;
    std::uint64_t dynamic = 0;
    std::uint64_t dynamicSize = 0;
    std::uint64_t strings = 0;
};

} // namespace

void ReadElfImage(ByteView const& bytes, ModuleImage& image) { ElfReader(bytes).Read(image); }

} // namespace Halvorix::Tools
