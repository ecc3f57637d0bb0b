// The converters between exact numerics and doubles, 64-bit integers and money.
#include "support/assertions.h"
#include "support/numeric_record.h"
#include "support/numeric_text_reference.h"

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

using support::big;
using support::NumberSource;
using support::power_of;
using support::Record;
using support::TextReference;

namespace {

constexpr CS_BIGINT I8_MIN = std::numeric_limits<CS_BIGINT>::min();
constexpr CS_BIGINT I8_MAX = std::numeric_limits<CS_BIGINT>::max();
constexpr CS_UBIGINT UI8_MAX = std::numeric_limits<CS_UBIGINT>::max();

// What a converter to numeric left behind; the destination has guards on both sides.
struct Made {
    CS_BYTE room[16 + 33 + 16];
    CS_BYTE *const dest = room + 16;
    int destlen;
    CS_BYTE precision;
    CS_BYTE scale;
    int code = 12345;

    Made(int destlen_, int precision_, int scale_)
        : destlen(destlen_), precision(static_cast<CS_BYTE>(precision_)), scale(static_cast<CS_BYTE>(scale_)) {
        std::memset(room, 0xA5, sizeof room);
    }
    bool intact() const {
        for (int i = 0; i < static_cast<int>(sizeof room); ++i)
            if ((i < 16 || i >= 16 + destlen) && room[i] != 0xA5)
                return false;
        return true;
    }
    std::string text() const {
        EXPECT_TRUE(intact());
        return code == NUME_OK ? support::value_text(dest, destlen)
                               : std::string("code ").append(std::to_string(code));
    }
};

Made from_double(double value, int precision, int scale, int destlen = 33) {
    Made made(destlen, precision, scale);
    made.code = com__doubletoexctnume(value, made.dest, destlen, &made.precision, &made.scale);
    return made;
}
Made from_long(CS_INT value, int precision, int scale, int destlen = 33) {
    Made made(destlen, precision, scale);
    made.code = com__longtoexctnume(value, made.dest, destlen, &made.precision, &made.scale);
    return made;
}
Made from_longlong(CS_BIGINT value, int precision, int scale, int destlen = 33) {
    Made made(destlen, precision, scale);
    made.code = com__longlongtoexctnume(value, made.dest, destlen, &made.precision, &made.scale);
    return made;
}
Made from_ulong(CS_UINT value, int precision, int scale, int destlen = 33) {
    Made made(destlen, precision, scale);
    made.code = com__ulongtoexctnume(value, made.dest, destlen, &made.precision, &made.scale);
    return made;
}
Made from_ulonglong(CS_UBIGINT value, int precision, int scale, int destlen = 33) {
    Made made(destlen, precision, scale);
    made.code = com__ulonglongtoexctnume(value, made.dest, destlen, &made.precision, &made.scale);
    return made;
}
Made from_money(CS_BIGINT count, int precision, int scale, int destlen = 33) {
    Made made(destlen, precision, scale);
    CS_MONEY money = {static_cast<CS_INT>(count >> 32), static_cast<CS_UINT>(count)};
    made.code = com__mny8toexctnume(&money, made.dest, destlen, &made.precision, &made.scale, 0);
    return made;
}

// ---- From doubles ------------------------------------------------------------------------------

TEST(NumericFromDouble, TakesTheSeventeenDigits) {
    EXPECT_EQ(from_double(1.5, 10, 1).text(), "15");
    EXPECT_EQ(from_double(-1.5, 10, 1).text(), "-15");
    EXPECT_EQ(from_double(0.1, 20, 18).text(), "100000000000000010"); // 0.10000000000000001
    EXPECT_EQ(from_double(100.0, 3, 0).text(), "100");
}

TEST(NumericFromDouble, RoundsAtTheScale) {
    EXPECT_EQ(from_double(2.5, 10, 0).text(), "3");
    EXPECT_EQ(from_double(-2.5, 10, 0).text(), "-3");
    EXPECT_EQ(from_double(2.4999, 10, 0).text(), "2");
    EXPECT_EQ(from_double(1.005, 10, 2).text(), "100"); // 1.0049999999999999
}

TEST(NumericFromDouble, ExponentFormIsRead) {
    EXPECT_EQ(from_double(1e20, 30, 0).text(), "100000000000000000000");
    EXPECT_EQ(from_double(1.5e22, 30, 2).text(), "1500000000000000000000000");
    EXPECT_EQ(from_double(1.5e-5, 10, 6).text(), "15");
    EXPECT_EQ(from_double(1.5e-5, 10, 5).text(), "2");
}

TEST(NumericFromDouble, ZerosHaveSignByteZero) {
    EXPECT_EQ(from_double(0.0, 1, 0).text(), "0");
    EXPECT_EQ(from_double(-0.0, 1, 0).text(), "0");
    EXPECT_EQ(from_double(-0.001, 10, 2).text(), "0");
}

TEST(NumericFromDouble, TooSmallBecomesZero) {
    EXPECT_EQ(from_double(1e-300, 77, 77).text(), "0");
    EXPECT_EQ(from_double(-1e-300, 77, 0).text(), "0");
    EXPECT_EQ(from_double(std::numeric_limits<double>::denorm_min(), 77, 77).text(), "0");
}

TEST(NumericFromDouble, TooLargeForThePrecisionOverflows) {
    EXPECT_EQ(from_double(1000.0, 3, 0).text(), "code 1");
    EXPECT_EQ(from_double(99.95, 3, 1).text(), "code 1");
    EXPECT_EQ(from_double(2e77, 77, 0).text(), "code 1");
    EXPECT_EQ(from_double(1e77, 77, 0).text(), std::string(16, '9').append("8").append(60, '0')); // 77 digits
    EXPECT_EQ(from_double(256.0, 2, 0, 2).text(), "code 1");
}

TEST(NumericFromDouble, MoreThan77PlacesAreBadValue) {
    EXPECT_EQ(from_double(1e78, 77, 0).text(), "code 2");
    EXPECT_EQ(from_double(1e300, 77, 0).text(), "code 2");
    EXPECT_EQ(from_double(1e20, 77, 60).text(), "code 2");
}

TEST(NumericFromDouble, WhatIsNoNumberIsBadValue) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(from_double(infinity, 77, 0).text(), "code 2");
    EXPECT_EQ(from_double(-infinity, 77, 0).text(), "code 2");
    EXPECT_EQ(from_double(std::nan(""), 77, 0).text(), "code 2");
    EXPECT_EQ(from_double(-std::nan(""), 77, 0).text(), "code 2");
}

