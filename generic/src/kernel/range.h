// What a number becomes in an integer that may be too small for it: the value itself or the nearest bound.
//
// The bounds of the integers are those of their types. The 64-bit bounds of floats lie below them, at decimal
// figures that a float can hold, so that a value which passes is sure to fit, and they are met by the ceilings of the
// reverse conversions. Every comparison is made in double, which holds each bound and each float exactly.
#ifndef DLX_KERNEL_RANGE_H
#define DLX_KERNEL_RANGE_H

#include <dlxcomn/numeric.h>

#include <bit>
#include <concepts>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace dlx {

enum class Side { INSIDE, BELOW, ABOVE };

template <class To>
struct Fitted {
    To value;
    Side side;
};

// The core outcome below the range, which is not the same for every pair: into the unsigned types of 16 bits and more
// it is an underflow from everywhere; into the narrow types an underflow from 64 bits alone; else an overflow.
// Callers tell the two apart, so the pattern stays. Above the range it is always an overflow.
template <class From, class To>
inline constexpr int low_side_code = (std::unsigned_integral<To> && sizeof(To) > 1) ||
                                             (std::same_as<From, CS_BIGINT> && sizeof(To) <= 2)
                                         ? NUME_UNDERFLOW
                                         : NUME_OVERFLOW;

template <class From, class To>
constexpr int code_of_side(Side side) {
    return side == Side::INSIDE ? NUME_OK : side == Side::BELOW ? low_side_code<From, To> : NUME_OVERFLOW;
}

// ---- Integers -------------------------------------------------------------------------------------------------

template <std::integral To, std::integral From>
constexpr Fitted<To> fit(From value) {
    using Limits = std::numeric_limits<To>;
    if (std::cmp_less(value, Limits::min()))
        return {Limits::min(), Side::BELOW};
    if (std::cmp_greater(value, Limits::max()))
        return {Limits::max(), Side::ABOVE};
    return {static_cast<To>(value), Side::INSIDE};
}

// ---- Floats to integers ---------------------------------------------------------------------------------------

template <class From, class To>
struct FloatBounds {
    static constexpr To LOW = std::numeric_limits<To>::min();
    static constexpr To HIGH = std::numeric_limits<To>::max();
};
template <>
struct FloatBounds<CS_REAL, CS_BIGINT> {
    static constexpr CS_BIGINT LOW = -9223370000000000000;
    static constexpr CS_BIGINT HIGH = 9223370000000000000;
};
template <>
struct FloatBounds<CS_FLOAT, CS_BIGINT> {
    static constexpr CS_BIGINT LOW = -9223372036854769664;
    static constexpr CS_BIGINT HIGH = 9223372036854769664;
};
template <>
struct FloatBounds<CS_REAL, CS_UBIGINT> {
    static constexpr CS_UBIGINT LOW = 0;
    static constexpr CS_UBIGINT HIGH = 18446700000000000000u;
};
template <>
struct FloatBounds<CS_FLOAT, CS_UBIGINT> {
    static constexpr CS_UBIGINT LOW = 0;
    static constexpr CS_UBIGINT HIGH = 18446744073709500416u;
};

constexpr double TWO_TO_63 = 9223372036854775808.0;

// The processor's truncating conversions. They are defined for NaN, where the language's cast is not: x86-64 answers
// the smallest value of the register's width. Elsewhere a NaN is 0.
inline std::int32_t truncate_32(double value) {
#if defined(__SSE2__)
    return _mm_cvttsd_si32(_mm_set_sd(value));
#else
    return value == value ? static_cast<std::int32_t>(value) : 0;
#endif
}
inline std::int64_t truncate_64(double value) {
#if defined(__SSE2__)
    return _mm_cvttsd_si64(_mm_set_sd(value));
#else
    return value == value ? static_cast<std::int64_t>(value) : 0;
#endif
}

