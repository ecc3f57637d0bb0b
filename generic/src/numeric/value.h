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
    for (int i = 0; i < N; ++i) {
        const int ahead = bytes - (i + 1) * LIMB_BYTES; // bytes above this limb
        m.at[i] = ahead > 0 ? load_big_endian(first + ahead) : ahead > -LIMB_BYTES ? top : 0;
    }
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
        for (int i = N - 2; i >= 0; --i)
            store_big_endian(first + bytes - (i + 1) * LIMB_BYTES, limbs[i]);
    }
}

// Runs `work` with the count of limbs (1 to 4) as a constant: the loops over limbs then are straight code.
template <class Work>
[[gnu::always_inline]] inline auto with_constant_limbs(int limbs, Work work) {
    switch (limbs) {
    case 1:
        return work(std::integral_constant<int, 1>());
    case 2:
        return work(std::integral_constant<int, 2>());
    case 3:
        return work(std::integral_constant<int, 3>());
    default:
        return work(std::integral_constant<int, 4>());
    }
}

} // namespace dlx

#endif
