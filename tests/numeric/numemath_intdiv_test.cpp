// Division of magnitudes in the core: quotient, remainder, and where they lie in the work buffer.
#include "support/exact.h"
#include "support/schoolbook.h"

#include <gtest/gtest.h>

using namespace support;

namespace {

constexpr int CASES = 100'000;

TEST(Intdiv, ByZeroWritesNothing) {
    Record a(5, 9, 0, 12345), b(5, 9, 0, 0), q(9, 9, 0, 7), r(5, 9, 0, 8);
    const Record before_q = q, before_r = r;
    EXPECT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_DIVZERO);
    EXPECT_EQ(q.memory(), before_q.memory());
    EXPECT_EQ(r.memory(), before_r.memory());
    EXPECT_EQ(q->len, 9);
    EXPECT_EQ(r->len, 5);
    EXPECT_EQ(com__exctnume_intdiv(a, Record(0, 1, 0), q, r), NUME_DIVZERO);
}

TEST(Intdiv, ByALargerMagnitudeHasNoQuotientAndTheDividendRemains) {
    Record a(9, 9, 0, 0x0102), b(9, 9, 0, 0x010203), q(9, 9, 0, 7), r(9, 9, 0);
    EXPECT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_OK);
    EXPECT_EQ(q->len, 0);
    EXPECT_EQ(r->len, 3);
    EXPECT_EQ(r->value, a->value + 6) << "one position before the dividend's significant bytes";
    EXPECT_EQ(Big(r->value + 1, 2), Big(0x0102));
}

TEST(Intdiv, OfZeroHasNoRemainder) {
    Record a(9, 9, 0, 0), b(2, 1, 0, 3), q(10, 9, 0), r(9, 9, 0);
    EXPECT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_OK);
    EXPECT_EQ(q->len, 0);
    EXPECT_EQ(r->len, 0);
}

TEST(Intdiv, SingleByteDivisorLeavesTheRemainderAlone) {
    Record a(5, 9, 0, 100'003), b(5, 9, 0, 100), q(9, 9, 0), r(5, 9, 0);
    EXPECT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_OK);
    EXPECT_EQ(r->len, 1);
    EXPECT_EQ(r->value[0], 3);
    EXPECT_EQ(q->len, 3);
    EXPECT_EQ(Big(q->value + 1, 2), Big(1000));
    Record exact(5, 9, 0, 100'000);
    Record q2(9, 9, 0);
    EXPECT_EQ(com__exctnume_intdiv(exact, b, q2, r), NUME_OK);
    EXPECT_EQ(r->len, 0);
}

TEST(Intdiv, LongerDivisorLeavesAByteAheadOfTheRemainder) {
    Record a(5, 9, 0, 100'003), b(5, 9, 0, 1000), q(9, 9, 0), r(5, 9, 0);
    EXPECT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_OK);
    EXPECT_EQ(r->len, 2);
    EXPECT_EQ(r->value[1], 3);
    EXPECT_EQ(q->len, 2);
    EXPECT_EQ(q->value[1], 100);
    Record exact(5, 9, 0, 100'000);
    Record q2(9, 9, 0);
    EXPECT_EQ(com__exctnume_intdiv(exact, b, q2, r), NUME_OK);
    EXPECT_EQ(r->len, 0);
}

TEST(Intdiv, QuotientAndRemainderLieAtTheEndOfTheQuotientsBuffer) {
    Record a(6, 9, 0, Big::of("1099511627775")), b(6, 9, 0, 0x010001), q(12, 9, 0, 0, 0x55), r(5, 9, 0);
    CS_BYTE *buffer = q->value;
    EXPECT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_OK);
    // Five bytes by three: three quotient bytes, three remainder bytes, at the end of twelve.
    EXPECT_EQ(Big(buffer + 6, 3), Big::of("1099511627775") / Big(0x010001));
    EXPECT_EQ(Big(buffer + 9, 3), Big::of("1099511627775") % Big(0x010001));
    EXPECT_EQ(buffer[0], 0x55) << "bytes ahead stay";
}

TEST(Intdiv, BufferMustHoldTheDividendAndOneByte) {
    Record a(5, 9, 0, 0x01020304), b(5, 9, 0, 7), q(4, 9, 0, 9), r(5, 9, 0);
    const Record before = q;
    EXPECT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_OVERFLOW);
    EXPECT_EQ(q.memory(), before.memory());
    EXPECT_EQ(q->len, 4);
    Record enough(5, 9, 0, 0);
    EXPECT_EQ(com__exctnume_intdiv(a, b, enough, r), NUME_OK);
    EXPECT_EQ(com__exctnume_intdiv(Record(5, 9, 0, 3), b, Record(0, 9, 0), r), NUME_OK) << "no quotient needs no room";
}

