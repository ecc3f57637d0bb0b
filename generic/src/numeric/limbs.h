// Magnitudes as machine words: what exact arithmetic is done on, between the load of a value's big-endian
// bytes and the store of the result.
//
// A Magnitude is four 64-bit limbs, the lowest first: 32 bytes, which hold every value of up to 77 digits.
#ifndef DLX_NUMERIC_LIMBS_H
#define DLX_NUMERIC_LIMBS_H

#include "bytes/memory.h"

#include <dlxcomn/types.h>

#include <cstdint>
#include <utility>

namespace dlx {

using limb = std::uint64_t;
using double_limb = unsigned __int128;

constexpr int LIMB_BYTES = 8;
constexpr int MAGNITUDE_LIMBS = 4;
constexpr int MAGNITUDE_BYTES = MAGNITUDE_LIMBS * LIMB_BYTES;

// The largest power of ten in a limb: digits are taken in and put out nineteen at a time.
constexpr int LIMB_DIGITS = 19;
constexpr limb LIMB_POWER = 10'000'000'000'000'000'000u;

template <int N>
struct Limbs {
    limb at[N];
};
using Magnitude = Limbs<MAGNITUDE_LIMBS>;

// Runs `work` for 0 to N - 1. The indexes of a short run are constants, so that its limbs can live in registers:
// as a loop they would go through memory, written one by one and read back by twos, which stalls.
template <int N, class Work>
[[gnu::always_inline]] constexpr void each_limb(Work work) {
    if constexpr (N <= 2 * MAGNITUDE_LIMBS) {
        [&]<int... I>(std::integer_sequence<int, I...>) { (work(std::integral_constant<int, I>()), ...); }
        (std::make_integer_sequence<int, N>());
    } else {
        for (int i = 0; i < N; ++i)
            work(i);
    }
}

inline limb load_big_endian(const CS_BYTE *bytes) { return __builtin_bswap64(load<limb>(bytes)); }
inline void store_big_endian(CS_BYTE *bytes, limb value) { store(bytes, __builtin_bswap64(value)); }

// The low `count` (1 to 8) bytes of a limb, big-endian, without touching a byte around them: two accesses that
// overlap cover every count from four on, three single bytes the rest.
inline limb load_partial(const CS_BYTE *bytes, int count) {
    if (count >= 4) {
        const limb high = __builtin_bswap32(load<std::uint32_t>(bytes));
        const limb low = __builtin_bswap32(load<std::uint32_t>(bytes + count - 4));
        return high << (8 * (count - 4)) | low;
    }
    const int middle = count / 2;
    return static_cast<limb>(bytes[0]) << (8 * (count - 1)) |
           static_cast<limb>(bytes[middle]) << (8 * (count - 1 - middle)) | bytes[count - 1];
}
inline void store_partial(CS_BYTE *bytes, int count, limb value) {
    if (count >= 4) {
        store(bytes, __builtin_bswap32(static_cast<std::uint32_t>(value >> (8 * (count - 4)))));
        store(bytes + count - 4, __builtin_bswap32(static_cast<std::uint32_t>(value)));
        return;
    }
    const int middle = count / 2;
    bytes[0] = static_cast<CS_BYTE>(value >> (8 * (count - 1)));
    bytes[middle] = static_cast<CS_BYTE>(value >> (8 * (count - 1 - middle)));
    bytes[count - 1] = static_cast<CS_BYTE>(value);
}

// Reads `count` (0 to 8 * N) big-endian bytes.
template <int N>
inline Limbs<N> load_limbs(const CS_BYTE *bytes, int count) {
    Limbs<N> m = {};
    int i = 0;
    for (; count >= LIMB_BYTES; ++i, count -= LIMB_BYTES)
        m.at[i] = load_big_endian(bytes + count - LIMB_BYTES);
    if (count != 0)
        // A top limb below other bytes can be read whole and shifted down.
        m.at[i] = i != 0 ? load_big_endian(bytes) >> (8 * (LIMB_BYTES - count)) : load_partial(bytes, count);
    return m;
}
inline Magnitude load_magnitude(const CS_BYTE *bytes, int count) { return load_limbs<MAGNITUDE_LIMBS>(bytes, count); }

// Bytes that the number in `count` limbs needs: 0 for zero.
inline int significant_bytes(const limb *limbs, int count) {
    for (int i = count - 1; i >= 0; --i)
        if (limbs[i] != 0)
            return i * LIMB_BYTES + (71 - __builtin_clzll(limbs[i])) / 8;
    return 0;
}
template <int N>
inline int significant_bytes(const Limbs<N> &m) {
    return significant_bytes(m.at, N);
}

// Writes the low `count` (0 to 8 * N) bytes, big-endian. False when the dropped high bytes are not all zero.
template <int N>
inline bool store_limbs(const Limbs<N> &m, CS_BYTE *bytes, int count) {
    const int whole = count / LIMB_BYTES;
    const int rest = count % LIMB_BYTES;
    if (rest != 0)
        store_partial(bytes, rest, m.at[whole]);
    for (int i = 0; i < whole; ++i)
        store_big_endian(bytes + count - (i + 1) * LIMB_BYTES, m.at[i]);
    return significant_bytes(m) <= count;
}
inline bool store_magnitude(const Magnitude &m, CS_BYTE *bytes, int count) { return store_limbs(m, bytes, count); }

template <int N>
inline bool is_zero(const Limbs<N> &m) {
    limb any = 0;
    each_limb<N>([&](auto i) { any |= m.at[i]; });
    return any == 0;
}

// m * factor + addend, in place; the carry out of the top limb, so non-zero on overflow.
inline limb multiply_add(Magnitude &m, limb factor, limb addend) {
    limb carry = addend;
    for (limb &word : m.at) {
        const double_limb product = static_cast<double_limb>(word) * factor + carry;
        word = static_cast<limb>(product);
        carry = static_cast<limb>(product >> 64);
    }
    return carry;
}

// (high * 2^64 + low) / divisor, for a high below the divisor, so that the quotient is one limb.
inline limb divide_two(limb high, limb low, limb divisor, limb &remainder) {
#if defined(__x86_64__)
    // One instruction; the compiler would call a routine for a quotient of two limbs.
    limb quotient;
    __asm__("divq %4" : "=a"(quotient), "=d"(remainder) : "0"(low), "1"(high), "rm"(divisor) : "cc");
    return quotient;
#else
    const double_limb dividend = static_cast<double_limb>(high) << 64 | low;
    remainder = static_cast<limb>(dividend % divisor);
    return static_cast<limb>(dividend / divisor);
#endif
}

// m / divisor, in place; the remainder. The divisor is not zero.
inline limb divide_by_limb(Magnitude &m, limb divisor) {
    limb remainder = 0;
    for (int i = MAGNITUDE_LIMBS - 1; i >= 0; --i)
        m.at[i] = divide_two(remainder, m.at[i], divisor, remainder);
    return remainder;
}

} // namespace dlx

#endif
