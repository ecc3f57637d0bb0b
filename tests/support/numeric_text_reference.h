// The rule by which numeric text is read, restated digit by digit on GMP integers: the oracle of the reader's tests
// and of its fuzzer. Slow and literal on purpose; it shares nothing with the library but the shape of the call.
#ifndef TESTS_SUPPORT_NUMERIC_TEXT_REFERENCE_H
#define TESTS_SUPPORT_NUMERIC_TEXT_REFERENCE_H

#include "support/numeric_record.h"

#include <dlxcomn/dlxcomn.h>

#include <gmpxx.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace support {

struct TextCall {
    std::string text; // a NUL stands behind it
    int len = 0;      // of it, the bytes to read
    CS_INT destlen = 0;
    CS_BYTE precision = 77;
    CS_BYTE scale = 255;
    int flag = 0;
};

struct TextResult {
    int code = 0;
    CS_INT destlen = 0;
    CS_BYTE precision = 0;
    CS_BYTE scale = 0;
    int offset = 0;             // by which *dest moved
    std::vector<CS_BYTE> value; // *destlen bytes at *dest; empty unless the code is NUME_OK
    bool operator==(const TextResult &) const = default;
};

class TextReference {
public:
    static TextResult read(const TextCall &call) {
        TextReference reference(call);
        TextResult result = reference.result_;
        result.code = reference.run();
        result.destlen = reference.result_.destlen;
        result.precision = reference.result_.precision;
        result.scale = reference.result_.scale;
        if (result.code == NUME_OK) {
            result.offset = reference.result_.offset;
            result.value.assign(static_cast<size_t>(result.destlen), 0);
            put_value(result.value.data(), result.destlen, reference.magnitude_); // its low bytes
            result.value[0] = reference.sign_byte_;
        }
        return result;
    }

private:
    explicit TextReference(const TextCall &call) : call_(call) {
        result_.destlen = call.destlen == 0 ? 33 : call.destlen;
        result_.precision = call.precision;
        result_.scale = call.scale;
        room_ = power_of(256, result_.destlen - 1);
        max_digits_ = precision_of_length(result_.destlen);
    }

    static bool is_space(char c) { return (c >= 9 && c <= 15) || c == 32; }
    static bool is_digit(char c) { return c >= '0' && c <= '9'; }

    int read_exponent(size_t at) {
        const char *p = call_.text.c_str() + at;
        bool negative = false;
        if (*p == '+' || *p == '-')
            negative = *p++ == '-';
        for (int position = 1; *p != '\0'; ++p, ++position) {
            if (is_digit(*p)) {
                exponent_ = exponent_ * 10 + (*p - '0');
                continue;
            }
            if (position <= 2 || !is_space(*p))
                return NUME_BADVALUE;
            for (; *p != '\0'; ++p)
                if (!is_space(*p))
                    return NUME_BADVALUE;
            break;
        }
        if (negative)
            exponent_ = -exponent_;
        return NUME_OK;
    }

    // Multiply or divide by a power of ten, cutting, with the codes of the core.
    int rescale(const mpz_class &places) {
        if (places == 0)
            return NUME_OK;
        if (abs(places) > 77)
            return NUME_BADVALUE;
        const mpz_class factor = power_of(10, std::abs(static_cast<int>(places.get_si())));
        if (places > 0) {
            magnitude_ *= factor;
            return magnitude_ < room_ ? NUME_OK : NUME_OVERFLOW;
        }
        const mpz_class rest = magnitude_ % factor;
        magnitude_ /= factor;
        return rest != 0 ? NUME_TRUNCATED : NUME_OK;
    }