TEST(Intdiv, QuotientThatFillsItsBufferPointsOneByteAheadAndWritesNothingThere) {
    Record a(5, 9, 0, Big::of("4294967295")), b(5, 9, 0, 1), q(5, 9, 0), r(5, 9, 0);
    EXPECT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_OK);
    // A zero byte stood ahead of the dividend, so one of the five bytes is left as the sign position.
    EXPECT_EQ(q->value, q.start() - 1);
    EXPECT_EQ(q->len, 5);
    EXPECT_EQ(Big(q->value + 1, 4), Big::of("4294967295"));
    EXPECT_TRUE(q.guarded(5));
}

TEST(Intdiv, EveryByteByEveryByte) {
    for (int x = 0; x <= 255; ++x)
        for (int y = 1; y <= 255; ++y) {
            Record a(2, 3, 0, x), b(2, 3, 0, y), q(3, 3, 0), r(2, 3, 0);
            ASSERT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_OK);
            ASSERT_EQ(q->len, x / y == 0 ? 0 : 2);
            if (q->len != 0) {
                ASSERT_EQ(q->value[1], x / y);
                ASSERT_EQ(r->len, x % y != 0);
                ASSERT_EQ(r->value[0], x % y);
            }
        }
}

TEST(Intdiv, RandomAgainstPaperByteForByteAndPointerForPointer) {
    Random random(23);
    for (int i = 0; i < CASES; ++i) {
        const int l1 = random_length(random), l2 = random_length(random);
        Record a(l1, 9, 0, random_magnitude(random, l1 - 1));
        Record b(l2, 9, 0, random_magnitude(random, l2 - 1));
        if (pick(random, 0, 3) == 0 && a.magnitude() > b.magnitude() && b.magnitude().sign() != 0)
            a.reset(l1, 9, 0, a.magnitude() / b.magnitude() * b.magnitude(), 0);
        const int room = std::max(0, a.magnitude().bytes() + pick(random, 0, 4));
        Record q(room, 9, 0, random_magnitude(random, room - 1), 0x55), r(l2, 9, 0);
        Record paper_q = q, paper_r = r;
        const int code = com__exctnume_intdiv(a, b, q, r);
        ASSERT_EQ(code, schoolbook::divide(a.get(), b.get(), *static_cast<__CONSTANT *>(paper_q),
                                           *static_cast<__CONSTANT *>(paper_r)));
        ASSERT_EQ(q.memory(), paper_q.memory()) << a.magnitude().text() << " / " << b.magnitude().text();
        ASSERT_EQ(r.memory(), paper_r.memory());
        ASSERT_EQ(q->len, paper_q->len);
        ASSERT_EQ(q->value - q.start(), paper_q->value - paper_q.start());
        ASSERT_TRUE(q.guarded(room));
        if (code == NUME_OK) {
            ASSERT_EQ(r->len, paper_r->len);
        }
        if (code == NUME_OK && q->len == 0 && l1 != 0) {
            ASSERT_EQ(r->value, paper_r->value) << "inside the dividend";
        } else if (code == NUME_OK && q->len != 0) {
            ASSERT_EQ(r->value - q.start(), paper_r->value - paper_q.start());
            const Big quotient(q->value + 1, q->len - 1);
            const Big rest = r->len == 1 ? Big(r->value, 1) : Big(r->value + 1, r->len - 1);
            ASSERT_EQ(quotient * b.magnitude() + rest, a.magnitude());
            ASSERT_LT(rest, b.magnitude());
        }
    }
}

