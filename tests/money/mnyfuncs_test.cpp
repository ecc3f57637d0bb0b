// The arithmetic of both money types, core and wrappers. Oracles are 128-bit integers, and for multiply and divide
// besides them a walk in big integers through the exact numerics that these operations are defined by.

#include "support/money.h"
#include "support/null_calls.h"

#include <gmp.h>
#include <gtest/gtest.h>

namespace {

using namespace support;

constexpr int CASES = 150000;

using Binary = int (*)(CS_MONEY *, CS_MONEY *, CS_MONEY *);
using Binary4 = int (*)(CS_MONEY4 *, CS_MONEY4 *, CS_MONEY4 *);
using Unary = int (*)(CS_MONEY *, CS_MONEY *);
using InPlace = int (*)(CS_MONEY *);

Answer call(Binary operation, std::int64_t a, std::int64_t b) {
    CS_MONEY first = money(a), second = money(b), result = money(UNWRITTEN);
    const int code = operation(&first, &second, &result);
    EXPECT_EQ(count_of(first), a);
    EXPECT_EQ(count_of(second), b);
    return {code, count_of(result)};
}
Answer call(Binary4 operation, std::int32_t a, std::int32_t b) {
    CS_MONEY4 first = money4(a), second = money4(b), result = money4(0x5A5A5A5A);
    const int code = operation(&first, &second, &result);
    EXPECT_EQ(first.mny4, a);
    EXPECT_EQ(second.mny4, b);
    return {code, result.mny4};
}
Answer call(Unary operation, std::int64_t a) {
    CS_MONEY operand = money(a), result = money(UNWRITTEN);
    const int code = operation(&operand, &result);
    EXPECT_EQ(count_of(operand), a);
    return {code, count_of(result)};
}
Answer call(InPlace operation, std::int64_t a) {
    CS_MONEY value = money(a);
    const int code = operation(&value);
    return {code, count_of(value)};
}
Answer scale(std::int64_t a, int mpier, int add) {
    CS_MONEY value = money(a);
    const int code = com__mnyscale(&value, mpier, add);
    return {code, count_of(value)};
}
Answer down(std::int64_t a, int divisor) {
    CS_MONEY value = money(a);
    const int remainder = com__mnydown(&value, divisor);
    return {remainder, count_of(value)};
}
constexpr std::int64_t M4_UNWRITTEN = 0x5A5A5A5A;

bool fits(Wide value) { return value >= SMALLEST && value <= LARGEST; }
bool fits4(Wide value) {
    return value >= std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::int32_t>::max();
}

// The status that a wrapper makes of a core code.
int status_of(int code) {
    switch (code) {
    case 0:
        return CS_SUCCEED;
    case 1:
        return CS_EOVERFLOW;
    case 2:
        return CS_ESYNTAX;
    default:
        return CS_EDIVZERO;
    }
}

// ---- Layout ----

TEST(MoneyLayout, HighWordComesFirst) {
    const CS_MONEY one_and_two = money(0x0000000100000002);
    EXPECT_EQ(one_and_two.mnyhigh, 1);
    EXPECT_EQ(one_and_two.mnylow, 2u);
    CS_MONEY sum;
    CS_MONEY zero = money(0);
    CS_MONEY operand = {-1, 0xFFFFFFFF};
    EXPECT_EQ(com__mnyadd(&operand, &zero, &sum), 0);
    EXPECT_EQ(sum.mnyhigh, -1);
    EXPECT_EQ(sum.mnylow, 0xFFFFFFFFu);
}

// ---- Copies and constants ----

TEST(MoneyCopy, NeverFails) {
    for (const std::int64_t count : {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, LARGEST, SMALLEST}) {
        EXPECT_EQ(call(com__mnycopy, count), (Answer{0, count}));
        EXPECT_EQ(call(comn_mnycopy, count), (Answer{CS_SUCCEED, count}));
    }
    CS_MONEY4 from = money4(-7), to = money4(1);
    EXPECT_EQ(comn_mny4copy(&from, &to), CS_SUCCEED);
    EXPECT_EQ(to.mny4, -7);
}

TEST(MoneyConstants, BoundsAndZero) {
    EXPECT_EQ(call(com__maxposmny, UNWRITTEN), (Answer{0, LARGEST}));
    EXPECT_EQ(call(com__maxnegmny, UNWRITTEN), (Answer{0, SMALLEST}));
    EXPECT_EQ(call(comn_mnymaxpos, UNWRITTEN), (Answer{CS_SUCCEED, LARGEST}));
    EXPECT_EQ(call(comn_mnymaxneg, UNWRITTEN), (Answer{CS_SUCCEED, SMALLEST}));
    EXPECT_EQ(call(comn_mnyzero, UNWRITTEN), (Answer{CS_SUCCEED, 0}));
    CS_MONEY4 value = money4(5);
    EXPECT_EQ(comn_mny4zero(&value), CS_SUCCEED);
    EXPECT_EQ(value.mny4, 0);
}

TEST(MoneyCompare, HighSignedThenLowUnsigned) {
    CS_MONEY low = {0, 0x7FFFFFFF}, high = {0, 0x80000000}, negative = {-1, 0xFFFFFFFF};
    EXPECT_EQ(comn_mnycmp(&low, &high), -1);
    EXPECT_EQ(comn_mnycmp(&high, &low), 1);
    EXPECT_EQ(comn_mnycmp(&negative, &low), -1);
    EXPECT_EQ(comn_mnycmp(&low, &low), 0);
    RandomCounts random(11);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t a = random.count(), b = random.below(4) ? random.count() : a;
        CS_MONEY first = money(a), second = money(b);
        ASSERT_EQ(comn_mnycmp(&first, &second), (a > b) - (a < b)) << a << " " << b;
        CS_MONEY4 first4 = money4(random.word()), second4 = money4(random.below(4) ? random.word() : first4.mny4);
        ASSERT_EQ(comn_mny4cmp(&first4, &second4), (first4.mny4 > second4.mny4) - (first4.mny4 < second4.mny4));
    }
}

