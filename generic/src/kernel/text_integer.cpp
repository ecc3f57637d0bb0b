// Decimal text to 64-bit integers. These report through errno, as the C library's readers do.
#include "diag/check.h"

#include <dlxcomn/numeric.h>

#include <cerrno>
#include <limits>

namespace {

// Takes digits up to the first byte that is none, counting away from zero in the direction of `step` (1 or -1): so
// the smallest value of a signed type is reached without its magnitude, which has no room. The first byte must be a
// digit.
template <class Integer>
Integer read_digits(const char *p, Integer step, Integer bound) {
    if (static_cast<unsigned char>(*p - '0') > 9) {
        errno = EINVAL;
        return 0;
    }
    Integer value = 0;
    for (; static_cast<unsigned char>(*p - '0') <= 9; ++p) {
        const auto digit = static_cast<Integer>(static_cast<Integer>(*p - '0') * step);
        if (__builtin_mul_overflow(value, Integer{10}, &value) || __builtin_add_overflow(value, digit, &value)) {
            errno = ERANGE;
            return bound;
        }
    }
    return value;
}

} // namespace

CS_BIGINT dlxatoll(char *str) {
    COM_REQUIRE_PTR(str, 0);
    using Limits = std::numeric_limits<CS_BIGINT>;
    bool negative = *str == '-';
    str += negative;
    if (*str == '+') { // a plus sign behind the minus sign wins: "-+5" is 5
        negative = false;
        ++str;
    }
    return negative ? read_digits<CS_BIGINT>(str, -1, Limits::min()) : read_digits<CS_BIGINT>(str, 1, Limits::max());
}

CS_UBIGINT dlxatoull(char *str) {
    COM_REQUIRE_PTR(str, 0);
    if (*str == '-') {
        errno = ERANGE;
        return 0;
    }
    str += *str == '+';
    return read_digits<CS_UBIGINT>(str, 1, std::numeric_limits<CS_UBIGINT>::max());
}
