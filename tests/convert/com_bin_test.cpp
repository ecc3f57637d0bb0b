// Bytes of fixed-width values to the binary group.
#include "support/assertions.h"
#include "support/number_models.h"

#include <array>
#include <limits>
#include <numeric>

namespace {

using namespace support;

class FixedBytes : public ConversionTest {
protected:
    using Helper = CS_RETCODE (*)(CS_CONTEXT *, CS_DATAFMT *, CS_VOID *, CS_DATAFMT *, CS_VOID *, CS_INT *, CS_INT);

    FixedBytes() { std::iota(source.begin(), source.end(), CS_BYTE(1)); }

    Outcome run(Helper helper, CS_INT width, const CS_DATAFMT &format) {
        CS_DATAFMT srcfmt = format_of(CS_INT_TYPE);
        Outcome outcome;
        outcome.destfmt = format;
        outcome.status =
            helper(context(), &srcfmt, source.data(), &outcome.destfmt, outcome.bytes.data(), &outcome.destlen, width);
        return outcome;
    }
    Expected leading_bytes(CS_INT count, size_t at = 0) const {
        Expected expected;
        std::copy_n(source.begin(), count, expected.bytes.begin() + static_cast<std::ptrdiff_t>(at));
        return expected;
    }

    // Every argument null in turn, then what each helper alone asserts.
    void reports_null_pointers(Helper helper, CS_INT id) {
        const ReturningAssertions assertions;
        for (unsigned nulls = 1; nulls < 64; ++nulls) {
            CS_DATAFMT srcfmt = format_of(CS_INT_TYPE);
            Outcome outcome;
            outcome.destfmt = format_of(id, 64);
            EXPECT_EQ(helper((nulls & 1) != 0 ? nullptr : context(), (nulls & 2) != 0 ? nullptr : &srcfmt,
                             (nulls & 4) != 0 ? nullptr : source.data(), (nulls & 8) != 0 ? nullptr : &outcome.destfmt,
                             (nulls & 16) != 0 ? nullptr : outcome.bytes.data(),
                             (nulls & 32) != 0 ? nullptr : &outcome.destlen, 4),
                      CS_FAIL);
            EXPECT_EQ(assertions.count(), static_cast<int>(nulls));
            EXPECT_TRUE(outcome.untouched());
        }
    }
    void reports(Helper helper, CS_INT width, const CS_DATAFMT &format) {
        const ReturningAssertions assertions;
        const Outcome outcome = run(helper, width, format);
        EXPECT_EQ(outcome.status, CS_FAIL);
        EXPECT_EQ(assertions.count(), 1);
        EXPECT_TRUE(outcome.untouched());
    }

