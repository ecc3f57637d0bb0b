// Conversions from CS_NUMERIC and CS_DECIMAL.
#include "support/assertions.h"
#include "support/convert.h"
#include "support/numeric_record.h"

#include <cerrno>
#include <cstdlib>
#include <limits>

namespace {

using support::big;
using support::decimal_text;
using support::format_of;
using support::numeric_format;
using support::numeric_of;
using support::Outcome;
using support::power_of;

struct Member {
    const char *name;
    CS_CONV_FUNC function;
    std::vector<CS_INT> ids;
    CS_INT width; // 0 where it is not fixed

    bool is_to_bytes() const { return function == comn_numtobin || function == comn_numtovarbin; }
    bool is_to_text() const { return function == comn_numtochar || function == comn_numtovarchar; }
    bool has_room() const { return function == comn_numtochar || function == comn_numtobin; }
};

const std::vector<Member> MEMBERS = {
    {"comn_numtobit", comn_numtobit, {11}, 1},
    {"comn_numtoi1", comn_numtoi1, {6}, 1},
    {"comn_numtoi2", comn_numtoi2, {7}, 2},
    {"comn_numtoi4", comn_numtoi4, {8}, 4},
    {"comn_numtoi8", comn_numtoi8, {20, 30}, 8},
    {"comn_numtoui2", comn_numtoui2, {31}, 2},
    {"comn_numtoui4", comn_numtoui4, {32}, 4},
    {"comn_numtoui8", comn_numtoui8, {33}, 8},
    {"comn_numtoflt4", comn_numtoflt4, {9}, 4},
    {"comn_numtoflt8", comn_numtoflt8, {10}, 8},
    {"comn_numtomoney", comn_numtomoney, {14}, 8},
    {"comn_numtomny4", comn_numtomny4, {15}, 4},
    {"comn_numtonum", comn_numtonum, {16, 17}, 0},
    {"comn_numtochar", comn_numtochar, {0, 2, 4, 21, 22, 34}, 0},
    {"comn_numtovarchar", comn_numtovarchar, {18}, 258},
    {"comn_numtobin", comn_numtobin, {1, 3, 5}, 0},
    {"comn_numtovarbin", comn_numtovarbin, {19}, 258},
};

class NumericConversion : public support::ConversionTest {
protected:
    // Value, precision and scale of the source; a destination of that id with room for anything.
    Outcome to(CS_CONV_FUNC function, CS_INT id, const mpz_class &value, int scale, int precision = 77) {
        CS_DATAFMT format = format_of(id, 100);
        format.precision = CS_VALUE_FROM_SOURCE;
        format.scale = CS_VALUE_FROM_SOURCE;
        return convert(function, CS_NUMERIC_TYPE, numeric_of(value, precision, scale), format);
    }

    template <class T>
    void expect(CS_CONV_FUNC function, CS_INT id, const mpz_class &value, int scale, CS_RETCODE status, T stored) {
        const Outcome outcome = to(function, id, value, scale);
        const std::string what = decimal_text(value, scale);
        EXPECT_EQ(outcome.status, status) << what;
        EXPECT_EQ(outcome.value<T>(), stored) << what;
        EXPECT_EQ(outcome.destlen, static_cast<CS_INT>(sizeof(T))) << what;
        EXPECT_TRUE(outcome.untouched_from(sizeof(T))) << what;
    }

    std::string char_text(const mpz_class &value, int scale) {
        const Outcome outcome = to(comn_numtochar, CS_CHAR_TYPE, value, scale);
        return outcome.status == CS_SUCCEED ? outcome.text() : std::to_string(outcome.status);
    }

    // The result of comn_numtonum as "value (precision, scale)", or behind it the status if it is not CS_SUCCEED.
    Outcome num(const mpz_class &value, int precision, int scale, CS_INT to_precision, CS_INT to_scale) {
        return convert(comn_numtonum, CS_NUMERIC_TYPE, numeric_of(value, precision, scale),
                       numeric_format(to_precision, to_scale));
    }
    std::string num_text(const Outcome &outcome) {
        const auto result = outcome.value<CS_NUMERIC>();
        std::ostringstream out;
        out << support::value_text(result.array, support::length_of_precision(result.precision)) << " ("
            << int{result.precision} << ", " << int{result.scale} << ")";
        return out.str();
    }

