// Doubles as decimal digits, and as the text that printf's "%.17g" writes in the C locale.
//
// A double has at most 53 significant bits, so its product with a power of ten kept to 128 bits is known to within
// two units of the product's upper 128 bits. Seventeen digits take the top 57 of these; the bits below decide the
// rounding. Where they lie so close to one half that the error of the product could turn it (in practice the exact
// ties), the digits come from std::to_chars, which works with exact integers.
#ifndef DLX_KERNEL_FLOAT_TEXT_H
#define DLX_KERNEL_FLOAT_TEXT_H

#include "kernel/digits.h"
#include "kernel/powers_of_ten.h"

#include <charconv>
#include <cstdint>
#include <cstring>

namespace dlx {

// digits * 10^(exponent - 16), digits having exactly 17 places: the value's decimal form is d.ddd...e(exponent).
struct Decimal17 {
    std::uint64_t digits;
    int exponent;
};

namespace float_text {

constexpr std::uint64_t TEN_16 = 10000000000000000;
constexpr int MANTISSA_BITS = 52;
constexpr int EXPONENT_BIAS = 1023;
constexpr std::uint64_t HIDDEN_BIT = 1ull << MANTISSA_BITS;
constexpr std::uint64_t SIGN_BIT = 1ull << 63;
constexpr std::uint64_t INFINITY_BITS = 0x7FF0000000000000;

[[gnu::cold, gnu::noinline]] inline Decimal17 exact_decimal(double magnitude) {
    char text[32]; // d.dddddddddddddddde-ddd
    const auto end = std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific, 16).ptr;
    Decimal17 result = {static_cast<std::uint64_t>(text[0] - '0'), 0};
    const char *p = text + 2;
    for (; *p != 'e'; ++p)
        result.digits = result.digits * 10 + static_cast<std::uint64_t>(*p - '0');
    std::from_chars(p[1] == '+' ? p + 2 : p + 1, end, result.exponent);
    return result;
}

} // namespace float_text

// The 17 digits of a finite double above zero, rounded to nearest and exact ties to even.
inline Decimal17 to_decimal_17(double magnitude) {
    using namespace float_text;
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    // magnitude = mantissa * 2^(exponent - 63), the mantissa with its top bit set.
    std::uint64_t mantissa = (bits | HIDDEN_BIT) << (63 - MANTISSA_BITS);
    int exponent = static_cast<int>(bits >> MANTISSA_BITS) - EXPONENT_BIAS;
    if (exponent == -EXPONENT_BIAS) [[unlikely]] { // denormal
        const int zeros = std::countl_zero(bits);
        mantissa = bits << zeros;
        exponent = 1 - EXPONENT_BIAS + (63 - MANTISSA_BITS) - zeros;
    }

    // The decimal exponent. A mantissa that agrees with the next power of ten to 64 bits may lie below it: its
    // digits then round up to that power all the same.
    int decimal = decimal_exponent(exponent);
    decimal += binary_exponent(decimal + 1) == exponent && mantissa >= power_of_ten(decimal + 1).high;

    const int scale = 16 - decimal;
    const PowerOfTen &power = power_of_ten(scale);
    const Wide upper = Wide(mantissa) * power.high + static_cast<std::uint64_t>(Wide(mantissa) * power.low >> 64);
    const auto high = static_cast<std::uint64_t>(upper >> 64);
    const auto low = static_cast<std::uint64_t>(upper);

    // The point stands `fraction` bits (6 to 10) above the lower end of `high`. The product lies in
    // [upper, upper + 2).
    const int fraction = 62 - exponent - binary_exponent(scale);
    const std::uint64_t half = 1ull << (fraction - 1);
    const std::uint64_t rest = high & (2 * half - 1);
    if ((rest == half && low == 0) || (rest == half - 1 && low >= ~1ull)) [[unlikely]]
        return exact_decimal(magnitude);
    const std::uint64_t digits = (high + half) >> fraction;
    if (digits == 10 * TEN_16) [[unlikely]]
        return {TEN_16, decimal + 1};
    return {digits, decimal};
}

// Where a text ends, and whether it has neither "." nor "e": an integer below 10^17, an infinity or a NaN.
struct DoubleText {
    char *end;
    bool whole;
};

