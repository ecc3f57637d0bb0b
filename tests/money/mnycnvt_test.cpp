// Money to and from the other money type, integers and floats. Integers are held against 128-bit arithmetic, floats
// against the told formula of doubles, restated step by step.

#include "support/money.h"
#include "support/null_calls.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

using namespace support;

constexpr int CASES = 150000;
constexpr CS_INT M4_UNWRITTEN = 0x5A5A5A5A;

template <class Integer>
bool fits_in(Wide value) {
    return value >= Wide{std::numeric_limits<Integer>::min()} && value <= Wide{std::numeric_limits<Integer>::max()};
}
template <class Integer>
Integer clamped(Wide value) {
    return fits_in<Integer>(value) ? static_cast<Integer>(value)
           : value < 0             ? std::numeric_limits<Integer>::min()
                                   : std::numeric_limits<Integer>::max();
}

// ---- Widths ----

Answer narrow(std::int64_t count) {
    CS_MONEY from = money(count);
    CS_MONEY4 to = money4(M4_UNWRITTEN);
    const int width = com__mnytomny4(&from, &to);
    return {width, to.mny4};
}
std::int64_t widen(std::int32_t count) {
    CS_MONEY4 from = money4(count);
    CS_MONEY to = money(UNWRITTEN);
    com__mny4tomny(&from, &to);
    return count_of(to);
}

TEST(MoneyWidth, WideningKeepsTheSign) {
    EXPECT_EQ(widen(5), 5);
    EXPECT_EQ(widen(-5), -5);
    EXPECT_EQ(widen(INT_MIN), INT_MIN);
    EXPECT_EQ(widen(INT_MAX), INT_MAX);
}
TEST(MoneyWidth, NarrowingAnswersTheWidth) {
    EXPECT_EQ(narrow(0), (Answer{4, 0}));
    EXPECT_EQ(narrow(-1), (Answer{4, -1}));
    EXPECT_EQ(narrow(INT_MAX), (Answer{4, INT_MAX}));
    EXPECT_EQ(narrow(INT_MIN), (Answer{4, INT_MIN}));
}
TEST(MoneyWidth, NarrowingOutOfRangeStoresTheBound) {
    EXPECT_EQ(narrow(INT_MAX + 1LL), (Answer{-1, INT_MAX}));
    EXPECT_EQ(narrow(INT_MIN - 1LL), (Answer{-1, INT_MIN}));
    EXPECT_EQ(narrow(0xFFFFFFFF), (Answer{-1, INT_MAX})); // a high word of 0 that disagrees with the low one
    EXPECT_EQ(narrow(-0x100000000), (Answer{-1, INT_MIN}));
    EXPECT_EQ(narrow(LARGEST), (Answer{-1, INT_MAX}));
    EXPECT_EQ(narrow(SMALLEST), (Answer{-1, INT_MIN}));
}
TEST(MoneyWidth, Differential) {
    RandomCounts random(41);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t count = random.count();
        ASSERT_EQ(narrow(count), (Answer{fits_in<CS_INT>(count) ? 4 : -1, clamped<CS_INT>(count)}));
        const std::int32_t word = random.word();
        ASSERT_EQ(widen(word), word);
        ASSERT_EQ(narrow(word), (Answer{4, word}));
    }
}

// ---- From integers ----

template <class Integer>
Answer wide(int (*convert)(CS_MONEY *, Integer *), std::type_identity_t<Integer> value) {
    CS_MONEY to = money(UNWRITTEN);
    Integer from = value;
    const int code = convert(&to, &from);
    EXPECT_EQ(from, value);
    return {code, count_of(to)};
}
template <class Integer>
Answer narrow_of(int (*convert)(CS_MONEY4 *, Integer *), std::type_identity_t<Integer> value) {
    CS_MONEY4 to = money4(M4_UNWRITTEN);
    Integer from = value;
    const int code = convert(&to, &from);
    EXPECT_EQ(from, value);
    return {code, to.mny4};
}

