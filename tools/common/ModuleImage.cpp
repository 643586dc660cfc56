#include "common/ModuleImage.h"

#include <algorithm>

#include "common/Files.h"

namespace Halvorix::Tools {

namespace {

using namespace std::string_view_literals;

// Messages that only the implementation of a library holds, never a user of it:
// in libstdc++ and libc++, those of the handler for what nobody catches; in jsoncpp,
// that of its reader.
std::vector<std::string_view> const RuntimeMarks = {
    "terminate called after throwing an instance of '"sv,
    "terminating with %s exception of type %s"sv,
    "A valid JSON document must be either an array or an object value."sv,
};

ImageFormat FormatOf(ByteView const& bytes)
{
    char mark[4] = {};
    if (bytes.Bytes(0, mark, sizeof(mark)) && std::string_view(mark, 4) == "\x7f"
                                                                           "ELF"sv)
        return ImageFormat::Elf;
    return bytes.Bytes(0, mark, 2) && std::string_view(mark, 2) == "MZ"sv ? ImageFormat::Pe
                                                                          : ImageFormat::None;
}

} // namespace

ModuleImage ReadModuleImage(ByteView const& bytes)
{
    ModuleImage image;
    image.format = FormatOf(bytes);
    if (image.format != NativeFormat)
        return image;
    ReadNativeImage(bytes, image);
    if (image.format != ImageFormat::None && bytes.Size() > LargestModule)
        image.flaw = "it has more than 1 GiB, the limit of what is looked at";
    return image;
}

ModuleNeeds ReadModuleNeeds(ByteView const& bytes, SymbolBudget& budget)
{
    ModuleNeeds needs;
    ReadNativeNeeds(bytes, budget, needs);
    return needs;
}

ModuleOffers ReadModuleOffers(ByteView const& bytes, SymbolTest const& isWanted,
                              SymbolBudget& budget)
{
    ModuleOffers offers;
    ReadNativeOffers(bytes, isWanted, budget, offers);
    return offers;
}

std::vector<std::string> ReadOwnSymbols(ByteView const& bytes, SymbolTest const& isWanted,
                                        SymbolBudget& budget)
{
    return ReadNativeOwnSymbols(bytes, isWanted, budget);
}

std::string TakeWanted(ByteView const& bytes, std::vector<std::uint64_t> places,
                       std::size_t longest, SymbolTest const& isWanted, SymbolBudget& budget,
                       ModuleOffers& offers)
{
    // In the file's order, so that each part of it is read once: the order of the table may
    // lead to and fro.
    std::sort(places.begin(), places.end());
    for (std::uint64_t const place : places) {
        std::string name = bytes.Name(place, longest);
        if (!isWanted(name))
            continue;
        if (!budget.TakeName(name.size()))
            return budget.Limit();
        offers.exports.push_back(std::move(name));
    }
    return {};
}

bool SymbolBudget::TakeRecords(std::uint64_t count)
{
    if (limit.empty() && count > MostRecords - records)
        limit = "with it the modules have more than " + std::to_string(MostRecords) +
                " symbols and relocations, the limit of what is looked at";
    records += limit.empty() ? count : 0;
    return limit.empty();
}

bool SymbolBudget::TakeName(std::size_t size)
{
    // Even an empty one takes its place.
    std::uint64_t const taken = size + sizeof(Import);
    if (limit.empty() && taken > MostSymbolText - text)
        limit = "with it the modules have more than 64 MiB of names of symbols, the limit of "
                "what is looked at";
    text += limit.empty() ? taken : 0;
    return limit.empty();
}

HeldRuntimes LookForRuntimes(ByteView const& bytes)
{
    std::vector<bool> const held = bytes.Contains(RuntimeMarks);
    return {held[0] || held[1], held[2], held[0]};
}

ModuleImage ReadModuleImage(std::filesystem::path const& file)
{
    OpenedFile const opened = OpenFile(file);
    if (opened.bytes != nullptr)
        return ReadModuleImage(ByteView(*opened.bytes));
    ModuleImage image;
    image.flaw = opened.reason;
    return image;
}

} // namespace Halvorix::Tools