TEST(NumericFromDouble, PrecisionOutOfRangeIsReplacedAndTheScaleWithIt) {
    for (const int precision : {0, 78, 255}) {
        const Made made = from_double(12.6, precision, 5, 9);
        EXPECT_EQ(made.text(), "13");
        EXPECT_EQ(made.precision, 19);
        EXPECT_EQ(made.scale, 0);
    }
}

TEST(NumericFromDouble, ScaleAbove77IsTakenFromTheText) {
    const Made made = from_double(12.75, 77, 255);
    EXPECT_EQ(made.text(), "1275");
    EXPECT_EQ(made.scale, 2);
}

TEST(NumericFromDouble, RandomDoublesAsTheirTextReads) {
    NumberSource numbers(101);
    int codes[7] = {};
    for (int i = 0; i < 150000; ++i) {
        double value = std::bit_cast<double>(numbers.word());
        if (numbers.chance(4))
            value = std::ldexp(static_cast<double>(static_cast<CS_BIGINT>(numbers.word())),
                               -static_cast<int>(numbers.pick(70)));
        else if (numbers.chance(2))
            value = std::strtod((std::to_string(numbers.pick(99999)) + "e" +
                                 std::to_string(static_cast<int>(numbers.pick(100)) - 40)).c_str(),
                                nullptr);
        const int destlen = 2 + static_cast<int>(numbers.pick(31));
        const int precision = numbers.chance(4) ? static_cast<int>(numbers.pick(255)) : 77;
        const int scale = static_cast<int>(numbers.chance(8) ? numbers.pick(255) : numbers.pick(77));

        char text[64];
        std::snprintf(text, sizeof text, "%.17g", value == 0 ? 0.0 : value);
        support::TextCall call = {text, static_cast<int>(std::strlen(text)), destlen, static_cast<CS_BYTE>(precision),
                                  static_cast<CS_BYTE>(scale), 1};
        if (precision < 1 || precision > 77) {
            call.precision = static_cast<CS_BYTE>(support::precision_of_length(destlen));
            call.scale = 0;
        }
        const support::TextResult expected = TextReference::read(call);
        const Made made = from_double(value, precision, scale, destlen);
        ASSERT_EQ(made.code, expected.code) << support::describe(call);
        ASSERT_EQ(made.precision, expected.precision) << support::describe(call);
        ASSERT_EQ(made.scale, expected.scale) << support::describe(call);
        ASSERT_TRUE(made.intact());
        if (made.code == NUME_OK) {
            ASSERT_EQ(std::memcmp(made.dest, expected.value.data(), expected.value.size()), 0)
                << support::describe(call);
        }
        ++codes[made.code];
    }
    EXPECT_GT(codes[NUME_OK], 10000);
    EXPECT_GT(codes[NUME_OVERFLOW], 10000);
    EXPECT_GT(codes[NUME_BADVALUE], 10000);
}

// ---- To doubles --------------------------------------------------------------------------------

double to_double(const mpz_class &value, int scale, int length = 33) {
    Record record(value, scale, length);
    CS_FLOAT result = 4711.0;
    EXPECT_EQ(com__subexctnumetoflt8(&record, &result), NUME_OK);
    return result;
}

TEST(NumericToDouble, Values) {
    EXPECT_EQ(to_double(15, 1), 1.5);
    EXPECT_EQ(to_double(-15, 1), -1.5);
    EXPECT_EQ(to_double(1, 77), 1e-77);
    EXPECT_EQ(to_double(power_of(10, 76), 0), 1e76);
    EXPECT_EQ(to_double(1, 1), 0.1);
}

TEST(NumericToDouble, ZeroIsPlusZeroWhateverTheSign) {
    Record record(0, 3);
    record.bytes[0] = 1;
    CS_FLOAT result = 4711.0;
    EXPECT_EQ(com__subexctnumetoflt8(&record, &result), NUME_OK);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(result), 0u);
    record.constant.scale = 77; // and it fits, as it has no sign
    EXPECT_EQ(com__subexctnumetoflt8(&record, &result), NUME_OK);
}