TEST(Intdiv, LeadingWordsThatMakeTheEstimateWrong) {
    // Dividends just below, at and above a multiple of a divisor whose leading bytes are extreme, in every length.
    Random random(24);
    for (int bytes = 2; bytes <= 66; ++bytes)
        for (const int lead : {128, 129, 255, 1})
            for (const int next : {0, 1, 255})
                for (int trial = 0; trial < 12; ++trial) {
                    const Big high = (Big(lead) * 256 + next) * Big::limit_of_bytes(bytes - 2);
                    const Big divisor = high + random_magnitude(random, bytes - 2);
                    const Big factor = Big::limit_of_bytes(pick(random, 1, 67 - bytes)) - pick(random, 0, 2);
                    const Big dividend = divisor * factor + pick(random, -1, 1);
                    Record a(68, 9, 0, dividend), b(68, 9, 0, divisor), q(69, 9, 0), r(68, 9, 0);
                    ASSERT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_OK);
                    ASSERT_EQ(Big(q->value + 1, q->len - 1), dividend / divisor) << dividend.text();
                    ASSERT_EQ(Big(r->value + 1, r->len - 1), dividend % divisor) << divisor.text();
                }
}

void check_division(const Big &dividend, const Big &divisor) {
    Record a(136, 9, 0, dividend), b(136, 9, 0, divisor), q(137, 9, 0), r(136, 9, 0);
    ASSERT_EQ(com__exctnume_intdiv(a, b, q, r), NUME_OK);
    ASSERT_EQ(Big(q->value + 1, q->len - 1), dividend / divisor) << dividend.text() << " / " << divisor.text();
    ASSERT_EQ(Big(r->value + 1, r->len - 1), dividend % divisor) << dividend.text() << " / " << divisor.text();
}

TEST(Intdiv, WordsThatMakeTheEstimateWrong) {
    // The same in units of 64 bits, where chance never finds such operands: a dividend that is a multiple of the
    // divisor's two leading words, so that the words behind them make the quotient one less; and dividends whose
    // leading words are the divisor's, or all but.
    Random random(32);
    const Big word = Big::power(2, 64);
    for (int words = 2; words <= 8; ++words)
        for (int shift = 0; shift < 64; shift += 7)
            for (const int style : {0, 1, 2, 3}) {
                const Big top = Big::power(2, 63) + (style == 0 ? Big(0) : random_magnitude(random, 7));
                const Big next = style == 1 ? word - 1 : random_magnitude(random, 8);
                Big behind = 1;
                for (int i = 2; i < words; ++i)
                    behind = behind * word;
                const Big low = words > 2 ? behind - random_magnitude(random, 3) - 1 : Big(0);
                const Big lead = top * word + next;
                const Big divisor = (lead * behind + low) / Big::power(2, shift);
                const Big digit = style == 2 ? word - 1 - random_magnitude(random, 2) : random_magnitude(random, 8) + 2;
                for (const Big &dividend :
                     {lead * behind * digit, lead * behind * word,
                      (lead - 1) * behind * word + random_magnitude(random, 8),
                      lead * behind * digit * word + random_magnitude(random, 9), (lead * word - 1) * behind * word}) {
                    check_division(dividend, divisor);
                    check_division(dividend / Big::power(2, shift), divisor);
                }
            }
}

TEST(Intdiv, QuotientMayTakeThePlaceOfTheDividend) {
    Random random(25);
    for (int i = 0; i < 10'000; ++i) {
        const int length = pick(random, 3, 67);
        Record a(length, 9, 0, random_magnitude(random, length - 2));
        const Big divisor = random_magnitude(random, pick(random, 1, length - 1)) + 1;
        if (a.magnitude() < divisor || divisor.bytes() > length - 1)
            continue;
        Record b(length, 9, 0, divisor), r(length, 9, 0);
        const Big dividend = a.magnitude();
        __CONSTANT q = a.get();
        ASSERT_EQ(com__exctnume_intdiv(a, b, &q, r), NUME_OK);
        ASSERT_EQ(Big(q.value + 1, q.len - 1), dividend / divisor);
        ASSERT_TRUE(a.guarded());
    }
}

} // namespace