    CS_BIGINT money_count(const Outcome &outcome) {
        const auto money = outcome.value<CS_MONEY>();
        return static_cast<CS_BIGINT>(static_cast<CS_UBIGINT>(money.mnyhigh) << 32 | money.mnylow);
    }
    void expect_money(const mpz_class &value, int scale, CS_RETCODE status, CS_BIGINT count) {
        const Outcome outcome = to(comn_numtomoney, CS_MONEY_TYPE, value, scale);
        EXPECT_EQ(outcome.status, status) << decimal_text(value, scale);
        EXPECT_EQ(money_count(outcome), count) << decimal_text(value, scale);
        EXPECT_EQ(outcome.destlen, 8);
        EXPECT_TRUE(outcome.untouched_from(8));
    }
};

// ---- The road of the double --------------------------------------------------------------------

TEST_F(NumericConversion, TinyintBounds) {
    const auto check = [&](const mpz_class &value, int scale, CS_RETCODE status, int stored) {
        expect<CS_TINYINT>(comn_numtoi1, CS_TINYINT_TYPE, value, scale, status, static_cast<CS_TINYINT>(stored));
    };
    check(0, 0, CS_SUCCEED, 0);
    check(255, 0, CS_SUCCEED, 255);
    check(256, 0, CS_EOVERFLOW, 255);
    check(2555, 1, CS_EOVERFLOW, 255); // a fraction above the bound fails
    check(2549, 1, CS_SUCCEED, 254);   // and one below it is cut
    check(-1, 0, CS_EOVERFLOW, 0);
    check(-5, 1, CS_EOVERFLOW, 0); // -0.5 fails too
    check(-1, 76, CS_EOVERFLOW, 0);
    check(5, 1, CS_SUCCEED, 0);
}

TEST_F(NumericConversion, SmallintBounds) {
    const auto check = [&](const mpz_class &value, int scale, CS_RETCODE status, int stored) {
        expect<CS_SMALLINT>(comn_numtoi2, CS_SMALLINT_TYPE, value, scale, status, static_cast<CS_SMALLINT>(stored));
    };
    check(32767, 0, CS_SUCCEED, 32767);
    check(32768, 0, CS_EOVERFLOW, 32767);
    check(327675, 1, CS_EOVERFLOW, 32767);
    check(-32768, 0, CS_SUCCEED, -32768);
    check(-32769, 0, CS_EOVERFLOW, -32768);
    check(-327685, 1, CS_EOVERFLOW, -32768);
    check(-19, 1, CS_SUCCEED, -1);
    check(-5, 1, CS_SUCCEED, 0);
}

TEST_F(NumericConversion, IntBounds) {
    const auto check = [&](const mpz_class &value, int scale, CS_RETCODE status, CS_INT stored) {
        expect<CS_INT>(comn_numtoi4, CS_INT_TYPE, value, scale, status, stored);
    };
    constexpr CS_INT LOW = std::numeric_limits<CS_INT>::min();
    constexpr CS_INT HIGH = std::numeric_limits<CS_INT>::max();
    check(HIGH, 0, CS_SUCCEED, HIGH);
    check(big(CS_BIGINT{HIGH}) + 1, 0, CS_EOVERFLOW, HIGH);
    check(big("21474836475"), 1, CS_EOVERFLOW, HIGH);
    check(LOW, 0, CS_SUCCEED, LOW);
    check(big("-2147483649"), 0, CS_EOVERFLOW, LOW);
    check(big("-21474836485"), 1, CS_EOVERFLOW, LOW);
    check(19, 1, CS_SUCCEED, 1);
    check(-19, 1, CS_SUCCEED, -1);
    // The range is judged on the nearest double, which knows nothing of this fraction.
    check(big("2147483647000000000000000000001"), 21, CS_SUCCEED, HIGH);
}

TEST_F(NumericConversion, UnsignedSmallintBoundsCallTheLowSideAnUnderflow) {
    const auto check = [&](const mpz_class &value, int scale, CS_RETCODE status, int stored) {
        expect<CS_USMALLINT>(comn_numtoui2, CS_USMALLINT_TYPE, value, scale, status,
                             static_cast<CS_USMALLINT>(stored));
    };
    check(65535, 0, CS_SUCCEED, 65535);
    check(65536, 0, CS_EOVERFLOW, 65535);
    check(655355, 1, CS_EOVERFLOW, 65535);
    check(0, 0, CS_SUCCEED, 0);
    check(-1, 0, CS_EUNDERFLOW, 0);
    check(-5, 1, CS_EUNDERFLOW, 0);
}

TEST_F(NumericConversion, UnsignedIntBoundsCallTheLowSideAnUnderflow) {
    const auto check = [&](const mpz_class &value, int scale, CS_RETCODE status, CS_UINT stored) {
        expect<CS_UINT>(comn_numtoui4, CS_UINT_TYPE, value, scale, status, stored);
    };
    check(big("4294967295"), 0, CS_SUCCEED, 4294967295u);
    check(big("4294967296"), 0, CS_EOVERFLOW, 4294967295u);
    check(big("42949672955"), 1, CS_EOVERFLOW, 4294967295u);
    check(big("2147483648"), 0, CS_SUCCEED, 2147483648u);
    check(-1, 0, CS_EUNDERFLOW, 0);
    check(-5, 1, CS_EUNDERFLOW, 0);
}

TEST_F(NumericConversion, BitIsOneForAnythingButZero) {
    const auto check = [&](const mpz_class &value, int scale, int stored) {
        expect<CS_BIT>(comn_numtobit, CS_BIT_TYPE, value, scale, CS_SUCCEED, static_cast<CS_BIT>(stored));
    };
    check(0, 0, 0);
    check(0, 77, 0);
    check(1, 0, 1);
    check(-1, 0, 1);
    check(1, 77, 1);
    check(power_of(10, 77) - 1, 0, 1);
}

TEST_F(NumericConversion, RealBounds) {
    const auto check = [&](const mpz_class &value, int scale, CS_RETCODE status, CS_REAL stored) {
        expect<CS_REAL>(comn_numtoflt4, CS_REAL_TYPE, value, scale, status, stored);
    };
    constexpr CS_REAL LARGEST = std::numeric_limits<CS_REAL>::max();
    const mpz_class largest = power_of(2, 128) - power_of(2, 104); // 3.4028234663852886e38
    check(15, 1, CS_SUCCEED, 1.5f);
    check(1, 1, CS_SUCCEED, 0.1f);
    check(1, 77, CS_SUCCEED, 0.0f); // too small is no complaint
    check(largest, 0, CS_SUCCEED, LARGEST);
    check(-largest, 0, CS_SUCCEED, -LARGEST);
    check(largest + power_of(2, 80), 0, CS_EOVERFLOW, LARGEST);
    check(-largest - power_of(2, 80), 0, CS_EOVERFLOW, -LARGEST);
    check(power_of(10, 77) - 1, 0, CS_EOVERFLOW, LARGEST);
}

TEST_F(NumericConversion, FloatHasNoBounds) {
    const auto check = [&](const mpz_class &value, int scale, CS_FLOAT stored) {
        expect<CS_FLOAT>(comn_numtoflt8, CS_FLOAT_TYPE, value, scale, CS_SUCCEED, stored);
    };
    check(power_of(10, 77) - 1, 0, 1e77);
    check(-(power_of(10, 77) - 1), 0, -1e77);
    check(1, 77, 1e-77);
    check(big("123456789012345678901234567890"), 10, 12345678901234567890.1234567890);
}

TEST_F(NumericConversion, MinusZeroBecomesPlusZero) {
    CS_NUMERIC minus_zero = numeric_of(0, 5, 2);
    minus_zero.array[0] = 1;
    const Outcome real = convert(comn_numtoflt8, CS_NUMERIC_TYPE, minus_zero, format_of(CS_FLOAT_TYPE));
    EXPECT_EQ(real.value<CS_UBIGINT>(), 0u);
    const Outcome byte = convert(comn_numtoi1, CS_NUMERIC_TYPE, minus_zero, format_of(CS_TINYINT_TYPE));
    EXPECT_EQ(byte.status, CS_SUCCEED);
    const Outcome wide = convert(comn_numtoui8, CS_NUMERIC_TYPE, minus_zero, format_of(CS_UBIGINT_TYPE));
    EXPECT_EQ(wide.status, CS_SUCCEED);
    EXPECT_EQ(wide.value<CS_UBIGINT>(), 0u);
}

TEST_F(NumericConversion, NegativeValueOfScale77IsAnOverflowOnTheRoadOfTheDouble) {
    for (const Member &member : MEMBERS) {
        if (member.is_to_bytes() || member.is_to_text() || member.function == comn_numtonum ||
            member.function == comn_numtomoney || member.function == comn_numtomny4)
            continue;
        const Outcome outcome = to(member.function, member.ids[0], -1, 77);
        EXPECT_EQ(outcome.status, CS_EOVERFLOW) << member.name;
        EXPECT_EQ(outcome.destlen, member.width) << member.name;
        const bool stores_bound = member.function == comn_numtoi8 || member.function == comn_numtoui8;
        EXPECT_TRUE(outcome.untouched_from(stores_bound ? 8 : 0)) << member.name;
    }
    expect_money(-1, 77, CS_SUCCEED, 0);
}

template <class T, class Expected>
void compare_narrow(Outcome &outcome, const std::string &text, Expected bound_low, CS_RETCODE low_status) {
    const double value = std::strtod(text.c_str(), nullptr);
    const auto low = static_cast<double>(std::numeric_limits<T>::lowest());
    const auto high = static_cast<double>(std::numeric_limits<T>::max());
    if (value < low) {
        ASSERT_EQ(outcome.status, low_status) << text;
        ASSERT_EQ(outcome.value<T>(), static_cast<T>(bound_low)) << text;
    } else if (value > high) {
        ASSERT_EQ(outcome.status, CS_EOVERFLOW) << text;
        ASSERT_EQ(outcome.value<T>(), std::numeric_limits<T>::max()) << text;
    } else {
        ASSERT_EQ(outcome.status, CS_SUCCEED) << text;
        ASSERT_EQ(outcome.value<T>(), static_cast<T>(value)) << text;
    }
}

TEST_F(NumericConversion, RandomValuesThroughTheMatrixAsTheirDoubleSays) {
    support::NumberSource numbers(301);
    for (int i = 0; i < 20000; ++i) {
        const int precision = 1 + static_cast<int>(numbers.pick(numbers.chance(2) ? 15 : 76));
        const int scale = static_cast<int>(numbers.pick(static_cast<unsigned long>(std::min(precision + 1, 76))));
        const CS_NUMERIC value = numeric_of(numbers.value(precision), precision, scale);
        mpz_class exact = support::magnitude_of(value.array, support::length_of_precision(precision));
        if (value.array[0] != 0)
            exact = -exact;
        const std::string text = decimal_text(exact, scale);
        const auto outcome = [&](CS_INT id) { return convert(CS_DECIMAL_TYPE, value, format_of(id)); };
        Outcome i1 = outcome(CS_TINYINT_TYPE), i2 = outcome(CS_SMALLINT_TYPE), i4 = outcome(CS_INT_TYPE),
                ui2 = outcome(CS_USMALLINT_TYPE), ui4 = outcome(CS_UINT_TYPE), flt4 = outcome(CS_REAL_TYPE);
        compare_narrow<CS_TINYINT>(i1, text, 0, CS_EOVERFLOW);
        compare_narrow<CS_SMALLINT>(i2, text, -32768, CS_EOVERFLOW);
        compare_narrow<CS_INT>(i4, text, std::numeric_limits<CS_INT>::min(), CS_EOVERFLOW);
        compare_narrow<CS_USMALLINT>(ui2, text, 0, CS_EUNDERFLOW);
        compare_narrow<CS_UINT>(ui4, text, 0, CS_EUNDERFLOW);
        compare_narrow<CS_REAL>(flt4, text, std::numeric_limits<CS_REAL>::lowest(), CS_EOVERFLOW);
        ASSERT_EQ(outcome(CS_FLOAT_TYPE).value<CS_FLOAT>(), std::strtod(text.c_str(), nullptr)) << text;
        ASSERT_EQ(outcome(CS_BIT_TYPE).value<CS_BIT>(), exact != 0) << text;
        if (HasFatalFailure())
            return;
    }
}

// ---- 64-bit integers ---------------------------------------------------------------------------

TEST_F(NumericConversion, BigintBoundsAreExactAndStored) {
    const auto check = [&](const mpz_class &value, int scale, CS_RETCODE status, CS_BIGINT stored) {
        for (const CS_INT id : {CS_BIGINT_TYPE, CS_LONG_TYPE})
            expect<CS_BIGINT>(comn_numtoi8, id, value, scale, status, stored);
    };
    constexpr CS_BIGINT LOW = std::numeric_limits<CS_BIGINT>::min();
    constexpr CS_BIGINT HIGH = std::numeric_limits<CS_BIGINT>::max();
    check(big(HIGH), 0, CS_SUCCEED, HIGH);
    check(big(LOW), 0, CS_SUCCEED, LOW);
    check(big(HIGH) + 1, 0, CS_EOVERFLOW, HIGH);
    check(big(LOW) - 1, 0, CS_EUNDERFLOW, LOW);
    check(big(HIGH) * 10 + 5, 1, CS_SUCCEED, HIGH); // the fraction is cut first
    check(-5, 1, CS_SUCCEED, 0);
    check(power_of(10, 77) - 1, 0, CS_EOVERFLOW, HIGH);
    check(-(power_of(10, 77) - 1), 0, CS_EUNDERFLOW, LOW);
    check(-1, 77, CS_EOVERFLOW, HIGH); // its text does not fit
}

TEST_F(NumericConversion, UnsignedBigintBoundsAreExactAndStored) {
    const auto check = [&](const mpz_class &value, int scale, CS_RETCODE status, CS_UBIGINT stored) {
        expect<CS_UBIGINT>(comn_numtoui8, CS_UBIGINT_TYPE, value, scale, status, stored);
    };
    constexpr CS_UBIGINT HIGH = std::numeric_limits<CS_UBIGINT>::max();
    check(big(HIGH), 0, CS_SUCCEED, HIGH);
    check(big(HIGH) + 1, 0, CS_EOVERFLOW, HIGH);
    check(-1, 0, CS_EUNDERFLOW, 0);
    check(-5, 1, CS_EUNDERFLOW, 0); // although the fraction would be cut
    check(5, 1, CS_SUCCEED, 0);
    check(-1, 77, CS_EOVERFLOW, HIGH);
}

// ---- Money -------------------------------------------------------------------------------------

TEST_F(NumericConversion, MoneyRoundsAtFourPlacesAndStoresItsBounds) {
    constexpr CS_BIGINT LOW = std::numeric_limits<CS_BIGINT>::min();
    constexpr CS_BIGINT HIGH = std::numeric_limits<CS_BIGINT>::max();
    expect_money(15, 1, CS_SUCCEED, 15000);
    expect_money(-15, 1, CS_SUCCEED, -15000);
    expect_money(123455, 5, CS_SUCCEED, 12346);
    expect_money(-123455, 5, CS_SUCCEED, -12346);
    expect_money(-1, 77, CS_SUCCEED, 0);
    expect_money(big(HIGH), 4, CS_SUCCEED, HIGH);
    expect_money(big(LOW), 4, CS_SUCCEED, LOW);
    expect_money(-big(LOW), 4, CS_EOVERFLOW, HIGH);
    expect_money(big(LOW) - 1, 4, CS_EOVERFLOW, LOW);
    expect_money(power_of(10, 77) - 1, 0, CS_EOVERFLOW, HIGH);
    expect_money(-(power_of(10, 77) - 1), 0, CS_EOVERFLOW, LOW);
}

TEST_F(NumericConversion, SmallMoneyNarrowsAndStoresItsBounds) {
    const auto check = [&](const mpz_class &value, int scale, CS_RETCODE status, CS_INT stored) {
        expect<CS_INT>(comn_numtomny4, CS_MONEY4_TYPE, value, scale, status, stored);
    };
    constexpr CS_INT LOW = std::numeric_limits<CS_INT>::min();
    constexpr CS_INT HIGH = std::numeric_limits<CS_INT>::max();
    check(15, 1, CS_SUCCEED, 15000);
    check(123455, 5, CS_SUCCEED, 12346);
    check(HIGH, 4, CS_SUCCEED, HIGH);
    check(LOW, 4, CS_SUCCEED, LOW);
    check(big(CS_BIGINT{HIGH}) + 1, 4, CS_EOVERFLOW, HIGH);
    check(big(CS_BIGINT{LOW}) - 1, 4, CS_EOVERFLOW, LOW);
    check(big(CS_BIGINT{HIGH}) * 10 + 5, 5, CS_EOVERFLOW, HIGH);
    check(power_of(10, 77) - 1, 0, CS_EOVERFLOW, HIGH); // beyond the wide money too
    check(-(power_of(10, 77) - 1), 0, CS_EOVERFLOW, LOW);
}

// ---- Numeric to numeric ------------------------------------------------------------------------

TEST_F(NumericConversion, NumericToNumericRescales) {
    Outcome outcome = num(12345, 10, 2, 12, 4);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(num_text(outcome), "1234500 (12, 4)");
    EXPECT_EQ(outcome.destlen, 2 + 6);
    EXPECT_TRUE(outcome.untouched_from(2 + 6));

    outcome = num(-12300, 10, 4, 5, 2);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(num_text(outcome), "-123 (5, 2)");
}

TEST_F(NumericConversion, NumericToNumericTakesTheSourcesShape) {
    const Outcome outcome = num(-12345, 10, 2, CS_VALUE_FROM_SOURCE, CS_VALUE_FROM_SOURCE);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(num_text(outcome), "-12345 (10, 2)");
    EXPECT_EQ(num_text(num(5, 3, 1, CS_VALUE_FROM_SOURCE, 2)), "50 (3, 2)");
    EXPECT_EQ(num_text(num(5, 3, 1, 9, CS_VALUE_FROM_SOURCE)), "5 (9, 1)");
    EXPECT_EQ(outcome.destfmt.precision, CS_VALUE_FROM_SOURCE); // the descriptor stays
    EXPECT_EQ(outcome.destfmt.scale, CS_VALUE_FROM_SOURCE);
}

TEST_F(NumericConversion, NumericToNumericCutsAndSaysSo) {
    const Outcome outcome = num(-129, 3, 1, 3, 0);
    EXPECT_EQ(outcome.status, CS_ETRUNCATED);
    EXPECT_EQ(num_text(outcome), "-12 (3, 0)");
    EXPECT_EQ(outcome.destlen, 2 + 3);
}

TEST_F(NumericConversion, NumericToNumericCopiesBeforeItRescales) {
    // 123 would fit two digits after the cut to 1.2, but its byte must fit first: 1230 does not.
    EXPECT_EQ(num(1230, 4, 2, 2, 1).status, CS_EOVERFLOW);
    EXPECT_EQ(num(123, 4, 2, 2, 1).status, CS_ETRUNCATED);
    EXPECT_EQ(num_text(num(123, 4, 2, 2, 1)), "12 (2, 1)");
    EXPECT_EQ(num(100, 3, 1, 1, 0).status, CS_EOVERFLOW); // one byte, but two digits are left
}

TEST_F(NumericConversion, NumericToNumericOverflows) {
    EXPECT_EQ(num(999, 3, 0, 2, 0).status, CS_EOVERFLOW);
    EXPECT_EQ(num(100, 3, 0, 2, 0).status, CS_EOVERFLOW); // the byte fits, the digits do not
    EXPECT_EQ(num(1, 1, 0, 77, 77).status, CS_EOVERFLOW);
    EXPECT_EQ(num(1, 1, 0, 1, 1).status, CS_EOVERFLOW);
    const Outcome outcome = num(999, 3, 0, 2, 0);
    EXPECT_EQ(outcome.destlen, 2 + 2);
    EXPECT_EQ(outcome.bytes[0], 2); // precision and scale are written all the same
    EXPECT_EQ(outcome.bytes[1], 0);
    EXPECT_TRUE(outcome.untouched_from(2 + 2));
}

TEST_F(NumericConversion, BadPrecisionAndScaleAreStatusesThatChangeNothing) {
    for (const CS_INT precision : {0, -1, 78, 255, 256 + 10, -2561, std::numeric_limits<CS_INT>::min()}) {
        const Outcome outcome = num(1, 5, 0, precision, 99); // the precision is judged first
        EXPECT_EQ(outcome.status, CS_EPRECISION) << precision;
        EXPECT_TRUE(outcome.untouched()) << precision;
    }
    for (const CS_INT scale : {78, 255, 256, std::numeric_limits<CS_INT>::max()}) {
        const Outcome outcome = num(1, 5, 0, 5, scale);
        EXPECT_EQ(outcome.status, CS_ESCALE) << scale;
        EXPECT_TRUE(outcome.untouched()) << scale;
    }
}

TEST_F(NumericConversion, NegativeScaleIsCutToItsLowByte) {
    const Outcome outcome = num(5, 5, 0, 9, -256 + 2);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(num_text(outcome), "500 (9, 2)");
    EXPECT_EQ(num_text(num(5, 5, 0, 9, -256)), "5 (9, 0)");
}

TEST_F(NumericConversion, NegativeScaleWhoseLowByteIsNoScaleIsAnAssertion) {
    const support::ReturningAssertions returning;
    const Outcome outcome = num(5, 5, 0, 9, -1);
    EXPECT_EQ(outcome.status, CS_FAIL);
    EXPECT_TRUE(outcome.untouched());
    EXPECT_EQ(returning.count(), 1);
}

TEST_F(NumericConversion, NumericToNumericWorksInPlace) {
    CS_NUMERIC value = numeric_of(12345, 10, 2);
    CS_DATAFMT srcfmt = format_of(CS_NUMERIC_TYPE), destfmt = numeric_format(20, 5);
    CS_INT destlen = 0;
    EXPECT_EQ(comn_numtonum(context(), &srcfmt, &value, &destfmt, &value, &destlen), CS_SUCCEED);
    EXPECT_EQ(support::value_text(value.array, support::length_of_precision(20)), "12345000");
    EXPECT_EQ(value.precision, 20);
    EXPECT_EQ(value.scale, 5);
}

TEST_F(NumericConversion, RandomNumericsRescaleAsGmpDoes) {
    support::NumberSource numbers(302);
    int statuses[3] = {};
    for (int i = 0; i < 100000; ++i) {
        const int precision = 1 + static_cast<int>(numbers.pick(76));
        const int scale = static_cast<int>(numbers.pick(77));
        const int to_precision = 1 + static_cast<int>(numbers.pick(76));
        const int to_scale = static_cast<int>(numbers.chance(2) ? numbers.pick(77)
                                                                : std::min<unsigned long>(77, numbers.pick(3) + scale));
        const mpz_class value = numbers.value(numbers.chance(2) ? std::min(precision, to_precision) : precision);
        CS_RETCODE status = CS_SUCCEED;
        mpz_class expected = value;
        const int room = support::length_of_precision(to_precision) - 1;
        if (abs(value) >= power_of(256, room)) {
            status = CS_EOVERFLOW;
        } else if (to_scale >= scale) {
            expected *= power_of(10, to_scale - scale);
        } else {
            expected /= power_of(10, scale - to_scale);
            if (expected * power_of(10, scale - to_scale) != value)
                status = CS_ETRUNCATED;
        }
        if (abs(expected) >= power_of(256, room))
            status = CS_EOVERFLOW;
        const bool too_many_digits = abs(expected) >= power_of(10, to_precision);
        if (too_many_digits)
            status = CS_EOVERFLOW;
        const Outcome outcome = num(value, precision, scale, to_precision, to_scale);
        ASSERT_EQ(outcome.status, status) << decimal_text(value, scale) << " (" << precision << ", " << scale
                                          << ") to (" << to_precision << ", " << to_scale << ")";
        ASSERT_EQ(outcome.destlen, room + 3);
        ASSERT_TRUE(outcome.untouched_from(static_cast<size_t>(room) + 3));
        if (status != CS_EOVERFLOW) {
            const auto result = outcome.value<CS_NUMERIC>();
            ASSERT_EQ(support::value_text(result.array, room + 1), expected.get_str());
        }
        ++statuses[status == CS_SUCCEED ? 0 : status == CS_ETRUNCATED ? 1 : 2];
    }
    EXPECT_GT(statuses[0], 5000);
    EXPECT_GT(statuses[1], 5000);
    EXPECT_GT(statuses[2], 5000);
}

// ---- Text --------------------------------------------------------------------------------------

TEST_F(NumericConversion, CharHoldsThePlainText) {
    EXPECT_EQ(char_text(0, 0), "0");
    EXPECT_EQ(char_text(0, 3), "0.000");
    EXPECT_EQ(char_text(5, 1), "0.5");
    EXPECT_EQ(char_text(-5, 1), "-0.5");
    EXPECT_EQ(char_text(-1, 0), "-1");
    EXPECT_EQ(char_text(123456, 2), "1234.56");
    EXPECT_EQ(char_text(-(power_of(10, 77) - 1), 76), std::string("-9.").append(76, '9'));
}

TEST_F(NumericConversion, CharCutsTextThatDoesNotFit) {
    const CS_NUMERIC value = numeric_of(123456, 6, 2); // 1234.56
    const auto text = [&](CS_INT room, CS_INT format) {
        return convert(comn_numtochar, CS_NUMERIC_TYPE, value, format_of(CS_CHAR_TYPE, room, format));
    };
    Outcome outcome = text(7, 0);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.text(), "1234.56");

