// The ground of exact arithmetic: the tables of lengths and powers, order and copies of records, rescaling, and
// the small steps by ten and by one.
//
// A record's value is a sign byte, zero for positive and anything else for negative, and a big-endian base-256
// magnitude behind it. The small steps work on the bytes where they stand; all else loads them into limbs.
#include "numeric/record.h"

#include <cstring>

namespace dlx {
namespace {

constexpr int SMALLEST_LENGTH = 2; // sign and one byte
constexpr int NO_PRECISION = 255;

constexpr unsigned char length_of(int precision) {
    return static_cast<unsigned char>(1 + BYTES_OF_PRECISION[precision]);
}

constexpr unsigned char precision_of(int length) {
    if (length > CS_MAX_NUMLEN)
        return NO_PRECISION;
    int precision = CS_MAX_PREC;
    while (length_of(precision) > length)
        --precision;
    return static_cast<unsigned char>(precision);
}

// Byte `i` of a row of the power table: the length, the sign, the magnitude, zeros.
constexpr unsigned char power_byte(int exponent, int i) {
    const int length = length_of(exponent);
    if (i == 0)
        return static_cast<unsigned char>(length);
    if (i == 1 || i > length)
        return 0;
    const int place = length - i; // from the low end
    return static_cast<unsigned char>(POWERS_OF_TEN[exponent].at[place / LIMB_BYTES] >> (8 * (place % LIMB_BYTES)));
}

} // namespace
} // namespace dlx

// The tables are plain arrays for C, so their entries are spelled out, ten at a time.
#define TEN_ENTRIES(entry, n)                                                                                          \
    entry((n)), entry((n) + 1), entry((n) + 2), entry((n) + 3), entry((n) + 4), entry((n) + 5), entry((n) + 6),        \
        entry((n) + 7), entry((n) + 8), entry((n) + 9)
#define FOUR_ENTRIES(entry, n) entry((n)), entry((n) + 1), entry((n) + 2), entry((n) + 3)
#define EIGHT_ENTRIES(entry, n) FOUR_ENTRIES(entry, n), FOUR_ENTRIES(entry, (n) + 4)
#define ALL_PRECISIONS(entry)                                                                                          \
    TEN_ENTRIES(entry, 0), TEN_ENTRIES(entry, 10), TEN_ENTRIES(entry, 20), TEN_ENTRIES(entry, 30),                     \
        TEN_ENTRIES(entry, 40), TEN_ENTRIES(entry, 50), TEN_ENTRIES(entry, 60), EIGHT_ENTRIES(entry, 70)
#define LENGTH_ENTRY(p) dlx::length_of(p)
#define PRECISION_ENTRY(i) dlx::precision_of((i) + dlx::SMALLEST_LENGTH)
#define FOUR_BYTES(p, i)                                                                                               \
    dlx::power_byte(p, i), dlx::power_byte(p, (i) + 1), dlx::power_byte(p, (i) + 2), dlx::power_byte(p, (i) + 3)
#define POWER_ENTRY(p)                                                                                                 \
    {                                                                                                                  \
        FOUR_BYTES(p, 0), FOUR_BYTES(p, 4), FOUR_BYTES(p, 8), FOUR_BYTES(p, 12), FOUR_BYTES(p, 16), FOUR_BYTES(p, 20), \
            FOUR_BYTES(p, 24), FOUR_BYTES(p, 28), dlx::power_byte(p, 32), dlx::power_byte(p, 33)                       \
    }

constinit const unsigned char Com__Nume_Prec_To_Len[CS_MAX_PREC + 1] = {ALL_PRECISIONS(LENGTH_ENTRY)};

constinit const unsigned char Com__Nume_Len_To_Prec[35] = {
    TEN_ENTRIES(PRECISION_ENTRY, 0), TEN_ENTRIES(PRECISION_ENTRY, 10), TEN_ENTRIES(PRECISION_ENTRY, 20),
    FOUR_ENTRIES(PRECISION_ENTRY, 30), PRECISION_ENTRY(34)};