TEST(NumericToDouble, EmptyRecordStoresNothing) {
    Record record(5, 0);
    record.constant.len = 0;
    CS_FLOAT result = 4711.0;
    EXPECT_EQ(com__subexctnumetoflt8(&record, &result), NUME_OK);
    EXPECT_EQ(result, 4711.0);
}

TEST(NumericToDouble, NegativeValueOfScale77Overflows) {
    Record record(-1, 77);
    CS_FLOAT result = 4711.0;
    EXPECT_EQ(com__subexctnumetoflt8(&record, &result), NUME_OVERFLOW);
    EXPECT_EQ(result, 4711.0);
    EXPECT_EQ(to_double(1, 77), 1e-77);
    EXPECT_EQ(to_double(-1, 76), -1e-76);
}

TEST(NumericToDouble, TheEndsOfTheTypeAreWithinTheRangeOfADouble) {
    EXPECT_EQ(to_double(power_of(10, 77) - 1, 0), 1e77);
    EXPECT_EQ(to_double(-(power_of(10, 77) - 1), 0), -1e77);
    EXPECT_EQ(to_double(power_of(256, 32) - 1, 0), 0x1p256);
    EXPECT_EQ(to_double(1, 77), 1e-77);
}

TEST(NumericToDouble, LeavesErrnoAlone) {
    errno = 4711;
    to_double(power_of(10, 77) - 1, 0);
    to_double(1, 77);
    EXPECT_EQ(errno, 4711);
}

TEST(NumericToDouble, RandomValuesAsStrtodReadsTheirText) {
    NumberSource numbers(102);
    for (int i = 0; i < 150000; ++i) {
        const mpz_class value = numbers.chance(3) ? numbers.value(19) : numbers.value(77);
        const int scale = static_cast<int>(numbers.chance(3) ? numbers.pick(24) : numbers.pick(76));
        const std::string text = support::decimal_text(value, scale);
        ASSERT_EQ(std::bit_cast<std::uint64_t>(to_double(value, scale)),
                  std::bit_cast<std::uint64_t>(std::strtod(text.c_str(), nullptr)))
            << text;
    }
}

TEST(NumericToDouble, HalfwayCasesRoundToEven) {
    for (int bits = 53; bits <= 250; ++bits)
        for (int delta = -1; delta <= 1; ++delta)
            for (const int low : {1, 3}) {
                // Just between two doubles, and a unit on either side of it.
                const mpz_class value = (power_of(2, 53) + low) * power_of(2, bits - 53) + delta;
                ASSERT_EQ(to_double(value, 0), std::strtod(value.get_str().c_str(), nullptr)) << value.get_str();
            }
}

// ---- From integers -----------------------------------------------------------------------------

TEST(NumericFromInteger, Values) {
    EXPECT_EQ(from_long(0, 1, 0).text(), "0");
    EXPECT_EQ(from_long(7, 1, 0).text(), "7");
    EXPECT_EQ(from_long(-7, 1, 0).text(), "-7");
    EXPECT_EQ(from_ulong(4294967295u, 10, 0).text(), "4294967295");
    EXPECT_EQ(from_longlong(I8_MAX, 19, 0).text(), "9223372036854775807");
    EXPECT_EQ(from_ulonglong(UI8_MAX, 20, 0).text(), "18446744073709551615");
}

TEST(NumericFromInteger, TheSmallestValuesConvertExactly) {
    EXPECT_EQ(from_long(std::numeric_limits<CS_INT>::min(), 10, 0).text(), "-2147483648");
    EXPECT_EQ(from_longlong(I8_MIN, 19, 0).text(), "-9223372036854775808");
    EXPECT_EQ(from_longlong(I8_MIN, 19, 0, 9).text(), "-9223372036854775808");
}

TEST(NumericFromInteger, ScaleMultipliesUp) {
    EXPECT_EQ(from_long(-7, 10, 3).text(), "-7000");
    EXPECT_EQ(from_long(0, 10, 3).text(), "0");
    EXPECT_EQ(from_ulonglong(UI8_MAX, 77, 57).text(), mpz_class(big(UI8_MAX) * power_of(10, 57)).get_str());
    EXPECT_EQ(from_ulonglong(UI8_MAX, 77, 58).text(), "code 1");
    EXPECT_EQ(from_long(1, 77, 77).text(), "code 1");
}

TEST(NumericFromInteger, PrecisionDecides) {
    EXPECT_EQ(from_long(99, 2, 0).text(), "99");
    EXPECT_EQ(from_long(100, 2, 0).text(), "code 1");
    EXPECT_EQ(from_long(10, 2, 1).text(), "code 1");
    EXPECT_EQ(from_long(9, 2, 1).text(), "90");
}

TEST(NumericFromInteger, BytesLeftOverOverflow) {
    EXPECT_EQ(from_long(255, 77, 0, 2).text(), "255");
    EXPECT_EQ(from_long(256, 77, 0, 2).text(), "code 1");
    EXPECT_EQ(from_long(-256, 77, 0, 2).text(), "code 1");
    EXPECT_EQ(from_long(26, 77, 1, 2).text(), "code 1");
    EXPECT_EQ(from_longlong(I8_MIN, 77, 0, 8).text(), "code 1");
}

