// What a person writes for a value of each datatype, and how it is shown.
#include "command/literals.h"
#include "command/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace {

using client::datatype;
using client::print_own_form;
using client::quoted;
using client::read_own_form;

// The literal read and shown again; "none" for one that is refused.
std::string round_trip(CS_INT type, std::string_view literal) {
    const auto value = read_own_form(datatype(type), literal);
    return value ? print_own_form(datatype(type), value->bytes) : "none";
}

template <class T>
T read_as(CS_INT type, std::string_view literal) {
    const auto value = read_own_form(datatype(type), literal);
    T result = {};
    EXPECT_TRUE(value) << literal;
    if (value) {
        EXPECT_EQ(value->bytes.size(), sizeof(T));
        EXPECT_EQ(value->format.maxlength, CS_INT(sizeof(T)));
        EXPECT_EQ(value->format.datatype, type);
        std::memcpy(&result, value->bytes.data(), std::min(sizeof result, value->bytes.size()));
    }
    return result;
}

// ---- Integers ----

struct IntegerLimits {
    CS_INT type;
    const char *lowest;
    const char *below;
    const char *highest;
    const char *above;
};

class IntegerLiteral : public testing::TestWithParam<IntegerLimits> {};

TEST_P(IntegerLiteral, IsTakenWithinItsRangeOnly) {
    const IntegerLimits &limits = GetParam();
    EXPECT_EQ(round_trip(limits.type, limits.lowest), limits.lowest);
    EXPECT_EQ(round_trip(limits.type, limits.highest), limits.highest);
    EXPECT_EQ(round_trip(limits.type, limits.below), "none");
    EXPECT_EQ(round_trip(limits.type, limits.above), "none");
}

INSTANTIATE_TEST_SUITE_P(
    EveryWidth, IntegerLiteral,
    testing::Values(IntegerLimits{CS_TINYINT_TYPE, "0", "-1", "255", "256"},
                    IntegerLimits{CS_BIT_TYPE, "0", "-1", "255", "256"},
                    IntegerLimits{CS_SMALLINT_TYPE, "-32768", "-32769", "32767", "32768"},
                    IntegerLimits{CS_USMALLINT_TYPE, "0", "-1", "65535", "65536"},
                    IntegerLimits{CS_INT_TYPE, "-2147483648", "-2147483649", "2147483647", "2147483648"},
                    IntegerLimits{CS_UINT_TYPE, "0", "-1", "4294967295", "4294967296"},
                    IntegerLimits{CS_DATE_TYPE, "-2147483648", "-2147483649", "2147483647", "2147483648"},
                    IntegerLimits{CS_BIGINT_TYPE, "-9223372036854775808", "-9223372036854775809", "9223372036854775807",
                                  "9223372036854775808"},
                    IntegerLimits{CS_LONG_TYPE, "-9223372036854775808", "-9223372036854775809", "9223372036854775807",
                                  "9223372036854775808"},
                    IntegerLimits{CS_UBIGINT_TYPE, "0", "-1", "18446744073709551615", "18446744073709551616"},
                    IntegerLimits{CS_BIGTIME_TYPE, "0", "-1", "18446744073709551615", "18446744073709551616"}));

TEST(Literals, OfAnIntegerAreASignAndDigits) {
    EXPECT_EQ(read_as<CS_INT>(CS_INT_TYPE, "+5"), 5);
    EXPECT_EQ(read_as<CS_INT>(CS_INT_TYPE, " \t-007 "), -7);
    EXPECT_EQ(read_as<CS_TINYINT>(CS_TINYINT_TYPE, "-0"), 0);
    for (const char *wrong : {"", " ", "-", "+", "5x", "x5", "5 5", "--5", "+-5", "5.0", "1e3", "0x10", "5\n"})
        EXPECT_EQ(round_trip(CS_INT_TYPE, wrong), "none") << wrong;
}

// ---- Floats ----

