// dlxatoll and dlxatoull.
#include "support/assertions.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <random>
#include <string>

namespace {

constexpr int UNTOUCHED_ERRNO = 4711;
constexpr CS_BIGINT I8_MIN = std::numeric_limits<CS_BIGINT>::min();
constexpr CS_BIGINT I8_MAX = std::numeric_limits<CS_BIGINT>::max();
constexpr CS_UBIGINT UI8_MAX = std::numeric_limits<CS_UBIGINT>::max();

template <class Integer>
struct Read {
    Integer value;
    int error;
    bool operator==(const Read &) const = default;
};

template <class Integer>
std::ostream &operator<<(std::ostream &out, const Read<Integer> &read) {
    return out << read.value << " errno " << read.error;
}

Read<CS_BIGINT> read(std::string text) {
    errno = UNTOUCHED_ERRNO;
    const CS_BIGINT value = dlxatoll(text.data());
    return {value, errno};
}
Read<CS_UBIGINT> read_unsigned(std::string text) {
    errno = UNTOUCHED_ERRNO;
    const CS_UBIGINT value = dlxatoull(text.data());
    return {value, errno};
}

Read<CS_BIGINT> good(CS_BIGINT value) { return {value, UNTOUCHED_ERRNO}; }
Read<CS_UBIGINT> good_unsigned(CS_UBIGINT value) { return {value, UNTOUCHED_ERRNO}; }
Read<CS_BIGINT> bad(CS_BIGINT value, int error) { return {value, error}; }
Read<CS_UBIGINT> bad_unsigned(CS_UBIGINT value, int error) { return {value, error}; }

TEST(TextToSigned, Values) {
    EXPECT_EQ(read("0"), good(0));
    EXPECT_EQ(read("5"), good(5));
    EXPECT_EQ(read("-5"), good(-5));
    EXPECT_EQ(read("+5"), good(5));
    EXPECT_EQ(read("-0"), good(0));
    EXPECT_EQ(read("0000000000000000000000000000012"), good(12));
}

TEST(TextToSigned, PlusBehindMinusWins) {
    EXPECT_EQ(read("-+5"), good(5));
    EXPECT_EQ(read("-+0"), good(0));
    EXPECT_EQ(read("-+9223372036854775808"), bad(I8_MAX, ERANGE));
}

TEST(TextToSigned, OtherSignsAreNoNumber) {
    EXPECT_EQ(read("+-5"), bad(0, EINVAL));
    EXPECT_EQ(read("--5"), bad(0, EINVAL));
    EXPECT_EQ(read("++5"), bad(0, EINVAL));
    EXPECT_EQ(read("-+-5"), bad(0, EINVAL));
}

TEST(TextToSigned, FirstByteMustBeADigit) {
    for (const char *text : {"", "-", "+", "-+", " 5", "x", ".5", "- 5"})
        EXPECT_EQ(read(text), bad(0, EINVAL)) << text;
}

TEST(TextToSigned, FirstNonDigitEndsTheNumberWithoutComplaint) {
    EXPECT_EQ(read("12x"), good(12));
    EXPECT_EQ(read("12.9"), good(12));
    EXPECT_EQ(read("-12 "), good(-12));
    EXPECT_EQ(read("12\xB9"), good(12));
    EXPECT_EQ(read("1/"), good(1));
    EXPECT_EQ(read("1:"), good(1));
}

TEST(TextToSigned, Bounds) {
    EXPECT_EQ(read("9223372036854775807"), good(I8_MAX));
    EXPECT_EQ(read("-9223372036854775808"), good(I8_MIN));
    EXPECT_EQ(read("9223372036854775808"), bad(I8_MAX, ERANGE));
    EXPECT_EQ(read("-9223372036854775809"), bad(I8_MIN, ERANGE));
    EXPECT_EQ(read("92233720368547758070"), bad(I8_MAX, ERANGE));
    EXPECT_EQ(read("-92233720368547758080"), bad(I8_MIN, ERANGE));
    EXPECT_EQ(read(std::string(100, '9')), bad(I8_MAX, ERANGE));
    EXPECT_EQ(read("9223372036854775808x"), bad(I8_MAX, ERANGE));
}

TEST(TextToUnsigned, Values) {
    EXPECT_EQ(read_unsigned("0"), good_unsigned(0));
    EXPECT_EQ(read_unsigned("5"), good_unsigned(5));
    EXPECT_EQ(read_unsigned("+5"), good_unsigned(5));
    EXPECT_EQ(read_unsigned("12.9"), good_unsigned(12));
}

TEST(TextToUnsigned, MinusIsOutOfRangeWhateverFollows) {
    EXPECT_EQ(read_unsigned("-5"), bad_unsigned(0, ERANGE));
    EXPECT_EQ(read_unsigned("-0"), bad_unsigned(0, ERANGE));
    EXPECT_EQ(read_unsigned("-"), bad_unsigned(0, ERANGE));
    EXPECT_EQ(read_unsigned("-x"), bad_unsigned(0, ERANGE));
}

TEST(TextToUnsigned, FirstByteMustBeADigit) {
    for (const char *text : {"", "+", " 5", "x", ".5", "++5", "+-5"})
        EXPECT_EQ(read_unsigned(text), bad_unsigned(0, EINVAL)) << text;
}

TEST(TextToUnsigned, Bounds) {
    EXPECT_EQ(read_unsigned("18446744073709551615"), good_unsigned(UI8_MAX));
    EXPECT_EQ(read_unsigned("18446744073709551616"), bad_unsigned(UI8_MAX, ERANGE));
    EXPECT_EQ(read_unsigned("18446744073709551620"), bad_unsigned(UI8_MAX, ERANGE));
    EXPECT_EQ(read_unsigned("184467440737095516150"), bad_unsigned(UI8_MAX, ERANGE));
}

TEST(TextToInteger, RandomTextsAsTheCLibraryReadsThem) {
    std::mt19937_64 random(31);
    for (int i = 0; i < 200000; ++i) {
        std::string text = std::to_string(random() >> random() % 64);
        if (random() % 4 == 0)
            text += std::to_string(random() % 1000);
        if (random() % 4 == 0)
            text.insert(0, random() % 5, '0');
        if (random() % 3 == 0)
            text += "x.- 5"[random() % 5];
        errno = UNTOUCHED_ERRNO;
        const CS_UBIGINT expected_unsigned = std::strtoull(text.c_str(), nullptr, 10);
        ASSERT_EQ(read_unsigned(text), (Read<CS_UBIGINT>{expected_unsigned, errno})) << text;
        if (random() % 2 == 0)
            text.insert(0, 1, '-');
        errno = UNTOUCHED_ERRNO;
        const CS_BIGINT expected = std::strtoll(text.c_str(), nullptr, 10);
        ASSERT_EQ(read(text), (Read<CS_BIGINT>{expected, errno})) << text;
    }
}

TEST(TextToIntegerDeathTest, NullPointersAreReported) {
    EXPECT_NULL_REPORT(dlxatoll(nullptr), "text_integer");
    EXPECT_NULL_REPORT(dlxatoull(nullptr), "text_integer");
}

TEST(TextToInteger, ReturningAssertionsAnswerZero) {
    const support::ReturningAssertions returning;
    EXPECT_EQ(dlxatoll(nullptr), 0);
    EXPECT_EQ(dlxatoull(nullptr), 0u);
    EXPECT_EQ(returning.count(), 2);
}

} // namespace
