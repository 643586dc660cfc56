#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/Files.h"
#include "common/linux/LoaderCache.h"

namespace {

using namespace Halvorix::Tools;

template <class Number>
void Append(std::string& bytes, Number number)
{
    char text[sizeof(number)];
    std::memcpy(text, &number, sizeof(number));
    bytes.append(text, sizeof(number));
}

struct Named {
    char const* name;
    char const* file;
    std::uint64_t hardware;
};

// As ldconfig writes it: head, entries, texts.
std::string Cache(std::vector<Named> const& list)
{
    std::string texts;
    std::string entries;
    auto const place = [&](char const* text) {
        std::size_t const at = 48 + 24 * list.size() + texts.size();
        texts += text;
        texts += '\0';
        return static_cast<std::uint32_t>(at);
    };
    for (Named const& named : list) {
        Append(entries, std::int32_t{0x0303});
        Append(entries, place(named.name));
        Append(entries, place(named.file));
        Append(entries, std::uint32_t{0});
        Append(entries, named.hardware);
    }
    std::string bytes = "glibc-ld.so.cache1.1";
    Append(bytes, static_cast<std::uint32_t>(list.size()));
    Append(bytes, static_cast<std::uint32_t>(texts.size()));
    bytes.resize(48, '\0');
    return bytes + entries + texts;
}

LoaderCache Read(std::string const& bytes)
{
    TextSource source(bytes);
    return ReadLoaderCache(ByteView(source));
}

TEST(LoaderCache, HasTheFilesOfANameThoseForAllProcessorsFirst)
{
    LoaderCache const cache = Read(Cache({{"liba.so.1", "/fast/liba.so.1", 2},
                                          {"liba.so.1", "/lib/liba.so.1", 0},
                                          {"libb.so", "/lib/libb.so", 0}}));
    ASSERT_EQ(cache.size(), 2U);
    EXPECT_EQ(cache.at("liba.so.1"),
              (std::vector<std::string>{"/lib/liba.so.1", "/fast/liba.so.1"}));
    EXPECT_EQ(cache.at("libb.so"), std::vector<std::string>{"/lib/libb.so"});
}

TEST(LoaderCache, LiesBehindAListOfTheOlderForm)
{
    std::string old = "ld.so-1.7.0";
    old.resize(12, '\0');
    Append(old, std::uint32_t{1});
    old.resize(32, '\0'); // an entry of twelve bytes, rounded up to eight
    std::string const fresh = Cache({{"liba.so.1", "/lib/liba.so.1", 0}});
    EXPECT_EQ(Read(old + fresh).count("liba.so.1"), 1U);
}

TEST(LoaderCache, TakesNoFileThatIsNoWholePathAndNothingOfWhatIsNoCache)
{
    LoaderCache const cache = Read(Cache({{"liba.so.1", "liba.so.1", 0}}));
    EXPECT_TRUE(cache.at("liba.so.1").empty());
    EXPECT_TRUE(Read("").empty());
    EXPECT_TRUE(Read("a text").empty());
    std::string const whole = Cache({{"liba.so.1", "/lib/liba.so.1", 0}});
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_LE(Read(whole.substr(0, size)).size(), 1U) << size;
}

// By reading alone, and yet what the loader itself goes by.
TEST(LoaderCache, OfThisMachineNamesFilesThatAreThere)
{
    if (!std::filesystem::exists("/etc/ld.so.cache"))
        GTEST_SKIP() << "this machine has no cache";
    auto const found = SystemLoaderCache().find("libc.so.6");
    ASSERT_NE(found, SystemLoaderCache().end());
    ASSERT_FALSE(found->second.empty());
    EXPECT_TRUE(std::filesystem::exists(found->second.front())) << found->second.front();
}

} // namespace