TEST(MoneyFromInteger, WholeUnits) {
    EXPECT_EQ(wide(com__inttomny, 7), (Answer{0, 70000}));
    EXPECT_EQ(wide(com__inttomny, INT_MIN), (Answer{0, -21474836480000}));
    EXPECT_EQ(wide(com__inttomny, INT_MAX), (Answer{0, 21474836470000}));
    EXPECT_EQ(wide(com__uinttomny, UINT_MAX), (Answer{0, 42949672950000}));
    EXPECT_EQ(wide(com__int8tomny, 922337203685477), (Answer{0, 9223372036854770000}));
    EXPECT_EQ(wide(com__int8tomny, -922337203685477), (Answer{0, -9223372036854770000}));
    EXPECT_EQ(wide(com__uint8tomny, 922337203685477), (Answer{0, 9223372036854770000}));
}
TEST(MoneyFromInteger, OverflowLeavesTheUnscaledInteger) {
    EXPECT_EQ(wide(com__int8tomny, 922337203685478), (Answer{1, 922337203685478}));
    EXPECT_EQ(wide(com__int8tomny, -922337203685478), (Answer{1, -922337203685478}));
    EXPECT_EQ(wide(com__int8tomny, SMALLEST), (Answer{1, SMALLEST}));
    EXPECT_EQ(wide(com__uint8tomny, 922337203685478), (Answer{1, 922337203685478}));
}
TEST(MoneyFromInteger, AnUnsignedOneAboveTheLargestIsClampedAndThenOverflows) {
    EXPECT_EQ(wide(com__uint8tomny, 1ULL << 63), (Answer{1, LARGEST}));
    EXPECT_EQ(wide(com__uint8tomny, ULLONG_MAX), (Answer{1, LARGEST}));
    EXPECT_EQ(wide(com__uint8tomny, (1ULL << 63) - 1), (Answer{1, LARGEST}));
}
TEST(Money4FromInteger, OnlyTheNarrowingIsJudged) {
    EXPECT_EQ(narrow_of(com__inttomny4, 214748), (Answer{0, 2147480000}));
    EXPECT_EQ(narrow_of(com__inttomny4, 214749), (Answer{1, INT_MAX}));
    EXPECT_EQ(narrow_of(com__inttomny4, -214748), (Answer{0, -2147480000}));
    EXPECT_EQ(narrow_of(com__inttomny4, -214749), (Answer{1, INT_MIN}));
    EXPECT_EQ(narrow_of(com__int8tomny4, 922337203685478), (Answer{1, INT_MAX}));
    EXPECT_EQ(narrow_of(com__int8tomny4, SMALLEST), (Answer{1, INT_MIN}));
    EXPECT_EQ(narrow_of(com__uinttomny4, UINT_MAX), (Answer{1, INT_MAX}));
    EXPECT_EQ(narrow_of(com__uint8tomny4, ULLONG_MAX), (Answer{1, INT_MAX}));
    EXPECT_EQ(narrow_of(com__uint8tomny4, 5), (Answer{0, 50000}));
}

// A value of the type that lies, as often as not, around where whole units stop to fit.
template <class Integer>
Integer random_integer(RandomCounts &random) {
    if (random.below(3) == 0) {
        static const std::int64_t EDGES[] = {214748, 922337203685477, 2147483647, 0};
        const std::int64_t edge = EDGES[random.below(4)] + static_cast<std::int64_t>(random.below(5)) - 2;
        return static_cast<Integer>(random.below(2) ? edge : -edge);
    }
    return static_cast<Integer>(random.bits() >> random.below(64)) * static_cast<Integer>(random.below(2) ? 1 : -1);
}

