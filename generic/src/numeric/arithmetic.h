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

// a >= b, by the limbs from TOP down. Where values are far apart, as a value and the bound of its digits mostly
// are, the first limb tells.
template <int TOP>
inline bool is_at_least(const limb *a, const limb *b) {
    if constexpr (TOP > 0)
        if (a[TOP] == b[TOP])
            return is_at_least<TOP - 1>(a, b);
    return a[TOP] >= b[TOP];
}

// magnitude >= 10^precision.
template <int N>
inline bool passes_precision(const Limbs<N> &magnitude, int precision) {
    if (precision > largest_exponent_in(N))
        return false;
    for (int i = N - 1; i >= POWER_LIMBS; --i)
        if (magnitude.at[i] != 0)
            return true;
    return is_at_least<std::min(N, POWER_LIMBS) - 1>(magnitude.at, POWERS_OF_TEN[precision].at);
}

template <int N>
inline bool fits_bytes(const Limbs<N> &magnitude, int bytes) {
    return significant_bytes(magnitude) <= bytes;
}

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
    each_limb<TO>([&](auto i) { result.at[i] = i < FROM ? from[i] : 0; });
    return result;
}

// The significant limbs of a number somewhere else.
struct Run {
    const limb *at;
    int count;
};

template <int N>
inline Run run_of(const Limbs<N> &m) {
    return {m.at, significant_limbs(m)};
}

// m * 10^places, in `product`: up to the four limbs of the power more.
inline Run times_power(Run m, int places, limb *product) {
    if (m.count == 0)
        return m;
    const Run power = run_of(POWERS_OF_TEN[places]);
    multiply_limbs(product, m.at, m.count, power.at, power.count);
    const int count = m.count + power.count;
    return {product, count - (product[count - 1] == 0)};
}

