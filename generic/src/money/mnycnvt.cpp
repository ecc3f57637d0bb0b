// Money to and from the other money type, integers and floats.
//
// Whole units are counts divided by MONEY_UNIT, rounded half away from zero. The sign of money to an unsigned integer
// is judged before rounding: -0.4 is as much out of range as -1.

#include "money/count.h"

#include <cmath>
#include <type_traits>

namespace dlx {
namespace {

// ---- Widths ----

int narrow(Count count, CS_MONEY4 *to) {
    CS_INT word;
    const bool fits = narrow_count(count, word);
    store(to, word);
    return fits ? static_cast<int>(sizeof(CS_MONEY4)) : -1;
}

// ---- Integers ----

// The whole units of an integer as a count. NUME_OVERFLOW leaves the integer itself, unscaled; an unsigned one above
// the largest count becomes that first.
template <class Integer>
int count_of_integer(Integer value, Count &count) {
    if constexpr (std::is_same_v<Integer, CS_UBIGINT>)
        count = static_cast<Count>(value > static_cast<limb>(LARGEST_COUNT) ? LARGEST_COUNT : value);
    else
        count = value;
    return scale_count(count, MONEY_UNIT, 0);
}

template <class Integer>
int integer_to_money(const Integer *value, CS_MONEY *money) {
    Count count;
    const int code = count_of_integer(load<Integer>(value), count);
    store_count(money, count);
    return code;
}

// Only the narrowing is judged: an integer that cannot even be scaled is left as it is by the first step, and is
// far outside the narrow range in that form too.
template <class Integer>
int integer_to_money4(const Integer *value, CS_MONEY4 *money) {
    Count count;
    count_of_integer(load<Integer>(value), count);
    return narrow(count, money) < 0 ? NUME_OVERFLOW : NUME_OK;
}

// The nearest whole units of the magnitude: at most 922337203685478.
limb rounded_units(limb magnitude) { return (magnitude + MONEY_UNIT / 2) / MONEY_UNIT; }

template <class Integer>
int count_to_integer(Count count, Integer *to) {
    using Limits = std::numeric_limits<Integer>;
    if constexpr (!Limits::is_signed)
        if (count < 0)
            return NUME_OVERFLOW;
    const Count units = signed_count(rounded_units(magnitude_of(count)), count < 0);
    if constexpr (sizeof(Integer) < sizeof(Count)) {
        if (units < Limits::min() || units > Limits::max()) {
            store(to, units < 0 ? Limits::min() : Limits::max());
            return NUME_OVERFLOW;
        }
    }
    store(to, static_cast<Integer>(units));
    return NUME_OK;
}

// ---- Floats ----

constexpr int FLOAT_FAILED = -1;

constexpr double WHOLE_OF_HIGH_WORD = 429496.7296; // what one in mnyhigh is worth
constexpr double COUNTS_PER_WHOLE = 10000.0;
constexpr double HALF_COUNT = 5e-05;
constexpr double TOP_OF_MONEY = 922337203685477.6;

double money_to_double(const void *money) {
    const Count count = load_count(money);
    const auto high = static_cast<CS_INT>(count >> 32);
    const auto low = static_cast<CS_UINT>(count);
    return low / COUNTS_PER_WHOLE + WHOLE_OF_HIGH_WORD * high;
}

// The nearest count, half up on the magnitude; false, with count as it was, for a value outside the range and for one
// that is no number.
//
// The two words are taken one after the other in double arithmetic, each step as it is written here: the bits of the
// result are part of the contract. From 2^39 on a double no longer tells ten-thousandths apart, and what is taken off
// for the high word may pass the value by a rounding. The low word is then the two's complement of a small negative
// number, and the result lies 429496.7296 above the value. That is rare, but callers see it.
bool double_to_count(double value, Count &count) {
    double rest = std::fabs(value) + HALF_COUNT;
    if (!(rest <= TOP_OF_MONEY))
        return false;
    Count magnitude = LARGEST_COUNT;
    if (rest != TOP_OF_MONEY) {
        // Below the top the quotient stays below 2^31.
        const auto high = static_cast<CS_INT>(rest / WHOLE_OF_HIGH_WORD);
        rest -= WHOLE_OF_HIGH_WORD * high;
        rest *= COUNTS_PER_WHOLE;
        // Wider than the word, since the rest has the word's whole unsigned range.
        const auto low = static_cast<CS_UINT>(static_cast<std::int64_t>(rest));
        magnitude = static_cast<Count>(static_cast<limb>(high) << 32 | low);
    }
    count = value < 0 ? -magnitude : magnitude;
    return true;
}

// Money from the float at src; no float there is zero. False leaves zero.
template <class Float>
bool float_to_count(const CS_BYTE *src, int srclen, Count &count) {
    count = 0;
    return src == nullptr || srclen == 0 || double_to_count(load<Float>(src), count);
}

template <class Float>
int float_to_money(const CS_BYTE *src, int srclen, CS_BYTE *dest) {
    Count count;
    const bool done = float_to_count<Float>(src, srclen, count);
    store_count(dest, count);
    return done ? static_cast<int>(sizeof(CS_MONEY)) : FLOAT_FAILED;
}

template <class Float>
int float_to_money4(const CS_BYTE *src, int srclen, CS_BYTE *dest) {
    Count count;
    const bool done = float_to_count<Float>(src, srclen, count);
    const int width = narrow(count, reinterpret_cast<CS_MONEY4 *>(dest));
    return done ? width : FLOAT_FAILED;
}

template <class Float>
int store_float(double value, CS_BYTE *dest) {
    store(dest, static_cast<Float>(value));
    return sizeof(Float);
}

double money4_to_double(const CS_BYTE *src) { return load<CS_INT>(src) / COUNTS_PER_WHOLE; }

} // namespace
} // namespace dlx

