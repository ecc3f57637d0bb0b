// Money arithmetic: the com__mny core, which answers codes, and the comn_mny wrappers, which answer statuses.
//
// Each operation is one kernel on counts or on a pair of values. A core member and its wrapper differ only in how
// they tell the result, and in what they answer for a missing operand where assertions return: NUME_OVERFLOW and
// CS_FAIL, with nothing written.
//
// The smallest value has no positive counterpart. Magnitudes are therefore unsigned words, in which 2^63 has room.

#include "money/count.h"
#include "numeric/status.h"

namespace dlx {
namespace {

// The order of two values as -1, 0 or 1.
template <class T>
int order(T a, T b) {
    return (a > b) - (a < b);
}

// ---- CS_MONEY ----

int negate(const CS_MONEY *from, CS_MONEY *to) {
    const Count count = load_count(from);
    store_count(to, signed_count(static_cast<limb>(count), true));
    return count == SMALLEST_COUNT ? NUME_OVERFLOW : NUME_OK;
}

int increment(CS_MONEY *money) {
    const Count count = load_count(money);
    store_count(money, static_cast<Count>(static_cast<limb>(count) + 1));
    return count == LARGEST_COUNT ? NUME_OVERFLOW : NUME_OK;
}

// Not the mirror of increment: where the low word is zero it stays so, and the high word alone falls by one. Zero
// becomes -429496.7296. Stored values have come to depend on it.
int decrement(CS_MONEY *money) {
    const auto bits = static_cast<limb>(load_count(money));
    constexpr limb ONE_IN_HIGH_WORD = limb{1} << 32;
    const auto low = static_cast<CS_UINT>(bits);
    store_count(money, static_cast<Count>(bits - (low != 0 ? 1 : ONE_IN_HIGH_WORD)));
    return static_cast<Count>(bits) == SMALLEST_COUNT ? NUME_OVERFLOW : NUME_OK;
}

int add(const CS_MONEY *a, const CS_MONEY *b, CS_MONEY *sum) {
    Count count;
    const bool lost = __builtin_add_overflow(load_count(a), load_count(b), &count);
    store_count(sum, lost ? 0 : count);
    return lost ? NUME_OVERFLOW : NUME_OK;
}

int subtract(const CS_MONEY *a, const CS_MONEY *b, CS_MONEY *difference) {
    Count count;
    const bool lost = __builtin_sub_overflow(load_count(a), load_count(b), &count);
    store_count(difference, lost ? 0 : count);
    return lost ? NUME_OVERFLOW : NUME_OK;
}

// (high * 2^64 + low) / MONEY_UNIT for a high below MONEY_UNIT. Quotient and rest of 2^64 are known, so only single
// words are divided, and those by a constant.
limb divide_by_unit(limb high, limb low) {
    constexpr limb WORD = std::numeric_limits<limb>::max();
    constexpr limb QUOTIENT = WORD / MONEY_UNIT;
    constexpr limb REST = WORD % MONEY_UNIT + 1;
    static_assert(REST < MONEY_UNIT);
    return high * QUOTIENT + low / MONEY_UNIT + (high * REST + low % MONEY_UNIT) / MONEY_UNIT;
}

// a * b, rounded half away from zero. The result is zero after an overflow.
//
// A product from half a count to just below one is NUME_BADVALUE, and the result stays as it was: rounding up starts
// from a quotient without digits there, which the exact numerics refuse to increment. Callers have always seen it.
int multiply(Count a, Count b, Count &result) {
    constexpr limb HALF = MONEY_UNIT / 2;
    const double_limb product = static_cast<double_limb>(magnitude_of(a)) * magnitude_of(b);
    if (product >= HALF && product < MONEY_UNIT) [[unlikely]]
        return NUME_BADVALUE;
    const double_limb rounded = product + HALF;
    const auto high = static_cast<limb>(rounded >> 64);
    const bool negative = (a ^ b) < 0;
    result = 0;
    if (high >= MONEY_UNIT)
        return NUME_OVERFLOW;
    const limb magnitude = divide_by_unit(high, static_cast<limb>(rounded));
    if (!fits_count(magnitude, negative))
        return NUME_OVERFLOW;
    result = signed_count(magnitude, negative);
    return NUME_OK;
}

// a / b, cut toward zero. The result is zero after a failure.
int divide(Count a, Count b, Count &result) {
    result = 0;
    if (b == 0)
        return NUME_DIVZERO;
    const double_limb dividend = static_cast<double_limb>(magnitude_of(a)) * MONEY_UNIT;
    const auto high = static_cast<limb>(dividend >> 64);
    const limb divisor = magnitude_of(b);
    if (high >= divisor)
        return NUME_OVERFLOW;
    limb remainder;
    const limb magnitude = divide_two(high, static_cast<limb>(dividend), divisor, remainder);
    const bool negative = (a ^ b) < 0;
    if (!fits_count(magnitude, negative))
        return NUME_OVERFLOW;
    result = signed_count(magnitude, negative);
    return NUME_OK;
}

int multiply(const CS_MONEY *a, const CS_MONEY *b, CS_MONEY *product) {
    Count count;
    const int code = multiply(load_count(a), load_count(b), count);
    if (code != NUME_BADVALUE)
        store_count(product, count);
    return code;
}

int divide(const CS_MONEY *a, const CS_MONEY *b, CS_MONEY *quotient) {
    Count count;
    const int code = divide(load_count(a), load_count(b), count);
    store_count(quotient, count);
    return code;
}

int scale(CS_MONEY *money, int mpier, int addend) {
    Count count = load_count(money);
    const int code = scale_count(count, static_cast<CS_UINT>(mpier), static_cast<CS_UINT>(addend));
    if (code == NUME_OK)
        store_count(money, count);
    return code;
}

// Answers the remainder of the magnitude. Only 16 bits of the divisor count, so 65536 is a zero too.
int divide_down(CS_MONEY *money, int dvsr) {
    const limb divisor = static_cast<CS_UINT>(dvsr) & 0xFFFF;
    if (divisor == 0)
        return 0;
    const Count count = load_count(money);
    const limb magnitude = magnitude_of(count);
    store_count(money, signed_count(magnitude / divisor, count < 0));
    return static_cast<int>(magnitude % divisor);
}

// Makes a value ready for digits: its magnitude without `trim` digits, rounded by the last of those alone. The
// magnitude of the smallest value, untrimmed, is no money; such a value stays as it is.
int prepare_digits(CS_MONEY *money, int trim) {
    const Count count = load_count(money);
    limb magnitude = magnitude_of(count);
    limb digit = 0;
    for (; trim > 0 && (magnitude | digit) != 0; --trim) {
        digit = magnitude % 10;
        magnitude /= 10;
    }
    magnitude += digit > 4;
    if (fits_count(magnitude, false))
        store_count(money, static_cast<Count>(magnitude));
    return count < 0 ? -1 : 0;
}

int take_digit(CS_MONEY *money, char *value) {
    *value = static_cast<char>('0' + divide_down(money, 10));
    return load_count(money) != 0;
}

// ---- CS_MONEY4 ----

// The smallest value has no counterpart, and the output is then not written.
int negate(const CS_MONEY4 *from, CS_MONEY4 *to) {
    CS_INT word;
    if (__builtin_sub_overflow(0, from->mny4, &word))
        return NUME_OVERFLOW;
    to->mny4 = word;
    return NUME_OK;
}

int add(const CS_MONEY4 *a, const CS_MONEY4 *b, CS_MONEY4 *sum) {
    CS_INT word;
    const bool lost = __builtin_add_overflow(a->mny4, b->mny4, &word);
    sum->mny4 = lost ? 0 : word;
    return lost ? NUME_OVERFLOW : NUME_OK;
}

int subtract(const CS_MONEY4 *a, const CS_MONEY4 *b, CS_MONEY4 *difference) {
    CS_INT word;
    const bool lost = __builtin_sub_overflow(a->mny4, b->mny4, &word);
    difference->mny4 = lost ? 0 : word;
    return lost ? NUME_OVERFLOW : NUME_OK;
}

// Narrows what an operation on widened operands gave. Every failure, of the operation or of the narrowing, is zero.
int store_narrow(int code, Count count, CS_MONEY4 *to) {
    CS_INT word = 0;
    if (code == NUME_OK && !narrow_count(count, word))
        code = NUME_OVERFLOW;
    to->mny4 = code == NUME_OK ? word : 0;
    return code;
}

int multiply(const CS_MONEY4 *a, const CS_MONEY4 *b, CS_MONEY4 *product) {
    Count count = 0;
    const int code = multiply(Count{a->mny4}, Count{b->mny4}, count);
    return store_narrow(code, count, product);
}

int divide(const CS_MONEY4 *a, const CS_MONEY4 *b, CS_MONEY4 *quotient) {
    Count count = 0;
    const int code = divide(Count{a->mny4}, Count{b->mny4}, count);
    return store_narrow(code, count, quotient);
}

// ---- Rarely used ----

// Long division in base 65536 by a divisor of one digit. The digits of the dividend count as signed: one of 32768 or
// more stands for itself less 65536, with no carry into the digit above. So the result is the unsigned quotient where
// every digit is below 32768, and for other dividends callers get what signed digits give. Each quotient digit is
// cut toward zero, and its low 16 bits are kept. A zero divisor gives zero.
Count divide_signed_digits(limb dividend, CS_UINT divisor) {
    if (divisor == 0)
        return 0;
    limb quotient = 0;
    Count rest = 0;
    for (int shift = 48; shift >= 0; shift -= 16) {
        const Count span = rest * 65536 + static_cast<CS_SMALLINT>(dividend >> shift);
        quotient = quotient << 16 | static_cast<CS_USHORT>(span / divisor);
        rest = span % divisor;
    }
    return static_cast<Count>(quotient);
}

} // namespace
} // namespace dlx