    outcome = text(4, 0);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.text(), "1234"); // no asterisk
    EXPECT_TRUE(outcome.untouched_from(4));

    outcome = text(0, 0);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.destlen, 0);
    EXPECT_TRUE(outcome.untouched_from(0));

    outcome = text(7, CS_FORMAT_NULLTERM);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.text(), std::string("1234.5\0", 7));
    EXPECT_TRUE(outcome.untouched_from(7));
}

TEST_F(NumericConversion, CharIsPaddedByTheFormat) {
    const CS_NUMERIC value = numeric_of(-5, 1, 1); // -0.5
    const auto text = [&](CS_INT format) {
        return convert(comn_numtochar, CS_NUMERIC_TYPE, value, format_of(CS_CHAR_TYPE, 8, format));
    };
    EXPECT_EQ(text(CS_FORMAT_NULLTERM).text(), std::string("-0.5\0", 5));
    EXPECT_EQ(text(CS_FORMAT_BLANKPAD).text(), "-0.5    ");
    EXPECT_EQ(text(CS_FORMAT_BLANKPAD | CS_FORMAT_NULLTERM).text(), std::string("-0.5   \0", 8));
    EXPECT_EQ(text(CS_FORMAT_ZEROPAD).text(), std::string("-0.5\0\0\0\0", 8));
    const Outcome both = text(CS_FORMAT_ZEROPAD | CS_FORMAT_BLANKPAD);
    EXPECT_EQ(both.status, CS_EFORMAT);
    EXPECT_EQ(both.text(), "-0.5");
}

