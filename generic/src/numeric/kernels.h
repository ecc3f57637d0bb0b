// Arithmetic on runs of limbs, the lowest first: addition, order, product, and division by Knuth's Algorithm D on
// 64-bit words. A count is a number of limbs. Nothing here knows of signs, bytes or digits.
#ifndef DLX_NUMERIC_KERNELS_H
#define DLX_NUMERIC_KERNELS_H

#include "numeric/limbs.h"

#include <algorithm>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace dlx {

// Limbs without the zero ones at the top: 0 for zero.
inline int significant_limbs(const limb *limbs, int count) {
    while (count != 0 && limbs[count - 1] == 0)
        --count;
    return count;
}
template <int N>
inline int significant_limbs(const Limbs<N> &m) {
    return significant_limbs(m.at, N);
}

inline void zero_limbs(limb *limbs, int count) {
    for (int i = 0; i < count; ++i)
        limbs[i] = 0;
}

// a + b + carry, and a - b - borrow: the carry or borrow is 0 or 1 before and after.
inline limb add_with_carry(limb a, limb b, limb &carry) {
#if defined(__x86_64__)
    unsigned long long sum; // the compiler's own chain of two additions a limb is three times as long
    carry = _addcarry_u64(static_cast<unsigned char>(carry), a, b, &sum);
    return sum;
#else
    const double_limb sum = static_cast<double_limb>(a) + b + carry;
    carry = static_cast<limb>(sum >> 64);
    return static_cast<limb>(sum);
#endif
}
inline limb subtract_with_borrow(limb a, limb b, limb &borrow) {
#if defined(__x86_64__)
    unsigned long long difference;
    borrow = _subborrow_u64(static_cast<unsigned char>(borrow), a, b, &difference);
    return difference;
#else
    const double_limb difference = static_cast<double_limb>(a) - b - borrow;
    borrow = static_cast<limb>(difference >> 64) & 1;
    return static_cast<limb>(difference);
#endif
}

// a + b; the carry.
template <int N>
inline limb add_limbs(Limbs<N> &sum, const Limbs<N> &a, const Limbs<N> &b) {
    limb carry = 0;
    each_limb<N>([&](auto i) { sum.at[i] = add_with_carry(a.at[i], b.at[i], carry); });
    return carry;
}

// a - b; the borrow.
template <int N>
inline limb subtract_limbs(Limbs<N> &difference, const Limbs<N> &a, const Limbs<N> &b) {
    limb borrow = 0;
    each_limb<N>([&](auto i) { difference.at[i] = subtract_with_borrow(a.at[i], b.at[i], borrow); });
    return borrow;
}

// 2^(64 * N) - m if `condition` is 1; m if it is 0.
template <int N>
inline void negate_limbs_if(Limbs<N> &m, limb condition) {
    const limb mask = -condition;
    limb carry = condition;
    each_limb<N>([&](auto i) { m.at[i] = add_with_carry(m.at[i] ^ mask, 0, carry); });
}

// Below zero, zero or above zero, as a is below, at or above b. Both counts without zero limbs at the top.
inline int compare_limbs(const limb *a, int a_count, const limb *b, int b_count) {
    if (a_count != b_count)
        return a_count < b_count ? -1 : 1;
    for (int i = a_count - 1; i >= 0; --i)
        if (a[i] != b[i])
            return a[i] < b[i] ? -1 : 1;
    return 0;
}

// a * b, to a_count + b_count limbs apart from both; the counts are not zero.
inline void multiply_limbs(limb *product, const limb *a, int a_count, const limb *b, int b_count) {
    limb carry = 0;
    for (int i = 0; i < a_count; ++i) {
        const double_limb sum = static_cast<double_limb>(a[i]) * b[0] + carry;
        product[i] = static_cast<limb>(sum);
        carry = static_cast<limb>(sum >> 64);
    }
    product[a_count] = carry;
    for (int j = 1; j < b_count; ++j) {
        carry = 0;
        for (int i = 0; i < a_count; ++i) {
            const double_limb sum = static_cast<double_limb>(a[i]) * b[j] + product[i + j] + carry;
            product[i + j] = static_cast<limb>(sum);
            carry = static_cast<limb>(sum >> 64);
        }
        product[a_count + j] = carry;
    }
}

// a * b for all limbs of both: with few of them it costs more to look for zeros than to multiply by them.
template <int A, int B>
inline Limbs<A + B> multiply_all(const Limbs<A> &a, const Limbs<B> &b) {
    Limbs<A + B> product = {};
    if constexpr (A <= MAGNITUDE_LIMBS && B <= MAGNITUDE_LIMBS) {
        each_limb<B>([&](auto j) {
            limb carry = 0;
            each_limb<A>([&](auto i) {
                const double_limb sum = static_cast<double_limb>(a.at[i]) * b.at[j] + product.at[i + j] + carry;
                product.at[i + j] = static_cast<limb>(sum);
                carry = static_cast<limb>(sum >> 64);
            });
            product.at[j + A] = carry;
        });
    } else {
        const int a_count = significant_limbs(a);
        const int b_count = significant_limbs(b);
        if (a_count != 0 && b_count != 0)
            multiply_limbs(product.at, a.at, a_count, b.at, b_count);
    }
    return product;
}

