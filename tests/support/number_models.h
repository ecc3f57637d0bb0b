// Slow models of how a number goes to text, to bytes and to a numeric record. They share nothing with the library.
#ifndef TESTS_SUPPORT_NUMBER_MODELS_H
#define TESTS_SUPPORT_NUMBER_MODELS_H

#include "support/convert.h"

#include <gmp.h>

#include <algorithm>
#include <string>
#include <vector>

namespace support {

// What a conversion should leave: bytes that it does not write stay UNTOUCHED.
struct Expected {
    CS_RETCODE status = CS_SUCCEED;
    CS_INT destlen = UNTOUCHED_LENGTH;
    std::vector<CS_BYTE> bytes;

    Expected() : bytes(Outcome().bytes.size(), UNTOUCHED) {}

    void put(size_t at, const std::string &text) {
        for (char c : text)
            bytes[at++] = static_cast<CS_BYTE>(c);
    }
};

inline void expect_outcome(const Outcome &outcome, const Expected &expected, const std::string &what) {
    ASSERT_EQ(outcome.status, expected.status) << what;
    ASSERT_EQ(outcome.destlen, expected.destlen) << what;
    ASSERT_TRUE(std::equal(expected.bytes.begin(), expected.bytes.end(), outcome.bytes.begin())) << what;
}

// Pads `written` bytes that stand in `expected` and are all of the value.
inline void model_padding(Expected &expected, size_t written, CS_INT room, CS_INT format) {
    const bool nul = (format & CS_FORMAT_NULLTERM) != 0;
    const auto limit = static_cast<size_t>(room);
    if (written > limit || (nul && written == limit)) {
        if (nul && limit >= 1)
            expected.bytes[limit - 1] = 0;
        expected.status = CS_EOVERFLOW;
    } else if ((format & CS_FORMAT_ZEROPAD) != 0 && (format & CS_FORMAT_BLANKPAD) != 0) {
        expected.status = CS_EFORMAT;
    } else if ((format & CS_FORMAT_ZEROPAD) != 0) {
        for (size_t i = written; i < limit; ++i)
            expected.bytes[i] = 0;
        expected.destlen = room;
    } else if ((format & CS_FORMAT_BLANKPAD) != 0) {
        for (size_t i = written; i < limit; ++i)
            expected.bytes[i] = nul && i == limit - 1 ? 0 : ' ';
        expected.destlen = room;
    } else if (nul) {
        expected.bytes[written] = 0;
        ++expected.destlen;
    }
}

// A number's text to a character destination.
inline Expected model_char(const std::string &text, CS_INT room, CS_INT format) {
    Expected expected;
    const auto length = static_cast<CS_INT>(text.size());
    expected.destlen = std::min(room, length);
    const bool fits = room >= length && !((format & CS_FORMAT_NULLTERM) != 0 && room == length);
    if (fits) {
        expected.put(0, text);
        model_padding(expected, text.size(), room, format);
        return expected;
    }
    if (room > 1) {
        expected.put(0, "*");
        expected.destlen = 1;
        model_padding(expected, 1, room, format);
    }
    expected.status = CS_EOVERFLOW;
    return expected;
}

// A value's bytes to the binary group.
template <class T>
Expected model_bin(T value, CS_INT room, CS_INT format) {
    Expected expected;
    const char *bytes = reinterpret_cast<const char *>(&value);
    const CS_INT width = sizeof value;
    expected.destlen = std::min(room, width);
    expected.put(0, std::string(bytes, static_cast<size_t>(expected.destlen)));
    if (room < width)
        expected.status = CS_ETRUNCATED;
    else if ((format & CS_FORMAT_ZEROPAD) != 0 && room > width) {
        expected.put(static_cast<size_t>(width), std::string(static_cast<size_t>(room - width), '\0'));
        expected.destlen = room;
    }
    return expected;
}

template <class T>
Expected model_varbin(T value) {
    Expected expected;
    expected.destlen = 258;
    expected.put(0, {static_cast<char>(sizeof value), 0});
    expected.put(2, std::string(reinterpret_cast<const char *>(&value), sizeof value));
    return expected;
}

// `behind` is what stands behind the text: a NUL or nothing.
inline Expected model_varchar(const std::string &text, const std::string &behind) {
    Expected expected;
    expected.destlen = 258;
    expected.put(0, {static_cast<char>(text.size()), 0});
    expected.put(2, text + behind);
    return expected;
}

// A numeric record of an integer given as decimal digits, times a power of ten; what it holds when the value fits.
class NumericModel {
public:
    NumericModel(const std::string &decimal, unsigned precision, unsigned scale)
        : NumericModel(decimal, precision, scale, scale) {}

    NumericModel(const std::string &decimal, unsigned precision, unsigned scale, unsigned ten_to_the) {
        mpz_t magnitude, power;
        mpz_init_set_str(magnitude, decimal.c_str(), 10);
        mpz_init(power);
        mpz_ui_pow_ui(power, 10, ten_to_the);
        mpz_mul(magnitude, magnitude, power);
        const bool negative = mpz_sgn(magnitude) < 0;
        mpz_abs(magnitude, magnitude);
        mpz_ui_pow_ui(power, 10, precision);
        fits_ = mpz_cmp(magnitude, power) < 0;
        mpz_sub_ui(power, power, 1);
        length_ = 1 + (mpz_sizeinbase(power, 2) + 7) / 8;
        record_.precision = static_cast<CS_BYTE>(precision);
        record_.scale = static_cast<CS_BYTE>(scale);
        record_.array[0] = negative;
        const size_t bytes = mpz_sgn(magnitude) == 0 ? 0 : (mpz_sizeinbase(magnitude, 2) + 7) / 8;
        if (fits_)
            mpz_export(record_.array + length_ - bytes, nullptr, 1, 1, 1, 0, magnitude);
        mpz_clears(magnitude, power, nullptr);
    }

    bool fits() const { return fits_; }
    // Bytes of array that the precision uses, the sign byte among them.
    size_t length() const { return length_; }

    void expect_in(const Outcome &outcome, const std::string &what) const {
        ASSERT_EQ(outcome.destlen, 35) << what;
        ASSERT_EQ(outcome.bytes[0], record_.precision) << what;
        ASSERT_EQ(outcome.bytes[1], record_.scale) << what;
        ASSERT_TRUE(outcome.untouched_from(35)) << what;
        if (!fits_) {
            ASSERT_EQ(outcome.status, CS_EOVERFLOW) << what;
            return;
        }
        ASSERT_EQ(outcome.status, CS_SUCCEED) << what;
        ASSERT_TRUE(std::equal(record_.array, record_.array + length_, outcome.bytes.begin() + 2)) << what;
    }

private:
    CS_NUMERIC record_ = {};
    bool fits_;
    size_t length_;
};

} // namespace support

#endif