using namespace dlx;

// ---- CS_MONEY: core ----

int com__mnycopy(CS_MONEY *mp1, CS_MONEY *mp2) {
    if (!has_operands(COM_HERE, mp1, mp2))
        return NUME_OVERFLOW;
    store_count(mp2, load_count(mp1));
    return NUME_OK;
}
int com__mnyminus(CS_MONEY *imp, CS_MONEY *omp) {
    return has_operands(COM_HERE, imp, omp) ? negate(imp, omp) : NUME_OVERFLOW;
}
int com__mnyinc(CS_MONEY *mp) { return has_operands(COM_HERE, mp) ? increment(mp) : NUME_OVERFLOW; }
int com__mnydec(CS_MONEY *mp) { return has_operands(COM_HERE, mp) ? decrement(mp) : NUME_OVERFLOW; }
int com__mnyadd(CS_MONEY *add1p, CS_MONEY *add2p, CS_MONEY *sump) {
    return has_operands(COM_HERE, add1p, add2p, sump) ? add(add1p, add2p, sump) : NUME_OVERFLOW;
}
int com__mnysub(CS_MONEY *minp, CS_MONEY *subp, CS_MONEY *difp) {
    return has_operands(COM_HERE, minp, subp, difp) ? subtract(minp, subp, difp) : NUME_OVERFLOW;
}
int com__mnymul(CS_MONEY *m1, CS_MONEY *m2, CS_MONEY *m3) {
    return has_operands(COM_HERE, m1, m2, m3) ? multiply(m1, m2, m3) : NUME_OVERFLOW;
}
int com__mnydiv(CS_MONEY *m1, CS_MONEY *m2, CS_MONEY *m3) {
    return has_operands(COM_HERE, m1, m2, m3) ? divide(m1, m2, m3) : NUME_OVERFLOW;
}
int com__mnyscale(CS_MONEY *mp, int mpier, int add) {
    return has_operands(COM_HERE, mp) ? scale(mp, mpier, add) : NUME_OVERFLOW;
}
int com__mnydown(CS_MONEY *mp, int dvsr) { return has_operands(COM_HERE, mp) ? divide_down(mp, dvsr) : 0; }
int com__mnyinit(CS_MONEY *mp, int trim) { return has_operands(COM_HERE, mp) ? prepare_digits(mp, trim) : 0; }
int com__mnyndigit(CS_MONEY *mp, char *value) { return has_operands(COM_HERE, mp, value) ? take_digit(mp, value) : 0; }
int com__maxposmny(CS_MONEY *mp) {
    if (!has_operands(COM_HERE, mp))
        return NUME_OVERFLOW;
    store_count(mp, LARGEST_COUNT);
    return NUME_OK;
}
int com__maxnegmny(CS_MONEY *mp) {
    if (!has_operands(COM_HERE, mp))
        return NUME_OVERFLOW;
    store_count(mp, SMALLEST_COUNT);
    return NUME_OK;
}
// Money has no remainder. Nothing is looked at, so nothing can be missing.
int com__mnyrem(CS_MONEY *, CS_MONEY *, CS_MONEY *) { return NUME_OVERFLOW; }