template <class Integer>
void expect_from_integers(int (*to_money)(CS_MONEY *, Integer *), int (*to_money4)(CS_MONEY4 *, Integer *), int seed) {
    RandomCounts random(static_cast<std::uint64_t>(seed));
    for (int i = 0; i < CASES; ++i) {
        const auto value = random_integer<Integer>(random);
        const Wide first = value > static_cast<Wide>(LARGEST) ? Wide{LARGEST} : Wide{value};
        const Wide scaled = first * 10000;
        const bool done = magnitude(scaled) <= LARGEST;
        const auto left = static_cast<std::int64_t>(done ? scaled : first);
        ASSERT_EQ(wide(to_money, value), (Answer{done ? 0 : 1, left}));
        ASSERT_EQ(narrow_of(to_money4, value), (Answer{fits_in<CS_INT>(left) ? 0 : 1, clamped<CS_INT>(left)}));
    }
}
TEST(MoneyFromInteger, DifferentialInt) { expect_from_integers<CS_INT>(com__inttomny, com__inttomny4, 42); }
TEST(MoneyFromInteger, DifferentialInt8) { expect_from_integers<CS_BIGINT>(com__int8tomny, com__int8tomny4, 43); }
TEST(MoneyFromInteger, DifferentialUnsigned) { expect_from_integers<CS_UINT>(com__uinttomny, com__uinttomny4, 44); }
TEST(MoneyFromInteger, DifferentialUnsigned8) {
    expect_from_integers<CS_UBIGINT>(com__uint8tomny, com__uint8tomny4, 45);
}

// ---- To integers ----

constexpr int INTEGER_UNWRITTEN = 0x33;

// The code and the integer, as wide as any of them.
template <class Money, class Integer>
std::pair<int, Wide> integer(int (*convert)(Money *, Integer *), std::int64_t count) {
    Integer to;
    std::memset(&to, INTEGER_UNWRITTEN, sizeof to);
    Money from;
    if constexpr (sizeof(Money) == sizeof(CS_MONEY))
        from = money(count);
    else
        from = money4(static_cast<CS_INT>(count));
    const int code = convert(&from, &to);
    return {code, to};
}
template <class Integer>
Wide unwritten() {
    Integer value;
    std::memset(&value, INTEGER_UNWRITTEN, sizeof value);
    return value;
}
using Pair = std::pair<int, Wide>;
bool equal(const Pair &a, const Pair &b) { return a == b; }
#define EXPECT_INTEGER(actual, ...) EXPECT_PRED2(equal, (actual), (Pair{__VA_ARGS__}))

TEST(MoneyToInteger, RoundsHalfAwayFromZero) {
    EXPECT_INTEGER(integer(com__mnytoint, 25000), 0, 3);
    EXPECT_INTEGER(integer(com__mnytoint, -25000), 0, -3);
    EXPECT_INTEGER(integer(com__mnytoint, 24999), 0, 2);
    EXPECT_INTEGER(integer(com__mnytoint, -24999), 0, -2);
    EXPECT_INTEGER(integer(com__mnytoint, 4999), 0, 0);
    EXPECT_INTEGER(integer(com__mnytoint, -4999), 0, 0);
    EXPECT_INTEGER(integer(com__mnytouint, 25000), 0, 3);
    EXPECT_INTEGER(integer(com__mnytouint8, 25000), 0, 3);
    EXPECT_INTEGER(integer(com__mny4toint, -25000), 0, -3);
    EXPECT_INTEGER(integer(com__mny4touint, 25000), 0, 3);
}
TEST(MoneyToInteger, OutOfRangeStoresTheBound) {
    EXPECT_INTEGER(integer(com__mnytoint, 21474836474999), 0, INT_MAX);
    EXPECT_INTEGER(integer(com__mnytoint, 21474836475000), 1, INT_MAX);
    EXPECT_INTEGER(integer(com__mnytoint, -21474836484999), 0, INT_MIN);
    EXPECT_INTEGER(integer(com__mnytoint, -21474836485000), 1, INT_MIN);
    EXPECT_INTEGER(integer(com__mnytoint, SMALLEST), 1, INT_MIN);
    EXPECT_INTEGER(integer(com__mnytouint, 42949672954999), 0, UINT_MAX);
    EXPECT_INTEGER(integer(com__mnytouint, 42949672955000), 1, UINT_MAX);
    EXPECT_INTEGER(integer(com__mnytouint, LARGEST), 1, UINT_MAX);
}
TEST(MoneyToInteger, EightBytesAlwaysFit) {
    EXPECT_INTEGER(integer(com__mnytoint8, LARGEST), 0, 922337203685478);
    EXPECT_INTEGER(integer(com__mnytoint8, SMALLEST), 0, -922337203685478);
    EXPECT_INTEGER(integer(com__mnytouint8, LARGEST), 0, 922337203685478);
}
TEST(MoneyToInteger, ANegativeValueToAnUnsignedIntegerStoresNothing) {
    EXPECT_INTEGER(integer(com__mnytouint, -1), 1, unwritten<CS_UINT>()); // though it rounds to zero
    EXPECT_INTEGER(integer(com__mnytouint8, -1), 1, unwritten<CS_UBIGINT>());
    EXPECT_INTEGER(integer(com__mnytouint, SMALLEST), 1, unwritten<CS_UINT>());
    EXPECT_INTEGER(integer(com__mny4touint, -1), 1, unwritten<CS_UINT>());
    EXPECT_INTEGER(integer(com__mny4touint8, -10000), 1, unwritten<CS_UBIGINT>());
}

