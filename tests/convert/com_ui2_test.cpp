// Conversions from CS_USMALLINT.
#include "support/integer_source_tests.h"

namespace {

using namespace support;

// Destination, range, status below and above it.
const std::vector<RangeRow> rows = {
    {"i1", 0, 255, CANNOT_HAPPEN, CS_EOVERFLOW},           {"i2", I2_LOW, I2_HIGH, CANNOT_HAPPEN, CS_EOVERFLOW},
    {"i4", I4_LOW, I4_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN}, {"i8", I8_LOW, I8_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"ui2", 0, UI2_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},    {"ui4", 0, UI4_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"ui8", 0, UI8_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
};

INTEGER_SOURCE_TESTS(ComUi2, IntegerSource<CS_USMALLINT>, "ui2", rows, false, CS_UINT, uint)
NUMBER_FRAME_TESTS(ComUi2, "ui2", "com_ui2")

} // namespace
