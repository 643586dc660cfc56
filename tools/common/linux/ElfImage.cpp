#include <elf.h>
#include <link.h>

#include <algorithm>
#include <vector>

#include "common/ModuleImage.h"

namespace Halvorix::Tools {

namespace {

using Header = ElfW(Ehdr);
using Section = ElfW(Shdr);
using Segment = ElfW(Phdr);
using Dynamic = ElfW(Dyn);
using Symbol = ElfW(Sym);
using Version = ElfW(Verdef);
using VersionName = ElfW(Verdaux);
using VersionNeed = ElfW(Verneed);
using VersionNeedName = ElfW(Vernaux);

// More than any linker writes.
constexpr std::size_t MostSegments = 512;
constexpr std::size_t MostEntries = 2048;
constexpr std::size_t LongestRunPath = 65536;
constexpr std::size_t LongestSymbol = 4096; // with its end

constexpr unsigned char OwnClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;

std::string MachineName(unsigned machine, bool is64)
{
    switch (machine) {
    case EM_386:
        return "x86";
    case EM_X86_64:
        return is64 ? "x86-64" : "x32";
    case EM_AARCH64:
        return "ARM64";
    case EM_ARM:
        return "ARM";
    default:
        return "machine type " + std::to_string(machine) + (is64 ? "" : ", 32 bits");
    }
}

class ElfReader {
public:
    explicit ElfReader(ByteView const& elfBytes) : bytes(elfBytes) {}

    void Read(ModuleImage& image)
    {
        // These are alike in all classes.
        unsigned char identity[EI_NIDENT] = {};
        if (!bytes.Bytes(0, identity, sizeof(identity)) || !bytes.Holds(0, sizeof(Elf32_Ehdr))) {
            image.format = ImageFormat::None;
            return;
        }
        if (identity[EI_DATA] != ELFDATA2LSB) {
            image.machine = "a big-endian machine";
            image.isModule = true;
            return;
        }
        image.machine = MachineName(static_cast<unsigned>(bytes.NumberOrZero(18, 2)),
                                    identity[EI_CLASS] == ELFCLASS64);
        image.isModule = bytes.NumberOrZero(16, 2) == ET_DYN;
        if (identity[EI_CLASS] != OwnClass)
            return; // of another machine, and so no more is asked
        image.flaw = ReadTables();
        if (image.flaw.empty())
            image.flaw = ReadDynamic(image);
        if (!image.isModule)
            image.refusal = "is a program, not a module";
    }

    void Read(SymbolBudget& budget, ModuleNeeds& needs)
    {
        needs.flaw = ReadTables();
        if (needs.flaw.empty() && !entries.empty())
            needs.flaw = ReadImports(budget, needs);
        if (needs.flaw.empty() && !entries.empty())
            needs.flaw = ReadNeededVersions(budget, needs);
    }

    void Read(SymbolTest const& isWanted, SymbolBudget& budget, ModuleOffers& offers)
    {
        offers.flaw = ReadTables();
        if (offers.flaw.empty() && !entries.empty())
            offers.flaw = ReadExports(isWanted, budget, offers);
        if (offers.flaw.empty() && !entries.empty())
            offers.flaw = ReadVersions(budget, offers);
    }

    std::vector<std::string> ReadOwn(SymbolTest const& isWanted, SymbolBudget& budget) const
    {
        Header header{};
        if (!bytes.Read(0, header) || header.e_shentsize < sizeof(Section))
            return {};
        auto const sectionAt = [&](std::uint64_t index) {
            Section section{};
            if (index < header.e_shnum)
                bytes.Read(header.e_shoff + index * header.e_shentsize, section);
            return section;
        };
        for (unsigned i = 0; i < header.e_shnum; ++i)
            if (Section const table = sectionAt(i); table.sh_type == SHT_SYMTAB)
                return OwnIn(table, sectionAt(table.sh_link), isWanted, budget);
        return {};
    }

private:
    std::vector<std::string> OwnIn(Section const& table, Section const& texts,
                                   SymbolTest const& isWanted, SymbolBudget& budget) const
    {
        std::uint64_t const count = table.sh_size / sizeof(Symbol);
        if (count > MostSymbols || !budget.TakeRecords(count) ||
            !bytes.Holds(table.sh_offset, table.sh_size))
            return {};
        std::vector<std::uint64_t> names;
        for (std::uint64_t i = 1; i < count; ++i) {
            Symbol symbol{};
            bytes.Read(table.sh_offset + i * sizeof(Symbol), symbol);
            if (symbol.st_shndx != SHN_UNDEF)
                names.push_back(texts.sh_offset + symbol.st_name);
        }
        ModuleOffers own;
        TakeWanted(bytes, std::move(names), LongestSymbol, isWanted, budget, own);
        return own.exports;
    }

