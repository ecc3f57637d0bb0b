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

// An operand in the common shape. One that has it already is taken as it stands, with all that its bytes hold.
template <int N>
CS_RETCODE align(Number<N> &number, const CS_NUMERIC &operand, const Shape &common) {
    if (operand.precision >= common.precision && operand.scale >= common.scale)
        return CS_SUCCEED;
    return reshape(number, {operand.precision, operand.scale}, common);
}

CS_RETCODE traced(CS_RETCODE status) { return status == CS_SUCCEED ? CS_SUCCEED : COM_TRACE(status); }

// The sum in N limbs, which hold the result's shape and so every value on the way to it.
template <int N>
CS_RETCODE add_or_subtract_values(const CS_NUMERIC &oper1, const CS_NUMERIC &oper2, CS_NUMERIC &result, int operation,
                                  Shape common, Shape shape) {
    Number<N> a = load_number<N>(oper1);
    Number<N> b = load_number<N>(oper2);
    Number<N> sum = {};
    CS_RETCODE status = align(a, oper1, common);
    if (status == CS_SUCCEED)
        status = align(b, oper2, common);
    if (status == CS_SUCCEED)
        status = status_of_code(
            add_or_subtract(a, b, operation, shape.scale - common.scale, room_of(shape), sum));
    write_exactly(result, shape, sum);
    return traced(status);
}

// The product of factors that fit N limbs.
template <int N>
CS_RETCODE multiply_values(const CS_NUMERIC &m1, const CS_NUMERIC &m2, CS_NUMERIC &result, Shape shape) {
    Number<MAGNITUDE_LIMBS> product;
    const int code = multiply(load_number<N>(m1), load_number<N>(m2), m1.precision + m2.precision,
                              shape.scale - (m1.scale + m2.scale), room_of(shape), product);
    write(result, shape, product);
    return traced(status_of_code(code));
}

} // namespace
} // namespace dlx

CS_RETCODE comn_num_addorsub(CS_NUMERIC *oper1, CS_NUMERIC *oper2, CS_NUMERIC *result, int operation) {
    COM_REQUIRE_PTR(oper1, CS_FAIL);
    COM_REQUIRE_PTR(oper2, CS_FAIL);
    COM_REQUIRE_PTR(result, CS_FAIL);
    COM_REQUIRE(operation == dlx::ADD || operation == dlx::SUBTRACT, CS_FAIL);
    if (!dlx::is_valid(*oper1) || !dlx::is_valid(*oper2))
        return COM_TRACE(CS_EDOMAIN);
    const dlx::Shape common = dlx::common_shape(*oper1, *oper2);
    const dlx::Shape shape = dlx::shape_of_sum(common);
    return dlx::with_constant_limbs(dlx::limbs_of_precision(shape.precision), [&](auto limbs) {
        return dlx::add_or_subtract_values<limbs>(*oper1, *oper2, *result, operation, common, shape);
    });
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
    if (!dlx::is_valid(*m1) || !dlx::is_valid(*m2))
        return COM_TRACE(CS_EDOMAIN);
    const dlx::Shape shape = dlx::shape_of_product(*m1, *m2);
    return dlx::with_constant_limbs(
        dlx::limbs_of_precision(std::max(m1->precision, m2->precision)),
        [&](auto limbs) { return dlx::multiply_values<limbs>(*m1, *m2, *result, shape); });
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
    if (!is_zero(b.magnitude)) {
        int remaining;
        code = dlx::divide(a, dlx::length_of_precision(dividend->precision), b,
                           dlx::length_of_precision(divisor->precision),
                           shape.scale - dividend->scale + divisor->scale, dlx::room_of(shape), quotient, remaining);
    }
    dlx::write(*quot, shape, quotient);
    return dlx::traced(dlx::status_of_code(code));
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
