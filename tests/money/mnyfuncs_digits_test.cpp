// Money taken apart: digit by digit, by base-65536 digits, by bits.

#include "support/money.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace support;

constexpr int CASES = 150000;

Answer init(std::int64_t a, int trim) {
    CS_MONEY value = money(a);
    const int sign = com__mnyinit(&value, trim);
    return {sign, count_of(value)};
}

// ---- Digits ----

TEST(MoneyInit, RoundsOnTheLastDigitTakenOff) {
    EXPECT_EQ(init(12345, 1), (Answer{0, 1235}));
    EXPECT_EQ(init(12344, 1), (Answer{0, 1234}));
    EXPECT_EQ(init(-12345, 1), (Answer{-1, 1235}));
    EXPECT_EQ(init(12349, 2), (Answer{0, 123})); // the 4 decides, not what stands behind it
    EXPECT_EQ(init(12350, 2), (Answer{0, 124}));
    EXPECT_EQ(init(0, 3), (Answer{0, 0}));
}
TEST(MoneyInit, WithoutTrimIsTheMagnitude) {
    EXPECT_EQ(init(-7, 0), (Answer{-1, 7}));
    EXPECT_EQ(init(9, 0), (Answer{0, 9}));
    EXPECT_EQ(init(-7, -3), (Answer{-1, 7}));
    EXPECT_EQ(init(LARGEST, 0), (Answer{0, LARGEST}));
}
TEST(MoneyInit, RoundsUpWhereAllDigitBytesAre255) {
    EXPECT_EQ(init(655355, 1), (Answer{0, 65536}));
    EXPECT_EQ(init(2555, 1), (Answer{0, 256}));
    EXPECT_EQ(init(167772155, 1), (Answer{0, 16777216}));
    EXPECT_EQ(init(42949672955, 1), (Answer{0, 4294967296}));
}
TEST(MoneyInit, TrimmingPastAllDigitsGivesZero) {
    EXPECT_EQ(init(LARGEST, 19), (Answer{0, 1}));
    EXPECT_EQ(init(LARGEST, 20), (Answer{0, 0}));
    EXPECT_EQ(init(9, 1), (Answer{0, 1}));
    EXPECT_EQ(init(9, 2), (Answer{0, 0}));
    EXPECT_EQ(init(-9, std::numeric_limits<int>::max()), (Answer{-1, 0}));
}
TEST(MoneyInit, TheSmallestHasNoMagnitudeAndStays) {
    EXPECT_EQ(init(SMALLEST, 0), (Answer{-1, SMALLEST}));
    EXPECT_EQ(init(SMALLEST, 1), (Answer{-1, 922337203685477581}));
}
TEST(MoneyInit, Differential) {
    RandomCounts random(23);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t a = random.count();
        const int trim = static_cast<int>(random.below(22));
        Wide value = magnitude(a), digit = 0;
        for (int k = 0; k < trim; ++k) {
            digit = value % 10;
            value /= 10;
        }
        value += digit > 4;
        const Answer told = {a < 0 ? -1 : 0, value > LARGEST ? a : static_cast<std::int64_t>(value)};
        ASSERT_EQ(init(a, trim), told) << a << " trim " << trim;
        CS_MONEY wrapped = money(a);
        ASSERT_EQ(comn_mnyinit(&wrapped, trim), told.code);
        ASSERT_EQ(count_of(wrapped), told.count);
    }
}
TEST(MoneyInit, WrapperAnswersWhatTheCoreAnswers) {
    CS_MONEY value = money(-5);
    EXPECT_EQ(comn_mnyinit(&value, 0), -1);
    EXPECT_EQ(comn_mnyinit(&value, 0), 0);
}

TEST(MoneyDigit, TakesDigitsFromTheRightWhileMoreRemain) {
    for (const auto next : {com__mnyndigit, comn_mnyndigit}) {
        CS_MONEY value = money(1203);
        std::string digits;
        std::vector<int> more;
        for (int i = 0; i < 5; ++i) {
            char digit = '?';
            more.push_back(next(&value, &digit));
            digits += digit;
        }
        EXPECT_EQ(digits, "30210");
        EXPECT_EQ(more, (std::vector<int>{1, 1, 1, 0, 0}));
        EXPECT_EQ(count_of(value), 0);
    }
}
TEST(MoneyDigit, OfANegativeValueIsThatOfItsMagnitude) {
    CS_MONEY value = money(-47);
    char digit = '?';
    EXPECT_EQ(com__mnyndigit(&value, &digit), 1);
    EXPECT_EQ(digit, '7');
    EXPECT_EQ(count_of(value), -4);
}
TEST(MoneyDigit, WithInitWritesAnyValue) {
    RandomCounts random(24);
    for (int i = 0; i < 20000; ++i) {
        const std::int64_t a = random.count();
        if (a == SMALLEST)
            continue;
        CS_MONEY value = money(a);
        std::string digits = com__mnyinit(&value, 0) < 0 ? "-" : "";
        std::string reversed;
        char digit;
        int more;
        do {
            more = com__mnyndigit(&value, &digit);
            reversed += digit;
        } while (more);
        digits.append(reversed.rbegin(), reversed.rend());
        ASSERT_EQ(digits, std::to_string(a));
    }
}

