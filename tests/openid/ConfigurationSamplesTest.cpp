#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "openid/TestFolder.h"
#include "openid/session/Configuration.h"

// The files that docs/schemas/HxSSOOpenID.schema.json is held against, read by the plugin.
// tests/schemas/check.py tells what their folders mean.

using namespace Halvorix::OpenId;
using testing::IsEmpty;
using testing::Not;

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> Samples(std::string const& folder)
{
    std::vector<fs::path> samples;
    for (auto const& entry : fs::directory_iterator(fs::u8path(HXSSO_OPENID_SAMPLES) / folder))
        samples.push_back(entry.path());
    std::sort(samples.begin(), samples.end());
    EXPECT_FALSE(samples.empty()) << folder;
    return samples;
}

} // namespace

TEST(ConfigurationSamples, AreReadAsTheSchemaSays)
{
    for (fs::path const& sample : Samples("accepted")) {
        auto const configuration = ReadConfiguration(sample);
        EXPECT_TRUE(configuration) << configuration.Why().reason;
    }
}

TEST(ConfigurationSamples, AreReadWithAWarningThoughTheSchemaWarns)
{
    for (fs::path const& sample : Samples("reader-only")) {
        auto const configuration = ReadConfiguration(sample);
        ASSERT_TRUE(configuration) << configuration.Why().reason;
        if (sample.filename() != "byte-order-mark.json") {
            EXPECT_THAT(configuration->remarks, Not(IsEmpty())) << sample;
        }
    }
}

TEST(ConfigurationSamples, AreRefusedAsTheSchemaSays)
{
    for (fs::path const& sample : Samples("refused"))
        EXPECT_FALSE(ReadConfiguration(sample)) << sample;
}

TEST(ConfigurationSamples, AreRefusedThoughTheSchemaCannotSayIt)
{
    for (fs::path const& sample : Samples("schema-only"))
        EXPECT_FALSE(ReadConfiguration(sample)) << sample;
}
