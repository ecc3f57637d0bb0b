// Tables, order, copy, rescale and the small steps of the exact core.
#include "support/assertions.h"
#include "support/exact.h"
#include "support/schoolbook.h"

#include <gtest/gtest.h>

#include <climits>

using namespace support;

namespace {

constexpr int CASES = 100'000;

int length_of(int precision) { return Com__Nume_Prec_To_Len[precision]; }

// ---- Tables ----------------------------------------------------------------------------------

TEST(Tables, LengthOfAPrecisionIsOneMoreThanTheBytesOfItsLargestValue) {
    for (int p = 0; p <= 77; ++p) {
        const int bytes = (Big::ten_to(p) - 1).bytes();
        EXPECT_EQ(length_of(p), 1 + std::max(1, bytes)) << p;
    }
}

TEST(Tables, LengthsStartAndEndAsPublished) {
    const int head[] = {2, 2, 2, 3, 3, 4, 4, 4, 5, 5, 6};
    for (int p = 0; p <= 10; ++p)
        EXPECT_EQ(length_of(p), head[p]) << p;
    for (int p = 75; p <= 77; ++p)
        EXPECT_EQ(length_of(p), 33) << p;
}

TEST(Tables, PrecisionsOfLengthsAsPublished) {
    const int all[35] = {2,  4,  7,  9,  12, 14, 16, 19, 21, 24, 26, 28, 31, 33, 36,  38,  40, 43,
                         45, 48, 50, 52, 55, 57, 60, 62, 65, 67, 69, 72, 74, 77, 255, 255, 255};
    for (int i = 0; i < 35; ++i)
        EXPECT_EQ(Com__Nume_Len_To_Prec[i], all[i]) << i;
}

TEST(Tables, PrecisionOfALengthIsTheLargestPowerThatFits) {
    for (int length = 2; length <= 33; ++length) {
        const int p = Com__Nume_Len_To_Prec[length - 2];
        EXPECT_LE(Big::ten_to(p), Big::limit_of_bytes(length - 1)) << length;
        EXPECT_GT(Big::ten_to(p + 1), Big::limit_of_bytes(length - 1)) << length;
    }
}

TEST(Tables, PowersAreLengthSignMagnitudeAndZeros) {
    for (int p = 0; p <= 77; ++p) {
        const unsigned char *row = Com__Nume_Byte_Power_Array[p];
        EXPECT_EQ(row[0], length_of(p)) << p;
        EXPECT_EQ(row[1], 0) << p;
        EXPECT_EQ(Big(row + 2, row[0] - 1), Big::ten_to(p)) << p;
        EXPECT_NE(row[2], 0) << p << ": the magnitude fills its bytes";
        for (int i = row[0] + 1; i < 34; ++i)
            EXPECT_EQ(row[i], 0) << p << " at " << i;
    }
}

TEST(Lengths, OfEveryPrecision) {
    for (int p = 1; p <= 77; ++p)
        EXPECT_EQ(comn_num_getlen(p), length_of(p));
}

TEST(Lengths, PrecisionOfEveryLength) {
    for (int length = 2; length <= 33; ++length)
        EXPECT_EQ(comn_num_getprec(length), Com__Nume_Len_To_Prec[length - 2]);
}

TEST(Lengths, ZeroAndOnePassAndHoldNoDigit) {
    EXPECT_EQ(comn_num_getprec(0), 0);
    EXPECT_EQ(comn_num_getprec(1), 0);
}

TEST(LengthsDeathTest, PrecisionOutsideOneTo77) {
    for (const int p : {0, 78, -1, 255, INT_MIN, INT_MAX})
        EXPECT_BOMB(comn_num_getlen(p), "numeric");
}

TEST(LengthsDeathTest, LengthOutsideZeroTo33) {
    for (const int length : {-1, 34, 36, INT_MIN, INT_MAX})
        EXPECT_BOMB(comn_num_getprec(length), "numeric");
}

TEST(Lengths, BadOnesReturnZeroWhereAssertionsReturn) {
    ReturningAssertions mode;
    EXPECT_EQ(comn_num_getlen(0), 0);
    EXPECT_EQ(comn_num_getlen(78), 0);
    EXPECT_EQ(comn_num_getprec(-1), 0);
    EXPECT_EQ(comn_num_getprec(34), 0);
    EXPECT_EQ(mode.count(), 4);
}

// ---- Order -----------------------------------------------------------------------------------

int compare(Record a, Record b, int flag) {
    const int order = com__exctnume_cmp(a, b, flag);
    EXPECT_EQ(com__exctnume_cmp(b, a, flag), -order);
    EXPECT_TRUE(a.guarded() && b.guarded());
    return order;
}

TEST(Cmp, MinusZeroEqualsZeroWhenSignsCount) {
    EXPECT_EQ(compare(Record(2, 1, 0, 0, 1), Record(2, 1, 0, 0), 1), 0);
    EXPECT_EQ(compare(Record(2, 1, 0, 0, 1), Record(2, 1, 0, 0), 3), 0);
    EXPECT_EQ(compare(Record(2, 1, 0, 0, 1), Record(5, 9, 3, 0), 3), 0);
}

TEST(Cmp, MinusZeroIsBelowFive) { EXPECT_EQ(compare(Record(2, 1, 0, 0, 1), Record(2, 1, 0, 5), 3), -1); }
TEST(Cmp, ZeroIsAboveMinusFive) { EXPECT_EQ(compare(Record(2, 1, 0, 0), Record(2, 1, 0, -5), 3), 1); }
TEST(Cmp, MinusZeroIsAboveMinusFive) { EXPECT_EQ(compare(Record(2, 1, 0, 0, 1), Record(2, 1, 0, -5), 3), 1); }

TEST(Cmp, SignsDecideWhenTheyDiffer) {
    EXPECT_EQ(compare(Record(2, 2, 0, -9), Record(2, 2, 0, 1), 1), -1);
    EXPECT_EQ(compare(Record(2, 2, 0, -9), Record(2, 2, 0, -1), 1), -1);
    EXPECT_EQ(compare(Record(2, 2, 0, -9), Record(2, 2, 0, -9), 1), 0);
}

TEST(Cmp, SignsDoNotCountWithoutBitOne) {
    EXPECT_EQ(compare(Record(2, 2, 0, -9), Record(2, 2, 0, 1), 0), 1);
    EXPECT_EQ(compare(Record(2, 2, 0, -9), Record(2, 2, 0, 9), 0), 0);
    EXPECT_EQ(compare(Record(2, 2, 1, -90), Record(2, 2, 0, 9), 2), 0);
}

TEST(Cmp, AnyNonZeroSignByteIsNegative) {
    EXPECT_EQ(compare(Record(2, 2, 0, 9, 7), Record(2, 2, 0, 9, 1), 1), 0);
    EXPECT_EQ(compare(Record(2, 2, 0, 9, 255), Record(2, 2, 0, 1), 1), -1);
}

TEST(Cmp, TrailingZerosOfTheScaleDoNotCountWhenAligned) {
    EXPECT_EQ(compare(Record(3, 3, 2, 250), Record(2, 2, 1, 25), 3), 0);
    EXPECT_EQ(compare(Record(3, 3, 2, -251), Record(2, 2, 1, -25), 3), -1);
    EXPECT_EQ(compare(Record(3, 3, 2, 250), Record(2, 2, 1, 25), 1), 1) << "raw integers";
}

TEST(Cmp, LengthsMayDiffer) {
    EXPECT_EQ(compare(Record(33, 77, 0, 200), Record(2, 2, 0, 200), 0), 0);
    EXPECT_EQ(compare(Record(33, 77, 0, 256), Record(2, 2, 0, 255), 0), 1);
    EXPECT_EQ(compare(Record(5, 9, 0, 1), Record(2, 2, 0, 2), 0), -1);
}

TEST(Cmp, DigitsBelowTheCoarseScaleDoNotCountPast77Digits) {
    // 76 + 2 > 77: the finer operand is cut.
    EXPECT_EQ(compare(Record(33, 76, 1, 25), Record(33, 76, 2, 259), 3), 0);
    EXPECT_EQ(compare(Record(33, 76, 1, 25), Record(33, 76, 2, 260), 3), -1);
    EXPECT_EQ(compare(Record(33, 76, 1, -25), Record(33, 76, 2, -259), 3), 0);
    // 75 + 2 = 77: the coarser one is scaled up and the digit counts.
    EXPECT_EQ(compare(Record(33, 75, 1, 25), Record(33, 76, 2, 259), 3), -1);
}

TEST(Cmp, CutOperandWhosePrecisionAndScalePassTheTable) {
    EXPECT_EQ(compare(Record(33, 77, 0, 7), Record(33, 77, 77, Big(7) * Big::ten_to(76)), 3), 1);
    EXPECT_EQ(compare(Record(33, 77, 0, 0), Record(33, 77, 77, Big::ten_to(77) - 1), 3), 0) << "all digits are cut";
    EXPECT_EQ(compare(Record(33, 77, 0, 1), Record(33, 77, 77, Big::ten_to(77)), 3), 0);
    EXPECT_EQ(compare(Record(33, 255, 0, 1), Record(33, 255, 255, Big::ten_to(77)), 3), 1) << "scales out of range";
}

TEST(Cmp, EmptyRecordsAreZero) {
    EXPECT_EQ(compare(Record(0, 1, 0), Record(1, 1, 0), 3), 0);
    EXPECT_EQ(compare(Record(0, 1, 0), Record(2, 1, 0, 3), 3), -1);
    EXPECT_EQ(compare(Record(1, 1, 0), Record(2, 1, 1, -3), 3), 1);
    EXPECT_EQ(compare(Record(1, 1, 0, 0, 1), Record(2, 1, 0, 0), 3), 0);
}

// The order as it is told, on big integers.
int expected_order(const Record &a, const Record &b, int flag) {
    const bool by_sign = (flag & 1) != 0;
    Big x = a.magnitude();
    Big y = b.magnitude();
    if (by_sign && (a.sign() != 0) != (b.sign() != 0))
        return x.sign() == 0 && y.sign() == 0 ? 0 : a.sign() != 0 ? -1 : 1;
    if ((flag & 2) != 0 && a->scale != b->scale) {
        Big &fine = a->scale > b->scale ? x : y;
        Big &coarse = a->scale > b->scale ? y : x;
        const __CONSTANT &coarse_record = a->scale > b->scale ? b.get() : a.get();
        const int fine_scale = std::max(a->scale, b->scale);
        const Big power = Big::ten_to(fine_scale - coarse_record.scale);
        if (coarse_record.prec + fine_scale <= 77)
            coarse = coarse * power;
        else
            fine = fine / power;
    }
    const int order = x < y ? -1 : x > y;
    return by_sign && a.sign() != 0 ? -order : order;
}

TEST(Cmp, RandomAgainstBigIntegers) {
    Random random(1);
    for (int i = 0; i < CASES; ++i) {
        const int p1 = pick(random, 1, 77), p2 = pick(random, 1, 77);
        const int s1 = pick(random, 0, 77), s2 = pick(random, 0, 3) == 0 ? s1 : pick(random, 0, 77);
        Big x = random_digits(random, p1);
        Big y = random_digits(random, p2);
        if (pick(random, 0, 2) == 0 && s1 >= s2) // near or at each other
            x = y * Big::ten_to(s1 - s2) % Big::ten_to(p1) + pick(random, 0, 1);
        if (x >= Big::ten_to(p1))
            x = 0;
        const CS_BYTE sign1 = static_cast<CS_BYTE>(pick(random, 0, 2) * 90);
        const CS_BYTE sign2 = static_cast<CS_BYTE>(pick(random, 0, 2) * 90);
        Record a(length_of(p1), p1, s1, x, sign1);
        Record b(length_of(p2), p2, s2, y, sign2);
        for (int flag = 0; flag <= 3; ++flag)
            ASSERT_EQ(compare(a, b, flag), expected_order(a, b, flag))
                << x.text() << " (" << p1 << "," << s1 << ") " << y.text() << " (" << p2 << "," << s2 << ") " << flag;
    }
}

TEST(Cmp, RandomLongRecords) {
    Random random(2);
    for (int i = 0; i < 20'000; ++i) {
        const int l1 = pick(random, 0, 136), l2 = pick(random, 0, 136);
        Record a(l1, pick(random, 1, 77), pick(random, 0, 40), random_magnitude(random, l1 - 1));
        Record b(l2, pick(random, 1, 77), pick(random, 0, 40), random_magnitude(random, l2 - 1));
        for (int flag = 0; flag <= 3; ++flag)
            ASSERT_EQ(compare(a, b, flag), expected_order(a, b, flag));
    }
}

TEST(Intcmp, EveryByteAgainstEverySmallInteger) {
    for (int value = 0; value <= 255; ++value)
        for (int i = 0; i <= 255; ++i) {
            Record shortest(2, 3, 0, value, CS_BYTE(1));
            Record longer(9, 3, 0, value);
            ASSERT_EQ(com__exctnume_intcmp(shortest, i), value == i);
            ASSERT_EQ(com__exctnume_intcmp(longer, i), value == i);
        }
}

TEST(Intcmp, HigherBytesCount) {
    for (int byte = 1; byte <= 7; ++byte)
        EXPECT_EQ(com__exctnume_intcmp(Record(9, 18, 0, Big::limit_of_bytes(byte) + 5), 5), 0) << byte;
}

TEST(Intcmp, EmptyRecordsAreZero) {
    EXPECT_EQ(com__exctnume_intcmp(Record(0, 1, 0), 0), 1);
    EXPECT_EQ(com__exctnume_intcmp(Record(1, 1, 0, 0, 9), 0), 1);
    EXPECT_EQ(com__exctnume_intcmp(Record(1, 1, 0, 0, 9), 9), 0) << "the sign byte is not read";
}

// ---- Copy ------------------------------------------------------------------------------------

TEST(Copy, EqualLengthsCopyAllBytesTheSignAsItIs) {
    Record in(5, 9, 0, 12345, 77);
    Record out(5, 9, 0);
    EXPECT_EQ(com__exctnume_copy(in, out), 0);
    EXPECT_EQ(out.sign(), 77);
    EXPECT_EQ(out.magnitude(), Big(12345));
}

TEST(Copy, NarrowerGetsTheLowBytesEvenWhenOthersAreDropped) {
    Record in(5, 9, 0, -0x01020304);
    Record out(3, 4, 0);
    EXPECT_EQ(com__exctnume_copy(in, out), 1);
    EXPECT_EQ(out.value(), Big(-0x0304));
    EXPECT_TRUE(out.guarded());
}

TEST(Copy, DroppedZeroBytesAreNoLoss) {
    Record out(3, 4, 0);
    EXPECT_EQ(com__exctnume_copy(Record(33, 9, 0, 0x0304), out), 0);
    EXPECT_EQ(out.value(), Big(0x0304));
}

TEST(Copy, RandomLengthsApartAndInSharedMemory) {
    Random random(3);
    for (int i = 0; i < CASES; ++i) {
        const int l1 = pick(random, 0, 136), l2 = pick(random, 0, 136);
        const Big value = random_magnitude(random, pick(random, 0, std::max(0, l1 - 1)));
        const CS_BYTE sign = static_cast<CS_BYTE>(random());
        Record in(l1, 9, 0, value, sign);
        const CS_BYTE in_sign = in.sign();
        const int dropped = value >= Big::limit_of_bytes(l2 - 1);
        Record out(l2, 9, 0, 99);
        ASSERT_EQ(com__exctnume_copy(in, out), dropped);
        Record shared = in;
        __CONSTANT same = shared.get();
        same.len = l2;
        ASSERT_EQ(com__exctnume_copy(shared, &same), dropped);
        if (l2 > 0) {
            ASSERT_EQ(out.sign(), in_sign);
            ASSERT_EQ(out.magnitude(), value % Big::limit_of_bytes(l2 - 1));
            ASSERT_EQ(std::memcmp(out.start(), shared.start(), static_cast<size_t>(l2)), 0);
        }
        ASSERT_TRUE(out.guarded());
        ASSERT_TRUE(shared.guarded(std::max(l1, l2)));
    }
}

// ---- Scale -----------------------------------------------------------------------------------

TEST(Scale, MoreThan77PlacesIsABadValueAndWritesNothing) {
    for (const int scale : {78, -78, 1000, INT_MAX, INT_MIN}) {
        Record in(3, 4, 0, 123);
        Record out(3, 4, 0, 55);
        EXPECT_EQ(com__exctnume_scale(in, out, scale, 0), NUME_BADVALUE);
        EXPECT_EQ(out.value(), Big(55));
        EXPECT_EQ(com__exctnume_scale(in, nullptr, scale, 0), NUME_BADVALUE);
        EXPECT_EQ(in.value(), Big(123));
    }
}

TEST(Scale, ByZeroInPlaceDoesNothing) {
    Record in(3, 4, 0, 123, 9);
    EXPECT_EQ(com__exctnume_scale(in, nullptr, 0, 0), NUME_OK);
    EXPECT_EQ(in.magnitude(), Big(123));
    EXPECT_EQ(in.sign(), 9);
}

TEST(Scale, ByZeroIntoAnotherRecordIsACopy) {
    Record out(2, 2, 0);
    EXPECT_EQ(com__exctnume_scale(Record(5, 9, 0, -12), out, 0, 0), NUME_OK);
    EXPECT_EQ(out.value(), Big(-12));
    EXPECT_EQ(com__exctnume_scale(Record(5, 9, 0, 300), out, 0, 0), NUME_OVERFLOW);
    EXPECT_EQ(out.value(), Big(300 % 256));
}

TEST(Scale, DownByOneCutsAndTellsIt) {
    Record cut(2, 3, 0, 123);
    EXPECT_EQ(com__exctnume_scale(cut, nullptr, -1, 0), NUME_TRUNCATED);
    EXPECT_EQ(cut.value(), Big(12));
    Record exact(2, 3, 0, 120);
    EXPECT_EQ(com__exctnume_scale(exact, nullptr, -1, 0), NUME_OK);
    EXPECT_EQ(exact.value(), Big(12));
}

TEST(Scale, DownNeverRounds) {
    Record in(3, 4, 0, -999);
    EXPECT_EQ(com__exctnume_scale(in, nullptr, -2, 0), NUME_TRUNCATED);
    EXPECT_EQ(in.value(), Big(-9));
}

TEST(Scale, AZeroResultLosesItsSign) {
    Record up(3, 4, 0, 0, 1);
    EXPECT_EQ(com__exctnume_scale(up, nullptr, 1, 0), NUME_OK);
    EXPECT_EQ(up.sign(), 0);
    Record down(3, 4, 0, -7);
    EXPECT_EQ(com__exctnume_scale(down, nullptr, -1, 0), NUME_TRUNCATED);
    EXPECT_EQ(down.sign(), 0);
    EXPECT_EQ(down.magnitude(), Big(0));
}

TEST(Scale, UpIsJudgedByBytesAlone) {
    Record in(2, 2, 0, 25);
    EXPECT_EQ(com__exctnume_scale(in, nullptr, 1, 0), NUME_OK) << "250 passes the precision and fits the byte";
    EXPECT_EQ(in.value(), Big(250));
    EXPECT_EQ(com__exctnume_scale(in, nullptr, 1, 0), NUME_OVERFLOW);
}

TEST(Scale, DownIsJudgedByBytesAndPrecision) {
    Record one_digit(2, 1, 0);
    EXPECT_EQ(com__exctnume_scale(Record(3, 4, 0, 990), one_digit, -1, 0), NUME_OVERFLOW) << "99 has two digits";
    EXPECT_EQ(com__exctnume_scale(Record(3, 4, 0, 99), one_digit, -1, 0), NUME_TRUNCATED);
    EXPECT_EQ(one_digit.value(), Big(9));
    Record one_byte(2, 9, 0);
    EXPECT_EQ(com__exctnume_scale(Record(3, 4, 0, 2560), one_byte, -1, 0), NUME_OVERFLOW);
}

TEST(Scale, DownDividesByTheToldPowerWhateverTheRecordsScales) {
    for (const int out_scale : {0, 1, 5, 77, 255}) {
        Record out(5, 9, out_scale);
        EXPECT_EQ(com__exctnume_scale(Record(5, 9, 3, 12300), out, -2, 0), NUME_OK);
        EXPECT_EQ(out.value(), Big(123));
        EXPECT_EQ(out->scale, out_scale) << "records keep their scale";
    }
}

TEST(Scale, StatflagIsIgnored) {
    for (const int flag : {-1, 0, 1, 2}) {
        Record in(3, 4, 0, 123);
        EXPECT_EQ(com__exctnume_scale(in, nullptr, -1, flag), NUME_TRUNCATED);
        EXPECT_EQ(in.value(), Big(12));
    }
}

TEST(Scale, OfEmptyRecords) {
    Record empty(0, 1, 0);
    EXPECT_EQ(com__exctnume_scale(empty, nullptr, 5, 0), NUME_OK);
    EXPECT_EQ(com__exctnume_scale(empty, nullptr, -5, 0), NUME_OK);
    EXPECT_EQ(com__exctnume_scale(Record(2, 1, 0, 3), empty, 1, 0), NUME_OVERFLOW);
    Record sign_only(1, 1, 0, 0, 1);
    EXPECT_EQ(com__exctnume_scale(sign_only, nullptr, 5, 0), NUME_OK);
    EXPECT_EQ(sign_only.sign(), 0);
    EXPECT_TRUE(empty.guarded() && sign_only.guarded());
}

struct Scaled {
    int code;
    Big value; // when the code is NUME_OK or NUME_TRUNCATED
};

Scaled expected_scale(const Big &value, int in_len, int places, int out_len, int out_precision) {
    if (places >= 0) {
        const Big up = value * Big::ten_to(places);
        return {up.magnitude() < Big::limit_of_bytes(out_len - 1) ? NUME_OK : NUME_OVERFLOW, up};
    }
    const Big power = Big::ten_to(-places);
    if (in_len + 1 + length_of(-places) >= 133) // the division's work room
        return {NUME_OVERFLOW, 0};
    const Big down = value / power;
    if (down.magnitude() >= Big::limit_of_bytes(out_len - 1) ||
        (out_precision <= 77 && down.magnitude() >= Big::ten_to(out_precision)))
        return {down.sign() == 0 ? NUME_OK : NUME_OVERFLOW, down};
    return {down * power == value ? NUME_OK : NUME_TRUNCATED, down};
}

void check_scale(Random &random, int longest, int cases) {
    for (int i = 0; i < cases; ++i) {
        const int l1 = pick(random, 1, longest);
        const int l2 = pick(random, 0, 1) == 0 ? l1 : pick(random, 1, longest);
        const int places = pick(random, -77, 77);
        const int precision = pick(random, 0, 3) == 0 ? pick(random, 1, 120) : 77;
        Big value = random_magnitude(random, l1 - 1);
        if (places < 0 && pick(random, 0, 1) == 0)
            value = value / Big::ten_to(-places) * Big::ten_to(-places);
        if (pick(random, 0, 1) == 0)
            value = -value;
        Record in(l1, 77, 3, value);
        const Record before = in;
        const Scaled expected = expected_scale(value, l1, places, l2, precision);
        Record out(l2, precision, pick(random, 0, 77), 1);
        ASSERT_EQ(com__exctnume_scale(in, out, places, 0), expected.code)
            << value.text() << " by " << places << " lengths " << l1 << " " << l2;
        ASSERT_EQ(in.memory(), before.memory()) << "the operand is only read";
        ASSERT_TRUE(out.guarded());
        if (expected.code != NUME_OVERFLOW) {
            ASSERT_EQ(out.value(), expected.value);
            ASSERT_EQ(out.sign(), expected.value.sign() < 0);
        }
        in->prec = static_cast<CS_BYTE>(precision);
        const Scaled in_place = expected_scale(value, l1, places, l1, precision);
        ASSERT_EQ(com__exctnume_scale(in, nullptr, places, 0), places == 0 ? NUME_OK : in_place.code);
        ASSERT_TRUE(in.guarded());
        if (in_place.code != NUME_OVERFLOW) {
            ASSERT_EQ(in.value(), in_place.value);
        }
    }
}

TEST(Scale, RandomAgainstBigIntegers) {
    Random random(4);
    check_scale(random, 33, CASES);
}

TEST(Scale, RandomLongRecords) {
    Random random(5);
    check_scale(random, 136, 20'000);
}

// ---- Precision -------------------------------------------------------------------------------

TEST(Checkprecision, PowerIsTooLargeAndOneLessIsNot) {
    for (int p = 0; p <= 77; ++p)
        for (const int length : {length_of(p), 33, 67}) {
            EXPECT_EQ(com__exctnume_checkprecision(Record(length, p, 0, Big::ten_to(p))), 1) << p;
            EXPECT_EQ(com__exctnume_checkprecision(Record(length, p, 0, Big::ten_to(p) - 1)), 0) << p;
            EXPECT_EQ(com__exctnume_checkprecision(Record(length, p, 0, Big(0) - Big::ten_to(p))), 1) << p;
        }
}

TEST(Checkprecision, ARecordTooShortForThePowerIsBelowIt) {
    EXPECT_EQ(com__exctnume_checkprecision(Record(2, 3, 0, 255)), 0);
    EXPECT_EQ(com__exctnume_checkprecision(Record(0, 3, 0)), 0);
    EXPECT_EQ(com__exctnume_checkprecision(Record(1, 0, 0)), 0);
}

TEST(Checkprecision, NothingPassesAPrecisionBeyondTheTable) {
    for (const int p : {78, 79, 255})
        EXPECT_EQ(com__exctnume_checkprecision(Record(33, p, 0, Big::limit_of_bytes(32) - 1)), 0) << p;
}

TEST(Checkprecision, RandomAgainstBigIntegers) {
    Random random(6);
    for (int i = 0; i < CASES; ++i) {
        const int length = pick(random, 0, pick(random, 0, 3) == 0 ? 136 : 33);
        const int p = pick(random, 0, 77);
        const Big value = random_magnitude(random, length - 1);
        ASSERT_EQ(com__exctnume_checkprecision(Record(length, p, 0, value)), value >= Big::ten_to(p));
    }
}

// ---- Steps by ten ----------------------------------------------------------------------------

void check_divide_by_ten(const std::vector<CS_BYTE> &bytes) {
    std::vector<CS_BYTE> mine = bytes, paper = bytes;
    mine.resize(bytes.size() + 8, GUARD);
    paper.resize(bytes.size() + 8, GUARD);
    CS_BYTE *my_start = mine.data(), *paper_start = paper.data();
    int my_length = static_cast<int>(bytes.size()), paper_length = my_length;
    const int expected = schoolbook::divide_by_ten(&paper_start, &paper_length);
    ASSERT_EQ(com__exctnume_divby10(&my_start, &my_length), expected);
    ASSERT_EQ(my_length, paper_length);
    ASSERT_EQ(my_start - mine.data(), paper_start - paper.data());
    ASSERT_EQ(mine, paper);
}

TEST(Divby10, EveryNumberOfOneAndTwoBytes) {
    for (int value = 0; value < 65536; ++value) {
        const CS_BYTE high = static_cast<CS_BYTE>(value >> 8), low = static_cast<CS_BYTE>(value);
        check_divide_by_ten({0, high, low});
        check_divide_by_ten({0, 0, high, low});
        if (high == 0)
            check_divide_by_ten({0, low});
    }
}

TEST(Divby10, ShrinksByOneByteWhenByteOneIsZero) {
    CS_BYTE bytes[] = {0, 1, 0, 4};
    CS_BYTE *start = bytes;
    int length = 4;
    EXPECT_EQ(com__exctnume_divby10(&start, &length), 65540 % 10);
    EXPECT_EQ(length, 3);
    EXPECT_EQ(start, bytes + 1);
}

TEST(Divby10, KeepsThreeBytesWhoseLastIs255ForAnIncrement) {
    CS_BYTE bytes[] = {0, 2550 >> 8, 2550 & 255};
    CS_BYTE *start = bytes;
    int length = 3;
    EXPECT_EQ(com__exctnume_divby10(&start, &length), 0);
    EXPECT_EQ(length, 3);
    EXPECT_EQ(start, bytes);
    EXPECT_EQ(bytes[2], 255);
    CS_BYTE other[] = {0, 2540 >> 8, 2540 & 255};
    start = other;
    EXPECT_EQ(com__exctnume_divby10(&start, &length), 0);
    EXPECT_EQ(length, 2) << "254 gives its byte away";
    EXPECT_EQ(start, other + 1);
}

TEST(Divby10, OfTwoBytesNeverShrinks) {
    CS_BYTE bytes[] = {0, 9};
    CS_BYTE *start = bytes;
    int length = 2;
    EXPECT_EQ(com__exctnume_divby10(&start, &length), 9);
    EXPECT_EQ(length, 2);
    EXPECT_EQ(start, bytes);
}

TEST(Divby10, TakesTheFirstByteAsPartOfTheNumber) { check_divide_by_ten({1, 0, 0, 0, 0}); }

TEST(Divby10, RandomAgainstPaper) {
    Random random(7);
    for (int i = 0; i < CASES; ++i) {
        const int length = pick(random, 2, i % 16 == 0 ? 140 : 34);
        std::vector<CS_BYTE> bytes(static_cast<size_t>(length));
        random_magnitude(random, length - pick(random, 0, 1)).store(bytes.data(), length);
        check_divide_by_ten(bytes);
    }
}

TEST(Divby10, OfNoBytesAnswersZero) {
    CS_BYTE byte = 25;
    CS_BYTE *start = &byte;
    int length = 0;
    EXPECT_EQ(com__exctnume_divby10(&start, &length), 0);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(byte, 25);
    length = 1;
    EXPECT_EQ(com__exctnume_divby10(&start, &length), 5);
    EXPECT_EQ(length, 1);
    EXPECT_EQ(byte, 2);
}

TEST(Mulby10Add, TakesADigitIn) {
    Record value(3, 4, 0, 12, 9);
    EXPECT_EQ(com__exctnume_mulby10_add(value, 5), 0);
    EXPECT_EQ(value.magnitude(), Big(125));
    EXPECT_EQ(value.sign(), 9) << "the sign byte is not touched";
}

TEST(Mulby10Add, EveryByteWithEveryDigit) {
    for (int byte = 0; byte <= 255; ++byte)
        for (short digit = 0; digit <= 9; ++digit) {
            Record value(2, 2, 0, byte);
            const int full = byte * 10 + digit;
            ASSERT_EQ(com__exctnume_mulby10_add(value, digit) != 0, full > 255);
            ASSERT_EQ(value.magnitude(), Big(full & 255));
        }
}

TEST(Mulby10Add, RandomAgainstBigIntegers) {
    Random random(8);
    for (int i = 0; i < CASES; ++i) {
        const int length = pick(random, 0, i % 8 == 0 ? 136 : 33);
        const short addend = static_cast<short>(i % 4 == 0 ? random() : random() % 10);
        const Big magnitude = random_magnitude(random, length - 1);
        Record value(length, 9, 0, magnitude);
        const Big full = magnitude * 10 + Big(addend);
        const Big limit = Big::limit_of_bytes(length - 1);
        ASSERT_EQ(com__exctnume_mulby10_add(value, addend) != 0, full.sign() < 0 || full >= limit) << addend;
        if (length > 0) {
            ASSERT_EQ(value.magnitude(), (full % limit + limit) % limit);
        }
        ASSERT_TRUE(value.guarded());
    }
}

// ---- Steps by one ----------------------------------------------------------------------------

TEST(Inc, MinusOneBecomesZeroWithoutSign) {
    for (const int length : {2, 3, 33}) {
        Record value(length, 1, 0, -1);
        EXPECT_EQ(com__exctnume_inc(value), NUME_OK);
        EXPECT_EQ(value.sign(), 0);
        EXPECT_EQ(value.magnitude(), Big(0));
    }
}

TEST(Inc, AllOnesWrapToZero) {
    for (const int length : {2, 3, 33, 136}) {
        Record value(length, 1, 0, Big::limit_of_bytes(length - 1) - 1);
        EXPECT_EQ(com__exctnume_inc(value), 1);
        EXPECT_EQ(value.magnitude(), Big(0));
        EXPECT_TRUE(value.guarded());
    }
}

TEST(Inc, MinusZeroBecomesMinusOne) {
    Record value(3, 1, 0, 0, 1);
    EXPECT_EQ(com__exctnume_inc(value), NUME_OK);
    EXPECT_EQ(value.value(), Big(-1));
}

TEST(Dec, ZeroBecomesMinusOne) {
    for (const int length : {2, 3, 33}) {
        Record value(length, 1, 0, 0);
        EXPECT_EQ(com__exctnume_dec(value), NUME_OK);
        EXPECT_EQ(value.value(), Big(-1));
        EXPECT_EQ(value.sign(), 1);
    }
}

TEST(Dec, NegativeAllOnesWrapAndKeepTheSign) {
    Record value(3, 1, 0, 65535, 1);
    EXPECT_EQ(com__exctnume_dec(value), 1);
    EXPECT_EQ(value.magnitude(), Big(0));
    EXPECT_EQ(value.sign(), 1);
}

TEST(Dec, MinusZeroBecomesMinusOne) {
    Record value(3, 1, 0, 0, 1);
    EXPECT_EQ(com__exctnume_dec(value), NUME_OK);
    EXPECT_EQ(value.value(), Big(-1));
}

TEST(IncAndDec, EmptyRecordIsABadValue) {
    Record empty(0, 1, 0);
    const auto before = empty.memory();
    EXPECT_EQ(com__exctnume_inc(empty), NUME_BADVALUE);
    EXPECT_EQ(com__exctnume_dec(empty), NUME_BADVALUE);
    EXPECT_EQ(empty.memory(), before);
    __CONSTANT nowhere = {};
    EXPECT_EQ(com__exctnume_inc(&nowhere), NUME_BADVALUE);
    EXPECT_EQ(com__exctnume_dec(&nowhere), NUME_BADVALUE);
}

TEST(IncAndDec, RecordOfASignAloneIsSafe) {
    Record positive(1, 1, 0);
    EXPECT_EQ(com__exctnume_inc(positive), 1) << "no byte that does not wrap";
    EXPECT_TRUE(positive.guarded());
    Record zero(1, 1, 0);
    EXPECT_EQ(com__exctnume_dec(zero), NUME_OK);
    EXPECT_TRUE(zero.guarded());
}

TEST(IncAndDec, EveryValueOfTwoBytes) {
    for (long v = -65535; v <= 65535; ++v) {
        Record up(3, 5, 0, v);
        const bool up_wraps = v == 65535;
        ASSERT_EQ(com__exctnume_inc(up), up_wraps);
        ASSERT_EQ(up.value(), Big(up_wraps ? 0 : v + 1));
        ASSERT_EQ(up.sign(), !up_wraps && v + 1 < 0);
        Record down(3, 5, 0, v);
        const bool down_wraps = v == -65535;
        ASSERT_EQ(com__exctnume_dec(down), down_wraps);
        ASSERT_EQ(down.value(), Big(down_wraps ? 0 : v - 1));
        ASSERT_TRUE(up.guarded() && down.guarded());
    }
}

TEST(IncAndDec, RandomAgainstBigIntegers) {
    Random random(9);
    for (int i = 0; i < CASES; ++i) {
        const int length = pick(random, 2, i % 8 == 0 ? 136 : 33);
        Big value = random_magnitude(random, length - 1);
        if (pick(random, 0, 1) == 0)
            value = -value;
        const Big limit = Big::limit_of_bytes(length - 1);
        Record up(length, 9, 0, value);
        const bool up_wraps = value + 1 == limit;
        ASSERT_EQ(com__exctnume_inc(up), up_wraps);
        ASSERT_EQ(up.value(), up_wraps ? Big(0) : value + 1);
        Record down(length, 9, 0, value);
        const bool down_wraps = Big(0) - value + 1 == limit;
        ASSERT_EQ(com__exctnume_dec(down), down_wraps);
        ASSERT_EQ(down.value(), down_wraps ? Big(0) : value - 1);
        ASSERT_TRUE(up.guarded() && down.guarded());
    }
}

TEST(Needsbyte, OnlyWhenEveryMagnitudeByteIs255) {
    for (int length = 2; length <= 40; ++length) {
        const Big all = Big::limit_of_bytes(length - 1) - 1;
        EXPECT_EQ(com__exctnume_needsbyte(Record(length, 9, 0, all)), 1);
        EXPECT_EQ(com__exctnume_needsbyte(Record(length, 9, 0, all, 1)), 1) << "the sign does not count";
        for (int byte = 0; byte < length - 1; ++byte)
            EXPECT_EQ(com__exctnume_needsbyte(Record(length, 9, 0, all - Big::limit_of_bytes(byte))), 0);
    }
}

TEST(Needsbyte, RecordWithoutMagnitudeNeedsOne) {
    EXPECT_EQ(com__exctnume_needsbyte(Record(0, 1, 0)), 1);
    EXPECT_EQ(com__exctnume_needsbyte(Record(1, 1, 0)), 1);
}

// ---- Broken contracts ------------------------------------------------------------------------

TEST(RecordsDeathTest, NullPointers) {
    Record good(3, 4, 0, 123);
    CS_BYTE *start = good.start();
    CS_BYTE *nowhere = nullptr;
    int length = 3;
    EXPECT_NULL_REPORT(com__exctnume_cmp(nullptr, good, 0), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_cmp(good, nullptr, 0), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_intcmp(nullptr, 0), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_copy(nullptr, good), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_copy(good, nullptr), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_scale(nullptr, good, 1, 0), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_checkprecision(nullptr), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_divby10(nullptr, &length), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_divby10(&nowhere, &length), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_divby10(&start, nullptr), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_mulby10_add(nullptr, 1), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_inc(nullptr), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_dec(nullptr), "numeric");
    EXPECT_NULL_REPORT(com__exctnume_needsbyte(nullptr), "numeric");
}

// Runs `check` with records that no caller may bring.
template <class Check>
void with_broken_records(Check check) {
    Record negative(3, 4, 0, 1), too_long(3, 4, 0, 1), no_value(3, 4, 0, 1);
    negative->len = -1;
    too_long->len = 137;
    no_value->value = nullptr;
    for (Record *broken : {&negative, &too_long, &no_value})
        check(*broken);
}

TEST(RecordsDeathTest, ImpossibleLengthsAndNoValue) {
    const char *report = "file 'generic/src/numeric\\.cpp' line [0-9]+";
    with_broken_records([&](Record &broken) {
        Record good(3, 4, 0, 123);
        EXPECT_DEATH(com__exctnume_cmp(broken, good, 3), report);
        EXPECT_DEATH(com__exctnume_cmp(good, broken, 3), report);
        EXPECT_DEATH(com__exctnume_intcmp(broken, 3), report);
        EXPECT_DEATH(com__exctnume_copy(broken, good), report);
        EXPECT_DEATH(com__exctnume_copy(good, broken), report);
        EXPECT_DEATH(com__exctnume_scale(broken, nullptr, 1, 0), report);
        EXPECT_DEATH(com__exctnume_scale(good, broken, 1, 0), report);
        EXPECT_DEATH(com__exctnume_checkprecision(broken), report);
        EXPECT_DEATH(com__exctnume_mulby10_add(broken, 1), report);
        EXPECT_DEATH(com__exctnume_inc(broken), report);
        EXPECT_DEATH(com__exctnume_dec(broken), report);
        EXPECT_DEATH(com__exctnume_needsbyte(broken), report);
    });
    CS_BYTE bytes[4] = {};
    CS_BYTE *start = bytes;
    int length = -1;
    EXPECT_BOMB(com__exctnume_divby10(&start, &length), "numeric");
}

TEST(Records, BrokenOnesAreLeftAloneWhereAssertionsReturn) {
    ReturningAssertions mode;
    Record good(3, 4, 0, 123);
    const auto before = good.memory();
    int reports = 0;
    const auto check_both = [&](__CONSTANT *broken) {
        EXPECT_EQ(com__exctnume_cmp(broken, good, 3), 0);
        EXPECT_EQ(com__exctnume_cmp(good, broken, 3), 0);
        EXPECT_EQ(com__exctnume_intcmp(broken, 3), 0);
        EXPECT_NE(com__exctnume_copy(broken, good), 0);
        EXPECT_NE(com__exctnume_copy(good, broken), 0);
        EXPECT_NE(com__exctnume_scale(broken, good, 1, 0), NUME_OK);
        EXPECT_NE(com__exctnume_checkprecision(broken), 0);
        EXPECT_NE(com__exctnume_mulby10_add(broken, 1), 0);
        EXPECT_NE(com__exctnume_inc(broken), NUME_OK);
        EXPECT_NE(com__exctnume_dec(broken), NUME_OK);
        EXPECT_EQ(com__exctnume_needsbyte(broken), 0);
        reports += 11;
        EXPECT_EQ(mode.count(), reports);
    };
    check_both(nullptr);
    with_broken_records([&](Record &broken) {
        check_both(broken);
        EXPECT_NE(com__exctnume_scale(good, broken, 1, 0), NUME_OK);
        EXPECT_EQ(mode.count(), ++reports);
    });
    CS_BYTE *nowhere = nullptr;
    CS_BYTE *start = good.start();
    int length = -1;
    EXPECT_EQ(com__exctnume_divby10(nullptr, &length), 0);
    EXPECT_EQ(com__exctnume_divby10(&nowhere, &length), 0);
    EXPECT_EQ(com__exctnume_divby10(&start, nullptr), 0);
    EXPECT_EQ(com__exctnume_divby10(&start, &length), 0);
    EXPECT_EQ(mode.count(), reports + 4);
    EXPECT_EQ(good.memory(), before);
}

} // namespace