template <class Money, class Integer>
void expect_to_integers(int (*convert)(Money *, Integer *), int seed) {
    RandomCounts random(static_cast<std::uint64_t>(seed));
    for (int i = 0; i < CASES; ++i) {
        std::int64_t count = random.count();
        if (random.below(4) == 0) // a half unit around the bounds of 32 bits
            count = (random.below(2) ? 2147483648 : 4294967296) * (random.below(2) ? 10000 : -10000) +
                    static_cast<std::int64_t>(random.below(4)) * 5000 - 10001 +
                    static_cast<std::int64_t>(random.below(3));
        if (sizeof(Money) == sizeof(CS_MONEY4))
            count = static_cast<CS_INT>(count);
        const Wide units = (magnitude(count) + 5000) / 10000 * (count < 0 ? -1 : 1);
        Pair told = {fits_in<Integer>(units) ? 0 : 1, clamped<Integer>(units)};
        if (!std::numeric_limits<Integer>::is_signed && count < 0)
            told = {1, unwritten<Integer>()};
        ASSERT_EQ(integer(convert, count), told) << count;
    }
}
TEST(MoneyToInteger, Differential) {
    expect_to_integers(com__mnytoint, 46);
    expect_to_integers(com__mnytoint8, 47);
    expect_to_integers(com__mnytouint, 48);
    expect_to_integers(com__mnytouint8, 49);
    expect_to_integers(com__mny4toint, 50);
    expect_to_integers(com__mny4toint8, 51);
    expect_to_integers(com__mny4touint, 52);
    expect_to_integers(com__mny4touint8, 53);
}

// ---- To floats ----

// Values at addresses that are aligned for nothing, with a byte on both sides that must stay.
template <class T>
struct Unaligned {
    CS_BYTE bytes[sizeof(T) + 2];
    Unaligned() { std::memset(bytes, 0xEE, sizeof bytes); }
    explicit Unaligned(const T &value) : Unaligned() { std::memcpy(bytes + 1, &value, sizeof value); }
    CS_BYTE *at() { return bytes + 1; }
    T value() const {
        EXPECT_EQ(bytes[0], 0xEE);
        EXPECT_EQ(bytes[sizeof(T) + 1], 0xEE);
        T result;
        std::memcpy(&result, bytes + 1, sizeof result);
        return result;
    }
};

double to_double(std::int64_t count) {
    Unaligned<CS_MONEY> from(money(count));
    Unaligned<double> to;
    EXPECT_EQ(com__mnytoflt8(from.at(), -5, to.at(), 99, 7), 8);
    return to.value();
}
float to_float(std::int64_t count) {
    Unaligned<CS_MONEY> from(money(count));
    Unaligned<float> to;
    EXPECT_EQ(com__mnytoflt4(from.at(), -5, to.at(), 99, 7), 4);
    return to.value();
}
double told_double(std::int64_t count) {
    const CS_MONEY value = money(count);
    const volatile double low = value.mnylow / 10000.0;
    const volatile double high = 429496.7296 * value.mnyhigh;
    return low + high;
}

