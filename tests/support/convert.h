// One conversion as a test writes it down: source value, destination format, and all that came out.
#ifndef TESTS_SUPPORT_CONVERT_H
#define TESTS_SUPPORT_CONVERT_H

#include "owner.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

namespace support {

// A descriptor with the given fields; the rest zero.
inline CS_DATAFMT format_of(CS_INT datatype, CS_INT maxlength = 0, CS_INT format = 0) {
    CS_DATAFMT result = {};
    result.datatype = datatype;
    result.maxlength = maxlength;
    result.format = format;
    return result;
}

inline CS_DATAFMT numeric_format(CS_INT precision, CS_INT scale, CS_INT datatype = CS_NUMERIC_TYPE) {
    CS_DATAFMT result = format_of(datatype, sizeof(CS_NUMERIC));
    result.precision = precision;
    result.scale = scale;
    return result;
}

// The bytes that a test finds where nothing was written.
constexpr CS_BYTE UNTOUCHED = 0xEE;
constexpr CS_INT UNTOUCHED_LENGTH = -77777;

// What a conversion left behind. The destination has UNTOUCHED bytes around and behind what was written.
struct Outcome {
    CS_RETCODE status = 12345;
    CS_INT destlen = UNTOUCHED_LENGTH;
    CS_DATAFMT destfmt = {}; // as the conversion left it
    std::array<CS_BYTE, 640> bytes;

    Outcome() { bytes.fill(UNTOUCHED); }

    template <class T>
    T value() const {
        T result;
        std::memcpy(&result, bytes.data(), sizeof result);
        return result;
    }
    // The first `destlen` bytes as text.
    std::string text() const {
        return destlen < 0 ? std::string("(no length)")
                           : std::string(reinterpret_cast<const char *>(bytes.data()), static_cast<size_t>(destlen));
    }
    std::string varchar() const {
        const auto record = value<CS_VARCHAR>();
        return std::string(record.str, static_cast<size_t>(record.len));
    }
    // No byte from `from` on was written.
    bool untouched_from(size_t from) const {
        for (size_t i = from; i < bytes.size(); ++i)
            if (bytes[i] != UNTOUCHED)
                return false;
        return true;
    }
    bool untouched() const { return untouched_from(0) && destlen == UNTOUCHED_LENGTH; }
};

// A fixture with a context, and the call of a conversion on it.
class ConversionTest : public testing::Test {
protected:
    CS_CONTEXT *context() { return owner_.context(); }

    // Calls `function` on a value of `sourcetype`.
    template <class T>
    Outcome convert(CS_CONV_FUNC function, CS_INT sourcetype, T source, const CS_DATAFMT &destfmt) {
        CS_DATAFMT srcfmt = format_of(sourcetype, sizeof source);
        Outcome outcome;
        outcome.destfmt = destfmt;
        outcome.status =
            function(context(), &srcfmt, &source, &outcome.destfmt, outcome.bytes.data(), &outcome.destlen);
        return outcome;
    }

    // The same through the matrix, as applications do.
    template <class T>
    Outcome convert(CS_INT sourcetype, T source, const CS_DATAFMT &destfmt) {
        const CS_CONV_FUNC function = com_conv_func(context(), sourcetype, destfmt.datatype);
        EXPECT_NE(function, nullptr) << "no conversion from " << sourcetype << " to " << destfmt.datatype;
        return function != nullptr ? convert(function, sourcetype, source, destfmt) : Outcome();
    }

private:
    client::Owner owner_;
};

} // namespace support

#endif