// ---- Add, subtract ----

TEST(MoneyAdd, LargestAndOneCountIsOverflowAndZero) {
    EXPECT_EQ(call(com__mnyadd, LARGEST, 1), (Answer{1, 0}));
    EXPECT_EQ(call(comn_mnyadd, LARGEST, 1), (Answer{CS_EOVERFLOW, 0}));
    EXPECT_EQ(call(com__mnyadd, SMALLEST, -1), (Answer{1, 0}));
}
TEST(MoneyAdd, CarriesBetweenTheWords) {
    EXPECT_EQ(call(com__mnyadd, 0xFFFFFFFF, 1), (Answer{0, 0x100000000}));
    EXPECT_EQ(call(com__mnyadd, -1, 1), (Answer{0, 0}));
    EXPECT_EQ(call(com__mnyadd, SMALLEST, LARGEST), (Answer{0, -1}));
}
TEST(MoneySubtract, OverflowIsZero) {
    EXPECT_EQ(call(com__mnysub, SMALLEST, 1), (Answer{1, 0}));
    EXPECT_EQ(call(com__mnysub, 0, SMALLEST), (Answer{1, 0}));
    EXPECT_EQ(call(com__mnysub, -1, SMALLEST), (Answer{0, LARGEST}));
    EXPECT_EQ(call(comn_mnysub, SMALLEST, 1), (Answer{CS_EOVERFLOW, 0}));
}
TEST(MoneyAdd, Differential) {
    RandomCounts random(12);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t a = random.count(), b = random.count();
        const Wide sum = Wide{a} + b, difference = Wide{a} - b;
        const Answer added = fits(sum) ? Answer{0, static_cast<std::int64_t>(sum)} : Answer{1, 0};
        const Answer taken = fits(difference) ? Answer{0, static_cast<std::int64_t>(difference)} : Answer{1, 0};
        ASSERT_EQ(call(com__mnyadd, a, b), added) << a << " + " << b;
        ASSERT_EQ(call(com__mnysub, a, b), taken) << a << " - " << b;
        ASSERT_EQ(call(comn_mnyadd, a, b), (Answer{status_of(added.code), added.count}));
        ASSERT_EQ(call(comn_mnysub, a, b), (Answer{status_of(taken.code), taken.count}));
    }
}

// ---- Negate, step ----

TEST(MoneyNegate, SmallestIsItselfAndOverflow) {
    EXPECT_EQ(call(com__mnyminus, SMALLEST), (Answer{1, SMALLEST}));
    EXPECT_EQ(call(comn_mnyminus, SMALLEST), (Answer{CS_EOVERFLOW, SMALLEST}));
    EXPECT_EQ(call(com__mnyminus, 0), (Answer{0, 0}));
    EXPECT_EQ(call(com__mnyminus, LARGEST), (Answer{0, -LARGEST}));
}
TEST(MoneyNegate, Differential) {
    RandomCounts random(13);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t a = random.count();
        if (a == SMALLEST)
            continue;
        ASSERT_EQ(call(com__mnyminus, a), (Answer{0, -a}));
        ASSERT_EQ(call(comn_mnyminus, a), (Answer{CS_SUCCEED, -a}));
    }
}
TEST(MoneyIncrement, WrapsToTheSmallest) {
    EXPECT_EQ(call(com__mnyinc, LARGEST), (Answer{1, SMALLEST}));
    EXPECT_EQ(call(comn_mnyinc, LARGEST), (Answer{CS_EOVERFLOW, SMALLEST}));
}
TEST(MoneyIncrement, CarriesIntoTheHighWord) {
    EXPECT_EQ(call(com__mnyinc, 0xFFFFFFFF), (Answer{0, 0x100000000}));
    EXPECT_EQ(call(com__mnyinc, -1), (Answer{0, 0}));
    EXPECT_EQ(call(comn_mnyinc, 0), (Answer{CS_SUCCEED, 1}));
}
TEST(MoneyIncrement, Differential) {
    RandomCounts random(14);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t a = random.count();
        ASSERT_EQ(call(com__mnyinc, a), (a == LARGEST ? Answer{1, SMALLEST} : Answer{0, a + 1}));
    }
}
TEST(MoneyDecrement, OfZeroTakesAwayAWholeHighWord) {
    CS_MONEY value = money(0);
    EXPECT_EQ(com__mnydec(&value), 0);
    EXPECT_EQ(value.mnyhigh, -1);
    EXPECT_EQ(value.mnylow, 0u);
}
TEST(MoneyDecrement, IsNotTheMirrorOfIncrementWhereTheLowWordIsZero) {
    EXPECT_EQ(call(com__mnydec, 0x700000000), (Answer{0, 0x600000000}));
    EXPECT_EQ(call(com__mnydec, 0x700000001), (Answer{0, 0x700000000}));
    EXPECT_EQ(call(comn_mnydec, 1), (Answer{CS_SUCCEED, 0}));
}
TEST(MoneyDecrement, OfTheSmallestWrapsToTheLargestHighWord) {
    EXPECT_EQ(call(com__mnydec, SMALLEST), (Answer{1, 0x7FFFFFFF00000000}));
    EXPECT_EQ(call(comn_mnydec, SMALLEST), (Answer{CS_EOVERFLOW, 0x7FFFFFFF00000000}));
    EXPECT_EQ(call(com__mnydec, SMALLEST + 1), (Answer{0, SMALLEST}));
}
TEST(MoneyDecrement, Differential) {
    RandomCounts random(15);
    for (int i = 0; i < CASES; ++i) {
        CS_MONEY told = money(random.below(3) ? random.count() : random.count() & ~0xFFFFFFFFLL);
        const std::int64_t a = count_of(told);
        int code = 0;
        if (told.mnylow != 0) {
            --told.mnylow;
        } else if (told.mnyhigh == std::numeric_limits<CS_INT>::min()) {
            told.mnyhigh = std::numeric_limits<CS_INT>::max();
            code = 1;
        } else {
            --told.mnyhigh;
        }
        ASSERT_EQ(call(com__mnydec, a), (Answer{code, count_of(told)}));
    }
}

