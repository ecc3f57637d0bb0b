// Integers as decimal text, digits two or eight at a time and not a byte besides.
//
// Up to ten digits are taken from a fixed-point fraction, value / 10^2n with 32 bits behind the point: what stands
// before the point are the leading digits, and each multiplication by 100 brings the next two there. The reciprocal is
// rounded up, and its error times the largest value stays below one unit of the last digit, so every digit is exact.
#ifndef DLX_KERNEL_INTEGER_TEXT_H
#define DLX_KERNEL_INTEGER_TEXT_H

#include "kernel/digits.h"

#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace dlx {

// The bytes that a value of type T takes at most: its digits, and a sign where it can have one.
template <std::integral T>
inline constexpr int integer_text_max = std::numeric_limits<T>::digits10 + 1 + std::is_signed_v<T>;

namespace integer_text {

constexpr std::uint32_t TEN_8 = 100000000;

// The two digits of each value below 100, the first one in the low byte.
constexpr std::array<std::uint16_t, 100> digit_pairs = [] {
    std::array<std::uint16_t, 100> result = {};
    for (unsigned n = 0; n < result.size(); ++n)
        result[n] = static_cast<std::uint16_t>(('0' + n / 10) | ('0' + n % 10) << 8);
    return result;
}();

// The smallest value of more than n digits; 0, which has one digit, for n = 0.
constexpr std::array<std::uint64_t, 20> smallest_beyond = [] {
    std::array<std::uint64_t, 20> result = {};
    std::uint64_t power = 1;
    for (std::size_t n = 1; n < result.size(); ++n)
        result[n] = power *= 10;
    return result;
}();

// The bits of a value tell its digits to within one, a comparison the rest.
constexpr int digit_count(std::uint64_t value) {
    const int least = std::bit_width(value | 1) * 1233 >> 12; // 1233 / 4096 is log10(2)
    return least + (value >= smallest_beyond[static_cast<std::size_t>(least)]);
}

inline char *write_pair(std::uint32_t value, char *out) {
    store(out, digit_pairs[value]);
    return out + 2;
}

// A value below 100 without a leading zero. Both stores of a single digit go to the one place.
inline char *write_leading(std::uint32_t value, char *out) {
    const unsigned second = value >= 10;
    const std::uint16_t pair = digit_pairs[value];
    out[0] = static_cast<char>(pair >> (8 * (1 - second)));
    out[second] = static_cast<char>(pair >> 8);
    return out + second + 1;
}

// The same where further digits follow: a single one leaves a byte behind it that they go over.
constexpr std::array<std::uint16_t, 100> leading_pairs = [] {
    std::array<std::uint16_t, 100> result = digit_pairs;
    for (unsigned n = 0; n < 10; ++n)
        result[n] = static_cast<std::uint16_t>('0' + n);
    return result;
}();

inline char *write_leading_of_more(std::uint32_t value, char *out) {
    store(out, leading_pairs[value]);
    return out + 1 + (value >= 10);
}

// All digits of a fraction that has PAIRS of them behind the point.
template <int PAIRS>
inline char *write_fraction(std::uint64_t fraction, char *out) {
    out = write_leading_of_more(static_cast<std::uint32_t>(fraction >> 32), out);
    for (int i = 0; i < PAIRS; ++i) {
        fraction = (fraction & 0xFFFFFFFF) * 100;
        out = write_pair(static_cast<std::uint32_t>(fraction >> 32), out);
    }
    return out;
}

// A value below 10^8.
inline char *write_short(std::uint64_t value, char *out) {
    if (value < 100)
        return write_leading(static_cast<std::uint32_t>(value), out);
    if (value < 10000) {
        const auto small = static_cast<std::uint32_t>(value);
        out = write_leading_of_more(small / 100, out);
        return write_pair(small % 100, out);
    }
    if (value < 1000000)
        return write_fraction<2>(value * 429497, out);            // 2^32 / 10^4
    return write_fraction<3>((value * 281474977 >> 16) + 1, out); // 2^48 / 10^6
}

inline char *write_eight(std::uint64_t value, char *out) {
    store(out, eight_digits(static_cast<std::uint32_t>(value)) | ZERO_DIGITS);
    return out + 8;
}

inline char *write_unsigned(std::uint32_t value, char *out) {
    if (value < TEN_8)
        return write_short(value, out);
    return write_fraction<4>((std::uint64_t(value) * 1441151881 >> 25) + 1, out); // 2^57 / 10^8
}

inline char *write_unsigned(std::uint64_t value, char *out) {
    if (value < TEN_8)
        return write_short(value, out);
    const std::uint64_t high = value / TEN_8;
    if (high < TEN_8)
        out = write_short(high, out);
    else
        out = write_eight(high % TEN_8, write_short(high / TEN_8, out));
    return write_eight(value % TEN_8, out);
}

} // namespace integer_text

// What an integer's digits are taken from. The narrow types are worked on in 32 bits.
template <std::integral T>
constexpr auto magnitude_of(T value) {
    using Magnitude = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
    const auto bits = static_cast<Magnitude>(value);
    return value < 0 ? Magnitude(0) - bits : bits;
}

// The bytes that write_integer will write.
template <std::integral T>
constexpr int integer_text_length(T value) {
    return integer_text::digit_count(magnitude_of(value)) + (value < 0);
}

// Writes an integer as "%ld" and "%lu" do, without a NUL; answers the end of the text. The bytes behind it stay as
// they were.
template <std::integral T>
inline char *write_integer(T value, char *out) {
    if constexpr (std::is_signed_v<T>) {
        *out = '-'; // a digit goes over it where there is no sign: cheaper than a branch that random signs mislead
        out += value < 0;
    }
    return integer_text::write_unsigned(magnitude_of(value), out);
}

} // namespace dlx

#endif
