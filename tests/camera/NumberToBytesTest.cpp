// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

#include <qv_cipr/qv_cipr_alloc.h>

#include <algorithm>
#include <limits>
#include <random>

namespace graphtest {

namespace {

using NUXO::GraphCameraUtil;
using Bytes = std::vector<unsigned int>;

constexpr unsigned int kOldSize = 4711;

/// A conversion; `bytes` is empty when it gave nothing.
struct Conversion {
    bool given = false;
    unsigned int size = kOldSize;
    Bytes bytes;
};

class NumberToBytesTest : public ::testing::Test {
protected:
    NumberToBytesTest() : mAllocated(g_alloc_counter), mReleased(g_free_counter) {}

    /// Each test must have released what it got, the library what it gave up.
    ~NumberToBytesTest() override
    {
        g_alloc_error = std::numeric_limits<uint32_t>::max();
        EXPECT_EQ(g_alloc_counter - mAllocated, g_free_counter - mReleased);
        EXPECT_TRUE(mLog.isEmpty());
    }

    static Conversion convert(const std::string& text)
    {
        Conversion result;
        unsigned char* const bytes = GraphCameraUtil::numString2binary(text, &result.size);
        if (bytes == nullptr) return result;
        result.given = true;
        result.bytes.assign(bytes, bytes + result.size);
        qv_cipr_free(bytes, "convert");
        return result;
    }

    static void expectBytes(const std::string& text, const Bytes& bytes)
    {
        const Conversion result = convert(text);
        EXPECT_TRUE(result.given) << text;
        EXPECT_EQ(result.bytes, bytes) << text;
    }

    /// Expects one byte of each of these texts.
    static void expectByte(const std::vector<std::string>& texts, unsigned int byte)
    {
        for (const std::string& text : texts) expectBytes(text, {byte});
    }

    /// Expects nothing, with the size at @p size.
    static void expectNone(const std::string& text, unsigned int size = kOldSize)
    {
        const Conversion result = convert(text);
        EXPECT_FALSE(result.given) << text;
        EXPECT_EQ(result.size, size) << text;
    }

    /// Number of bytes of a decimal number, computed with more room than it needs.
    static unsigned int decimalSize(uint64_t digits) { return static_cast<unsigned int>(digits * 27214 / 65536 + 1); }