constinit const unsigned char Com__Nume_Byte_Power_Array[CS_MAX_PREC + 1][34] = {ALL_PRECISIONS(POWER_ENTRY)};

namespace dlx {
namespace {

constexpr int ORDER_SIGNED = 1;
constexpr int ORDER_ALIGNED = 2;

constexpr CS_BYTE LAST_BYTE_BEFORE_WRAP = 255;

// The order of the big-endian magnitudes, which is that of their bytes.
int compare_magnitudes(const __CONSTANT &a, const __CONSTANT &b) {
    const int a_bytes = magnitude_bytes(a);
    const int b_bytes = magnitude_bytes(b);
    const int surplus = a_bytes - b_bytes;
    for (int i = 0; i < surplus; ++i)
        if (a.value[1 + i] != 0)
            return 1;
    for (int i = 0; i < -surplus; ++i)
        if (b.value[1 + i] != 0)
            return -1;
    const int common = surplus < 0 ? a_bytes : b_bytes;
    if (common == 0)
        return 0;
    const int order = std::memcmp(a.value + a.len - common, b.value + b.len - common, static_cast<std::size_t>(common));
    return order < 0 ? -1 : order > 0;
}

// number / 10^places for any count of places.
template <int N>
void cut_all_digits(Number<N> &number, int places) {
    for (; places > CS_MAX_SCALE; places -= CS_MAX_SCALE)
        cut_digits(number, CS_MAX_SCALE);
    cut_digits(number, places);
}

// The order of the magnitudes at one scale. Where 77 digits hold the coarser operand at the finer scale it is
// scaled up; else the finer one loses its surplus digits, so that values which differ only there compare equal.
int compare_at_one_scale(const __CONSTANT &a, const __CONSTANT &b) {
    return with_limbs_for(std::max(a.len, b.len), [&](auto limbs) {
        constexpr int N = limbs;
        const bool a_is_fine = a.scale > b.scale;
        const __CONSTANT &fine = a_is_fine ? a : b;
        const __CONSTANT &coarse = a_is_fine ? b : a;
        const int places = fine.scale - coarse.scale;
        Number<N + POWER_LIMBS> fine_number = load_number<N + POWER_LIMBS>(fine);
        Number<N + POWER_LIMBS> coarse_number = load_number<N + POWER_LIMBS>(coarse);
        if (coarse.prec + fine.scale <= CS_MAX_PREC)
            scale_up(coarse_number.magnitude, places);
        else
            cut_all_digits(fine_number, places);
        const int order = compare_limbs(fine_number.magnitude.at, significant_limbs(fine_number.magnitude),
                                        coarse_number.magnitude.at, significant_limbs(coarse_number.magnitude));
        return a_is_fine ? order : -order;
    });
}

bool magnitude_is_zero(const __CONSTANT &record) {
    for (int i = 1; i < record.len; ++i)
        if (record.value[i] != 0)
            return false;
    return true;
}

// Magnitude plus one; false when all bytes wrapped.
bool increment(const __CONSTANT &record) {
    for (int i = record.len - 1; i >= 1; --i)
        if (++record.value[i] != 0)
            return true;
    return false;
}

// Magnitude minus one; the magnitude is not zero.
void decrement(const __CONSTANT &record) {
    for (int i = record.len - 1; i >= 1; --i)
        if (record.value[i]-- != 0)
            return;
}

// What one below zero is.
void set_minus_one(const __CONSTANT &record) {
    std::memset(record.value, 0, static_cast<std::size_t>(record.len));
    record.value[record.len - 1] = 1;
    record.value[0] = 1;
}

} // namespace
} // namespace dlx

CS_INT comn_num_getlen(CS_INT precision) {
    COM_REQUIRE(precision >= 1 && precision <= CS_MAX_PREC, CS_FAIL);
    return Com__Nume_Prec_To_Len[precision];
}

