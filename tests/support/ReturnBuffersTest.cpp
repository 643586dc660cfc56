#include "support/ReturnBuffers.h"

#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "support/GuardedBuffer.h"

using namespace Halvorix::SSOServices;
using namespace std::string_literals;
using HxSSOTest::GuardedBuffer;

namespace {

struct WideCase {
    std::wstring text;
    int capacity;
    int answer;
    std::wstring stored; // the buffer's leading units
};

struct NarrowCase {
    std::string bytes;
    int capacity;
    int answer;
    std::string stored;
};

std::wstring const Zero(1, L'\0');

} // namespace

TEST(TruncatingGetter, StoresAsMuchAsFitsAndTerminates)
{
    for (WideCase const& row : {
             WideCase{L"abc", 100, 3, L"abc" + Zero},
             WideCase{L"abc", 5, 3, L"abc" + Zero},
             WideCase{L"abc", 4, 3, L"abc" + Zero},
             WideCase{L"abc", 3, 2, L"ab" + Zero},
             WideCase{L"abc", 2, 1, L"a" + Zero},
             WideCase{L"abc", 1, 0, Zero},
             WideCase{L"", 1, 0, Zero},
             WideCase{L"", 5, 0, Zero},
         }) {
        SCOPED_TRACE(row.capacity);
        GuardedBuffer<wchar_t> buffer(row.capacity);
        EXPECT_EQ(GetTruncated(row.text, buffer.Data(), row.capacity), row.answer);
        EXPECT_EQ(buffer.First(row.stored.size()), row.stored);
        EXPECT_TRUE(buffer.GuardsIntact());
    }
}

TEST(TruncatingGetter, WritesNothingWithoutCapacity)
{
    for (int capacity : {0, -1, -4, INT_MIN}) {
        SCOPED_TRACE(capacity);
        GuardedBuffer<wchar_t> buffer(8);
        EXPECT_EQ(GetTruncated(L"abc", buffer.Data(), capacity), 0);
        EXPECT_EQ(buffer.Content(), buffer.Untouched());
        EXPECT_TRUE(buffer.GuardsIntact());
    }
}

TEST(TruncatingGetter, AnswersTheLengthForANullBufferWhateverTheCapacity)
{
    for (int capacity : {0, -1, 1, 3, 4, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(capacity);
        EXPECT_EQ(GetTruncated(L"abc", nullptr, capacity), 3);
        EXPECT_EQ(GetTruncated(L"", nullptr, capacity), 0);
    }
}

TEST(TruncatingGetter, CountsEmbeddedZerosOnlyInTheLengthQuery)
{
    std::wstring const text = L"ab\0cd"s;
    EXPECT_EQ(GetTruncated(text, nullptr, 0), 5);
    for (WideCase const& row : {
             WideCase{text, 6, 2, L"ab" + Zero},
             WideCase{text, 4, 2, L"ab" + Zero},
             WideCase{text, 3, 2, L"ab" + Zero},
             WideCase{text, 2, 1, L"a" + Zero},
         }) {
        SCOPED_TRACE(row.capacity);
        GuardedBuffer<wchar_t> buffer(row.capacity);
        EXPECT_EQ(GetTruncated(row.text, buffer.Data(), row.capacity), row.answer);
        EXPECT_EQ(buffer.First(row.stored.size()), row.stored);
        EXPECT_TRUE(buffer.GuardsIntact());
    }
}

TEST(TruncatingGetter, CountsUnitsNotCharacters)
{
    std::wstring const pair = {static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)};
    EXPECT_EQ(GetTruncated(pair, nullptr, 0), 2);
    GuardedBuffer<wchar_t> buffer(2);
    EXPECT_EQ(GetTruncated(pair, buffer.Data(), 2), 1);
    EXPECT_EQ(buffer.Content(), pair.substr(0, 1) + Zero);
}

TEST(CopyWideToBuffer, StoresAsMuchAsFitsAndTerminates)
{
    for (WideCase const& row : {
             WideCase{L"abc", 5, 3, L"abc" + Zero},
             WideCase{L"abc", 4, 3, L"abc" + Zero},
             WideCase{L"abc", 3, 2, L"ab" + Zero},
             WideCase{L"abc", 1, 0, Zero},
             WideCase{L"", 1, 0, Zero},
         }) {
        SCOPED_TRACE(row.capacity);
        GuardedBuffer<wchar_t> buffer(row.capacity);
        EXPECT_EQ(CopyWideToBuffer(buffer.Data(), row.capacity, row.text.c_str()), row.answer);
        EXPECT_EQ(buffer.First(row.stored.size()), row.stored);
        EXPECT_TRUE(buffer.GuardsIntact());
    }
}

TEST(CopyWideToBuffer, AnswersZeroWithoutCapacity)
{
    for (int capacity : {0, -1, INT_MIN}) {
        SCOPED_TRACE(capacity);
        GuardedBuffer<wchar_t> buffer(8);
        EXPECT_EQ(CopyWideToBuffer(buffer.Data(), capacity, L"abc"), 0);
        EXPECT_EQ(buffer.Content(), buffer.Untouched());
    }
}