// ---- Scale ----

// The told way: 16 by 16 bit products, the low half of the multiplier first, then the high half on the low 48 bits.
Answer told_scale(std::int64_t a, int mpier, int add) {
    if (mpier == 0)
        return {0, add};
    std::uint64_t words[4];
    const auto bits = static_cast<UnsignedWide>(magnitude(a));
    for (int i = 0; i < 4; ++i)
        words[i] = static_cast<std::uint64_t>(bits >> (16 * i)) & 0xFFFF;
    const std::uint64_t low = static_cast<std::uint32_t>(mpier) & 0xFFFF,
                        high = static_cast<std::uint32_t>(mpier) >> 16;
    std::uint64_t result[4];
    std::uint64_t carry = static_cast<std::uint32_t>(add);
    for (int i = 0; i < 4; ++i) {
        carry += words[i] * low;
        if (i == 3 && carry > 65535)
            return {1, a};
        result[i] = carry & 0xFFFF;
        carry >>= 16;
    }
    if (high != 0) {
        carry = 0;
        for (int i = 1; i < 4; ++i) {
            carry += result[i] + words[i - 1] * high;
            result[i] = carry & 0xFFFF;
            carry >>= 16;
        }
        if (carry != 0)
            return {1, a};
    }
    if (result[3] & 0x8000)
        return {1, a};
    std::int64_t value = 0;
    for (int i = 3; i >= 0; --i)
        value = value << 16 | static_cast<std::int64_t>(result[i]);
    return {0, a < 0 ? -value : value};
}

TEST(MoneyScale, ByZeroIsTheAddendWithItsSign) {
    EXPECT_EQ(scale(123456, 0, 7), (Answer{0, 7}));
    EXPECT_EQ(scale(-123456, 0, -7), (Answer{0, -7}));
    EXPECT_EQ(scale(SMALLEST, 0, 0), (Answer{0, 0}));
}
TEST(MoneyScale, AddsToTheMagnitudeAsAnUnsignedWord) {
    EXPECT_EQ(scale(12, 10, 3), (Answer{0, 123}));
    EXPECT_EQ(scale(-12, 10, 3), (Answer{0, -123}));
    EXPECT_EQ(scale(12, 10, -1), (Answer{0, 120 + 0xFFFFFFFFLL}));
    EXPECT_EQ(scale(-12, 10, -1), (Answer{0, -120 - 0xFFFFFFFFLL}));
}
TEST(MoneyScale, OverflowLeavesTheValue) {
    EXPECT_EQ(scale(LARGEST, 2, 0), (Answer{1, LARGEST}));
    EXPECT_EQ(scale(922337203685477580, 10, 7), (Answer{0, LARGEST}));
    EXPECT_EQ(scale(922337203685477580, 10, 8), (Answer{1, 922337203685477580}));
    EXPECT_EQ(scale(LARGEST, 0xFFFF, -1), (Answer{1, LARGEST}));
}
TEST(MoneyScale, TheSmallestIsOutOfReachEvenWhereItWouldBeTheResult) {
    EXPECT_EQ(scale(-922337203685477580, 10, 8), (Answer{1, -922337203685477580}));
    EXPECT_EQ(scale(-(1LL << 62), 2, 0), (Answer{1, -(1LL << 62)}));
    EXPECT_EQ(scale(SMALLEST, 1, 0), (Answer{1, SMALLEST}));
}
TEST(MoneyScale, HighHalfOfTheMultiplierReachesTheLow48Bits) {
    EXPECT_EQ(scale(3, 0x10000, 0), (Answer{0, 0x30000}));
    EXPECT_EQ(scale(3, 0x10001, 5), (Answer{0, 0x30008}));
    EXPECT_EQ(scale(0x0000FFFF00000000, 0x10000, 0), (Answer{1, 0x0000FFFF00000000}));
    EXPECT_EQ(scale(0x7FFF00000000, 0x10000, 0), (Answer{0, 0x7FFF000000000000}));
}
TEST(MoneyScale, HighHalfOfTheMultiplierMissesTheTop16BitsUnreported) {
    EXPECT_EQ(scale(0x0001000000000002, 0x10000, 0), (Answer{0, 0x20000}));
    EXPECT_EQ(scale(0x0001000000000002, 0x10001, 0), (Answer{0, 0x0001000000020002}));
    EXPECT_EQ(scale(-0x0001000000000002, 0x10001, 0), (Answer{0, -0x0001000000020002}));
}
TEST(MoneyScale, NegativeMultiplierCountsAsUnsigned) {
    EXPECT_EQ(scale(2, -1, 0), (Answer{0, 2 * 0xFFFFFFFFLL}));
    EXPECT_EQ(scale(-2, -1, 0), (Answer{0, -2 * 0xFFFFFFFFLL}));
}
TEST(MoneyScale, WrapperAnswersTheStatus) {
    CS_MONEY value = money(LARGEST);
    EXPECT_EQ(comn_mnyscale(&value, 10, 0), CS_EOVERFLOW);
    EXPECT_EQ(count_of(value), LARGEST);
    value = money(7);
    EXPECT_EQ(comn_mnyscale(&value, 10, 1), CS_SUCCEED);
    EXPECT_EQ(count_of(value), 71);
}
TEST(MoneyScale, Differential) {
    RandomCounts random(16);
    for (int i = 0; i < 2 * CASES; ++i) {
        const std::int64_t a = random.count();
        const int mpier = random.word(), add = random.below(2) ? random.word() : static_cast<int>(random.below(10));
        ASSERT_EQ(scale(a, mpier, add), told_scale(a, mpier, add)) << a << " * " << mpier << " + " << add;
    }
}

