// Exact numbers for oracles: big integers of GMP, records and numerics made from them, and what a test checks of
// a record afterwards. Nothing here uses the library's arithmetic.
#ifndef TESTS_SUPPORT_EXACT_H
#define TESTS_SUPPORT_EXACT_H

#include <dlxcomn/dlxcomn.h>

#include <gmp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace support {

using Random = std::mt19937_64;

inline int pick(Random &random, int from, int to) {
    return from + static_cast<int>(random() % static_cast<std::uint64_t>(to - from + 1));
}

// An integer of any size.
class Big {
public:
    Big(long value = 0) { mpz_init_set_si(z_, value); }
    Big(const CS_BYTE *bytes, int count) {
        mpz_init(z_);
        mpz_import(z_, static_cast<size_t>(std::max(count, 0)), 1, 1, 1, 0, bytes);
    }
    Big(const Big &other) { mpz_init_set(z_, other.z_); }
    Big(Big &&other) noexcept {
        mpz_init(z_);
        mpz_swap(z_, other.z_);
    }
    ~Big() { mpz_clear(z_); }
    Big &operator=(Big other) noexcept {
        mpz_swap(z_, other.z_);
        return *this;
    }

    friend Big operator+(Big a, const Big &b) {
        mpz_add(a.z_, a.z_, b.z_);
        return a;
    }
    friend Big operator-(Big a, const Big &b) {
        mpz_sub(a.z_, a.z_, b.z_);
        return a;
    }
    friend Big operator*(Big a, const Big &b) {
        mpz_mul(a.z_, a.z_, b.z_);
        return a;
    }
    // Toward zero.
    friend Big operator/(Big a, const Big &b) {
        mpz_tdiv_q(a.z_, a.z_, b.z_);
        return a;
    }
    friend Big operator%(Big a, const Big &b) {
        mpz_tdiv_r(a.z_, a.z_, b.z_);
        return a;
    }
    Big operator-() const { return Big(0) - *this; }
    friend bool operator==(const Big &a, const Big &b) { return mpz_cmp(a.z_, b.z_) == 0; }
    friend bool operator<(const Big &a, const Big &b) { return mpz_cmp(a.z_, b.z_) < 0; }
    friend bool operator>(const Big &a, const Big &b) { return b < a; }
    friend bool operator<=(const Big &a, const Big &b) { return !(b < a); }
    friend bool operator>=(const Big &a, const Big &b) { return !(a < b); }

    int sign() const { return mpz_sgn(z_); }
    Big magnitude() const { return sign() < 0 ? -*this : *this; }
    // Bytes of the magnitude, 0 for zero.
    int bytes() const { return sign() == 0 ? 0 : static_cast<int>(mpz_sizeinbase(z_, 256)); }
    int small() const { return static_cast<int>(mpz_get_si(z_)); }
    std::string text() const {
        std::string result(mpz_sizeinbase(z_, 10) + 2, '\0');
        mpz_get_str(result.data(), 10, z_);
        result.resize(std::strlen(result.c_str()));
        return result;
    }
    // The low `count` bytes of the magnitude.
    void store(CS_BYTE *to, int count) const {
        std::vector<CS_BYTE> all(static_cast<size_t>(bytes() + 1));
        size_t written = 0;
        mpz_export(all.data(), &written, 1, 1, 1, 0, z_);
        std::memset(to, 0, static_cast<size_t>(count));
        const int kept = std::min(count, static_cast<int>(written));
        std::memcpy(to + count - kept, all.data() + written - static_cast<size_t>(kept), static_cast<size_t>(kept));
    }

    static Big of(const char *decimal) {
        Big result;
        mpz_set_str(result.z_, decimal, 10);
        return result;
    }
    static Big power(unsigned base, int exponent) {
        Big result;
        mpz_ui_pow_ui(result.z_, base, static_cast<unsigned long>(exponent));
        return result;
    }
    static Big ten_to(int exponent) { return power(10, exponent); }
    // What a byte count does not hold.
    static Big limit_of_bytes(int count) { return power(256, std::max(count, 0)); }

private:
    mpz_t z_;
};

inline void PrintTo(const Big &value, std::ostream *out) { *out << value.text(); }

// Random magnitude of at most `bytes` bytes, with runs of 0, 255 and 128 and short lengths over-represented:
// carries, borrows and wrong estimates happen there.
inline Big random_magnitude(Random &random, int bytes) {
    if (bytes <= 0)
        return 0;
    const int length = pick(random, 0, 3) == 0 ? bytes : pick(random, 0, bytes);
    std::vector<CS_BYTE> data(static_cast<size_t>(length));
    const int style = pick(random, 0, 4);
    for (CS_BYTE &byte : data) {
        byte = static_cast<CS_BYTE>(random());
        if (style == 1)
            byte = byte % 2 ? 255 : 0;
        else if (style == 2)
            byte = byte < 230 ? 255 : byte;
        else if (style == 3)
            byte = byte < 230 ? 0 : byte;
    }
    if (style == 4 && length != 0)
        data[0] = static_cast<CS_BYTE>(pick(random, 126, 129));
    Big value(data.data(), length);
    if (style == 3 && pick(random, 0, 1) == 0) // near a power of ten
        value = Big::ten_to(pick(random, 0, std::max(1, bytes * 12 / 5))) + Big(pick(random, -1, 1));
    if (value.sign() < 0 || value.bytes() > bytes)
        return 1;
    return value;
}