TEST(MoneyToFloat, Examples) {
    EXPECT_EQ(to_double(0), 0.0);
    EXPECT_EQ(to_double(12345), 1.2345);
    EXPECT_EQ(to_double(10000), 1.0);
    EXPECT_EQ(to_double(LARGEST), 922337203685477.6);
    EXPECT_EQ(to_double(SMALLEST), -922337203685477.6);
    EXPECT_EQ(to_float(12500), 1.25f);
    EXPECT_EQ(to_float(LARGEST), 922337203685477.6f);
}
TEST(MoneyToFloat, SmallNegativeValuesComeFromTheDifferenceOfTheWords) {
    // -0.0001 is 429496.7295 - 429496.7296 in doubles.
    EXPECT_EQ(to_double(-1), 4294967295 / 10000.0 - 429496.7296);
    EXPECT_NE(to_double(-1), -0.0001);
}
TEST(MoneyToFloat, Differential) {
    RandomCounts random(54);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t count = random.count();
        ASSERT_EQ(std::bit_cast<std::uint64_t>(to_double(count)), std::bit_cast<std::uint64_t>(told_double(count)));
        ASSERT_EQ(to_float(count), static_cast<float>(told_double(count)));
        const std::int32_t word = random.word();
        Unaligned<CS_MONEY4> from(money4(word));
        Unaligned<double> wide_result;
        Unaligned<float> narrow_result;
        ASSERT_EQ(com__mny4toflt8(from.at(), wide_result.at()), 8);
        ASSERT_EQ(com__mny4toflt4(from.at(), narrow_result.at()), 4);
        ASSERT_EQ(wide_result.value(), word / 10000.0);
        ASSERT_EQ(narrow_result.value(), static_cast<float>(word / 10000.0));
    }
}

// ---- From floats ----

Answer from_double(double value) {
    Unaligned<double> from(value);
    Unaligned<CS_MONEY> to;
    const int width = com__flt8tomny(from.at(), 8, to.at(), 8, 0);
    return {width, count_of(to.value())};
}
Answer from_float(float value) {
    Unaligned<float> from(value);
    Unaligned<CS_MONEY> to;
    const int width = com__flt4tomny(from.at(), 4, to.at(), 8, 0);
    return {width, count_of(to.value())};
}
Answer narrow_from_double(double value) {
    Unaligned<double> from(value);
    Unaligned<CS_MONEY4> to;
    const int width = com__flt8tomny4(from.at(), 8, to.at(), 0);
    return {width, to.value().mny4};
}
Answer narrow_from_float(float value) {
    Unaligned<float> from(value);
    Unaligned<CS_MONEY4> to;
    const int width = com__flt4tomny4(from.at(), 4, to.at(), 0);
    return {width, to.value().mny4};
}

// The formula; each step is stored, so that none can be merged with the next.
Answer told_from_double(double value) {
    volatile double v = value < 0 ? -value : value;
    v = v + 5e-05;
    if (std::isnan(value) || v > 922337203685477.6)
        return {-1, 0};
    if (v == 922337203685477.6)
        return {8, value < 0 ? -LARGEST : LARGEST};
    const volatile double ratio = v / 429496.7296;
    const auto high = static_cast<std::int64_t>(ratio);
    const volatile double taken = 429496.7296 * static_cast<double>(high);
    v = v - taken;
    v = v * 10000.0;
    std::uint32_t low;
    if (v >= 2147483648.0)
        low = static_cast<std::uint32_t>(static_cast<std::int32_t>(v - 2147483648.0)) + 0x80000000u;
    else
        low = static_cast<std::uint32_t>(static_cast<std::int32_t>(v));
    const std::int64_t count = high << 32 | low;
    return {8, value < 0 ? -count : count};
}
Answer told_narrow(Answer wide_answer) {
    if (wide_answer.code < 0)
        return {-1, 0};
    return {fits_in<CS_INT>(wide_answer.count) ? 4 : -1, clamped<CS_INT>(wide_answer.count)};
}

