#include "json/Base64.h"

#include <cstddef>
#include <random>
#include <stdexcept>
#include <string>

#include <boost/archive/iterators/dataflow_exception.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Halvorix::SSOServices;
using namespace std::string_literals;
using boost::archive::iterators::dataflow_exception;
using testing::StrEq;
using testing::ThrowsMessage;

namespace {

std::string const Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string EncodedBitByBit(std::string const& bytes)
{
    std::string bits;
    for (char byte : bytes) {
        for (int bit = 7; bit >= 0; --bit) {
            bits.push_back((static_cast<unsigned char>(byte) >> bit & 1) != 0 ? '1' : '0');
        }
    }
    while (bits.size() % 6 != 0) {
        bits.push_back('0');
    }
    std::string text;
    for (std::size_t at = 0; at < bits.size(); at += 6) {
        text.push_back(Alphabet[std::stoul(bits.substr(at, 6), nullptr, 2)]);
    }
    text.append((3 - bytes.size() % 3) % 3, '=');
    return text;
}

std::string AllBytes()
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes.push_back(static_cast<char>(byte));
    }
    return bytes;
}

void ExpectRefused(std::string const& text)
{
    EXPECT_THAT([&] { Base64Decode(text); },
                ThrowsMessage<dataflow_exception>(
                    StrEq("attempt to decode a value not in base64 char set")))
        << testing::PrintToString(text);
}

void ExpectTooShort(std::string const& text)
{
    EXPECT_THAT([&] { Base64Decode(text); },
                ThrowsMessage<std::out_of_range>(StrEq("invalid string position")))
        << testing::PrintToString(text);
}

struct Pair {
    std::string bytes;
    std::string text;
};

} // namespace

TEST(Base64, EncodesAndDecodesTheVectorsOfTheStandard)
{
    for (Pair const& row : {
             Pair{"", ""},
             Pair{"f", "Zg=="},
             Pair{"fo", "Zm8="},
             Pair{"foo", "Zm9v"},
             Pair{"foob", "Zm9vYg=="},
             Pair{"fooba", "Zm9vYmE="},
             Pair{"foobar", "Zm9vYmFy"},
         }) {
        SCOPED_TRACE(row.bytes);
        EXPECT_EQ(Base64Encode(row.bytes), row.text);
        EXPECT_EQ(Base64Decode(row.text), row.bytes);
    }
}

TEST(Base64, PadsByTheByteCount)
{
    EXPECT_EQ(Base64Encode(""), "");
    EXPECT_EQ(Base64Encode("\0"s), "AA==");
    EXPECT_EQ(Base64Encode("\0\0"s), "AAA=");
    EXPECT_EQ(Base64Encode("\0\0\0"s), "AAAA");
    EXPECT_EQ(Base64Encode("\xFF"), "/w==");
    EXPECT_EQ(Base64Encode("\xFF\xFF"), "//8=");
    EXPECT_EQ(Base64Encode("\xFF\xFF\xFF"), "////");
    EXPECT_EQ(Base64Encode("\xFB\xEF\xBE"), "++++");
}

TEST(Base64, CarriesEveryByteInEveryPlace)
{
    for (int byte = 0; byte < 256; ++byte) {
        std::string const one(1, static_cast<char>(byte));
        for (std::string const& bytes :
             {one, "a" + one, "ab" + one, one + "a", one + "ab", one + one + one}) {
            std::string const text = Base64Encode(bytes);
            ASSERT_EQ(text, EncodedBitByBit(bytes)) << byte;
            ASSERT_EQ(Base64Decode(text), bytes) << byte;
        }
    }
    std::string const all = AllBytes();
    EXPECT_EQ(Base64Encode(all), EncodedBitByBit(all));
    EXPECT_EQ(Base64Decode(Base64Encode(all)), all);
}

TEST(Base64, CarriesTextsOfEveryLength)
{
    std::mt19937 random(20240611);
    for (std::size_t length = 0; length < 300; ++length) {
        std::string bytes;
        while (bytes.size() < length) {
            bytes.push_back(static_cast<char>(random() % 256));
        }
        std::string const text = Base64Encode(bytes);
        ASSERT_EQ(text, EncodedBitByBit(bytes)) << length;
        ASSERT_EQ(text.find_first_of("\r\n"), std::string::npos);
        ASSERT_EQ(Base64Decode(text), bytes) << length;
    }
}

TEST(Base64, DecodesWithoutPadding)
{
    EXPECT_EQ(Base64Decode("Zg"), "f");
    EXPECT_EQ(Base64Decode("Zm8"), "fo");
    EXPECT_EQ(Base64Decode("Zm9vYg"), "foob");
    EXPECT_EQ(Base64Decode("Zh"), "f"); // the bits left over are dropped
}

TEST(Base64, ReadsAnEqualsSignAnywhereAsZeroBitsAndDropsAByte)
{
    EXPECT_EQ(Base64Decode("Zm=v"), "f`"); // Zm=v reads as ZmAv: f, 0x60, 0x2F
    EXPECT_EQ(Base64Decode("=m9v"), "\x02\x6F");
    EXPECT_EQ(Base64Decode("Z=g="), "d");
    EXPECT_EQ(Base64Decode("Zg==Zg=="), "f\0"s); // f 0 0 f 0 0 without the last four
    EXPECT_EQ(Base64Decode("A==="), "");
    EXPECT_EQ(Base64Decode("Zm9v===="), "foo\0\0\0"s.substr(0, 2));
}

TEST(Base64, RefusesMoreEqualsSignsThanBytes)
{
    ExpectTooShort("====");
    ExpectTooShort("==");
    ExpectTooShort("===");
    ExpectTooShort("A=======");
}

TEST(Base64, RefusesEveryOtherCharacterInEveryPlace)
{
    for (char character : AllBytes()) {
        bool const allowed = Alphabet.find(character) != std::string::npos || character == '=';
        for (std::size_t place = 0; place < 8; ++place) {
            std::string text = "QUJDREVG";
            text[place] = character;
            if (allowed) {
                EXPECT_NO_THROW(Base64Decode(text)) << text;
            } else {
                ExpectRefused(text);
            }
        }
    }
}

TEST(Base64, RefusesWhiteSpaceAndLineEnds)
{
    for (std::string const& text :
         {" Zg=="s, "Zg== "s, "Zm9v\n"s, "Zm9v\r\nZm9v"s, "Zm 9v"s, "\tZm9v"s, " "s, "\n"s}) {
        ExpectRefused(text);
    }
}

TEST(Base64, RefusesALengthThatLeavesOneCharacterOver)
{
    ExpectRefused("A");
    ExpectRefused("=");
    ExpectRefused("Zm9vY");
    ExpectRefused("Zm9v=");
    for (std::size_t length = 1; length < 200; length += 4) {
        ExpectRefused(std::string(length, 'A'));
    }
}
