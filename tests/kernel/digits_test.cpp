// Words of eight digits, against text that is taken apart digit by digit.

#include "kernel/digits.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>

namespace {

std::uint64_t word_of(const std::string &text) {
    std::uint64_t word;
    std::memcpy(&word, text.data(), sizeof word);
    return word;
}

TEST(Digits, AnyByteAtAnyPlaceButADigitIsFound) {
    for (std::size_t place = 0; place < 8; ++place)
        for (int byte = 0; byte < 256; ++byte) {
            std::string text = "90909090";
            text[place] = static_cast<char>(byte);
            EXPECT_EQ(dlx::are_eight_digits(word_of(text)), byte >= '0' && byte <= '9') << place << " " << byte;
        }
}
TEST(Digits, AnyTwoNeighboursButDigitsAreFound) {
    for (int first = 0; first < 256; ++first)
        for (int second = 0; second < 256; ++second) {
            std::string text = "55555555";
            text[3] = static_cast<char>(first);
            text[4] = static_cast<char>(second);
            const bool digits = first >= '0' && first <= '9' && second >= '0' && second <= '9';
            ASSERT_EQ(dlx::are_eight_digits(word_of(text)), digits) << first << " " << second;
        }
}
TEST(Digits, ValueOfWhatIsWritten) {
    std::mt19937_64 random(61);
    const auto check = [](std::uint32_t value) {
        char text[9];
        std::snprintf(text, sizeof text, "%08u", value);
        ASSERT_EQ(dlx::value_of_eight_digits(word_of(text)), value);
        ASSERT_EQ(dlx::eight_digits(value) | dlx::ZERO_DIGITS, word_of(text));
        ASSERT_TRUE(dlx::are_eight_digits(word_of(text)));
    };
    for (std::uint32_t value = 0; value < 100000; ++value) {
        ASSERT_NO_FATAL_FAILURE(check(value));
        ASSERT_NO_FATAL_FAILURE(check(99999999 - value));
    }
    for (int i = 0; i < 200000; ++i)
        ASSERT_NO_FATAL_FAILURE(check(static_cast<std::uint32_t>(random() % 100000000)));
}

} // namespace
