// Conversions from CS_INT.
#include "support/integer_source_tests.h"

namespace {

using namespace support;

// Destination, range, status below and above it.
const std::vector<RangeRow> rows = {
    {"i1", 0, 255, CS_EOVERFLOW, CS_EOVERFLOW},
    {"i2", I2_LOW, I2_HIGH, CS_EOVERFLOW, CS_EOVERFLOW},
    {"i4", I4_LOW, I4_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"i8", I8_LOW, I8_HIGH, CANNOT_HAPPEN, CANNOT_HAPPEN},
    {"ui2", 0, UI2_HIGH, CS_EUNDERFLOW, CS_EOVERFLOW},
    {"ui4", 0, UI4_HIGH, CS_EUNDERFLOW, CANNOT_HAPPEN},
    {"ui8", 0, UI8_HIGH, CS_EUNDERFLOW, CANNOT_HAPPEN},
};

INTEGER_SOURCE_TESTS(ComI4, IntegerSource<CS_INT>, "i4", rows, false, CS_INT, int)
NUMBER_FRAME_TESTS(ComI4, "i4", "com_i4")

TEST_F(ComI4, I1OfMinusOneIsOverflow) {
    const Outcome outcome = run(member("i1"), -1);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.destlen, 1);
    EXPECT_EQ(outcome.bytes[0], 0);
}

TEST_F(ComI4, UI2Of70000IsSaturated) {
    const Outcome outcome = run(member("ui2"), 70000);
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.value<CS_USMALLINT>(), 65535);
}

TEST_F(ComI4, CharThatDoesNotFitIsOneAsterisk) {
    const Outcome outcome = run(member("char"), 12345, format_of(CS_CHAR_TYPE, 3));
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.text(), "*");
    EXPECT_TRUE(outcome.untouched_from(1));
}

TEST_F(ComI4, AsteriskIsPaddedWithBlanks) {
    const Outcome outcome = run(member("char"), 12345, format_of(CS_CHAR_TYPE, 3, CS_FORMAT_BLANKPAD));
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.text(), "*  ");
}

TEST_F(ComI4, TextThatFillsTheRoomLeavesNoPlaceForTheNul) {
    const Outcome outcome = run(member("char"), 123, format_of(CS_CHAR_TYPE, 3, CS_FORMAT_NULLTERM));
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.text(), std::string("*\0", 2));
    EXPECT_TRUE(outcome.untouched_from(2));
}

TEST_F(ComI4, RoomOfOneByteIsLeftAlone) {
    const Outcome outcome = run(member("char"), 12345, format_of(CS_CHAR_TYPE, 1));
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.destlen, 1);
    EXPECT_TRUE(outcome.untouched_from(0));
}

// The padding of the asterisk answers CS_EFORMAT, which the overflow hides.
TEST_F(ComI4, AsteriskWithContradictingFormatIsStillOverflow) {
    const Outcome outcome =
        run(member("char"), 12345, format_of(CS_CHAR_TYPE, 3, CS_FORMAT_BLANKPAD | CS_FORMAT_ZEROPAD));
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.text(), "*");
}

// The text stands in the destination although the status is a failure.
TEST_F(ComI4, ContradictingFormatIsToldAfterTheCopy) {
    const Outcome outcome =
        run(member("char"), 123, format_of(CS_CHAR_TYPE, 30, CS_FORMAT_BLANKPAD | CS_FORMAT_ZEROPAD));
    EXPECT_EQ(outcome.status, CS_EFORMAT);
    EXPECT_EQ(outcome.text(), "123");
}

// Doubling quotes means nothing to a number, nor do bits that have no name.
TEST_F(ComI4, FormatBitsWithoutPaddingHaveNoEffect) {
    for (CS_INT format : {CS_INT(CS_FORMAT_ESCAPEQUOTE), 8, 16, -8}) {
        const Outcome outcome = run(member("char"), -123, format_of(CS_CHAR_TYPE, 30, format));
        EXPECT_EQ(outcome.status, CS_SUCCEED);
        EXPECT_EQ(outcome.text(), "-123");
        EXPECT_TRUE(outcome.untouched_from(4));
    }
}

TEST_F(ComI4, NumericPrecisionOfZero) {
    const Outcome outcome = run(member("num"), 1, numeric_format(0, 0));
    EXPECT_EQ(outcome.status, CS_EPRECISION);
    EXPECT_EQ(outcome.destlen, 35);
}

TEST_F(ComI4, BinOfThreeBytesKeepsTheLowOrderOnes) {
    const Outcome outcome = run(member("bin"), 0x01020304, format_of(CS_BINARY_TYPE, 3));
    EXPECT_EQ(outcome.status, CS_ETRUNCATED);
    EXPECT_EQ(outcome.text(), "\x04\x03\x02");
}

// A failure is traced with the file of the member, not of the rules it shares; what succeeds is not.
TEST_F(ComI4, FailureIsTracedWhereTheMemberStands) {
    FILE *log = std::tmpfile();
    ASSERT_NE(log, nullptr);
    Com_fp = log;
    com_errset(COM_TRACE_ERRORS);
    run(member("i1"), 256);
    run(member("i1"), 255);
    run(member("char"), 12345, format_of(CS_CHAR_TYPE, 1));
    com_errset(COM_TRACE_OFF);
    Com_fp = nullptr;
    std::rewind(log);
    char text[256] = {};
    const size_t length = std::fread(text, 1, sizeof text - 1, log);
    std::fclose(log);
    int lines[2] = {};
    char excess = 0;
    EXPECT_EQ(std::sscanf(text, "(4294967195) file com_i4.cpp, line %d\n(4294967195) file com_i4.cpp, line %d\n%c",
                          &lines[0], &lines[1], &excess),
              2)
        << std::string(text, length);
    EXPECT_NE(lines[0], lines[1]);
}

} // namespace
