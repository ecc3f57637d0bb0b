// Null substitution values: the defaults row by row, what is handed out, replacement and restoring.
#include "support/failing_allocator.h"

#include "frame/null_fixture.h"
#include "support/assertions.h"

#include <climits>
#include <cstdlib>

namespace {

using support::BareContext;
using support::ComNull;
using support::FailingAllocator;
using support::format_of;
using support::numeric_format;
using support::ReturningAssertions;
using support::Types;
using support::UNTOUCHED;
using support::UNTOUCHED_LENGTH;

// ---- The defaults ---------------------------------------------------------------------------

enum Bytes { NONE, ZEROS, NUMERIC, LOCATOR };

struct Default {
    CS_INT size;
    CS_INT padtype; // 1 character, 2 binary, 3 none, 4 Unicode
    Bytes bytes;
};

constexpr Default defaults[40] = {
    {0, 1, NONE},     // 0 char
    {0, 1, NONE},     // 1 binary
    {0, 2, NONE},     // 2 longchar
    {0, 2, NONE},     // 3 longbinary
    {0, 1, NONE},     // 4 text
    {0, 2, NONE},     // 5 image
    {1, 3, ZEROS},    // 6 tinyint
    {2, 3, ZEROS},    // 7 smallint
    {4, 3, ZEROS},    // 8 int
    {4, 3, ZEROS},    // 9 real
    {8, 3, ZEROS},    // 10 float
    {1, 3, ZEROS},    // 11 bit
    {8, 3, ZEROS},    // 12 datetime
    {8, 3, ZEROS},    // 13 datetime4
    {8, 3, ZEROS},    // 14 money
    {8, 3, ZEROS},    // 15 money4
    {35, 3, NUMERIC}, // 16 numeric
    {35, 3, NUMERIC}, // 17 decimal
    {258, 3, ZEROS},  // 18 varchar
    {258, 3, ZEROS},  // 19 varbinary
    {8, 3, ZEROS},    // 20 long
    {0, 1, NONE},     // 21 sensitivity
    {0, 1, NONE},     // 22 boundary
    {4, 3, ZEROS},    // 23 void
    {2, 3, ZEROS},    // 24 ushort
    {1, 4, ZEROS},    // 25 unichar
    {4, 3, ZEROS},    // 26 blob
    {4, 3, ZEROS},    // 27 date
    {4, 3, ZEROS},    // 28 time
    {1, 4, ZEROS},    // 29 unitext
    {8, 3, ZEROS},    // 30 bigint
    {2, 3, ZEROS},    // 31 usmallint
    {4, 3, ZEROS},    // 32 uint
    {8, 3, ZEROS},    // 33 ubigint
    {0, 1, NONE},     // 34 xml
    {8, 3, ZEROS},    // 35 bigdatetime
    {8, 3, ZEROS},    // 36 bigtime
    {48, 3, LOCATOR}, // 37 text locator
    {48, 3, LOCATOR}, // 38 image locator
    {48, 3, LOCATOR}, // 39 unitext locator
};

std::string bytes_of(const Default &row) {
    std::string bytes(static_cast<size_t>(row.size), '\0');
    if (row.bytes == NUMERIC)
        bytes[0] = 18;
    if (row.bytes == LOCATOR) {
        const CS_INT tag = -779;
        std::memcpy(bytes.data(), &tag, sizeof tag);
    }
    return bytes;
}

std::string held_by(const CsDefVal &value) {
    return {static_cast<const char *>(value.dventity), static_cast<size_t>(value.dvsize)};
}

TEST(ComNullDefaults, EachRowHasItsSizePadTypeAndBytes) {
    for (int id = 0; id < 40; ++id) {
        EXPECT_EQ(Comv_values[id].dvsize, defaults[id].size) << id;
        EXPECT_EQ(Comv_values[id].dvpadtype, defaults[id].padtype) << id;
        EXPECT_EQ(held_by(Comv_values[id]), bytes_of(defaults[id])) << id;
    }
}

TEST(ComNullDefaults, OddityBinaryPadsAsCharacterAndLongcharAsBinary) {
    EXPECT_EQ(Comv_values[CS_BINARY_TYPE].dvpadtype, CS_NULLPAD_CHAR);
    EXPECT_EQ(Comv_values[CS_LONGCHAR_TYPE].dvpadtype, CS_NULLPAD_BINARY);
}

TEST(ComNullDefaults, OddityShortDateAndShortMoneyHoldEightBytes) {
    EXPECT_EQ(Comv_values[CS_DATETIME4_TYPE].dvsize, 8);
    EXPECT_EQ(Comv_values[CS_MONEY4_TYPE].dvsize, 8);
}

// ---- com_null_init, com_null_free -----------------------------------------------------------

TEST_F(ComNull, InitGivesTheContextItsOwnCopyOfEachDefault) {
    EXPECT_EQ(context->ctxnulls.nulldim, 40);
    ASSERT_NE(context->ctxnulls.nullvals, nullptr);
    for (int id = 0; id < 40; ++id) {
        const CsDefVal &value = context->ctxnulls.nullvals[id];
        ASSERT_NE(value.dventity, nullptr) << id;
        EXPECT_NE(value.dventity, Comv_values[id].dventity) << id;
        EXPECT_EQ(value.dvsize, defaults[id].size) << id;
        EXPECT_EQ(value.dvpadtype, defaults[id].padtype) << id;
        EXPECT_EQ(held_by(value), bytes_of(defaults[id])) << id;
        for (int other = 0; other < id; ++other)
            EXPECT_NE(value.dventity, context->ctxnulls.nullvals[other].dventity);
    }
    EXPECT_EQ(context->ctxusrnulls, nullptr);
}

TEST_F(ComNull, InitEmptiesTheUserList) {
    BareContext own;
    own->ctxusrnulls = reinterpret_cast<CsUsrNull *>(0x1000); // whatever was there
    EXPECT_EQ(com_null_init(own), CS_SUCCEED);
    EXPECT_EQ(own->ctxusrnulls, nullptr);
}

int owner_allocations = 0;

TEST_F(ComNull, UsesThePlainAllocatorAndNotTheOwners) {
    BareContext own;
    owner_allocations = 0;
    own->ctxmalloc = [](CS_CONTEXT *, CS_UINT) -> CS_VOID * {
        ++owner_allocations;
        return nullptr;
    };
    EXPECT_EQ(com_null_init(own), CS_SUCCEED);
    char value[] = "ab";
    EXPECT_EQ(com_null_set(own, 8, value, 2), CS_SUCCEED);
    EXPECT_EQ(com_null_set(own, 100, value, 2), CS_SUCCEED);
    EXPECT_EQ(com_null_reinstall(own, 8), CS_SUCCEED);
    EXPECT_EQ(com_null_reinstall(own, 100), CS_SUCCEED);
    EXPECT_EQ(owner_allocations, 0);
}

TEST_F(ComNull, FreeReleasesTheTableAndMayBeCalledTwice) {
    BareContext own;
    int held, left;
    {
        FailingAllocator allocator;
        com_null_init(own);
        held = allocator.held();
        com_null_free(own);
        com_null_free(own);
        left = allocator.held();
    }
    EXPECT_EQ(held, 1 + 40);
    EXPECT_EQ(left, 0);
    EXPECT_EQ(own->ctxnulls.nullvals, nullptr);
    EXPECT_EQ(own->ctxnulls.nulldim, 0);
    EXPECT_EQ(own->ctxusrnulls, nullptr);
}

TEST_F(ComNull, FreeTakesATableWithMissingValues) {
    BareContext own;
    ASSERT_EQ(com_null_init(own), CS_SUCCEED);
    CS_INT value = 5;
    com_null_set(own, 8, &value, 0);
    EXPECT_EQ(own->ctxnulls.nullvals[8].dventity, nullptr);
    EXPECT_EQ(com_null_free(own), CS_SUCCEED);
    BareContext never_initialised;
    EXPECT_EQ(com_null_free(never_initialised), CS_SUCCEED);
}

TEST_F(ComNull, OddityFreeLeavesTheValuesOfUserTypesAllocated) {
    BareContext own;
    CS_VOID *values[3];
    int left;
    {
        FailingAllocator allocator;
        com_null_init(own);
        char value[] = "abc";
        for (CS_INT i = 0; i < 3; ++i) {
            com_null_set(own, 100 + i, value, 3);
            values[i] = own->ctxusrnulls->dventity;
        }
        com_null_free(own);
        left = allocator.held();
    }
    EXPECT_EQ(left, 3);
    EXPECT_EQ(own->ctxusrnulls, nullptr);
    for (CS_VOID *value : values) {
        EXPECT_EQ(std::memcmp(value, "abc", 3), 0);
        std::free(value);
    }
}

// ---- com_null_get: built-in types -----------------------------------------------------------

TEST_F(ComNull, FixedTypesStoreTheirDefault) {
    for (int id = 0; id < 40; ++id) {
        if (defaults[id].padtype != 3 || id == 16 || id == 17)
            continue;
        const CS_INT width = comn_typelen(id, 48);
        const Got got = get(id, width, CS_FORMAT_NULLTERM | CS_FORMAT_ZEROPAD | CS_FORMAT_BLANKPAD);
        EXPECT_EQ(got.status, CS_SUCCEED) << id;
        EXPECT_EQ(got.length, std::min(defaults[id].size, width)) << id;
        EXPECT_EQ(got.text(), bytes_of(defaults[id]).substr(0, static_cast<size_t>(got.length))) << id;
        EXPECT_TRUE(got.untouched_from(static_cast<size_t>(got.length))) << id;
    }
}

TEST_F(ComNull, EightStoredBytesOfAShortDateOrMoneyAreCappedAtTheRoom) {
    for (const CS_INT type : {CS_DATETIME4_TYPE, CS_MONEY4_TYPE}) {
        const Got four = get(type, 4);
        EXPECT_EQ(four.length, 4);
        EXPECT_TRUE(four.untouched_from(4));
        const Got eight = get(type, 100);
        EXPECT_EQ(eight.length, 8) << "a larger room shows all eight";
        EXPECT_TRUE(eight.untouched_from(8));
    }
}

TEST_F(ComNull, IntIntoTwoBytesStoresTwoZeroBytes) {
    const Got got = get(CS_INT_TYPE, 2);
    EXPECT_EQ(got.status, CS_SUCCEED);
    EXPECT_EQ(got.length, 2);
    EXPECT_EQ(got.text(), std::string(2, '\0'));
    EXPECT_TRUE(got.untouched_from(2));
}

TEST_F(ComNull, NoRoomStoresNothing) {
    for (const CS_INT room : {0, -1, INT_MIN})
        for (int id = 0; id < 40; ++id) {
            const Got got = get(format_of(id, 0), room);
            EXPECT_EQ(got.status, CS_SUCCEED) << id;
            EXPECT_EQ(got.length, 0) << id;
            EXPECT_TRUE(got.untouched_from(0)) << id;
        }
}

TEST_F(ComNull, LocatorCarriesItsTag) {
    for (const CS_INT type : {CS_TEXTLOCATOR_TYPE, CS_IMAGELOCATOR_TYPE, CS_UNITEXTLOCATOR_TYPE}) {
        const Got got = get(type, sizeof(CS_LOCATOR));
        CS_LOCATOR locator;
        std::memcpy(&locator, got.bytes, sizeof locator);
        EXPECT_EQ(locator.locatortag, CS_LOCATOR_MAGIC);
        EXPECT_EQ(locator.locatortype, 0);
        EXPECT_EQ(locator.locatorlen, 0);
        EXPECT_EQ(locator.locator, nullptr);
        EXPECT_EQ(locator.prefetchlen, 0);
        EXPECT_EQ(locator.prefetchdata, nullptr);
        EXPECT_EQ(locator.totalloblen, 0);
    }
}

// The types that pad as text, CS_BINARY among them.
constexpr CS_INT padded_as_text[] = {0, 1, 4, 21, 22, 34};

TEST_F(ComNull, TextWithoutFlagsStoresNothing) {
    for (const CS_INT type : padded_as_text) {
        const Got got = get(type, 5);
        EXPECT_EQ(got.status, CS_SUCCEED);
        EXPECT_EQ(got.length, 0);
        EXPECT_TRUE(got.untouched_from(0));
    }
}

TEST_F(ComNull, TextWithBlankPaddingIsBlanks) {
    for (const CS_INT type : padded_as_text) {
        const Got got = get(type, 5, CS_FORMAT_BLANKPAD);
        EXPECT_EQ(got.status, CS_SUCCEED);
        EXPECT_EQ(got.text(), "     ");
        EXPECT_TRUE(got.untouched_from(5));
    }
}

TEST_F(ComNull, TextWithATerminatorIsANul) {
    for (const CS_INT type : padded_as_text) {
        const Got got = get(type, 5, CS_FORMAT_NULLTERM);
        EXPECT_EQ(got.status, CS_SUCCEED);
        EXPECT_EQ(got.text(), std::string(1, '\0'));
        EXPECT_TRUE(got.untouched_from(1));
    }
}

TEST_F(ComNull, TextWithZeroPaddingIsZeros) {
    for (const CS_INT type : padded_as_text) {
        const Got got = get(type, 5, CS_FORMAT_ZEROPAD);
        EXPECT_EQ(got.status, CS_SUCCEED);
        EXPECT_EQ(got.text(), std::string(5, '\0'));
        EXPECT_TRUE(got.untouched_from(5));
    }
}

TEST_F(ComNull, TextWithBlanksAndATerminatorEndsInANul) {
    EXPECT_EQ(get(CS_CHAR_TYPE, 5, CS_FORMAT_BLANKPAD | CS_FORMAT_NULLTERM).text(), std::string("    \0", 5));
}

TEST_F(ComNull, PaddingStatusesArePassedOn) {
    for (const CS_INT type : padded_as_text) {
        const Got no_room = get(type, 0, CS_FORMAT_NULLTERM);
        EXPECT_EQ(no_room.status, CS_EOVERFLOW);
        EXPECT_EQ(no_room.length, 0);
        EXPECT_TRUE(no_room.untouched_from(0));
        const Got both = get(type, 5, CS_FORMAT_ZEROPAD | CS_FORMAT_BLANKPAD);
        EXPECT_EQ(both.status, CS_EFORMAT);
        EXPECT_EQ(both.length, 0);
        EXPECT_TRUE(both.untouched_from(0));
    }
}

TEST_F(ComNull, BinaryPaddingKnowsZerosOnly) {
    for (const CS_INT type : {2, 3, 5}) { // CS_LONGCHAR among them
        EXPECT_EQ(get(type, 5, CS_FORMAT_ZEROPAD).text(), std::string(5, '\0'));
        const Got got = get(type, 5, CS_FORMAT_BLANKPAD | CS_FORMAT_NULLTERM);
        EXPECT_EQ(got.status, CS_SUCCEED);
        EXPECT_EQ(got.length, 0);
        EXPECT_TRUE(got.untouched_from(0));
    }
}

TEST_F(ComNull, OddityNullForBinaryIsPaddedAsTextAndForLongcharAsBinary) {
    EXPECT_EQ(get(CS_BINARY_TYPE, 3, CS_FORMAT_BLANKPAD).text(), "   ");
    EXPECT_EQ(get(CS_LONGCHAR_TYPE, 3, CS_FORMAT_BLANKPAD).length, 0);
}

TEST_F(ComNull, UnicharStoresItsOneZeroByteWithoutFlags) {
    for (const CS_INT type : {CS_UNICHAR_TYPE, CS_UNITEXT_TYPE}) {
        const Got got = get(type, 10);
        EXPECT_EQ(got.status, CS_SUCCEED);
        EXPECT_EQ(got.length, 1);
        EXPECT_EQ(got.bytes[0], 0);
        EXPECT_TRUE(got.untouched_from(1));
    }
}

TEST_F(ComNull, UnicharIsPaddedInUnitsFromAnEvenOffset) {
    const auto units = [](const Got &got, size_t count) {
        std::vector<CS_UNICHAR> result(count);
        std::memcpy(result.data(), got.bytes, count * 2);
        return result;
    };
    const Got zeros = get(CS_UNICHAR_TYPE, 6, CS_FORMAT_ZEROPAD);
    EXPECT_EQ(zeros.text(), std::string(6, '\0'));
    EXPECT_TRUE(zeros.untouched_from(6));
    // The stored byte counts against the room: (9 - 1) / 2 units, the first over that byte.
    const Got blanks = get(CS_UNITEXT_TYPE, 9, CS_FORMAT_BLANKPAD);
    EXPECT_EQ(blanks.status, CS_SUCCEED);
    EXPECT_EQ(blanks.length, 9);
    EXPECT_EQ(units(blanks, 4), (std::vector<CS_UNICHAR>{32, 32, 32, 32}));
    EXPECT_TRUE(blanks.untouched_from(8));
    const Got ended = get(CS_UNITEXT_TYPE, 9, CS_FORMAT_BLANKPAD | CS_FORMAT_NULLTERM);
    EXPECT_EQ(units(ended, 4), (std::vector<CS_UNICHAR>{32, 32, 32, 0}));
    const Got terminated = get(CS_UNITEXT_TYPE, 9, CS_FORMAT_NULLTERM);
    EXPECT_EQ(terminated.length, 3);
    EXPECT_EQ(units(terminated, 1), (std::vector<CS_UNICHAR>{0}));
    EXPECT_TRUE(terminated.untouched_from(2));
}

TEST_F(ComNull, UnicharTerminatorNeedsAUnitBehindTheStoredByte) {
    const Got got = get(CS_UNICHAR_TYPE, 2, CS_FORMAT_NULLTERM);
    EXPECT_EQ(got.status, CS_EOVERFLOW);
    EXPECT_EQ(got.bytes[0], 0);
    EXPECT_EQ(got.bytes[1], 0);
    EXPECT_TRUE(got.untouched_from(2));
}

// Bytes of a numeric with its precision, sign byte included.
constexpr CS_INT numeric_length(int precision) {
    // The least n with 256^n > 10^precision - 1, and the sign byte.
    constexpr double BITS_PER_DIGIT = 3.3219280948873623;
    return 1 + static_cast<CS_INT>((precision * BITS_PER_DIGIT + 8) / 8);
}

TEST_F(ComNull, NumericHasTheLengthOfItsPrecisionAndCarriesPrecisionAndScale) {
    for (const CS_INT type : {CS_NUMERIC_TYPE, CS_DECIMAL_TYPE})
        for (CS_INT precision = 1; precision <= 77; ++precision) {
            const CS_INT scale = precision / 2;
            const Got got = get(numeric_format(precision, scale, type), sizeof(CS_NUMERIC));
            EXPECT_EQ(got.status, CS_SUCCEED) << precision;
            ASSERT_EQ(got.length, numeric_length(precision) + 2) << precision;
            EXPECT_EQ(got.bytes[0], precision);
            EXPECT_EQ(got.bytes[1], scale);
            EXPECT_EQ(got.text().substr(2), std::string(static_cast<size_t>(got.length) - 2, '\0')) << precision;
            EXPECT_TRUE(got.untouched_from(static_cast<size_t>(got.length))) << precision;
        }
}

TEST_F(ComNull, NumericOfPrecisionTenAndScaleTwo) {
    const Got got = get(numeric_format(10, 2), sizeof(CS_NUMERIC));
    EXPECT_EQ(got.length, 6 + 2);
    EXPECT_EQ(got.text(), std::string("\x0A\x02\0\0\0\0\0\0", 8));
}

TEST_F(ComNull, NumericOfAnotherPrecisionHasTheWholeRecord) {
    for (const CS_INT precision : {0, 78, -1, CS_VALUE_FROM_SOURCE, 300}) {
        const Got got = get(numeric_format(precision, 300), 40);
        EXPECT_EQ(got.status, CS_SUCCEED);
        EXPECT_EQ(got.length, 35);
        EXPECT_EQ(got.bytes[0], static_cast<CS_BYTE>(precision)) << "cut to a byte";
        EXPECT_EQ(got.bytes[1], static_cast<CS_BYTE>(300));
        EXPECT_TRUE(got.untouched_from(35));
    }
}

TEST_F(ComNull, NumericNeverWritesPastTheRoom) {
    for (CS_INT room = 0; room <= 8; ++room) {
        const Got got = get(numeric_format(10, 2), room);
        EXPECT_EQ(got.status, CS_SUCCEED);
        EXPECT_EQ(got.length, room);
        EXPECT_EQ(got.text(), std::string("\x0A\x02\0\0\0\0\0\0", 8).substr(0, static_cast<size_t>(room)));
        EXPECT_TRUE(got.untouched_from(static_cast<size_t>(room))) << room;
    }
}

TEST_F(ComNull, NumericSetWithFewerBytesThanItsPrecisionReadsAsZerosBehind) {
    set(CS_NUMERIC_TYPE, "\x05\x01\x01\x7F");
    const Got got = get(numeric_format(10, 2), sizeof(CS_NUMERIC));
    EXPECT_EQ(got.text(), std::string("\x0A\x02\x01\x7F\0\0\0\0", 8));
    EXPECT_TRUE(got.untouched_from(8));
    const Got whole = get(numeric_format(0, 2), sizeof(CS_NUMERIC));
    EXPECT_EQ(whole.text(), std::string("\0\x02\x01\x7F", 4));
}

TEST_F(ComNull, OddityPrecisionAndScaleAreWrittenBehindAValueOfOneByte) {
    set(CS_NUMERIC_TYPE, "\x05");
    const Got got = get(numeric_format(0, 2), sizeof(CS_NUMERIC));
    EXPECT_EQ(got.length, 1);
    EXPECT_EQ(got.bytes[0], 0);
    EXPECT_EQ(got.bytes[1], 2);
    EXPECT_TRUE(got.untouched_from(2));
}

TEST_F(ComNull, PrecisionOfOtherTypesMeansNothing) {
    CS_DATAFMT destfmt = numeric_format(10, 2, CS_BIGINT_TYPE);
    const Got got = get(destfmt, 8);
    EXPECT_EQ(got.text(), std::string(8, '\0'));
}

// ---- com_null_set and com_null_reinstall: built-in types -------------------------------------

TEST_F(ComNull, SetReplacesTheValueAndReinstallBringsTheDefaultBack) {
    EXPECT_EQ(set(CS_INT_TYPE, "wxyz"), CS_SUCCEED);
    EXPECT_EQ(get(CS_INT_TYPE, 4).text(), "wxyz");
    EXPECT_EQ(held_by(Comv_values[CS_INT_TYPE]), std::string(4, '\0'));
    EXPECT_EQ(com_null_reinstall(context, CS_INT_TYPE), CS_SUCCEED);
    EXPECT_EQ(get(CS_INT_TYPE, 4).text(), std::string(4, '\0'));
}

TEST_F(ComNull, SetCopiesTheBytes) {
    char value[] = "wxyz";
    com_null_set(context, CS_INT_TYPE, value, 4);
    std::memcpy(value, "----", 4);
    EXPECT_EQ(get(CS_INT_TYPE, 4).text(), "wxyz");
}

TEST_F(ComNull, SetReachesOnlyItsContext) {
    BareContext other;
    ASSERT_EQ(com_null_init(other), CS_SUCCEED);
    set(CS_INT_TYPE, "wxyz");
    EXPECT_EQ(held_by(other->ctxnulls.nullvals[CS_INT_TYPE]), std::string(4, '\0'));
}

TEST_F(ComNull, EachTypeTakesAnySizeAndGetsItsDefaultBack) {
    for (int id = 0; id < 40; ++id)
        for (const size_t size : {1u, 2u, 5u, 34u, 35u, 36u, 47u, 48u, 100u, 300u}) {
            const std::string value(size, static_cast<char>('a' + id % 26));
            ASSERT_EQ(set(id, value), CS_SUCCEED);
            EXPECT_EQ(context->ctxnulls.nullvals[id].dvsize, CS_INT(size));
            EXPECT_EQ(context->ctxnulls.nullvals[id].dvpadtype, defaults[id].padtype) << "a set keeps the pad type";
            EXPECT_EQ(held_by(context->ctxnulls.nullvals[id]), value) << id;
            ASSERT_EQ(com_null_reinstall(context, id), CS_SUCCEED);
            EXPECT_EQ(context->ctxnulls.nullvals[id].dvsize, defaults[id].size);
            EXPECT_EQ(context->ctxnulls.nullvals[id].dvpadtype, defaults[id].padtype);
            EXPECT_EQ(held_by(context->ctxnulls.nullvals[id]), bytes_of(defaults[id])) << id << ", " << size;
        }
}

TEST_F(ComNull, ReinstallKeepsTheMemoryWhereTheValueIsLargeEnough) {
    set(CS_INT_TYPE, "wxyz and more");
    const CS_VOID *before = context->ctxnulls.nullvals[CS_INT_TYPE].dventity;
    EXPECT_EQ(com_null_reinstall(context, CS_INT_TYPE), CS_SUCCEED);
    EXPECT_EQ(context->ctxnulls.nullvals[CS_INT_TYPE].dventity, before);
}

TEST_F(ComNull, ReinstallBringsThePadTypeBackToo) {
    context->ctxnulls.nullvals[CS_CHAR_TYPE].dvpadtype = CS_NULLPAD_NONE;
    EXPECT_EQ(com_null_reinstall(context, CS_CHAR_TYPE), CS_SUCCEED);
    EXPECT_EQ(context->ctxnulls.nullvals[CS_CHAR_TYPE].dvpadtype, CS_NULLPAD_CHAR);
}

TEST_F(ComNull, SetTextIsPaddedBehindItsBytes) {
    set(CS_CHAR_TYPE, "abc");
    EXPECT_EQ(get(CS_CHAR_TYPE, 6).text(), "abc");
    EXPECT_EQ(get(CS_CHAR_TYPE, 6, CS_FORMAT_BLANKPAD).text(), "abc   ");
    EXPECT_EQ(get(CS_CHAR_TYPE, 6, CS_FORMAT_ZEROPAD).text(), std::string("abc\0\0\0", 6));
    EXPECT_EQ(get(CS_CHAR_TYPE, 6, CS_FORMAT_NULLTERM).text(), std::string("abc\0", 4));
    EXPECT_EQ(get(CS_CHAR_TYPE, 2).text(), "ab") << "cut to the room without a status";
    EXPECT_EQ(get(CS_CHAR_TYPE, 2).status, CS_SUCCEED);
    const Got full = get(CS_CHAR_TYPE, 3, CS_FORMAT_NULLTERM);
    EXPECT_EQ(full.status, CS_EOVERFLOW);
    EXPECT_EQ(full.text(), std::string("ab\0", 3));
    EXPECT_TRUE(full.untouched_from(3));
}

TEST_F(ComNull, SetBinaryIsPaddedBehindItsBytes) {
    set(CS_IMAGE_TYPE, "abc");
    EXPECT_EQ(get(CS_IMAGE_TYPE, 6, CS_FORMAT_ZEROPAD).text(), std::string("abc\0\0\0", 6));
    EXPECT_EQ(get(CS_IMAGE_TYPE, 6, CS_FORMAT_NULLTERM | CS_FORMAT_BLANKPAD).text(), "abc");
}

TEST_F(ComNull, SetByTheValueItselfKeepsTheBytes) {
    set(CS_INT_TYPE, "wxyz");
    EXPECT_EQ(com_null_set(context, CS_INT_TYPE, context->ctxnulls.nullvals[CS_INT_TYPE].dventity, 4), CS_SUCCEED);
    EXPECT_EQ(get(CS_INT_TYPE, 4).text(), "wxyz");
}

TEST_F(ComNull, SetWithNoBytesLeavesNoValue) {
    EXPECT_EQ(set(CS_INT_TYPE, ""), CS_SUCCEED);
    EXPECT_EQ(context->ctxnulls.nullvals[CS_INT_TYPE].dventity, nullptr);
    EXPECT_EQ(context->ctxnulls.nullvals[CS_INT_TYPE].dvsize, 0);
    EXPECT_EQ(set(CS_INT_TYPE, "wxyz"), CS_SUCCEED);
    EXPECT_EQ(get(CS_INT_TYPE, 4).text(), "wxyz") << "a later set serves again";
}

// ---- Broken contracts -----------------------------------------------------------------------

class ComNullDeathTest : public ComNull {
protected:
    CS_DATAFMT destfmt = format_of(CS_INT_TYPE, 4);
    CS_BYTE bytes[8] = {};
    CS_INT length = 0;
};

TEST_F(ComNullDeathTest, NullArguments) {
    EXPECT_NULL_REPORT(com_null_init(nullptr), "com_null");
    EXPECT_NULL_REPORT(com_null_free(nullptr), "com_null");
    EXPECT_NULL_REPORT(com_null_get(nullptr, &destfmt, bytes, 4, &length), "com_null");
    EXPECT_NULL_REPORT(com_null_get(context, &destfmt, nullptr, 4, &length), "com_null");
    EXPECT_NULL_REPORT(com_null_get(context, &destfmt, bytes, 4, nullptr), "com_null");
    EXPECT_NULL_REPORT(com_null_get(context, nullptr, bytes, 4, &length), "com_null");
    EXPECT_NULL_REPORT(com_null_set(nullptr, 8, bytes, 4), "com_null");
    EXPECT_NULL_REPORT(com_null_set(context, 8, nullptr, 4), "com_null");
    EXPECT_NULL_REPORT(com_null_set(context, 8, nullptr, 0), "com_null");
    EXPECT_NULL_REPORT(com_null_set(context, 100, nullptr, 0), "com_null");
    EXPECT_NULL_REPORT(com_null_reinstall(nullptr, 8), "com_null");
}

TEST_F(ComNullDeathTest, NegativeIds) {
    destfmt.datatype = -1;
    EXPECT_BOMB(com_null_get(context, &destfmt, bytes, 4, &length), "com_null");
    EXPECT_BOMB(com_null_set(context, -1, bytes, 4), "com_null");
    EXPECT_BOMB(com_null_reinstall(context, -1), "com_null");
    EXPECT_BOMB(com_null_reinstall(context, INT_MIN), "com_null");
}

TEST_F(ComNullDeathTest, NegativeLength) {
    EXPECT_BOMB(com_null_set(context, 8, bytes, -1), "com_null");
    EXPECT_BOMB(com_null_set(context, 100, bytes, CS_NULLTERM), "com_null");
}

TEST_F(ComNullDeathTest, NegativeMaxlengthOfAPaddedType) {
    for (const CS_INT type : {0, 1, 2, 3, 4, 5, 21, 22, 25, 29, 34}) {
        destfmt = format_of(type, -1);
        EXPECT_BOMB(com_null_get(context, &destfmt, bytes, 4, &length), "com_null");
    }
}

TEST_F(ComNullDeathTest, ValueSetWithNoBytesIsANullPointerReport) {
    set(CS_INT_TYPE, "");
    EXPECT_NULL_REPORT(com_null_get(context, &destfmt, bytes, 4, &length), "com_null");
}

TEST_F(ComNullDeathTest, OddityValueSetWithNoBytesCannotBeReinstalled) {
    set(CS_INT_TYPE, "");
    EXPECT_NULL_REPORT(com_null_reinstall(context, CS_INT_TYPE), "com_null");
}

TEST_F(ComNullDeathTest, ContextWithoutATable) {
    BareContext own;
    EXPECT_NULL_REPORT(com_null_get(own, &destfmt, bytes, 4, &length), "com_null");
    EXPECT_NULL_REPORT(com_null_set(own, 8, bytes, 4), "com_null");
    EXPECT_NULL_REPORT(com_null_reinstall(own, 8), "com_null");
}

TEST_F(ComNull, BrokenArgumentsOfGetWriteNothingWhereReportsReturn) {
    CS_DATAFMT destfmt = format_of(CS_INT_TYPE, 4);
    CS_BYTE bytes[8];
    std::memset(bytes, UNTOUCHED, sizeof bytes);
    CS_INT length = UNTOUCHED_LENGTH;
    set(CS_BIT_TYPE, "");
    BareContext own;
    ReturningAssertions assertions;
    EXPECT_EQ(com_null_get(nullptr, &destfmt, bytes, 4, &length), CS_FAIL);
    EXPECT_EQ(com_null_get(context, &destfmt, nullptr, 4, &length), CS_FAIL);
    EXPECT_EQ(com_null_get(context, &destfmt, bytes, 4, nullptr), CS_FAIL);
    EXPECT_EQ(com_null_get(context, nullptr, bytes, 4, &length), CS_FAIL);
    EXPECT_EQ(com_null_get(own, &destfmt, bytes, 4, &length), CS_FAIL);
    destfmt.datatype = -1;
    EXPECT_EQ(com_null_get(context, &destfmt, bytes, 4, &length), CS_FAIL);
    destfmt.datatype = CS_BIT_TYPE;
    EXPECT_EQ(com_null_get(context, &destfmt, bytes, 4, &length), CS_FAIL);
    destfmt = format_of(CS_CHAR_TYPE, -1, CS_FORMAT_NULLTERM);
    EXPECT_EQ(com_null_get(context, &destfmt, bytes, 4, &length), CS_FAIL);
    EXPECT_EQ(assertions.count(), 8);
    EXPECT_EQ(length, UNTOUCHED_LENGTH);
    for (const CS_BYTE byte : bytes)
        EXPECT_EQ(byte, UNTOUCHED);
}

TEST_F(ComNull, BrokenArgumentsOfTheOthersChangeNothingWhereReportsReturn) {
    CS_BYTE bytes[8] = {1, 2, 3, 4};
    set(CS_INT_TYPE, "wxyz");
    set(100, "ab");
    set(CS_BIT_TYPE, "");
    BareContext own;
    ReturningAssertions assertions;
    EXPECT_EQ(com_null_init(nullptr), CS_FAIL);
    EXPECT_EQ(com_null_free(nullptr), CS_FAIL);
    EXPECT_EQ(com_null_set(nullptr, 8, bytes, 4), CS_FAIL);
    EXPECT_EQ(com_null_set(context, 8, nullptr, 4), CS_FAIL);
    EXPECT_EQ(com_null_set(context, 8, bytes, -1), CS_ESYNTAX);
    EXPECT_EQ(com_null_set(context, 100, bytes, INT_MIN), CS_ESYNTAX);
    EXPECT_EQ(com_null_set(context, -1, bytes, 4), CS_FAIL);
    EXPECT_EQ(com_null_set(context, -1, bytes, -1), CS_ESYNTAX) << "the length is judged first";
    EXPECT_EQ(com_null_set(own, 8, bytes, 4), CS_FAIL);
    EXPECT_EQ(com_null_reinstall(nullptr, 8), CS_FAIL);
    EXPECT_EQ(com_null_reinstall(context, -1), CS_FAIL);
    EXPECT_EQ(com_null_reinstall(own, 8), CS_FAIL);
    EXPECT_EQ(com_null_reinstall(context, CS_BIT_TYPE), CS_FAIL);
    EXPECT_EQ(assertions.count(), 13);
    EXPECT_EQ(get(CS_INT_TYPE, 4).text(), "wxyz");
    EXPECT_EQ(get(100, 8).text(), std::string("ab\0", 3));
    EXPECT_EQ(user_types(), (Types{100}));
}

} // namespace