TEST(AllOrNothingGetter, StoresTheWholeTextOrTheEmptyOne)
{
    for (WideCase const& row : {
             WideCase{L"abc", 100, 3, L"abc" + Zero},
             WideCase{L"abc", 4, 3, L"abc" + Zero},
             WideCase{L"abc", 3, 0, Zero},
             WideCase{L"abc", 2, 0, Zero},
             WideCase{L"abc", 1, 0, Zero},
             WideCase{L"", 1, 0, Zero},
         }) {
        SCOPED_TRACE(row.capacity);
        GuardedBuffer<wchar_t> buffer(row.capacity);
        EXPECT_EQ(GetAllOrNothing(row.text, buffer.Data(), row.capacity), row.answer);
        EXPECT_EQ(buffer.First(row.stored.size()), row.stored);
        EXPECT_TRUE(buffer.GuardsIntact());
    }
}

TEST(AllOrNothingGetter, LeavesTheRestOfABufferThatIsTooSmall)
{
    GuardedBuffer<wchar_t> buffer(3);
    EXPECT_EQ(GetAllOrNothing(L"abc", buffer.Data(), 3), 0);
    EXPECT_EQ(buffer.Content(), Zero + L"##");
}

TEST(AllOrNothingGetter, WritesNothingWithoutCapacity)
{
    for (int capacity : {0, -1, INT_MIN}) {
        for (std::wstring const& text : {L"abc"s, L""s}) {
            SCOPED_TRACE(capacity);
            GuardedBuffer<wchar_t> buffer(8);
            EXPECT_EQ(GetAllOrNothing(text, buffer.Data(), capacity), 0);
            EXPECT_EQ(buffer.Content(), buffer.Untouched());
        }
    }
}

TEST(AllOrNothingGetter, AnswersTheLengthForANullBufferWhateverTheCapacity)
{
    for (int capacity : {0, -1, 1, 3, 4, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(capacity);
        EXPECT_EQ(GetAllOrNothing(L"abc", nullptr, capacity), 3);
    }
}

TEST(AllOrNothingGetter, WantsRoomForTheCountedLengthButCopiesToTheFirstZero)
{
    std::wstring const text = L"ab\0cd"s;
    EXPECT_EQ(GetAllOrNothing(text, nullptr, 0), 5);

    GuardedBuffer<wchar_t> enough(6);
    EXPECT_EQ(GetAllOrNothing(text, enough.Data(), 6), 2);
    EXPECT_EQ(enough.First(3), L"ab" + Zero);
    EXPECT_TRUE(enough.GuardsIntact());

    GuardedBuffer<wchar_t> tooSmall(5);
    EXPECT_EQ(GetAllOrNothing(text, tooSmall.Data(), 5), 0);
    EXPECT_EQ(tooSmall.First(1), Zero);
    EXPECT_TRUE(tooSmall.GuardsIntact());
}

TEST(BytesGetter, TerminatesOnlyWithRoomBehindTheBytes)
{
    for (NarrowCase const& row : {
             NarrowCase{"abc", 6, 3, "abc\0##"s},
             NarrowCase{"abc", 4, 3, "abc\0"s},
             NarrowCase{"abc", 3, 3, "abc"},
             NarrowCase{"abc", 2, 2, "ab"},
             NarrowCase{"abc", 1, 1, "a"},
             NarrowCase{"", 5, 0, "\0####"s},
             NarrowCase{"", 1, 0, "\0"s},
         }) {
        SCOPED_TRACE(row.capacity);
        GuardedBuffer<char> buffer(row.capacity);
        EXPECT_EQ(CopyBytesToBuffer(row.bytes, buffer.Data(), row.capacity), row.answer);
        EXPECT_EQ(buffer.Content(), row.stored);
        EXPECT_TRUE(buffer.GuardsIntact());
    }
}

TEST(BytesGetter, WritesNothingAtCapacityZero)
{
    for (std::string const& bytes : {"abc"s, ""s}) {
        GuardedBuffer<char> buffer(8);
        EXPECT_EQ(CopyBytesToBuffer(bytes, buffer.Data(), 0), 0);
        EXPECT_EQ(buffer.Content(), buffer.Untouched());
        EXPECT_TRUE(buffer.GuardsIntact());
    }
}

// Not guarded on purpose: a caller must never pass one.
TEST(BytesGetter, CopiesAllBytesUnterminatedAtANegativeCapacity)
{
    for (int capacity : {-1, -7, INT_MIN}) {
        SCOPED_TRACE(capacity);
        GuardedBuffer<char> buffer(8);
        EXPECT_EQ(CopyBytesToBuffer("abc", buffer.Data(), capacity), 3);
        EXPECT_EQ(buffer.Content(), "abc#####");

        GuardedBuffer<char> forEmpty(8);
        EXPECT_EQ(CopyBytesToBuffer("", forEmpty.Data(), capacity), 0);
        EXPECT_EQ(forEmpty.Content(), forEmpty.Untouched());
    }
}

TEST(BytesGetter, AnswersTheCountForANullBufferWhateverTheCapacity)
{
    for (int capacity : {0, -1, 1, 3, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(capacity);
        EXPECT_EQ(CopyBytesToBuffer("a\0c"s, nullptr, capacity), 3);
        EXPECT_EQ(CopyBytesToBuffer("", nullptr, capacity), 0);
    }
}

TEST(BytesGetter, CopiesEmbeddedZerosLikeOtherBytes)
{
    std::string const bytes = "a\0c\0"s;
    GuardedBuffer<char> whole(5);
    EXPECT_EQ(CopyBytesToBuffer(bytes, whole.Data(), 5), 4);
    EXPECT_EQ(whole.Content(), "a\0c\0\0"s);

    GuardedBuffer<char> cut(3);
    EXPECT_EQ(CopyBytesToBuffer(bytes, cut.Data(), 3), 3);
    EXPECT_EQ(cut.Content(), "a\0c"s);
    EXPECT_TRUE(cut.GuardsIntact());
}
