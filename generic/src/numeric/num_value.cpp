// Exact numerics from and to doubles, 64-bit integers and money.
//
// To a double or an integer a numeric goes as its decimal text of at most 79 characters reads. These results are
// those of that text, but the text itself is made only where its digits are needed.
#include "diag/check.h"
#include "kernel/float_text.h"
#include "numeric/decimal.h"

#include <charconv>
#include <cstring>
#include <limits>

namespace dlx {
namespace {

// A negative value of scale 77, or a record that holds more than any valid value.
bool is_beyond_text(const Decimal &value) {
    return numeric_text_length(value.negative, decimal_digits(value.magnitude), value.scale) > NUMERIC_TEXT_ROOM;
}

// ---- To doubles --------------------------------------------------------------------------------

// Integers up to this, and powers of ten up to 10^22, are doubles exactly: one division of the two rounds once.
constexpr limb EXACT_INTEGER = limb{1} << std::numeric_limits<CS_FLOAT>::digits;
constexpr CS_FLOAT EXACT_POWERS[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                     1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The double nearest to a value that is not beyond text. With at most 79 characters it is far from either end of
// the range: there is nothing to clamp and nothing that becomes zero.
CS_FLOAT nearest_double(const Decimal &value) {
    const limb low = value.magnitude.at[0];
    const bool is_exact = is_one_limb(value.magnitude) && low <= EXACT_INTEGER;
    if (is_exact && value.scale < static_cast<int>(std::size(EXACT_POWERS))) {
        const CS_FLOAT quotient = static_cast<CS_FLOAT>(low) / EXACT_POWERS[value.scale];
        return value.negative ? -quotient : quotient;
    }
    char text[NUMERIC_TEXT_ROOM];
    const int start = put_numeric_text(value, text, sizeof text);
    CS_FLOAT result = 0;
    std::from_chars(text + start, text + sizeof text, result); // as strtod in the C locale
    return result;
}

// ---- To integers -------------------------------------------------------------------------------

template <class Integer>
int numeric_to_integer(const __CONSTANT &record, Integer *result) {
    using Limits = std::numeric_limits<Integer>;
    if (record.len == 0)
        return NUME_OK;
    Decimal value(record);
    if (is_zero(value.magnitude)) {
        *result = 0;
        return NUME_OK;
    }
    if (is_beyond_text(value)) {
        *result = Limits::max();
        return NUME_OVERFLOW;
    }
    // An unsigned reader stops at the sign: -0.5 is below its range although the fraction would be cut.
    const bool is_below = value.negative && !Limits::is_signed;
    if (value.scale != 0)
        shift_down(value.magnitude, value.scale);
    const limb bound = static_cast<limb>(Limits::max()) + value.negative;
    if (is_below || !is_one_limb(value.magnitude) || value.magnitude.at[0] > bound) {
        *result = value.negative ? Limits::min() : Limits::max();
        return value.negative ? NUME_UNDERFLOW : NUME_OVERFLOW;
    }
    *result = static_cast<Integer>(value.negative ? 0 - value.magnitude.at[0] : value.magnitude.at[0]);
    return NUME_OK;
}

// ---- From integers -----------------------------------------------------------------------------

int integer_to_numeric(limb magnitude, bool negative, CS_BYTE *dest, int destlen, CS_BYTE *precision, CS_BYTE *scale) {
    COM_REQUIRE_PTR(dest, NUME_BADVALUE);
    COM_REQUIRE_PTR(precision, NUME_BADVALUE);
    COM_REQUIRE_PTR(scale, NUME_BADVALUE);
    COM_REQUIRE(is_value_length(destlen), NUME_BADVALUE);
    if (!is_precision(*precision)) {
        *precision = precision_of_length(destlen);
        *scale = 0;
    }

    Magnitude m = {{magnitude, 0, 0, 0}};
    dest[0] = 0;
    if (!store_magnitude(m, dest + 1, destlen - 1))
        return NUME_OVERFLOW;
    if (*scale != 0) {
        if (*scale > CS_MAX_SCALE)
            return NUME_BADVALUE;
        if (!shift_up(m, *scale, destlen))
            return NUME_OVERFLOW;
        store_magnitude(m, dest + 1, destlen - 1);
    }
    dest[0] = negative;
    return passes_precision(m, *precision) ? NUME_OVERFLOW : NUME_OK;
}

template <class Integer>
int signed_to_numeric(Integer value, CS_BYTE *dest, int destlen, CS_BYTE *precision, CS_BYTE *scale) {
    const limb bits = static_cast<limb>(value);
    return integer_to_numeric(value < 0 ? 0 - bits : bits, value < 0, dest, destlen, precision, scale);
}

// ---- Money -------------------------------------------------------------------------------------

constexpr int MONEY_SCALE = 4;
constexpr int MONEY_LENGTH = 9; // of its count as a value
constexpr limb MONEY_TOP_BIT = limb{1} << 63;

// m / 10^places for places from 1 up, rounded half away from zero. The first dropped digit says it all.
void round_down(Magnitude &m, int places) {
    shift_down(m, places - 1);
    if (divide_by_limb(m, 10) >= 5)
        multiply_add(m, 1, 1);
}

} // namespace
} // namespace dlx

using namespace dlx;

int com__doubletoexctnume(CS_FLOAT flt8val, CS_BYTE *dest, int destlen, CS_BYTE *precision, CS_BYTE *scale) {
    COM_REQUIRE_PTR(dest, NUME_BADVALUE);
    COM_REQUIRE_PTR(precision, NUME_BADVALUE);
    COM_REQUIRE_PTR(scale, NUME_BADVALUE);
    COM_REQUIRE(is_value_length(destlen), NUME_BADVALUE);
    if (!is_precision(*precision)) {
        *precision = precision_of_length(destlen);
        *scale = 0;
    }

    char text[32 + 1];
    const int length = format_double_17g(flt8val, text);
    text[length] = '\0'; // an exponent is read up to its NUL
    // The precision is fixed by now, so the reader holds the value against it and leaves dest where it is.
    CS_INT bytes = destlen;
    return com__subchartoexctnume(text, length, &dest, &bytes, precision, scale, 1);
}

int com__subexctnumetoflt8(__CONSTANT *numeval, CS_FLOAT *flt8) {
    COM_REQUIRE_RECORD(numeval, NUME_BADVALUE);
    COM_REQUIRE(numeval->len <= CS_MAX_NUMLEN, NUME_BADVALUE);
    COM_REQUIRE_PTR(flt8, NUME_BADVALUE);
    if (numeval->len == 0)
        return NUME_OK;
    const Decimal value(*numeval);
    if (is_zero(value.magnitude)) {
        *flt8 = 0.0;
        return NUME_OK;
    }
    if (is_beyond_text(value))
        return NUME_OVERFLOW;
    *flt8 = nearest_double(value);
    return NUME_OK;
}

int com__longtoexctnume(CS_INT longval, CS_BYTE *dest, int destlen, CS_BYTE *precision, CS_BYTE *scale) {
    return signed_to_numeric(longval, dest, destlen, precision, scale);
}

int com__longlongtoexctnume(CS_BIGINT longval, CS_BYTE *dest, int destlen, CS_BYTE *precision, CS_BYTE *scale) {
    return signed_to_numeric(longval, dest, destlen, precision, scale);
}

int com__ulongtoexctnume(CS_UINT longval, CS_BYTE *dest, int destlen, CS_BYTE *precision, CS_BYTE *scale) {
    return integer_to_numeric(longval, false, dest, destlen, precision, scale);
}

int com__ulonglongtoexctnume(CS_UBIGINT longval, CS_BYTE *dest, int destlen, CS_BYTE *precision, CS_BYTE *scale) {
    return integer_to_numeric(longval, false, dest, destlen, precision, scale);
}

int com__subexctnumetolonglong(__CONSTANT *numeval, CS_BIGINT *longval) {
    COM_REQUIRE_RECORD(numeval, NUME_BADVALUE);
    COM_REQUIRE(numeval->len <= CS_MAX_NUMLEN, NUME_BADVALUE);
    COM_REQUIRE_PTR(longval, NUME_BADVALUE);
    return numeric_to_integer(*numeval, longval);
}

int com__subexctnumetoulonglong(__CONSTANT *numeval, CS_UBIGINT *longval) {
    COM_REQUIRE_RECORD(numeval, NUME_BADVALUE);
    COM_REQUIRE(numeval->len <= CS_MAX_NUMLEN, NUME_BADVALUE);
    COM_REQUIRE_PTR(longval, NUME_BADVALUE);
    return numeric_to_integer(*numeval, longval);
}

int com__exctnumetomny8(__CONSTANT *numeval, CS_BYTE *dest) {
    COM_REQUIRE_RECORD(numeval, 0);
    COM_REQUIRE(numeval->len <= CS_MAX_NUMLEN, 0);
    COM_REQUIRE_PTR(dest, 0);
    const Decimal value(*numeval);
    Magnitude m = value.magnitude;
    const int places = MONEY_SCALE - value.scale;
    if (places >= 0) {
        if (!shift_up(m, places, MONEY_LENGTH))
            return 0;
    } else {
        if (-places > CS_MAX_SCALE)
            return 0;
        round_down(m, -places);
    }
    // The smallest money has no positive counterpart.
    if (!is_one_limb(m) || m.at[0] >= MONEY_TOP_BIT + value.negative)
        return 0;
    const limb count = value.negative ? 0 - m.at[0] : m.at[0];
    store(dest, CS_MONEY{static_cast<CS_INT>(count >> 32), static_cast<CS_UINT>(count)});
    return 1;
}

int com__mny8toexctnume(CS_MONEY *mnyptr, CS_BYTE *dest, int destlen, CS_BYTE *precision, CS_BYTE *scale,
                        [[maybe_unused]] int flag) {
    COM_REQUIRE_PTR(mnyptr, NUME_BADVALUE);
    COM_REQUIRE_PTR(dest, NUME_BADVALUE);
    COM_REQUIRE_PTR(precision, NUME_BADVALUE);
    COM_REQUIRE_PTR(scale, NUME_BADVALUE);
    COM_REQUIRE(is_value_length(destlen), NUME_BADVALUE);
    const auto money = load<CS_MONEY>(mnyptr);
    const limb count = static_cast<limb>(static_cast<CS_UINT>(money.mnyhigh)) << 32 | money.mnylow;
    const bool negative = money.mnyhigh < 0;
    if (!is_precision(*precision))
        *precision = precision_of_length(destlen);
    if (*scale > CS_MAX_SCALE)
        *scale = 0;

    Magnitude m = {{negative ? 0 - count : count, 0, 0, 0}};
    if (*scale < MONEY_SCALE)
        round_down(m, MONEY_SCALE - *scale);
    else if (!shift_up(m, *scale - MONEY_SCALE, CS_MAX_NUMLEN))
        return NUME_OVERFLOW;
    // The sign is that of the money, also where its digits have gone: callers see -0.0001 become minus zero.
    dest[0] = negative;
    if (!store_magnitude(m, dest + 1, destlen - 1))
        return NUME_OVERFLOW;
    return passes_precision(m, *precision) ? NUME_OVERFLOW : NUME_OK;
}