// ---- Down ----

TEST(MoneyDown, AnswersTheRemainderOfTheMagnitude) {
    EXPECT_EQ(down(123, 10), (Answer{3, 12}));
    EXPECT_EQ(down(-123, 10), (Answer{3, -12}));
    EXPECT_EQ(down(-9, 10), (Answer{9, 0}));
    EXPECT_EQ(down(SMALLEST, 10), (Answer{8, -922337203685477580}));
    EXPECT_EQ(down(SMALLEST, 1), (Answer{0, SMALLEST}));
}
TEST(MoneyDown, ByZeroDoesNothing) {
    EXPECT_EQ(down(123, 0), (Answer{0, 123}));
    CS_MONEY value = money(-5);
    EXPECT_EQ(comn_mnydown(&value, 0), 0);
    EXPECT_EQ(count_of(value), -5);
}
TEST(MoneyDown, OnlyTheLow16BitsOfTheDivisorCount) {
    EXPECT_EQ(down(123, 0x7001000A), (Answer{3, 12}));
    EXPECT_EQ(down(65536, -1), (Answer{1, 1}));
    EXPECT_EQ(down(123, 0x10000), (Answer{0, 123}));
}
TEST(MoneyDown, WrapperAnswersTheRemainderUnmapped) {
    for (int remainder = 0; remainder < 10; ++remainder) {
        CS_MONEY value = money(120 + remainder);
        EXPECT_EQ(comn_mnydown(&value, 10), remainder);
        EXPECT_EQ(count_of(value), 12);
    }
}
TEST(MoneyDown, Differential) {
    RandomCounts random(17);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t a = random.count();
        const int divisor = random.word();
        const int low = divisor & 0xFFFF;
        const Answer told =
            low == 0 ? Answer{0, a}
                     : Answer{static_cast<int>(magnitude(a) % low), static_cast<std::int64_t>(Wide{a} / low)};
        ASSERT_EQ(down(a, divisor), told) << a << " / " << divisor;
    }
}

// ---- Multiply ----

struct Big {
    mpz_t value;
    Big() { mpz_init(value); }
    explicit Big(UnsignedWide from) : Big() {
        const std::uint64_t words[2] = {static_cast<std::uint64_t>(from >> 64), static_cast<std::uint64_t>(from)};
        mpz_import(value, 2, 1, sizeof words[0], 0, 0, words);
    }
    ~Big() { mpz_clear(value); }
    Big(const Big &) = delete;
    // Base-256 digits; none for zero.
    std::size_t bytes() const { return mpz_sgn(value) == 0 ? 0 : mpz_sizeinbase(value, 256); }
};

// A big-endian record of eight magnitude bytes and a sign becomes money; false where it is too long.
bool told_money_of_record(const Big &record, bool negative, std::int64_t &count) {
    if (record.bytes() > 8)
        return false;
    unsigned char bytes[8] = {};
    std::size_t written = 0;
    mpz_export(bytes + 8 - record.bytes(), &written, 1, 1, 0, 0, record.value);
    std::uint64_t bits = 0;
    for (const unsigned char byte : bytes)
        bits = bits << 8 | byte;
    if (bytes[0] & 0x80) {
        if (!negative || bits != 0x8000000000000000)
            return false;
        count = SMALLEST;
        return true;
    }
    count = negative ? -static_cast<std::int64_t>(bits) : static_cast<std::int64_t>(bits);
    return true;
}

Answer told_multiply(std::int64_t a, std::int64_t b) {
    if (a == 0 || b == 0)
        return {0, 0};
    Big product(static_cast<UnsignedWide>(magnitude(a)) * static_cast<UnsignedWide>(magnitude(b)));
    Big quotient, remainder;
    mpz_fdiv_qr_ui(quotient.value, remainder.value, product.value, 10000);
    if (remainder.bytes() == 2 && mpz_cmp_ui(remainder.value, 5000) >= 0) {
        if (quotient.bytes() == 0)
            return {2, UNWRITTEN};
        mpz_add_ui(quotient.value, quotient.value, 1);
    }
    if (quotient.bytes() == 0)
        return {0, 0};
    std::int64_t count = 0;
    if (!told_money_of_record(quotient, (a < 0) != (b < 0), count))
        return {1, 0};
    return {0, count};
}

