// The rules of exact arithmetic on numbers in limbs: what overflows, what is cut, which sign a result has. The
// records of the core and the public numerics load into these numbers and store from them; both follow these
// rules and no others.
//
// N is the limbs of a number: four for every value of up to 77 digits, more for the longer work records that
// callers of the core may bring.
#ifndef DLX_NUMERIC_ARITHMETIC_H
#define DLX_NUMERIC_ARITHMETIC_H

#include "numeric/kernels.h"
#include "numeric/powers.h"

#include <algorithm>

namespace dlx {

template <int N>
struct Number {
    Limbs<N> magnitude;
    bool negative;
};

// What a result must fit.
struct Room {
    int bytes;     // of magnitude
    int precision; // digits; above 77 nothing is too large
};

constexpr int POWER_LIMBS = MAGNITUDE_LIMBS;

// Division has 132 bytes of room for all its work, and callers rely on where that ends: with both operands at
// their longest, a dividend cannot be scaled up by all 77 digits.
constexpr int DIVISION_ROOM = 133;

// Of a record that holds every value of the precision, or the power of ten.
inline int length_of_precision(int precision) { return 1 + BYTES_OF_PRECISION[precision]; }

// magnitude >= 10^precision.
template <int N>
inline bool passes_precision(const Limbs<N> &magnitude, int precision) {
    if (precision > largest_exponent_in(N))
        return false;
    const Magnitude &power = POWERS_OF_TEN[precision];
    for (int i = N - 1; i >= POWER_LIMBS; --i)
        if (magnitude.at[i] != 0)
            return true;
    for (int i = std::min(N, POWER_LIMBS) - 1; i > 0; --i)
        if (magnitude.at[i] != power.at[i])
            return magnitude.at[i] > power.at[i];
    return magnitude.at[0] >= power.at[0];
}

template <int N>
inline bool fits_bytes(const Limbs<N> &magnitude, int bytes) { return significant_bytes(magnitude) <= bytes; }

// Bytes that have room for all digits of the precision need no look of their own.
template <int N>
inline bool fits(const Limbs<N> &magnitude, const Room &room) {
    if (passes_precision(magnitude, room.precision))
        return false;
    return (room.precision <= CS_MAX_PREC && BYTES_OF_PRECISION[room.precision] <= room.bytes) ||
           fits_bytes(magnitude, room.bytes);
}

// A number in more limbs, or in fewer: those at the top are then dropped.
template <int TO, int FROM>
inline Limbs<TO> resize(const limb *from) {
    Limbs<TO> result;
    for (int i = 0; i < TO; ++i)
        result.at[i] = i < FROM ? from[i] : 0;
    return result;
}

// magnitude * 10^places, which takes up to the four limbs of the power more.
template <int N>
inline Limbs<N + POWER_LIMBS> times_power(const Limbs<N> &magnitude, int places) {
    const Magnitude &power = POWERS_OF_TEN[places];
    Limbs<N + POWER_LIMBS> product = {};
    if (places <= LIMB_DIGITS) {
        multiply_limbs(product.at, magnitude.at, N, power.at, 1);
        return product;
    }
    const int count = significant_limbs(magnitude);
    if (count != 0)
        multiply_limbs(product.at, magnitude.at, count, power.at, significant_limbs(power));
    return product;
}

// number * 10^places in place. False when it does not fit `bytes`; the low limbs are there even then. A result
// of zero has no sign.
template <int N>
inline bool scale_up(Number<N> &number, int places, int bytes) {
    const Limbs<N + POWER_LIMBS> product = times_power(number.magnitude, places);
    number.magnitude = resize<N, N>(product.at);
    const bool fitting = fits_bytes(product, bytes);
    number.negative &= fitting && !is_zero(number.magnitude);
    return fitting;
}

// number / 10^places in place, truncated; whether digits other than zero were cut.
template <int N>
[[gnu::noinline]] bool cut_digits(Number<N> &number, int places) {
    const int count = significant_limbs(number.magnitude);
    const Magnitude &power = POWERS_OF_TEN[places];
    const int power_count = significant_limbs(power);
    if (compare_limbs(number.magnitude.at, count, power.at, power_count) < 0) {
        number = {};
        return count != 0;
    }
    Limbs<N> quotient = {};
    limb remainder[POWER_LIMBS];
    divide_limbs<N>(quotient.at, remainder, number.magnitude.at, count, power.at, power_count);
    number.magnitude = quotient;
    return significant_limbs(remainder, power_count) != 0;
}

// Brings a number from a record of `length` bytes to `places` more decimal places (fewer, if below zero).
// Digits are cut, never rounded. A zero that is scaled at all loses its sign.
template <int N>
inline int rescale(Number<N> &number, int length, int places, const Room &room) {
    if (places == 0)
        return NUME_OK;
    if (places > CS_MAX_SCALE || places < -CS_MAX_SCALE)
        return NUME_BADVALUE;
    if (places > 0)
        return scale_up(number, places, room.bytes) ? NUME_OK : NUME_OVERFLOW;
    if (length + 1 + length_of_precision(-places) >= DIVISION_ROOM)
        return NUME_OVERFLOW;
    const bool cut = cut_digits(number, -places);
    if (!fits(number.magnitude, room)) {
        number.negative = false;
        return NUME_OVERFLOW;
    }
    return cut ? NUME_TRUNCATED : NUME_OK;
}

// A rescale of a result that has fit `bytes` so far, and the last check of its digits.
template <int N>
inline int rescale_result(Number<N> &result, int bytes, int places, const Room &room) {
    int code = rescale(result, bytes + 1, places, room);
    if (code == NUME_OK && !fits(result.magnitude, room))
        code = NUME_OVERFLOW;
    if (code == NUME_OVERFLOW || code == NUME_BADVALUE)
        result.negative = false;
    return code;
}

// a + b (opn 0) or a - b (opn 1), then rescaled by `places`. The sum must fit the room's bytes before that. A
// result of zero has no sign, save where magnitudes were added: minus zero plus minus zero stays what it is.
template <int N>
inline int add_or_subtract(const Number<N> &a, const Number<N> &b, int opn, int places, const Room &room,
                           Number<N> &result) {
    limb carry = 0;
    if ((a.negative == b.negative) == (opn == 0)) {
        carry = add_limbs(result.magnitude, a.magnitude, b.magnitude);
        result.negative = a.negative;
    } else {
        // The sign of the larger magnitude. Which one that is cannot be foreseen, so nothing branches on it.
        const limb borrow = subtract_limbs(result.magnitude, a.magnitude, b.magnitude);
        negate_limbs_if(result.magnitude, borrow);
        if (is_zero(result.magnitude)) {
            result.negative = false;
            return NUME_OK;
        }
        const bool b_negative = b.negative != (opn == 1);
        result.negative = borrow != 0 ? b_negative : a.negative;
    }

    int code = NUME_OVERFLOW;
    if (carry == 0) {
        if (places == 0)
            code = fits(result.magnitude, room) ? NUME_OK : NUME_OVERFLOW;
        else if (fits_bytes(result.magnitude, room.bytes))
            code = rescale_result(result, room.bytes, places, room);
    }
    if (code == NUME_OVERFLOW)
        result = {};
    return code;
}

// a * b rescaled by `places`. The product itself must fit too: the room's bytes when its precision holds the
// `digits` of both operands together, else the 32 bytes of the longest value. After a failure the low limbs of
// what was computed so far are there.
template <int N, int R>
inline int multiply(const Number<N> &a, const Number<N> &b, int digits, int places, const Room &room,
                    Number<R> &result) {
    static_assert(R >= N && R >= MAGNITUDE_LIMBS);
    const Limbs<2 * N> product = multiply_all(a.magnitude, b.magnitude);
    result.magnitude = resize<R, 2 * N>(product.at);
    result.negative = false;
    const int bytes = room.precision >= digits ? room.bytes : MAGNITUDE_BYTES;
    if (places == 0) {
        if (!fits(product, {std::min(bytes, room.bytes), room.precision}))
            return NUME_OVERFLOW;
        result.negative = a.negative != b.negative && !is_zero(product);
        return NUME_OK;
    }
    if (!fits_bytes(product, bytes))
        return NUME_OVERFLOW;
    result.negative = a.negative != b.negative && !is_zero(product);
    return rescale_result(result, bytes, places, room);
}

// A quotient and a remainder. The quotient's limbs are zero above the counted ones; of the remainder only those
// that its bytes take are set.
template <int N>
struct Division {
    Limbs<N> quotient;
    Limbs<N> remainder;
    int quotient_count;
    int remainder_bytes;
};

// u / v by their significant limbs; v_count is not zero, u_count at most N.
template <int N>
inline void divide_magnitudes(const limb *u, int u_count, const limb *v, int v_count, Division<N> &result) {
    result.quotient = {};
    if (compare_limbs(u, u_count, v, v_count) < 0) {
        result.quotient_count = 0;
        for (int i = 0; i < u_count; ++i)
            result.remainder.at[i] = u[i];
        result.remainder_bytes = significant_bytes(u, u_count);
        return;
    }
    divide_limbs<N>(result.quotient.at, result.remainder.at, u, u_count, v, v_count);
    result.quotient_count = significant_limbs(result.quotient.at, u_count - v_count + 1);
    result.remainder_bytes = significant_bytes(result.remainder.at, v_count);
}

// The length of a remainder's record: 0 for none; else the remainder's bytes and one ahead of them, save that
// the remainder of a real division by a single byte stands alone.
inline int remainder_length(int remainder_bytes, bool quotient_is_zero, bool divisor_is_byte) {
    if (remainder_bytes == 0)
        return 0;
    return divisor_is_byte && !quotient_is_zero ? 1 : remainder_bytes + 1;
}

// a * 10^places / b (a / (b * 10^-places) if places is below zero), truncated, with the remainder's length.
// The lengths are those of the operands' records: the room for the work depends on them. A division that is not
// carried out, for want of room or by zero, leaves the quotient as it is.
template <int N>
inline int divide(const Number<N> &a, int a_length, const Number<N> &b, int b_length, int places, const Room &room,
                  Number<N> &quotient, int &remaining) {
    if (places > CS_MAX_SCALE || places < -CS_MAX_SCALE)
        return NUME_OVERFLOW;
    int used = 0;
    if (places > 0)
        used = a_length += length_of_precision(places) + 1;
    else if (places < 0)
        used = b_length += length_of_precision(-places) + 1;
    remaining = b_length;
    if (used + a_length + 1 + b_length >= DIVISION_ROOM)
        return NUME_OVERFLOW;
    if (is_zero(b.magnitude))
        return NUME_DIVZERO;

    constexpr int W = N + POWER_LIMBS;
    Division<W> division;
    bool divisor_is_byte = false;
    const auto run = [&](const limb *dividend, int dividend_limbs, const limb *divisor, int divisor_limbs) {
        const int divisor_count = significant_limbs(divisor, divisor_limbs);
        divisor_is_byte = divisor_count == 1 && divisor[0] <= 255;
        divide_magnitudes(dividend, significant_limbs(dividend, dividend_limbs), divisor, divisor_count, division);
    };
    if (places > 0)
        run(times_power(a.magnitude, places).at, W, b.magnitude.at, N);
    else if (places < 0)
        run(a.magnitude.at, N, times_power(b.magnitude, -places).at, W);
    else
        run(a.magnitude.at, N, b.magnitude.at, N);

    const bool is_nothing = division.quotient_count == 0;
    remaining = remainder_length(division.remainder_bytes, is_nothing, divisor_is_byte);
    quotient.magnitude = resize<N, N>(division.quotient.at);
    quotient.negative = false;
    if (!fits(division.quotient, room))
        return NUME_OVERFLOW;
    quotient.negative = a.negative != b.negative && !is_nothing;
    return NUME_OK;
}

} // namespace dlx

#endif