TEST(NumericFromInteger, ScaleAbove77IsBadValue) {
    EXPECT_EQ(from_long(1, 77, 78).text(), "code 2");
    EXPECT_EQ(from_long(0, 77, 255).text(), "code 2");
    EXPECT_EQ(from_long(256, 77, 78, 2).text(), "code 1"); // the bytes are judged first
}

TEST(NumericFromInteger, PrecisionOutOfRangeIsReplacedAndTheScaleWithIt) {
    for (const int precision : {0, 78, 255}) {
        const Made made = from_longlong(-5, precision, 200, 10);
        EXPECT_EQ(made.text(), "-5");
        EXPECT_EQ(made.precision, 21);
        EXPECT_EQ(made.scale, 0);
    }
    EXPECT_EQ(from_long(100, 0, 3, 2).text(), "code 1"); // the precision of two bytes is 2
}

template <class Integer, class From>
void expect_integers_like_gmp(unsigned long seed, From from) {
    NumberSource numbers(seed);
    for (int i = 0; i < 100000; ++i) {
        Integer value = static_cast<Integer>(numbers.word() >> numbers.pick(63));
        if (std::numeric_limits<Integer>::is_signed && numbers.chance(2))
            value = static_cast<Integer>(0 - static_cast<CS_UBIGINT>(value));
        if (numbers.chance(10))
            value = numbers.chance(2) ? std::numeric_limits<Integer>::min() : std::numeric_limits<Integer>::max();
        const int destlen = 2 + static_cast<int>(numbers.pick(31));
        const int precision = 1 + static_cast<int>(numbers.pick(76));
        const int scale = static_cast<int>(numbers.chance(3) ? 0 : numbers.pick(77));
        const mpz_class expected = mpz_class(std::to_string(value)) * power_of(10, scale);
        const bool fits = abs(expected) < power_of(256, destlen - 1) && abs(expected) < power_of(10, precision);
        ASSERT_EQ(from(value, precision, scale, destlen).text(), fits ? expected.get_str() : std::string("code 1"))
            << value << " to " << precision << ", " << scale << " in " << destlen;
    }
}

TEST(NumericFromInteger, RandomValuesAsGmpScalesThem) {
    expect_integers_like_gmp<CS_INT>(201, from_long);
    expect_integers_like_gmp<CS_BIGINT>(202, from_longlong);
    expect_integers_like_gmp<CS_UINT>(203, from_ulong);
    expect_integers_like_gmp<CS_UBIGINT>(204, from_ulonglong);
}

// ---- To integers -------------------------------------------------------------------------------

// The stored value, and behind it the code if it is not 0.
std::string to_longlong(const mpz_class &value, int scale, int length = 33) {
    Record record(value, scale, length);
    CS_BIGINT result = 4711;
    const int code = com__subexctnumetolonglong(&record, &result);
    return std::to_string(result).append(code == NUME_OK ? "" : std::string(" code ").append(std::to_string(code)));
}
std::string to_ulonglong(const mpz_class &value, int scale, int length = 33) {
    Record record(value, scale, length);
    CS_UBIGINT result = 4711;
    const int code = com__subexctnumetoulonglong(&record, &result);
    return std::to_string(result).append(code == NUME_OK ? "" : std::string(" code ").append(std::to_string(code)));
}

TEST(NumericToInteger, FractionsAreCut) {
    EXPECT_EQ(to_longlong(19, 1), "1");
    EXPECT_EQ(to_longlong(-19, 1), "-1");
    EXPECT_EQ(to_longlong(-5, 1), "0");
    EXPECT_EQ(to_longlong(1, 77), "0");
    EXPECT_EQ(to_ulonglong(19, 1), "1");
    EXPECT_EQ(to_longlong(power_of(10, 76), 70), "1000000");
}

TEST(NumericToInteger, BoundsOfTheSignedReader) {
    EXPECT_EQ(to_longlong(big(I8_MAX), 0), "9223372036854775807");
    EXPECT_EQ(to_longlong(big(I8_MIN), 0), "-9223372036854775808");
    EXPECT_EQ(to_longlong(big(I8_MAX) * 10 + 9, 1), "9223372036854775807");
    EXPECT_EQ(to_longlong(big(I8_MIN) * 10 - 9, 1), "-9223372036854775808");
    EXPECT_EQ(to_longlong(big(I8_MAX) + 1, 0), "9223372036854775807 code 1");
    EXPECT_EQ(to_longlong(big(I8_MIN) - 1, 0), "-9223372036854775808 code 5");
    EXPECT_EQ(to_longlong(power_of(10, 77) - 1, 0), "9223372036854775807 code 1");
    EXPECT_EQ(to_longlong(-(power_of(10, 77) - 1), 0), "-9223372036854775808 code 5");
}

TEST(NumericToInteger, BoundsOfTheUnsignedReader) {
    EXPECT_EQ(to_ulonglong(big(UI8_MAX), 0), "18446744073709551615");
    EXPECT_EQ(to_ulonglong(big(UI8_MAX) + 1, 0), "18446744073709551615 code 1");
}

