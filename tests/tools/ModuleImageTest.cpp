#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "common/ModuleImage.h"
#include "framework/ThisBuild.h"
#include "platform/Platform.h"

namespace {

using namespace Halvorix::Tools;

ModuleImage ImageOf(std::string_view bytes)
{
    TextSource source(bytes);
    return ReadModuleImage(ByteView(source));
}

ModuleNeeds NeedsOf(std::string_view bytes)
{
    TextSource source(bytes);
    SymbolBudget budget;
    return ReadModuleNeeds(ByteView(source), budget);
}

bool IsAny(std::string const&) { return true; }

ModuleOffers OffersOf(std::string_view bytes, SymbolTest const& isWanted = IsAny)
{
    TextSource source(bytes);
    SymbolBudget budget;
    return ReadModuleOffers(ByteView(source), isWanted, budget);
}

std::string PluginBytes()
{
    std::ifstream stream(Rig::DependentModule(), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

bool Imports(ModuleImage const& image, std::string const& beginning)
{
    return std::any_of(image.imports.begin(), image.imports.end(),
                       [&](std::string const& name) { return name.rfind(beginning, 0) == 0; });
}

TEST(ModuleImage, TellsWhatAPluginNeedsAndExports)
{
    ModuleImage const image = ImageOf(PluginBytes());
    EXPECT_NE(image.format, ImageFormat::None);
    EXPECT_EQ(image.flaw, "");
    EXPECT_TRUE(image.isModule);
    EXPECT_FALSE(image.machine.empty());
    EXPECT_TRUE(Imports(image, "PluginDependency"));
}

TEST(ModuleImage, TellsWhatBindsAPluginToOthers)
{
    ModuleOffers const offers = OffersOf(PluginBytes());
    EXPECT_EQ(offers.flaw, "");
    EXPECT_EQ(std::count(offers.exports.begin(), offers.exports.end(),
                         Halvorix::Platform::FactoryProcedureName()),
              1);
    ModuleNeeds const needs = NeedsOf(PluginBytes());
    EXPECT_EQ(needs.flaw, "");
    EXPECT_TRUE(std::any_of(needs.imports.begin(), needs.imports.end(), [](Import const& import) {
        return import.symbol.find("UseDependency") != std::string::npos;
    }));
}

TEST(ModuleImage, KeepsOfTheExportsWhatIsAskedFor)
{
    std::string const wanted = Halvorix::Platform::FactoryProcedureName();
    ModuleOffers const offers =
        OffersOf(PluginBytes(), [&](std::string const& name) { return name == wanted; });
    EXPECT_EQ(offers.exports, std::vector<std::string>{wanted});
}

class CountingSource : public TextSource {
public:
    using TextSource::TextSource;
    bool Read(std::uint64_t offset, char* to, std::size_t size) override
    {
        count += size;
        return TextSource::Read(offset, to, size);
    }
    std::size_t count = 0;
};

// A table may name its texts in an order that leads to and fro in the file.
TEST(ModuleImage, ReadsEachPartOnceForTheNamesOfATable)
{
    std::string text(8U << 20U, '\0');
    std::vector<std::uint64_t> places;
    for (std::size_t place = 1; place + 16 < text.size(); place += 997) {
        text.replace(place, 4, place % 2 == 0 ? "even" : "odd!");
        places.push_back(place);
    }
    std::shuffle(places.begin(), places.end(), std::mt19937(1800));
    CountingSource source(text);
    SymbolBudget budget;
    ModuleOffers offers;
    auto const isWanted = [](std::string const& name) { return name == "even"; };
    EXPECT_EQ(TakeWanted(ByteView(source), places, 512, isWanted, budget, offers), "");
    EXPECT_EQ(offers.exports.size(), places.size() / 2);
    EXPECT_EQ(source.count, text.size());
}

// A limit for each of them alone would let many take any time.
TEST(ModuleImage, ReadsNoMoreOfAllModulesTogetherThanTheBudgetHas)
{
    std::string const bytes = PluginBytes();
    TextSource source(bytes);
    SymbolBudget budget;
    EXPECT_EQ(ReadModuleNeeds(ByteView(source), budget).flaw, "");
    EXPECT_EQ(budget.Limit(), "");
    EXPECT_FALSE(budget.TakeRecords(MostRecords)) << "it has taken some";
    std::string const limit = "with it the modules have more than 4000000 symbols and "
                              "relocations, the limit of what is looked at";
    EXPECT_EQ(budget.Limit(), limit);
    EXPECT_EQ(ReadModuleNeeds(ByteView(source), budget).flaw, limit);
    EXPECT_EQ(ReadModuleOffers(ByteView(source), IsAny, budget).flaw, limit);

    SymbolBudget names;
    EXPECT_TRUE(names.TakeName(MostSymbolText / 2));
    EXPECT_FALSE(names.TakeName(MostSymbolText / 2));
    std::string const ofNames = "with it the modules have more than 64 MiB of names of symbols, "
                                "the limit of what is looked at";
    EXPECT_EQ(names.Limit(), ofNames);
    EXPECT_EQ(ReadModuleNeeds(ByteView(source), names).flaw, ofNames);
}

// Of the other format no more than its mark is read.
TEST(ModuleImage, OfAnotherSystemIsOnlyNamed)
{
    std::string const other = NativeFormat == ImageFormat::Elf ? "MZ"
                                                               : "\x7f"
                                                                 "ELF";
    ModuleImage const image = ImageOf(other + std::string(4096, '\1'));
    EXPECT_NE(image.format, ImageFormat::None);
    EXPECT_NE(image.format, NativeFormat);
    EXPECT_EQ(image.machine, "");
}

TEST(ModuleImage, KnowsARuntimeWithinAModuleByItsMessages)
{
    for (std::size_t const before : {0U, 5U, 1048570U, 2000000U}) {
        std::string const bytes = std::string(before, 'x') +
                                  "terminate called after throwing an instance of '" +
                                  std::string(100, 'y');
        TextSource source(bytes);
        HeldRuntimes const held = LookForRuntimes(ByteView(source));
        EXPECT_TRUE(held.cpp) << before;
        EXPECT_FALSE(held.jsoncpp);
    }
}

TEST(ByteView, ReadsAcrossItsBlocksAndNotBeyondTheEnd)
{
    std::string text(40000, '\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>('a' + i % 26);
    TextSource source(text);
    ByteView const bytes(source);
    std::string read(20000, ' ');
    EXPECT_TRUE(bytes.Bytes(16000, read.data(), read.size()));
    EXPECT_EQ(read, text.substr(16000, 20000));
    EXPECT_FALSE(bytes.Bytes(39999, read.data(), 2));
    EXPECT_FALSE(bytes.Bytes(UINT64_MAX, read.data(), 2));
    EXPECT_EQ(bytes.Name(39990), "") << "it has no end";
    EXPECT_EQ(bytes.Number(40000, 1), std::nullopt);
}

TEST(ByteView, NamesEndAtTheirZeroOrAreNone)
{
    std::string text(20000, 'n');
    text[16390] = '\0';
    TextSource source(text);
    ByteView const bytes(source);
    EXPECT_EQ(bytes.Name(16380), std::string(10, 'n')) << "across two blocks";
    EXPECT_EQ(bytes.Name(15800, 512), "") << "longer than a name";
    EXPECT_EQ(bytes.Name(15800, 1000).size(), 590U);
}

TEST(ModuleImage, IsNoneForWhatIsNoModule)
{
    for (char const* text : {"", "M", "\x7f", "a text"})
        EXPECT_EQ(ImageOf(text).format, ImageFormat::None) << text;
}

TEST(ModuleImage, IsFlawedOrNoneWhereverItsHeaderIsCut)
{
    std::string const bytes = PluginBytes();
    for (std::size_t size = 0; size < std::min<std::size_t>(bytes.size(), 4096); ++size) {
        ModuleImage const image = ImageOf(std::string_view(bytes).substr(0, size));
        EXPECT_TRUE(image.format == ImageFormat::None || !image.flaw.empty()) << size;
    }
}

// Under the sanitizers, above all: whatever the bytes say, no read leaves them.
TEST(ModuleImage, SurvivesBytesThatWereMadeToHarm)
{
    std::string const bytes = PluginBytes();
    std::mt19937 random(4711);
    for (int round = 0; round < 20000; ++round) {
        std::string harmed = bytes;
        // The headers more often than the rest.
        std::size_t const reach =
            round % 2 == 0 ? std::min<std::size_t>(1024, bytes.size()) : bytes.size();
        for (int change = 0; change < 8; ++change) {
            char const extremes[] = {'\0', '\x7f', '\xff', static_cast<char>(random())};
            harmed[random() % reach] = extremes[random() % 4];
        }
        ModuleImage const image = ImageOf(harmed);
        EXPECT_LE(image.imports.size(), MostImports + 1);
        if (image.format == NativeFormat && image.flaw.empty()) {
            EXPECT_LE(OffersOf(harmed).exports.size(), MostSymbols);
            EXPECT_LE(NeedsOf(harmed).imports.size(), MostSymbols);
        }
    }
}

} // namespace