// ---- CS_MONEY: wrappers ----

CS_RETCODE comn_mnycopy(CS_MONEY *mp1, CS_MONEY *mp2) {
    if (!has_operands(COM_HERE, mp1, mp2))
        return CS_FAIL;
    store_count(mp2, load_count(mp1));
    return CS_SUCCEED;
}
CS_RETCODE comn_mnyminus(CS_MONEY *imp, CS_MONEY *omp) {
    return has_operands(COM_HERE, imp, omp) ? status_of_code(negate(imp, omp)) : CS_FAIL;
}
CS_RETCODE comn_mnyinc(CS_MONEY *mp) { return has_operands(COM_HERE, mp) ? status_of_code(increment(mp)) : CS_FAIL; }
CS_RETCODE comn_mnydec(CS_MONEY *mp) { return has_operands(COM_HERE, mp) ? status_of_code(decrement(mp)) : CS_FAIL; }
CS_RETCODE comn_mnyadd(CS_MONEY *add1p, CS_MONEY *add2p, CS_MONEY *sump) {
    return has_operands(COM_HERE, add1p, add2p, sump) ? status_of_code(add(add1p, add2p, sump)) : CS_FAIL;
}
CS_RETCODE comn_mnysub(CS_MONEY *minp, CS_MONEY *subp, CS_MONEY *difp) {
    return has_operands(COM_HERE, minp, subp, difp) ? status_of_code(subtract(minp, subp, difp)) : CS_FAIL;
}
CS_RETCODE comn_mnymul(CS_MONEY *m1, CS_MONEY *m2, CS_MONEY *m3) {
    return has_operands(COM_HERE, m1, m2, m3) ? status_of_code(multiply(m1, m2, m3)) : CS_FAIL;
}
CS_RETCODE comn_mnydivide(CS_MONEY *m1, CS_MONEY *m2, CS_MONEY *m3) {
    return has_operands(COM_HERE, m1, m2, m3) ? status_of_code(divide(m1, m2, m3)) : CS_FAIL;
}
CS_RETCODE comn_mnyscale(CS_MONEY *mp, int mpier, int add) {
    return has_operands(COM_HERE, mp) ? status_of_code(scale(mp, mpier, add)) : CS_FAIL;
}
// These three answer a number and not a code, which no mapping may touch.
int comn_mnydown(CS_MONEY *mp, int dvsr) { return has_operands(COM_HERE, mp) ? divide_down(mp, dvsr) : 0; }
int comn_mnyinit(CS_MONEY *mp, int trim) { return has_operands(COM_HERE, mp) ? prepare_digits(mp, trim) : 0; }
int comn_mnyndigit(CS_MONEY *mp, char *value) { return has_operands(COM_HERE, mp, value) ? take_digit(mp, value) : 0; }
CS_RETCODE comn_mnymaxpos(CS_MONEY *mp) {
    if (!has_operands(COM_HERE, mp))
        return CS_FAIL;
    store_count(mp, LARGEST_COUNT);
    return CS_SUCCEED;
}
CS_RETCODE comn_mnymaxneg(CS_MONEY *mp) {
    if (!has_operands(COM_HERE, mp))
        return CS_FAIL;
    store_count(mp, SMALLEST_COUNT);
    return CS_SUCCEED;
}
int comn_mnycmp(CS_MONEY *m1, CS_MONEY *m2) {
    return has_operands(COM_HERE, m1, m2) ? order(load_count(m1), load_count(m2)) : 0;
}
CS_RETCODE comn_mnyzero(CS_MONEY *mnyptr) {
    if (!has_operands(COM_HERE, mnyptr))
        return CS_FAIL;
    store_count(mnyptr, 0);
    return CS_SUCCEED;
}

