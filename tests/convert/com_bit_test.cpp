// Conversions from CS_BIT.
#include "support/assertions.h"
#include "support/number_frame_tests.h"
#include "support/number_models.h"

namespace {

using namespace support;

NUMBER_FRAME_TESTS(ComBit, "bit", "com_bit")

class ComBit : public ConversionTest {
protected:
    const std::vector<NumberMember> members = members_from("bit");

    Outcome run(CS_CONV_FUNC function, CS_BIT value, const CS_DATAFMT &format) {
        return convert(function, CS_BIT_TYPE, value, format);
    }
    template <class T>
    void expect_values(CS_CONV_FUNC function, CS_INT id) {
        for (CS_BIT value : {0, 1}) {
            const Outcome outcome = run(function, value, format_of(id));
            EXPECT_EQ(outcome.status, CS_SUCCEED);
            EXPECT_EQ(outcome.destlen, static_cast<CS_INT>(sizeof(T)));
            EXPECT_EQ(outcome.value<T>(), static_cast<T>(value));
            EXPECT_TRUE(outcome.untouched_from(sizeof(T)));
        }
    }
};

TEST_F(ComBit, HasFifteenMembersAndNoneToMoney) {
    EXPECT_EQ(members.size(), 15u);
    EXPECT_EQ(com_conv_func(context(), CS_BIT_TYPE, CS_MONEY_TYPE), nullptr);
    EXPECT_EQ(com_conv_func(context(), CS_BIT_TYPE, CS_MONEY4_TYPE), nullptr);
}

TEST_F(ComBit, NumbersHoldZeroOrOne) {
    expect_values<CS_TINYINT>(comn_bittoi1, CS_TINYINT_TYPE);
    expect_values<CS_SMALLINT>(comn_bittoi2, CS_SMALLINT_TYPE);
    expect_values<CS_INT>(comn_bittoi4, CS_INT_TYPE);
    expect_values<CS_BIGINT>(comn_bittoi8, CS_LONG_TYPE);
    expect_values<CS_BIGINT>(comn_bittoi8, CS_BIGINT_TYPE);
    expect_values<CS_USMALLINT>(comn_bittoui2, CS_USMALLINT_TYPE);
    expect_values<CS_UINT>(comn_bittoui4, CS_UINT_TYPE);
    expect_values<CS_UBIGINT>(comn_bittoui8, CS_UBIGINT_TYPE);
    expect_values<CS_BIT>(comn_bittobit, CS_BIT_TYPE);
    expect_values<CS_REAL>(comn_bittoflt4, CS_REAL_TYPE);
    expect_values<CS_FLOAT>(comn_bittoflt8, CS_FLOAT_TYPE);
}

TEST_F(ComBit, EveryOtherByteIsNoValueAndLeavesLengthAndDestination) {
    for (const NumberMember &member : members)
        for (int byte = 2; byte < 256; ++byte)
            for (CS_INT room : {0, 1, 64}) {
                CS_DATAFMT format = format_of(member.destination.ids[0], room, CS_FORMAT_BLANKPAD);
                format.precision = 10;
                const Outcome outcome = run(member.function, static_cast<CS_BIT>(byte), format);
                ASSERT_EQ(outcome.status, CS_EDOMAIN) << member << " of " << byte;
                ASSERT_TRUE(outcome.untouched()) << member << " of " << byte;
            }
}

// The byte is judged before the shape of the destination, and behind the caller's own mistakes.
TEST_F(ComBit, ByteIsJudgedBeforeThePrecision) {
    EXPECT_EQ(run(comn_bittonum, 2, numeric_format(0, 0)).status, CS_EDOMAIN);
    EXPECT_EQ(run(comn_bittonum, 2, numeric_format(10, -1)).status, CS_EDOMAIN);
}

TEST_F(ComBit, ByteIsJudgedBehindIdsAndRoom) {
    const ReturningAssertions assertions;
    EXPECT_EQ(run(comn_bittoi4, 2, format_of(CS_FLOAT_TYPE)).status, CS_FAIL);
    EXPECT_EQ(run(comn_bittochar, 2, format_of(CS_CHAR_TYPE, -1)).status, CS_FAIL);
    EXPECT_EQ(run(comn_bittobin, 2, format_of(CS_BINARY_TYPE, -1)).status, CS_FAIL);
    EXPECT_EQ(assertions.count(), 3);
}

TEST_F(ComBit, CharInEveryRoomAndFormat) {
    for (CS_BIT value : {0, 1})
        for (CS_INT room = 0; room <= 5; ++room)
            for (CS_INT format = 0; format < 8; ++format) {
                Expected expected;
                expected.destlen = 1;
                if (room > 0)
                    expected.put(0, value != 0 ? "1" : "0");
                model_padding(expected, 1, room, format);
                expect_outcome(run(comn_bittochar, value, format_of(CS_CHAR_TYPE, room, format)), expected,
                               "room " + std::to_string(room) + ", format " + std::to_string(format));
            }
}

TEST_F(ComBit, CharInNoRoomIsOverflow) {
    const Outcome outcome = run(comn_bittochar, 1, format_of(CS_CHAR_TYPE, 0));
    EXPECT_EQ(outcome.status, CS_EOVERFLOW);
    EXPECT_EQ(outcome.destlen, 1);
    EXPECT_TRUE(outcome.untouched_from(0));
}

TEST_F(ComBit, BinStoresTheByteInEveryRoomAndFormat) {
    for (CS_BIT value : {0, 1})
        for (CS_INT room = 0; room <= 5; ++room)
            for (CS_INT format = 0; format < 8; ++format) {
                Expected expected;
                expected.destlen = 1;
                if (room > 0)
                    expected.bytes[0] = value;
                if ((format & CS_FORMAT_ZEROPAD) != 0 && room > 1) {
                    expected.put(1, std::string(static_cast<size_t>(room - 1), '\0'));
                    expected.destlen = room;
                }
                expect_outcome(run(comn_bittobin, value, format_of(CS_IMAGE_TYPE, room, format)), expected,
                               "room " + std::to_string(room) + ", format " + std::to_string(format));
            }
}

// A room of 0 goes unnoticed, unlike in text.
TEST_F(ComBit, BinInNoRoomSucceedsWithALengthOfOne) {
    const Outcome outcome = run(comn_bittobin, 1, format_of(CS_BINARY_TYPE, 0));
    EXPECT_EQ(outcome.status, CS_SUCCEED);
    EXPECT_EQ(outcome.destlen, 1);
    EXPECT_TRUE(outcome.untouched_from(0));
}

TEST_F(ComBit, VarbinStoresACharacterWhereBinStoresTheByte) {
    for (CS_BIT value : {0, 1}) {
        const CS_BYTE character = value != 0 ? '1' : '0';
        const Outcome varbin = run(comn_bittovarbin, value, format_of(CS_VARBINARY_TYPE));
        EXPECT_EQ(varbin.value<CS_VARBINARY>().len, 1);
        EXPECT_EQ(varbin.value<CS_VARBINARY>().array[0], character);
        EXPECT_TRUE(varbin.untouched_from(3));
        EXPECT_EQ(run(comn_bittobin, value, format_of(CS_BINARY_TYPE, 1)).bytes[0], value);
    }
}

TEST_F(ComBit, VarcharStoresACharacterWithoutANul) {
    for (CS_BIT value : {0, 1}) {
        const Outcome outcome = run(comn_bittovarchar, value, format_of(CS_VARCHAR_TYPE));
        EXPECT_EQ(outcome.varchar(), value != 0 ? "1" : "0");
        EXPECT_TRUE(outcome.untouched_from(3));
    }
}

TEST_F(ComBit, VariableLengthRecordsDoNotSetTheLength) {
    for (CS_BIT value : {0, 1}) {
        const Outcome varchar = run(comn_bittovarchar, value, format_of(CS_VARCHAR_TYPE));
        EXPECT_EQ(varchar.status, CS_SUCCEED);
        EXPECT_EQ(varchar.destlen, UNTOUCHED_LENGTH);
        const Outcome varbin = run(comn_bittovarbin, value, format_of(CS_VARBINARY_TYPE));
        EXPECT_EQ(varbin.status, CS_SUCCEED);
        EXPECT_EQ(varbin.destlen, UNTOUCHED_LENGTH);
    }
}

TEST_F(ComBit, NumericHoldsTheValue) {
    for (CS_BIT value : {0, 1})
        for (CS_INT precision : {1, 10, 77})
            for (CS_INT scale : {0, 1, 5})
                NumericModel(value != 0 ? "1" : "0", static_cast<unsigned>(precision), static_cast<unsigned>(scale))
                    .expect_in(run(comn_bittonum, value, numeric_format(precision, scale)), "bit to numeric");
}

TEST_F(ComBit, NumericShapesOutsideTheRangeLeaveTheRecord) {
    EXPECT_EQ(run(comn_bittonum, 1, numeric_format(CS_VALUE_FROM_SOURCE, 0)).status, CS_EPRECISION);
    const Outcome outcome = run(comn_bittonum, 1, numeric_format(10, 78));
    EXPECT_EQ(outcome.status, CS_ESCALE);
    EXPECT_EQ(outcome.destlen, 35);
    EXPECT_TRUE(outcome.untouched_from(0));
}

} // namespace