namespace float_text {

// The seventeen digits as bytes: the first one, and the sixteen behind it of which `count` precede trailing zeros.
struct DecimalBytes {
    char first;
    Wide rest;
    int count;
};

inline DecimalBytes to_bytes(std::uint64_t digits) {
    constexpr std::uint64_t TEN_8 = 100000000;
    const std::uint64_t first = digits / TEN_16;
    const std::uint64_t rest = digits - first * TEN_16;
    const std::uint64_t upper = eight_digits(static_cast<std::uint32_t>(rest / TEN_8));
    const std::uint64_t lower = eight_digits(static_cast<std::uint32_t>(rest % TEN_8));
    return {static_cast<char>('0' + first), Wide(lower | ZERO_DIGITS) << 64 | (upper | ZERO_DIGITS),
            lower != 0 ? 8 + without_trailing_zeros(lower) : without_trailing_zeros(upper)};
}

// 123.45: `exponent` (0 to 16) digits follow the first one before the point.
inline DoubleText write_fixed(const DecimalBytes &decimal, int exponent, char *out) {
    out[0] = decimal.first;
    store(out + 1, decimal.rest);
    if (decimal.count <= exponent)
        return {out + exponent + 1, true};
    // The digits behind the point move up by one; exponent is below count, so below 16.
    const Wide before_point = (Wide(1) << (8 * exponent)) - 1;
    store(out + 2, decimal.rest);
    store(out + 1, (decimal.rest & before_point) | (decimal.rest << 8 & ~before_point));
    out[exponent + 1] = '.';
    return {out + decimal.count + 2, false};
}

// 0.0012345: the exponent is -1 to -4.
inline DoubleText write_small(const DecimalBytes &decimal, int exponent, char *out) {
    std::memcpy(out, "0.000", 5);
    out += 1 - exponent;
    *out = decimal.first;
    store(out + 1, decimal.rest);
    return {out + decimal.count + 1, false};
}

// 1.2345e+67
inline DoubleText write_scientific(const DecimalBytes &decimal, int exponent, char *out) {
    out[0] = decimal.first;
    out[1] = '.';
    store(out + 2, decimal.rest);
    out += decimal.count != 0 ? decimal.count + 2 : 1;
    out[0] = 'e';
    out[1] = exponent < 0 ? '-' : '+';
    out += 2;
    auto power = static_cast<unsigned>(exponent < 0 ? -exponent : exponent);
    if (power >= 100) {
        *out++ = static_cast<char>('0' + power / 100);
        power %= 100;
    }
    out[0] = static_cast<char>('0' + power / 10);
    out[1] = static_cast<char>('0' + power % 10);
    return {out + 2, false};
}

} // namespace float_text

// The room that write_double needs. Its text has 24 bytes at most; it may write the rest.
constexpr int DOUBLE_TEXT_ROOM = 32;

// Writes what snprintf writes for "%.17g" in the C locale, without a NUL: fixed or exponent form, no trailing zeros,
// "inf" and "nan" with their sign.
inline DoubleText write_double(double value, char *out) {
    using namespace float_text;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const std::uint64_t magnitude = bits & ~SIGN_BIT;
    *out = '-';
    out += bits >> 63;
    if (magnitude == 0) {
        *out = '0';
        return {out + 1, true};
    }
    if (magnitude >= INFINITY_BITS) [[unlikely]] {
        std::memcpy(out, magnitude == INFINITY_BITS ? "inf" : "nan", 3);
        return {out + 3, true};
    }
    const auto [digits, exponent] = to_decimal_17(std::bit_cast<double>(magnitude));
    const DecimalBytes decimal = to_bytes(digits);
    if (exponent >= 17 || exponent < -4)
        return write_scientific(decimal, exponent, out);
    return exponent >= 0 ? write_fixed(decimal, exponent, out) : write_small(decimal, exponent, out);
}

// The same, answering the length: at most 24, in 32 bytes of room.
inline int format_double_17g(double value, char *out) { return static_cast<int>(write_double(value, out).end - out); }

// A float as conversions to text show it: "%.17g" without the zero before a leading point, and with ".0" where
// neither a point nor an exponent shows that it is a float. So ".5" but "-0.5", "5.0", "1e+20", "inf.0". Minus zero
// is "0.0".
class FloatText {
public:
    explicit FloatText(double value) {
        const DoubleText text = write_double(value == 0 ? 0.0 : value, room_);
        char *end = text.end;
        if (text.whole) {
            end[0] = '.';
            end[1] = '0';
            end += 2;
        }
        start_ = !text.whole && room_[0] == '0'; // only "0." begins so
        length_ = static_cast<int>(end - room_) - start_;
    }

    const char *data() const { return room_ + start_; }
    int length() const { return length_; }

private:
    char room_[DOUBLE_TEXT_ROOM];
    int start_;
    int length_;
};

} // namespace dlx

#endif