TEST(MoneyFromFloat, RoundsHalfUpAtFourDecimals) {
    EXPECT_EQ(from_double(0.00005), (Answer{8, 1}));
    EXPECT_EQ(from_double(0.00004), (Answer{8, 0}));
    EXPECT_EQ(from_double(-0.00005), (Answer{8, -1}));
    EXPECT_EQ(from_double(1.2345), (Answer{8, 12345}));
    EXPECT_EQ(from_double(-1.2345), (Answer{8, -12345}));
    EXPECT_EQ(from_double(0.0), (Answer{8, 0}));
    EXPECT_EQ(from_double(-0.0), (Answer{8, 0}));
    EXPECT_EQ(from_double(DBL_MIN), (Answer{8, 0}));
}
TEST(MoneyFromFloat, ALowWordOfAllKindsOfTopBits) {
    EXPECT_EQ(from_double(214748.3647), (Answer{8, 0x7FFFFFFF}));
    EXPECT_EQ(from_double(214748.3648), (Answer{8, 0x80000000}));
    EXPECT_EQ(from_double(429496.7295), (Answer{8, 0xFFFFFFFF}));
    EXPECT_EQ(from_double(429496.7296), (Answer{8, 0x100000000}));
    EXPECT_EQ(from_double(-429496.7296), (Answer{8, -0x100000000}));
}
TEST(MoneyFromFloat, TheTopIsTheLargest) {
    const double top = 922337203685477.6;
    EXPECT_EQ(from_double(top), (Answer{8, LARGEST}));
    EXPECT_EQ(from_double(-top), (Answer{8, -LARGEST}));
    EXPECT_EQ(from_double(std::nextafter(top, DBL_MAX)), (Answer{-1, 0}));
    EXPECT_EQ(from_double(-std::nextafter(top, DBL_MAX)), (Answer{-1, 0}));
    EXPECT_EQ(from_double(std::nextafter(top, 0)), told_from_double(std::nextafter(top, 0)));
    EXPECT_EQ(from_double(1e300), (Answer{-1, 0}));
}
TEST(MoneyFromFloat, WhatIsNoNumberOrInfiniteFailsWithZero) {
    for (const double value : {std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(from_double(value), (Answer{-1, 0}));
        EXPECT_EQ(from_float(static_cast<float>(value)), (Answer{-1, 0}));
        EXPECT_EQ(narrow_from_double(value), (Answer{-1, 0}));
        EXPECT_EQ(narrow_from_float(static_cast<float>(value)), (Answer{-1, 0}));
    }
}
TEST(MoneyFromFloat, APassedHighWordGivesAValueOneHighWordTooGreat) {
    // The product for the high word is 512984490467498.4375, above the value: the low word is -625.
    const Answer answer = from_double(512984490467498.3750);
    EXPECT_EQ(answer, told_from_double(512984490467498.3750));
    EXPECT_EQ(answer, (Answer{8, (1194385091LL << 32) + (0x100000000 - 625)}));
}
TEST(MoneyFromFloat, NoSourceIsZero) {
    double value = 1.5;
    auto *const bytes = reinterpret_cast<CS_BYTE *>(&value);
    const auto wide_of = [](auto convert, CS_BYTE *src, int srclen) {
        Unaligned<CS_MONEY> to;
        const int width = convert(src, srclen, to.at(), 8, 0);
        return Answer{width, count_of(to.value())};
    };
    const auto narrow_of_bytes = [](auto convert, CS_BYTE *src, int srclen) {
        Unaligned<CS_MONEY4> to;
        const int width = convert(src, srclen, to.at(), 0);
        return Answer{width, to.value().mny4};
    };
    EXPECT_EQ(wide_of(com__flt8tomny, nullptr, 8), (Answer{8, 0}));
    EXPECT_EQ(wide_of(com__flt8tomny, bytes, 0), (Answer{8, 0}));
    EXPECT_EQ(wide_of(com__flt8tomny, bytes, -1), (Answer{8, 15000})); // any other length is the value's own
    EXPECT_EQ(wide_of(com__flt4tomny, nullptr, 4), (Answer{8, 0}));
    EXPECT_EQ(wide_of(com__flt4tomny, bytes, 0), (Answer{8, 0}));
    EXPECT_EQ(narrow_of_bytes(com__flt8tomny4, nullptr, 8), (Answer{4, 0}));
    EXPECT_EQ(narrow_of_bytes(com__flt8tomny4, bytes, 0), (Answer{4, 0}));
    EXPECT_EQ(narrow_of_bytes(com__flt4tomny4, nullptr, 4), (Answer{4, 0}));
    EXPECT_EQ(narrow_of_bytes(com__flt4tomny4, bytes, 0), (Answer{4, 0}));
}
TEST(Money4FromFloat, OutOfRangeStoresTheBoundAndBeyondMoneyZero) {
    EXPECT_EQ(narrow_from_double(214748.3647), (Answer{4, INT_MAX}));
    EXPECT_EQ(narrow_from_double(214748.3648), (Answer{-1, INT_MAX}));
    EXPECT_EQ(narrow_from_double(-214748.3648), (Answer{4, INT_MIN}));
    EXPECT_EQ(narrow_from_double(-214748.3649), (Answer{-1, INT_MIN}));
    EXPECT_EQ(narrow_from_double(1e20), (Answer{-1, 0}));
    EXPECT_EQ(narrow_from_float(-1e20f), (Answer{-1, 0}));
    EXPECT_EQ(narrow_from_float(1.5f), (Answer{4, 15000}));
}
TEST(MoneyFromFloat, ValueMayLieWhereTheResultGoes) {
    double value = -1.2345;
    auto *const bytes = reinterpret_cast<CS_BYTE *>(&value);
    EXPECT_EQ(com__flt8tomny(bytes, 8, bytes, 8, 0), 8);
    CS_MONEY result;
    std::memcpy(&result, &value, sizeof result);
    EXPECT_EQ(count_of(result), -12345);
}

void expect_from_float(double value) {
    const Answer told = told_from_double(value);
    ASSERT_EQ(from_double(value), told) << std::hexfloat << value;
    ASSERT_EQ(narrow_from_double(value), told_narrow(told)) << std::hexfloat << value;
    const auto single = static_cast<float>(value);
    const Answer told_single = told_from_double(single);
    ASSERT_EQ(from_float(single), told_single) << std::hexfloat << single;
    ASSERT_EQ(narrow_from_float(single), told_narrow(told_single)) << std::hexfloat << single;
}
TEST(MoneyFromFloat, DifferentialOverAllBits) {
    RandomCounts random(55);
    for (int i = 0; i < CASES; ++i)
        ASSERT_NO_FATAL_FAILURE(expect_from_float(std::bit_cast<double>(random.bits())));
}
TEST(MoneyFromFloat, DifferentialInRange) {
    RandomCounts random(56);
    int passed = 0;
    for (int i = 0; i < 2 * CASES; ++i) {
        double value = static_cast<double>(random.count()) / 10000.0;
        if (random.below(3) == 0) // around a whole high word
            value = 429496.7296 * static_cast<double>(random.bits() >> (33 + random.below(31)));
        const int steps = static_cast<int>(random.below(7)) - 3;
        for (int k = 0; k < std::abs(steps); ++k)
            value = std::nextafter(value, steps < 0 ? -DBL_MAX : DBL_MAX);
        ASSERT_NO_FATAL_FAILURE(expect_from_float(value));
        passed += std::fabs(static_cast<double>(told_from_double(value).count) / 10000.0 - std::fabs(value)) > 400000;
    }
    EXPECT_GT(passed, 0); // the case of a passed high word was among them
}
TEST(MoneyFromFloat, CountsComeBackWhereADoubleTellsThemApart) {
    RandomCounts random(57);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t count = static_cast<std::int64_t>(random.bits() >> (20 + random.below(44)));
        ASSERT_EQ(from_double(static_cast<double>(count) / 10000.0), (Answer{8, count}));
        ASSERT_EQ(from_double(static_cast<double>(-count) / 10000.0), (Answer{8, -count}));
    }
}

