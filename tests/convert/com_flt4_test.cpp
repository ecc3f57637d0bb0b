// Conversions from CS_REAL.
#include "support/float_source_tests.h"

namespace {

using namespace support;

// Destination, bounds, status below and above them, NaN.
const std::vector<FloatRow> rows = {
    {"i1", 0, 255, CS_EOVERFLOW, CS_EOVERFLOW, 0},
    {"i2", -32768, 32767, CS_EOVERFLOW, CS_EOVERFLOW, 0},
    {"i4", I4_LOW, I4_HIGH, CS_EOVERFLOW, CS_EOVERFLOW, I4_LOW},
    {"i8", -9223370000000000000, 9223370000000000000, CS_EOVERFLOW, CS_EOVERFLOW, I8_LOWEST},
    {"ui2", 0, 65535, CS_EUNDERFLOW, CS_EOVERFLOW, 0},
    {"ui4", 0, UI4_HIGH, CS_EUNDERFLOW, CS_EOVERFLOW, 0},
    {"ui8", 0, 18446700000000000000u, CS_EUNDERFLOW, CS_EOVERFLOW, TWO_TO_63},
};

FLOAT_SOURCE_TESTS(ComFlt4, CS_REAL, "flt4", rows)
NUMBER_FRAME_TESTS(ComFlt4, "flt4", "com_flt4")

// A single cannot hold 2147483647: its neighbour above is out of range, as a comparison in double shows.
TEST_F(ComFlt4, I4OfTwoToThe31IsOverflow) {
    const Outcome outcome = run("i4", 2147483648.0f);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.value<CS_INT>(), 2147483647);
    EXPECT_EQ(run("i4", 2147483520.0f).value<CS_INT>(), 2147483520);
    EXPECT_EQ(run("i4", -2147483648.0f).status, CS_SUCCEED);
}

TEST_F(ComFlt4, UI4OfTwoToThe32IsOverflow) {
    const Outcome outcome = run("ui4", 4294967296.0f);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.value<CS_UINT>(), 4294967295u);
}

TEST_F(ComFlt4, I8StaysBelowTheTrueLimit) {
    const Outcome outcome = run("i8", 9.3e18f);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.value<CS_BIGINT>(), 9223370000000000000);
    EXPECT_EQ(run("i8", -9.3e18f).value<CS_BIGINT>(), -9223370000000000000);
}

TEST_F(ComFlt4, UI8OfTwoToThe63IsOneShort) {
    EXPECT_EQ(run("ui8", 9223372036854775808.0f).value<CS_UBIGINT>(), 9223372036854775807u);
    EXPECT_EQ(run("ui8", 9223372036854775808.0f).status, CS_SUCCEED);
}

// What a bigint converts to at most comes back; the ceiling of an unsigned one lies above the bound and does not.
TEST_F(ComFlt4, OnlyTheSignedCeilingOfTheReverseConversionsPasses) {
    EXPECT_EQ(run("i8", 9223369837831520256.0f).status, CS_SUCCEED);
    const Outcome outcome = run("ui8", 18446700093244440576.0f);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.value<CS_UBIGINT>(), 18446700000000000000u);
}

TEST_F(ComFlt4, BitOfNanIsOne) {
    const Outcome outcome = run("bit", std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.bytes[0], 1);
}

TEST_F(ComFlt4, DoubleIsTheSameValue) {
    for (float value : all_floats<float>()) {
        const Outcome outcome = run("flt8", value);
        ASSERT_EQ(outcome.status, CS_SUCCEED);
        ASSERT_EQ(outcome.destlen, 8);
        if (std::isnan(value))
            ASSERT_TRUE(std::isnan(outcome.value<CS_FLOAT>()));
        else
            ASSERT_EQ(outcome.value<CS_FLOAT>(), static_cast<double>(value));
        ASSERT_TRUE(outcome.untouched_from(8));
    }
}

TEST_F(ComFlt4, TextShowsTheDigitsOfTheDoubleForm) {
    EXPECT_EQ(text_of(0.1f), ".10000000149011612");
    EXPECT_EQ(text_of(-0.1f), "-0.10000000149011612");
    EXPECT_EQ(text_of(-0.0f), "0.0");
    EXPECT_EQ(text_of(1e21f), "1.0000000200408773e+21");
    EXPECT_EQ(text_of(16777216.0f), "16777216.0");
}

TEST_F(ComFlt4, MoneyIsWhatTheKernelMakes) {
    money_is_what_the_kernel_makes("money", 8,
                                   [](CS_BYTE *src, CS_BYTE *dest) { return com__flt4tomny(src, 4, dest, 0, 0); });
    money_is_what_the_kernel_makes("mny4", 4,
                                   [](CS_BYTE *src, CS_BYTE *dest) { return com__flt4tomny4(src, 4, dest, 0); });
}

} // namespace
