// Rounding, ceiling and floor of the exact core.
#include "support/assertions.h"
#include "support/exact.h"

#include <gtest/gtest.h>

#include <climits>

using namespace support;

namespace {

constexpr int CASES = 100'000;
constexpr int LONGEST = 136;

int length_of(int precision) { return Com__Nume_Prec_To_Len[precision]; }

// `value` (precision, scale) rounded at `places`, at the scale that it had.
Big rounded(const Big &value, int precision, int scale, int places) {
    Record op(length_of(precision), precision, scale, value), result(33, 77, scale, 1);
    com__exctnume_round(op, places, result);
    EXPECT_TRUE(result.guarded());
    EXPECT_EQ(result.sign(), result.value().sign() < 0);
    return result.value();
}

TEST(Round, HalfGoesAwayFromZeroAndTheScaleStays) {
    EXPECT_EQ(rounded(25, 2, 1, 0), Big(30));
    EXPECT_EQ(rounded(-25, 2, 1, 0), Big(-30));
    EXPECT_EQ(rounded(24, 2, 1, 0), Big(20));
    EXPECT_EQ(rounded(-24, 2, 1, 0), Big(-20));
}

TEST(Round, OnlyTheFirstDroppedDigitDecides) {
    EXPECT_EQ(rounded(145, 3, 2, 0), Big(100));
    EXPECT_EQ(rounded(1499, 4, 3, 0), Big(1000));
    EXPECT_EQ(rounded(1500, 4, 3, 0), Big(2000));
    EXPECT_EQ(rounded(145, 3, 2, 1), Big(150));
}

TEST(Round, ZeroResultHasNoSign) {
    EXPECT_EQ(rounded(-4, 1, 1, 0), Big(0)); // -0.4
    Record op(2, 1, 0, 0, 1), result(2, 1, 0);
    com__exctnume_round(op, 0, result);
    EXPECT_EQ(result.sign(), 0) << "minus zero, with nothing to drop";
}

TEST(Round, CapOfDroppedDigitsByThePrecisionLeavesDigitsInPlace) {
    EXPECT_EQ(rounded(9, 1, 3, 0), Big(10)) << "0.009 becomes 0.010";
    EXPECT_EQ(rounded(4, 1, 3, 0), Big(0));
    EXPECT_EQ(rounded(99, 2, 5, 0), Big(100)) << "0.00099 becomes 0.00100: two digits dropped";
    EXPECT_EQ(rounded(9, 1, 3, 1), Big(0)) << "no cap above the point";
    EXPECT_EQ(rounded(9, 1, 3, 2), Big(10));
}

TEST(Round, ToTheLeftOfThePoint) {
    EXPECT_EQ(rounded(12345, 5, 0, -2), Big(12300));
    EXPECT_EQ(rounded(12355, 5, 1, -2), Big(12000)) << "1235.5 becomes 1200.0";
    EXPECT_EQ(rounded(99999, 5, 0, -5), Big(100000));
    EXPECT_EQ(rounded(99999, 5, 0, -6), Big(100000)) << "capped at five digits";
}

TEST(Round, NothingToDropIsACopyWithAPlainSign) {
    Record op(3, 4, 1, 1234, 9), result(9, 18, 1);
    for (const int places : {1, 2, 77}) {
        com__exctnume_round(op, places, result);
        EXPECT_EQ(result.value(), Big(-1234));
        EXPECT_EQ(result.sign(), 1);
    }
}

TEST(Round, PlacesAreClampedTo77) {
    EXPECT_EQ(rounded(15, 2, 1, INT_MAX), Big(15));
    EXPECT_EQ(rounded(15, 2, 1, INT_MIN), Big(0)) << "two digits are dropped, the first of them 1";
    EXPECT_EQ(rounded(55, 2, 1, INT_MIN), Big(100));
}

TEST(Round, AllOnesAreWidenedBeforeTheIncrement) {
    EXPECT_EQ(rounded(2559, 4, 1, 0), Big(2560));
    EXPECT_EQ(rounded(655359, 6, 1, 0), Big(655360));
    EXPECT_EQ(rounded(Big::of("18446744073709551615") * 10 + 9, 21, 1, 0), Big::of("184467440737095516160"));
}

TEST(Round, OverflowIsNotReported) {
    Record op(2, 3, 1, 255), result(2, 3, 1, 0, 5);
    com__exctnume_round(op, 0, result); // 260 does not fit
    EXPECT_TRUE(result.guarded());
    EXPECT_EQ(result.magnitude(), Big(260 & 255)) << "the low byte";
}

TEST(Round, PrecisionOfZeroDropsNothingLeftOfThePoint) { EXPECT_EQ(rounded(0, 1, 5, 0), Big(0)); }

Big expected_round(const Record &op, int places) {
    places = std::clamp(places, -77, 77);
    int drop = op->scale - places;
    if (drop <= 0)
        return op.value();
    if (places <= 0)
        drop = std::min<int>(drop, op->prec);
    Big kept = op.magnitude() / Big::ten_to(drop);
    if (drop > 0 && op.magnitude() / Big::ten_to(drop - 1) % 10 > Big(4))
        kept = kept + 1;
    const Big result = kept * Big::ten_to(drop);
    return op.sign() != 0 ? -result : result;
}

void check_round(Random &random, int longest, int last_scale, int cases) {
    for (int i = 0; i < cases; ++i) {
        const int length = pick(random, 0, longest);
        const int precision = pick(random, 0, 7) == 0 ? pick(random, 0, 255) : pick(random, 1, 77);
        Record op(length, precision, pick(random, 0, last_scale), random_magnitude(random, length - 1),
                  static_cast<CS_BYTE>(random() % 3));
        const int places = pick(random, 0, 3) == 0 ? pick(random, -90, 90) : pick(random, -5, 40);
        const int to = pick(random, 0, 1) == 0 ? longest : pick(random, 0, longest);
        Record result(to, 77, 3, 1);
        const Big expected = expected_round(op, places);
        const Record before = op;
        com__exctnume_round(op, places, result);
        ASSERT_EQ(op.memory(), before.memory());
        ASSERT_TRUE(result.guarded());
        const Big kept = expected.magnitude() % Big::limit_of_bytes(to - 1);
        if (to > 0) {
            ASSERT_EQ(result.magnitude(), kept)
                << op.value().text() << " (" << precision << "," << int(op->scale) << ") at " << places;
            ASSERT_EQ(result.sign(), kept.sign() != 0 && op.sign() != 0);
        }
        com__exctnume_round(op, places, op);
        if (length > 0) {
            ASSERT_EQ(op.magnitude(), expected.magnitude() % Big::limit_of_bytes(length - 1));
        }
        ASSERT_TRUE(op.guarded());
    }
}

TEST(Round, RandomAgainstBigIntegers) {
    Random random(41);
    check_round(random, 33, 77, CASES);
}

TEST(Round, RandomLongRecordsAndScalesBeyondTheTable) {
    Random random(42);
    check_round(random, LONGEST, 255, 20'000);
}

// Ceiling (1) or floor (0) of a value, as an integer.
Big whole(const Big &value, int precision, int scale, int type) {
    Record op(length_of(precision), precision, scale, value), result(33, 1, 9, 1);
    com__exctnume_ceilingfloor(op, result, type);
    EXPECT_EQ(result->len, op->len);
    EXPECT_EQ(result->prec, precision);
    EXPECT_EQ(result->scale, 0);
    EXPECT_EQ(result.sign(), result.value().sign() < 0);
    return result.value();
}

TEST(Ceilingfloor, AboutZeroAndOne) {
    EXPECT_EQ(whole(-5, 1, 1, 1), Big(0)) << "ceiling of -0.5, without sign";
    EXPECT_EQ(whole(-5, 1, 1, 0), Big(-1)) << "floor of -0.5";
    EXPECT_EQ(whole(12, 2, 1, 1), Big(2)) << "ceiling of 1.2";
    EXPECT_EQ(whole(12, 2, 1, 0), Big(1)) << "floor of 1.2";
    EXPECT_EQ(whole(-12, 2, 1, 1), Big(-1));
    EXPECT_EQ(whole(-12, 2, 1, 0), Big(-2));
}

TEST(Ceilingfloor, IntegersStay) {
    for (const int type : {0, 1, -1, 5}) {
        EXPECT_EQ(whole(120, 3, 1, type), Big(12));
        EXPECT_EQ(whole(-120, 3, 1, type), Big(-12));
        EXPECT_EQ(whole(0, 3, 1, type), Big(0));
        EXPECT_EQ(whole(7, 3, 0, type), Big(7));
    }
}

TEST(Ceilingfloor, AnyDroppedDigitMakesAFraction) {
    EXPECT_EQ(whole(1000001, 7, 6, 1), Big(2));
    EXPECT_EQ(whole(1100000, 7, 6, 1), Big(2));
    EXPECT_EQ(whole(1000000, 7, 6, 1), Big(1));
}

TEST(Ceilingfloor, AnyNonZeroTypeIsTheCeiling) {
    EXPECT_EQ(whole(12, 2, 1, -1), Big(2));
    EXPECT_EQ(whole(12, 2, 1, 7), Big(2));
}

TEST(Ceilingfloor, MinusZeroBecomesZero) {
    for (const int type : {0, 1}) {
        Record op(3, 4, 2, 0, 1), result(3, 1, 1, 5);
        com__exctnume_ceilingfloor(op, result, type);
        EXPECT_EQ(result.sign(), 0);
        EXPECT_EQ(result.magnitude(), Big(0));
    }
}

TEST(Ceilingfloor, WritesTheOperandsLengthAndNoMore) {
    Record op(5, 9, 2, -12345), result(9, 18, 7, 1);
    com__exctnume_ceilingfloor(op, result, 0);
    EXPECT_EQ(result->len, 5);
    EXPECT_EQ(result.value(), Big(-124));
    EXPECT_EQ(result.start()[5], 0) << "beyond the new length the old record stands";
    EXPECT_EQ(result.start()[8], 1);
}

void check_ceilingfloor(Random &random, int longest, int last_scale, int cases) {
    for (int i = 0; i < cases; ++i) {
        const int length = pick(random, 0, longest);
        const int scale = pick(random, 0, last_scale);
        Big magnitude = random_magnitude(random, length - 1);
        if (pick(random, 0, 2) == 0)
            magnitude = magnitude / Big::ten_to(scale) * Big::ten_to(scale);
        Record op(length, 77, scale, magnitude, static_cast<CS_BYTE>(random() % 3));
        const int type = pick(random, 0, 1);
        const bool fraction = magnitude % Big::ten_to(scale) > Big(0);
        Big expected = magnitude / Big::ten_to(scale);
        if (fraction && (type != 0) == (op.sign() == 0))
            expected = expected + 1;
        Record result(longest, 1, 1, 5);
        com__exctnume_ceilingfloor(op, result, type);
        ASSERT_EQ(result->len, length);
        if (length > 0) {
            ASSERT_EQ(result.magnitude(), expected) << magnitude.text() << " scale " << scale << " type " << type;
            ASSERT_EQ(result.sign(), expected.sign() != 0 && op.sign() != 0);
        }
        com__exctnume_ceilingfloor(op, op, type);
        if (length > 0) {
            ASSERT_EQ(op.magnitude(), expected);
        }
        ASSERT_EQ(op->scale, 0);
        ASSERT_TRUE(op.guarded());
    }
}

TEST(Ceilingfloor, RandomAgainstBigIntegers) {
    Random random(43);
    check_ceilingfloor(random, 33, 77, CASES);
}

TEST(Ceilingfloor, RandomLongRecordsAndScalesBeyondTheTable) {
    Random random(44);
    check_ceilingfloor(random, LONGEST, 255, 20'000);
}

// ---- Broken contracts ------------------------------------------------------------------------

TEST(RoundDeathTest, BrokenRecords) {
    Record good(3, 4, 1, 123), negative(3, 4, 0, 1), too_long(3, 4, 0, 1), no_value(3, 4, 0, 1);
    negative->len = -1;
    too_long->len = 137;
    no_value->value = nullptr;
    EXPECT_NULL_REPORT(com__exctnume_round(nullptr, 0, good), "numeaux");
    EXPECT_NULL_REPORT(com__exctnume_round(good, 0, nullptr), "numeaux");
    EXPECT_NULL_REPORT(com__exctnume_round(good, 0, no_value), "numeaux");
    EXPECT_BOMB(com__exctnume_round(negative, 0, good), "numeaux");
    EXPECT_BOMB(com__exctnume_round(good, 0, too_long), "numeaux");
    EXPECT_NULL_REPORT(com__exctnume_ceilingfloor(nullptr, good, 0), "numeaux");
    EXPECT_NULL_REPORT(com__exctnume_ceilingfloor(good, nullptr, 0), "numeaux");
    EXPECT_NULL_REPORT(com__exctnume_ceilingfloor(good, no_value, 0), "numeaux");
    EXPECT_BOMB(com__exctnume_ceilingfloor(negative, good, 0), "numeaux");
    EXPECT_BOMB(com__exctnume_ceilingfloor(too_long, good, 0), "numeaux");
}

TEST(Round, BrokenRecordsWriteNothingWhereAssertionsReturn) {
    ReturningAssertions mode;
    Record good(3, 4, 1, 123), negative(3, 4, 0, 1), too_long(3, 4, 0, 1), no_value(3, 4, 0, 1);
    negative->len = -1;
    too_long->len = 137;
    no_value->value = nullptr;
    const auto before = good.memory();
    int reports = 0;
    for (__CONSTANT *broken : {static_cast<__CONSTANT *>(nullptr), static_cast<__CONSTANT *>(negative),
                               static_cast<__CONSTANT *>(too_long), static_cast<__CONSTANT *>(no_value)}) {
        com__exctnume_round(broken, 0, good);
        com__exctnume_round(good, 0, broken);
        com__exctnume_ceilingfloor(broken, good, 1);
        reports += 3;
        EXPECT_EQ(mode.count(), reports);
    }
    com__exctnume_ceilingfloor(good, nullptr, 1);
    com__exctnume_ceilingfloor(good, no_value, 1);
    EXPECT_EQ(mode.count(), reports + 2);
    EXPECT_EQ(good.memory(), before);
    EXPECT_EQ(good->scale, 1);
    EXPECT_EQ(no_value->len, 3);
}

} // namespace