TEST(Literals, OfAFloatAreRoundedOnce) {
    EXPECT_EQ(read_as<CS_FLOAT>(CS_FLOAT_TYPE, "0.1"), 0.1);
    EXPECT_EQ(read_as<CS_FLOAT>(CS_FLOAT_TYPE, "-1.5e300"), -1.5e300);
    EXPECT_EQ(read_as<CS_FLOAT>(CS_FLOAT_TYPE, "1e-400"), 0.0);
    EXPECT_EQ(read_as<CS_FLOAT>(CS_FLOAT_TYPE, "5e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(read_as<CS_REAL>(CS_REAL_TYPE, "0.1"), 0.1f);
    // Rounded to a double first this would become 1 + 2^-23.
    EXPECT_EQ(read_as<CS_REAL>(CS_REAL_TYPE, "1.00000005960464477539062500000001"), 1.00000011920928955078125f);
    EXPECT_EQ(read_as<CS_REAL>(CS_REAL_TYPE, "1.0000000596046447753906250"), 1.0f);
}

TEST(Literals, OfAFloatMayBeInfiniteButNotTooLarge) {
    EXPECT_EQ(read_as<CS_FLOAT>(CS_FLOAT_TYPE, "-inf"), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(read_as<CS_FLOAT>(CS_FLOAT_TYPE, "nan")));
    EXPECT_TRUE(std::isnan(read_as<CS_REAL>(CS_REAL_TYPE, "NaN")));
    EXPECT_EQ(round_trip(CS_FLOAT_TYPE, "1e309"), "none");
    EXPECT_EQ(round_trip(CS_FLOAT_TYPE, "-1e309"), "none");
    EXPECT_EQ(round_trip(CS_REAL_TYPE, "1e39"), "none");
    for (const char *wrong : {"", "x", "1.5x", "1e", ".", "1,5"})
        EXPECT_EQ(round_trip(CS_FLOAT_TYPE, wrong), "none") << wrong;
}

TEST(Literals, OfAFloatAreShownInTheFewestDigits) {
    EXPECT_EQ(round_trip(CS_FLOAT_TYPE, "0.1"), "0.1");
    EXPECT_EQ(round_trip(CS_REAL_TYPE, "0.1"), "0.1");
    EXPECT_EQ(round_trip(CS_FLOAT_TYPE, "-inf"), "-inf");
}

// ---- Money ----

TEST(Literals, OfMoneyAreExact) {
    const auto money = read_as<CS_MONEY>(CS_MONEY_TYPE, "-0.0001");
    EXPECT_EQ(money.mnyhigh, -1);
    EXPECT_EQ(money.mnylow, 0xFFFFFFFFu);
    const auto large = read_as<CS_MONEY>(CS_MONEY_TYPE, "429496.7297");
    EXPECT_EQ(large.mnyhigh, 1);
    EXPECT_EQ(large.mnylow, 1u);
    EXPECT_EQ(read_as<CS_MONEY4>(CS_MONEY4_TYPE, "12.5").mny4, 125000);
    EXPECT_EQ(read_as<CS_MONEY4>(CS_MONEY4_TYPE, "1e3").mny4, 10000000);
    EXPECT_EQ(read_as<CS_MONEY4>(CS_MONEY4_TYPE, "-.5").mny4, -5000);
    EXPECT_EQ(read_as<CS_MONEY4>(CS_MONEY4_TYPE, "5.").mny4, 50000);
}

TEST(Literals, OfMoneyEndWithTheirRange) {
    for (const char *bound : {"-922337203685477.5808", "922337203685477.5807"})
        EXPECT_EQ(round_trip(CS_MONEY_TYPE, bound), bound);
    for (const char *bound : {"-214748.3648", "214748.3647", "-0.0001", "0.0000"})
        EXPECT_EQ(round_trip(CS_MONEY4_TYPE, bound), bound);
    for (const char *wrong : {"-922337203685477.5809", "922337203685477.5808", "1e400", "99999999999999999999999"})
        EXPECT_EQ(round_trip(CS_MONEY_TYPE, wrong), "none") << wrong;
    for (const char *wrong : {"-214748.3649", "214748.3648"})
        EXPECT_EQ(round_trip(CS_MONEY4_TYPE, wrong), "none") << wrong;
}

TEST(Literals, OfMoneyHaveFourDecimalsAtMost) {
    EXPECT_EQ(round_trip(CS_MONEY_TYPE, "1.23456"), "none");
    EXPECT_EQ(round_trip(CS_MONEY_TYPE, "1e-5"), "none");
    EXPECT_EQ(round_trip(CS_MONEY_TYPE, "12e-4"), "0.0012");
    for (const char *wrong : {"", ".", "-", "$5", "1,000", "1.2.3", "1 2", "1e", "e5", "1e5x"})
        EXPECT_EQ(round_trip(CS_MONEY_TYPE, wrong), "none") << wrong;
}

// ---- Numeric ----

TEST(Literals, OfANumericHaveTheDigitsThatTheyShow) {
    const auto half = read_as<CS_NUMERIC>(CS_NUMERIC_TYPE, "-0.50");
    EXPECT_EQ(half.precision, 2);
    EXPECT_EQ(half.scale, 2);
    EXPECT_EQ(half.array[0], 1);
    EXPECT_EQ(half.array[1], 50);
    const auto zero = read_as<CS_NUMERIC>(CS_DECIMAL_TYPE, "-00");
    EXPECT_EQ(zero.precision, 1);
    EXPECT_EQ(zero.scale, 0);
    EXPECT_EQ(zero.array[0], 0);
    const auto padded = read_as<CS_NUMERIC>(CS_NUMERIC_TYPE, "0012.300");
    EXPECT_EQ(padded.precision, 5);
    EXPECT_EQ(padded.scale, 3);
}

TEST(Literals, OfANumericTellTheDescriptorTheirDigits) {
    const auto value = read_own_form(datatype(CS_NUMERIC_TYPE), "12.345");
    ASSERT_TRUE(value);
    EXPECT_EQ(value->format.precision, 5);
    EXPECT_EQ(value->format.scale, 3);
    EXPECT_EQ(value->format.maxlength, CS_INT(sizeof(CS_NUMERIC)));
}

TEST(Literals, OfANumericMoveThePointByTheirExponent) {
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "1.5e-3"), "0.0015");
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "5e-3"), "0.005");
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "123e-1"), "12.3");
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "1.5E+3"), "1500");
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "1.2345e2"), "123.45");
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "1e76"), "1" + std::string(76, '0'));
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "0e99999999999"), "0");
}