    // Segments and dynamic table. The answer is what is wrong.
    std::string ReadTables()
    {
        Header header{};
        if (!bytes.Read(0, header) || header.e_phentsize < sizeof(Segment) ||
            !bytes.Holds(header.e_phoff, std::uint64_t{header.e_phentsize} * header.e_phnum))
            return "its header is cut short";
        if (header.e_phnum > MostSegments)
            return "it has more segments than any module";
        for (unsigned i = 0; i < header.e_phnum; ++i) {
            Segment segment{};
            bytes.Read(header.e_phoff + std::uint64_t{header.e_phentsize} * i, segment);
            if (segment.p_type == PT_LOAD && !bytes.Holds(segment.p_offset, segment.p_filesz))
                return "it is cut short: a segment lies beyond its end";
            segments.push_back(segment);
        }
        for (Segment const& segment : segments)
            if (segment.p_type == PT_DYNAMIC && !ReadEntries(segment))
                return "its dynamic table cannot be read";
        // A program may be linked statically.
        if (entries.empty() && header.e_type != ET_EXEC)
            return "its dynamic table cannot be read";
        strings = OffsetOf(ValueOf(DT_STRTAB));
        return entries.empty() || strings != bytes.Size() ? std::string()
                                                          : "its dynamic table cannot be read";
    }

    bool ReadEntries(Segment const& segment)
    {
        entries.clear();
        for (std::uint64_t at = 0; at + sizeof(Dynamic) <= segment.p_filesz;
             at += sizeof(Dynamic)) {
            Dynamic entry{};
            if (!bytes.Read(segment.p_offset + at, entry) || entries.size() == MostEntries)
                return false;
            if (entry.d_tag == DT_NULL)
                break;
            entries.push_back(entry);
        }
        return !entries.empty();
    }

    std::uint64_t ValueOf(ElfW(Sxword) tag) const
    {
        for (Dynamic const& entry : entries)
            if (entry.d_tag == tag)
                return entry.d_un.d_val;
        return 0;
    }

    // Where the file holds what will lie at an address; nothing is found at Size.
    std::uint64_t OffsetOf(std::uint64_t address) const
    {
        for (Segment const& segment : segments)
            if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
                address - segment.p_vaddr < segment.p_filesz)
                return segment.p_offset + (address - segment.p_vaddr);
        return bytes.Size();
    }

    std::string Text(std::uint64_t offset, std::size_t longest = 512) const
    {
        return offset < bytes.Size() ? bytes.Name(strings + offset, longest) : std::string();
    }

    std::string ReadDynamic(ModuleImage& image) const
    {
        for (Dynamic const& entry : entries) {
            std::uint64_t const value = entry.d_un.d_val;
            switch (entry.d_tag) {
            case DT_NEEDED:
                image.imports.push_back(Text(value));
                if (image.imports.back().empty() || image.imports.size() > MostImports)
                    return "its dynamic table cannot be read";
                break;
            case DT_SONAME:
                image.ownName = Text(value);
                break;
            case DT_RUNPATH:
                image.runPath = Text(value, LongestRunPath);
                break;
            case DT_RPATH:
                image.inheritedRunPath = Text(value, LongestRunPath);
                break;
            case DT_FLAGS_1:
                image.isModule = image.isModule && (value & DF_1_PIE) == 0;
                image.hasNoDefaultFolders = (value & DF_1_NODEFLIB) != 0;
                image.isForStartOnly = (value & DF_1_NOOPEN) != 0;
                break;
            default:
                break;
            }
        }
        for (Segment const& segment : segments) {
            if (segment.p_type != PT_INTERP)
                continue;
            image.hasLoader = true;
            image.loader = bytes.Name(segment.p_offset);
        }
        return {};
    }

