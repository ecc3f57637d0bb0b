// Conversions from CS_UBIGINT.
#include "support/integer_source_tests.h"

namespace {

using namespace support;

// Destination, range, status below and above it.
const std::vector<RangeRow> rows = {
    {"i1", 0, 255, CANNOT_HAPPEN, CS_EOVERFLOW},          {"i2", I2_LOW, I2_HIGH, CANNOT_HAPPEN, CS_EOVERFLOW},
    {"i4", I4_LOW, I4_HIGH, CANNOT_HAPPEN, CS_EOVERFLOW}, {"i8", I8_LOW, I8_HIGH, CANNOT_HAPPEN, CS_EOVERFLOW},
    {"ui2", 0, UI2_HIGH, CANNOT_HAPPEN, CS_EOVERFLOW},    {"ui4", 0, UI4_HIGH, CANNOT_HAPPEN, CS_EOVERFLOW},
    {"ui8", 0, UI8_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
};

INTEGER_SOURCE_TESTS(ComUi8, WideIntegerSource<CS_UBIGINT>, "ui8", rows, true, CS_UBIGINT, uint8)
NUMBER_FRAME_TESTS(ComUi8, "ui8", "com_ui8")

TEST_F(ComUi8, I8OfTwoToThe63IsSaturated) {
    const Outcome outcome = run(member("i8"), 9223372036854775808u);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.value<CS_BIGINT>(), std::numeric_limits<CS_BIGINT>::max());
}

TEST_F(ComUi8, FloatOfTheLargestIsTheCeiling) {
    EXPECT_EQ(run(member("flt8"), std::numeric_limits<CS_UBIGINT>::max()).value<std::uint64_t>(), 0x43EFFFFFFFFFFFE7u);
    EXPECT_EQ(run(member("flt4"), std::numeric_limits<CS_UBIGINT>::max()).value<CS_UINT>(), 0x5F7FFFD8u);
}

// From 2^63 on one is added before the conversion: where the rest lies just below a tie, the double is the next one.
TEST_F(ComUi8, AddedOneShowsWhereItReachesATie) {
    const CS_UBIGINT top = 1ull << 63;
    EXPECT_EQ(run(member("flt8"), top).value<CS_FLOAT>(), 9223372036854775808.0);
    // 2^63 + 3071 lies nearer to 2^63 + 2048; one more is half way to 2^63 + 4096, which is the even one.
    EXPECT_EQ(run(member("flt8"), top + 3071).value<CS_FLOAT>(), 9223372036854779904.0);
    EXPECT_EQ(run(member("flt8"), top + 3070).value<CS_FLOAT>(), 9223372036854777856.0);
}

// The rest is rounded to a single, and so is the sum.
TEST_F(ComUi8, SingleIsSummedInSinglePrecision) {
    const CS_UBIGINT top = 1ull << 63;
    const CS_UBIGINT rest = (1ull << 40) + (1ull << 39) + (1ull << 15); // a tie but for its last bit
    const float sum = 9223372036854775808.0f + static_cast<float>(static_cast<long double>(rest + 1));
    EXPECT_EQ(run(member("flt4"), top + rest).value<CS_REAL>(), sum);
}

TEST_F(ComUi8, NumericPrecisionFromSourceChangesTheDescriptor) { precision_from_source_changes_the_descriptor(); }
TEST_F(ComUi8, NumericPrecisionFromSourceAloneTakesNoScale) { precision_from_source_alone_takes_no_scale(); }
TEST_F(ComUi8, NumericPrecisionFromSourceWithAScaleAboveTheRange) {
    precision_from_source_with_a_scale_above_the_range();
}
TEST_F(ComUi8, NumericScaleFromSourceWithoutAPrecision) { scale_from_source_without_a_precision(); }

} // namespace
