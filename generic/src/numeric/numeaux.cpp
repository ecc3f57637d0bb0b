// Rounding, ceiling and floor of records.
#include "numeric/record.h"

namespace dlx {
namespace {

// magnitude / 10^count for any count; the last digit cut (the most significant one), and whether any digit cut
// was not zero.
struct CutDigits {
    int last;
    bool any;
};

template <int N>
CutDigits cut_with_last_digit(Number<N> &number, int count) {
    CutDigits cut = {0, false};
    for (; count > 1; count -= std::min(count - 1, CS_MAX_SCALE))
        cut.any |= cut_digits(number, std::min(count - 1, CS_MAX_SCALE));
    if (count == 1) {
        const Limbs<N> before = number.magnitude;
        if (cut_digits(number, 1)) {
            // The low limb suffices: the digit is what ten times the quotient leaves of it.
            cut.last = static_cast<int>(before.at[0] - number.magnitude.at[0] * 10);
            cut.any = true;
        }
    }
    return cut;
}

// magnitude * 10^count for any count, in the low N limbs.
template <int N>
void append_zeros(Limbs<N> &magnitude, int count) {
    for (; count > CS_MAX_SCALE; count -= CS_MAX_SCALE)
        scale_up(magnitude, CS_MAX_SCALE);
    scale_up(magnitude, count);
}

} // namespace
} // namespace dlx

void com__exctnume_round(__CONSTANT *op, CS_INT scale, __CONSTANT *result) {
    COM_REQUIRE_RECORD(op);
    COM_REQUIRE_RECORD(result);
    scale = std::clamp(scale, -CS_MAX_SCALE, CS_MAX_SCALE);
    // Up to the point at most as many digits go as the value claims to have: a value whose scale passes its
    // precision keeps digits that its callers expect to see. 0.009 of precision 1 and scale 3 rounds to 0.010.
    int dropped = op->scale - scale;
    if (scale <= 0)
        dropped = std::min<int>(dropped, op->prec);

    dlx::with_limbs_for(std::max(op->len, result->len), [&](auto limbs) {
        constexpr int N = limbs;
        dlx::Number<N> number = dlx::load_number<N>(*op);
        const bool negative = number.negative;
        if (op->scale > scale) {
            if (dlx::cut_with_last_digit(number, dropped).last > 4) {
                dlx::Limbs<N> one = {};
                one.at[0] = 1;
                dlx::add_limbs(number.magnitude, number.magnitude, one);
            }
            dlx::append_zeros(number.magnitude, dropped);
        }
        number.negative = negative;
        dlx::store_number(number, *result);
        // Of an overflow nobody hears, so the sign goes by the bytes that were kept.
        if (result->len != 0 && com__exctnume_intcmp(result, 0) != 0)
            result->value[0] = 0;
    });
}

void com__exctnume_ceilingfloor(__CONSTANT *op, __CONSTANT *result, int type) {
    COM_REQUIRE_RECORD(op);
    COM_REQUIRE_PTR(result);
    if (op->len != 0)
        COM_REQUIRE_PTR(result->value);
    dlx::with_limbs_for(op->len, [&](auto limbs) {
        constexpr int N = limbs;
        dlx::Number<N> number = dlx::load_number<N>(*op);
        const bool negative = number.negative;
        const bool away_from_zero = (type != 0) != negative;
        if (dlx::cut_with_last_digit(number, op->scale).any && away_from_zero) {
            dlx::Limbs<N> one = {};
            one.at[0] = 1;
            dlx::add_limbs(number.magnitude, number.magnitude, one);
        }
        number.negative = negative && !is_zero(number.magnitude);
        result->len = op->len;
        result->prec = op->prec;
        result->scale = 0;
        dlx::store_number(number, *result);
    });
}
