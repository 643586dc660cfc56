#include "support/TextConversion.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace Halvorix::SSOServices;
using namespace std::string_literals;

namespace {

// Where units have 16 bits a value keeps its low 16 bits.
std::wstring Units(std::vector<std::uint64_t> const& values)
{
    std::wstring text;
    for (std::uint64_t value : values) {
        text.push_back(static_cast<wchar_t>(value));
    }
    return text;
}

struct Form {
    unsigned firstLead;
    unsigned lastLead;
    std::size_t length;
    unsigned payload; // bits of the lead byte
};

constexpr Form Forms[] = {
    {0x00, 0x7F, 1, 0x7F}, {0xC0, 0xDF, 2, 0x1F}, {0xE0, 0xEF, 3, 0x0F},
    {0xF0, 0xF7, 4, 0x07}, {0xF8, 0xFB, 5, 0x03}, {0xFC, 0xFF, 6, 0x03},
};

std::optional<std::vector<std::uint64_t>> Decode(std::string const& bytes)
{
    std::vector<std::uint64_t> values;
    for (std::size_t at = 0; at < bytes.size();) {
        unsigned const lead = static_cast<unsigned char>(bytes[at]);
        Form const* form = nullptr;
        for (Form const& candidate : Forms) {
            if (candidate.firstLead <= lead && lead <= candidate.lastLead) {
                form = &candidate;
            }
        }
        if (form == nullptr || bytes.size() - at < form->length) {
            return std::nullopt;
        }
        std::uint64_t value = lead & form->payload;
        for (std::size_t i = 1; i < form->length; ++i) {
            unsigned const follower = static_cast<unsigned char>(bytes[at + i]);
            if (follower < 0x80 || follower > 0xBF) {
                return std::nullopt;
            }
            value = value * 64 + (follower - 0x80);
        }
        if (value > 0x10FFFF) {
            return std::nullopt;
        }
        values.push_back(value);
        at += form->length;
    }
    return values;
}

std::wstring Expected(std::string const& bytes)
{
    auto const values = Decode(bytes);
    return values ? Units(*values) : std::wstring();
}

std::string Bytes(std::vector<unsigned> const& values)
{
    std::string bytes;
    for (unsigned value : values) {
        bytes.push_back(static_cast<char>(value));
    }
    return bytes;
}

std::string Encoded(std::uint32_t value)
{
    if (value < 0x80) {
        return Bytes({value});
    }
    if (value < 0x800) {
        return Bytes({0xC0 | value >> 6, 0x80 | (value & 0x3F)});
    }
    if (value < 0x10000) {
        return Bytes({0xE0 | value >> 12, 0x80 | (value >> 6 & 0x3F), 0x80 | (value & 0x3F)});
    }
    return Bytes({0xF0 | value >> 18, 0x80 | (value >> 12 & 0x3F), 0x80 | (value >> 6 & 0x3F),
                  0x80 | (value & 0x3F)});
}

struct Reading {
    std::string bytes;
    std::vector<std::uint64_t> values;
};

} // namespace

TEST(Utf8ToWide, ReadsFormsOfOneToSixBytes)
{
    for (Reading const& row : {
             Reading{"", {}},
             Reading{"abc", {'a', 'b', 'c'}},
             Reading{"\x7F", {0x7F}},
             Reading{"\xC2\x80", {0x80}},
             Reading{"\xC3\xA9", {0xE9}},
             Reading{"\xDF\xBF", {0x7FF}},
             Reading{"\xE0\xA0\x80", {0x800}},
             Reading{"\xE2\x82\xAC", {0x20AC}},
             Reading{"\xEF\xBF\xBF", {0xFFFF}},
             Reading{"\xF0\x90\x80\x80", {0x10000}},
             Reading{"\xF0\x9F\x98\x80", {0x1F600}},
             Reading{"\xF4\x8F\xBF\xBF", {0x10FFFF}},
             Reading{"\xF8\x84\x8F\xBF\xBF", {0x10FFFF}},
             Reading{"\xFC\x80\x84\x8F\xBF\xBF", {0x10FFFF}},
             Reading{"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z", {'a', 0xE9, 0x20AC, 0x1F600, 'z'}},
         }) {
        SCOPED_TRACE(testing::PrintToString(row.bytes));
        EXPECT_EQ(Utf8ToWide(row.bytes), Units(row.values));
    }
}

TEST(Utf8ToWide, KeepsAValueAboveSixteenBitsAsFarAsAUnitGoes)
{
    std::wstring const text = Utf8ToWide("\xF0\x9F\x98\x80");
    ASSERT_EQ(text.size(), 1U);
    EXPECT_EQ(static_cast<std::uint32_t>(text[0]), sizeof(wchar_t) == 2 ? 0xF600U : 0x1F600U);
}

