// The operations of the exact core on records: magnitudes, and signed values at a scale.
#include "support/assertions.h"
#include "support/exact.h"
#include "support/schoolbook.h"

#include <gtest/gtest.h>

using namespace support;

namespace {

constexpr int CASES = 100'000;
constexpr int LONGEST = LONGEST_RECORD;

int length_of(int precision) { return Com__Nume_Prec_To_Len[precision]; }

Big random_signed(Random &random, int bytes) {
    const Big magnitude = random_magnitude(random, bytes);
    return pick(random, 0, 1) == 0 ? magnitude : -magnitude;
}

// ---- Magnitudes: add, subtract, multiply -----------------------------------------------------

TEST(Intadd, EveryPairOfBytes) {
    for (int x = 0; x <= 255; ++x)
        for (int y = 0; y <= 255; ++y) {
            Record a(2, 3, 0, x), b(2, 3, 0, y), same(2, 3, 0), longer(3, 3, 0, 9, 5);
            ASSERT_EQ(com__exctnume_intadd(a, b, same), x + y > 255);
            if (x + y <= 255) {
                ASSERT_EQ(same.magnitude(), Big(x + y));
            }
            ASSERT_EQ(com__exctnume_intadd(a, b, longer), 0);
            ASSERT_EQ(longer.magnitude(), Big(x + y));
            ASSERT_EQ(longer.sign(), 0);
        }
}

TEST(Intadd, CarryOutOfAllBytesOverflows) {
    for (const int length : {2, 9, 17, 33, 136}) {
        const Big most = Big::limit_of_bytes(length - 1) - 1;
        Record a(length, 9, 0, most), b(length, 9, 0, 1), r(length, 9, 0);
        EXPECT_EQ(com__exctnume_intadd(a, b, r), 1) << length;
        Record longer(length + 1 <= LONGEST ? length + 1 : length, 9, 0);
        EXPECT_EQ(com__exctnume_intadd(a, b, longer), length == LONGEST) << length;
    }
}

TEST(Intadd, ShorterResultOverflowsOnlyOnBytesThatAreNotZero) {
    Record a(9, 9, 0, 200), b(9, 9, 0, 55), r(2, 9, 0);
    EXPECT_EQ(com__exctnume_intadd(a, b, r), 0);
    EXPECT_EQ(r.magnitude(), Big(255));
    Record high(9, 9, 0, 256);
    EXPECT_EQ(com__exctnume_intadd(high, b, r), 1);
    EXPECT_EQ(com__exctnume_intadd(b, high, r), 1);
}

TEST(Intadd, LongerResultIsClearedAboveSignIncluded) {
    Record a(2, 9, 0, 7), r(5, 9, 0, 0x01020304, 9);
    EXPECT_EQ(com__exctnume_intadd(a, a, r), 0);
    EXPECT_EQ(r.sign(), 0);
    EXPECT_EQ(r.magnitude(), Big(14));
}

TEST(Intadd, SignsDoNotCount) {
    Record a(3, 9, 0, -300), b(3, 9, 0, 50), r(3, 9, 0, 0, 9);
    EXPECT_EQ(com__exctnume_intadd(a, b, r), 0);
    EXPECT_EQ(r.magnitude(), Big(350));
    EXPECT_EQ(r.sign(), 9) << "a result of the operands' length keeps its sign byte";
}

TEST(Intsub, EveryPairOfBytes) {
    for (int x = 0; x <= 255; ++x)
        for (int y = 0; y <= x; ++y) {
            Record a(2, 3, 0, x), b(2, 3, 0, y), r(2, 3, 0), longer(4, 3, 0, 0x010203, 5);
            ASSERT_EQ(com__exctnume_intsub(a, b, r), 0);
            ASSERT_EQ(r.magnitude(), Big(x - y));
            ASSERT_EQ(com__exctnume_intsub(a, b, longer), 0);
            ASSERT_EQ(longer.value(), Big(x - y));
        }
}

TEST(Intsub, ShorterResultOverflowsOnDifferenceBytesBeyondIt) {
    Record a(4, 9, 0, 0x010005), b(4, 9, 0, 0x010000), c(4, 9, 0, 0x000005), r(2, 9, 0);
    EXPECT_EQ(com__exctnume_intsub(a, b, r), 0);
    EXPECT_EQ(r.magnitude(), Big(5));
    EXPECT_EQ(com__exctnume_intsub(a, c, r), 1);
}

TEST(Intsub, SmallerMinuendWrapsWithinTheOperandsBytes) {
    for (const int length : {2, 9, 10, 33, 41}) {
        Record a(length, 9, 0, 3), b(length, 9, 0, 5), r(length + 6, 9, 0, 1);
        EXPECT_EQ(com__exctnume_intsub(a, b, r), 0);
        EXPECT_EQ(r.magnitude(), Big::limit_of_bytes(length - 1) - 2) << length;
    }
}

TEST(Intmul, EveryPairOfBytes) {
    for (int x = 0; x <= 255; ++x)
        for (int y = 0; y <= 255; ++y) {
            Record a(2, 3, 0, x), b(2, 3, 0, -y), two(3, 3, 0), one(2, 3, 0);
            ASSERT_EQ(com__exctnume_intmul(a, b, two), 0);
            ASSERT_EQ(two.value(), Big(-x * y));
            ASSERT_EQ(two.sign(), x * y != 0);
            ASSERT_EQ(com__exctnume_intmul(a, b, one), x * y > 255);
        }
}

TEST(Intmul, ByZeroClearsTheSignToo) {
    Record zero(2, 1, 0), minus(5, 9, 0, -12345), r(9, 9, 0, Big(1) - Big::limit_of_bytes(8));
    EXPECT_EQ(com__exctnume_intmul(zero, minus, r), 0);
    EXPECT_EQ(r.sign(), 0);
    EXPECT_EQ(r.magnitude(), Big(0));
    Record minus_zero(2, 1, 0, 0, 1);
    EXPECT_EQ(com__exctnume_intmul(minus, minus_zero, r), 0);
    EXPECT_EQ(r.sign(), 0);
}

TEST(Intmul, ByOneIsACopyWithTheSignOfTheProduct) {
    Record one(2, 1, 0, -1), value(9, 18, 0, 123456789, 1), r(5, 9, 0), narrow(2, 2, 0);
    EXPECT_EQ(com__exctnume_intmul(one, value, r), 0);
    EXPECT_EQ(r.value(), Big(123456789));
    EXPECT_EQ(com__exctnume_intmul(value, one, narrow), 1);
    EXPECT_EQ(narrow.magnitude(), Big(123456789 & 255));
}

TEST(Intmul, SignIsThatOfTheSignsWhateverNonZeroBytesTheyAre) {
    Record a(2, 1, 0, 3, 200), b(2, 1, 0, 5, 1), c(2, 1, 0, 5), r(3, 2, 0);
    EXPECT_EQ(com__exctnume_intmul(a, b, r), 0);
    EXPECT_EQ(r.sign(), 0);
    EXPECT_EQ(com__exctnume_intmul(a, c, r), 0);
    EXPECT_EQ(r.sign(), 1);
}

TEST(MagnitudeOperations, RandomAgainstBigIntegersAndPaper) {
    Random random(21);
    for (int i = 0; i < CASES; ++i) {
        const int length = std::max(1, random_length(random));
        const int to = pick(random, 0, 2) == 0 ? length : random_length(random);
        const CS_BYTE s1 = static_cast<CS_BYTE>(random() % 3), s2 = static_cast<CS_BYTE>(random() % 3);
        Record a(length, 9, 0, random_magnitude(random, length - 1), s1);
        Record b(length, 9, 0, random_magnitude(random, length - 1), s2);
        if (a.magnitude() < b.magnitude())
            std::swap(a, b);
        Record sum(to, 9, 0, 0, 9), difference = sum, paper_sum = sum, paper_difference = sum;
        const Big limit = Big::limit_of_bytes(to - 1);

        const int sum_code = com__exctnume_intadd(a, b, sum);
        ASSERT_EQ(sum_code, a.magnitude() + b.magnitude() >= limit);
        ASSERT_EQ(sum_code, schoolbook::add(a.get(), b.get(), paper_sum.get()));
        const int difference_code = com__exctnume_intsub(a, b, difference);
        ASSERT_EQ(difference_code, a.magnitude() - b.magnitude() >= limit);
        ASSERT_EQ(difference_code, schoolbook::subtract(a.get(), b.get(), paper_difference.get()));
        if (sum_code == 0) {
            ASSERT_EQ(sum.memory(), paper_sum.memory());
        }
        ASSERT_EQ(difference.memory(), paper_difference.memory());
        ASSERT_TRUE(sum.guarded() && difference.guarded());
        if (to == length && length > 0) { // a result in the place of an operand
            Record in_a = a, in_b = b;
            ASSERT_EQ(com__exctnume_intadd(in_a, b, in_a), sum_code);
            ASSERT_EQ(com__exctnume_intsub(a, in_b, in_b), difference_code);
            ASSERT_EQ(in_b.magnitude(), difference.magnitude());
            if (sum_code == 0) {
                ASSERT_EQ(in_a.magnitude(), sum.magnitude());
            }
        }
    }
}

TEST(Intmul, RandomAgainstBigIntegersAndPaper) {
    Random random(22);
    for (int i = 0; i < CASES; ++i) {
        const int l1 = random_length(random), l2 = random_length(random);
        const int to =
            pick(random, 0, 1) == 0 ? std::clamp(l1 + l2 - pick(random, 0, 3), 0, LONGEST) : random_length(random);
        const CS_BYTE s1 = static_cast<CS_BYTE>(random() % 3), s2 = static_cast<CS_BYTE>(random() % 3);
        Record a(l1, 9, 0, random_magnitude(random, l1 - 1), s1);
        Record b(l2, 9, 0, random_magnitude(random, l2 - 1), s2);
        Record r(to, 9, 0, 1, 9), paper = r;
        const Big product = a.magnitude() * b.magnitude();
        const int code = com__exctnume_intmul(a, b, r);
        ASSERT_EQ(code, product >= Big::limit_of_bytes(to - 1))
            << a.magnitude().text() << " * " << b.magnitude().text();
        ASSERT_EQ(code, schoolbook::multiply(a.get(), b.get(), paper.get()));
        ASSERT_TRUE(r.guarded());
        if (code == 0 && to > 0) {
            ASSERT_EQ(r.magnitude(), product);
            ASSERT_EQ(r.magnitude(), paper.magnitude());
            ASSERT_EQ(r.sign(), product.sign() != 0 && (a.sign() != 0) != (b.sign() != 0));
        }
        // In the place of an operand, at that operand's length.
        Record in_a = a, in_b = b;
        ASSERT_EQ(com__exctnume_intmul(in_a, b, in_a), product >= Big::limit_of_bytes(l1 - 1));
        ASSERT_EQ(com__exctnume_intmul(a, in_b, in_b), product >= Big::limit_of_bytes(l2 - 1));
        if (l1 > 0 && product < Big::limit_of_bytes(l1 - 1)) {
            ASSERT_EQ(in_a.magnitude(), product);
        }
        if (l2 > 0 && product < Big::limit_of_bytes(l2 - 1)) {
            ASSERT_EQ(in_b.magnitude(), product);
        }
    }
}

// ---- Signed values ---------------------------------------------------------------------------

TEST(Addorsub, SignsByTheLargerMagnitude) {
    const struct {
        long a, b;
        int opn;
        long result;
    } rows[] = {
        {5, 3, 0, 8},  {-5, -3, 0, -8}, {5, -3, 0, 2},  {-5, 3, 0, -2}, {3, -5, 0, -2}, {-3, 5, 0, 2},
        {5, 3, 1, 2},  {-5, -3, 1, -2}, {5, -3, 1, 8},  {-5, 3, 1, -8}, {3, 5, 1, -2},  {-3, -5, 1, 2},
        {5, -5, 0, 0}, {-5, 5, 0, 0},   {-5, -5, 1, 0}, {0, 5, 1, -5},  {0, 0, 1, 0},   {5, 5, 1, 0},
    };
    for (const auto &row : rows) {
        Record a(3, 4, 0, row.a), b(3, 4, 0, row.b), r(3, 4, 0, -77);
        EXPECT_EQ(com__exctnume_addorsub(a, b, r, row.opn), NUME_OK);
        EXPECT_EQ(r.value(), Big(row.result)) << row.a << " " << row.b << " " << row.opn;
        EXPECT_EQ(r.sign(), row.result < 0);
    }
}

TEST(Addorsub, EqualMagnitudesOfUnlikeSignClearTheResult) {
    Record a(3, 4, 0, 1234, 7), b(3, 4, 0, 1234), r(9, 18, 0, Big::limit_of_bytes(8) - 1, 1);
    EXPECT_EQ(com__exctnume_addorsub(a, b, r, 0), NUME_OK);
    EXPECT_EQ(r.sign(), 0);
    EXPECT_EQ(r.magnitude(), Big(0));
}

TEST(Addorsub, EqualMagnitudesAnswerBeforeTheRescaleIsJudged) {
    Record a(3, 4, 0, 1234), b(3, 4, 0, 1234), r(9, 18, 200);
    EXPECT_EQ(com__exctnume_addorsub(a, b, r, 1), NUME_OK);
    EXPECT_EQ(com__exctnume_addorsub(a, b, r, 0), NUME_BADVALUE);
}

TEST(Addorsub, MinusZerosAddedStayMinusZeroUnlessRescaled) {
    Record a(2, 1, 0, 0, 1), b(2, 1, 0, 0, 1), plain(2, 1, 0), scaled(3, 3, 2);
    EXPECT_EQ(com__exctnume_addorsub(a, b, plain, 0), NUME_OK);
    EXPECT_EQ(plain.sign(), 1);
    EXPECT_EQ(com__exctnume_addorsub(a, b, scaled, 0), NUME_OK);
    EXPECT_EQ(scaled.sign(), 0);
    EXPECT_EQ(com__exctnume_addorsub(a, b, plain, 1), NUME_OK);
    EXPECT_EQ(plain.sign(), 0) << "subtracted they cancel";
}

TEST(Addorsub, OverflowClearsTheResult) {
    Record a(2, 2, 0, 99), b(2, 2, 0, -99), r(2, 2, 0, -1);
    EXPECT_EQ(com__exctnume_addorsub(a, a, r, 0), NUME_OVERFLOW) << "198 fits the byte and not the digits";
    EXPECT_EQ(r.value(), Big(0));
    EXPECT_EQ(r.sign(), 0);
    Record full(2, 9, 0, 200), r2(2, 9, 0, -1);
    EXPECT_EQ(com__exctnume_addorsub(full, full, r2, 0), NUME_OVERFLOW) << "400 does not fit the byte";
    EXPECT_EQ(r2.value(), Big(0));
    Record r3(2, 2, 1, -1);
    EXPECT_EQ(com__exctnume_addorsub(b, Record(2, 2, 0, 1), r3, 0), NUME_OVERFLOW) << "98.0 does not fit the byte";
    EXPECT_EQ(r3.value(), Big(0));
    EXPECT_EQ(r3.sign(), 0);
}

TEST(Addorsub, SumMustFitBeforeTheRescale) {
    Record a(3, 4, 1, 2000), b(3, 4, 1, 600), narrow(2, 3, 0);
    EXPECT_EQ(com__exctnume_addorsub(a, b, narrow, 0), NUME_OVERFLOW) << "260 would not, 2600 does not fit a byte";
    Record c(3, 4, 1, 100), d(3, 4, 1, 200);
    EXPECT_EQ(com__exctnume_addorsub(c, d, narrow, 0), NUME_OVERFLOW) << "30 would fit, 300 does not";
}

TEST(Addorsub, RescaleDownTellsWhatItCuts) {
    Record a(3, 4, 2, 1234), b(3, 4, 2, 1), r(3, 4, 1);
    EXPECT_EQ(com__exctnume_addorsub(a, b, r, 0), NUME_TRUNCATED);
    EXPECT_EQ(r.value(), Big(123));
    EXPECT_EQ(com__exctnume_addorsub(a, Record(3, 4, 2, 6), r, 0), NUME_OK);
    EXPECT_EQ(r.value(), Big(124));
}

struct Expected {
    int code;
    Big value;
};

Expected rescaled(const Big &value, int from_len, int places, const __CONSTANT &to) {
    const Big bytes = Big::limit_of_bytes(to.len - 1);
    const Big digits = Big::ten_to(to.prec);
    if (places > 77 || places < -77)
        return {NUME_BADVALUE, 0};
    if (places < 0) {
        if (from_len + 1 + length_of(-places) >= 133)
            return {NUME_OVERFLOW, 0};
        const Big down = value / Big::ten_to(-places);
        if (down.magnitude() >= bytes || down.magnitude() >= digits)
            return {NUME_OVERFLOW, 0};
        return {down * Big::ten_to(-places) == value ? NUME_OK : NUME_TRUNCATED, down};
    }
    const Big up = value * Big::ten_to(places);
    if (up.magnitude() >= bytes || up.magnitude() >= digits)
        return {NUME_OVERFLOW, 0};
    return {NUME_OK, up};
}

Expected expected_sum(const Record &a, const Record &b, int opn, const Record &r) {
    const Big sum = opn == 0 ? a.value() + b.value() : a.value() - b.value();
    const bool added = (a.sign() != 0) == (b.sign() != 0) ? opn == 0 : opn == 1;
    if (!added && sum.sign() == 0)
        return {NUME_OK, 0};
    if (sum.magnitude() >= Big::limit_of_bytes(r->len - 1))
        return {NUME_OVERFLOW, 0};
    return rescaled(sum, r->len, r->scale - a->scale, r.get());
}

void check_sums(Random &random, int longest, int cases) {
    for (int i = 0; i < cases; ++i) {
        const int length = pick(random, 1, longest);
        const int scale = pick(random, 0, 77);
        Record a(length, 77, scale, random_signed(random, length - 1));
        Record b(length, 77, scale, random_signed(random, length - 1));
        if (pick(random, 0, 15) == 0)
            b.reset(length, 77, scale, a.value(), 0);
        if (pick(random, 0, 15) == 0)
            a.reset(length, 77, scale, 0, static_cast<CS_BYTE>(pick(random, 0, 2)));
        const int to = std::clamp(length + pick(random, -1, 2), 0, longest);
        const int to_scale = pick(random, 0, 1) == 0 ? scale : std::max(0, scale + pick(random, -80, 80));
        for (int opn = 0; opn <= 1; ++opn) {
            Record r(to, pick(random, 0, 1) == 0 ? 77 : pick(random, 1, 77), to_scale, 5);
            const Expected expected = expected_sum(a, b, opn, r);
            ASSERT_EQ(com__exctnume_addorsub(a, b, r, opn), expected.code)
                << a.value().text() << " " << b.value().text() << " op " << opn << " to " << to << " by "
                << to_scale - scale;
            ASSERT_TRUE(r.guarded());
            if (expected.code != NUME_BADVALUE) {
                ASSERT_EQ(r.value(), expected.value);
                ASSERT_LE(r.sign(), 1);
            }
            if (to == length) { // a result in the place of each operand
                Record in_a = a, in_b = b;
                in_a->prec = in_b->prec = r->prec;
                ASSERT_EQ(com__exctnume_addorsub(a, in_b, in_b, opn), expected_sum(a, b, opn, in_b).code);
                ASSERT_EQ(in_b.value(), expected_sum(a, b, opn, in_b).value);
                ASSERT_EQ(com__exctnume_addorsub(in_a, b, in_a, opn), expected_sum(a, b, opn, in_a).code);
                ASSERT_EQ(in_a.value(), expected_sum(a, b, opn, in_a).value);
            }
        }
    }
}

TEST(Addorsub, RandomAgainstBigIntegers) {
    Random random(26);
    check_sums(random, 33, CASES);
}

TEST(Addorsub, RandomLongRecords) {
    Random random(27);
    check_sums(random, LONGEST, 10'000);
}

TEST(Mul, SignsAndScale) {
    Record a(3, 4, 2, -1234), b(2, 2, 1, 25), r(4, 7, 3);
    EXPECT_EQ(com__exctnume_mul(a, b, r), NUME_OK);
    EXPECT_EQ(r.value(), Big(-30850));
    EXPECT_EQ(com__exctnume_mul(a, Record(2, 2, 1, -25), r), NUME_OK);
    EXPECT_EQ(r.value(), Big(30850));
}

TEST(Mul, LosingDigitsIsToldWithTheCutValueInPlace) {
    Record a(2, 2, 1, 15), r(2, 2, 1);
    EXPECT_EQ(com__exctnume_mul(a, a, r), NUME_TRUNCATED);
    EXPECT_EQ(r.value(), Big(22));
    Record direct(5, 9, 1);
    EXPECT_EQ(com__exctnume_mul(a, a, direct), NUME_TRUNCATED) << "in place, without the stack record";
    EXPECT_EQ(direct.value(), Big(22));
}

TEST(Mul, RescaleOfMoreThan77PlacesIsABadValue) {
    Record a(33, 77, 40, 1), r(33, 77, 2);
    EXPECT_EQ(com__exctnume_mul(a, a, r), NUME_BADVALUE);
    EXPECT_EQ(com__exctnume_mul(Record(2, 1, 40, 0), a, r), NUME_BADVALUE) << "zero too";
    Record up(33, 77, 78);
    EXPECT_EQ(com__exctnume_mul(Record(2, 1, 0, 1), Record(2, 1, 0, 1), up), NUME_BADVALUE);
}

TEST(Mul, ProductOfMoreThan32BytesOverflowsBeforeTheRescale) {
    Record a(33, 77, 40, Big::power(2, 128)), r(33, 77, 3);
    EXPECT_EQ(com__exctnume_mul(a, a, r), NUME_OVERFLOW) << "2^256";
    Record b(33, 77, 40, Big::power(2, 127)), c(33, 77, 37, Big::power(2, 128));
    EXPECT_EQ(com__exctnume_mul(b, c, r), NUME_TRUNCATED) << "2^255 fits and is cut";
    EXPECT_EQ(r.value(), Big::power(2, 255) / Big::ten_to(74));
    Record wide_scale(33, 77, 41, Big::power(2, 128));
    EXPECT_EQ(com__exctnume_mul(wide_scale, wide_scale, r), NUME_OVERFLOW) << "judged before a rescale of 79 places";
}

TEST(Mul, IntoARecordThatHoldsBothPrecisionsTheProductMustFitItsBytes) {
    Record a(3, 2, 1, 2000), b(3, 2, 1, 300), r(3, 4, 0); // values beyond their precision
    EXPECT_EQ(com__exctnume_mul(a, b, r), NUME_OVERFLOW) << "6000 would fit, 600000 does not";
    Record smaller(3, 3, 0, 0);
    EXPECT_EQ(com__exctnume_mul(a, b, smaller), NUME_OVERFLOW) << "6000 passes the precision";
    smaller->prec = 3;
    EXPECT_EQ(com__exctnume_mul(a, Record(3, 2, 1, 30), smaller), NUME_OK) << "through the stack record";
    EXPECT_EQ(smaller.value(), Big(600));
}

TEST(Mul, ResultBeyondThePrecisionOverflows) {
    Record nine(2, 1, 0, 9), r(2, 1, 0);
    EXPECT_EQ(com__exctnume_mul(nine, nine, r), NUME_OVERFLOW);
    Record two(2, 2, 0);
    EXPECT_EQ(com__exctnume_mul(nine, nine, two), NUME_OK);
    EXPECT_EQ(two.value(), Big(81));
}

TEST(Mul, ByZeroHasNoSign) {
    Record zero(2, 1, 0, 0, 1), minus(3, 4, 2, -1234), r(4, 7, 3, -1);
    EXPECT_EQ(com__exctnume_mul(zero, minus, r), NUME_OK);
    EXPECT_EQ(r.sign(), 0);
    EXPECT_EQ(r.magnitude(), Big(0));
    Record cut(2, 1, 0);
    EXPECT_EQ(com__exctnume_mul(Record(2, 1, 1, -1), Record(2, 1, 1, 1), cut), NUME_TRUNCATED);
    EXPECT_EQ(cut.sign(), 0) << "a product that is cut to zero";
}

Expected expected_product(const Record &a, const Record &b, const Record &r) {
    const Big product = a.value() * b.value();
    const bool direct = r->prec >= a->prec + b->prec;
    if (product.magnitude() >= Big::limit_of_bytes(direct ? r->len - 1 : 32))
        return {NUME_OVERFLOW, 0};
    return rescaled(product, direct ? r->len : 33, r->scale - a->scale - b->scale, r.get());
}

void check_products(Random &random, int longest, int cases) {
    for (int i = 0; i < cases; ++i) {
        const int l1 = pick(random, 1, longest), l2 = pick(random, 1, longest);
        const int p1 = pick(random, 1, 77), p2 = pick(random, 1, 77);
        const int s1 = pick(random, 0, 77), s2 = pick(random, 0, 77);
        const int d1 = pick(random, 0, 1) == 0 ? l1 - 1 : pick(random, 0, std::min(l1 - 1, 16));
        const int d2 = pick(random, 0, 1) == 0 ? l2 - 1 : pick(random, 0, std::min(l2 - 1, 16));
        Record a(l1, p1, s1, random_signed(random, d1));
        Record b(l2, p2, s2, random_signed(random, d2));
        const int to = pick(random, 0, longest);
        const int to_precision = pick(random, 0, 2) == 0 ? pick(random, 1, 77) : std::min(77, p1 + p2);
        const int places = pick(random, 0, 1) == 0 ? 0 : pick(random, -90, 40);
        const int to_scale = std::clamp(s1 + s2 + places, 0, 200);
        Record r(to, to_precision, to_scale, 5);
        const Expected expected = expected_product(a, b, r);
        ASSERT_EQ(com__exctnume_mul(a, b, r), expected.code)
            << a.value().text() << " " << b.value().text() << " to " << to << " (" << to_precision << ") by "
            << to_scale - s1 - s2;
        ASSERT_TRUE(r.guarded());
        if (to > 0 && (expected.code == NUME_OK || expected.code == NUME_TRUNCATED)) {
            ASSERT_EQ(r.value(), expected.value);
            ASSERT_EQ(r.sign(), expected.value.sign() < 0);
        }
        Record in_a = a, in_b = b;
        in_a->prec = in_b->prec = 77;
        const Expected expected_a = expected_product(in_a, b, in_a), expected_b = expected_product(a, in_b, in_b);
        ASSERT_EQ(com__exctnume_mul(a, in_b, in_b), expected_b.code);
        ASSERT_EQ(com__exctnume_mul(in_a, b, in_a), expected_a.code);
        if (expected_a.code == NUME_OK) {
            ASSERT_EQ(in_a.value(), expected_a.value);
        }
        if (expected_b.code == NUME_OK) {
            ASSERT_EQ(in_b.value(), expected_b.value);
        }
    }
}

TEST(Mul, RandomAgainstBigIntegers) {
    Random random(28);
    check_products(random, 33, CASES);
}

TEST(Mul, RandomLongRecords) {
    Random random(29);
    check_products(random, LONGEST, 10'000);
}

TEST(Div, TruncatesTowardZeroAtTheScaleOfTheQuotient) {
    Record q(9, 18, 3);
    EXPECT_EQ(com__exctnume_div(Record(2, 1, 0, 2), Record(2, 1, 0, 3), q, nullptr), NUME_OK);
    EXPECT_EQ(q.value(), Big(666));
    EXPECT_EQ(com__exctnume_div(Record(2, 1, 0, -2), Record(2, 1, 0, 3), q, nullptr), NUME_OK);
    EXPECT_EQ(q.value(), Big(-666));
    EXPECT_EQ(com__exctnume_div(Record(2, 1, 0, -2), Record(2, 1, 0, -3), q, nullptr), NUME_OK);
    EXPECT_EQ(q.value(), Big(666));
}

TEST(Div, TheRemainderTellsOnlyItsLength) {
    Record q(9, 18, 0), remainder(9, 9, 0, 1);
    EXPECT_EQ(com__exctnume_div(Record(5, 9, 0, 100'003), Record(5, 9, 0, 100), q, remainder), NUME_OK);
    EXPECT_EQ(remainder->len, 1) << "divisor of one byte";
    EXPECT_EQ(remainder->value, nullptr);
    EXPECT_EQ(com__exctnume_div(Record(5, 9, 0, 100'003), Record(5, 9, 0, 1000), q, remainder), NUME_OK);
    EXPECT_EQ(remainder->len, 2) << "of two";
    EXPECT_EQ(com__exctnume_div(Record(5, 9, 0, 100'300), Record(5, 9, 0, 1000), q, remainder), NUME_OK);
    EXPECT_EQ(remainder->len, 3);
    EXPECT_EQ(com__exctnume_div(Record(5, 9, 0, 100'000), Record(5, 9, 0, 1000), q, remainder), NUME_OK);
    EXPECT_EQ(remainder->len, 0);
    EXPECT_EQ(com__exctnume_div(Record(5, 9, 0, 100'000), Record(5, 9, 0, 100), q, remainder), NUME_OK);
    EXPECT_EQ(remainder->len, 0);
}

TEST(Div, BySomethingLargerIsZeroWithoutSignAndTheDividendRemains) {
    Record q(9, 18, 0, -5, 1), remainder(9, 9, 0, 1);
    EXPECT_EQ(com__exctnume_div(Record(5, 9, 0, -999), Record(5, 9, 0, 1000), q, remainder), NUME_OK);
    EXPECT_EQ(q.sign(), 0);
    EXPECT_EQ(q.magnitude(), Big(0));
    EXPECT_EQ(remainder->len, 3);
    EXPECT_EQ(com__exctnume_div(Record(5, 9, 0, -3), Record(5, 9, 0, 7), q, remainder), NUME_OK);
    EXPECT_EQ(remainder->len, 2) << "no division took place, so no lone byte";
    EXPECT_EQ(com__exctnume_div(Record(5, 9, 0, 0, 1), Record(5, 9, 0, 7), q, remainder), NUME_OK);
    EXPECT_EQ(remainder->len, 0);
    EXPECT_EQ(q.sign(), 0);
}

TEST(Div, ScalesOfMoreThan77PlacesOverflowEvenByZero) {
    Record q(33, 77, 78, 5), zero(2, 1, 0, 0), remainder(4, 9, 0);
    EXPECT_EQ(com__exctnume_div(Record(2, 1, 0, 1), zero, q, remainder), NUME_OVERFLOW);
    EXPECT_EQ(remainder->len, 4) << "the remainder's record is not reached";
    EXPECT_EQ(remainder->value, remainder.start());
    q->scale = 0;
    EXPECT_EQ(com__exctnume_div(Record(2, 1, 78, 1), zero, q, nullptr), NUME_OVERFLOW);
    EXPECT_EQ(com__exctnume_div(Record(2, 1, 77, 1), zero, q, nullptr), NUME_DIVZERO);
    EXPECT_EQ(q.value(), Big(5)) << "nothing is written";
}

TEST(Div, ByZeroGivesTheRemainderTheDivisorsLength) {
    Record q(9, 18, 2), remainder(9, 9, 0, 1);
    EXPECT_EQ(com__exctnume_div(Record(5, 9, 0, 1), Record(3, 4, 0, 0, 1), q, remainder), NUME_DIVZERO);
    EXPECT_EQ(remainder->len, 3);
}

TEST(Div, WorkOf133BytesIsTooMuch) {
    // Dividend of L bytes scaled up by d: 2 * (L + length of 10^d + 1) + 1 + divisor's length must stay below 133.
    const auto divide = [](int dividend_len, int d, int divisor_len) {
        Record q(33, 77, d);
        return com__exctnume_div(Record(dividend_len, 9, 0, 1), Record(divisor_len, 9, 0, 1), q, nullptr);
    };
    EXPECT_EQ(divide(33, 62, 16), NUME_OVERFLOW);
    EXPECT_EQ(divide(33, 62, 10), NUME_OVERFLOW); // 27 bytes for 10^62: 2 * 61 + 1 + 10 = 133
    EXPECT_EQ(divide(33, 62, 9), NUME_OK);        // 132
    EXPECT_EQ(divide(33, 40, 28), NUME_OVERFLOW); // 18 bytes for 10^40: 2 * 52 + 1 + 28 = 133
    EXPECT_EQ(divide(33, 40, 27), NUME_OK);
    EXPECT_EQ(divide(66, 0, 65), NUME_OK); // 66 + 1 + 65 = 132
    EXPECT_EQ(divide(66, 0, 66), NUME_OVERFLOW);
}

TEST(Div, WorkLimitWhenTheDivisorIsScaled) {
    // 2 * (divisor + length of 10^d + 1) + dividend + 1.
    const auto divide = [](int dividend_len, int d, int divisor_len) {
        Record q(33, 77, 0);
        return com__exctnume_div(Record(dividend_len, 9, d, 1), Record(divisor_len, 9, 0, 1), q, nullptr);
    };
    EXPECT_EQ(divide(10, 62, 33), NUME_OVERFLOW); // 122 + 10 + 1
    EXPECT_EQ(divide(9, 62, 33), NUME_OK);
}

TEST(Div, QuotientMustFitBytesAndPrecision) {
    Record byte(2, 77, 0), digits(9, 2, 0);
    EXPECT_EQ(com__exctnume_div(Record(3, 4, 0, 512), Record(2, 1, 0, 2), byte, nullptr), NUME_OVERFLOW);
    EXPECT_EQ(com__exctnume_div(Record(3, 4, 0, 510), Record(2, 1, 0, 2), byte, nullptr), NUME_OK);
    EXPECT_EQ(com__exctnume_div(Record(3, 4, 0, 200), Record(2, 1, 0, 2), digits, nullptr), NUME_OVERFLOW);
    EXPECT_EQ(com__exctnume_div(Record(3, 4, 0, 199), Record(2, 1, 0, 2), digits, nullptr), NUME_OK);
}

TEST(Div, AnyNonZeroSignByteIsNegative) {
    Record q(3, 4, 0);
    EXPECT_EQ(com__exctnume_div(Record(3, 4, 0, 100, 7), Record(2, 1, 0, 3, 200), q, nullptr), NUME_OK);
    EXPECT_EQ(q.sign(), 0);
}

struct ExpectedQuotient {
    int code;
    Big value;
    int remaining;
};

ExpectedQuotient expected_quotient(const Record &a, const Record &b, const __CONSTANT &q, int untouched) {
    const int d = q.scale - a->scale + b->scale;
    if (d > 77 || d < -77)
        return {NUME_OVERFLOW, 0, untouched};
    int dividend_len = a->len, divisor_len = b->len, used = 0;
    Big dividend = a.value(), divisor = b.value();
    if (d > 0) {
        used = dividend_len += length_of(d) + 1;
        dividend = dividend * Big::ten_to(d);
    } else if (d < 0) {
        used = divisor_len += length_of(-d) + 1;
        divisor = divisor * Big::ten_to(-d);
    }
    if (used + dividend_len + 1 + divisor_len >= 133)
        return {NUME_OVERFLOW, 0, divisor_len};
    if (divisor.sign() == 0)
        return {NUME_DIVZERO, 0, divisor_len};
    const Big quotient = dividend / divisor;
    const int rest = (dividend % divisor).bytes();
    const int remaining = rest == 0 ? 0 : quotient.sign() != 0 && divisor.bytes() == 1 ? 1 : rest + 1;
    if (quotient.sign() != 0 &&
        (quotient.magnitude() >= Big::limit_of_bytes(q.len - 1) || quotient.magnitude() >= Big::ten_to(q.prec)))
        return {NUME_OVERFLOW, 0, remaining};
    return {NUME_OK, quotient, remaining};
}

void check_quotients(Random &random, int longest, int cases) {
    for (int i = 0; i < cases; ++i) {
        const int l1 = pick(random, 0, longest), l2 = pick(random, 0, longest), to = pick(random, 0, longest);
        Record a(l1, 77, pick(random, 0, 77), random_signed(random, l1 - 1));
        Record b(l2, 77, pick(random, 0, 77), random_signed(random, pick(random, 0, std::max(0, l2 - 1))));
        // Mostly small rescales: large ones end at the work limit.
        const int d = pick(random, 0, 3) == 0 ? pick(random, -90, 90) : pick(random, -20, 20);
        const int scale = std::clamp(a->scale - b->scale + d, 0, 255);
        Record q(to, pick(random, 0, 2) == 0 ? pick(random, 1, 77) : 77, scale, 5), remainder(7, 9, 0);
        const ExpectedQuotient expected = expected_quotient(a, b, q.get(), 7);
        ASSERT_EQ(com__exctnume_div(a, b, q, remainder), expected.code)
            << a.value().text() << " / " << b.value().text() << " d " << scale - a->scale + b->scale << " to " << to;
        ASSERT_EQ(remainder->len, expected.remaining);
        ASSERT_TRUE(q.guarded() && remainder.guarded(7));
        if (to > 0) {
            ASSERT_EQ(q.value(), expected.code == NUME_OK ? expected.value : to == 1 ? Big(0) : Big(5));
            ASSERT_LE(q.sign(), 1);
        }
        Record in_a = a, in_b = b;
        in_a->prec = in_b->prec = 77;
        const ExpectedQuotient expected_a = expected_quotient(a, b, in_a.get(), 0);
        const ExpectedQuotient expected_b = expected_quotient(a, b, in_b.get(), 0);
        ASSERT_EQ(com__exctnume_div(in_a, b, in_a, nullptr), expected_a.code);
        ASSERT_EQ(com__exctnume_div(a, in_b, in_b, nullptr), expected_b.code);
        if (expected_a.code == NUME_OK) {
            ASSERT_EQ(in_a.value(), expected_a.value);
        }
        if (expected_b.code == NUME_OK) {
            ASSERT_EQ(in_b.value(), expected_b.value);
        }
    }
}

TEST(Div, RandomAgainstBigIntegers) {
    Random random(30);
    check_quotients(random, 33, CASES);
}

TEST(Div, RandomLongRecords) {
    Random random(31);
    check_quotients(random, LONGEST, 20'000);
}

// ---- Broken contracts ------------------------------------------------------------------------

using Binary = int (*)(__CONSTANT *, __CONSTANT *, __CONSTANT *);

int add_records(__CONSTANT *a, __CONSTANT *b, __CONSTANT *r) { return com__exctnume_addorsub(a, b, r, 0); }
int divide_records(__CONSTANT *a, __CONSTANT *b, __CONSTANT *r) { return com__exctnume_div(a, b, r, nullptr); }
int divide_magnitudes(__CONSTANT *a, __CONSTANT *b, __CONSTANT *r) {
    __CONSTANT rest = {};
    return com__exctnume_intdiv(a, b, r, &rest);
}

const Binary operations[] = {com__exctnume_intadd, com__exctnume_intsub, com__exctnume_intmul, divide_magnitudes,
                             add_records,          com__exctnume_mul,    divide_records};

TEST(OperationsDeathTest, NullRecords) {
    Record good(3, 4, 0, 123);
    for (const Binary operation : operations) {
        EXPECT_NULL_REPORT(operation(nullptr, good, good), "numemath");
        EXPECT_NULL_REPORT(operation(good, nullptr, good), "numemath");
        EXPECT_NULL_REPORT(operation(good, good, nullptr), "numemath");
    }
    EXPECT_NULL_REPORT(com__exctnume_intdiv(good, good, good, nullptr), "numemath");
}

TEST(OperationsDeathTest, ImpossibleLengthsAndNoValue) {
    Record good(3, 4, 0, 123), negative(3, 4, 0, 1), too_long(3, 4, 0, 1), no_value(3, 4, 0, 1);
    negative->len = -1;
    too_long->len = 137;
    no_value->value = nullptr;
    for (const Binary operation : operations) {
        EXPECT_BOMB(operation(negative, good, good), "numemath");
        EXPECT_BOMB(operation(good, negative, good), "numemath");
        EXPECT_BOMB(operation(good, good, negative), "numemath");
        EXPECT_BOMB(operation(too_long, good, good), "numemath");
        EXPECT_BOMB(operation(good, too_long, good), "numemath");
        EXPECT_NULL_REPORT(operation(no_value, good, good), "numemath");
        EXPECT_NULL_REPORT(operation(good, no_value, good), "numemath");
        EXPECT_NULL_REPORT(operation(good, good, no_value), "numemath");
    }
}

TEST(Operations, BrokenRecordsFailAndWriteNothingWhereAssertionsReturn) {
    ReturningAssertions mode;
    Record good(3, 4, 0, 123), result(3, 4, 0, 77), negative(3, 4, 0, 1), too_long(3, 4, 0, 1), no_value(3, 4, 0, 1);
    negative->len = -1;
    too_long->len = 137;
    no_value->value = nullptr;
    const auto before = result.memory();
    int reports = 0;
    for (__CONSTANT *broken : {static_cast<__CONSTANT *>(nullptr), static_cast<__CONSTANT *>(negative),
                               static_cast<__CONSTANT *>(too_long), static_cast<__CONSTANT *>(no_value)})
        for (const Binary operation : operations) {
            EXPECT_NE(operation(broken, good, result), NUME_OK);
            EXPECT_NE(operation(good, broken, result), NUME_OK);
            reports += 2;
            EXPECT_EQ(mode.count(), reports);
        }
    for (__CONSTANT *broken :
         {static_cast<__CONSTANT *>(nullptr), static_cast<__CONSTANT *>(negative), static_cast<__CONSTANT *>(no_value)})
        for (const Binary operation : operations) {
            EXPECT_NE(operation(good, good, broken), NUME_OK);
            EXPECT_EQ(mode.count(), ++reports);
        }
    EXPECT_NE(com__exctnume_intdiv(good, good, result, nullptr), NUME_OK);
    EXPECT_EQ(mode.count(), reports + 1);
    EXPECT_EQ(result.memory(), before);
}

} // namespace
