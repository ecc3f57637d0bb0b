// Arithmetic and order of public numerics, and the rescale that conversions share with it.
#include "numeric/rescale.h"
#include "support/assertions.h"
#include "support/exact.h"

#include <gtest/gtest.h>

using namespace support;

namespace {

constexpr int CASES = 120'000;

using Operation = CS_RETCODE (*)(CS_NUMERIC *, CS_NUMERIC *, CS_NUMERIC *);

using dlx::Shape;

int length_of(int precision) { return Com__Nume_Prec_To_Len[precision]; }

CS_NUMERIC blank() {
    CS_NUMERIC result;
    std::memset(&result, GUARD, sizeof result);
    return result;
}

// A successful operation: the result's shape and unscaled value.
void expect_result(Operation operation, const CS_NUMERIC &x, const CS_NUMERIC &y, Shape shape, const Big &value) {
    CS_NUMERIC a = x, b = y, result = blank();
    EXPECT_EQ(operation(&a, &b, &result), CS_SUCCEED);
    EXPECT_EQ(result.precision, shape.precision);
    EXPECT_EQ(result.scale, shape.scale);
    EXPECT_EQ(value_of(result), value);
    EXPECT_TRUE(unused_bytes_are(result, GUARD));
}

CS_RETCODE status_of(Operation operation, const CS_NUMERIC &x, const CS_NUMERIC &y) {
    CS_NUMERIC a = x, b = y, result = blank();
    return operation(&a, &b, &result);
}

// ---- Add and subtract ------------------------------------------------------------------------

TEST(Numadd, OneTenthAndOneTenthNeedADigitBeforeThePoint) {
    expect_result(comn_numadd, numeric_of(1, 1, 1), numeric_of(1, 1, 1), {3, 1}, 2);
}

TEST(Numadd, CarryHasRoom) { expect_result(comn_numadd, numeric_of(99, 2, 0), numeric_of(1, 2, 0), {3, 0}, 100); }

TEST(Numadd, DifferentScalesAreAligned) {
    expect_result(comn_numadd, numeric_of(125, 3, 2), numeric_of(-7, 1, 0), {4, 2}, -575);
    expect_result(comn_numsub, numeric_of(-7, 1, 0), numeric_of(125, 3, 2), {4, 2}, -825);
}

TEST(Numadd, ScaleGivesWayWhenTheDigitsFill77) {
    const Big almost = Big::ten_to(76) - 1;
    // 76 digits of which one behind the point: S + I = 76, so one more digit fits.
    expect_result(comn_numadd, numeric_of(almost, 76, 1), numeric_of(1, 76, 1), {77, 1}, Big::ten_to(76));
    // 77 digits already, none before the point claimed by the shape: I is one, the scale 76.
    expect_result(comn_numadd, numeric_of(100, 77, 77), numeric_of(20, 77, 77), {77, 76}, 12);
}

TEST(Numadd, DigitLostToTheSmallerScaleIsAnOverflow) {
    EXPECT_EQ(status_of(comn_numadd, numeric_of(1, 77, 77), numeric_of(0, 77, 77)), CS_EOVERFLOW);
}

TEST(Numadd, SumOf78DigitsOverflowsAndIsZero) {
    CS_NUMERIC a = numeric_of(Big::ten_to(77) - 1, 77, 0), b = numeric_of(1, 77, 0), sum = blank();
    EXPECT_EQ(comn_numadd(&a, &b, &sum), CS_EOVERFLOW);
    EXPECT_EQ(sum.precision, 77);
    EXPECT_EQ(sum.scale, 0);
    EXPECT_EQ(value_of(sum), Big(0));
}

TEST(Numadd, OperandThatCannotBeAlignedIn77DigitsOverflows) {
    CS_NUMERIC a = numeric_of(Big::ten_to(76), 77, 0), b = numeric_of(1, 2, 1), sum = blank();
    EXPECT_EQ(comn_numadd(&a, &b, &sum), CS_EOVERFLOW);
    EXPECT_EQ(sum.precision, 77) << "the shape is written";
    EXPECT_EQ(sum.scale, 1);
    EXPECT_EQ(value_of(sum), Big(0));
    EXPECT_TRUE(unused_bytes_are(sum, GUARD));
}

TEST(Numadd, ShapeComesFromTheAlignedOperands) {
    // Common form of (77, 0) and (2, 2): 77 digits, scale 2, so 75 before the point, and the scale gives way to none.
    expect_result(comn_numadd, numeric_of(5, 77, 0), numeric_of(25, 2, 2), {77, 2}, 525);
}

TEST(Numadd, MinusZeros) {
    CS_NUMERIC minus = minus_zero(1, 0), sum;
    EXPECT_EQ(comn_numadd(&minus, &minus, &sum), CS_SUCCEED);
    EXPECT_EQ(sum.array[0], 1) << "added as magnitudes, with the sign of the first";
    EXPECT_EQ(comn_numsub(&minus, &minus, &sum), CS_SUCCEED);
    EXPECT_EQ(sum.array[0], 0);
    CS_NUMERIC zero = numeric_of(0, 1, 0);
    EXPECT_EQ(comn_numadd(&minus, &zero, &sum), CS_SUCCEED);
    EXPECT_EQ(sum.array[0], 0);
    EXPECT_EQ(comn_numsub(&minus, &zero, &sum), CS_SUCCEED);
    EXPECT_EQ(sum.array[0], 1);
    CS_NUMERIC finer = minus_zero(2, 1);
    EXPECT_EQ(comn_numadd(&minus, &finer, &sum), CS_SUCCEED);
    EXPECT_EQ(sum.array[0], 0) << "aligning takes the sign of a zero";
    expect_result(comn_numadd, minus_zero(1, 0), numeric_of(5, 1, 0), {2, 0}, 5);
    expect_result(comn_numsub, minus_zero(1, 0), numeric_of(5, 1, 0), {2, 0}, -5);
}

TEST(Numadd, AnyNonZeroSignByteIsNegative) {
    CS_NUMERIC a = numeric_of(-7, 2, 0), b = numeric_of(-9, 2, 0);
    a.array[0] = 200;
    expect_result(comn_numadd, a, b, {3, 0}, -16);
    expect_result(comn_numsub, a, b, {3, 0}, 2);
}

TEST(Numaddorsub, OperationsZeroAndOne) {
    CS_NUMERIC a = numeric_of(7, 1, 0), b = numeric_of(9, 1, 0), result;
    EXPECT_EQ(comn_num_addorsub(&a, &b, &result, 0), CS_SUCCEED);
    EXPECT_EQ(value_of(result), Big(16));
    EXPECT_EQ(comn_num_addorsub(&a, &b, &result, 1), CS_SUCCEED);
    EXPECT_EQ(value_of(result), Big(-2));
}

TEST(NumaddorsubDeathTest, OtherOperations) {
    CS_NUMERIC a = numeric_of(7, 1, 0), result;
    for (const int operation : {-1, 2, 255})
        EXPECT_BOMB(comn_num_addorsub(&a, &a, &result, operation), "numfuncs");
}

TEST(Numaddorsub, OtherOperationsFailAndWriteNothingWhereAssertionsReturn) {
    ReturningAssertions mode;
    CS_NUMERIC a = numeric_of(7, 1, 0), result = blank();
    const CS_NUMERIC before = result;
    EXPECT_EQ(comn_num_addorsub(&a, &a, &result, 2), CS_FAIL);
    EXPECT_EQ(comn_num_addorsub(&a, &a, &result, -1), CS_FAIL);
    EXPECT_EQ(mode.count(), 2);
    EXPECT_EQ(std::memcmp(&result, &before, sizeof result), 0);
}

// ---- Multiply and divide ---------------------------------------------------------------------

TEST(Nummul, ShapeHoldsTheWholeProduct) {
    expect_result(comn_nummul, numeric_of(99, 2, 1), numeric_of(-999, 3, 0), {6, 1}, -98901);
    expect_result(comn_nummul, numeric_of(5, 1, 1), numeric_of(5, 1, 1), {3, 2}, 25);
}

TEST(Nummul, DigitsBeforeThePointAreNeverNegative) {
    expect_result(comn_nummul, numeric_of(0, 1, 0), numeric_of(3, 1, 2), {3, 2}, 0);
    // More scale than precision on both sides: nothing is left before the point.
    expect_result(comn_nummul, numeric_of(3, 1, 5), numeric_of(3, 1, 5), {10, 10}, 9);
}

TEST(Nummul, RescaleOf78PlacesIsASyntaxStatus) {
    EXPECT_EQ(status_of(comn_nummul, numeric_of(1, 77, 40), numeric_of(1, 77, 40)), CS_ESYNTAX);
    EXPECT_EQ(status_of(comn_nummul, numeric_of(0, 77, 40), numeric_of(0, 77, 40)), CS_ESYNTAX) << "zeros too";
}

TEST(Nummul, LosingDigitsIsAnOverflow) {
    // 77 + 77 digits with scale 30 each: 17 places go.
    EXPECT_EQ(status_of(comn_nummul, numeric_of(3, 77, 10), numeric_of(1, 77, 10)), CS_EOVERFLOW);
    expect_result(comn_nummul, numeric_of(Big::ten_to(20), 77, 10), numeric_of(3, 77, 10), {77, 0}, 3);
}

TEST(Nummul, ProductBeyond32BytesIsAnOverflow) {
    EXPECT_EQ(status_of(comn_nummul, numeric_of(Big::power(2, 128), 77, 0), numeric_of(Big::power(2, 128), 77, 0)),
              CS_EOVERFLOW);
}

TEST(Numdivide, OneThirdIsTruncatedAtSixPlaces) {
    expect_result(comn_numdivide, numeric_of(1, 1, 0), numeric_of(3, 1, 0), {7, 6}, 333333);
}

TEST(Numdivide, TwoThirdsAreNotRoundedUp) {
    expect_result(comn_numdivide, numeric_of(2, 1, 0), numeric_of(3, 1, 0), {7, 6}, 666666);
    expect_result(comn_numdivide, numeric_of(-2, 1, 0), numeric_of(3, 1, 0), {7, 6}, -666666);
}

TEST(Numdivide, ScaleGrowsWithTheDividendAndTheDivisorsPlaces) {
    expect_result(comn_numdivide, numeric_of(1, 6, 0), numeric_of(3, 1, 0), {13, 7}, 3333333);
    expect_result(comn_numdivide, numeric_of(1, 5, 0), numeric_of(3, 1, 0), {11, 6}, 333333);
    expect_result(comn_numdivide, numeric_of(1, 5, 0), numeric_of(3, 1, 1), {13, 7}, 33333333);
}

TEST(Numdivide, ByAZeroOfAnyScale) {
    for (int scale = 0; scale <= 77; ++scale) {
        EXPECT_EQ(status_of(comn_numdivide, numeric_of(1, 77, 0), numeric_of(0, 77, scale)), CS_EDIVZERO) << scale;
        EXPECT_EQ(status_of(comn_numdivide, numeric_of(1, 1, 77), minus_zero(5, scale)), CS_EDIVZERO) << scale;
        EXPECT_EQ(status_of(comn_numdivide, numeric_of(0, 1, 0), numeric_of(0, 1, scale)), CS_EDIVZERO) << scale;
    }
}

TEST(Numdivide, DivisionThatNeedsTooMuchWorkRoomIsAnOverflow) {
    // A dividend of 33 bytes that grows by 40 places: 2 * (33 + 18 + 1) + 1 + 33 bytes.
    CS_NUMERIC a = numeric_of(1, 77, 0), b = numeric_of(3, 77, 40), quotient = blank();
    EXPECT_EQ(comn_numdivide(&a, &b, &quotient), CS_EOVERFLOW) << "though the quotient would be small";
    EXPECT_EQ(quotient.precision, 77);
    EXPECT_EQ(quotient.scale, 0);
    // One of 18 bytes by 37 places: 2 * (18 + 17 + 1) + 1 + 33.
    expect_result(comn_numdivide, numeric_of(1, 40, 0), numeric_of(3, 77, 36), {77, 1}, Big::ten_to(37) / Big(3));
}

TEST(Numdivide, ZeroDividendHasNoSign) {
    CS_NUMERIC a = minus_zero(3, 1), b = numeric_of(-7, 1, 0), quotient;
    EXPECT_EQ(comn_numdivide(&a, &b, &quotient), CS_SUCCEED);
    EXPECT_EQ(quotient.array[0], 0);
}

// ---- All of them -----------------------------------------------------------------------------

struct Expected {
    CS_RETCODE status;
    Shape shape;
    Big value;
};

Big unscaled(const CS_NUMERIC &numeric) {
    const Big magnitude(numeric.array + 1, length_of(numeric.precision) - 1);
    return numeric.array[0] != 0 ? -magnitude : magnitude;
}

// The told rescale of a value into a shape: bytes, scale, precision.
Expected rescaled(const Big &value, int from_scale, Shape to) {
    const int places = to.scale - from_scale;
    const Big bytes = Big::limit_of_bytes(length_of(to.precision) - 1);
    const Big digits = Big::ten_to(to.precision);
    if (value.magnitude() >= bytes)
        return {CS_EOVERFLOW, to, 0};
    if (places >= 0) {
        const Big up = value * Big::ten_to(places);
        return {up.magnitude() < digits ? CS_SUCCEED : CS_EOVERFLOW, to, up};
    }
    const Big down = value / Big::ten_to(-places);
    if (down.magnitude() >= digits)
        return {CS_EOVERFLOW, to, 0};
    return {down * Big::ten_to(-places) == value ? CS_SUCCEED : CS_ETRUNCATED, to, down};
}

Expected expected_sum(const CS_NUMERIC &a, const CS_NUMERIC &b, int operation) {
    Big x = unscaled(a), y = unscaled(b);
    const int common_scale = std::max(a.scale, b.scale);
    const int common_precision = std::min(77, common_scale + std::max(a.precision - a.scale, b.precision - b.scale));
    const int whole = std::clamp(common_precision - common_scale, 1, 77);
    const int precision = common_scale + whole < 77 ? common_scale + whole + 1 : 77;
    const Shape shape = {precision, std::min(common_scale, precision - whole)};
    for (auto [value, operand] : {std::pair(&x, &a), std::pair(&y, &b)}) {
        if (operand->precision >= common_precision && operand->scale >= common_scale)
            continue;
        const Expected aligned = rescaled(*value, operand->scale, {common_precision, common_scale});
        if (aligned.status != CS_SUCCEED)
            return {aligned.status, shape, 0};
        *value = aligned.value;
    }
    const Big sum = operation == 0 ? x + y : x - y;
    Expected result = rescaled(sum, common_scale, shape);
    if (result.status == CS_ETRUNCATED)
        result.status = CS_EOVERFLOW;
    return result;
}

Expected expected_product(const CS_NUMERIC &a, const CS_NUMERIC &b) {
    const int whole = std::clamp(a.precision - a.scale + b.precision - b.scale + 1, 0, 77);
    int scale = std::min(77, a.scale + b.scale);
    const int precision = std::clamp(scale + whole, 1, 77);
    scale = std::min(scale, precision - whole);
    const Shape shape = {precision, scale};
    const Big product = unscaled(a) * unscaled(b);
    const bool direct = precision >= a.precision + b.precision;
    if (product.magnitude() >= Big::limit_of_bytes(direct ? length_of(precision) - 1 : 32))
        return {CS_EOVERFLOW, shape, 0};
    const int places = scale - a.scale - b.scale;
    if (places < -77)
        return {CS_ESYNTAX, shape, 0};
    const Big cut = product / Big::ten_to(-places);
    const bool fits = cut.magnitude() < Big::ten_to(precision);
    return {fits && cut * Big::ten_to(-places) == product ? CS_SUCCEED : CS_EOVERFLOW, shape, cut};
}

Expected expected_quotient(const CS_NUMERIC &a, const CS_NUMERIC &b) {
    const int whole = std::clamp(a.precision - a.scale + b.scale, 0, 77);
    const int sum = a.precision + b.scale;
    int scale = sum < 6 ? 6 : sum <= 76 ? sum + 1 : 77;
    const int precision = std::min(77, scale + whole);
    scale = std::min(scale, precision - whole);
    const Shape shape = {precision, scale};
    Big dividend = unscaled(a), divisor = unscaled(b);
    if (divisor.sign() == 0)
        return {CS_EDIVZERO, shape, 0};
    const int d = scale - a.scale + b.scale;
    if (d > 77 || d < -77)
        return {CS_EOVERFLOW, shape, 0};
    int dividend_len = length_of(a.precision), divisor_len = length_of(b.precision), used = 0;
    if (d > 0) {
        used = dividend_len += length_of(d) + 1;
        dividend = dividend * Big::ten_to(d);
    } else if (d < 0) {
        used = divisor_len += length_of(-d) + 1;
        divisor = divisor * Big::ten_to(-d);
    }
    if (used + dividend_len + 1 + divisor_len >= 133)
        return {CS_EOVERFLOW, shape, 0};
    const Big quotient = dividend / divisor;
    return {quotient.magnitude() < Big::ten_to(precision) ? CS_SUCCEED : CS_EOVERFLOW, shape, quotient};
}

CS_NUMERIC random_numeric(Random &random, CS_BYTE garbage) {
    const int precision = pick(random, 0, 4) == 0 ? 77 : pick(random, 1, 77);
    int scale = pick(random, 0, 3) == 0 ? pick(random, 0, 77) : pick(random, 0, precision);
    if (pick(random, 0, 3) == 0)
        scale = pick(random, 0, 4);
    Big value = random_digits(random, precision);
    if (pick(random, 0, 99) == 0) // more than the precision allows, in the bytes that it has
        value = random_magnitude(random, length_of(precision) - 1);
    CS_NUMERIC result = numeric_of(value, precision, scale, garbage);
    if (pick(random, 0, 1) == 0)
        result.array[0] = pick(random, 0, 9) == 0 ? 255 : 1; // minus zero among them
    return result;
}

template <class Expectation>
void check_operation(std::uint64_t seed, Operation operation, Expectation expectation) {
    Random random(seed);
    int succeeded = 0;
    for (int i = 0; i < CASES; ++i) {
        const CS_NUMERIC a = random_numeric(random, static_cast<CS_BYTE>(random()));
        CS_NUMERIC b = random_numeric(random, static_cast<CS_BYTE>(random()));
        if (pick(random, 0, 3) == 0) {
            b = numeric_of(unscaled(b) % Big::ten_to(a.precision), a.precision, a.scale);
            if (pick(random, 0, 3) == 0)
                std::memcpy(b.array, a.array, sizeof b.array);
            if (pick(random, 0, 1) == 0)
                b.array[0] ^= 1;
        }
        CS_NUMERIC x = a, y = b, result = blank();
        const Expected expected = expectation(a, b);
        ASSERT_EQ(operation(&x, &y, &result), expected.status)
            << unscaled(a).text() << " (" << int(a.precision) << "," << int(a.scale) << ") and " << unscaled(b).text()
            << " (" << int(b.precision) << "," << int(b.scale) << ")";
        ASSERT_EQ(result.precision, expected.shape.precision);
        ASSERT_EQ(result.scale, expected.shape.scale);
        ASSERT_LE(result.array[0], 1);
        ASSERT_TRUE(unused_bytes_are(result, GUARD)) << "nothing is written beyond the value";
        ASSERT_EQ(std::memcmp(&x, &a, sizeof a), 0) << "operands are only read";
        ASSERT_EQ(std::memcmp(&y, &b, sizeof b), 0);
        if (expected.status == CS_SUCCEED) {
            ++succeeded;
            ASSERT_EQ(unscaled(result), expected.value);
        }
        // The result in the place of the first operand, of the second, and of both.
        const size_t used = static_cast<size_t>(2 + length_of(result.precision));
        CS_NUMERIC in_first = a, in_second = b, both = a, twice_result = blank(), copy = a;
        ASSERT_EQ(operation(&in_first, &y, &in_first), expected.status);
        ASSERT_EQ(std::memcmp(&in_first, &result, used), 0);
        ASSERT_EQ(operation(&x, &in_second, &in_second), expected.status);
        ASSERT_EQ(std::memcmp(&in_second, &result, used), 0);
        const CS_RETCODE twice = operation(&copy, &x, &twice_result);
        ASSERT_EQ(operation(&both, &both, &both), twice);
        ASSERT_EQ(std::memcmp(&both, &twice_result, static_cast<size_t>(2 + length_of(both.precision))), 0);
    }
    EXPECT_GT(succeeded, CASES / 10) << "the cases do reach results";
    EXPECT_LT(succeeded, CASES) << "and failures";
}

TEST(Numadd, RandomAgainstBigIntegers) {
    check_operation(51, comn_numadd, [](const auto &a, const auto &b) { return expected_sum(a, b, 0); });
}
TEST(Numsub, RandomAgainstBigIntegers) {
    check_operation(52, comn_numsub, [](const auto &a, const auto &b) { return expected_sum(a, b, 1); });
}
TEST(Nummul, RandomAgainstBigIntegers) { check_operation(53, comn_nummul, expected_product); }
TEST(Numdivide, RandomAgainstBigIntegers) { check_operation(54, comn_numdivide, expected_quotient); }

TEST(Shapes, EveryPairOfPrecisionsAndScalesOfOnes) {
    // The shape does not depend on the values, so a value of one in every shape tells it.
    for (int p1 = 1; p1 <= 77; p1 += 4)
        for (int s1 = 0; s1 <= 77; s1 += 7)
            for (int p2 = 1; p2 <= 77; p2 += 4)
                for (int s2 = 0; s2 <= 77; s2 += 7) {
                    CS_NUMERIC a = numeric_of(1, p1, s1), b = numeric_of(1, p2, s2);
                    const Expected expected[] = {expected_sum(a, b, 0), expected_sum(a, b, 1), expected_product(a, b),
                                                 expected_quotient(a, b)};
                    const Operation operations[] = {comn_numadd, comn_numsub, comn_nummul, comn_numdivide};
                    for (int i = 0; i < 4; ++i) {
                        CS_NUMERIC result = blank();
                        ASSERT_EQ(operations[i](&a, &b, &result), expected[i].status) << i;
                        ASSERT_EQ(result.precision, expected[i].shape.precision) << i;
                        ASSERT_EQ(result.scale, expected[i].shape.scale) << i;
                    }
                }
}

const Operation operations[] = {comn_numadd, comn_numsub, comn_nummul, comn_numdivide};

TEST(Arithmetic, InvalidOperandIsADomainStatusAndLeavesTheResult) {
    const Shape invalid[] = {{0, 0}, {78, 0}, {255, 0}, {5, 78}, {5, 255}, {0, 255}};
    for (const Operation operation : operations)
        for (const Shape &shape : invalid) {
            CS_NUMERIC good = numeric_of(1, 5, 2), bad = good, result = blank();
            const CS_NUMERIC before = result;
            bad.precision = static_cast<CS_BYTE>(shape.precision);
            bad.scale = static_cast<CS_BYTE>(shape.scale);
            EXPECT_EQ(operation(&good, &bad, &result), CS_EDOMAIN);
            EXPECT_EQ(operation(&bad, &good, &result), CS_EDOMAIN);
            EXPECT_EQ(std::memcmp(&result, &before, sizeof result), 0);
        }
    CS_NUMERIC zero = numeric_of(0, 5, 2), bad = zero, result;
    bad.precision = 0;
    EXPECT_EQ(comn_numdivide(&bad, &zero, &result), CS_EDOMAIN) << "before the divisor is looked at";
}

TEST(ArithmeticDeathTest, NullPointers) {
    CS_NUMERIC good = numeric_of(1, 5, 2);
    for (const Operation operation : operations) {
        EXPECT_NULL_REPORT(operation(nullptr, &good, &good), "numfuncs");
        EXPECT_NULL_REPORT(operation(&good, nullptr, &good), "numfuncs");
        EXPECT_NULL_REPORT(operation(&good, &good, nullptr), "numfuncs");
    }
    EXPECT_NULL_REPORT(comn_num_addorsub(nullptr, &good, &good, 0), "numfuncs");
    EXPECT_NULL_REPORT(comn_numcmp(nullptr, &good), "numfuncs");
    EXPECT_NULL_REPORT(comn_numcmp(&good, nullptr), "numfuncs");
}

TEST(Arithmetic, NullPointersFailAndTouchNothingWhereAssertionsReturn) {
    ReturningAssertions mode;
    CS_NUMERIC good = numeric_of(1, 5, 2), result = blank();
    const CS_NUMERIC before = result;
    int reports = 0;
    for (const Operation operation : operations) {
        EXPECT_EQ(operation(nullptr, &good, &result), CS_FAIL);
        EXPECT_EQ(operation(&good, nullptr, &result), CS_FAIL);
        EXPECT_EQ(operation(&good, &good, nullptr), CS_FAIL);
        reports += 3;
        EXPECT_EQ(mode.count(), reports);
    }
    EXPECT_EQ(comn_numcmp(nullptr, &good), 0);
    EXPECT_EQ(comn_numcmp(&good, nullptr), 0);
    EXPECT_EQ(mode.count(), reports + 2);
    EXPECT_EQ(std::memcmp(&result, &before, sizeof result), 0);
}

// ---- Rescale ---------------------------------------------------------------------------------

TEST(NumericToNumeric, FitsTheBytesBeforeTheScaleShrinks) {
    CS_NUMERIC source = numeric_of(25600, 5, 2), dest = blank();
    EXPECT_EQ(dlx::numeric_to_numeric(source, dest, 2, 0), CS_EOVERFLOW) << "256 needs more, and 25600 much more";
    source = numeric_of(990, 5, 1);
    EXPECT_EQ(dlx::numeric_to_numeric(source, dest, 2, 0), CS_EOVERFLOW) << "99 would fit, 990 does not fit a byte";
    EXPECT_EQ(dest.precision, 2);
    EXPECT_EQ(dest.scale, 0);
    source = numeric_of(250, 5, 1);
    EXPECT_EQ(dlx::numeric_to_numeric(source, dest, 2, 0), CS_SUCCEED) << "250 fits the byte though not two digits";
    EXPECT_EQ(value_of(dest), Big(25));
}

TEST(NumericToNumeric, CutDigitsAreToldWithTheCutValue) {
    CS_NUMERIC source = numeric_of(-12345, 5, 3), dest = blank();
    EXPECT_EQ(dlx::numeric_to_numeric(source, dest, 5, 1), CS_ETRUNCATED);
    EXPECT_EQ(value_of(dest), Big(-123));
    EXPECT_TRUE(unused_bytes_are(dest, GUARD));
}

TEST(NumericToNumeric, TooManyDigitsOverflowEvenWhereDigitsAreCut) {
    CS_NUMERIC source = numeric_of(12345, 5, 1), dest = blank();
    EXPECT_EQ(dlx::numeric_to_numeric(source, dest, 3, 0), CS_EOVERFLOW);
}

TEST(NumericToNumeric, SignByteStaysWhereNothingIsRescaled) {
    CS_NUMERIC source = numeric_of(-5, 3, 1), dest = blank();
    source.array[0] = 9;
    EXPECT_EQ(dlx::numeric_to_numeric(source, dest, 9, 1), CS_SUCCEED);
    EXPECT_EQ(dest.array[0], 9);
    EXPECT_EQ(dlx::numeric_to_numeric(source, dest, 9, 2), CS_SUCCEED);
    EXPECT_EQ(dest.array[0], 1);
    source = minus_zero(3, 1);
    EXPECT_EQ(dlx::numeric_to_numeric(source, dest, 9, 1), CS_SUCCEED);
    EXPECT_EQ(dest.array[0], 1);
    EXPECT_EQ(dlx::numeric_to_numeric(source, dest, 9, 2), CS_SUCCEED);
    EXPECT_EQ(dest.array[0], 0);
    EXPECT_EQ(dlx::numeric_to_numeric(source, dest, 9, 0), CS_SUCCEED);
    EXPECT_EQ(dest.array[0], 0);
}

TEST(NumericToNumeric, RandomAgainstBigIntegers) {
    Random random(56);
    int counts[3] = {};
    for (int i = 0; i < CASES; ++i) {
        const CS_NUMERIC source = random_numeric(random, 3);
        Shape to = {pick(random, 1, 77), pick(random, 0, 77)};
        if (pick(random, 0, 1) == 0)
            to = {std::clamp(source.precision + pick(random, -3, 3), 1, 77),
                  std::clamp(source.scale + pick(random, -3, 3), 0, 77)};
        CS_NUMERIC dest = blank(), in_place = source;
        const Expected expected = rescaled(unscaled(source), source.scale, to);
        ASSERT_EQ(dlx::numeric_to_numeric(source, dest, to.precision, to.scale), expected.status);
        ASSERT_EQ(dlx::numeric_to_numeric(in_place, in_place, to.precision, to.scale), expected.status);
        ASSERT_EQ(std::memcmp(&dest, &in_place, static_cast<size_t>(2 + length_of(to.precision))), 0);
        ASSERT_EQ(dest.precision, to.precision);
        ASSERT_EQ(dest.scale, to.scale);
        ASSERT_TRUE(unused_bytes_are(dest, GUARD));
        if (expected.status != CS_EOVERFLOW) {
            ASSERT_EQ(unscaled(dest), expected.value);
        }
        ++counts[expected.status == CS_SUCCEED ? 0 : expected.status == CS_ETRUNCATED ? 1 : 2];
    }
    for (const int count : counts)
        EXPECT_GT(count, CASES / 50) << "every outcome occurs";
}

// ---- Order -----------------------------------------------------------------------------------

TEST(Numcmp, SignedAndAligned) {
    CS_NUMERIC a = numeric_of(250, 3, 2), b = numeric_of(25, 2, 1), minus = numeric_of(-25, 2, 1);
    EXPECT_EQ(comn_numcmp(&a, &b), 0);
    EXPECT_EQ(comn_numcmp(&a, &minus), 1);
    EXPECT_EQ(comn_numcmp(&minus, &b), -1);
    CS_NUMERIC zero = numeric_of(0, 9, 4), negative_zero = minus_zero(1, 0);
    EXPECT_EQ(comn_numcmp(&zero, &negative_zero), 0);
}

TEST(Numcmp, DigitsBelowTheCoarseScaleDoNotCountPast77Digits) {
    CS_NUMERIC coarse = numeric_of(25, 76, 1), fine = numeric_of(259, 76, 2);
    EXPECT_EQ(comn_numcmp(&coarse, &fine), 0);
    coarse = numeric_of(25, 75, 1);
    EXPECT_EQ(comn_numcmp(&coarse, &fine), -1);
}

TEST(Numcmp, RandomAgainstBigIntegers) {
    Random random(55);
    int equal = 0;
    for (int i = 0; i < CASES; ++i) {
        CS_NUMERIC a = random_numeric(random, 1), b = random_numeric(random, 2);
        if (pick(random, 0, 2) == 0) {
            const int finer = std::min(77, a.scale + pick(random, 0, 3));
            const Big up = unscaled(a) * Big::ten_to(finer - a.scale) + Big(pick(random, 0, 1));
            if (up.magnitude() < Big::ten_to(77))
                b = numeric_of(up, 77, finer);
        }
        Big x = unscaled(a), y = unscaled(b);
        const CS_NUMERIC &fine = a.scale > b.scale ? a : b, &coarse = a.scale > b.scale ? b : a;
        const Big power = Big::ten_to(fine.scale - coarse.scale);
        int expected;
        if ((a.array[0] != 0) != (b.array[0] != 0) || coarse.precision + fine.scale <= 77 || a.scale == b.scale) {
            (a.scale > b.scale ? y : x) = (a.scale > b.scale ? y : x) * power;
            expected = x < y ? -1 : x > y;
        } else {
            (a.scale > b.scale ? x : y) = (a.scale > b.scale ? x : y) / power;
            expected = x < y ? -1 : x > y;
        }
        equal += expected == 0;
        ASSERT_EQ(comn_numcmp(&a, &b), expected) << unscaled(a).text() << " " << unscaled(b).text();
        ASSERT_EQ(comn_numcmp(&b, &a), -expected);
    }
    EXPECT_GT(equal, CASES / 50);
}

TEST(NumcmpDeathTest, PrecisionOutsideOneTo77) {
    CS_NUMERIC good = numeric_of(1, 5, 2), bad = good;
    for (const int precision : {0, 78, 255}) {
        bad.precision = static_cast<CS_BYTE>(precision);
        EXPECT_BOMB(comn_numcmp(&good, &bad), "numeric");
        EXPECT_BOMB(comn_numcmp(&bad, &good), "numeric");
    }
}

TEST(Numcmp, BadPrecisionAnswersZeroWhereAssertionsReturn) {
    ReturningAssertions mode;
    CS_NUMERIC good = numeric_of(1, 5, 2), bad = good;
    bad.precision = 0;
    EXPECT_EQ(comn_numcmp(&good, &bad), 0);
    EXPECT_EQ(comn_numcmp(&bad, &good), 0);
    EXPECT_EQ(mode.count(), 2);
}

TEST(Numcmp, ScalesAreNotJudged) {
    CS_NUMERIC a = numeric_of(1, 5, 200), b = numeric_of(1, 5, 0);
    EXPECT_EQ(comn_numcmp(&a, &b), -1);
    EXPECT_EQ(comn_numcmp(&b, &a), 1);
}

} // namespace