Answer told_divide(std::int64_t a, std::int64_t b) {
    if (b == 0)
        return {3, 0};
    Big dividend(static_cast<UnsignedWide>(magnitude(a)) * 10000), divisor(static_cast<UnsignedWide>(magnitude(b)));
    Big quotient;
    mpz_fdiv_q(quotient.value, dividend.value, divisor.value);
    if (quotient.bytes() == 0)
        return {0, 0};
    Big limit;
    mpz_ui_pow_ui(limit.value, 10, 19);
    if (quotient.bytes() > 8 || mpz_cmp(quotient.value, limit.value) >= 0)
        return {1, 0};
    std::int64_t count = 0;
    if (!told_money_of_record(quotient, (a < 0) != (b < 0), count))
        return {1, 0};
    return {0, count};
}

TEST(MoneyMultiply, Examples) {
    EXPECT_EQ(call(com__mnymul, 10000, 10000), (Answer{0, 10000}));
    EXPECT_EQ(call(com__mnymul, 1, 1), (Answer{0, 0}));
    EXPECT_EQ(call(com__mnymul, 150, 10000), (Answer{0, 150}));
    EXPECT_EQ(call(com__mnymul, -150, 10000), (Answer{0, -150}));
    EXPECT_EQ(call(com__mnymul, -15000, -20000), (Answer{0, 30000}));
    EXPECT_EQ(call(com__mnymul, 0, SMALLEST), (Answer{0, 0}));
}
TEST(MoneyMultiply, RoundsHalfAwayFromZero) {
    EXPECT_EQ(call(com__mnymul, 3, 5000), (Answer{0, 2}));
    EXPECT_EQ(call(com__mnymul, -3, 5000), (Answer{0, -2}));
    EXPECT_EQ(call(com__mnymul, 14999, 1), (Answer{0, 1}));
    EXPECT_EQ(call(com__mnymul, 15000, -1), (Answer{0, -2}));
}
TEST(MoneyMultiply, ProductOfHalfACountToJustBelowOneIsSyntaxAndUnwritten) {
    EXPECT_EQ(call(com__mnymul, 100, 50), (Answer{2, UNWRITTEN}));
    EXPECT_EQ(call(comn_mnymul, 100, 50), (Answer{CS_ESYNTAX, UNWRITTEN}));
    EXPECT_EQ(call(com__mnymul, 1, 5000), (Answer{2, UNWRITTEN}));
    EXPECT_EQ(call(com__mnymul, -1, 9999), (Answer{2, UNWRITTEN}));
    EXPECT_EQ(call(com__mnymul, 1, 4999), (Answer{0, 0}));
    EXPECT_EQ(call(com__mnymul, -1, 4999), (Answer{0, 0}));
    EXPECT_EQ(call(com__mnymul, 1, 10000), (Answer{0, 1}));
}
TEST(MoneyMultiply, OverflowIsZero) {
    EXPECT_EQ(call(com__mnymul, LARGEST, 20000), (Answer{1, 0}));
    EXPECT_EQ(call(comn_mnymul, LARGEST, LARGEST), (Answer{CS_EOVERFLOW, 0}));
    EXPECT_EQ(call(com__mnymul, SMALLEST, SMALLEST), (Answer{1, 0}));
    EXPECT_EQ(call(com__mnymul, LARGEST, 10001), (Answer{1, 0}));
}
TEST(MoneyMultiply, ReachesTheSmallestAndOnlyWithASign) {
    EXPECT_EQ(call(com__mnymul, SMALLEST, 10000), (Answer{0, SMALLEST}));
    EXPECT_EQ(call(com__mnymul, SMALLEST, -10000), (Answer{1, 0}));
    EXPECT_EQ(call(com__mnymul, LARGEST, 10000), (Answer{0, LARGEST}));
    // 2^62 * 2.0000 is 2^63.
    EXPECT_EQ(call(com__mnymul, 1LL << 62, 20000), (Answer{1, 0}));
    EXPECT_EQ(call(com__mnymul, 1LL << 62, -20000), (Answer{0, SMALLEST}));
}
TEST(MoneyMultiply, RoundingCarriesThroughAllBytes) {
    EXPECT_EQ(call(com__mnymul, 2555, 1000), (Answer{0, 256}));     // 255.5
    EXPECT_EQ(call(com__mnymul, 655355, 1000), (Answer{0, 65536})); // 65535.5
    EXPECT_EQ(call(com__mnymul, 42949672955, 1000), (Answer{0, 4294967296}));
}
TEST(MoneyMultiply, ProductsAroundTheBoundsOfTheMoneyAndOfItsWord) {
    RandomCounts random(18);
    int overflows = 0, smallest = 0;
    for (int i = 0; i < CASES; ++i) {
        // Products around 2^63 and 2^64 times the unit.
        const UnsignedWide target = (UnsignedWide{1} << (63 + random.below(2))) * 10000 + random.below(40000) - 20000;
        const std::uint64_t wide = (random.bits() >> 1 | 1ULL << 47) >> random.below(16);
        const auto a = static_cast<std::int64_t>(random.below(2) ? 10000 + random.below(20000) : wide);
        const UnsignedWide other = target / static_cast<UnsignedWide>(a) + random.below(3) - 1;
        if (other > static_cast<UnsignedWide>(LARGEST))
            continue;
        const auto b = static_cast<std::int64_t>(other) * (random.below(2) ? 1 : -1);
        const Answer told = told_multiply(a, b);
        ASSERT_EQ(call(com__mnymul, a, b), told) << a << " * " << b;
        overflows += told.code == 1;
        smallest += told == Answer{0, SMALLEST};
    }
    EXPECT_GT(overflows, 1000);
    EXPECT_GT(smallest, 10);
}
TEST(MoneyMultiply, Differential) {
    RandomCounts random(19);
    for (int i = 0; i < 2 * CASES; ++i) {
        const std::int64_t a = random.count(), b = random.count();
        const Answer told = told_multiply(a, b);
        ASSERT_EQ(call(com__mnymul, a, b), told) << a << " * " << b;
        ASSERT_EQ(call(comn_mnymul, a, b), (Answer{status_of(told.code), told.count}));
        // The same without records.
        const Wide product = magnitude(a) * magnitude(b);
        const Wide rounded = (product + 5000) / 10000;
        const Wide count = (a < 0) != (b < 0) ? -rounded : rounded;
        const Answer plain = product >= 5000 && product < 10000 ? Answer{2, UNWRITTEN}
                             : fits(count)                      ? Answer{0, static_cast<std::int64_t>(count)}
                                                                : Answer{1, 0};
        ASSERT_EQ(told, plain) << a << " * " << b;
    }
}
TEST(MoneyMultiply, EveryPairOfSmallCounts) {
    for (std::int64_t a = -120; a <= 120; ++a)
        for (std::int64_t b = -120; b <= 120; ++b)
            ASSERT_EQ(call(com__mnymul, a, b), told_multiply(a, b)) << a << " * " << b;
}

