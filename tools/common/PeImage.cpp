#include "ModuleImage.h"

namespace Halvorix::Tools {

namespace {

constexpr std::uint64_t DirectoryEntrySize = 8;
constexpr std::uint64_t SectionSize = 40;
constexpr std::uint64_t ImportDescriptorSize = 20;
constexpr std::uint64_t MostSections = 96; // the loader takes no more
constexpr std::uint64_t MostExports = 65536;

std::string MachineName(std::uint64_t machine)
{
    switch (machine) {
    case 0x014c:
        return "x86";
    case 0x8664:
        return "x86-64";
    case 0xaa64:
        return "ARM64";
    case 0x01c4:
        return "ARM";
    default:
        return "machine type " + std::to_string(machine);
    }
}

class PeReader {
public:
    explicit PeReader(ByteView const& peBytes) : bytes(peBytes) {}

    void Read(ModuleImage& image)
    {
        std::uint64_t const header = bytes.NumberOrZero(0x3c, 4);
        if (bytes.NumberOrZero(header, 4) != 0x00004550) {
            image.format = ImageFormat::None;
            return;
        }
        image.machine = MachineName(bytes.NumberOrZero(header + 4, 2));
        sectionCount = bytes.NumberOrZero(header + 6, 2);
        std::uint64_t const optionalSize = bytes.NumberOrZero(header + 20, 2);
        image.isModule = (bytes.NumberOrZero(header + 22, 2) & 0x2000) != 0;
        std::uint64_t const optional = header + 24;
        sections = optional + optionalSize;
        bool const is64 = bytes.NumberOrZero(optional, 2) == 0x20b;
        std::uint64_t const directoryCount = bytes.NumberOrZero(optional + (is64 ? 108 : 92), 4);
        std::uint64_t const directories = optional + (is64 ? 112 : 96);
        if (!bytes.Holds(optional, optionalSize) ||
            !bytes.Holds(sections, sectionCount * SectionSize)) {
            image.flaw = "its header is cut short";
            return;
        }
        if (sectionCount > MostSections) {
            image.flaw = "it has more sections than any module";
            return;
        }
        if (!SectionsAreWhole()) {
            image.flaw = "it is cut short: a section lies beyond its end";
            return;
        }
        if (directoryCount > 0)
            ReadExports(bytes.NumberOrZero(directories, 4), image);
        if (directoryCount > 1)
            ReadImports(bytes.NumberOrZero(directories + DirectoryEntrySize, 4), image);
    }

private:
    bool SectionsAreWhole() const
    {
        for (std::uint64_t i = 0; i < sectionCount; ++i) {
            std::uint64_t const section = sections + i * SectionSize;
            if (!bytes.Holds(bytes.NumberOrZero(section + 20, 4),
                             bytes.NumberOrZero(section + 16, 4)))
                return false;
        }
        return true;
    }

    // Where the file holds what will lie at an address; nothing is found at Size.
    std::uint64_t OffsetOf(std::uint64_t address) const
    {
        for (std::uint64_t i = 0; i < sectionCount; ++i) {
            std::uint64_t const section = sections + i * SectionSize;
            std::uint64_t const begin = bytes.NumberOrZero(section + 12, 4);
            std::uint64_t const size = bytes.NumberOrZero(section + 16, 4);
            if (address >= begin && address - begin < size)
                return bytes.NumberOrZero(section + 20, 4) + (address - begin);
        }
        return bytes.Size();
    }

    void ReadExports(std::uint64_t address, ModuleImage& image) const
    {
        if (address == 0)
            return;
        std::uint64_t const directory = OffsetOf(address);
        std::uint64_t const count = bytes.NumberOrZero(directory + 24, 4);
        std::uint64_t const names = OffsetOf(bytes.NumberOrZero(directory + 32, 4));
        if (count > MostExports || !bytes.Holds(directory, 40) || !bytes.Holds(names, count * 4)) {
            image.flaw = "its export table cannot be read";
            return;
        }
        for (std::uint64_t i = 0; i < count; ++i) {
            std::string name = bytes.Name(OffsetOf(bytes.NumberOrZero(names + i * 4, 4)));
            if (NamesFactoryProcedure(name))
                image.factoryNames.push_back(std::move(name));
        }
    }

    void ReadImports(std::uint64_t address, ModuleImage& image) const
    {
        if (address == 0)
            return;
        std::uint64_t const directory = OffsetOf(address);
        for (unsigned i = 0; i < MostImports; ++i) {
            std::uint64_t const descriptor = directory + i * ImportDescriptorSize;
            if (!bytes.Holds(descriptor, ImportDescriptorSize))
                break;
            std::uint64_t const name = bytes.NumberOrZero(descriptor + 12, 4);
            if (name == 0)
                return;
            image.imports.push_back(bytes.Name(OffsetOf(name)));
            if (image.imports.back().empty())
                break;
        }
        image.flaw = "its import table cannot be read";
    }

    ByteView const& bytes;
    std::uint64_t sections = 0;
    std::uint64_t sectionCount = 0;
};

} // namespace

void ReadPeImage(ByteView const& bytes, ModuleImage& image) { PeReader(bytes).Read(image); }

} // namespace Halvorix::Tools