// ---- Rarely used ----

std::int64_t divided(void (*operation)(CS_MONEY *, CS_MONEY *, CS_MONEY *), std::uint64_t a, std::uint64_t b) {
    CS_MONEY first = money(static_cast<std::int64_t>(a)), second = money(static_cast<std::int64_t>(b));
    CS_MONEY result = money(UNWRITTEN);
    operation(&first, &second, &result);
    return count_of(result);
}
// Long division by the divisor's two base-65536 digits: a digit is guessed from the high one, and lowered while the
// low one says that it is too great.
std::uint64_t told_long_division(std::uint64_t a, std::uint32_t divisor) {
    const Wide high = divisor >> 16, low = divisor & 0xFFFF;
    Wide rest = static_cast<Wide>(a >> 48);
    std::uint64_t quotient = 0;
    for (int shift = 32; shift >= 0; shift -= 16) {
        const Wide digit = a >> shift & 0xFFFF;
        Wide estimate = rest / high;
        Wide left = rest % high;
        while (estimate * low > left * 65536 + digit) {
            --estimate;
            left += high;
        }
        rest = rest * 65536 + digit - estimate * static_cast<Wide>(divisor);
        quotient = quotient << 16 | static_cast<std::uint64_t>(estimate);
    }
    return quotient;
}
// The digits of the dividend are signed 16-bit numbers; each step divides toward zero.
std::uint64_t told_signed_division(std::uint64_t a, std::uint16_t divisor) {
    long long rest = 0;
    std::uint64_t quotient = 0;
    for (int shift = 48; shift >= 0; shift -= 16) {
        long long digit = static_cast<long long>(a >> shift & 0xFFFF);
        if (digit >= 32768)
            digit -= 65536;
        const long long span = rest * 65536 + digit;
        quotient = quotient * 65536 + (static_cast<unsigned long long>(span / divisor) & 0xFFFF);
        rest = span % divisor;
    }
    return quotient;
}

