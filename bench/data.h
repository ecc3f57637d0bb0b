// The values that the contenders work on: the same in every run, and of mixed lengths, as columns of tables are.
#ifndef BENCH_DATA_H
#define BENCH_DATA_H

#include "contest.h"

#include <dlxcomn/dlxcomn.h>

#include <gmpxx.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace bench {

using Random = std::mt19937_64;

inline std::uint64_t below(Random &random, std::uint64_t bound) { return random() % bound; }

// ---- Integers and doubles -----------------------------------------------------------------------------------

// Every count of digits is as likely as every other, and so is either sign.
template <class T>
std::vector<T> mixed_integers(std::uint64_t seed) {
    Random random(seed);
    std::vector<T> values(VALUES);
    for (T &value : values) {
        const std::uint64_t digits = 1 + below(random, std::numeric_limits<T>::digits10);
        const std::uint64_t bound = static_cast<std::uint64_t>(std::pow(10.0L, digits));
        const T magnitude = static_cast<T>(bound / 10 + below(random, bound - bound / 10));
        value = random() % 2 == 0 ? magnitude : -magnitude;
    }
    return values;
}

// What calculations leave: all 53 bits in use, from thousandths to billions.
inline std::vector<double> everyday_doubles(std::uint64_t seed) {
    Random random(seed);
    std::uniform_real_distribution<double> exponent(-3, 9);
    std::uniform_real_distribution<double> fraction(1, 10);
    std::vector<double> values(VALUES);
    for (double &value : values) {
        value = fraction(random) * std::pow(10.0, std::floor(exponent(random)));
        if (random() % 2 == 0)
            value = -value;
    }
    return values;
}

// Any finite double: most have an exponent of three digits.
inline std::vector<double> any_doubles(std::uint64_t seed) {
    Random random(seed);
    std::vector<double> values(VALUES);
    for (double &value : values) {
        do
            value = std::bit_cast<double>(random());
        while (!std::isfinite(value));
    }
    return values;
}

// What people type: up to seven digits, none to three of them behind the point.
inline std::vector<double> short_doubles(std::uint64_t seed) {
    Random random(seed);
    std::vector<double> values(VALUES);
    for (double &value : values) {
        const double count = static_cast<double>(1 + below(random, 9'999'999));
        value = count / std::pow(10.0, static_cast<double>(below(random, 4)));
        if (random() % 2 == 0)
            value = -value;
    }
    return values;
}

// ---- Decimal numbers ----------------------------------------------------------------------------------------

inline mpz_class power_of_ten(int exponent) {
    mpz_class power;
    mpz_ui_pow_ui(power.get_mpz_t(), 10, static_cast<unsigned long>(exponent));
    return power;
}

// count * 10^-scale, kept without any of the contenders.
struct Decimal {
    mpz_class count;
    int scale = 0;

    std::string text() const {
        std::string digits = mpz_class(abs(count)).get_str();
        if (digits.size() <= static_cast<std::size_t>(scale))
            digits.insert(0, static_cast<std::size_t>(scale) + 1 - digits.size(), '0');
        if (scale != 0)
            digits.insert(digits.size() - static_cast<std::size_t>(scale), 1, '.');
        return sgn(count) < 0 ? '-' + digits : digits;
    }

    static Decimal from_text(std::string text) {
        Decimal result;
        if (const std::size_t point = text.find('.'); point != std::string::npos) {
            result.scale = static_cast<int>(text.size() - point - 1);
            text.erase(point, 1);
        }
        result.count = mpz_class(text, 10);
        return result;
    }
};

// |a - b|, in units of the last place of the one that has fewer places.
inline mpq_class distance(const Decimal &a, const Decimal &b) {
    const mpz_class difference = a.count * power_of_ten(b.scale) - b.count * power_of_ten(a.scale);
    mpq_class result(abs(difference), power_of_ten(a.scale < b.scale ? b.scale : a.scale));
    result.canonicalize();
    return result;
}
inline bool is_equal(const Decimal &a, const Decimal &b) { return distance(a, b) == 0; }
inline bool is_close(const Decimal &a, const Decimal &b) { return distance(a, b) <= 1; }

// Numbers of exactly that many digits. The first is 1 to 4, so that a sum of two has no digit more.
inline std::vector<Decimal> decimals(int digits, int scale, std::uint64_t seed) {
    Random random(seed);
    std::vector<Decimal> values(VALUES);
    for (Decimal &value : values) {
        std::string text(1, static_cast<char>('1' + below(random, 4)));
        while (text.size() < static_cast<std::size_t>(digits))
            text += static_cast<char>('0' + below(random, 10));
        value = {mpz_class(text, 10), scale};
        if (random() % 2 == 0)
            value.count = -value.count;
    }
    return values;
}

inline CS_NUMERIC to_numeric(const Decimal &value, int precision) {
    CS_NUMERIC result = {};
    result.precision = static_cast<CS_BYTE>(precision);
    result.scale = static_cast<CS_BYTE>(value.scale);
    const std::size_t length = static_cast<std::size_t>(comn_num_getlen(precision));
    const std::size_t bytes = (mpz_sizeinbase(value.count.get_mpz_t(), 2) + 7) / 8;
    mpz_export(result.array + length - bytes, nullptr, 1, 1, 1, 0, value.count.get_mpz_t());
    result.array[0] = sgn(value.count) < 0 ? 1 : 0;
    return result;
}

inline Decimal from_numeric(const CS_NUMERIC &value) {
    Decimal result = {{}, value.scale};
    const std::size_t length = static_cast<std::size_t>(comn_num_getlen(value.precision));
    mpz_import(result.count.get_mpz_t(), length - 1, 1, 1, 1, 0, value.array + 1);
    if (value.array[0] != 0)
        result.count = -result.count;
    return result;
}

// ---- Money --------------------------------------------------------------------------------------------------

inline CS_MONEY to_money(std::int64_t count) { return {static_cast<CS_INT>(count >> 32), static_cast<CS_UINT>(count)}; }
inline std::int64_t from_money(const CS_MONEY &money) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(static_cast<CS_UINT>(money.mnyhigh)) << 32 |
                                     money.mnylow);
}
inline Decimal decimal_of(const CS_MONEY &money) { return {mpz_class(from_money(money)), 4}; }

// Amounts of one digit up to `digits` digits, cents and fractions of cents included.
inline std::vector<CS_MONEY> amounts(int digits, std::uint64_t seed) {
    Random random(seed);
    std::vector<CS_MONEY> values(VALUES);
    for (CS_MONEY &value : values) {
        const double bound = std::pow(10.0, static_cast<double>(5 + below(random, static_cast<std::uint64_t>(digits))));
        const auto count = static_cast<std::int64_t>(10'000 + below(random, static_cast<std::uint64_t>(bound)));
        value = to_money(random() % 2 == 0 ? count : -count);
    }
    return values;
}

} // namespace bench

#endif