// Random value below 10^digits, short ones and the ends over-represented.
inline Big random_digits(Random &random, int digits) {
    const Big limit = Big::ten_to(digits);
    switch (pick(random, 0, 7)) {
    case 0:
        return limit - 1;
    case 1:
        return pick(random, 0, 1);
    case 2:
        return Big::ten_to(pick(random, 0, digits - 1));
    case 3:
    case 4: {
        const Big shorter = Big::ten_to(pick(random, 1, digits));
        return random_magnitude(random, 32) % shorter;
    }
    default:
        return random_magnitude(random, 34) * random_magnitude(random, 2) % limit;
    }
}

// The longest record that the core takes.
constexpr int LONGEST_RECORD = 136;

// Lengths as callers have them: mostly those of values, some of work records, and none at all.
inline int random_length(Random &random) {
    switch (pick(random, 0, 9)) {
    case 0:
        return pick(random, 0, 3);
    case 1:
        return pick(random, 34, LONGEST_RECORD);
    default:
        return pick(random, 2, 33);
    }
}

constexpr CS_BYTE GUARD = 0xA7;

// A record with memory of its own: a sign byte, a magnitude, and guards around them.
class Record {
public:
    Record(int len, int prec, int scale, const Big &value = 0, CS_BYTE sign = 0) {
        reset(len, prec, scale, value, sign);
    }
    Record(const Record &other) { *this = other; }
    Record &operator=(const Record &other) {
        memory_ = other.memory_;
        record_ = other.record_;
        record_.value =
            other.record_.value != nullptr ? memory_.data() + (other.record_.value - other.memory_.data()) : nullptr;
        return *this;
    }

    void reset(int len, int prec, int scale, const Big &value, CS_BYTE sign) {
        memory_.fill(GUARD);
        record_ = {};
        record_.len = len;
        record_.prec = static_cast<CS_BYTE>(prec);
        record_.scale = static_cast<CS_BYTE>(scale);
        record_.value = memory_.data() + MARGIN;
        if (len > 0) {
            record_.value[0] = sign != 0 ? sign : value.sign() < 0;
            value.store(record_.value + 1, len - 1);
        }
    }

    operator __CONSTANT *() { return &record_; }
    __CONSTANT *operator->() { return &record_; }
    const __CONSTANT *operator->() const { return &record_; }
    const __CONSTANT &get() const { return record_; }

    CS_BYTE sign() const { return record_.len > 0 ? record_.value[0] : CS_BYTE(0); }
    Big magnitude() const { return Big(record_.value + 1, record_.len - 1); }
    Big value() const { return sign() != 0 ? -magnitude() : magnitude(); }
    // Nothing outside the first `len` bytes was written.
    bool guarded(int len) const {
        for (int i = 0; i < static_cast<int>(memory_.size()); ++i)
            if ((i < MARGIN || i >= MARGIN + len) && memory_[static_cast<size_t>(i)] != GUARD)
                return false;
        return true;
    }
    bool guarded() const { return guarded(record_.len); }
    const CS_BYTE *start() const { return memory_.data() + MARGIN; }
    CS_BYTE *start() { return memory_.data() + MARGIN; }
    const auto &memory() const { return memory_; }

private:
    static constexpr int MARGIN = 16;
    std::array<CS_BYTE, 304> memory_;
    __CONSTANT record_;
};

// A numeric whose unused bytes hold `garbage`.
inline CS_NUMERIC numeric_of(const Big &value, int precision, int scale, CS_BYTE garbage = GUARD) {
    CS_NUMERIC result;
    std::memset(&result, garbage, sizeof result);
    result.precision = static_cast<CS_BYTE>(precision);
    result.scale = static_cast<CS_BYTE>(scale);
    result.array[0] = value.sign() < 0;
    value.store(result.array + 1, Com__Nume_Prec_To_Len[precision] - 1);
    return result;
}
inline CS_NUMERIC minus_zero(int precision, int scale) {
    CS_NUMERIC result = numeric_of(Big(0), precision, scale);
    result.array[0] = 1;
    return result;
}

// The unscaled value; the sign byte must be 0 or 1.
inline Big value_of(const CS_NUMERIC &numeric) {
    EXPECT_LE(numeric.array[0], 1);
    const Big magnitude(numeric.array + 1, Com__Nume_Prec_To_Len[numeric.precision] - 1);
    return numeric.array[0] != 0 ? -magnitude : magnitude;
}

// The array bytes that the value does not use all hold `garbage`.
inline bool unused_bytes_are(const CS_NUMERIC &numeric, CS_BYTE garbage) {
    for (int i = Com__Nume_Prec_To_Len[numeric.precision]; i < CS_MAX_NUMLEN; ++i)
        if (numeric.array[i] != garbage)
            return false;
    return true;
}

} // namespace support

#endif