TEST_F(NumericConversion, VarcharHoldsThePlainTextAndNothingMore) {
    const Outcome outcome = to(comn_numtovarchar, CS_VARCHAR_TYPE, 123456, 2);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.destlen, 258);
    EXPECT_EQ(outcome.varchar(), "1234.56");
    EXPECT_TRUE(outcome.untouched_from(2 + 7));
    EXPECT_EQ(to(comn_numtovarchar, CS_VARCHAR_TYPE, 1, 77).varchar(), std::string("0.").append(76, '0').append("1"));
}

TEST_F(NumericConversion, RandomTextsAsGmpWritesThem) {
    support::NumberSource numbers(303);
    for (int i = 0; i < 20000; ++i) {
        const int precision = 1 + static_cast<int>(numbers.pick(76));
        const int scale = static_cast<int>(numbers.pick(76));
        const mpz_class value = numbers.value(precision);
        ASSERT_EQ(char_text(value, scale), decimal_text(value, scale));
        ASSERT_EQ(to(comn_numtovarchar, CS_VARCHAR_TYPE, value, scale).varchar(), decimal_text(value, scale));
    }
}

TEST_F(NumericConversion, NegativeValueOfScale77HasNoTextAndOverflowsWhereAssertionsReturn) {
    const support::ReturningAssertions returning;
    for (const CS_CONV_FUNC function : {comn_numtochar, comn_numtovarchar}) {
        const Outcome outcome = to(function, function == comn_numtochar ? CS_CHAR_TYPE : CS_VARCHAR_TYPE, -1, 77);
        EXPECT_EQ(outcome.status, CS_EOVERFLOW);
        EXPECT_TRUE(outcome.untouched());
    }
    EXPECT_EQ(returning.count(), 2);
}

