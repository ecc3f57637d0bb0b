// A CS_NUMERIC to and from limbs. Its array has 33 bytes whatever the precision, so a value's first eight bytes
// can always be read whole, and the bytes that do not belong to it are shifted out. Nothing is written beyond the
// bytes that the precision uses.
#ifndef DLX_NUMERIC_VALUE_H
#define DLX_NUMERIC_VALUE_H

#include "numeric/arithmetic.h"

#include <type_traits>

namespace dlx {

inline bool is_valid(const CS_NUMERIC &value) {
    return static_cast<unsigned>(value.precision - 1) < CS_MAX_PREC && value.scale <= CS_MAX_SCALE;
}

// Limbs of the values of a precision: 1 to 4.
inline int limbs_of_precision(int precision) {
    return static_cast<int>(static_cast<unsigned>(BYTES_OF_PRECISION[precision] + LIMB_BYTES - 1) / LIMB_BYTES);
}

// Reads the `bytes` bytes of a magnitude, at most 8 * N.
template <int N>
inline Limbs<N> load_value(const CS_NUMERIC &value, int bytes) {
    const CS_BYTE *const first = value.array + 1;
    const limb top = load_big_endian(first) >> (-8 * bytes & 63);
    Limbs<N> m;
    each_limb<N>([&](auto i) {
        const int ahead = bytes - (i + 1) * LIMB_BYTES; // bytes above this limb
        m.at[i] = ahead > 0 ? load_big_endian(first + ahead) : ahead > -LIMB_BYTES ? top : 0;
    });
    return m;
}

// The same where the bytes take exactly N limbs: straight code.
template <int N>
inline Limbs<N> load_value_exactly(const CS_NUMERIC &value, int bytes) {
    const CS_BYTE *const first = value.array + 1;
    Limbs<N> m;
    m.at[N - 1] = load_big_endian(first) >> (-8 * bytes & 63);
    each_limb<N - 1>([&](auto i) { m.at[i] = load_big_endian(first + bytes - (i + 1) * LIMB_BYTES); });
    return m;
}

// Writes the low `bytes` bytes of a magnitude, more than 8 * (N - 1) and at most 8 * N, from the first N limbs.
template <int N>
inline void store_value(CS_NUMERIC &value, const limb *limbs, int bytes) {
    CS_BYTE *const first = value.array + 1;
    if constexpr (N == 1) {
        store_partial(first, bytes, limbs[0]);
    } else {
        // The first eight bytes are those of the top limb and as many of the next one as it lacks.
        const int missing = -8 * bytes & 63;
        store_big_endian(first, limbs[N - 1] << missing | limbs[N - 2] >> 1 >> (63 - missing));
        each_limb<N - 1>([&](auto i) { store_big_endian(first + bytes - (i + 1) * LIMB_BYTES, limbs[i]); });
    }
}

// Runs `work` with the count of limbs, FEWEST to MOST, as a constant: what it does to each limb is straight code.
template <int FEWEST = 1, int MOST = MAGNITUDE_LIMBS, class Work>
[[gnu::always_inline]] inline auto with_constant_limbs(int limbs, Work work) {
    if constexpr (FEWEST < MOST)
        if (limbs != FEWEST)
            return with_constant_limbs<FEWEST + 1, MOST>(limbs, work);
    return work(std::integral_constant<int, FEWEST>());
}

} // namespace dlx

#endif