    int run() {
        // 1
        if (call_.len < 0)
            return NUME_BADVALUE;
        // 2
        const std::string head = call_.text.substr(0, static_cast<size_t>(call_.len));
        size_t mark = head.find('e');
        if (mark == std::string::npos)
            mark = head.find('E');
        const bool has_exponent = mark != std::string::npos;
        if (has_exponent)
            if (const int code = read_exponent(mark + 1); code != NUME_OK)
                return code;
        const mpz_class target = exponent_ + result_.scale;
        // 3
        size_t i = 0;
        int sign = 0;
        for (; i < head.size() && (head[i] == '+' || head[i] == '-' || head[i] == ' '); ++i) {
            if (head[i] == ' ')
                continue;
            if (sign != 0)
                return NUME_BADVALUE;
            sign = head[i] == '-' ? -1 : 1;
        }
        // 4 to 6
        long frac = -1, seen = 0, sig = 0, dropped = 0;
        for (; i < head.size(); ++i) {
            const char c = head[i];
            if (!is_digit(c)) {
                if (c == '.' && frac < 0) {
                    frac = 0;
                    continue;
                }
                if (c == 'e' || c == 'E')
                    break;
                for (; i < head.size(); ++i)
                    if (!is_space(head[i]))
                        return NUME_BADVALUE;
                break;
            }
            const int digit = c - '0';
            if (sig < max_digits_ && (has_exponent ? frac < target : frac < result_.scale)) {
                ++seen;
                if (frac >= 0)
                    ++frac;
                if (sig != 0 || digit != 0)
                    ++sig;
                magnitude_ = magnitude_ * 10 + digit;
                if (magnitude_ >= room_)
                    return NUME_OVERFLOW;
                continue;
            }
            if (call_.flag != 1)
                return NUME_TRUNCATED;
            if (digit >= 5 && (has_exponent ? frac == target : frac == result_.scale)) {
                magnitude_ += 1;
                if (magnitude_ >= room_)
                    return NUME_OVERFLOW;
                if (sig == 0)
                    sig = 1;
            }
            ++dropped;
            if (frac < 0)
                continue;
            ++frac;
            break;
        }
        // 7
        if (frac < 0)
            frac = 0;
        mpz_class exp10 = exponent_ + dropped - frac;
        if (result_.scale <= 77) {
            // 8
            const mpz_class places = exp10 + result_.scale;
            if (seen < -places) {
                if (call_.flag != 1)
                    return NUME_TRUNCATED;
                magnitude_ = 0;
            } else {
                const int code = rescale(places);
                if (code != NUME_OK && !(code == NUME_TRUNCATED && call_.flag == 1))
                    return code;
            }
        } else if (exp10 > 0) {
            // 9
            result_.scale = 0;
            if (const int code = rescale(exp10); code != NUME_OK)
                return code;
        } else {
            const mpz_class low = frac >= 1 ? mpz_class(frac) : exp10;
            mpz_class byte;
            mpz_fdiv_r_ui(byte.get_mpz_t(), low.get_mpz_t(), 256);
            result_.scale = static_cast<CS_BYTE>(byte.get_ui());
        }
        // 10: the room is checked with every step above
        const auto set_sign = [&] {
            const bool is_something = result_.destlen == 2 ? magnitude_ % 256 != 0 : sig != 0;
            sign_byte_ = sign < 0 && is_something ? 1 : 0;
        };
        // 11
        if (result_.precision >= 1 && result_.precision <= 77) {
            set_sign();
            return magnitude_ >= power_of(10, result_.precision) ? NUME_OVERFLOW : NUME_OK;
        }
        // 12
        seen = std::max(seen, 1L);
        if (seen >= 78)
            return NUME_OVERFLOW;
        long precision = seen;
        if (precision > result_.scale && precision > sig)
            precision = result_.scale < sig ? sig : result_.scale + 1;
        const int length = length_of_precision(static_cast<int>(precision));
        if (length > result_.destlen)
            return NUME_OVERFLOW; // *dest would leave the buffer
        result_.precision = static_cast<CS_BYTE>(precision);
        result_.offset = result_.destlen - length;
        result_.destlen = length;
        set_sign();
        return NUME_OK;
    }

    const TextCall &call_;
    TextResult result_;
    mpz_class magnitude_, room_, exponent_;
    CS_BYTE sign_byte_ = 0;
    int max_digits_ = 0;
};

// The same call to the library. `intact` tells that no byte around the destination was written.
inline TextResult read_by_library(const TextCall &call, bool *intact) {
    constexpr CS_BYTE FENCE = 0xA5;
    constexpr size_t FENCE_BYTES = 40;
    const size_t length = call.destlen == 0 ? 33 : static_cast<size_t>(call.destlen);
    std::vector<CS_BYTE> buffer(2 * FENCE_BYTES + length, FENCE);
    // Only an exponent may be read past the length, up to its NUL; otherwise there is not a byte to spare.
    const std::string head = call.text.substr(0, static_cast<size_t>(std::max(call.len, 0)));
    const bool has_exponent = head.find_first_of("eE") != std::string::npos;
    const size_t bytes = has_exponent ? call.text.size() + 1 : head.size();
    const std::unique_ptr<char[]> text(new char[bytes]);
    std::memcpy(text.get(), call.text.c_str(), bytes);
    CS_BYTE *const start = buffer.data() + FENCE_BYTES;
    CS_BYTE *dest = start;
    TextResult result = {0, call.destlen, call.precision, call.scale, 0, {}};
    result.code = com__subchartoexctnume(text.get(), call.len, &dest, &result.destlen, &result.precision,
                                         &result.scale, call.flag);
    *intact = dest >= start && result.destlen >= 2 && dest + result.destlen <= start + length;
    for (size_t i = 0; i < FENCE_BYTES; ++i)
        *intact = *intact && buffer[i] == FENCE && buffer[FENCE_BYTES + length + i] == FENCE;
    if (result.code == NUME_OK && *intact) {
        result.offset = static_cast<int>(dest - start);
        result.value.assign(dest, dest + result.destlen);
    }
    return result;
}

inline std::string describe(const TextCall &call) {
    std::ostringstream out;
    out << "text \"" << call.text << "\" len " << call.len << " destlen " << call.destlen << " precision "
        << int{call.precision} << " scale " << int{call.scale} << " flag " << call.flag;
    return out.str();
}

inline std::string describe(const TextResult &result) {
    std::ostringstream out;
    out << "code " << result.code << " destlen " << result.destlen << " precision " << int{result.precision}
        << " scale " << int{result.scale} << " offset " << result.offset << " value";
    for (const CS_BYTE byte : result.value)
        out << ' ' << int{byte};
    return out.str();
}

} // namespace support

#endif
