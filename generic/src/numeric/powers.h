// Powers of ten as ready limbs: 10^0 to 10^77, the largest that any rescale applies in one step, which is also
// the largest that fits a magnitude.
#ifndef DLX_NUMERIC_POWERS_H
#define DLX_NUMERIC_POWERS_H

#include "numeric/limbs.h"

#include <dlxcomn/numeric.h>

namespace dlx {

struct PowersOfTen {
    Magnitude power[CS_MAX_PREC + 1];
    constexpr const Magnitude &operator[](int exponent) const { return power[exponent]; }
};

constexpr PowersOfTen make_powers_of_ten() {
    PowersOfTen powers = {};
    powers.power[0].at[0] = 1;
    for (int exponent = 1; exponent <= CS_MAX_PREC; ++exponent) {
        limb carry = 0;
        for (int i = 0; i < MAGNITUDE_LIMBS; ++i) {
            const double_limb product = static_cast<double_limb>(powers.power[exponent - 1].at[i]) * 10 + carry;
            powers.power[exponent].at[i] = static_cast<limb>(product);
            carry = static_cast<limb>(product >> 64);
        }
    }
    return powers;
}

inline constexpr PowersOfTen POWERS_OF_TEN = make_powers_of_ten();

// 10^0 to 10^19, the powers that are one limb.
constexpr limb small_power_of_ten(int exponent) { return POWERS_OF_TEN[exponent].at[0]; }

// Magnitude bytes of each precision: those of 10^p - 1, and one for p = 0. A power above one is no power of 256,
// so it takes as many bytes as the value below it.
struct PrecisionBytes {
    unsigned char bytes[CS_MAX_PREC + 1];
    constexpr int operator[](int precision) const { return bytes[precision]; }
};

constexpr PrecisionBytes make_precision_bytes() {
    PrecisionBytes table = {};
    for (int precision = 0; precision <= CS_MAX_PREC; ++precision) {
        const Magnitude &power = POWERS_OF_TEN[precision];
        int bytes = MAGNITUDE_BYTES;
        while ((power.at[(bytes - 1) / LIMB_BYTES] >> (8 * ((bytes - 1) % LIMB_BYTES)) & 0xFF) == 0)
            --bytes;
        table.bytes[precision] = static_cast<unsigned char>(bytes);
    }
    return table;
}

inline constexpr PrecisionBytes BYTES_OF_PRECISION = make_precision_bytes();

// The largest exponent whose power is below 2^(64 * limbs), so that larger ones are above every such number.
constexpr int largest_exponent_in(int limbs) {
    int exponent = CS_MAX_PREC;
    while (BYTES_OF_PRECISION[exponent] > limbs * LIMB_BYTES)
        --exponent;
    return exponent;
}

} // namespace dlx

#endif