    std::string ReadExports(SymbolTest const& isWanted, SymbolBudget& budget,
                            ModuleOffers& offers) const
    {
        std::uint64_t const table = OffsetOf(ValueOf(DT_SYMTAB));
        std::uint64_t const count = SymbolCount(budget);
        if (count > MostSymbols)
            return "it has more than " + std::to_string(MostSymbols) +
                   " symbols, the limit of what is looked at";
        if (!budget.TakeRecords(count))
            return budget.Limit();
        if (!bytes.Holds(table, count * sizeof(Symbol)))
            return "its symbol table cannot be read";
        std::vector<std::uint64_t> names;
        for (std::uint64_t i = 1; i < count; ++i) {
            Symbol symbol{};
            bytes.Read(table + i * sizeof(Symbol), symbol);
            if (symbol.st_shndx != SHN_UNDEF && ELF32_ST_BIND(symbol.st_info) != STB_LOCAL)
                names.push_back(strings + symbol.st_name);
        }
        return TakeWanted(bytes, std::move(names), LongestSymbol, isWanted, budget, offers);
    }

    std::string ReadImports(SymbolBudget& budget, ModuleNeeds& needs) const
    {
        std::uint64_t const table = OffsetOf(ValueOf(DT_SYMTAB));
        std::vector<bool> used;
        std::string flaw = FindUsed(DT_RELA, DT_RELASZ, sizeof(ElfW(Rela)), budget, used);
        if (flaw.empty())
            flaw = FindUsed(DT_REL, DT_RELSZ, sizeof(ElfW(Rel)), budget, used);
        if (flaw.empty())
            flaw = FindUsed(DT_JMPREL, DT_PLTRELSZ,
                            ValueOf(DT_PLTREL) == DT_REL ? sizeof(ElfW(Rel)) : sizeof(ElfW(Rela)),
                            budget, used);
        for (std::uint64_t i = 1; i < used.size() && flaw.empty(); ++i) {
            Symbol symbol{};
            // What is weak may be missing.
            if (!used[i] || !bytes.Read(table + i * sizeof(Symbol), symbol) ||
                symbol.st_shndx != SHN_UNDEF || ELF32_ST_BIND(symbol.st_info) != STB_GLOBAL)
                continue;
            needs.imports.push_back({Text(symbol.st_name, LongestSymbol), {}});
            if (needs.imports.back().symbol.empty())
                flaw = "it needs a symbol whose name has more than " +
                       std::to_string(LongestSymbol - 1) +
                       " characters, the limit of what is looked at";
            else if (!budget.TakeName(needs.imports.back().symbol.size()))
                flaw = budget.Limit();
        }
        return flaw;
    }

    // The symbols that a table of relocations names. The answer is what is wrong.
    std::string FindUsed(ElfW(Sxword) table, ElfW(Sxword) size, std::size_t recordSize,
                         SymbolBudget& budget, std::vector<bool>& used) const
    {
        std::uint64_t const total = ValueOf(size);
        if (total == 0)
            return {};
        std::uint64_t const begin = OffsetOf(ValueOf(table));
        if (!bytes.Holds(begin, total))
            return "its relocations cannot be read";
        if (!budget.TakeRecords(total / recordSize))
            return budget.Limit();
        for (std::uint64_t at = 0; at + recordSize <= total; at += recordSize) {
            // Both kinds begin with the same two members.
            ElfW(Rel) relocation{};
            if (!bytes.Read(begin + at, relocation))
                return "its relocations cannot be read";
            std::uint64_t const symbol = sizeof(void*) == 8
                                             ? std::uint64_t{relocation.r_info} >> 32U
                                             : std::uint64_t{relocation.r_info} >> 8U;
            if (symbol > MostSymbols)
                continue;
            if (symbol >= used.size())
                used.resize(symbol + 1);
            used[symbol] = true;
        }
        return {};
    }

    // The number of symbols is told by their hash tables alone.
    std::uint64_t SymbolCount(SymbolBudget& budget) const
    {
        if (std::uint64_t const address = ValueOf(DT_HASH); address != 0)
            return bytes.NumberOrZero(OffsetOf(address) + 4, 4);
        std::uint64_t const address = ValueOf(DT_GNU_HASH);
        if (address == 0)
            return 0;
        std::uint64_t const table = OffsetOf(address);
        std::uint64_t const bucketCount = bytes.NumberOrZero(table, 4);
        std::uint64_t const first = bytes.NumberOrZero(table + 4, 4);
        std::uint64_t const filterSize = bytes.NumberOrZero(table + 8, 4);
        std::uint64_t const buckets = table + 16 + filterSize * sizeof(ElfW(Addr));
        std::uint64_t const chains = buckets + bucketCount * 4;
        if (bucketCount > MostSymbols || !bytes.Holds(buckets, bucketCount * 4))
            return 0;
        if (!budget.TakeRecords(bucketCount))
            return 0;
        std::uint64_t last = 0;
        for (std::uint64_t i = 0; i < bucketCount; ++i)
            last = std::max(last, bytes.NumberOrZero(buckets + i * 4, 4));
        if (last < first)
            return first;
        // The chain of the last bucket ends with an odd number.
        while (last <= MostSymbols) {
            auto const entry = bytes.Number(chains + (last - first) * 4, 4);
            if (!entry)
                return 0;
            ++last;
            if ((*entry & 1U) != 0)
                return last;
        }
        return last;
    }