// (top, next, low) / (d1, d0) where (top, next) is below (d1, d0) and d1 has its top bit set: the quotient limb;
// top and next become the remainder.
inline limb divide_three_by_two(limb &top, limb &next, limb low, limb d1, limb d0) {
    limb quotient;
    limb rest;
    double_limb product;
    if (top == d1) [[unlikely]] {
        quotient = ~static_cast<limb>(0);
        product = static_cast<double_limb>(quotient) * d0;
        if (__builtin_add_overflow(next, d1, &rest)) {
            const double_limb remainder = (static_cast<double_limb>(rest) << 64 | low) - product;
            top = static_cast<limb>(remainder >> 64);
            next = static_cast<limb>(remainder);
            return quotient;
        }
    } else {
        quotient = divide_two(top, next, d1, rest);
        product = static_cast<double_limb>(quotient) * d0;
    }
    // The estimate by one limb is at most two too large.
    while (product > (static_cast<double_limb>(rest) << 64 | low)) {
        --quotient;
        product -= d0;
        if (__builtin_add_overflow(rest, d1, &rest))
            break;
    }
    const double_limb remainder = (static_cast<double_limb>(rest) << 64 | low) - product;
    top = static_cast<limb>(remainder >> 64);
    next = static_cast<limb>(remainder);
    return quotient;
}

// One step of the long division: the quotient limb of span (v_count + 1 limbs, of which the upper ones are below
// v) by v, which has its top bit set and at least three limbs; the remainder stays in span. V is v_count where it
// is known.
template <int V>
inline limb divide_span(limb *span, const limb *v, int v_count) {
    const int count = V != 0 ? V : v_count;
    limb top = span[count];
    limb next = span[count - 1];
    const limb low = span[count - 2];

    // By the two leading limbs of v the estimate is almost always right, and never more than one too large.
    limb estimate;
    if (top == v[count - 1] && next == v[count - 2]) [[unlikely]]
        estimate = ~static_cast<limb>(0);
    else
        estimate = divide_three_by_two(top, next, low, v[count - 1], v[count - 2]);

    limb carry = 0;
    for (int i = 0; i < count; ++i) {
        const double_limb product = static_cast<double_limb>(estimate) * v[i] + carry;
        carry =
            static_cast<limb>(product >> 64) + __builtin_sub_overflow(span[i], static_cast<limb>(product), &span[i]);
    }
    const bool negative = span[count] < carry;
    span[count] -= carry;
    if (negative) [[unlikely]] {
        --estimate;
        carry = 0;
        for (int i = 0; i < count; ++i) {
            const double_limb sum = static_cast<double_limb>(span[i]) + v[i] + carry;
            span[i] = static_cast<limb>(sum);
            carry = static_cast<limb>(sum >> 64);
        }
        span[count] += carry;
    }
    return estimate;
}

template <int V>
inline void divide_spans(limb *quotient, limb *work, int u_count, const limb *v, int v_count) {
    for (int i = u_count - v_count; i >= 0; --i)
        quotient[i] = divide_span<V>(work + i, v, v_count);
}

// u / v: quotient to u_count - v_count + 1 limbs, remainder to v_count limbs. The top limb of v is not zero,
// u_count is at least v_count and at most MOST, and no two runs overlap.
template <int MOST>
inline void divide_limbs(limb *quotient, limb *remainder, const limb *u, int u_count, const limb *v, int v_count) {
    if (MOST == 1 || v_count == 1) {
        limb rest = 0;
        int i = u_count - 1;
        if (u[i] < v[0]) { // spares a division
            rest = u[i];
            quotient[i--] = 0;
        }
        for (; i >= 0; --i)
            quotient[i] = divide_two(rest, u[i], v[0], rest);
        remainder[0] = rest;
        return;
    }
    // Both are shifted until the divisor's top bit is set; `>> 1 >> (63 - shift)` is a shift by 64 - shift that
    // may be 64.
    const int shift = __builtin_clzll(v[v_count - 1]);
    const auto shifted = [shift](limb high, limb low) { return high << shift | low >> 1 >> (63 - shift); };
    if (MOST == 2 || v_count == 2) {
        const limb d1 = shifted(v[1], v[0]);
        const limb d0 = v[0] << shift;
        limb top = shifted(0, u[u_count - 1]);
        limb next = shifted(u[u_count - 1], u[u_count - 2]);
        for (int i = u_count - 2; i >= 0; --i)
            quotient[i] = divide_three_by_two(top, next, i != 0 ? shifted(u[i], u[i - 1]) : u[0] << shift, d1, d0);
        remainder[0] = next >> shift | top << 1 << (63 - shift);
        remainder[1] = top >> shift;
        return;
    }

    if constexpr (MOST > 2) {
        limb divisor[MOST];
        limb work[MOST + 1];
        for (int i = v_count - 1; i > 0; --i)
            divisor[i] = shifted(v[i], v[i - 1]);
        divisor[0] = v[0] << shift;
        work[u_count] = shifted(0, u[u_count - 1]);
        for (int i = u_count - 1; i > 0; --i)
            work[i] = shifted(u[i], u[i - 1]);
        work[0] = u[0] << shift;

        if (v_count == 3)
            divide_spans<3>(quotient, work, u_count, divisor, 3);
        else if constexpr (MOST > 3) {
            if (v_count == 4)
                divide_spans<4>(quotient, work, u_count, divisor, 4);
            else
                divide_spans<0>(quotient, work, u_count, divisor, v_count);
        }

        for (int i = 0; i < v_count - 1; ++i)
            remainder[i] = work[i] >> shift | work[i + 1] << 1 << (63 - shift);
        remainder[v_count - 1] = work[v_count - 1] >> shift;
    }
}

} // namespace dlx

#endif
