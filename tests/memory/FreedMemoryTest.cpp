#include "memory/FreedMemory.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "framework/Secrets.h"

using Rig::FreedMemory;
namespace Secrets = Rig::Secrets;

namespace {

template <class Unit>
int FoundIn(std::basic_string<Unit> const& text)
{
    FreedMemory const memory(Secrets::AccessToken);
    // The compiler may drop a pair of new and delete, but not what goes through
    // a pointer that it does not know.
    auto* volatile copy = new std::basic_string<Unit>(text);
    delete copy;
    return memory.WithSecret();
}

} // namespace

TEST(FreedMemory, FindsASecretInBytesAndInWideUnits)
{
    EXPECT_EQ(FoundIn(std::string("x") + Secrets::AccessToken + "y"), 1);
    EXPECT_EQ(FoundIn(L"x" + Secrets::Wide(Secrets::AccessToken) + L"y"), 1);
}

// Written by another's encoder, with one, two and three bytes before it.
TEST(FreedMemory, FindsASecretInBase64AtEachPlaceOfAGroup)
{
    EXPECT_EQ(FoundIn(std::string("cGxhbnRlZC1hY2Nlc3MtdG9rZW4tNGYxZTljMjdiNg==")), 1);
    EXPECT_EQ(FoundIn(std::string("eHBsYW50ZWQtYWNjZXNzLXRva2VuLTRmMWU5YzI3YjY=")), 1);
    EXPECT_EQ(FoundIn(std::string("eHhwbGFudGVkLWFjY2Vzcy10b2tlbi00ZjFlOWMyN2I2")), 1);
}

TEST(FreedMemory, FindsNothingInOtherTextsNorInWhatIsNotFreed)
{
    EXPECT_EQ(FoundIn(std::string("planted-access-token, but not all of it")), 0);
    std::string kept = Secrets::AccessToken;
    int found = 0;
    int searched = 0;
    {
        FreedMemory const memory(Secrets::AccessToken);
        auto* volatile other = new int(1);
        delete other;
        found = memory.WithSecret();
        searched = memory.Searched();
    }
    EXPECT_EQ(found, 0);
    EXPECT_EQ(searched, 1);
}

TEST(FreedMemory, FindsWhatGrowthLeavesBehind)
{
    std::string text = Secrets::AccessToken;
    FreedMemory const memory(Secrets::AccessToken);
    // Not reserve(): on Windows the runtime's own operator delete would see that.
    std::string larger;
    larger.reserve(1000);
    larger = text;
    text.swap(larger);
    std::string().swap(larger);
    EXPECT_EQ(memory.WithSecret(), 1);
}