    std::string ReadVersions(SymbolBudget& budget, ModuleOffers& offers) const
    {
        bool const isWhole =
            Walk<Version>(ValueOf(DT_VERDEF), ValueOf(DT_VERDEFNUM), budget,
                          [&](std::uint64_t at, Version const& version) {
                              VersionName name{};
                              if (!bytes.Read(at + version.vd_aux, name))
                                  return false;
                              offers.versions.push_back(Text(name.vda_name));
                              return budget.TakeName(offers.versions.back().size());
                          });
        return isWhole ? std::string() : FlawOfVersions(budget);
    }

    std::string ReadNeededVersions(SymbolBudget& budget, ModuleNeeds& needs) const
    {
        bool const isWhole = Walk<VersionNeed>(ValueOf(DT_VERNEED), ValueOf(DT_VERNEEDNUM), budget,
                                               [&](std::uint64_t at, VersionNeed const& need) {
                                                   return ReadNeed(at, need, budget, needs);
                                               });
        return isWhole ? std::string() : FlawOfVersions(budget);
    }

    static std::string FlawOfVersions(SymbolBudget const& budget)
    {
        std::string const& limit = budget.Limit();
        return limit.empty() ? "its table of symbol versions cannot be read" : limit;
    }

    bool ReadNeed(std::uint64_t at, VersionNeed const& need, SymbolBudget& budget,
                  ModuleNeeds& needs) const
    {
        std::string const module = Text(need.vn_file);
        at += need.vn_aux;
        for (unsigned i = 0; i < need.vn_cnt; ++i) {
            VersionNeedName name{};
            if (!budget.TakeRecords(1) || !bytes.Read(at, name))
                return false;
            if ((name.vna_flags & VER_FLG_WEAK) == 0) {
                needs.versions.push_back({module, Text(name.vna_name)});
                if (!budget.TakeName(module.size() + needs.versions.back().version.size()))
                    return false;
            }
            if (name.vna_next == 0)
                break;
            at += name.vna_next;
        }
        return true;
    }

    static std::uint64_t NextOf(Version const& version) { return version.vd_next; }
    static std::uint64_t NextOf(VersionNeed const& need) { return need.vn_next; }

    // Over a list whose records name the place of the next.
    template <class Record, class Action>
    bool Walk(std::uint64_t address, std::uint64_t count, SymbolBudget& budget, Action action) const
    {
        if (address == 0)
            return true;
        std::uint64_t at = OffsetOf(address);
        for (std::uint64_t i = 0; i < count; ++i) {
            Record record{};
            if (!budget.TakeRecords(1) || !bytes.Read(at, record) || !action(at, record))
                return false;
            if (NextOf(record) == 0)
                break;
            at += NextOf(record);
        }
        return true;
    }

    ByteView const& bytes;
    std::vector<Segment> segments;
    std::vector<Dynamic> entries;
    std::uint64_t strings = 0;
};

} // namespace

ImageFormat const NativeFormat = ImageFormat::Elf;

void ReadNativeImage(ByteView const& bytes, ModuleImage& image) { ElfReader(bytes).Read(image); }

void ReadNativeNeeds(ByteView const& bytes, SymbolBudget& budget, ModuleNeeds& needs)
{
    ElfReader(bytes).Read(budget, needs);
}

void ReadNativeOffers(ByteView const& bytes, SymbolTest const& isWanted, SymbolBudget& budget,
                      ModuleOffers& offers)
{
    ElfReader(bytes).Read(isWanted, budget, offers);
}

std::vector<std::string> ReadNativeOwnSymbols(ByteView const& bytes, SymbolTest const& isWanted,
                                              SymbolBudget& budget)
{
    return ElfReader(bytes).ReadOwn(isWanted, budget);
}

} // namespace Halvorix::Tools