TEST(Literals, OfANumericHaveSeventySevenDigitsAtMost) {
    const std::string nines(77, '9');
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "-" + nines), "-" + nines);
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "-." + nines), "-0." + nines);
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, nines + "9"), "none");
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "." + nines + "9"), "none");
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "1e77"), "none");
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "1e99999999999"), "none");
    EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, "1e-99999999999"), "none");
    for (const char *wrong : {"", ".", "+", "1.2.3", "1e2e3", "0x1", "1 2", "1e+", "inf"})
        EXPECT_EQ(round_trip(CS_NUMERIC_TYPE, wrong), "none") << wrong;
}

TEST(Literals, OfANumericAreShownAsTheyWereWritten) {
    std::mt19937_64 random(20);
    for (int i = 0; i < 20000; ++i) {
        const size_t digits = 1 + random() % 77;
        const size_t scale = random() % digits;
        std::string whole(1, static_cast<char>('1' + random() % 9)); // no leading zero is shown
        std::string fraction;
        while (whole.size() < digits - scale)
            whole += static_cast<char>('0' + random() % 10);
        while (fraction.size() < scale)
            fraction += static_cast<char>('0' + random() % 10);
        const std::string literal = (random() % 2 != 0 ? "-" : "") + whole + (scale != 0 ? "." : "") + fraction;
        ASSERT_EQ(round_trip(CS_NUMERIC_TYPE, literal), literal);
    }
}

TEST(Literals, OfANumericThatIsNoneAreShownAsADash) {
    std::vector<CS_BYTE> bytes(sizeof(CS_NUMERIC));
    EXPECT_EQ(print_own_form(datatype(CS_NUMERIC_TYPE), bytes), "-"); // precision 0
    bytes[0] = 78;
    EXPECT_EQ(print_own_form(datatype(CS_NUMERIC_TYPE), bytes), "-");
    bytes[0] = 5;
    bytes[1] = 78;
    EXPECT_EQ(print_own_form(datatype(CS_NUMERIC_TYPE), bytes), "-");
}

// ---- Bytes, text, dates, void ----