CS_INT comn_num_getprec(CS_INT length) {
    COM_REQUIRE(length >= 0 && length <= CS_MAX_NUMLEN, CS_FAIL);
    // Lengths that hold no magnitude pass, and hold no digit.
    return length < dlx::SMALLEST_LENGTH ? 0 : Com__Nume_Len_To_Prec[length - dlx::SMALLEST_LENGTH];
}

int com__exctnume_cmp(__CONSTANT *op1, __CONSTANT *op2, int flag) {
    COM_REQUIRE_RECORD(op1, 0);
    COM_REQUIRE_RECORD(op2, 0);
    int direction = 1;
    if ((flag & dlx::ORDER_SIGNED) != 0) {
        const bool negative = dlx::is_negative(*op1);
        if (negative != dlx::is_negative(*op2)) {
            // Zeros are equal whatever their signs.
            if (dlx::magnitude_is_zero(*op1) && dlx::magnitude_is_zero(*op2))
                return 0;
            return negative ? -1 : 1;
        }
        if (negative)
            direction = -1;
    }
    if ((flag & dlx::ORDER_ALIGNED) != 0 && op1->scale != op2->scale)
        return direction * dlx::compare_at_one_scale(*op1, *op2);
    return direction * dlx::compare_magnitudes(*op1, *op2);
}

int com__exctnume_intcmp(__CONSTANT *val, int i) {
    COM_REQUIRE_RECORD(val, 0);
    int high = 0;
    for (int at = 1; at < val->len - 1; ++at)
        high |= val->value[at];
    const int last = val->len > 1 ? val->value[val->len - 1] : 0;
    return high == 0 && last == i;
}

int com__exctnume_copy(__CONSTANT *inval, __CONSTANT *outval) {
    COM_REQUIRE_RECORD(inval, NUME_OVERFLOW);
    COM_REQUIRE_RECORD(outval, NUME_OVERFLOW);
    const int in_bytes = dlx::magnitude_bytes(*inval);
    const int out_bytes = dlx::magnitude_bytes(*outval);
    const int common = std::min(in_bytes, out_bytes);
    bool dropped = false;
    for (int i = 0; i < in_bytes - out_bytes; ++i)
        dropped |= inval->value[1 + i] != 0;
    if (outval->len == 0)
        return dropped;

    // The two may share memory: everything is read before the bytes around the magnitude are written.
    const CS_BYTE sign = inval->len != 0 ? inval->value[0] : 0;
    if (common != 0)
        std::memmove(outval->value + outval->len - common, inval->value + inval->len - common,
                     static_cast<std::size_t>(common));
    if (out_bytes > common)
        std::memset(outval->value + 1, 0, static_cast<std::size_t>(out_bytes - common));
    outval->value[0] = sign;
    return dropped;
}

int com__exctnume_scale(__CONSTANT *inval, __CONSTANT *outval, int scale, int /*statflag*/) {
    COM_REQUIRE_RECORD(inval, NUME_BADVALUE);
    if (outval != nullptr)
        COM_REQUIRE_RECORD(outval, NUME_BADVALUE);
    if (scale == 0)
        return outval != nullptr ? com__exctnume_copy(inval, outval) : NUME_OK;
    if (scale > CS_MAX_SCALE || scale < -CS_MAX_SCALE)
        return NUME_BADVALUE;
    const __CONSTANT &out = outval != nullptr ? *outval : *inval;
    return dlx::with_limbs_for(std::max(inval->len, out.len), [&](auto limbs) {
        constexpr int N = limbs;
        dlx::Number<N> number = dlx::load_number<N>(*inval);
        const int code = dlx::rescale(number, inval->len, scale, dlx::room_of(out));
        dlx::store_number(number, out);
        return code;
    });
}

int com__exctnume_checkprecision(__CONSTANT *val) {
    COM_REQUIRE_RECORD(val, NUME_OVERFLOW);
    return dlx::with_limbs_for(val->len, [&](auto limbs) -> int {
        return dlx::passes_precision(dlx::load_number<limbs>(*val).magnitude, val->prec);
    });
}

