// Magnitudes as machine words: what exact arithmetic is done on, between the load of a value's big-endian
// bytes and the store of the result.
//
// A Magnitude is four 64-bit limbs, the lowest first: 32 bytes, which hold every value of up to 77 digits.
#ifndef DLX_NUMERIC_LIMBS_H
#define DLX_NUMERIC_LIMBS_H

#include "bytes/memory.h"

#include <dlxcomn/types.h>

#include <cstdint>

namespace dlx {

using limb = std::uint64_t;
using double_limb = unsigned __int128;

constexpr int LIMB_BYTES = 8;
constexpr int MAGNITUDE_LIMBS = 4;
constexpr int MAGNITUDE_BYTES = MAGNITUDE_LIMBS * LIMB_BYTES;

// The largest power of ten in a limb: digits are taken in and put out nineteen at a time.
constexpr int LIMB_DIGITS = 19;
constexpr limb LIMB_POWER = 10'000'000'000'000'000'000u;

struct Magnitude {
    limb at[MAGNITUDE_LIMBS];
};

inline limb load_big_endian(const CS_BYTE *bytes) { return __builtin_bswap64(load<limb>(bytes)); }
inline void store_big_endian(CS_BYTE *bytes, limb value) { store(bytes, __builtin_bswap64(value)); }

// The low `count` (1 to 8) bytes of a limb, big-endian, without touching a byte around them.
inline limb load_partial(const CS_BYTE *bytes, int count) {
    limb value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | bytes[i];
    return value;
}
inline void store_partial(CS_BYTE *bytes, int count, limb value) {
    for (int i = count - 1; i >= 0; --i, value >>= 8)
        bytes[i] = static_cast<CS_BYTE>(value);
}

// Reads `count` (0 to 32) big-endian bytes.
inline Magnitude load_magnitude(const CS_BYTE *bytes, int count) {
    Magnitude m = {};
    int i = 0;
    for (; count >= LIMB_BYTES; ++i, count -= LIMB_BYTES)
        m.at[i] = load_big_endian(bytes + count - LIMB_BYTES);
    if (count != 0)
        // A top limb below other bytes can be read whole and shifted down.
        m.at[i] = i != 0 ? load_big_endian(bytes) >> (8 * (LIMB_BYTES - count)) : load_partial(bytes, count);
    return m;
}

// Bytes that a magnitude needs: 0 for zero.
inline int significant_bytes(const Magnitude &m) {
    for (int i = MAGNITUDE_LIMBS - 1; i >= 0; --i)
        if (m.at[i] != 0)
            return i * LIMB_BYTES + (71 - __builtin_clzll(m.at[i])) / 8;
    return 0;
}

// Writes the low `count` (0 to 32) bytes, big-endian. False when the dropped high bytes are not all zero.
inline bool store_magnitude(const Magnitude &m, CS_BYTE *bytes, int count) {
    const int whole = count / LIMB_BYTES;
    const int rest = count % LIMB_BYTES;
    for (int i = 0; i < whole; ++i)
        store_big_endian(bytes + count - (i + 1) * LIMB_BYTES, m.at[i]);
    if (rest != 0)
        store_partial(bytes, rest, m.at[whole]);
    return significant_bytes(m) <= count;
}

inline bool is_zero(const Magnitude &m) { return (m.at[0] | m.at[1] | m.at[2] | m.at[3]) == 0; }

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