// ---- Bytes -------------------------------------------------------------------------------------

TEST_F(NumericConversion, BinTakesTheWholeArrayAndJudgesNothing) {
    CS_NUMERIC value = numeric_of(-258, 5, 0);
    value.precision = 0; // no value at all
    value.scale = 200;
    const Outcome outcome = convert(comn_numtobin, CS_NUMERIC_TYPE, value, format_of(CS_BINARY_TYPE, 33));
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.destlen, 33);
    EXPECT_EQ(std::memcmp(outcome.bytes.data(), value.array, 33), 0);
    EXPECT_TRUE(outcome.untouched_from(33));

    const Outcome cut = convert(comn_numtobin, CS_NUMERIC_TYPE, value, format_of(CS_IMAGE_TYPE, 4));
    EXPECT_EQ(cut.status, CS_ETRUNCATED);
    EXPECT_EQ(cut.destlen, 4);
    EXPECT_EQ(std::memcmp(cut.bytes.data(), value.array, 4), 0);
    EXPECT_TRUE(cut.untouched_from(4));

    const Outcome padded =
        convert(comn_numtobin, CS_NUMERIC_TYPE, value, format_of(CS_BINARY_TYPE, 35, CS_FORMAT_ZEROPAD));
    EXPECT_EQ(padded.status, CS_SUCCEED);
    EXPECT_EQ(padded.destlen, 35);
    EXPECT_EQ(padded.bytes[34], 0);
}