TEST(Utf8ToWide, AcceptsOverlongForms)
{
    for (Reading const& row : {
             Reading{"\xC0\x80", {0}},
             Reading{"\xC1\x81", {'A'}},
             Reading{"\xE0\x81\x81", {'A'}},
             Reading{"\xF0\x80\x81\x81", {'A'}},
             Reading{"\xF8\x80\x80\x81\x81", {'A'}},
             Reading{"\xFC\x80\x80\x80\x81\x81", {'A'}},
         }) {
        SCOPED_TRACE(testing::PrintToString(row.bytes));
        EXPECT_EQ(Utf8ToWide(row.bytes), Units(row.values));
    }
}

TEST(Utf8ToWide, KeepsByteOrderMarkZeroBytesAndSurrogates)
{
    EXPECT_EQ(Utf8ToWide("\xEF\xBB\xBF"s + "ab"), Units({0xFEFF, 'a', 'b'}));
    EXPECT_EQ(Utf8ToWide("\xEF\xBB\xBF"), Units({0xFEFF}));
    EXPECT_EQ(Utf8ToWide("\xFE\xFF"), L"");
    EXPECT_EQ(Utf8ToWide("a\0b\0"s), L"a\0b\0"s);
    EXPECT_EQ(Utf8ToWide("\xED\xA0\xBD\xED\xB8\x80"), Units({0xD83D, 0xDE00}));
}

TEST(Utf8ToWide, RefusesTheWholeTextForOneBadPlace)
{
    for (std::string const& bytes : {
             "\xFF"s,
             "\xFE"s,
             "abc\xC3"s,
             "\x80"s,
             "abc\xBF"s + "abc",
             "\xC3\x28"s,
             "\xC3\xC3\xA9"s,
             "\xE2\x82"s,
             "\xE2\x82"s + "a",
             "\xE2"s,
             "\xF0\x9F\x98"s,
             "\xF0\x9F\x98\xC0"s,
             "\xF8\x80\x80\x81"s,
             "\xFC\x80\x80\x80\x81"s,
             "\xF4\x90\x80\x80"s, // 0x110000
             "\xF7\xBF\xBF\xBF"s,
             "\xF8\x88\x80\x80\x80"s,     // 0x200000
             "\xFC\x84\x80\x80\x80\x80"s, // 0x4000000
             "\xFD\xBF\xBF\xBF\xBF\xBF"s,
             "\xFE\x80\x80\x80\x80\x80"s,
             "\xFE\x80\x80\x80\x80\x80\x80"s,
             "\xFF\x80\x80\x80\x80\x80"s,
             "\xFF\x80\x80\x80\x80\x80\x80"s,
             "good \xC3\xA9 then \xFF then good"s,
             "caf\xE9"s, // another encoding
         }) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        EXPECT_EQ(Utf8ToWide(bytes), L"");
    }
}

TEST(Utf8ToWide, RefusesEveryLeadByteFrom80ToBF)
{
    for (unsigned lead = 0x80; lead <= 0xBF; ++lead) {
        SCOPED_TRACE(lead);
        EXPECT_EQ(Utf8ToWide(Bytes({'a', lead, 'b'})), L"");
        EXPECT_EQ(Utf8ToWide(Bytes({lead, 0x80, 0x80, 0x80, 0x80, 0x80})), L"");
    }
}

TEST(Utf8ToWide, AgreesWithTheTableOnEveryPairOfBytes)
{
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            std::string const bytes = Bytes({first, second});
            ASSERT_EQ(Utf8ToWide(bytes), Expected(bytes)) << first << ' ' << second;
        }
    }
}

TEST(Utf8ToWide, AgreesWithTheTableOnEveryLeadByteAndFollowerCount)
{
    for (unsigned lead = 0; lead < 256; ++lead) {
        for (unsigned follower : {0x7FU, 0x80U, 0x81U, 0x8FU, 0x90U, 0xBFU, 0xC0U}) {
            for (std::size_t count = 0; count < 8; ++count) {
                std::string const bytes =
                    Bytes({lead}) + std::string(count, static_cast<char>(follower));
                ASSERT_EQ(Utf8ToWide(bytes), Expected(bytes))
                    << lead << ' ' << follower << ' ' << count;
            }
        }
    }
}