// ---- CS_MONEY4: core ----

int com__mnyminus4(CS_MONEY4 *imp, CS_MONEY4 *omp) {
    return has_operands(COM_HERE, imp, omp) ? negate(imp, omp) : NUME_OVERFLOW;
}
int com__mnyadd4(CS_MONEY4 *add1p, CS_MONEY4 *add2p, CS_MONEY4 *sump) {
    return has_operands(COM_HERE, add1p, add2p, sump) ? add(add1p, add2p, sump) : NUME_OVERFLOW;
}
int com__mnysub4(CS_MONEY4 *minp, CS_MONEY4 *subp, CS_MONEY4 *difp) {
    return has_operands(COM_HERE, minp, subp, difp) ? subtract(minp, subp, difp) : NUME_OVERFLOW;
}
int com__mnymul4(CS_MONEY4 *m1, CS_MONEY4 *m2, CS_MONEY4 *m3) {
    return has_operands(COM_HERE, m1, m2, m3) ? multiply(m1, m2, m3) : NUME_OVERFLOW;
}
int com__mnydiv4(CS_MONEY4 *m1, CS_MONEY4 *m2, CS_MONEY4 *m3) {
    return has_operands(COM_HERE, m1, m2, m3) ? divide(m1, m2, m3) : NUME_OVERFLOW;
}
int com__mnyrem4(CS_MONEY4 *, CS_MONEY4 *, CS_MONEY4 *) { return NUME_OVERFLOW; }

