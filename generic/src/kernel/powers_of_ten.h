// The powers of ten from 10^-323 to 10^340 to 128 significant bits, built at compile time.
//
// An entry is the truncated significand: 10^n = (high * 2^64 + low + d) * 2^(binary_exponent(n) - 127) with the
// top bit of high set and 0 <= d < 1. From 10^0 to 10^55 d is zero.
#ifndef DLX_KERNEL_POWERS_OF_TEN_H
#define DLX_KERNEL_POWERS_OF_TEN_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace dlx {

using Wide = unsigned __int128;

struct PowerOfTen {
    std::uint64_t high;
    std::uint64_t low;
};

// The least one that a double can be as large as, and the greatest one that scales a double to 17 digits.
constexpr int LEAST_POWER = -323;
constexpr int GREATEST_POWER = 340;

// floor(log2(10^n)) and floor(log10(2^n)), for every n that doubles come with.
constexpr int binary_exponent(int n) { return (n * 217706) >> 16; }
constexpr int decimal_exponent(int n) { return (n * 78913) >> 18; }

namespace power_maker {

// A natural number in limbs, least first, wide enough for 5^340 and for 2^896.
constexpr int LIMBS = 15;

struct Natural {
    std::uint64_t limb[LIMBS] = {};
    int top = 0; // the highest limb that is not zero

    constexpr void multiply_by_5() {
        std::uint64_t carry = 0;
        for (int i = 0; i <= top; ++i) {
            const Wide product = Wide(limb[i]) * 5 + carry;
            limb[i] = static_cast<std::uint64_t>(product);
            carry = static_cast<std::uint64_t>(product >> 64);
        }
        if (carry != 0)
            limb[++top] = carry;
    }
    constexpr void divide_by_5() {
        std::uint64_t rest = 0;
        for (int i = top; i >= 0; --i) {
            const Wide dividend = Wide(rest) << 64 | limb[i];
            limb[i] = static_cast<std::uint64_t>(dividend / 5);
            rest = static_cast<std::uint64_t>(dividend % 5);
        }
        if (limb[top] == 0)
            --top;
    }
    constexpr int bits() const { return 64 * top + std::bit_width(limb[top]); }
    constexpr std::uint64_t limb_at(int i) const { return i < 0 ? 0 : limb[i]; }
    constexpr PowerOfTen top_bits() const {
        const int shift = std::countl_zero(limb[top]);
        const Wide upper = Wide(limb[top]) << 64 | limb_at(top - 1);
        const Wide lower = Wide(limb_at(top - 1)) << 64 | limb_at(top - 2);
        return {static_cast<std::uint64_t>((upper << shift) >> 64), static_cast<std::uint64_t>((lower << shift) >> 64)};
    }
};

using Table = std::array<PowerOfTen, GREATEST_POWER - LEAST_POWER + 1>;

struct Made {
    Table table = {};
    bool exponents_agree = true; // with binary_exponent
};

// A power of ten is a power of five but for the binary exponent. Dividing 2^896 again and again drops nothing that
// counts: the floor of a floor is the floor, and 2^896 / 5^323 still has more than 128 bits.
constexpr Made make() {
    Made made;
    Natural up;
    up.limb[0] = 1;
    for (int n = 0; n <= GREATEST_POWER; ++n) {
        made.table[static_cast<std::size_t>(n - LEAST_POWER)] = up.top_bits();
        made.exponents_agree = made.exponents_agree && binary_exponent(n) == up.bits() - 1 + n;
        up.multiply_by_5();
    }
    constexpr int START = 64 * (LIMBS - 1);
    Natural down;
    down.limb[LIMBS - 1] = 1;
    down.top = LIMBS - 1;
    for (int n = -1; n >= LEAST_POWER; --n) {
        down.divide_by_5();
        made.table[static_cast<std::size_t>(n - LEAST_POWER)] = down.top_bits();
        made.exponents_agree = made.exponents_agree && binary_exponent(n) == down.bits() - 1 - START + n;
    }
    return made;
}

inline constexpr Made made = make();
static_assert(made.exponents_agree, "binary_exponent holds for the whole table");

} // namespace power_maker

inline constexpr power_maker::Table powers_of_ten = power_maker::made.table;

constexpr const PowerOfTen &power_of_ten(int n) { return powers_of_ten[static_cast<std::size_t>(n - LEAST_POWER)]; }

} // namespace dlx

#endif
