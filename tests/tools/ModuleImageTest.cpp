#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "../../tools/common/ModuleImage.h"

namespace {

using namespace Halvorix::Tools;

std::string PluginBytes()
{
    std::ifstream stream(HXSSO_TEST_MODULE, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

bool Imports(ModuleImage const& image, std::string const& beginning)
{
    return std::any_of(image.imports.begin(), image.imports.end(),
                       [&](std::string const& name) { return name.rfind(beginning, 0) == 0; });
}

TEST(ModuleImage, TellsWhatAPluginNeedsAndExports)
{
    ModuleImage const image = ReadModuleImage(PluginBytes());
    EXPECT_NE(image.format, ImageFormat::None);
    EXPECT_EQ(image.flaw, "");
    EXPECT_TRUE(image.isModule);
    EXPECT_FALSE(image.machine.empty());
    EXPECT_TRUE(Imports(image, "PluginDependency"));
    EXPECT_EQ(image.factoryNames.size(), 1U);
    EXPECT_FALSE(image.holdsCppRuntime);
}

TEST(ModuleImage, IsNoneForWhatIsNoModule)
{
    for (char const* text : {"", "M", "MZ", "\x7f", "a text"})
        EXPECT_EQ(ReadModuleImage(text).format, ImageFormat::None) << text;
}

TEST(ModuleImage, IsFlawedOrNoneWhereverItsHeaderIsCut)
{
    std::string const bytes = PluginBytes();
    for (std::size_t size = 0; size < std::min<std::size_t>(bytes.size(), 4096); ++size) {
        ModuleImage const image = ReadModuleImage(std::string_view(bytes).substr(0, size));
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
        ModuleImage const image = ReadModuleImage(harmed);
        EXPECT_LE(image.imports.size(), 1025U);
    }
}

} // namespace
