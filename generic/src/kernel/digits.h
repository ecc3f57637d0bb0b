// Decimal digits of integers as bytes: the step that all number text is made of.
//
// Eight digits are one 64-bit word whose lowest byte is the first digit, so that storing the word writes them in
// reading order.
#ifndef DLX_KERNEL_DIGITS_H
#define DLX_KERNEL_DIGITS_H

#include "bytes/memory.h"

#include <bit>
#include <cstdint>

namespace dlx {

static_assert(std::endian::native == std::endian::little, "a word of digits is stored lowest byte first");

constexpr std::uint64_t ZERO_DIGITS = 0x3030303030303030; // "00000000"

// The digits of a value below 10^8 as bytes 0 to 9. The halves, then the quarters, then the single digits are parted
// side by side in one word; the multipliers are 1/100 and 1/10, exact for numerators of four and of two digits.
constexpr std::uint64_t eight_digits(std::uint32_t value) {
    const std::uint64_t high = value / 10000;
    const std::uint64_t halves = high | static_cast<std::uint64_t>(value - high * 10000) << 32;
    const std::uint64_t hundreds = (halves * 10486 >> 20) & 0x0000007F0000007F;
    const std::uint64_t pairs = hundreds | (halves - hundreds * 100) << 16;
    const std::uint64_t tens = (pairs * 103 >> 10) & 0x000F000F000F000F;
    return tens | (pairs - tens * 10) << 8;
}

// How many of the eight digits stand before the zeros that end them: 0 to 8.
constexpr int without_trailing_zeros(std::uint64_t digits) { return 8 - std::countl_zero(digits) / 8; }

// All eight bytes of a word as it was read from text are digits.
constexpr bool are_eight_digits(std::uint64_t text) {
    constexpr std::uint64_t TOP_BITS = 0x8080808080808080;
    // Adding takes what is above "9" to the top bit, subtracting what is below "0"; what is so far up that its sum
    // loses the bit again keeps it in the difference. Carries and borrows come from such bytes only.
    return (((text + (TOP_BITS - ZERO_DIGITS - 0x0A0A0A0A0A0A0A0A)) | (text - ZERO_DIGITS)) & TOP_BITS) == 0;
}

// The value of eight digits as they were read: neighbours are joined to pairs, pairs to fours, fours to the number.
constexpr std::uint32_t value_of_eight_digits(std::uint64_t text) {
    text = (text & 0x0F0F0F0F0F0F0F0F) * (1 + (10u << 8)) >> 8;
    text = (text & 0x00FF00FF00FF00FF) * (1 + (100u << 16)) >> 16;
    return static_cast<std::uint32_t>((text & 0x0000FFFF0000FFFF) * (1 + (10000ull << 32)) >> 32);
}

} // namespace dlx

#endif