TEST_F(NumericConversion, VarbinTakesTheWholeArrayAndJudgesNothing) {
    CS_NUMERIC value = numeric_of(-258, 5, 0);
    value.precision = 78;
    const Outcome outcome = convert(comn_numtovarbin, CS_NUMERIC_TYPE, value, format_of(CS_VARBINARY_TYPE));
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.destlen, 258);
    const auto record = outcome.value<CS_VARBINARY>();
    EXPECT_EQ(record.len, 33);
    EXPECT_EQ(std::memcmp(record.array, value.array, 33), 0);
    EXPECT_TRUE(outcome.untouched_from(2 + 33));
}

// ---- What all members share --------------------------------------------------------------------

TEST_F(NumericConversion, InvalidSourceIsADomainErrorThatChangesNothing) {
    for (const Member &member : MEMBERS) {
        if (member.is_to_bytes())
            continue;
        for (const int precision : {0, 78, 255}) {
            CS_NUMERIC value = numeric_of(1, 5, 0);
            value.precision = static_cast<CS_BYTE>(precision);
            CS_DATAFMT format = numeric_format(0, 99, member.ids[0]); // not looked at before
            const Outcome outcome = convert(member.function, CS_NUMERIC_TYPE, value, format);
            EXPECT_EQ(outcome.status, CS_EDOMAIN) << member.name;
            EXPECT_TRUE(outcome.untouched()) << member.name;
        }
        for (const int scale : {78, 255}) {
            const Outcome outcome = to(member.function, member.ids[0], 1, scale);
            EXPECT_EQ(outcome.status, CS_EDOMAIN) << member.name;
            EXPECT_TRUE(outcome.untouched()) << member.name;
        }
    }
}

