// Arithmetic on public numerics: the shape of each result, and the statuses of the core's codes.
//
// A value goes from its bytes into limbs, through the same rules as the core's records, and back into the bytes
// of the result's shape. Everything is read before anything is written, so a result may be one of its operands.
#include "diag/check.h"
#include "numeric/rescale.h"
#include "numeric/status.h"

#include <algorithm>

namespace dlx {
namespace {

constexpr int ADD = 0;
constexpr int SUBTRACT = 1;
constexpr int LEAST_QUOTIENT_SCALE = 6;

// `whole` digits before the point and `scale` behind it, of which the latter give way when 77 do not hold both.
Shape shape_of(int whole, int scale, int precision) { return {precision, std::min(scale, precision - whole)}; }

// Of two operands that have this shape already: one digit more, for the carry.
Shape shape_of_sum(const Shape &aligned) {
    const int whole = std::clamp(aligned.precision - aligned.scale, 1, CS_MAX_PREC);
    return shape_of(whole, aligned.scale, std::min(aligned.scale + whole + 1, CS_MAX_PREC));
}

Shape shape_of_product(const CS_NUMERIC &a, const CS_NUMERIC &b) {
    const int whole = std::clamp(a.precision - a.scale + b.precision - b.scale + 1, 0, CS_MAX_PREC);
    const int scale = std::min(a.scale + b.scale, CS_MAX_SCALE);
    return shape_of(whole, scale, std::clamp(scale + whole, 1, CS_MAX_PREC));
}

// At least six places, while the digits before the point leave room for them.
Shape shape_of_quotient(const CS_NUMERIC &a, const CS_NUMERIC &b) {
    const int whole = std::clamp(a.precision - a.scale + b.scale, 0, CS_MAX_PREC);
    const int places = a.precision + b.scale;
    const int scale = places < LEAST_QUOTIENT_SCALE ? LEAST_QUOTIENT_SCALE : std::min(places + 1, CS_MAX_SCALE);
    return shape_of(whole, scale, std::min(scale + whole, CS_MAX_PREC));
}

// The shape that holds every digit of both operands, as far as 77 digits go.
Shape common_shape(const CS_NUMERIC &a, const CS_NUMERIC &b) {
    const int scale = std::max(a.scale, b.scale);
    const int whole = std::max(a.precision - a.scale, b.precision - b.scale);
    return {std::min(scale + whole, CS_MAX_PREC), scale};
}

// Brings an operand into the common shape, which has at least its precision and scale. One that has just these is
// taken as it stands, with all that its bytes hold. False when it does not fit.
template <int N>
[[gnu::always_inline]] inline bool align(Number<N> &number, const CS_NUMERIC &operand, const Shape &common) {
    const int places = common.scale - operand.scale;
    if (places == 0)
        return operand.precision == common.precision || !passes_precision(number.magnitude, common.precision);
    const bool fitting = scale_up(number.magnitude, places);
    number.negative &= !is_zero(number.magnitude);
    return fitting && !passes_precision(number.magnitude, common.precision);
}

// Adds aligned numbers into the result's shape, whose values take FEWEST to N limbs.
template <int FEWEST, int N>
[[gnu::always_inline]] inline CS_RETCODE add_aligned(const Number<N> &a, const Number<N> &b, CS_NUMERIC &result,
                                                     int operation, int places, const Shape &shape) {
    Number<N> sum;
    const int code = add_or_subtract(a, b, operation, places, room_of(shape), sum);
    write<FEWEST>(result, shape, sum);
    return code == NUME_OK ? CS_SUCCEED : COM_TRACE(status_of_code(code));
}

// What most sums are: operands of one shape that leaves room for a digit more, before the point too.
bool is_plain_sum(const CS_NUMERIC &a, const CS_NUMERIC &b) {
    return a.precision == b.precision && a.scale == b.scale && a.scale < a.precision && a.precision < CS_MAX_PREC;
}

// Such a sum of values that take L limbs: nothing is to be aligned or rescaled.
template <int L>
[[gnu::noinline]] CS_RETCODE add_plainly(const CS_NUMERIC &a, const CS_NUMERIC &b, CS_NUMERIC &result, int operation) {
    constexpr int N = std::min(L + 1, MAGNITUDE_LIMBS); // the sum may need one more
    const int bytes = BYTES_OF_PRECISION[a.precision];
    const Number<N> x = {resize<N, L>(load_value_exactly<L>(a, bytes).at), a.array[0] != 0};
    const Number<N> y = {resize<N, L>(load_value_exactly<L>(b, bytes).at), b.array[0] != 0};
    return add_aligned<L>(x, y, result, operation, 0, {a.precision + 1, a.scale});
}

// Operands of any shapes.
[[gnu::noinline]] CS_RETCODE align_and_add(const CS_NUMERIC &oper1, const CS_NUMERIC &oper2, CS_NUMERIC &result,
                                           int operation) {
    const Shape common = common_shape(oper1, oper2);
    const Shape shape = shape_of_sum(common);
    // The result has the most digits of all, so its limbs hold every value on the way.
    return with_constant_limbs(limbs_of_precision(shape.precision), [&](auto limbs) {
        constexpr int N = limbs;
        Number<N> a = load_number<N>(oper1);
        Number<N> b = load_number<N>(oper2);
        if (align(a, oper1, common) && align(b, oper2, common))
            return add_aligned<N>(a, b, result, operation, shape.scale - common.scale, shape);
        write<N>(result, shape, Number<N>());
        return COM_TRACE(CS_EOVERFLOW);
    });
}

// Multiplies into the result's shape, whose values take at least FEWEST limbs.
template <int FEWEST, int A, int B>
[[gnu::always_inline]] inline CS_RETCODE multiply_numbers(const Number<A> &a, const Number<B> &b, CS_NUMERIC &result,
                                                          int digits, int places, const Shape &shape) {
    Number<std::max(A, std::max(B, MAGNITUDE_LIMBS))> product;
    const int code = multiply(a, b, digits, places, room_of(shape), product);
    write<FEWEST>(result, shape, product);
    return code == NUME_OK ? CS_SUCCEED : COM_TRACE(status_of_code(code));
}

// What most products are: of factors whose digits, and one more, all have room.
bool is_plain_product(const CS_NUMERIC &m1, const CS_NUMERIC &m2) {
    return m1.scale < m1.precision && m2.scale < m2.precision && m1.precision + m2.precision < CS_MAX_PREC;
}

// Such a product, of a longer factor whose values take A limbs and a shorter one of B: nothing is to be rescaled.
template <int A, int B>
[[gnu::noinline]] CS_RETCODE multiply_plainly(const CS_NUMERIC &longer, const CS_NUMERIC &shorter, CS_NUMERIC &result) {
    const int digits = longer.precision + shorter.precision;
    const Number<A> a = {load_value_exactly<A>(longer, BYTES_OF_PRECISION[longer.precision]), longer.array[0] != 0};
    const Number<B> b = {load_value_exactly<B>(shorter, BYTES_OF_PRECISION[shorter.precision]), shorter.array[0] != 0};
    return multiply_numbers<std::min(A + B - 1, MAGNITUDE_LIMBS)>(a, b, result, digits, 0,
                                                                  {digits + 1, longer.scale + shorter.scale});
}

// The product of any factors.
[[gnu::noinline]] CS_RETCODE multiply_and_rescale(const CS_NUMERIC &m1, const CS_NUMERIC &m2, CS_NUMERIC &result) {
    constexpr int N = MAGNITUDE_LIMBS;
    const Shape shape = shape_of_product(m1, m2);
    return multiply_numbers<1>(load_number<N>(m1), load_number<N>(m2), result, m1.precision + m2.precision,
                               shape.scale - (m1.scale + m2.scale), shape);
}

} // namespace
} // namespace dlx

