// Conversions from CS_LONG and CS_BIGINT.
#include "support/integer_source_tests.h"

namespace {

using namespace support;

// Destination, range, status below and above it.
const std::vector<RangeRow> rows = {
    {"i1", 0, 255, CS_EUNDERFLOW, CS_EOVERFLOW},         {"i2", I2_LOW, I2_HIGH, CS_EUNDERFLOW, CS_EOVERFLOW},
    {"i4", I4_LOW, I4_HIGH, CS_EOVERFLOW, CS_EOVERFLOW}, {"i8", I8_LOW, I8_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"ui2", 0, UI2_HIGH, CS_EUNDERFLOW, CS_EOVERFLOW},   {"ui4", 0, UI4_HIGH, CS_EUNDERFLOW, CS_EOVERFLOW},
    {"ui8", 0, UI8_HIGH, CS_EUNDERFLOW, CANNOT_HAPPEN},
};

INTEGER_SOURCE_TESTS(ComI8, WideIntegerSource<CS_BIGINT>, "i8", rows, true, CS_BIGINT, int8)
NUMBER_FRAME_TESTS(ComI8, "i8", "com_i8")

TEST_F(ComI8, I1OfMinusOneIsUnderflow) {
    const Outcome outcome = run(member("i1"), -1);
    EXPECT_EQ(outcome.status, CS_EUNDERFLOW);
    EXPECT_EQ(outcome.bytes[0], 0);
}

TEST_F(ComI8, I2OfMinus40000IsUnderflow) {
    const Outcome outcome = run(member("i2"), -40000);
    EXPECT_EQ(outcome.status, CS_EUNDERFLOW);
    EXPECT_EQ(outcome.value<CS_SMALLINT>(), -32768);
}

// Not an underflow as in the narrower types.
TEST_F(ComI8, I4OfMinus3000000000IsOverflow) {
    const Outcome outcome = run(member("i4"), -3000000000);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.value<CS_INT>(), std::numeric_limits<CS_INT>::min());
}

TEST_F(ComI8, DoubleOfTheLargestIsTheCeiling) {
    const Outcome outcome = run(member("flt8"), std::numeric_limits<CS_BIGINT>::max());
    EXPECT_EQ(outcome.value<CS_FLOAT>(), 9223372036854769664.0);
    EXPECT_EQ(outcome.value<std::uint64_t>(), 0x43DFFFFFFFFFFFFAu);
}

TEST_F(ComI8, SingleOfTheLargestIsTheCeiling) {
    const Outcome outcome = run(member("flt4"), std::numeric_limits<CS_BIGINT>::max());
    EXPECT_EQ(outcome.value<CS_REAL>(), 9223369837831520256.0f);
    EXPECT_EQ(outcome.value<CS_UINT>(), 0x5EFFFFFCu);
}

TEST_F(ComI8, FloatOfTheSmallestHasNoCeiling) {
    const CS_BIGINT smallest = std::numeric_limits<CS_BIGINT>::min();
    EXPECT_EQ(run(member("flt8"), smallest).value<CS_FLOAT>(), -9223372036854775808.0);
    EXPECT_EQ(run(member("flt4"), smallest).value<CS_REAL>(), -9223372036854775808.0f);
}

TEST_F(ComI8, NumericPrecisionFromSourceChangesTheDescriptor) { precision_from_source_changes_the_descriptor(); }
TEST_F(ComI8, NumericPrecisionFromSourceAloneTakesNoScale) { precision_from_source_alone_takes_no_scale(); }
TEST_F(ComI8, NumericPrecisionFromSourceWithAScaleAboveTheRange) {
    precision_from_source_with_a_scale_above_the_range();
}
TEST_F(ComI8, NumericScaleFromSourceWithoutAPrecision) { scale_from_source_without_a_precision(); }

} // namespace