TEST(Literals, OfBytesAreHexadecimal) {
    const auto value = read_own_form(datatype(CS_BINARY_TYPE), "0x00fFA1");
    ASSERT_TRUE(value);
    EXPECT_EQ(value->bytes, (std::vector<CS_BYTE>{0x00, 0xFF, 0xA1}));
    EXPECT_EQ(value->format.maxlength, 3);
    EXPECT_EQ(round_trip(CS_IMAGE_TYPE, "0X0a"), "0x0a");
    EXPECT_EQ(round_trip(CS_BINARY_TYPE, "0x"), "0x");
    for (const char *wrong : {"", "0", "0x0", "00ff", "0xgg", "0x 1", "x00", "0x-1"})
        EXPECT_EQ(round_trip(CS_BINARY_TYPE, wrong), "none") << wrong;
}

TEST(Literals, OfVariableLengthFillTheirRecord) {
    const auto text = read_as<CS_VARCHAR>(CS_VARCHAR_TYPE, " ab ");
    EXPECT_EQ(text.len, 4);
    EXPECT_EQ(std::string(text.str, 4), " ab ");
    EXPECT_EQ(read_as<CS_VARCHAR>(CS_VARCHAR_TYPE, "").len, 0);
    EXPECT_EQ(read_as<CS_VARCHAR>(CS_VARCHAR_TYPE, std::string(256, 'x')).len, 256);
    EXPECT_EQ(round_trip(CS_VARCHAR_TYPE, std::string(257, 'x')), "none");
    EXPECT_EQ(round_trip(CS_VARBINARY_TYPE, "0x0aff"), "0x0aff");
    EXPECT_EQ(round_trip(CS_VARBINARY_TYPE, "0x" + std::string(2 * 256, 'a')), "0x" + std::string(2 * 256, 'a'));
    EXPECT_EQ(round_trip(CS_VARBINARY_TYPE, "0x" + std::string(2 * 257, 'a')), "none");
    EXPECT_EQ(round_trip(CS_VARBINARY_TYPE, "zz"), "none");
}

TEST(Literals, OfVariableLengthAreShownWithinTheirRecord) {
    CS_VARCHAR record = {};
    record.len = -5;
    std::vector<CS_BYTE> bytes(sizeof record);
    std::memcpy(bytes.data(), &record, sizeof record);
    EXPECT_EQ(print_own_form(datatype(CS_VARCHAR_TYPE), bytes), "\"\"");
    record.len = 32767;
    std::memcpy(bytes.data(), &record, sizeof record);
    EXPECT_EQ(print_own_form(datatype(CS_VARBINARY_TYPE), bytes), "0x" + std::string(512, '0'));
}

TEST(Literals, OfTextStandAsTheyAre) {
    EXPECT_EQ(round_trip(CS_CHAR_TYPE, " a\"b\\ "), "\" a\\\"b\\\\ \"");
    EXPECT_EQ(round_trip(CS_XML_TYPE, "<a/>"), "\"<a/>\"");
    EXPECT_EQ(round_trip(CS_CHAR_TYPE, ""), "none"); // the library takes no empty source
    EXPECT_EQ(round_trip(CS_UNICHAR_TYPE, "ab"), "\"ab\"");
    EXPECT_EQ(round_trip(CS_UNITEXT_TYPE, "\xC3\xA9"), "none");
    EXPECT_EQ(print_own_form(datatype(CS_UNICHAR_TYPE), {}), "\"\"");
    EXPECT_EQ(print_own_form(datatype(CS_UNICHAR_TYPE), {'a', 0, 0xAC, 0x20, 0, 0}), "\"a\\u20ac\\0\"");
}

TEST(Literals, OfDatesAreTheirFields) {
    const auto datetime = read_as<CS_DATETIME>(CS_DATETIME_TYPE, "-53690:25919999");
    EXPECT_EQ(datetime.dtdays, -53690);
    EXPECT_EQ(datetime.dttime, 25919999);
    const auto small = read_as<CS_DATETIME4>(CS_DATETIME4_TYPE, "65535:1439");
    EXPECT_EQ(small.days, 65535);
    EXPECT_EQ(small.minutes, 1439);
    EXPECT_EQ(round_trip(CS_DATETIME_TYPE, "-1:2"), "-1:2");
    EXPECT_EQ(round_trip(CS_DATETIME4_TYPE, "1:2"), "1:2");
    for (const char *wrong : {"", "5", ":", "1:", ":1", "1:2:3", "-1:0", "65536:0", "2000-01-01"})
        EXPECT_EQ(round_trip(CS_DATETIME4_TYPE, wrong), "none") << wrong;
}