CS_RETCODE comn_num_addorsub(CS_NUMERIC *oper1, CS_NUMERIC *oper2, CS_NUMERIC *result, int operation) {
    COM_REQUIRE_PTR(oper1, CS_FAIL);
    COM_REQUIRE_PTR(oper2, CS_FAIL);
    COM_REQUIRE_PTR(result, CS_FAIL);
    COM_REQUIRE(operation == dlx::ADD || operation == dlx::SUBTRACT, CS_FAIL);
    if (dlx::is_plain_sum(*oper1, *oper2)) [[likely]]
        return dlx::with_constant_limbs(dlx::limbs_of_precision(oper1->precision), [&](auto limbs) {
            return dlx::add_plainly<limbs>(*oper1, *oper2, *result, operation);
        });
    if (!dlx::is_valid(*oper1) || !dlx::is_valid(*oper2))
        return COM_TRACE(CS_EDOMAIN);
    return dlx::align_and_add(*oper1, *oper2, *result, operation);
}

CS_RETCODE comn_numadd(CS_NUMERIC *add1p, CS_NUMERIC *add2p, CS_NUMERIC *sump) {
    return comn_num_addorsub(add1p, add2p, sump, dlx::ADD);
}

CS_RETCODE comn_numsub(CS_NUMERIC *minp, CS_NUMERIC *subp, CS_NUMERIC *diffp) {
    return comn_num_addorsub(minp, subp, diffp, dlx::SUBTRACT);
}