TEST(NumericToInteger, AnyNegativeValueIsBelowTheUnsignedReader) {
    EXPECT_EQ(to_ulonglong(-1, 0), "0 code 5");
    EXPECT_EQ(to_ulonglong(-5, 1), "0 code 5");
    EXPECT_EQ(to_ulonglong(-1, 76), "0 code 5");
}

TEST(NumericToInteger, MinusZeroIsZero) {
    Record record(0, 2);
    record.bytes[0] = 1;
    CS_BIGINT result = 4711;
    EXPECT_EQ(com__subexctnumetolonglong(&record, &result), NUME_OK);
    EXPECT_EQ(result, 0);
    CS_UBIGINT unsigned_result = 4711;
    EXPECT_EQ(com__subexctnumetoulonglong(&record, &unsigned_result), NUME_OK);
    EXPECT_EQ(unsigned_result, 0u);
}

TEST(NumericToInteger, EmptyRecordStoresNothing) {
    Record record(5, 0);
    record.constant.len = 0;
    CS_BIGINT result = 4711;
    EXPECT_EQ(com__subexctnumetolonglong(&record, &result), NUME_OK);
    EXPECT_EQ(result, 4711);
    CS_UBIGINT unsigned_result = 4711;
    EXPECT_EQ(com__subexctnumetoulonglong(&record, &unsigned_result), NUME_OK);
    EXPECT_EQ(unsigned_result, 4711u);
}

TEST(NumericToInteger, NegativeValueOfScale77OverflowsAlthoughItsIntegerIsZero) {
    EXPECT_EQ(to_longlong(-1, 77), "9223372036854775807 code 1");
    EXPECT_EQ(to_ulonglong(-1, 77), "18446744073709551615 code 1");
    EXPECT_EQ(to_longlong(-1, 76), "0");
    EXPECT_EQ(to_longlong(1, 77), "0");
}

TEST(NumericToInteger, LeavesErrnoAlone) {
    errno = 4711;
    to_longlong(power_of(10, 70), 0);
    to_ulonglong(-1, 0);
    EXPECT_EQ(errno, 4711);
}

TEST(NumericToInteger, RandomValuesAsTheirTextReads) {
    NumberSource numbers(103);
    for (int i = 0; i < 150000; ++i) {
        const int precision = numbers.chance(2) ? 25 : 77;
        const mpz_class value = numbers.value(precision);
        const int scale = static_cast<int>(numbers.pick(static_cast<unsigned long>(precision) - 1));
        const int length = support::length_of_precision(precision);
        const mpz_class cut = value / power_of(10, scale); // toward zero
        const std::string expected = cut > big(I8_MAX)   ? "9223372036854775807 code 1"
                                     : cut < big(I8_MIN) ? "-9223372036854775808 code 5"
                                                         : cut.get_str();
        ASSERT_EQ(to_longlong(value, scale, length), expected) << support::decimal_text(value, scale);
        const std::string expected_unsigned = value < 0              ? "0 code 5"
                                              : cut > big(UI8_MAX) ? "18446744073709551615 code 1"
                                                                     : cut.get_str();
        ASSERT_EQ(to_ulonglong(value, scale, length), expected_unsigned) << support::decimal_text(value, scale);

        // And through the text itself.
        if (const std::string text = support::decimal_text(value, scale); text.size() <= 79) {
            errno = 0;
            const CS_BIGINT by_text = std::strtoll(text.c_str(), nullptr, 10);
            ASSERT_EQ(to_longlong(value, scale, length).substr(0, std::to_string(by_text).size()),
                      std::to_string(by_text));
        }
    }
}

// ---- To money ----------------------------------------------------------------------------------

// The count of ten-thousandths, or "failed" with nothing stored.
std::string to_money(const mpz_class &value, int scale, int length = 33) {
    Record record(value, scale, length);
    CS_BYTE bytes[8 + 8];
    std::memset(bytes, 0xA5, sizeof bytes);
    const int answer = com__exctnumetomny8(&record, bytes + 1); // need not be aligned
    for (const int i : {0, 9, 10, 15})
        EXPECT_EQ(bytes[i], 0xA5);
    if (answer == 0) {
        for (int i = 1; i < 9; ++i)
            EXPECT_EQ(bytes[i], 0xA5);
        return "failed";
    }
    EXPECT_EQ(answer, 1);
    CS_MONEY money;
    std::memcpy(&money, bytes + 1, sizeof money);
    return std::to_string(static_cast<CS_BIGINT>(static_cast<CS_UBIGINT>(static_cast<CS_UINT>(money.mnyhigh)) << 32 |
                                                 money.mnylow));
}

TEST(NumericToMoney, FourPlaces) {
    EXPECT_EQ(to_money(1, 0), "10000");
    EXPECT_EQ(to_money(-1, 0), "-10000");
    EXPECT_EQ(to_money(12345, 4), "12345");
    EXPECT_EQ(to_money(0, 0), "0");
    EXPECT_EQ(to_money(0, 77), "0");
}

TEST(NumericToMoney, RoundsHalfAwayFromZeroByTheFirstDroppedDigit) {
    EXPECT_EQ(to_money(5, 5), "1");
    EXPECT_EQ(to_money(-5, 5), "-1");
    EXPECT_EQ(to_money(4, 5), "0");
    EXPECT_EQ(to_money(-4, 5), "0");
    EXPECT_EQ(to_money(49999, 9), "0");
    EXPECT_EQ(to_money(power_of(10, 73) * 5, 77), "5");
    EXPECT_EQ(to_money(99999, 5), "10000");
}