using namespace dlx;

// ---- Between the two money types ----

void com__mny4tomny(CS_MONEY4 *m4p, CS_MONEY *mp) {
    if (has_operands(COM_HERE, m4p, mp))
        store_count(mp, load<CS_INT>(m4p));
}
int com__mnytomny4(CS_MONEY *mp, CS_MONEY4 *m4p) {
    return has_operands(COM_HERE, mp, m4p) ? narrow(load_count(mp), m4p) : -1;
}

// ---- From integers ----

int com__inttomny(CS_MONEY *mp, CS_INT *value) {
    return has_operands(COM_HERE, mp, value) ? integer_to_money(value, mp) : NUME_OVERFLOW;
}
int com__int8tomny(CS_MONEY *mp, CS_BIGINT *value) {
    return has_operands(COM_HERE, mp, value) ? integer_to_money(value, mp) : NUME_OVERFLOW;
}
int com__uinttomny(CS_MONEY *mp, CS_UINT *value) {
    return has_operands(COM_HERE, mp, value) ? integer_to_money(value, mp) : NUME_OVERFLOW;
}
int com__uint8tomny(CS_MONEY *mp, CS_UBIGINT *value) {
    return has_operands(COM_HERE, mp, value) ? integer_to_money(value, mp) : NUME_OVERFLOW;
}
int com__inttomny4(CS_MONEY4 *m4p, CS_INT *value) {
    return has_operands(COM_HERE, m4p, value) ? integer_to_money4(value, m4p) : NUME_OVERFLOW;
}
int com__int8tomny4(CS_MONEY4 *m4p, CS_BIGINT *value) {
    return has_operands(COM_HERE, m4p, value) ? integer_to_money4(value, m4p) : NUME_OVERFLOW;
}
int com__uinttomny4(CS_MONEY4 *m4p, CS_UINT *value) {
    return has_operands(COM_HERE, m4p, value) ? integer_to_money4(value, m4p) : NUME_OVERFLOW;
}
int com__uint8tomny4(CS_MONEY4 *m4p, CS_UBIGINT *value) {
    return has_operands(COM_HERE, m4p, value) ? integer_to_money4(value, m4p) : NUME_OVERFLOW;
}