int com__exctnume_divby10(CS_BYTE **ptrtobufptr, int *lenptr) {
    COM_REQUIRE_PTR(ptrtobufptr, 0);
    COM_REQUIRE_PTR(*ptrtobufptr, 0);
    COM_REQUIRE_PTR(lenptr, 0);
    COM_REQUIRE(*lenptr >= 0, 0);
    CS_BYTE *bytes = *ptrtobufptr;
    const int length = *lenptr;

    dlx::limb remainder = 0;
    int at = length % dlx::LIMB_BYTES;
    if (at != 0) {
        const dlx::limb top = dlx::load_partial(bytes, at);
        dlx::store_partial(bytes, at, top / 10);
        remainder = top % 10;
    }
    for (; at != length; at += dlx::LIMB_BYTES)
        dlx::store_big_endian(bytes + at, dlx::divide_two(remainder, dlx::load_big_endian(bytes + at), 10, remainder));

    // A value of 255 in the last two magnitude bytes keeps its zero byte: an increment may follow.
    constexpr int SHORTEST_TO_SHRINK = 3;
    const bool may_grow = length == SHORTEST_TO_SHRINK && bytes[length - 1] == dlx::LAST_BYTE_BEFORE_WRAP;
    if (length >= SHORTEST_TO_SHRINK && bytes[1] == 0 && !may_grow) {
        ++*ptrtobufptr;
        --*lenptr;
    }
    return static_cast<int>(remainder);
}

int com__exctnume_mulby10_add(__CONSTANT *numeval, short i) {
    COM_REQUIRE_RECORD(numeval, NUME_OVERFLOW);
    __int128 carry = i; // signed: a caller may take away as well
    int count = dlx::magnitude_bytes(*numeval);
    for (; count >= dlx::LIMB_BYTES; count -= dlx::LIMB_BYTES) {
        CS_BYTE *word = numeval->value + 1 + count - dlx::LIMB_BYTES;
        carry += static_cast<__int128>(dlx::load_big_endian(word)) * 10;
        dlx::store_big_endian(word, static_cast<dlx::limb>(carry));
        carry >>= 64;
    }
    if (count != 0) {
        carry += static_cast<__int128>(dlx::load_partial(numeval->value + 1, count)) * 10;
        dlx::store_partial(numeval->value + 1, count, static_cast<dlx::limb>(carry));
        carry >>= 8 * count;
    }
    return carry != 0;
}

int com__exctnume_inc(__CONSTANT *numeptr) {
    COM_REQUIRE_RECORD(numeptr, NUME_BADVALUE);
    if (numeptr->len == 0)
        return NUME_BADVALUE;
    if (numeptr->value[0] == 0)
        return dlx::increment(*numeptr) ? NUME_OK : NUME_OVERFLOW;
    if (dlx::magnitude_is_zero(*numeptr)) {
        // Minus zero: without its sign it is stepped down to minus one, and so it stays.
        const CS_BYTE sign = numeptr->value[0];
        dlx::set_minus_one(*numeptr);
        numeptr->value[0] = sign;
        return NUME_OK;
    }
    dlx::decrement(*numeptr);
    if (dlx::magnitude_is_zero(*numeptr))
        numeptr->value[0] = 0;
    return NUME_OK;
}

int com__exctnume_dec(__CONSTANT *numeptr) {
    COM_REQUIRE_RECORD(numeptr, NUME_BADVALUE);
    if (numeptr->len == 0)
        return NUME_BADVALUE;
    if (numeptr->value[0] != 0)
        return dlx::increment(*numeptr) ? NUME_OK : NUME_OVERFLOW;
    if (dlx::magnitude_is_zero(*numeptr))
        dlx::set_minus_one(*numeptr);
    else
        dlx::decrement(*numeptr);
    return NUME_OK;
}

int com__exctnume_needsbyte(__CONSTANT *numeptr) {
    COM_REQUIRE_RECORD(numeptr, 0);
    for (int i = 1; i < numeptr->len; ++i)
        if (numeptr->value[i] != dlx::LAST_BYTE_BEFORE_WRAP)
            return 0;
    return 1;
}