// magnitude * 10^places in place, of which the low N limbs stay. False when there are others.
template <int N>
[[gnu::noinline]] bool scale_up_far(Limbs<N> &magnitude, int places) {
    limb room[N + POWER_LIMBS];
    const Run product = times_power(run_of(magnitude), places, room);
    for (int i = 0; i < N; ++i)
        magnitude.at[i] = i < product.count ? product.at[i] : 0;
    return product.count <= N;
}
template <int N>
inline bool scale_up(Limbs<N> &magnitude, int places) {
    if (places > LIMB_DIGITS) [[unlikely]] {
        Limbs<N> far = magnitude; // apart, so that the common case needs no memory
        const bool fitting = scale_up_far(far, places);
        magnitude = far;
        return fitting;
    }
    const limb power = POWERS_OF_TEN[places].at[0];
    limb carry = 0;
    each_limb<N>([&](auto i) {
        const double_limb product = static_cast<double_limb>(magnitude.at[i]) * power + carry;
        magnitude.at[i] = static_cast<limb>(product);
        carry = static_cast<limb>(product >> 64);
    });
    return carry == 0;
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
    if (places > 0) {
        const bool fitting = scale_up(number.magnitude, places) && fits_bytes(number.magnitude, room.bytes);
        number.negative &= fitting && !is_zero(number.magnitude);
        return fitting ? NUME_OK : NUME_OVERFLOW;
    }
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
[[gnu::noinline]] int rescale_result(Number<N> &result, int bytes, int places, const Room &room) {
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
[[gnu::always_inline]] inline int add_or_subtract(const Number<N> &a, const Number<N> &b, int opn, int places,
                                                  const Room &room, Number<N> &result) {
    const bool b_negative = b.negative != (opn == 1);
    bool overflow = false;
    bool cancelled = false;
    if (a.negative == b_negative) {
        overflow = add_limbs(result.magnitude, a.magnitude, b.magnitude) != 0;
        result.negative = a.negative;
    } else {
        // The larger magnitude gives the sign. Which one that is cannot be foreseen: nothing branches on it.
        const limb borrow = subtract_limbs(result.magnitude, a.magnitude, b.magnitude);
        negate_limbs_if(result.magnitude, borrow);
        cancelled = is_zero(result.magnitude);
        result.negative = (a.negative != (borrow != 0)) & !cancelled;
    }

    int code = NUME_OVERFLOW;
    if (places == 0) [[likely]] {
        if (!overflow && fits(result.magnitude, room)) [[likely]]
            return NUME_OK;
    } else if (cancelled) {
        return NUME_OK;
    } else if (!overflow && fits_bytes(result.magnitude, room.bytes)) {
        Number<N> scaled = result; // apart, so that the common case needs no memory
        code = rescale_result(scaled, room.bytes, places, room);
        result = scaled;
    }
    if (code == NUME_OVERFLOW)
        result = {};
    return code;
}

// a * b rescaled by `places`. The product itself must fit too: the room's bytes when its precision holds the
// `digits` of both operands together, else the 32 bytes of the longest value. After a failure the low limbs of
// what was computed so far are there.
template <int A, int B, int R>
[[gnu::always_inline]] inline int multiply(const Number<A> &a, const Number<B> &b, int digits, int places,
                                           const Room &room, Number<R> &result) {
    static_assert(R >= A && R >= B);
    const Limbs<A + B> product = multiply_all(a.magnitude, b.magnitude);
    const bool negative = (a.negative != b.negative) & !is_zero(product); // no branch on signs
    result.magnitude = resize<R, A + B>(product.at);
    result.negative = negative;
    const int bytes = room.precision >= digits ? room.bytes : MAGNITUDE_BYTES;
    if (places == 0) [[likely]] {
        if (fits(product, {std::min(bytes, room.bytes), room.precision})) [[likely]]
            return NUME_OK;
        result.negative = false;
        return NUME_OVERFLOW;
    }
    if (!fits_bytes(product, bytes)) {
        result.negative = false;
        return NUME_OVERFLOW;
    }
    Number<R> scaled = result; // apart, so that the common case needs no memory
    const int code = rescale_result(scaled, bytes, places, room);
    result = scaled;
    return code;
}

// A quotient and a remainder, of which the counted limbs are set. The quotient has no zero at its top.
template <int N>
struct Division {
    limb quotient[N];
    limb remainder[N];
    int quotient_count;
    int remainder_count; // limbs set; there may be zeros at the top
};

// u / v, where v is not zero and u has at most N limbs.
template <int N>
inline void divide_magnitudes(Run u, Run v, Division<N> &result) {
    if (compare_limbs(u.at, u.count, v.at, v.count) < 0) {
        result.quotient_count = 0;
        for (int i = 0; i < u.count; ++i)
            result.remainder[i] = u.at[i];
        result.remainder_count = u.count;
        return;
    }
    divide_limbs<N>(result.quotient, result.remainder, u.at, u.count, v.at, v.count);
    result.quotient_count = u.count - v.count + 1;
    result.quotient_count -= result.quotient[result.quotient_count - 1] == 0;
    result.remainder_count = v.count;
}

// The length of the remainder's record: 0 for none; else the remainder's bytes and one ahead of them, save that
// the remainder of a real division by a single byte stands alone.
template <int N>
inline int remainder_length(const Division<N> &division, Run divisor) {
    const int bytes = significant_bytes(division.remainder, division.remainder_count);
    if (bytes == 0)
        return 0;
    return division.quotient_count != 0 && divisor.count == 1 && divisor.at[0] <= 255 ? 1 : bytes + 1;
}

// a * 10^places / b (a / (b * 10^-places) if places is below zero), truncated; and the length of the remainder's
// record, where that is asked for.
// The lengths are those of the operands' records: the room for the work depends on them. A division that is not
// carried out, for want of room or by zero, leaves the quotient as it is.
template <int N>
inline int divide(const Number<N> &a, int a_length, const Number<N> &b, int b_length, int places, const Room &room,
                  Number<N> &quotient, int *remaining) {
    if (places > CS_MAX_SCALE || places < -CS_MAX_SCALE)
        return NUME_OVERFLOW;
    int used = 0;
    if (places > 0)
        used = a_length += length_of_precision(places) + 1;
    else if (places < 0)
        used = b_length += length_of_precision(-places) + 1;
    if (remaining != nullptr)
        *remaining = b_length;
    if (used + a_length + 1 + b_length >= DIVISION_ROOM)
        return NUME_OVERFLOW;
    if (is_zero(b.magnitude))
        return NUME_DIVZERO;

    constexpr int W = N + POWER_LIMBS;
    limb scaled[W];
    Run dividend = run_of(a.magnitude);
    Run divisor = run_of(b.magnitude);
    if (places > 0)
        dividend = times_power(dividend, places, scaled);
    else if (places < 0)
        divisor = times_power(divisor, -places, scaled);
    Division<W> division;
    divide_magnitudes(dividend, divisor, division);

    if (remaining != nullptr)
        *remaining = remainder_length(division, divisor);
    const int count = division.quotient_count;
    each_limb<N>([&](auto i) { quotient.magnitude.at[i] = i < count ? division.quotient[i] : 0; });
    quotient.negative = false;
    if (count > N || !fits(quotient.magnitude, room))
        return NUME_OVERFLOW;
    quotient.negative = a.negative != b.negative && count != 0;
    return NUME_OK;
}

} // namespace dlx

#endif