TEST_F(NumericConversion, EveryIdOfAMemberIsServed) {
    for (const Member &member : MEMBERS)
        for (const CS_INT source_id : {CS_NUMERIC_TYPE, CS_DECIMAL_TYPE})
            for (const CS_INT id : member.ids) {
                CS_DATAFMT format = numeric_format(10, 2, id);
                format.maxlength = 64;
                const Outcome outcome = convert(member.function, source_id, numeric_of(100, 5, 2), format);
                EXPECT_EQ(outcome.status, CS_SUCCEED) << member.name << " to " << id;
                if (member.width != 0) {
                    EXPECT_EQ(outcome.destlen, member.width) << member.name << " to " << id;
                }
                EXPECT_EQ(com_conv_func(context(), source_id, id) == member.function, id != 21 && id != 22 && id != 34)
                    << member.name << " to " << id;
            }
}

TEST_F(NumericConversion, AnyAddressWillDo) {
    for (const Member &member : MEMBERS) {
        CS_BYTE source[sizeof(CS_NUMERIC) + 3];
        const CS_NUMERIC value = numeric_of(-1234, 5, 1);
        for (size_t shift : {0, 1, 3}) {
            std::memcpy(source + shift, &value, sizeof value);
            CS_DATAFMT srcfmt = format_of(CS_NUMERIC_TYPE), destfmt = numeric_format(10, 2, member.ids[0]);
            destfmt.maxlength = 64;
            Outcome plain, shifted;
            const auto run = [&](Outcome &outcome, size_t by) {
                outcome.status = member.function(context(), &srcfmt, source + shift, &destfmt,
                                                 outcome.bytes.data() + by, &outcome.destlen);
            };
            run(plain, 0);
            run(shifted, 1);
            EXPECT_EQ(plain.status, shifted.status) << member.name;
            EXPECT_EQ(plain.destlen, shifted.destlen) << member.name;
            EXPECT_EQ(std::memcmp(plain.bytes.data(), shifted.bytes.data() + 1, 600), 0) << member.name;
        }
    }
}