// ---- Missing operands ----

CS_MONEY A;
CS_MONEY4 A4;
CS_INT INT;
CS_UINT UNSIGNED;
CS_BIGINT INT8;
CS_UBIGINT UNSIGNED8;
double FLOAT;

CS_BYTE *bytes_of(void *value) { return static_cast<CS_BYTE *>(value); }

NullCalls null_calls() {
    NullCalls calls;
    NULL_CALLS(calls, com__mny4tomny, 0, &A4, &A);
    NULL_CALLS(calls, com__mnytomny4, -1, &A, &A4);
    NULL_CALLS(calls, com__inttomny, 1, &A, &INT);
    NULL_CALLS(calls, com__int8tomny, 1, &A, &INT8);
    NULL_CALLS(calls, com__uinttomny, 1, &A, &UNSIGNED);
    NULL_CALLS(calls, com__uint8tomny, 1, &A, &UNSIGNED8);
    NULL_CALLS(calls, com__inttomny4, 1, &A4, &INT);
    NULL_CALLS(calls, com__int8tomny4, 1, &A4, &INT8);
    NULL_CALLS(calls, com__uinttomny4, 1, &A4, &UNSIGNED);
    NULL_CALLS(calls, com__uint8tomny4, 1, &A4, &UNSIGNED8);
    NULL_CALLS(calls, com__mnytoint, 1, &A, &INT);
    NULL_CALLS(calls, com__mnytoint8, 1, &A, &INT8);
    NULL_CALLS(calls, com__mnytouint, 1, &A, &UNSIGNED);
    NULL_CALLS(calls, com__mnytouint8, 1, &A, &UNSIGNED8);
    NULL_CALLS(calls, com__mny4toint, 1, &A4, &INT);
    NULL_CALLS(calls, com__mny4toint8, 1, &A4, &INT8);
    NULL_CALLS(calls, com__mny4touint, 1, &A4, &UNSIGNED);
    NULL_CALLS(calls, com__mny4touint8, 1, &A4, &UNSIGNED8);
    NULL_CALLS(calls, com__mny4toflt8, -1, bytes_of(&A4), bytes_of(&FLOAT));
    NULL_CALLS(calls, com__mny4toflt4, -1, bytes_of(&A4), bytes_of(&FLOAT));
    calls.add(
        "com__mnytoflt8", [] { return com__mnytoflt8(nullptr, 8, bytes_of(&FLOAT), 8, 0); }, -1);
    calls.add(
        "com__mnytoflt8", [] { return com__mnytoflt8(bytes_of(&A), 8, nullptr, 8, 0); }, -1);
    calls.add(
        "com__mnytoflt4", [] { return com__mnytoflt4(nullptr, 8, bytes_of(&FLOAT), 4, 0); }, -1);
    calls.add(
        "com__mnytoflt4", [] { return com__mnytoflt4(bytes_of(&A), 8, nullptr, 4, 0); }, -1);
    calls.add(
        "com__flt8tomny", [] { return com__flt8tomny(bytes_of(&FLOAT), 8, nullptr, 8, 0); }, -1);
    calls.add(
        "com__flt4tomny", [] { return com__flt4tomny(bytes_of(&FLOAT), 4, nullptr, 8, 0); }, -1);
    calls.add(
        "com__flt8tomny4", [] { return com__flt8tomny4(bytes_of(&FLOAT), 8, nullptr, 0); }, -1);
    calls.add(
        "com__flt4tomny4", [] { return com__flt4tomny4(bytes_of(&FLOAT), 4, nullptr, 0); }, -1);
    return calls;
}

TEST(MoneyConvertDeathTest, AMissingOperandIsReported) { null_calls().expect_reports("mnycnvt"); }

TEST(MoneyConvertReturning, AMissingOperandChangesNothing) {
    null_calls().expect_answers(
        [] {
            A = money(UNWRITTEN);
            A4 = money4(M4_UNWRITTEN);
            INT = 1;
            UNSIGNED = 2;
            INT8 = 3;
            UNSIGNED8 = 4;
            FLOAT = 5.0;
        },
        [] {
            EXPECT_EQ(count_of(A), UNWRITTEN);
            EXPECT_EQ(A4.mny4, M4_UNWRITTEN);
            EXPECT_EQ(INT, 1);
            EXPECT_EQ(UNSIGNED, 2u);
            EXPECT_EQ(INT8, 3);
            EXPECT_EQ(UNSIGNED8, 4u);
            EXPECT_EQ(FLOAT, 5.0);
        });
}

} // namespace