TEST(MoneyXdiv, IsTheUnsignedQuotientByTheLowWord) {
    EXPECT_EQ(divided(comn_mnyxdiv, 0x0001000000000000, 0x10000), 0x100000000);
    EXPECT_EQ(divided(comn_mnyxdiv, 0xFFFFFFFFFFFFFFFF, 0x10000), 0x0000FFFFFFFFFFFF);
    EXPECT_EQ(divided(comn_mnyxdiv, 0xFFFFFFFFFFFFFFFF, 0x1FFFF),
              static_cast<std::int64_t>(0xFFFFFFFFFFFFFFFF / 0x1FFFF));
    EXPECT_EQ(divided(comn_mnyxdiv, 0x10000, 0xFFFFFFFF), 0);
}
TEST(MoneyXdiv, HighWordOfTheDivisorDoesNotCount) {
    EXPECT_EQ(divided(comn_mnyxdiv, 1000000000000, 0x7FFFFFFF00020000), 1000000000000 / 0x20000);
}
TEST(MoneyXdiv, TopDigitStandsAloneInTheHighWord) {
    CS_MONEY dividend = money(0x7000000000000000), divisor = money(0x10000), quotient;
    comn_mnyxdiv(&dividend, &divisor, &quotient);
    EXPECT_EQ(quotient.mnyhigh, 0x7000);
    EXPECT_EQ(quotient.mnylow, 0u);
}
TEST(MoneyXdiv, SmallDivisorsAreTheOtherFunctions) {
    RandomCounts random(25);
    for (int i = 0; i < CASES; ++i) {
        const std::uint64_t a = random.bits() >> random.below(64), b = random.below(65536);
        ASSERT_EQ(divided(comn_mnyxdiv, a, b), divided(comn__mny16div, a, b));
    }
}
TEST(MoneyXdiv, Differential) {
    RandomCounts random(26);
    for (int i = 0; i < CASES; ++i) {
        const std::uint64_t a = random.bits() >> random.below(64);
        const auto b = static_cast<std::uint32_t>((random.bits() | 0x80000000) >> (32 + random.below(10))) | 0x100000;
        ASSERT_EQ(static_cast<std::uint64_t>(divided(comn_mnyxdiv, a, b)), told_long_division(a, b)) << a << " / " << b;
        ASSERT_EQ(static_cast<std::uint64_t>(divided(comn_mnyxdiv, a, b)), a / b) << a << " / " << b;
    }
    for (const std::uint32_t b : {0x10000u, 0x10001u, 0x1FFFFu, 0x20000u, 0xFFFF0000u, 0xFFFFFFFFu})
        for (int i = 0; i < 200; ++i) {
            const std::uint64_t a = random.bits();
            ASSERT_EQ(static_cast<std::uint64_t>(divided(comn_mnyxdiv, a, b)), told_long_division(a, b))
                << a << " / " << b;
        }
}
TEST(Money16div, EqualsTheUnsignedQuotientWhereEveryDigitIsBelow32768) {
    RandomCounts random(27);
    for (int i = 0; i < CASES; ++i) {
        const std::uint64_t a = random.bits() >> random.below(64) & 0x7FFF7FFF7FFF7FFF;
        const std::uint64_t b = 1 + random.below(65535);
        ASSERT_EQ(static_cast<std::uint64_t>(divided(comn__mny16div, a, b)), a / b) << a << " / " << b;
    }
}
TEST(Money16div, DigitsOf32768AndMoreCountAsNegative) {
    EXPECT_EQ(divided(comn__mny16div, 0x8000, 1), 0x8000);
    EXPECT_EQ(divided(comn__mny16div, 0x8000, 2), 0xC000);  // -32768 / 2
    EXPECT_EQ(divided(comn__mny16div, 0x18000, 2), 0x4000); // (65536 - 32768) / 2
    // Digits -1, -1, -1, -1: 0 leaves -1, then -65537 / 2 is -32768 and leaves -1, and so on.
    EXPECT_EQ(divided(comn__mny16div, 0xFFFFFFFFFFFFFFFF, 2), 0x0000800080008000);
}
TEST(Money16div, Differential) {
    RandomCounts random(28);
    for (int i = 0; i < CASES; ++i) {
        const std::uint64_t a = random.bits() >> random.below(64);
        const auto b = static_cast<std::uint16_t>(1 + random.below(65535));
        const std::uint64_t den = random.bits() << 16 | b;
        ASSERT_EQ(static_cast<std::uint64_t>(divided(comn__mny16div, a, den)), told_signed_division(a, b))
            << a << " / " << b;
    }
}
TEST(Money16div, ByZeroIsZero) {
    EXPECT_EQ(divided(comn__mny16div, 12345, 0), 0);
    EXPECT_EQ(divided(comn__mny16div, 12345, 0x10000), 0);
    EXPECT_EQ(divided(comn_mnyxdiv, 12345, 0), 0);
    EXPECT_EQ(divided(comn_mnyxdiv, 12345, 0x700000000), 0);
}
TEST(MoneyXdiv, ResultMayBeAnOperand) {
    CS_MONEY value = money(1000000000000), divisor = money(0x20000);
    comn_mnyxdiv(&value, &divisor, &value);
    EXPECT_EQ(count_of(value), 1000000000000 / 0x20000);
    value = money(1000);
    divisor = money(10);
    comn__mny16div(&value, &divisor, &divisor);
    EXPECT_EQ(count_of(divisor), 100);
}

TEST(MoneyShift, ShiftsByTheBitLengthOfTheValueAndNotByTheValue) {
    const auto shifted = [](std::int64_t a, CS_INT value) {
        CS_MONEY m = money(a);
        com__mnyshift(&m, value);
        return count_of(m);
    };
    EXPECT_EQ(shifted(0x100, 0), 0x100);
    EXPECT_EQ(shifted(0x100, 1), 0x80);
    EXPECT_EQ(shifted(0x100, 2), 0x40);
    EXPECT_EQ(shifted(0x100, 3), 0x40);
    EXPECT_EQ(shifted(0x100, 4), 0x20);
    EXPECT_EQ(shifted(-1, 1), LARGEST); // zeros come in
    EXPECT_EQ(shifted(-1, 0x7FFFFFFF), 0x1FFFFFFFF);
    EXPECT_EQ(shifted(0x100000000, 1), 0x80000000); // from word to word
    RandomCounts random(29);
    for (int i = 0; i < CASES; ++i) {
        const std::int64_t a = random.count();
        const auto value = static_cast<CS_INT>(random.bits() >> (33 + random.below(31)));
        int length = 0;
        while (length < 31 && value >> length != 0)
            ++length;
        ASSERT_EQ(shifted(a, value), static_cast<std::int64_t>(static_cast<std::uint64_t>(a) >> length));
    }
}
TEST(MoneyShift, OfANegativeValueDoesNotEnd) {
    for (const CS_INT value : {-1, -2, std::numeric_limits<CS_INT>::min()}) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ualarm(200000, 0);
            CS_MONEY m = money(5);
            com__mnyshift(&m, value);
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) << value;
    }
}

} // namespace