    const uint32_t mAllocated;
    const uint32_t mReleased;
    LogCapture mLog{0x3b}; // all but the trace of allocations
};

TEST_F(NumberToBytesTest, DecimalNumbersTakeTheBytesThatTheirDigitsMayNeed)
{
    // digits * 27214 / 65536 + 1: up to 2 digits 1, 3 and 4 digits 2, 5 to 7 digits 3, 8 and 9 digits 4, 10 to 12 five.
    expectBytes("0", {0});
    expectBytes("7", {7});
    expectBytes("99", {99});
    expectBytes("100", {100, 0});
    expectBytes("255", {255, 0});
    expectBytes("256", {0, 1});
    expectBytes("9999", {0x0F, 0x27});
    expectBytes("65535", {0xFF, 0xFF, 0});
    expectBytes("1234567", {0x87, 0xD6, 0x12});           // 0x12D687
    expectBytes("16777216", {0, 0, 0, 1});                // 2^24
    expectBytes("999999999", {0xFF, 0xC9, 0x9A, 0x3B});   // 0x3B9AC9FF
    expectBytes("4294967295", {255, 255, 255, 255, 0});   // 2^32 - 1
    expectBytes("4294967296", {0, 0, 0, 0, 1});           // 2^32
    expectBytes("10000000000", {0, 0xE4, 0x0B, 0x54, 2}); // 0x2540BE400
}

TEST_F(NumberToBytesTest, NumbersAboveFourBytesGoOnByteByByte)
{
    expectBytes("1099511627776", {0, 0, 0, 0, 0, 1});                                 // 2^40, 13 digits: 6 bytes
    expectBytes("281474976710655", {255, 255, 255, 255, 255, 255, 0});                // 2^48 - 1, 15 digits: 7 bytes
    expectBytes("9223372036854775808", {0, 0, 0, 0, 0, 0, 0, 0x80});                  // 2^63, 19 digits: 8 bytes
    expectBytes("18446744073709551614", {254, 255, 255, 255, 255, 255, 255, 255, 0}); // 20 digits: 9 bytes
}

TEST_F(NumberToBytesTest, LargestNumberOfEachLengthFits)
{
    std::string nines;
    for (uint64_t digits = 1; digits <= 19; ++digits) {
        nines += '9';
        uint64_t number = std::stoull(nines);
        Bytes expected(decimalSize(digits), 0);
        for (unsigned int& byte : expected) {
            byte = number & 0xFF;
            number >>= 8;
        }
        EXPECT_EQ(number, 0U) << nines; // else the bytes are too few
        expectBytes(nines, expected);
    }
}

TEST_F(NumberToBytesTest, NumbersOf64BitsAreRefusedFromTheLastOneOn)
{
    expectNone("18446744073709551615", 9); // the size is told before the number is seen to be too large
    expectNone("18446744073709551616", 9);
    expectNone("99999999999999999999", 9);
    expectNone("100000000000000000000", 9); // 21 digits: 571494 / 65536 + 1
    expectNone(std::string(100, '9'), 42);  // 2721400 / 65536 + 1
}

TEST_F(NumberToBytesTest, VeryLongNumbersAreMeasuredWithoutOverflow)
{
    // 200000 * 27214 is above 2^32.
    EXPECT_EQ(decimalSize(200000), 83051U);
    expectNone(std::string(200000, '9'), 83051);
    expectNone("1" + std::string(199999, '0'), 83051);
    expectBytes(std::string(200000, '0') + "5", {5});
}

TEST_F(NumberToBytesTest, LeadingZerosOfDecimalNumbersAreNoDigits)
{
    expectByte({"0", "00", "000000000000000000000000000000"}, 0);
    expectBytes("005", {5});
    expectBytes("000000000000000000000000000000255", {255, 0});
    expectBytes("0018446744073709551614", {254, 255, 255, 255, 255, 255, 255, 255, 0});
}

TEST_F(NumberToBytesTest, WhatFollowsTheDigitsIsIgnored)
{
    expectByte(
        {"12", "12abc", "12 34", "12-5", "12.5", "12x5", "12,13", "0012 ", "12\xB2", std::string("12\0", 3) + "3"}, 12);
}

TEST_F(NumberToBytesTest, NothingAfterTheZerosIsZero)
{
    // A sign or a blank behind the zeros does not begin another number.
    expectByte({"0-5", "0+9", "0 7", "00 7", "0\t7", "0\n7", "0a", "0.5", "0,5", "0-", std::string("0\0", 2) + "7"}, 0);
}

TEST_F(NumberToBytesTest, TextsThatDoNotBeginWithADigitGiveNothing)
{
    for (const char* text : {"", "x1F", "X", "-5", "+5", " 5", "\t5", "abc", "F", ".5", "\xB2", "\xFF\xFF"}) {
        const uint32_t allocated = g_alloc_counter;
        expectNone(text);
        EXPECT_EQ(g_alloc_counter, allocated) << text;
    }
    expectNone(std::string("\0", 1) + "5");
}

TEST_F(NumberToBytesTest, HexadecimalNumbersTakeHalfAByteADigitAndOneMore)
{
    expectBytes("0x1F2", {0xF2, 0x01});
    expectBytes("0xF", {0x0F});
    expectBytes("0xFF", {0xFF, 0});
    expectBytes("0x0", {0});
    expectBytes("0x1234", {0x34, 0x12, 0});
    expectBytes("0x12345", {0x45, 0x23, 0x01});
    expectBytes("0x0123456789abcdef", {0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01, 0});
}

TEST_F(NumberToBytesTest, CaseOfHexadecimalDigitsDoesNotMatter)
{
    for (const char* text : {"0xabcdef", "0xABCDEF", "0XAbCdEf", "0XaBcDeF"}) {
        expectBytes(text, {0xEF, 0xCD, 0xAB, 0});
    }
}

TEST_F(NumberToBytesTest, HexadecimalNumbersMayHaveAnyLength)
{
    Bytes sixteen(16, 0xFF);
    sixteen.push_back(0x0F);
    expectBytes("0x" + std::string(33, 'f'), sixteen);
    Bytes many(100000, 0x11);
    many.push_back(0);
    expectBytes("0x" + std::string(200000, '1'), many);
}

TEST_F(NumberToBytesTest, ZerosBehindTheMarkAreDigits)
{
    expectBytes("0x000F", {0x0F, 0, 0});
    expectBytes("0x00", {0, 0});
}

TEST_F(NumberToBytesTest, AnyNumberOfZerosMayStandBeforeTheMark)
{
    expectBytes("00x1F", {0x1F, 0});
    expectBytes("0000X1F", {0x1F, 0});
    expectBytes("1x1F", {1}); // but nothing else
}

TEST_F(NumberToBytesTest, WhatFollowsHexadecimalDigitsIsIgnored)
{
    expectByte({"0xFg", "0xF F", "0xFx1", "0xF-1", "0xF\xE9", std::string("0xF\0", 4) + "F"}, 0x0F);
}

TEST_F(NumberToBytesTest, MarkWithoutDigitsIsZero)
{
    expectByte({"0x", "0X", "00x", "0xg", "0x ", "0x-1", "0xx1"}, 0);
}

TEST_F(NumberToBytesTest, RandomDecimalNumbersKeepTheirValue)
{
    std::mt19937_64 random(1); // the same numbers on every run
    for (int i = 0; i < 20000; ++i) {
        const uint64_t number = random() >> random() % 64;
        const std::string text = std::to_string(number);
        const Conversion result = convert(text);
        ASSERT_EQ(result.size, decimalSize(text.size())) << text;
        uint64_t back = 0;
        for (size_t at = result.bytes.size(); at-- > 0;) back = back << 8 | result.bytes[at];
        ASSERT_EQ(back, number) << text;
    }
}

TEST_F(NumberToBytesTest, RandomHexadecimalNumbersKeepTheirDigits)
{
    const std::string digits = "0123456789abcdefABCDEF";
    std::mt19937_64 random(2);
    for (int i = 0; i < 20000; ++i) {
        std::string text(random() % 40, ' ');
        std::generate(text.begin(), text.end(), [&] { return digits[random() % digits.size()]; });
        Bytes expected(text.size() / 2 + 1, 0);
        std::string rest = text;
        for (unsigned int& byte : expected) {
            const std::string pair = rest.substr(rest.size() - std::min<size_t>(rest.size(), 2));
            rest.resize(rest.size() - pair.size());
            byte = pair.empty() ? 0 : static_cast<unsigned int>(std::stoul(pair, nullptr, 16));
        }
        EXPECT_TRUE(rest.empty());
        expectBytes("0x" + text, expected);
    }
}

TEST_F(NumberToBytesTest, NobodyNeedsToAskForTheSize)
{
    unsigned char* const bytes = GraphCameraUtil::numString2binary("258", nullptr);
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes[0], 2);
    EXPECT_EQ(bytes[1], 1);
    qv_cipr_free(bytes, "test");
    EXPECT_EQ(GraphCameraUtil::numString2binary("", nullptr), nullptr);
    EXPECT_EQ(GraphCameraUtil::numString2binary("18446744073709551615", nullptr), nullptr);
}

TEST_F(NumberToBytesTest, BytesAreCountedMemory)
{
    const uint32_t allocated = g_alloc_counter;
    const uint32_t released = g_free_counter;
    unsigned char* const bytes = GraphCameraUtil::numString2binary("0xFF", nullptr);
    EXPECT_EQ(g_alloc_counter, allocated + 1);
    EXPECT_EQ(g_free_counter, released);
    qv_cipr_free(bytes, "test");
    expectNone("18446744073709551615", 9); // given up again
    EXPECT_EQ(g_alloc_counter, allocated + 2);
    EXPECT_EQ(g_free_counter, released + 2);
}

TEST_F(NumberToBytesTest, AllocationNamesItsSizeAndWhoAskedForIt)
{
    const auto lines = mLog.linesOfLevel(4, [] { convert("255"); }); // 2 bytes
    mLog.clear();
    const std::string expected = "nmemb 2 size 1 from numString2binary res ptr: ";
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [&](const LogLine& line) { return line.message.find(expected) != std::string::npos; }),
              1);
}

TEST_F(NumberToBytesTest, WithoutMemoryNothingIsGivenAndTheSizeIsNotTold)
{
    for (const char* text : {"255", "0xFF", "0", "18446744073709551615"}) {
        g_alloc_error = g_alloc_counter;
        expectNone(text);
        g_alloc_error = std::numeric_limits<uint32_t>::max();
    }
    expectBytes("255", {255, 0});
}

} // namespace

} // namespace graphtest