TEST(Literals, OfVoidAreTheWordNull) {
    EXPECT_TRUE(read_own_form(datatype(CS_VOID_TYPE), "NULL"));
    EXPECT_FALSE(read_own_form(datatype(CS_VOID_TYPE), "0"));
    EXPECT_EQ(round_trip(CS_VOID_TYPE, "null"), "-");
    EXPECT_FALSE(read_own_form(datatype(CS_BLOB_TYPE), "0x00"));
}

TEST(Literals, FailWithTheFormThatIsTaken) {
    for (CS_INT id = 0; id < client::TYPE_COUNT; ++id) {
        const auto value = read_own_form(datatype(id), "\xFF?");
        if (datatype(id).form == client::Form::text || datatype(id).form == client::Form::varchar)
            continue;
        ASSERT_FALSE(value) << datatype(id).name;
        EXPECT_EQ(value.sentence(), "\"\\xff?\" is no " + std::string(datatype(id).name) + " value; it takes " +
                                        client::literal_form(datatype(id)));
    }
}

// ---- What a literal looks like ----

TEST(Guess, FollowsTheForm) {
    const auto guess = [](const char *literal) { return client::guess_datatype(literal).id; };
    EXPECT_EQ(guess("5"), CS_BIGINT_TYPE);
    EXPECT_EQ(guess(" -5 "), CS_BIGINT_TYPE);
    EXPECT_EQ(guess("-9223372036854775808"), CS_BIGINT_TYPE);
    EXPECT_EQ(guess("9223372036854775808"), CS_NUMERIC_TYPE);
    EXPECT_EQ(guess("5."), CS_NUMERIC_TYPE);
    EXPECT_EQ(guess("-.5"), CS_NUMERIC_TYPE);
    EXPECT_EQ(guess("1e5"), CS_FLOAT_TYPE);
    EXPECT_EQ(guess("1.5E-5"), CS_FLOAT_TYPE);
    EXPECT_EQ(guess("inf"), CS_FLOAT_TYPE);
    EXPECT_EQ(guess("-nan"), CS_FLOAT_TYPE);
    EXPECT_EQ(guess("0xff"), CS_BINARY_TYPE);
    EXPECT_EQ(guess("0xgg"), CS_BINARY_TYPE);
    EXPECT_EQ(guess("1,5"), CS_CHAR_TYPE);
    EXPECT_EQ(guess("."), CS_CHAR_TYPE);
    EXPECT_EQ(guess(""), CS_CHAR_TYPE);
    EXPECT_EQ(guess("null"), CS_CHAR_TYPE);
}

// ---- Text ----

TEST(Text, IsQuotedForAnyTerminal) {
    EXPECT_EQ(quoted(std::string_view("a\0\n\x7F\xE9 b", 7)), "\"a\\0\\x0a\\x7f\\xe9 b\"");
}

TEST(Text, TakesColumns) {
    using client::columns;
    EXPECT_EQ(columns(""), 0u);
    EXPECT_EQ(columns("abc"), 3u);
    EXPECT_EQ(columns("Grüße"), 5u);
    EXPECT_EQ(columns("日本"), 4u);
    EXPECT_EQ(columns("한국ﾃ"), 5u);
    EXPECT_EQ(columns("🐍"), 2u);
    EXPECT_EQ(columns("𝄞"), 1u);
    EXPECT_EQ(columns("\xE6"), 1u);
    EXPECT_EQ(client::left("日本", 5), "日本 ");
    EXPECT_EQ(client::left("日本", 3), "日本");
    EXPECT_EQ(client::right("ü", 3), "  ü");
}

TEST(Text, IsEnumerated) {
    EXPECT_EQ(client::enumerate({}, "or"), "");
    EXPECT_EQ(client::enumerate({"a"}, "or"), "a");
    EXPECT_EQ(client::enumerate({"a", "b"}, "or"), "a or b");
    EXPECT_EQ(client::enumerate({"a", "b", "c"}, "and"), "a, b and c");
}

} // namespace
