// Numerics in limbs together with their shape (precision and scale), and a numeric brought to another shape.
#ifndef DLX_NUMERIC_RESCALE_H
#define DLX_NUMERIC_RESCALE_H

#include "numeric/value.h"

#include <dlxcomn/numeric.h>

namespace dlx {

struct Shape {
    int precision;
    int scale;
};

inline Room room_of(const Shape &shape) { return {BYTES_OF_PRECISION[shape.precision], shape.precision}; }

// A value whose bytes N limbs hold.
template <int N>
inline Number<N> load_number(const CS_NUMERIC &numeric) {
    return {load_value<N>(numeric, BYTES_OF_PRECISION[numeric.precision]), numeric.array[0] != 0};
}

// Writes the bytes that the shape uses, and no other. FEWEST to N limbs hold the shape's values.
template <int FEWEST, int N>
inline void write(CS_NUMERIC &numeric, const Shape &shape, const Number<N> &number) {
    const int bytes = BYTES_OF_PRECISION[shape.precision];
    numeric.precision = static_cast<CS_BYTE>(shape.precision);
    numeric.scale = static_cast<CS_BYTE>(shape.scale);
    numeric.array[0] = number.negative;
    with_constant_limbs<FEWEST, std::min(N, MAGNITUDE_LIMBS)>(limbs_of_precision(shape.precision), [&](auto limbs) {
        store_value<limbs>(numeric, number.magnitude.at, bytes);
    });
}

// Brings a value from `from` to `to`: it must fit to's bytes as it stands, then after the rescale, and to's digits
// at last. `number` is left as the result's bytes are to be, after a failure too.
template <int N>
inline CS_RETCODE reshape(Number<N> &number, const Shape &from, const Shape &to) {
    const Room room = room_of(to);
    if (from.precision > to.precision && !fits_bytes(number.magnitude, room.bytes))
        return CS_EOVERFLOW;
    // Both scales are at most 77, so no rescale is too wide.
    switch (rescale(number, room.bytes + 1, to.scale - from.scale, room)) {
    case NUME_OVERFLOW:
        return CS_EOVERFLOW;
    case NUME_TRUNCATED:
        return CS_ETRUNCATED;
    default:
        return passes_precision(number.magnitude, to.precision) ? CS_EOVERFLOW : CS_SUCCEED;
    }
}

// Writes `source` to `dest` at a precision of 1 to 77 and a scale of 0 to 77. `source` is valid, and `dest` may
// be `source`. Always writes dest's precision and scale.
//
// CS_EOVERFLOW when the value does not fit: its bytes must fit those of the new precision as they stand, before
// the scale changes, so a value that only a smaller scale would make room for fails. CS_ETRUNCATED when non-zero
// digits were cut; the cut value is then in `dest`. Else CS_SUCCEED.
inline CS_RETCODE numeric_to_numeric(const CS_NUMERIC &source, CS_NUMERIC &dest, CS_INT precision, CS_INT scale) {
    const Shape from = {source.precision, source.scale};
    const Shape to = {precision, scale};
    const CS_BYTE sign = source.array[0];
    Number<MAGNITUDE_LIMBS> number = load_number<MAGNITUDE_LIMBS>(source);
    const CS_RETCODE status = reshape(number, from, to);
    write<1>(dest, to, number);
    if (from.scale == to.scale)
        dest.array[0] = sign; // only a rescale makes a sign anew
    return status;
}

} // namespace dlx

#endif