// ---- CS_MONEY4: wrappers ----

CS_RETCODE comn_mny4copy(CS_MONEY4 *mp1, CS_MONEY4 *mp2) {
    if (!has_operands(COM_HERE, mp1, mp2))
        return CS_FAIL;
    mp2->mny4 = mp1->mny4;
    return CS_SUCCEED;
}
CS_RETCODE comn_mny4minus(CS_MONEY4 *imp, CS_MONEY4 *omp) {
    return has_operands(COM_HERE, imp, omp) ? status_of_code(negate(imp, omp)) : CS_FAIL;
}
CS_RETCODE comn_mny4add(CS_MONEY4 *add1p, CS_MONEY4 *add2p, CS_MONEY4 *sump) {
    return has_operands(COM_HERE, add1p, add2p, sump) ? status_of_code(add(add1p, add2p, sump)) : CS_FAIL;
}
CS_RETCODE comn_mny4sub(CS_MONEY4 *minp, CS_MONEY4 *subp, CS_MONEY4 *difp) {
    return has_operands(COM_HERE, minp, subp, difp) ? status_of_code(subtract(minp, subp, difp)) : CS_FAIL;
}
CS_RETCODE comn_mny4mul(CS_MONEY4 *m1, CS_MONEY4 *m2, CS_MONEY4 *m3) {
    return has_operands(COM_HERE, m1, m2, m3) ? status_of_code(multiply(m1, m2, m3)) : CS_FAIL;
}
CS_RETCODE comn_mny4divide(CS_MONEY4 *m1, CS_MONEY4 *m2, CS_MONEY4 *m3) {
    return has_operands(COM_HERE, m1, m2, m3) ? status_of_code(divide(m1, m2, m3)) : CS_FAIL;
}
int comn_mny4cmp(CS_MONEY4 *m1, CS_MONEY4 *m2) {
    return has_operands(COM_HERE, m1, m2) ? order(m1->mny4, m2->mny4) : 0;
}
CS_RETCODE comn_mny4zero(CS_MONEY4 *mnyptr) {
    if (!has_operands(COM_HERE, mnyptr))
        return CS_FAIL;
    mnyptr->mny4 = 0;
    return CS_SUCCEED;
}

// ---- Rarely used ----

// The unsigned 64-bit quotient: a divisor of two digits leaves at most three, so the top digit stands alone in
// mnyhigh. A smaller divisor is the other function's, with its signed digits.
void comn_mnyxdiv(CS_MONEY *num, CS_MONEY *den, CS_MONEY *res) {
    if (!has_operands(COM_HERE, num, den, res))
        return;
    const auto divisor = static_cast<CS_UINT>(load_count(den));
    if (divisor >> 16 == 0)
        return comn__mny16div(num, den, res);
    store_count(res, static_cast<Count>(static_cast<limb>(load_count(num)) / divisor));
}

void comn__mny16div(CS_MONEY *num, CS_MONEY *den, CS_MONEY *res) {
    if (!has_operands(COM_HERE, num, den, res))
        return;
    const CS_UINT divisor = static_cast<CS_USHORT>(load_count(den));
    store_count(res, divide_signed_digits(static_cast<limb>(load_count(num)), divisor));
}

// Halving a negative value settles at -1, so such a call does not return. The empty statement keeps that so: a loop
// without a visible effect may be assumed to end.
void com__mnyshift(CS_MONEY *m1, CS_INT value) {
    if (!has_operands(COM_HERE, m1))
        return;
    auto bits = static_cast<limb>(load_count(m1));
    for (; value != 0; value >>= 1) {
        bits >>= 1;
        __asm__ volatile("");
    }
    store_count(m1, static_cast<Count>(bits));
}