// ---- Divide ----

TEST(MoneyDivide, CutsTowardZero) {
    EXPECT_EQ(call(com__mnydiv, 10000, 30000), (Answer{0, 3333}));
    EXPECT_EQ(call(com__mnydiv, 20000, 30000), (Answer{0, 6666}));
    EXPECT_EQ(call(com__mnydiv, -20000, 30000), (Answer{0, -6666}));
    EXPECT_EQ(call(com__mnydiv, 20000, -30000), (Answer{0, -6666}));
    EXPECT_EQ(call(com__mnydiv, -1, LARGEST), (Answer{0, 0}));
    EXPECT_EQ(call(com__mnydiv, 0, -5), (Answer{0, 0}));
}
TEST(MoneyDivide, ByZeroStoresZero) {
    for (const std::int64_t count : {std::int64_t{0}, std::int64_t{10000}, std::int64_t{-1}, LARGEST, SMALLEST}) {
        EXPECT_EQ(call(com__mnydiv, count, 0), (Answer{3, 0}));
        EXPECT_EQ(call(comn_mnydivide, count, 0), (Answer{CS_EDIVZERO, 0}));
    }
}
TEST(MoneyDivide, OverflowIsZero) {
    EXPECT_EQ(call(com__mnydiv, LARGEST, 1), (Answer{1, 0}));
    EXPECT_EQ(call(comn_mnydivide, LARGEST, 9999), (Answer{CS_EOVERFLOW, 0}));
    EXPECT_EQ(call(com__mnydiv, 1LL << 62, 5000), (Answer{1, 0}));
}
TEST(MoneyDivide, ReachesTheSmallestAndOnlyWithASign) {
    EXPECT_EQ(call(com__mnydiv, SMALLEST, 10000), (Answer{0, SMALLEST}));
    EXPECT_EQ(call(com__mnydiv, SMALLEST, -10000), (Answer{1, 0}));
    EXPECT_EQ(call(com__mnydiv, 1LL << 62, -5000), (Answer{0, SMALLEST}));
    EXPECT_EQ(call(com__mnydiv, SMALLEST, SMALLEST), (Answer{0, 10000}));
}
TEST(MoneyDivide, QuotientsOfNineteenAndTwentyDigits) {
    EXPECT_EQ(call(com__mnydiv, 1000000000000000000, 1000), (Answer{1, 0})); // 10^19
    EXPECT_EQ(call(com__mnydiv, 999999999999999999, 1000), (Answer{1, 0}));  // just below
    EXPECT_EQ(call(com__mnydiv, 922337203685477580, 1000), (Answer{0, 9223372036854775800}));
}
TEST(MoneyDivide, Differential) {
    RandomCounts random(20);
    for (int i = 0; i < 2 * CASES; ++i) {
        const std::int64_t a = random.count();
        std::int64_t b = random.count();
        if (random.below(3) == 0) // a quotient around 2^63
            b = static_cast<std::int64_t>(magnitude(a) * 10000 / (Wide{1} << 63)) +
                static_cast<std::int64_t>(random.below(3)) - 1;
        const Answer told = told_divide(a, b);
        ASSERT_EQ(call(com__mnydiv, a, b), told) << a << " / " << b;
        ASSERT_EQ(call(comn_mnydivide, a, b), (Answer{status_of(told.code), told.count}));
        if (b != 0) {
            const Wide plain = Wide{a} * 10000 / b;
            ASSERT_EQ(told, (fits(plain) ? Answer{0, static_cast<std::int64_t>(plain)} : Answer{1, 0}));
        }
    }
}

// ---- Results among the operands ----