TEST(Utf8ToWide, AgreesWithTheTableOnRandomBytes)
{
    std::mt19937 random(20240607);
    int accepted = 0;
    int refused = 0;
    for (int round = 0; round < 20000; ++round) {
        // Whole forms of all lengths, now and then with a byte changed or lost,
        // since plain noise is almost never text.
        std::string bytes;
        for (unsigned forms = random() % 6; forms > 0; --forms) {
            Form const& form = Forms[random() % 6];
            std::string sequence = Bytes({form.firstLead + static_cast<unsigned>(random() % 2)});
            if (form.length == 1) {
                sequence = Bytes({static_cast<unsigned>(random() % 128)});
            }
            for (std::size_t i = 1; i < form.length; ++i) {
                bool const small = random() % 4 != 0 && i + 3 < form.length;
                sequence += Bytes({0x80 + static_cast<unsigned>(small ? 0 : random() % 64)});
            }
            if (random() % 16 == 0) {
                sequence[random() % sequence.size()] = static_cast<char>(random() % 256);
            }
            if (random() % 32 == 0) {
                sequence.pop_back();
            }
            bytes += sequence;
        }
        auto const values = Decode(bytes);
        (values ? accepted : refused) += 1;
        ASSERT_EQ(Utf8ToWide(bytes), Expected(bytes)) << testing::PrintToString(bytes);
    }
    EXPECT_GT(accepted, 2000);
    EXPECT_GT(refused, 2000);
}

TEST(Utf8ToWide, ReadsALongText)
{
    std::string bytes;
    for (int i = 0; i < 100000; ++i) {
        bytes += "ab\xE2\x82\xAC";
    }
    std::wstring const text = Utf8ToWide(bytes);
    ASSERT_EQ(text.size(), 300000U);
    EXPECT_EQ(text.substr(299997), Units({'a', 'b', 0x20AC}));
    EXPECT_EQ(Utf8ToWide(bytes + "\xC3"), L"");
}

TEST(WideToUtf8, WritesOneToThreeBytesAUnit)
{
    EXPECT_EQ(WideToUtf8(L""), "");
    EXPECT_EQ(WideToUtf8(L"abc"), "abc");
    EXPECT_EQ(WideToUtf8(Units({0x7F})), "\x7F");
    EXPECT_EQ(WideToUtf8(Units({0x80})), "\xC2\x80");
    EXPECT_EQ(WideToUtf8(Units({0x7FF})), "\xDF\xBF");
    EXPECT_EQ(WideToUtf8(Units({0x800})), "\xE0\xA0\x80");
    EXPECT_EQ(WideToUtf8(Units({0xFFFF})), "\xEF\xBF\xBF");
    EXPECT_EQ(WideToUtf8(Units({'a', 0xE9, 0x20AC, 'z'})), "a\xC3\xA9\xE2\x82\xACz");
}

TEST(WideToUtf8, KeepsByteOrderMarkAndZeroUnitsAndAddsNone)
{
    EXPECT_EQ(WideToUtf8(L"a\0b\0"s), "a\0b\0"s);
    EXPECT_EQ(WideToUtf8(Units({0xFEFF, 'a'})), "\xEF\xBB\xBF"s + "a");
}

TEST(WideToUtf8, WritesEachSurrogateByItself)
{
    EXPECT_EQ(WideToUtf8(Units({0xD83D, 0xDE00})), "\xED\xA0\xBD\xED\xB8\x80");
    EXPECT_EQ(WideToUtf8(Units({0xDE00})), "\xED\xB8\x80");
    EXPECT_EQ(WideToUtf8(Units({0xD83D, 'a'})), "\xED\xA0\xBD"s + "a");
}

TEST(WideToUtf8, WritesEveryUnitSoThatItReadsBack)
{
    for (std::uint32_t value = 0; value <= 0xFFFF; ++value) {
        std::wstring const unit = Units({value});
        std::string const bytes = WideToUtf8(unit);
        ASSERT_EQ(bytes, Encoded(value)) << value;
        ASSERT_EQ(Utf8ToWide(bytes), unit) << value;
    }
}

TEST(WideToUtf8, WritesAValueAboveSixteenBitsWhole)
{
    if (sizeof(wchar_t) == 2) {
        GTEST_SKIP() << "units have 16 bits";
    }
    for (std::uint32_t value = 0x10000; value <= 0x10FFFF; value += 0x3FF) {
        std::wstring const unit = Units({value});
        std::string const bytes = WideToUtf8(unit);
        ASSERT_EQ(bytes, Encoded(value)) << value;
        ASSERT_EQ(Utf8ToWide(bytes), unit) << value;
    }
    EXPECT_EQ(WideToUtf8(Units({0x1F600})), "\xF0\x9F\x98\x80");
}

TEST(WideToUtf8, ReplacesAValueThatIsNoCharacter)
{
    if (sizeof(wchar_t) == 2) {
        GTEST_SKIP() << "units have 16 bits";
    }
    EXPECT_EQ(WideToUtf8(Units({'a', 0x110000, 'b'})), "a\xEF\xBF\xBD"s + "b");
    EXPECT_EQ(WideToUtf8(Units({0xFFFFFFFF})), "\xEF\xBF\xBD");
}