TEST(NumericToMoney, Bounds) {
    EXPECT_EQ(to_money(big(I8_MAX), 4), "9223372036854775807");
    EXPECT_EQ(to_money(big(I8_MIN), 4), "-9223372036854775808"); // the smallest money
    EXPECT_EQ(to_money(big(I8_MAX) + 1, 4), "failed");             // the same magnitude, positive
    EXPECT_EQ(to_money(big(I8_MIN) - 1, 4), "failed");
    EXPECT_EQ(to_money(big(I8_MAX) * 10 + 4, 5), "9223372036854775807");
    EXPECT_EQ(to_money(big(I8_MAX) * 10 + 5, 5), "failed");
    EXPECT_EQ(to_money(big(I8_MIN) * 10 - 4, 5), "-9223372036854775808");
    EXPECT_EQ(to_money(big(I8_MIN) * 10 - 5, 5), "failed");
    EXPECT_EQ(to_money(big(I8_MIN) * 10 + 5, 5), "-9223372036854775808");
    EXPECT_EQ(to_money(power_of(10, 77) - 1, 0), "failed");
    EXPECT_EQ(to_money(power_of(2, 64), 4), "failed");
    EXPECT_EQ(to_money(power_of(2, 64) + 1, 4), "failed"); // the low eight bytes alone would pass
}

TEST(NumericToMoney, MinusZeroIsZero) {
    Record record(0, 2);
    record.bytes[0] = 1;
    CS_MONEY money = {1, 1};
    EXPECT_EQ(com__exctnumetomny8(&record, reinterpret_cast<CS_BYTE *>(&money)), 1);
    EXPECT_EQ(money.mnyhigh, 0);
    EXPECT_EQ(money.mnylow, 0u);
}

TEST(NumericToMoney, ScaleBeyondAnyRescaleFails) {
    EXPECT_EQ(to_money(1, 81), "0");
    EXPECT_EQ(to_money(1, 82), "failed");
}

TEST(NumericToMoney, RandomValuesAsGmpRoundsThem) {
    NumberSource numbers(104);
    for (int i = 0; i < 150000; ++i) {
        const int precision = numbers.chance(2) ? 24 : 77;
        const mpz_class value = numbers.value(precision);
        const int scale = static_cast<int>(numbers.chance(2) ? numbers.pick(8) : numbers.pick(77));
        const int length = support::length_of_precision(precision);
        // Twice the value at scale 4, plus one half, cut: half away from zero.
        const mpz_class doubled = abs(value) * 2 * power_of(10, 4);
        mpz_class count = (doubled + power_of(10, scale)) / (2 * power_of(10, scale));
        if (value < 0)
            count = -count;
        const bool fits = count >= big(I8_MIN) && count <= big(I8_MAX);
        ASSERT_EQ(to_money(value, scale, length), fits ? count.get_str() : std::string("failed"))
            << support::decimal_text(value, scale);
    }
}

// ---- From money --------------------------------------------------------------------------------

TEST(NumericFromMoney, ScaleFourIsTheCount) {
    EXPECT_EQ(from_money(12345, 19, 4).text(), "12345");
    EXPECT_EQ(from_money(-12345, 19, 4).text(), "-12345");
    EXPECT_EQ(from_money(0, 1, 4).text(), "0");
    EXPECT_EQ(from_money(I8_MIN, 19, 4).text(), "-9223372036854775808");
    EXPECT_EQ(from_money(I8_MAX, 19, 4).text(), "9223372036854775807");
}

TEST(NumericFromMoney, SmallerScalesRoundHalfAwayFromZero) {
    EXPECT_EQ(from_money(12345, 19, 3).text(), "1235");
    EXPECT_EQ(from_money(-12345, 19, 3).text(), "-1235");
    EXPECT_EQ(from_money(12344, 19, 3).text(), "1234");
    EXPECT_EQ(from_money(5000, 19, 0).text(), "1");
    EXPECT_EQ(from_money(4999, 19, 0).text(), "0");
    EXPECT_EQ(from_money(I8_MAX, 19, 0).text(), "922337203685478");
    EXPECT_EQ(from_money(15000, 1, 0, 2).text(), "2"); // at a small precision too
}

TEST(NumericFromMoney, LargerScalesMultiplyUp) {
    EXPECT_EQ(from_money(-12345, 19, 6).text(), "-1234500");
    EXPECT_EQ(from_money(1, 77, 77).text(), power_of(10, 73).get_str());
    EXPECT_EQ(from_money(I8_MAX, 77, 77).text(), "code 1");
}

TEST(NumericFromMoney, SmallNegativeValueKeepsItsSignWhenItRoundsToZero) {
    const Made made = from_money(-1, 19, 0);
    EXPECT_EQ(made.code, NUME_OK);
    EXPECT_EQ(made.text(), "-0");
    EXPECT_EQ(from_money(1, 19, 0).text(), "0");
    EXPECT_EQ(from_money(-1, 19, 0, 5).text(), "-0");
}