TEST(MoneyAliasing, ResultMayBeAnOperand) {
    RandomCounts random(21);
    for (int i = 0; i < 20000; ++i) {
        const std::int64_t a = random.count(), b = random.count();
        for (const Binary operation : {com__mnyadd, com__mnysub, com__mnymul, com__mnydiv, comn_mnyadd, comn_mnysub,
                                       comn_mnymul, comn_mnydivide}) {
            const Answer apart = call(operation, a, b);
            const bool unwritten = apart.count == UNWRITTEN;
            CS_MONEY first = money(a), second = money(b);
            ASSERT_EQ(operation(&first, &second, &first), apart.code);
            ASSERT_EQ(count_of(first), unwritten ? a : apart.count);
            first = money(a);
            ASSERT_EQ(operation(&first, &second, &second), apart.code);
            ASSERT_EQ(count_of(second), unwritten ? b : apart.count);
            const Answer same = call(operation, a, a);
            CS_MONEY all = money(a);
            ASSERT_EQ(operation(&all, &all, &all), same.code);
            ASSERT_EQ(count_of(all), same.count == UNWRITTEN ? a : same.count);
        }
        CS_MONEY value = money(a);
        com__mnyminus(&value, &value);
        ASSERT_EQ(value.mnylow, static_cast<std::uint32_t>(0 - static_cast<std::uint64_t>(a)));
        CS_MONEY4 first4 = money4(random.word()), second4 = money4(random.word());
        const Answer apart4 = call(comn_mny4mul, first4.mny4, second4.mny4);
        ASSERT_EQ(comn_mny4mul(&first4, &second4, &first4), apart4.code);
        ASSERT_EQ(first4.mny4, apart4.count);
    }
}

// ---- CS_MONEY4 ----

