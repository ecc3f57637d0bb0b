// The four operations on records: magnitudes alone (com__exctnume_int...), and signed values at a scale.
#include "numeric/record.h"

#include <cstring>

namespace dlx {
namespace {

// Drops what lies above the low `count` bytes.
template <int N>
void keep_bytes(Limbs<N> &m, int count) {
    const int whole = count / LIMB_BYTES;
    if (whole >= N)
        return;
    m.at[whole] &= (static_cast<limb>(1) << (8 * (count % LIMB_BYTES))) - 1;
    zero_limbs(m.at + whole + 1, N - whole - 1);
}

// Writes a number over `count` bytes that hold it.
void store_run(Run run, CS_BYTE *bytes, int count) {
    for (int i = 0; count > 0; ++i, count -= LIMB_BYTES) {
        const int part = std::min(count, LIMB_BYTES);
        store_partial(bytes + count - part, part, i < run.count ? run.at[i] : 0);
    }
}

// A magnitude that came of operands of `length` bytes, to `r`; 1 when it does not fit. The sign byte is written
// only when r is longer, where all of it is.
template <int N>
int store_magnitude_of(const Limbs<N> &m, int length, const __CONSTANT &r) {
    if (r.len > length)
        r.value[0] = 0;
    return r.len <= 1 ? !is_zero(m) : !store_limbs(m, r.value + 1, r.len - 1);
}

} // namespace
} // namespace dlx

int com__exctnume_intadd(__CONSTANT *a, __CONSTANT *b, __CONSTANT *r) {
    COM_REQUIRE_RECORD(a, NUME_OVERFLOW);
    COM_REQUIRE_RECORD(b, NUME_OVERFLOW);
    COM_REQUIRE_RECORD(r, NUME_OVERFLOW);
    const int length = std::max(a->len, b->len);
    return dlx::with_limbs_for(std::max(length, r->len), [&](auto limbs) -> int {
        constexpr int N = limbs;
        dlx::Limbs<N> sum;
        const dlx::limb carry =
            dlx::add_limbs(sum, dlx::load_number<N>(*a).magnitude, dlx::load_number<N>(*b).magnitude);
        return dlx::store_magnitude_of(sum, length, *r) != 0 || carry != 0;
    });
}

int com__exctnume_intsub(__CONSTANT *a, __CONSTANT *b, __CONSTANT *r) {
    COM_REQUIRE_RECORD(a, NUME_OVERFLOW);
    COM_REQUIRE_RECORD(b, NUME_OVERFLOW);
    COM_REQUIRE_RECORD(r, NUME_OVERFLOW);
    const int length = std::max(a->len, b->len);
    return dlx::with_limbs_for(std::max(length, r->len), [&](auto limbs) {
        constexpr int N = limbs;
        dlx::Limbs<N> difference;
        // A minuend that is the smaller wraps around within the operands' bytes.
        if (dlx::subtract_limbs(difference, dlx::load_number<N>(*a).magnitude, dlx::load_number<N>(*b).magnitude) != 0)
            dlx::keep_bytes(difference, length > 0 ? length - 1 : 0);
        return dlx::store_magnitude_of(difference, length, *r);
    });
}

int com__exctnume_intmul(__CONSTANT *a, __CONSTANT *b, __CONSTANT *r) {
    COM_REQUIRE_RECORD(a, NUME_OVERFLOW);
    COM_REQUIRE_RECORD(b, NUME_OVERFLOW);
    COM_REQUIRE_RECORD(r, NUME_OVERFLOW);
    return dlx::with_limbs_for(std::max({a->len, b->len, r->len}), [&](auto limbs) -> int {
        constexpr int N = limbs;
        const dlx::Number<N> x = dlx::load_number<N>(*a);
        const dlx::Number<N> y = dlx::load_number<N>(*b);
        const auto product = dlx::multiply_all(x.magnitude, y.magnitude);
        const bool fits = dlx::fits_bytes(product, dlx::magnitude_bytes(*r));
        const bool negative = fits && x.negative != y.negative && !dlx::is_zero(product);
        dlx::store_number(dlx::Number<2 * N>{product, negative}, *r);
        return !fits;
    });
}