    std::array<CS_BYTE, 512> source;
};

TEST_F(FixedBytes, BinTakesWhatTheRoomHolds) {
    for (CS_INT id : {1, 3, 5})
        for (CS_INT width = 1; width <= 40; ++width)
            for (CS_INT room = 0; room <= 48; ++room)
                for (CS_INT format = 0; format < 8; ++format) {
                    Expected expected = leading_bytes(std::min(width, room));
                    expected.destlen = std::min(width, room);
                    if (room < width)
                        expected.status = CS_ETRUNCATED;
                    else if ((format & CS_FORMAT_ZEROPAD) != 0) {
                        std::fill_n(expected.bytes.begin() + width, room - width, CS_BYTE(0));
                        expected.destlen = room;
                    }
                    expect_outcome(run(comn_fixedtobin, width, format_of(id, room, format)), expected,
                                   std::to_string(width) + " in " + std::to_string(room));
                }
}

TEST_F(FixedBytes, BinWithoutRoomIsTruncated) {
    const Outcome outcome = run(comn_fixedtobin, 4, format_of(CS_BINARY_TYPE, 0));
    EXPECT_EQ(outcome.status, CS_ETRUNCATED);
    EXPECT_EQ(outcome.destlen, 0);
    EXPECT_TRUE(outcome.untouched_from(0));
}

TEST_F(FixedBytes, VarbinHoldsUpTo256Bytes) {
    for (CS_INT width : {0, 1, 2, 8, 35, 254, 255, 256}) {
        Expected expected = leading_bytes(width, 2);
        expected.put(0, {static_cast<char>(width & 0xFF), static_cast<char>(width >> 8)});
        expected.destlen = 258;
        expect_outcome(run(comn_fixedtovarbin, width, format_of(CS_VARBINARY_TYPE)), expected, std::to_string(width));
    }
}

TEST_F(FixedBytes, VarbinOfMoreThan256BytesIsOverflow) {
    for (CS_INT width : {257, 300, std::numeric_limits<CS_INT>::max()}) {
        Expected expected = leading_bytes(256, 2);
        expected.put(0, std::string("\0\1", 2));
        expected.destlen = 258;
        expected.status = CS_EOVERFLOW;
        expect_outcome(run(comn_fixedtovarbin, width, format_of(CS_VARBINARY_TYPE)), expected, std::to_string(width));
    }
}

// A negative width copies as much as the record holds, with no complaint.
TEST_F(FixedBytes, VarbinOfANegativeWidthIs256Bytes) {
    for (CS_INT width : {-1, -9, std::numeric_limits<CS_INT>::min()}) {
        Expected expected = leading_bytes(256, 2);
        expected.put(0, std::string("\0\1", 2));
        expected.destlen = 258;
        expect_outcome(run(comn_fixedtovarbin, width, format_of(CS_VARBINARY_TYPE)), expected, std::to_string(width));
    }
}

TEST_F(FixedBytes, NullPointersAreReportedAndNothingIsTouched) {
    reports_null_pointers(comn_fixedtobin, CS_BINARY_TYPE);
    reports_null_pointers(comn_fixedtovarbin, CS_VARBINARY_TYPE);
}

TEST_F(FixedBytes, WrongIdsAreReportedAndNothingIsTouched) {
    for (CS_INT id = -1; id <= 41; ++id) {
        if (id != 1 && id != 3 && id != 5)
            reports(comn_fixedtobin, 4, format_of(id, 64));
        if (id != 19)
            reports(comn_fixedtovarbin, 4, format_of(id, 64));
    }
}

TEST_F(FixedBytes, BinReportsARoomOrWidthThatIsNone) {
    reports(comn_fixedtobin, 4, format_of(CS_BINARY_TYPE, -1));
    reports(comn_fixedtobin, 0, format_of(CS_BINARY_TYPE, 8));
    reports(comn_fixedtobin, -1, format_of(CS_BINARY_TYPE, 8));
}

using FixedBytesDeathTest = FixedBytes;

TEST_F(FixedBytesDeathTest, ReportsNameTheFile) {
    CS_DATAFMT format = format_of(CS_BINARY_TYPE, 8);
    CS_INT destlen = 0;
    CS_BYTE dest[8];
    EXPECT_NULL_REPORT(comn_fixedtobin(context(), &format, nullptr, &format, dest, &destlen, 4), "com_bin");
    EXPECT_NULL_REPORT(comn_fixedtovarbin(context(), &format, nullptr, &format, dest, &destlen, 4), "com_bin");
    EXPECT_BOMB(run(comn_fixedtobin, 4, format_of(CS_VARBINARY_TYPE, 8)), "com_bin");
    EXPECT_BOMB(run(comn_fixedtobin, 4, format_of(CS_BINARY_TYPE, -1)), "com_bin");
    EXPECT_BOMB(run(comn_fixedtobin, 0, format_of(CS_BINARY_TYPE, 8)), "com_bin");
    EXPECT_BOMB(run(comn_fixedtovarbin, 4, format_of(CS_BINARY_TYPE, 8)), "com_bin");
}

} // namespace
