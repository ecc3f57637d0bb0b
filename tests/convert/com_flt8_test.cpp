// Conversions from CS_FLOAT.
#include "support/float_source_tests.h"

namespace {

using namespace support;

// Destination, bounds, status below and above them, NaN.
const std::vector<FloatRow> rows = {
    {"i1", 0, 255, CS_EOVERFLOW, CS_EOVERFLOW, 0},
    {"i2", -32768, 32767, CS_EOVERFLOW, CS_EOVERFLOW, 0},
    {"i4", I4_LOW, I4_HIGH, CS_EOVERFLOW, CS_EOVERFLOW, I4_LOW},
    {"i8", -9223372036854769664, 9223372036854769664, CS_EOVERFLOW, CS_EOVERFLOW, I8_LOWEST},
    {"ui2", 0, 65535, CS_EUNDERFLOW, CS_EOVERFLOW, 0},
    {"ui4", 0, UI4_HIGH, CS_EUNDERFLOW, CS_EOVERFLOW, 0},
    {"ui8", 0, 18446744073709500416u, CS_EUNDERFLOW, CS_EOVERFLOW, TWO_TO_63},
};

FLOAT_SOURCE_TESTS(ComFlt8, CS_FLOAT, "flt8", rows)
NUMBER_FRAME_TESTS(ComFlt8, "flt8", "com_flt8")

TEST_F(ComFlt8, I1OfTheBoundPasses) {
    const Outcome outcome = run("i1", 255.0);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.bytes[0], 255);
}

// Although truncation would bring it in.
TEST_F(ComFlt8, I1OfAFractionBeyondTheBoundIsOverflow) {
    EXPECT_EQ(run("i1", 255.5).status, CS_EOVERFLOW);
    EXPECT_EQ(run("i1", 255.5).bytes[0], 255);
    EXPECT_EQ(run("i1", -0.5).status, CS_EOVERFLOW);
    EXPECT_EQ(run("i1", -0.5).bytes[0], 0);
}

TEST_F(ComFlt8, I4Truncates) {
    EXPECT_EQ(run("i4", 1.9).value<CS_INT>(), 1);
    EXPECT_EQ(run("i4", -1.9).value<CS_INT>(), -1);
}

TEST_F(ComFlt8, StatusBelowTheRangeDependsOnTheDestination) {
    EXPECT_EQ(run("ui2", -1.0).status, CS_EUNDERFLOW);
    EXPECT_EQ(run("ui2", -1.0).value<CS_USMALLINT>(), 0);
    EXPECT_EQ(run("i1", -1.0).status, CS_EOVERFLOW);
    EXPECT_EQ(run("i1", -1.0).bytes[0], 0);
}

TEST_F(ComFlt8, I8StaysBelowTheTrueLimit) {
    const Outcome outcome = run("i8", 9.3e18);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.value<CS_BIGINT>(), 9223372036854769664);
}

// The exact value is 9223372036854775808.
TEST_F(ComFlt8, UI8OfTwoToThe63IsOneShort) {
    const Outcome outcome = run("ui8", 9223372036854775808.0);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.value<CS_UBIGINT>(), 9223372036854775807u);
    EXPECT_EQ(run("ui8", 9223372036854777856.0).value<CS_UBIGINT>(), 9223372036854777855u);
}

// What the 64-bit integers convert to at most comes back without a failure.
TEST_F(ComFlt8, CeilingsOfTheReverseConversionsPass) {
    EXPECT_EQ(run("i8", 9223372036854769664.0).status, CS_SUCCEED);
    EXPECT_EQ(run("ui8", 18446744073709500416.0).status, CS_SUCCEED);
}