TEST_F(NumericConversion, LeavesErrnoAlone) {
    errno = 4711;
    for (const Member &member : MEMBERS)
        if (!member.is_to_text())
            to(member.function, member.ids[0], -(power_of(10, 77) - 1), 0);
    EXPECT_EQ(errno, 4711);
}

// A sound call that a test spoils in one place.
struct Call {
    CS_CONTEXT *context;
    const Member &member;
    CS_NUMERIC value = numeric_of(1, 5, 0);
    CS_DATAFMT srcfmt = format_of(CS_NUMERIC_TYPE);
    Outcome outcome;
    bool null[6] = {};

    Call(CS_CONTEXT *context_, const Member &member_) : context(context_), member(member_) {
        outcome.destfmt = numeric_format(10, 2, member.ids[0]);
        outcome.destfmt.maxlength = 64;
    }
    CS_RETCODE run() {
        return member.function(null[0] ? nullptr : context, null[1] ? nullptr : &srcfmt, null[2] ? nullptr : &value,
                               null[3] ? nullptr : &outcome.destfmt, null[4] ? nullptr : outcome.bytes.data(),
                               null[5] ? nullptr : &outcome.destlen);
    }
    void expect_report(const support::ReturningAssertions &returning, const std::string &what) {
        const int before = returning.count();
        EXPECT_EQ(run(), CS_FAIL) << member.name << what;
        EXPECT_EQ(returning.count(), before + 1) << member.name << what;
        EXPECT_TRUE(outcome.untouched()) << member.name << what;
    }
};

TEST_F(NumericConversion, NullPointersAreReportedOnceAndNothingIsTouched) {
    const support::ReturningAssertions returning;
    for (const Member &member : MEMBERS)
        for (unsigned nulls = 1; nulls < 64; ++nulls) {
            Call call(context(), member);
            for (unsigned i = 0; i < 6; ++i)
                call.null[i] = (nulls >> i & 1) != 0;
            call.expect_report(returning, std::string(" nulls ").append(std::to_string(nulls)));
        }
}

TEST_F(NumericConversion, WrongIdsAreReportedOnceAndNothingIsTouched) {
    const support::ReturningAssertions returning;
    for (const Member &member : MEMBERS)
        for (CS_INT id = -1; id <= 41; ++id) {
            if (id != CS_NUMERIC_TYPE && id != CS_DECIMAL_TYPE) {
                Call call(context(), member);
                call.srcfmt.datatype = id;
                call.expect_report(returning, std::string(" source ").append(std::to_string(id)));
            }
            if (std::find(member.ids.begin(), member.ids.end(), id) == member.ids.end()) {
                Call call(context(), member);
                call.outcome.destfmt.datatype = id;
                call.expect_report(returning, std::string(" destination ").append(std::to_string(id)));
            }
        }
}

TEST_F(NumericConversion, NegativeRoomsAreReportedOnceAndNothingIsTouched) {
    const support::ReturningAssertions returning;
    for (const Member &member : MEMBERS)
        if (member.has_room())
            for (const CS_INT room : {-1, std::numeric_limits<CS_INT>::min()}) {
                Call call(context(), member);
                call.outcome.destfmt.maxlength = room;
                call.expect_report(returning, std::string(" room ").append(std::to_string(room)));
            }
}

class NumericConversionDeathTest : public NumericConversion {};

TEST_F(NumericConversionDeathTest, MistakesOfTheCallerEndTheProcess) {
    for (const Member &member : MEMBERS) {
        Call no_source(context(), member);
        no_source.null[2] = true;
        if (member.is_to_bytes())
            EXPECT_NULL_REPORT(no_source.run(), "com_bin");
        else
            EXPECT_NULL_REPORT(no_source.run(), "com_num");
        Call wrong_source(context(), member);
        wrong_source.srcfmt.datatype = CS_INT_TYPE;
        EXPECT_BOMB(wrong_source.run(), "com_num");
        Call wrong_destination(context(), member);
        wrong_destination.outcome.destfmt.datatype = CS_DATETIME_TYPE;
        EXPECT_BOMB(wrong_destination.run(), "com_num");
    }
}

TEST_F(NumericConversionDeathTest, NegativeRoomEndsTheProcess) {
    Call text(context(), MEMBERS[13]);
    text.outcome.destfmt.maxlength = -1;
    EXPECT_BOMB(text.run(), "com_num");
}

TEST_F(NumericConversionDeathTest, NegativeValueOfScale77EndsTheProcess) {
    EXPECT_BOMB(to(comn_numtochar, CS_CHAR_TYPE, -1, 77), "com_num");
    EXPECT_BOMB(to(comn_numtovarchar, CS_VARCHAR_TYPE, -1, 77), "com_num");
}

TEST_F(NumericConversionDeathTest, NegativeScaleWhoseLowByteIsNoScaleEndsTheProcess) {
    EXPECT_BOMB(num(5, 5, 0, 9, -1), "com_num");
}

} // namespace
