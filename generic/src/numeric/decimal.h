// Magnitudes as decimal numbers: counts of digits, shifts of the point, and the text of a value.
#ifndef DLX_NUMERIC_DECIMAL_H
#define DLX_NUMERIC_DECIMAL_H

#include "numeric/record.h"

#include <bit>

namespace dlx {

constexpr bool is_precision(int precision) { return precision >= 1 && precision <= CS_MAX_PREC; }

// Lengths of values: the sign byte and 1 to 32 bytes of magnitude.
constexpr int MIN_VALUE_LENGTH = 2;
constexpr bool is_value_length(int length) { return length >= MIN_VALUE_LENGTH && length <= CS_MAX_NUMLEN; }

// The digits that a value of that many bytes always has room for.
inline int precision_of_length(int length) { return Com__Nume_Len_To_Prec[length - MIN_VALUE_LENGTH]; }

inline bool is_one_limb(const Magnitude &m) { return (m.at[1] | m.at[2] | m.at[3]) == 0; }

// Digits of the magnitude: 0 for zero, 78 at most.
inline int decimal_digits(const Magnitude &m) {
    const int top = significant_limbs(m) - 1;
    if (top < 0)
        return 0;
    // A number of so many bits has `least` digits or one more; 1233 / 4096 is just above log10(2).
    const int bits = 64 * top + std::bit_width(m.at[top]);
    const int least = bits * 1233 >> 12;
    return passes_precision(m, least) ? least + 1 : least;
}

// m * 10^places for places of 0 to 77, in place; false when it does not fit a value of `length` bytes.
inline bool shift_up(Magnitude &m, int places, int length) {
    return scale_up(m, places) && fits_bytes(m, length - 1);
}

// m / 10^places for places from 0 up, in place, cut.
inline void shift_down(Magnitude &m, int places) {
    for (; places > LIMB_DIGITS; places -= LIMB_DIGITS)
        divide_by_limb(m, LIMB_POWER);
    const limb power = small_power_of_ten(places);
    if (is_one_limb(m))
        m.at[0] /= power;
    else
        divide_by_limb(m, power);
}

// What a record of at most 33 bytes says.
struct Decimal {
    Magnitude magnitude;
    bool negative;
    int scale;

    explicit Decimal(const __CONSTANT &record)
        : magnitude(load_magnitude(record.value + 1, magnitude_bytes(record))), negative(is_negative(record)),
          scale(record.scale) {}
};

// ---- Text ------------------------------------------------------------------------------------------------------

// Every valid value fits but a negative one of scale 77, and so this is the room at which text is said not to fit.
constexpr int NUMERIC_TEXT_ROOM = 79;

// The characters of "-123.45": at least one digit before the point, exactly `scale` behind it. Zero has no sign.
constexpr int numeric_text_length(bool negative, int digits, int scale) {
    const int sign = negative && digits != 0 ? 1 : 0;
    const int before = digits > scale ? digits - scale : 1;
    return sign + before + (scale != 0 ? 1 + scale : 0);
}

// Writes the value at the end of `room` bytes; answers the index of its first character, or -1 with nothing written.
int put_numeric_text(const Decimal &value, char *dest, int room);

} // namespace dlx

#endif