int com__exctnume_intdiv(__CONSTANT *a, __CONSTANT *b, __CONSTANT *q, __CONSTANT *r) {
    COM_REQUIRE_RECORD(a, NUME_BADVALUE);
    COM_REQUIRE_RECORD(b, NUME_BADVALUE);
    COM_REQUIRE_PTR(q, NUME_BADVALUE);
    COM_REQUIRE(q->len >= 0, NUME_BADVALUE);
    if (q->len != 0)
        COM_REQUIRE_PTR(q->value, NUME_BADVALUE);
    COM_REQUIRE_PTR(r, NUME_BADVALUE);
    return dlx::with_limbs_for(std::max(a->len, b->len), [&](auto limbs) -> int {
        constexpr int N = limbs;
        const dlx::Limbs<N> dividend = dlx::load_number<N>(*a).magnitude;
        const dlx::Limbs<N> divisor = dlx::load_number<N>(*b).magnitude;
        const int a_bytes = significant_bytes(dividend);
        const int b_bytes = significant_bytes(divisor);
        if (b_bytes == 0)
            return NUME_DIVZERO;

        dlx::Division<N> division;
        dlx::divide_magnitudes(dlx::run_of(dividend), dlx::run_of(divisor), division);
        if (division.quotient_count == 0) {
            q->len = 0;
            r->len = a_bytes != 0 ? a_bytes + 1 : 0;
            r->value = a->len != 0 ? a->value + a->len - a_bytes - 1 : a->value;
            return NUME_OK;
        }
        if (a_bytes + 1 > q->len)
            return NUME_OVERFLOW;

        // At the end of q's buffer: the quotient over all bytes that it could have, then the remainder over the
        // divisor's.
        CS_BYTE *const end = q->value + q->len;
        const int quotient_room = a_bytes - b_bytes + 1;
        dlx::store_run({division.quotient, division.quotient_count}, end - b_bytes - quotient_room, quotient_room);
        dlx::store_run({division.remainder, division.remainder_count}, end - b_bytes, b_bytes);

        // A quotient that fills all of q points one byte ahead of the buffer: there is no sign byte to use then.
        const int quotient_bytes = dlx::significant_bytes(division.quotient, division.quotient_count);
        q->value = end - b_bytes - quotient_bytes - 1;
        q->len = quotient_bytes + 1;
        r->len = dlx::remainder_length(division, dlx::run_of(divisor));
        r->value = end - std::max(r->len, 1);
        return NUME_OK;
    });
}

int com__exctnume_addorsub(__CONSTANT *op1, __CONSTANT *op2, __CONSTANT *result, int opn) {
    COM_REQUIRE_RECORD(op1, NUME_BADVALUE);
    COM_REQUIRE_RECORD(op2, NUME_BADVALUE);
    COM_REQUIRE_RECORD(result, NUME_BADVALUE);
    return dlx::with_limbs_for(std::max({op1->len, op2->len, result->len}), [&](auto limbs) {
        constexpr int N = limbs;
        dlx::Number<N> sum;
        const int code = dlx::add_or_subtract(dlx::load_number<N>(*op1), dlx::load_number<N>(*op2), opn,
                                              result->scale - op1->scale, dlx::room_of(*result), sum);
        dlx::store_number(sum, *result);
        return code;
    });
}

int com__exctnume_mul(__CONSTANT *op1, __CONSTANT *op2, __CONSTANT *res) {
    COM_REQUIRE_RECORD(op1, NUME_BADVALUE);
    COM_REQUIRE_RECORD(op2, NUME_BADVALUE);
    COM_REQUIRE_RECORD(res, NUME_BADVALUE);
    return dlx::with_limbs_for(std::max({op1->len, op2->len, res->len}), [&](auto limbs) {
        constexpr int N = limbs;
        dlx::Number<N> product;
        const int code = dlx::multiply(dlx::load_number<N>(*op1), dlx::load_number<N>(*op2), op1->prec + op2->prec,
                                       res->scale - (op1->scale + op2->scale), dlx::room_of(*res), product);
        dlx::store_number(product, *res);
        return code;
    });
}

int com__exctnume_div(__CONSTANT *op1, __CONSTANT *op2, __CONSTANT *quot, __CONSTANT *remdr) {
    COM_REQUIRE_RECORD(op1, NUME_BADVALUE);
    COM_REQUIRE_RECORD(op2, NUME_BADVALUE);
    COM_REQUIRE_RECORD(quot, NUME_BADVALUE);
    const int places = quot->scale - op1->scale + op2->scale;
    return dlx::with_limbs_for(std::max({op1->len, op2->len, quot->len}), [&](auto limbs) {
        constexpr int N = limbs;
        dlx::Number<N> quotient = {};
        const int code = dlx::divide(dlx::load_number<N>(*op1), op1->len, dlx::load_number<N>(*op2), op2->len, places,
                                     dlx::room_of(*quot), quotient, remdr != nullptr ? &remdr->len : nullptr);
        // The remainder's bytes lay in work memory that is gone. A division refused for its places had none.
        if (remdr != nullptr && places >= -CS_MAX_SCALE && places <= CS_MAX_SCALE)
            remdr->value = nullptr;
        if (code == NUME_OK)
            dlx::store_number(quotient, *quot);
        return code;
    });
}
