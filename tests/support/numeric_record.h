// Exact numerics as GMP integers, for tests: a value is a signed count of last places beside its scale.
#ifndef TESTS_SUPPORT_NUMERIC_RECORD_H
#define TESTS_SUPPORT_NUMERIC_RECORD_H

#include <dlxcomn/dlxcomn.h>

#include <gmpxx.h>

#include <random>
#include <string>
#include <vector>

namespace support {

inline mpz_class power_of(unsigned base, int exponent) {
    mpz_class result;
    mpz_ui_pow_ui(result.get_mpz_t(), base, static_cast<unsigned long>(exponent));
    return result;
}

inline mpz_class big(const std::string &digits) { return mpz_class(digits); }
inline mpz_class big(CS_BIGINT value) { return mpz_class(std::to_string(value)); }
inline mpz_class big(CS_UBIGINT value) { return mpz_class(std::to_string(value)); }

// Bytes of a value with that many digits, sign byte included.
inline int length_of_precision(int precision) {
    static const auto lengths = [] {
        std::vector<int> result;
        for (int p = 0, bytes = 1; p <= CS_MAX_PREC; ++p) {
            while (power_of(256, bytes) < power_of(10, p))
                ++bytes;
            result.push_back(bytes + 1);
        }
        return result;
    }();
    return lengths.at(static_cast<size_t>(precision));
}
// The digits that a value of that many bytes always has room for.
inline int precision_of_length(int length) {
    int p = CS_MAX_PREC;
    while (length_of_precision(p) > length)
        --p;
    return p;
}

inline void put_value(CS_BYTE *bytes, int length, const mpz_class &value) {
    mpz_class rest = abs(value);
    for (int i = length - 1; i > 0; --i, rest /= 256)
        bytes[i] = static_cast<CS_BYTE>(mpz_class(rest % 256).get_ui());
    bytes[0] = value < 0 ? 1 : 0;
}

inline mpz_class magnitude_of(const CS_BYTE *bytes, int length) {
    mpz_class magnitude;
    mpz_import(magnitude.get_mpz_t(), static_cast<size_t>(length) - 1, 1, 1, 1, 0, bytes + 1);
    return magnitude;
}

// "-12", and "-0" for minus zero.
inline std::string value_text(const CS_BYTE *bytes, int length) {
    return std::string(bytes[0] != 0 ? "-" : "").append(magnitude_of(bytes, length).get_str());
}

// A record of `length` bytes with the given value.
struct Record {
    std::vector<CS_BYTE> bytes;
    __CONSTANT constant = {};

    Record(const mpz_class &value, int scale, int length = CS_MAX_NUMLEN) : bytes(static_cast<size_t>(length)) {
        put_value(bytes.data(), length, value);
        constant.len = length;
        constant.prec = CS_MAX_PREC;
        constant.scale = static_cast<CS_BYTE>(scale);
        constant.value = bytes.data();
    }
    __CONSTANT *operator&() { return &constant; }
};

inline CS_NUMERIC numeric_of(const mpz_class &value, int precision, int scale) {
    CS_NUMERIC numeric;
    std::fill(std::begin(numeric.array), std::end(numeric.array), CS_BYTE{0xCC}); // has no meaning past the value
    numeric.precision = static_cast<CS_BYTE>(precision);
    numeric.scale = static_cast<CS_BYTE>(scale);
    put_value(numeric.array, length_of_precision(precision), value);
    return numeric;
}

// The value at a scale as plain decimal text: at least one digit before the point.
inline std::string decimal_text(const mpz_class &value, int scale) {
    std::string digits = mpz_class(abs(value)).get_str();
    if (static_cast<int>(digits.size()) <= scale)
        digits.insert(0, static_cast<size_t>(scale) + 1 - digits.size(), '0');
    if (scale != 0)
        digits.insert(digits.size() - static_cast<size_t>(scale), 1, '.');
    if (value < 0)
        digits.insert(0, 1, '-');
    return digits;
}

// Numbers of every size, with more than their share of the ends of ranges.
class NumberSource {
public:
    explicit NumberSource(unsigned long seed) : random_(seed), numbers_(gmp_randinit_default) { numbers_.seed(seed); }

    unsigned long pick(unsigned long most) { return random_() % (most + 1); }
    bool chance(unsigned long one_in) { return pick(one_in - 1) == 0; }

    // Of at most `precision` digits, with either sign.
    mpz_class value(int precision) {
        const int digits = static_cast<int>(pick(static_cast<unsigned long>(precision)));
        mpz_class result;
        switch (pick(5)) {
        case 0:
            result = power_of(10, digits) - 1;
            break;
        case 1:
            result = digits < precision ? power_of(10, digits) : mpz_class(0);
            break;
        default:
            result = numbers_.get_z_range(power_of(10, digits));
        }
        return chance(2) ? mpz_class(-result) : result;
    }
    mpz_class bits(unsigned long count) { return numbers_.get_z_bits(count); }
    unsigned long word() { return random_(); }

private:
    std::mt19937_64 random_;
    gmp_randclass numbers_;
};

} // namespace support

#endif