TEST(NumericFromMoney, PrecisionOutOfRangeIsReplacedAndTheScaleStays) {
    for (const int precision : {0, 78, 255}) {
        const Made made = from_money(12345, precision, 2, 9);
        EXPECT_EQ(made.text(), "123");
        EXPECT_EQ(made.precision, 19);
        EXPECT_EQ(made.scale, 2);
    }
}

TEST(NumericFromMoney, ScaleAbove77BecomesZeroAndThePrecisionStays) {
    const Made made = from_money(25000, 7, 78);
    EXPECT_EQ(made.text(), "3");
    EXPECT_EQ(made.precision, 7);
    EXPECT_EQ(made.scale, 0);
    EXPECT_EQ(from_money(25000, 7, 255).scale, 0);
}

TEST(NumericFromMoney, SmallDestinationsLoseNoDigits) {
    EXPECT_EQ(from_money(255, 3, 4, 2).text(), "255");
    EXPECT_EQ(from_money(256, 3, 4, 2).text(), "code 1");
    EXPECT_EQ(from_money(I8_MAX, 77, 4, 8).text(), "code 1");
    EXPECT_EQ(from_money(2550000, 3, 0, 2).text(), "255"); // the count itself would not fit
    EXPECT_EQ(from_money(1000, 3, 4, 9).text(), "code 1"); // precision
}

TEST(NumericFromMoney, RandomValuesAsWideIntegersScaleThem) {
    NumberSource numbers(105);
    for (int i = 0; i < 150000; ++i) {
        CS_BIGINT count = static_cast<CS_BIGINT>(numbers.word() >> numbers.pick(63));
        if (numbers.chance(2))
            count = static_cast<CS_BIGINT>(0 - static_cast<CS_UBIGINT>(count));
        const int destlen = 2 + static_cast<int>(numbers.pick(31));
        const int precision = 1 + static_cast<int>(numbers.pick(76));
        const int scale = static_cast<int>(numbers.chance(2) ? numbers.pick(8) : numbers.pick(77));
        const bool negative = count < 0;
        __int128 magnitude = negative ? -static_cast<__int128>(count) : count;
        mpz_class expected;
        if (scale < 4) {
            int divisor = 1;
            for (int k = scale; k < 4; ++k)
                divisor *= 10;
            magnitude = (magnitude + divisor / 2) / divisor;
            expected = big(static_cast<CS_UBIGINT>(magnitude));
        } else {
            expected = big(static_cast<CS_UBIGINT>(magnitude)) * power_of(10, scale - 4);
        }
        const bool fits = expected < power_of(256, destlen - 1) && expected < power_of(10, precision);
        ASSERT_EQ(from_money(count, precision, scale, destlen).text(),
                  fits ? std::string(negative ? "-" : "").append(expected.get_str()) : std::string("code 1"))
            << count << " to " << precision << ", " << scale << " in " << destlen;
    }
}

TEST(NumericFromMoney, RoundTripAtScaleFour) {
    NumberSource numbers(106);
    for (int i = 0; i < 100000; ++i) {
        const auto count = static_cast<CS_BIGINT>(numbers.word());
        Made made = from_money(count, 19, 4, 9);
        ASSERT_EQ(made.code, NUME_OK);
        __CONSTANT record = {};
        record.len = 9;
        record.prec = 19;
        record.scale = 4;
        record.value = made.dest;
        CS_MONEY money;
        ASSERT_EQ(com__exctnumetomny8(&record, reinterpret_cast<CS_BYTE *>(&money)), 1);
        ASSERT_EQ(money.mnyhigh, static_cast<CS_INT>(count >> 32));
        ASSERT_EQ(money.mnylow, static_cast<CS_UINT>(count));
    }
}

// ---- Broken contracts --------------------------------------------------------------------------

TEST(NumericValueDeathTest, NullPointersAreReported) {
    CS_BYTE bytes[33];
    CS_BYTE precision = 10, scale = 0;
    CS_FLOAT real = 0;
    CS_BIGINT integer = 0;
    CS_UBIGINT unsigned_integer = 0;
    CS_MONEY money = {};
    Record record(1, 0);
    EXPECT_NULL_REPORT(com__doubletoexctnume(1, nullptr, 33, &precision, &scale), "num_value");
    EXPECT_NULL_REPORT(com__doubletoexctnume(1, bytes, 33, nullptr, &scale), "num_value");
    EXPECT_NULL_REPORT(com__doubletoexctnume(1, bytes, 33, &precision, nullptr), "num_value");
    EXPECT_NULL_REPORT(com__longtoexctnume(1, nullptr, 33, &precision, &scale), "num_value");
    EXPECT_NULL_REPORT(com__longlongtoexctnume(1, bytes, 33, nullptr, &scale), "num_value");
    EXPECT_NULL_REPORT(com__ulongtoexctnume(1, bytes, 33, &precision, nullptr), "num_value");
    EXPECT_NULL_REPORT(com__ulonglongtoexctnume(1, nullptr, 33, &precision, &scale), "num_value");
    EXPECT_NULL_REPORT(com__subexctnumetoflt8(nullptr, &real), "num_value");
    EXPECT_NULL_REPORT(com__subexctnumetoflt8(&record, nullptr), "num_value");
    EXPECT_NULL_REPORT(com__subexctnumetolonglong(nullptr, &integer), "num_value");
    EXPECT_NULL_REPORT(com__subexctnumetolonglong(&record, nullptr), "num_value");
    EXPECT_NULL_REPORT(com__subexctnumetoulonglong(nullptr, &unsigned_integer), "num_value");
    EXPECT_NULL_REPORT(com__subexctnumetoulonglong(&record, nullptr), "num_value");
    EXPECT_NULL_REPORT(com__exctnumetomny8(nullptr, bytes), "num_value");
    EXPECT_NULL_REPORT(com__exctnumetomny8(&record, nullptr), "num_value");
    EXPECT_NULL_REPORT(com__mny8toexctnume(nullptr, bytes, 33, &precision, &scale, 0), "num_value");
    EXPECT_NULL_REPORT(com__mny8toexctnume(&money, nullptr, 33, &precision, &scale, 0), "num_value");
    EXPECT_NULL_REPORT(com__mny8toexctnume(&money, bytes, 33, nullptr, &scale, 0), "num_value");
    EXPECT_NULL_REPORT(com__mny8toexctnume(&money, bytes, 33, &precision, nullptr, 0), "num_value");
}