// A value within the bounds of To, or NaN.
template <std::integral To>
inline To truncate(double value) {
    if constexpr (std::same_as<To, CS_UBIGINT>) {
        // There is a conversion to signed integers only, so the upper half is moved down by 2^63. One less is put
        // back on purpose: the reverse conversion adds one.
        if (value >= TWO_TO_63)
            return static_cast<CS_UBIGINT>(std::numeric_limits<CS_BIGINT>::max()) +
                   static_cast<CS_UBIGINT>(truncate_64(value - TWO_TO_63));
        return static_cast<CS_UBIGINT>(truncate_64(value));
    } else if constexpr (sizeof(To) == 8 || std::same_as<To, CS_UINT>) {
        return static_cast<To>(truncate_64(value));
    } else {
        return static_cast<To>(truncate_32(value));
    }
}

// A NaN fails no comparison, so it counts as inside and is what truncate makes of it. A fraction beyond a bound is
// outside although truncation would bring it in: 255.5 and -0.5 do not fit one byte.
template <std::integral To, std::floating_point From>
inline Fitted<To> fit(From value) {
    using Bounds = FloatBounds<From, To>;
    const double wide = value;
    if (wide < static_cast<double>(Bounds::LOW))
        return {Bounds::LOW, Side::BELOW};
    if (wide > static_cast<double>(Bounds::HIGH))
        return {Bounds::HIGH, Side::ABOVE};
    return {truncate<To>(wide), Side::INSIDE};
}

// ---- To floats ------------------------------------------------------------------------------------------------

// A 64-bit integer above THRESHOLD becomes RESULT, so that rounding up does not carry it past the bounds above.
template <class From, class To>
struct FloatCeiling;
template <>
struct FloatCeiling<CS_BIGINT, CS_REAL> {
    static constexpr CS_BIGINT THRESHOLD = 9223369999999999999;
    static constexpr CS_REAL RESULT = std::bit_cast<CS_REAL>(0x5EFFFFFCu);
};
template <>
struct FloatCeiling<CS_BIGINT, CS_FLOAT> {
    static constexpr CS_BIGINT THRESHOLD = 9223372036854769663;
    static constexpr CS_FLOAT RESULT = std::bit_cast<CS_FLOAT>(0x43DFFFFFFFFFFFFAull);
};
template <>
struct FloatCeiling<CS_UBIGINT, CS_REAL> {
    static constexpr CS_UBIGINT THRESHOLD = 18446699999999999999u;
    static constexpr CS_REAL RESULT = std::bit_cast<CS_REAL>(0x5F7FFFD8u);
};
template <>
struct FloatCeiling<CS_UBIGINT, CS_FLOAT> {
    static constexpr CS_UBIGINT THRESHOLD = 18446744073709500415u;
    static constexpr CS_FLOAT RESULT = std::bit_cast<CS_FLOAT>(0x43EFFFFFFFFFFFE7ull);
};

// The upper half of the unsigned values goes through the signed conversion as well: 2^63 plus the float of what is
// left and one more. The added one is what callers have always seen. The sum is made in the float's own precision.
template <std::floating_point To, std::integral From>
constexpr To to_float(From value) {
    if constexpr (sizeof(From) == 8)
        if (value > FloatCeiling<From, To>::THRESHOLD)
            return FloatCeiling<From, To>::RESULT;
    if constexpr (std::same_as<From, CS_UBIGINT>) {
        constexpr CS_UBIGINT TOP_BIT = 1ull << 63;
        if (value >= TOP_BIT)
            return static_cast<To>(TWO_TO_63) + static_cast<To>(static_cast<CS_BIGINT>(value - TOP_BIT + 1));
        return static_cast<To>(static_cast<CS_BIGINT>(value));
    } else {
        return static_cast<To>(value);
    }
}

// A double as a single: beyond the largest single it becomes that one. NaN, and what is too small, are the
// processor's.
constexpr Fitted<CS_REAL> narrow(CS_FLOAT value) {
    constexpr CS_REAL LARGEST = std::numeric_limits<CS_REAL>::max();
    if (value > static_cast<CS_FLOAT>(LARGEST))
        return {LARGEST, Side::ABOVE};
    if (value < -static_cast<CS_FLOAT>(LARGEST))
        return {-LARGEST, Side::BELOW};
    return {static_cast<CS_REAL>(value), Side::INSIDE};
}

} // namespace dlx

#endif
