// The core's records as numbers in limbs.
#ifndef DLX_NUMERIC_RECORD_H
#define DLX_NUMERIC_RECORD_H

#include "diag/check.h"
#include "numeric/arithmetic.h"

#include <type_traits>

namespace dlx {

// A value has up to 33 bytes; work records that callers build on the stack may be longer. Beyond this no caller
// goes, and a longer length is taken for a broken record.
constexpr int MAX_RECORD_BYTES = 136;
constexpr int RECORD_LIMBS = MAX_RECORD_BYTES / LIMB_BYTES;

// A record that can be worked on: the report is made on the line of the function it was passed to.
#define COM_REQUIRE_RECORD(record, ...)                                                                                \
    do {                                                                                                               \
        COM_REQUIRE_PTR(record, __VA_ARGS__);                                                                          \
        COM_REQUIRE((record)->len >= 0 && (record)->len <= ::dlx::MAX_RECORD_BYTES, __VA_ARGS__);                      \
        if ((record)->len != 0)                                                                                        \
            COM_REQUIRE_PTR((record)->value, __VA_ARGS__);                                                             \
    } while (0)

// A record of no bytes, or of a sign alone, is zero.
inline int magnitude_bytes(const __CONSTANT &record) { return record.len > 1 ? record.len - 1 : 0; }
inline bool is_negative(const __CONSTANT &record) { return record.len != 0 && record.value[0] != 0; }

inline Room room_of(const __CONSTANT &record) { return {magnitude_bytes(record), record.prec}; }

template <int N>
inline Number<N> load_number(const __CONSTANT &record) {
    if (record.len <= 1) // there may be no value to point into
        return {{}, is_negative(record)};
    return {load_limbs<N>(record.value + 1, record.len - 1), record.value[0] != 0};
}

// Writes sign and low bytes. False when non-zero bytes were dropped.
template <int N>
inline bool store_number(const Number<N> &number, const __CONSTANT &record) {
    if (record.len == 0)
        return is_zero(number.magnitude);
    record.value[0] = number.negative;
    return store_limbs(number.magnitude, record.value + 1, record.len - 1);
}

// Runs `work` with the limbs that records of up to `length` bytes need: four for all that values are made of.
template <class Work>
inline auto with_limbs_for(int length, Work work) {
    if (length <= CS_MAX_NUMLEN) [[likely]]
        return work(std::integral_constant<int, MAGNITUDE_LIMBS>());
    return work(std::integral_constant<int, RECORD_LIMBS>());
}

} // namespace dlx

#endif