TEST(NumericValueDeathTest, LengthOutsideTheTablesIsAnAssertion) {
    CS_BYTE bytes[33];
    CS_BYTE precision = 10, scale = 0;
    CS_MONEY money = {};
    for (const int length : {-1, 0, 1, 34}) {
        EXPECT_BOMB(com__doubletoexctnume(1, bytes, length, &precision, &scale), "num_value");
        EXPECT_BOMB(com__longtoexctnume(1, bytes, length, &precision, &scale), "num_value");
        EXPECT_BOMB(com__mny8toexctnume(&money, bytes, length, &precision, &scale, 0), "num_value");
    }
}

TEST(NumericValueDeathTest, RecordThatCannotBeIsAnAssertion) {
    CS_BYTE bytes[8];
    CS_FLOAT real = 0;
    CS_BIGINT integer = 0;
    CS_UBIGINT unsigned_integer = 0;
    Record record(1, 0);
    for (const CS_INT length : {-1, 34}) {
        record.constant.len = length;
        EXPECT_BOMB(com__subexctnumetoflt8(&record, &real), "num_value");
        EXPECT_BOMB(com__subexctnumetolonglong(&record, &integer), "num_value");
        EXPECT_BOMB(com__subexctnumetoulonglong(&record, &unsigned_integer), "num_value");
        EXPECT_BOMB(com__exctnumetomny8(&record, bytes), "num_value");
    }
    record.constant.len = 33;
    record.constant.value = nullptr;
    EXPECT_NULL_REPORT(com__subexctnumetoflt8(&record, &real), "num_value");
}

TEST(NumericValue, ReturningAssertionsTouchNothing) {
    const support::ReturningAssertions returning;
    CS_BYTE bytes[33];
    std::memset(bytes, 0x77, sizeof bytes);
    CS_BYTE precision = 0, scale = 9;
    CS_FLOAT real = 4711;
    CS_BIGINT integer = 4711;
    CS_UBIGINT unsigned_integer = 4711;
    CS_MONEY money = {};
    Record record(1, 0);
    record.constant.len = 34;
    EXPECT_EQ(com__doubletoexctnume(1, nullptr, 33, &precision, &scale), NUME_BADVALUE);
    EXPECT_EQ(com__doubletoexctnume(1, bytes, 34, &precision, &scale), NUME_BADVALUE);
    EXPECT_EQ(com__longtoexctnume(1, nullptr, 33, &precision, &scale), NUME_BADVALUE);
    EXPECT_EQ(com__longlongtoexctnume(1, bytes, 1, &precision, &scale), NUME_BADVALUE);
    EXPECT_EQ(com__ulongtoexctnume(1, bytes, 33, nullptr, &scale), NUME_BADVALUE);
    EXPECT_EQ(com__ulonglongtoexctnume(1, bytes, 33, &precision, nullptr), NUME_BADVALUE);
    EXPECT_EQ(com__subexctnumetoflt8(nullptr, &real), NUME_BADVALUE);
    EXPECT_EQ(com__subexctnumetoflt8(&record, &real), NUME_BADVALUE);
    EXPECT_EQ(com__subexctnumetolonglong(&record, &integer), NUME_BADVALUE);
    EXPECT_EQ(com__subexctnumetoulonglong(&record, &unsigned_integer), NUME_BADVALUE);
    EXPECT_EQ(com__exctnumetomny8(&record, bytes), 0);
    EXPECT_EQ(com__exctnumetomny8(nullptr, bytes), 0);
    EXPECT_EQ(com__mny8toexctnume(nullptr, bytes, 33, &precision, &scale, 0), NUME_BADVALUE);
    EXPECT_EQ(com__mny8toexctnume(&money, bytes, 34, &precision, &scale, 0), NUME_BADVALUE);
    EXPECT_EQ(returning.count(), 14);
    EXPECT_EQ(precision, 0);
    EXPECT_EQ(scale, 9);
    EXPECT_EQ(real, 4711);
    EXPECT_EQ(integer, 4711);
    EXPECT_EQ(unsigned_integer, 4711u);
    for (const CS_BYTE byte : bytes)
        EXPECT_EQ(byte, 0x77);
}

} // namespace
