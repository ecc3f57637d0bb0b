// Conversions from CS_TINYINT.
#include "support/integer_source_tests.h"

namespace {

using namespace support;

// Destination, range, status below and above it.
const std::vector<RangeRow> rows = {
    {"i1", 0, 255, CANNOT_HAPPEN, CANNOT_HAPPEN},          {"i2", I2_LOW, I2_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"i4", I4_LOW, I4_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN}, {"i8", I8_LOW, I8_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"ui2", 0, UI2_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},    {"ui4", 0, UI4_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"ui8", 0, UI8_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
};

INTEGER_SOURCE_TESTS(ComI1, IntegerSource<CS_TINYINT>, "i1", rows, false, CS_INT, int)
NUMBER_FRAME_TESTS(ComI1, "i1", "com_i1")

TEST_F(ComI1, Char200IsNotNegative) { EXPECT_EQ(run(member("char"), 200, format_of(CS_CHAR_TYPE, 10)).text(), "200"); }

TEST_F(ComI1, Bit200IsOne) { EXPECT_EQ(run(member("bit"), 200).bytes[0], 1); }

} // namespace
