// The text of integers against the C library's, and the bytes around it.
#include "kernel/integer_text.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace {

template <class T>
std::string printed(T value) {
    char text[32];
    if constexpr (std::is_signed_v<T>)
        std::snprintf(text, sizeof text, "%" PRId64, static_cast<std::int64_t>(value));
    else
        std::snprintf(text, sizeof text, "%" PRIu64, static_cast<std::uint64_t>(value));
    return text;
}

// Writes into the middle of a guarded buffer and checks every byte of it.
template <class T>
void expect_text(T value) {
    constexpr char GUARD = 0x5A;
    char buffer[48], expected[48];
    std::memset(buffer, GUARD, sizeof buffer);
    std::memset(expected, GUARD, sizeof expected);
    const std::string text = printed(value);
    std::memcpy(expected + 8, text.data(), text.size());
    char *end = dlx::write_integer(value, buffer + 8);
    ASSERT_EQ(end - (buffer + 8), static_cast<std::ptrdiff_t>(text.size())) << text;
    ASSERT_EQ(std::memcmp(buffer, expected, sizeof buffer), 0) << text;
    ASSERT_LE(static_cast<int>(text.size()), dlx::integer_text_max<T>) << text;
    ASSERT_EQ(static_cast<int>(text.size()), dlx::integer_text_length(value));
}

template <class T>
class IntegerText : public testing::Test {};
using Integers = testing::Types<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t,
                                std::int64_t, std::uint64_t>;
TYPED_TEST_SUITE(IntegerText, Integers);

TYPED_TEST(IntegerText, BoundsAndZero) {
    expect_text<TypeParam>(0);
    expect_text(std::numeric_limits<TypeParam>::min());
    expect_text(std::numeric_limits<TypeParam>::max());
}

TYPED_TEST(IntegerText, LongestTextIsReached) {
    const size_t longest = std::max(printed(std::numeric_limits<TypeParam>::min()).size(),
                                    printed(std::numeric_limits<TypeParam>::max()).size());
    EXPECT_EQ(static_cast<size_t>(dlx::integer_text_max<TypeParam>), longest);
}

TYPED_TEST(IntegerText, PowersOfTenAndTwoWithNeighbours) {
    std::uint64_t power = 1;
    for (int n = 0; n < 20; ++n, power *= 10)
        for (int offset = -3; offset <= 3; ++offset) {
            expect_text(static_cast<TypeParam>(power + static_cast<std::uint64_t>(offset)));
            expect_text(static_cast<TypeParam>(0 - power + static_cast<std::uint64_t>(offset)));
        }
    for (int bit = 0; bit < 64; ++bit)
        for (int offset = -3; offset <= 3; ++offset)
            expect_text(static_cast<TypeParam>((1ull << bit) + static_cast<std::uint64_t>(offset)));
}

TYPED_TEST(IntegerText, RandomOfEveryLength) {
    std::mt19937_64 random(20240801);
    for (int i = 0; i < 200000; ++i)
        expect_text(static_cast<TypeParam>(static_cast<std::int64_t>(random()) >> (random() % 64)));
}

TYPED_TEST(IntegerText, EveryValueOfTheNarrowTypes) {
    for (int value = -32768; value <= 65535; ++value)
        expect_text(static_cast<TypeParam>(value));
}

// The reciprocals are off by most at the upper end of the range that each serves.
TEST(IntegerTextReciprocals, UpperEnds) {
    for (std::uint64_t end : {100u, 10000u, 1000000u, 100000000u})
        for (std::uint64_t below = 1; below <= 20000 && below <= end; ++below)
            expect_text(static_cast<std::uint32_t>(end - below));
    for (std::uint64_t below = 0; below < 20000; ++below)
        expect_text(static_cast<std::uint32_t>(0xFFFFFFFFu - below));
}

// A step that no power of ten shares meets every residue of every range.
TEST(IntegerTextReciprocals, StepsThroughAllOf32Bits) {
    for (std::uint64_t value = 0; value <= 0xFFFFFFFFu; value += 4099) {
        char text[16];
        const char *end = dlx::write_integer(static_cast<std::uint32_t>(value), text);
        std::uint64_t read = 0;
        for (const char *p = text; p < end; ++p)
            read = read * 10 + static_cast<std::uint64_t>(*p - '0');
        ASSERT_EQ(read, value);
        ASSERT_TRUE(value < 10 || text[0] != '0') << value;
    }
}

TEST(EightDigits, EveryGroupOfDigits) {
    for (std::uint32_t value = 0; value < 100000000; value += 997) {
        char expected[16];
        std::snprintf(expected, sizeof expected, "%08" PRIu32, value);
        const std::uint64_t digits = dlx::eight_digits(value) | dlx::ZERO_DIGITS;
        ASSERT_EQ(std::memcmp(&digits, expected, 8), 0) << expected;
        const std::string text = expected;
        const size_t last = text.find_last_not_of('0');
        ASSERT_EQ(dlx::without_trailing_zeros(dlx::eight_digits(value)),
                  last == std::string::npos ? 0 : static_cast<int>(last) + 1);
    }
}

} // namespace
