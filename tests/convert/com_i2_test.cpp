// Conversions from CS_SMALLINT.
#include "support/integer_source_tests.h"

namespace {

using namespace support;

// Destination, range, status below and above it.
const std::vector<RangeRow> rows = {
    {"i1", 0, 255, CS_EOVERFLOW, CS_EOVERFLOW},
    {"i2", I2_LOW, I2_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"i4", I4_LOW, I4_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"i8", I8_LOW, I8_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"ui2", 0, UI2_HIGH, CS_EUNDERFLOW, CANNOT_HAPPEN},
    {"ui4", 0, UI4_HIGH, CS_EUNDERFLOW, CANNOT_HAPPEN},
    {"ui8", 0, UI8_HIGH, CS_EUNDERFLOW, CANNOT_HAPPEN},
};

INTEGER_SOURCE_TESTS(ComI2, IntegerSource<CS_SMALLINT>, "i2", rows, false, CS_INT, int)
NUMBER_FRAME_TESTS(ComI2, "i2", "com_i2")

TEST_F(ComI2, I1Of256IsSaturated) {
    const Outcome outcome = run(member("i1"), 256);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.bytes[0], 255);
}

// A negative value is an overflow in a tinyint, and an underflow in the wider unsigned types.
TEST_F(ComI2, StatusBelowTheRangeDependsOnTheDestination) {
    EXPECT_EQ(run(member("i1"), -1).status, CS_EOVERFLOW);
    EXPECT_EQ(run(member("ui2"), -1).status, CS_EUNDERFLOW);
    EXPECT_EQ(run(member("ui4"), -1).status, CS_EUNDERFLOW);
    EXPECT_EQ(run(member("ui8"), -1).status, CS_EUNDERFLOW);
}

} // namespace
