#include "support/SecretText.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

using Halvorix::SSOServices::SecretText;
using Halvorix::SSOServices::Wipe;

namespace {

// A text's room may be looked at as long as the text lives.
template <class Unit>
bool IsBlank(Unit const* room, std::size_t size)
{
    return std::all_of(room, room + size, [](Unit unit) { return unit == Unit{}; });
}

} // namespace

TEST(SecretText, WipingBlanksAllRoomAndKeepsIt)
{
    std::string text(100, 'x');
    text.resize(3); // the rest still lies behind the end
    std::size_t const capacity = text.capacity();
    Wipe(text);
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(text.capacity(), capacity);
    EXPECT_TRUE(IsBlank(text.data(), capacity));
}

TEST(SecretText, WipingBlanksAShortTextToo)
{
    std::wstring text = L"abc";
    Wipe(text);
    EXPECT_TRUE(text.empty());
    EXPECT_TRUE(IsBlank(text.data(), text.capacity()));
}

TEST(SecretText, TakesATextAndLeavesNothingThere)
{
    for (std::string const& original : {std::string("short"), std::string(100, 'x')}) {
        std::string source = original;
        SecretText<char> const secret(std::move(source));
        EXPECT_EQ(*secret, original);
        EXPECT_TRUE(source.empty()); // NOLINT: just that is the question
        EXPECT_TRUE(IsBlank(source.data(), source.capacity()));
    }
}

TEST(SecretText, AnAssignmentLeavesNothingInTheTextThatItTakes)
{
    for (std::size_t const before : {std::size_t{3}, std::size_t{100}}) {
        for (std::string const& original : {std::string("a short one"), std::string(100, 'x')}) {
            SecretText<char> secret(std::string(before, 'b'));
            std::string source = original;
            secret = std::move(source);
            EXPECT_EQ(*secret, original);
            // In the string itself, too, wherever its text lies now.
            std::string_view const itself(reinterpret_cast<char const*>(&source), sizeof source);
            EXPECT_EQ(itself.find(original.substr(original.size() - 3)), std::string_view::npos)
                << before << ", " << original;
            EXPECT_TRUE(IsBlank(source.data(), source.capacity())); // NOLINT: just that is asked
        }
    }
}

TEST(SecretText, CopiesAreIndependent)
{
    SecretText<wchar_t> first(std::wstring(L"first"));
    SecretText<wchar_t> const copy(first);
    first = SecretText<wchar_t>(std::wstring(50, L'y'));
    EXPECT_EQ(*copy, L"first");
    EXPECT_EQ(*first, std::wstring(50, L'y'));
    first = *&first;
    EXPECT_EQ(first->size(), 50U);
    first = copy;
    EXPECT_EQ(*first, L"first");
}
