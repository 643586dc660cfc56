#include <algorithm>
#include <cstddef>
#include <utility>

#include "common/ModuleImage.h"
#include "platform/windows/Windows.h"

namespace Halvorix::Tools {

namespace {

constexpr std::size_t MostSections = 96; // the loader takes no more
constexpr std::size_t LongestSymbol = 4096;

std::string MachineName(unsigned machine)
{
    switch (machine) {
    case IMAGE_FILE_MACHINE_I386:
        return "x86";
    case IMAGE_FILE_MACHINE_AMD64:
        return "x86-64";
    case 0xaa64: // IMAGE_FILE_MACHINE_ARM64, which older headers lack
        return "ARM64";
    case IMAGE_FILE_MACHINE_ARMNT:
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
        IMAGE_DOS_HEADER dos{};
        if (!bytes.Read(0, dos) || bytes.NumberOrZero(HeaderOf(dos), 4) != IMAGE_NT_SIGNATURE) {
            image.format = ImageFormat::None;
            return;
        }
        image.flaw = ReadHeaders(dos);
        image.machine = MachineName(file.Machine);
        image.isModule = (file.Characteristics & IMAGE_FILE_DLL) != 0;
        // Of another machine no more is asked.
        if (image.flaw.empty() && file.Machine == OwnMachine())
            image.flaw = ReadImports([&](std::string name, IMAGE_IMPORT_DESCRIPTOR const&) {
                image.imports.push_back(std::move(name));
                return true;
            });
    }

    void Read(SymbolBudget& budget, ModuleNeeds& needs)
    {
        IMAGE_DOS_HEADER dos{};
        bytes.Read(0, dos);
        needs.flaw = ReadHeaders(dos);
        if (needs.flaw.empty())
            needs.flaw =
                ReadImports([&](std::string const& name, IMAGE_IMPORT_DESCRIPTOR const& table) {
                    return ReadImported(name, table, budget, needs);
                });
        if (std::string limit = budget.Limit(); !limit.empty())
            needs.flaw = std::move(limit);
    }

    void Read(SymbolTest const& isWanted, SymbolBudget& budget, ModuleOffers& offers)
    {
        IMAGE_DOS_HEADER dos{};
        bytes.Read(0, dos);
        offers.flaw = ReadHeaders(dos);
        if (offers.flaw.empty())
            offers.flaw = ReadExports(isWanted, budget, offers);
    }

private:
    static constexpr unsigned OwnMachine()
    {
        return sizeof(void*) == 8 ? IMAGE_FILE_MACHINE_AMD64 : IMAGE_FILE_MACHINE_I386;
    }

    static std::uint64_t HeaderOf(IMAGE_DOS_HEADER const& dos)
    {
        return static_cast<std::uint32_t>(dos.e_lfanew);
    }

    // The answer is what is wrong.
    std::string ReadHeaders(IMAGE_DOS_HEADER const& dos)
    {
        std::uint64_t const header = HeaderOf(dos) + sizeof(DWORD);
        std::uint64_t const optional = header + sizeof(IMAGE_FILE_HEADER);
        if (!bytes.Read(header, file) || !bytes.Holds(optional, file.SizeOfOptionalHeader))
            return "its header is cut short";
        std::uint64_t const table = optional + file.SizeOfOptionalHeader;
        if (file.NumberOfSections > MostSections)
            return "it has more sections than any module";
        for (unsigned i = 0; i < file.NumberOfSections; ++i) {
            IMAGE_SECTION_HEADER section{};
            if (!bytes.Read(table + i * sizeof(section), section))
                return "its header is cut short";
            if (!bytes.Holds(section.PointerToRawData, section.SizeOfRawData))
                return "it is cut short: a section lies beyond its end";
            sections.push_back(section);
        }
        if (file.Machine != OwnMachine())
            return {};
        IMAGE_OPTIONAL_HEADER own{};
        constexpr std::size_t before = offsetof(IMAGE_OPTIONAL_HEADER, DataDirectory);
        if (file.SizeOfOptionalHeader < before || !bytes.Bytes(optional, &own, before) ||
            own.Magic != IMAGE_NT_OPTIONAL_HDR_MAGIC)
            return "its header is cut short";
        headerSize = own.SizeOfHeaders;
        for (unsigned i = 0; i < 2 && i < own.NumberOfRvaAndSizes; ++i)
            if (!bytes.Read(optional + before + i * sizeof(IMAGE_DATA_DIRECTORY), directories[i]))
                return "its header is cut short";
        return {};
    }

    // Where the file holds what will lie at an address; nothing is found at Size.
    std::uint64_t OffsetOf(std::uint64_t address) const
    {
        for (IMAGE_SECTION_HEADER const& section : sections)
            if (address >= section.VirtualAddress &&
                address - section.VirtualAddress < section.SizeOfRawData)
                return section.PointerToRawData + (address - section.VirtualAddress);
        return address < headerSize ? address : bytes.Size();
    }

    std::string ReadExports(SymbolTest const& isWanted, SymbolBudget& budget,
                            ModuleOffers& offers) const
    {
        DWORD const address = directories[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
        if (address == 0)
            return {};
        IMAGE_EXPORT_DIRECTORY table{};
        bool const isThere = bytes.Read(OffsetOf(address), table);
        std::uint64_t const names = OffsetOf(table.AddressOfNames);
        if (!isThere || !bytes.Holds(names, std::uint64_t{4} * table.NumberOfNames))
            return "its export table cannot be read";
        if (table.NumberOfNames > MostSymbols)
            return "it has more than " + std::to_string(MostSymbols) +
                   " exports, the limit of what is looked at";
        if (!budget.TakeRecords(table.NumberOfNames))
            return budget.Limit();
        std::vector<std::uint64_t> places;
        for (std::uint64_t i = 0; i < table.NumberOfNames; ++i)
            places.push_back(OffsetOf(bytes.NumberOrZero(names + i * 4, 4)));
        std::string flaw = ReadFunctions(table, places, isWanted, budget, offers);
        if (!flaw.empty())
            return flaw;
        return TakeWanted(bytes, std::move(places), LongestSymbol, isWanted, budget, offers);
    }

    // By name and number. What is said of a function within the export table is no code but
    // the name of another one.
    std::string ReadFunctions(IMAGE_EXPORT_DIRECTORY const& table,
                              std::vector<std::uint64_t> const& names, SymbolTest const& isWanted,
                              SymbolBudget& budget, ModuleOffers& offers) const
    {
        IMAGE_DATA_DIRECTORY const& own = directories[IMAGE_DIRECTORY_ENTRY_EXPORT];
        constexpr std::size_t mostNumbers = 0x10000; // a name has 16 bits for its function's
        std::vector<WORD> numbers(names.size());
        std::vector<DWORD> functions(std::min<std::size_t>(table.NumberOfFunctions, mostNumbers));
        if (!bytes.Bytes(OffsetOf(table.AddressOfNameOrdinals), numbers.data(),
                         numbers.size() * sizeof(WORD)) ||
            !bytes.Bytes(OffsetOf(table.AddressOfFunctions), functions.data(),
                         functions.size() * sizeof(DWORD)))
            return "its export table cannot be read";
        if (!budget.TakeRecords(functions.size()))
            return budget.Limit();
        auto const isForward = [&own](DWORD address) {
            return address >= own.VirtualAddress && address - own.VirtualAddress < own.Size;
        };
        std::vector<std::pair<std::uint64_t, std::uint64_t>> places; // of both names
        for (std::size_t i = 0; i < names.size(); ++i) {
            DWORD const address = numbers[i] < functions.size() ? functions[numbers[i]] : 0;
            if (isForward(address))
                places.emplace_back(names[i], OffsetOf(address));
        }
        // In the file's order, as other names.
        std::sort(places.begin(), places.end());
        std::vector<std::pair<std::uint64_t, std::string>> targets;
        for (auto const& [name, target] : places) {
            std::string symbol = bytes.Name(name, LongestSymbol);
            if (!isWanted(symbol))
                continue;
            if (!budget.TakeName(symbol.size()))
                return budget.Limit();
            targets.emplace_back(target, std::move(symbol));
        }
        for (std::size_t i = 0; i < functions.size(); ++i) {
            std::string symbol = NameOfNumber(std::uint64_t{table.Base} + i);
            if (functions[i] == 0 || !isWanted(symbol))
                continue;
            if (!budget.TakeName(symbol.size()))
                return budget.Limit();
            offers.exports.push_back(symbol);
            if (isForward(functions[i]))
                targets.emplace_back(OffsetOf(functions[i]), std::move(symbol));
        }
        std::sort(targets.begin(), targets.end());
        for (auto& [place, symbol] : targets) {
            std::string target = bytes.Name(place, LongestSymbol);
            if (!budget.TakeName(target.size()))
                return budget.Limit();
            offers.forwards.push_back({std::move(symbol), std::move(target)});
        }
        return {};
    }

    // As one that another module stands for is written.
    static std::string NameOfNumber(std::uint64_t number) { return "#" + std::to_string(number); }

    template <class Action>
    std::string ReadImports(Action action) const
    {
        DWORD const address = directories[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
        if (address == 0)
            return {};
        std::uint64_t const begin = OffsetOf(address);
        for (std::size_t i = 0; i < MostImports; ++i) {
            IMAGE_IMPORT_DESCRIPTOR descriptor{};
            if (!bytes.Read(begin + i * sizeof(descriptor), descriptor))
                break;
            if (descriptor.Name == 0)
                return {};
            std::string name = bytes.Name(OffsetOf(descriptor.Name));
            if (name.empty() || !action(std::move(name), descriptor))
                break;
        }
        return "its import table cannot be read";
    }

    bool ReadImported(std::string const& module, IMAGE_IMPORT_DESCRIPTOR const& descriptor,
                      SymbolBudget& budget, ModuleNeeds& needs) const
    {
        DWORD const names = descriptor.OriginalFirstThunk != 0 ? descriptor.OriginalFirstThunk
                                                               : descriptor.FirstThunk;
        std::uint64_t at = OffsetOf(names);
        for (; budget.TakeRecords(1); at += sizeof(IMAGE_THUNK_DATA)) {
            IMAGE_THUNK_DATA thunk{};
            if (!bytes.Read(at, thunk))
                return false;
            if (thunk.u1.AddressOfData == 0)
                return true;
            // Behind a number that is a guess at its place.
            std::string name =
                IMAGE_SNAP_BY_ORDINAL(thunk.u1.Ordinal)
                    ? NameOfNumber(IMAGE_ORDINAL(thunk.u1.Ordinal))
                    : bytes.Name(OffsetOf(thunk.u1.AddressOfData) + sizeof(WORD), LongestSymbol);
            if (!budget.TakeName(name.size() + module.size()))
                return false;
            needs.imports.push_back({std::move(name), module});
        }
        return false;
    }

    ByteView const& bytes;
    IMAGE_FILE_HEADER file{};
    IMAGE_DATA_DIRECTORY directories[2] = {};
    std::vector<IMAGE_SECTION_HEADER> sections;
    std::uint64_t headerSize = 0;
};

} // namespace

ImageFormat const NativeFormat = ImageFormat::Pe;

void ReadNativeImage(ByteView const& bytes, ModuleImage& image) { PeReader(bytes).Read(image); }

void ReadNativeNeeds(ByteView const& bytes, SymbolBudget& budget, ModuleNeeds& needs)
{
    PeReader(bytes).Read(budget, needs);
}

void ReadNativeOffers(ByteView const& bytes, SymbolTest const& isWanted, SymbolBudget& budget,
                      ModuleOffers& offers)
{
    PeReader(bytes).Read(isWanted, budget, offers);
}

// What the linkers of this system do not export they keep no name of, or do so in a file of its
// own.
std::vector<std::string> ReadNativeOwnSymbols(ByteView const&, SymbolTest const&, SymbolBudget&)
{
    return {};
}

} // namespace Halvorix::Tools