CS_RETCODE comn_nummul(CS_NUMERIC *m1, CS_NUMERIC *m2, CS_NUMERIC *result) {
    COM_REQUIRE_PTR(m1, CS_FAIL);
    COM_REQUIRE_PTR(m2, CS_FAIL);
    COM_REQUIRE_PTR(result, CS_FAIL);
    if (dlx::is_plain_product(*m1, *m2)) [[likely]] {
        const CS_NUMERIC &longer = m1->precision >= m2->precision ? *m1 : *m2;
        const CS_NUMERIC &shorter = m1->precision >= m2->precision ? *m2 : *m1;
        return dlx::with_constant_limbs(dlx::limbs_of_precision(longer.precision), [&](auto a_limbs) {
            return dlx::with_constant_limbs(dlx::limbs_of_precision(shorter.precision), [&](auto b_limbs) {
                // 76 digits leave no longer pairs.
                constexpr int A = a_limbs;
                constexpr int B = std::min({int{b_limbs}, A, dlx::MAGNITUDE_LIMBS + 1 - A});
                return dlx::multiply_plainly<A, B>(longer, shorter, *result);
            });
        });
    }
    if (!dlx::is_valid(*m1) || !dlx::is_valid(*m2))
        return COM_TRACE(CS_EDOMAIN);
    return dlx::multiply_and_rescale(*m1, *m2, *result);
}

CS_RETCODE comn_numdivide(CS_NUMERIC *dividend, CS_NUMERIC *divisor, CS_NUMERIC *quot) {
    constexpr int N = dlx::MAGNITUDE_LIMBS;
    COM_REQUIRE_PTR(dividend, CS_FAIL);
    COM_REQUIRE_PTR(divisor, CS_FAIL);
    COM_REQUIRE_PTR(quot, CS_FAIL);
    if (!dlx::is_valid(*dividend) || !dlx::is_valid(*divisor))
        return COM_TRACE(CS_EDOMAIN);
    const dlx::Shape shape = dlx::shape_of_quotient(*dividend, *divisor);
    const dlx::Number<N> a = dlx::load_number<N>(*dividend);
    const dlx::Number<N> b = dlx::load_number<N>(*divisor);
    dlx::Number<N> quotient = {};
    int code = NUME_DIVZERO; // of every zero, also where the scaled operands would not fit the division
    if (!is_zero(b.magnitude))
        code = dlx::divide(a, dlx::length_of_precision(dividend->precision), b,
                           dlx::length_of_precision(divisor->precision), shape.scale - dividend->scale + divisor->scale,
                           dlx::room_of(shape), quotient, nullptr);
    dlx::write<1>(*quot, shape, quotient);
    return code == NUME_OK ? CS_SUCCEED : COM_TRACE(dlx::status_of_code(code));
}

int comn_numcmp(CS_NUMERIC *n1, CS_NUMERIC *n2) {
    constexpr int SIGNED_AND_ALIGNED = 3;
    COM_REQUIRE_PTR(n1, 0);
    COM_REQUIRE_PTR(n2, 0);
    __CONSTANT op1 = {};
    __CONSTANT op2 = {};
    op1.len = comn_num_getlen(n1->precision);
    op2.len = comn_num_getlen(n2->precision);
    if (op1.len == CS_FAIL || op2.len == CS_FAIL)
        return 0;
    op1.prec = n1->precision;
    op1.scale = n1->scale;
    op1.value = n1->array;
    op2.prec = n2->precision;
    op2.scale = n2->scale;
    op2.value = n2->array;
    return com__exctnume_cmp(&op1, &op2, SIGNED_AND_ALIGNED);
}