TEST(Money4Negate, SmallestIsOverflowAndUnwritten) {
    CS_MONEY4 smallest = money4(std::numeric_limits<std::int32_t>::min()), result = money4(77);
    EXPECT_EQ(com__mnyminus4(&smallest, &result), 1);
    EXPECT_EQ(result.mny4, 77);
    EXPECT_EQ(comn_mny4minus(&smallest, &result), CS_EOVERFLOW);
    EXPECT_EQ(result.mny4, 77);
    CS_MONEY4 largest = money4(std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(com__mnyminus4(&largest, &result), 0);
    EXPECT_EQ(result.mny4, -largest.mny4);
    EXPECT_EQ(comn_mny4minus(&result, &result), CS_SUCCEED);
    EXPECT_EQ(result.mny4, largest.mny4);
}
TEST(Money4, EveryFailureOfAnOperationIsZero) {
    EXPECT_EQ(call(com__mnyadd4, 0x7FFFFFFF, 1), (Answer{1, 0}));
    EXPECT_EQ(call(com__mnysub4, -0x7FFFFFFF, 2), (Answer{1, 0}));
    EXPECT_EQ(call(com__mnymul4, 0x7FFFFFFF, 20000), (Answer{1, 0}));
    EXPECT_EQ(call(com__mnydiv4, 0x7FFFFFFF, 1), (Answer{1, 0}));
    EXPECT_EQ(call(com__mnydiv4, 5, 0), (Answer{3, 0}));
    EXPECT_EQ(call(comn_mny4divide, 5, 0), (Answer{CS_EDIVZERO, 0}));
}
TEST(Money4, ProductBelowACountThatWouldRoundUpIsSyntaxAndZero) {
    EXPECT_EQ(call(com__mnymul4, 100, 50), (Answer{2, 0}));
    EXPECT_EQ(call(comn_mny4mul, 100, 50), (Answer{CS_ESYNTAX, 0}));
    EXPECT_EQ(call(com__mnymul4, 1, 4999), (Answer{0, 0}));
}
TEST(Money4, Differential) {
    RandomCounts random(22);
    const auto narrowed = [](Answer wide) {
        return wide.code != 0 ? Answer{wide.code, 0} : fits4(wide.count) ? wide : Answer{1, 0};
    };
    for (int i = 0; i < CASES; ++i) {
        const std::int32_t a = random.word(), b = random.word();
        const Answer sum = narrowed({0, std::int64_t{a} + b}), difference = narrowed({0, std::int64_t{a} - b});
        const Answer product = narrowed(told_multiply(a, b)), quotient = narrowed(told_divide(a, b));
        ASSERT_EQ(call(com__mnyadd4, a, b), sum);
        ASSERT_EQ(call(com__mnysub4, a, b), difference);
        ASSERT_EQ(call(com__mnymul4, a, b), product) << a << " * " << b;
        ASSERT_EQ(call(com__mnydiv4, a, b), quotient) << a << " / " << b;
        ASSERT_EQ(call(comn_mny4add, a, b), (Answer{status_of(sum.code), sum.count}));
        ASSERT_EQ(call(comn_mny4sub, a, b), (Answer{status_of(difference.code), difference.count}));
        ASSERT_EQ(call(comn_mny4mul, a, b), (Answer{status_of(product.code), product.count}));
        ASSERT_EQ(call(comn_mny4divide, a, b), (Answer{status_of(quotient.code), quotient.count}));
    }
}

TEST(MoneyRemainder, IsAlwaysOverflowAndStoresNothing) {
    EXPECT_EQ(call(com__mnyrem, 100000, 30000), (Answer{1, UNWRITTEN}));
    EXPECT_EQ(call(com__mnyrem, 0, 0), (Answer{1, UNWRITTEN}));
    EXPECT_EQ(call(com__mnyrem4, 7, 2), (Answer{1, M4_UNWRITTEN}));
    EXPECT_EQ(com__mnyrem(nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(com__mnyrem4(nullptr, nullptr, nullptr), 1);
}

// ---- Missing operands ----

CS_MONEY A, B, C;
CS_MONEY4 A4, B4, C4;
char DIGIT;

NullCalls null_calls() {
    NullCalls calls;
    NULL_CALLS(calls, com__mnycopy, 1, &A, &B);
    NULL_CALLS(calls, com__mnyminus, 1, &A, &B);
    NULL_CALLS(calls, com__mnyinc, 1, &A);
    NULL_CALLS(calls, com__mnydec, 1, &A);
    NULL_CALLS(calls, com__mnyadd, 1, &A, &B, &C);
    NULL_CALLS(calls, com__mnysub, 1, &A, &B, &C);
    NULL_CALLS(calls, com__mnymul, 1, &A, &B, &C);
    NULL_CALLS(calls, com__mnydiv, 1, &A, &B, &C);
    NULL_CALLS(calls, com__mnyndigit, 0, &A, &DIGIT);
    NULL_CALLS(calls, com__maxposmny, 1, &A);
    NULL_CALLS(calls, com__maxnegmny, 1, &A);
    NULL_CALLS(calls, comn_mnycopy, CS_FAIL, &A, &B);
    NULL_CALLS(calls, comn_mnyminus, CS_FAIL, &A, &B);
    NULL_CALLS(calls, comn_mnyinc, CS_FAIL, &A);
    NULL_CALLS(calls, comn_mnydec, CS_FAIL, &A);
    NULL_CALLS(calls, comn_mnyadd, CS_FAIL, &A, &B, &C);
    NULL_CALLS(calls, comn_mnysub, CS_FAIL, &A, &B, &C);
    NULL_CALLS(calls, comn_mnymul, CS_FAIL, &A, &B, &C);
    NULL_CALLS(calls, comn_mnydivide, CS_FAIL, &A, &B, &C);
    NULL_CALLS(calls, comn_mnyndigit, 0, &A, &DIGIT);
    NULL_CALLS(calls, comn_mnymaxpos, CS_FAIL, &A);
    NULL_CALLS(calls, comn_mnymaxneg, CS_FAIL, &A);
    NULL_CALLS(calls, comn_mnycmp, 0, &A, &B);
    NULL_CALLS(calls, comn_mnyzero, CS_FAIL, &A);
    NULL_CALLS(calls, com__mnyminus4, 1, &A4, &B4);
    NULL_CALLS(calls, com__mnyadd4, 1, &A4, &B4, &C4);
    NULL_CALLS(calls, com__mnysub4, 1, &A4, &B4, &C4);
    NULL_CALLS(calls, com__mnymul4, 1, &A4, &B4, &C4);
    NULL_CALLS(calls, com__mnydiv4, 1, &A4, &B4, &C4);
    NULL_CALLS(calls, comn_mny4copy, CS_FAIL, &A4, &B4);
    NULL_CALLS(calls, comn_mny4minus, CS_FAIL, &A4, &B4);
    NULL_CALLS(calls, comn_mny4add, CS_FAIL, &A4, &B4, &C4);
    NULL_CALLS(calls, comn_mny4sub, CS_FAIL, &A4, &B4, &C4);
    NULL_CALLS(calls, comn_mny4mul, CS_FAIL, &A4, &B4, &C4);
    NULL_CALLS(calls, comn_mny4divide, CS_FAIL, &A4, &B4, &C4);
    NULL_CALLS(calls, comn_mny4cmp, 0, &A4, &B4);
    NULL_CALLS(calls, comn_mny4zero, CS_FAIL, &A4);
    calls.add(
        "com__mnyscale", [] { return com__mnyscale(nullptr, 10, 1); }, 1);
    calls.add(
        "comn_mnyscale", [] { return comn_mnyscale(nullptr, 10, 1); }, CS_FAIL);
    calls.add(
        "com__mnydown", [] { return com__mnydown(nullptr, 10); }, 0);
    calls.add(
        "comn_mnydown", [] { return comn_mnydown(nullptr, 10); }, 0);
    calls.add(
        "com__mnyinit", [] { return com__mnyinit(nullptr, 1); }, 0);
    calls.add(
        "comn_mnyinit", [] { return comn_mnyinit(nullptr, 1); }, 0);
    NULL_CALLS(calls, comn_mnyxdiv, 0, &A, &B, &C);
    NULL_CALLS(calls, comn__mny16div, 0, &A, &B, &C);
    calls.add(
        "com__mnyshift", [] { return com__mnyshift(nullptr, 1), 0; }, 0);
    return calls;
}

TEST(MoneyDeathTest, AMissingOperandIsReported) { null_calls().expect_reports("mnyfuncs"); }

TEST(MoneyReturning, AMissingOperandChangesNothing) {
    null_calls().expect_answers(
        [] {
            A = B = C = money(UNWRITTEN);
            A4 = B4 = C4 = money4(M4_UNWRITTEN);
            DIGIT = '?';
        },
        [] {
            for (const CS_MONEY *m : {&A, &B, &C})
                EXPECT_EQ(count_of(*m), UNWRITTEN);
            for (const CS_MONEY4 *m : {&A4, &B4, &C4})
                EXPECT_EQ(m->mny4, M4_UNWRITTEN);
            EXPECT_EQ(DIGIT, '?');
        });
}

} // namespace