TEST_F(ComFlt8, SingleSaturates) {
    const Outcome outcome = run("flt4", 1e300);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.destlen, 4);
    EXPECT_EQ(outcome.value<CS_UINT>(), 0x7F7FFFFFu);
    EXPECT_EQ(run("flt4", -1e300).value<CS_UINT>(), 0xFF7FFFFFu);
    EXPECT_EQ(run("flt4", -1e300).status, CS_EOVERFLOW);
    EXPECT_EQ(run("flt4", std::numeric_limits<double>::infinity()).value<CS_UINT>(), 0x7F7FFFFFu);
    EXPECT_EQ(run("flt4", std::numeric_limits<double>::infinity()).status, CS_EOVERFLOW);
}

TEST_F(ComFlt8, SingleOfTheBoundPasses) {
    const Outcome outcome = run("flt4", 3.4028234663852886e38);
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.value<CS_UINT>(), 0x7F7FFFFFu);
    EXPECT_EQ(run("flt4", std::nextafter(3.4028234663852886e38, 1e39)).status, CS_EOVERFLOW);
}

TEST_F(ComFlt8, SingleTooSmallIsZeroOrDenormalWithoutComplaint) {
    EXPECT_EQ(run("flt4", 1e-300).status, CS_SUCCEED);
    EXPECT_EQ(run("flt4", 1e-300).value<CS_REAL>(), 0.0f);
    EXPECT_EQ(run("flt4", 1e-45).value<CS_UINT>(), 1u);
}

TEST_F(ComFlt8, SingleOfNanIsNan) {
    const Outcome outcome = run("flt4", std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_TRUE(std::isnan(outcome.value<CS_REAL>()));
}

TEST_F(ComFlt8, SingleIsTheNearestOne) {
    for (double value : all_floats<double>()) {
        if (!(std::fabs(value) <= 3.4028234663852886e38))
            continue;
        char text[64];
        std::snprintf(text, sizeof text, "%a", value);
        ASSERT_EQ(run("flt4", value).value<CS_REAL>(), std::strtof(text, nullptr)) << text;
    }
}

TEST_F(ComFlt8, KnownTexts) {
    EXPECT_EQ(text_of(-0.0), "0.0");
    EXPECT_EQ(text_of(0.0), "0.0");
    EXPECT_EQ(text_of(0.25), ".25");
    EXPECT_EQ(text_of(0.5), ".5");
    EXPECT_EQ(text_of(-0.5), "-0.5");
    EXPECT_EQ(text_of(5), "5.0");
    EXPECT_EQ(text_of(100.0), "100.0");
    EXPECT_EQ(text_of(1e20), "1e+20");
    EXPECT_EQ(text_of(1e21), "1e+21");
    EXPECT_EQ(text_of(0.1), ".10000000000000001");
    EXPECT_EQ(text_of(0.0001), ".0001");
    EXPECT_EQ(text_of(1e-5), "1.0000000000000001e-05");
}

TEST_F(ComFlt8, InfinitiesAndNansAreTextWithAPoint) {
    EXPECT_EQ(text_of(std::numeric_limits<double>::infinity()), "inf.0");
    EXPECT_EQ(text_of(-std::numeric_limits<double>::infinity()), "-inf.0");
    EXPECT_EQ(text_of(std::numeric_limits<double>::quiet_NaN()), "nan.0");
}

TEST_F(ComFlt8, TextOfFourBytesInARoomOfOneIsLeftAlone) {
    const Outcome outcome = run(member("char"), 10.5, format_of(CS_CHAR_TYPE, 1));
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.destlen, 1);
    EXPECT_TRUE(outcome.untouched_from(0));
}

TEST_F(ComFlt8, MoneyIsWhatTheKernelMakes) {
    money_is_what_the_kernel_makes("money", 8,
                                   [](CS_BYTE *src, CS_BYTE *dest) { return com__flt8tomny(src, 8, dest, 0, 0); });
    money_is_what_the_kernel_makes("mny4", 4,
                                   [](CS_BYTE *src, CS_BYTE *dest) { return com__flt8tomny4(src, 8, dest, 0); });
}

} // namespace