// ---- To integers ----

int com__mnytoint(CS_MONEY *mp, CS_INT *ip) {
    return has_operands(COM_HERE, mp, ip) ? count_to_integer(load_count(mp), ip) : NUME_OVERFLOW;
}
int com__mnytoint8(CS_MONEY *mp, CS_BIGINT *ip) {
    return has_operands(COM_HERE, mp, ip) ? count_to_integer(load_count(mp), ip) : NUME_OVERFLOW;
}
int com__mnytouint(CS_MONEY *mp, CS_UINT *ip) {
    return has_operands(COM_HERE, mp, ip) ? count_to_integer(load_count(mp), ip) : NUME_OVERFLOW;
}
int com__mnytouint8(CS_MONEY *mp, CS_UBIGINT *ip) {
    return has_operands(COM_HERE, mp, ip) ? count_to_integer(load_count(mp), ip) : NUME_OVERFLOW;
}
int com__mny4toint(CS_MONEY4 *m4p, CS_INT *ip) {
    return has_operands(COM_HERE, m4p, ip) ? count_to_integer(load<CS_INT>(m4p), ip) : NUME_OVERFLOW;
}
int com__mny4toint8(CS_MONEY4 *m4p, CS_BIGINT *ip) {
    return has_operands(COM_HERE, m4p, ip) ? count_to_integer(load<CS_INT>(m4p), ip) : NUME_OVERFLOW;
}
int com__mny4touint(CS_MONEY4 *m4p, CS_UINT *ip) {
    return has_operands(COM_HERE, m4p, ip) ? count_to_integer(load<CS_INT>(m4p), ip) : NUME_OVERFLOW;
}
int com__mny4touint8(CS_MONEY4 *m4p, CS_UBIGINT *ip) {
    return has_operands(COM_HERE, m4p, ip) ? count_to_integer(load<CS_INT>(m4p), ip) : NUME_OVERFLOW;
}

// ---- To floats ----

int com__mnytoflt8(CS_BYTE *src, int, CS_BYTE *dest, int, int) {
    return has_operands(COM_HERE, src, dest) ? store_float<CS_FLOAT>(money_to_double(src), dest) : FLOAT_FAILED;
}
int com__mnytoflt4(CS_BYTE *src, int, CS_BYTE *dest, int, int) {
    return has_operands(COM_HERE, src, dest) ? store_float<CS_REAL>(money_to_double(src), dest) : FLOAT_FAILED;
}
int com__mny4toflt8(CS_BYTE *src, CS_BYTE *dest) {
    return has_operands(COM_HERE, src, dest) ? store_float<CS_FLOAT>(money4_to_double(src), dest) : FLOAT_FAILED;
}
int com__mny4toflt4(CS_BYTE *src, CS_BYTE *dest) {
    return has_operands(COM_HERE, src, dest) ? store_float<CS_REAL>(money4_to_double(src), dest) : FLOAT_FAILED;
}

// ---- From floats ----

int com__flt8tomny(CS_BYTE *src, int srclen, CS_BYTE *dest, int, int) {
    return has_operands(COM_HERE, dest) ? float_to_money<CS_FLOAT>(src, srclen, dest) : FLOAT_FAILED;
}
int com__flt4tomny(CS_BYTE *src, int srclen, CS_BYTE *dest, int, int) {
    return has_operands(COM_HERE, dest) ? float_to_money<CS_REAL>(src, srclen, dest) : FLOAT_FAILED;
}
int com__flt8tomny4(CS_BYTE *src, int srclen, CS_BYTE *dest, int) {
    return has_operands(COM_HERE, dest) ? float_to_money4<CS_FLOAT>(src, srclen, dest) : FLOAT_FAILED;
}
int com__flt4tomny4(CS_BYTE *src, int srclen, CS_BYTE *dest, int) {
    return has_operands(COM_HERE, dest) ? float_to_money4<CS_REAL>(src, srclen, dest) : FLOAT_FAILED;
}
