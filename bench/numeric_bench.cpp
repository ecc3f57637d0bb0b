// Arithmetic of numerics. Integer peers are scaled by hand, by ready powers of ten, to the scale of the library's
// result, so that all of them deliver the same digits. They start from and end in their own form of a number, and
// are not asked whether the result fits; what that leaves out shows in the column "GMP on bytes".
#include "peers.h"

#include <cstring>

namespace bench {
namespace {

enum class Operation { ADD, MULTIPLY, DIVIDE };

// Two columns, and what the operation makes of them.
struct Operands {
    Operation operation;
    int left_digits;
    int left_scale;
    int right_digits;
    int right_scale;
    int result_scale;
    std::vector<Decimal> left;
    std::vector<Decimal> right;
    std::vector<Decimal> results;

    Operands(Operation op, int digits1, int scale1, int digits2, int scale2, int scale, std::uint64_t seed)
        : operation(op), left_digits(digits1), left_scale(scale1), right_digits(digits2), right_scale(scale2),
          result_scale(scale), left(decimals(digits1, scale1, seed)), right(decimals(digits2, scale2, seed + 1)) {
        for (std::size_t i = 0; i < VALUES; ++i)
            results.push_back({result_of(left[i].count, right[i].count), scale});
    }

    // Places that the left operand gains before a division, and the right one before an addition.
    int left_shift() const { return operation == Operation::DIVIDE ? result_scale - left_scale + right_scale : 0; }
    int right_shift() const { return operation == Operation::ADD ? result_scale - right_scale : 0; }

private:
    mpz_class result_of(const mpz_class &a, const mpz_class &b) const {
        switch (operation) {
        case Operation::ADD:
            return a + b * power_of_ten(right_shift());
        case Operation::MULTIPLY:
            return a * b;
        default:
            return a * power_of_ten(left_shift()) / b;
        }
    }
};

// ---- Contenders ---------------------------------------------------------------------------------------------

template <Operation OPERATION>
class Library {
public:
    explicit Library(const Operands &data)
        : data_(data),
          left_(column(data.left, [&](const Decimal &value) { return to_numeric(value, data.left_digits); })),
          right_(column(data.right, [&](const Decimal &value) { return to_numeric(value, data.right_digits); })) {}
    void work(std::size_t i) {
        if constexpr (OPERATION == Operation::ADD)
            status_ = comn_numadd(&left_[i], &right_[i], &result_);
        else if constexpr (OPERATION == Operation::MULTIPLY)
            status_ = comn_nummul(&left_[i], &right_[i], &result_);
        else
            status_ = comn_numdivide(&left_[i], &right_[i], &result_);
    }
    bool right(std::size_t i) const {
        return status_ == CS_SUCCEED && result_.scale == data_.result_scale &&
               is_equal(from_numeric(result_), data_.results[i]);
    }

private:
    const Operands &data_;
    std::vector<CS_NUMERIC> left_;
    std::vector<CS_NUMERIC> right_;
    CS_NUMERIC result_ = {};
    CS_RETCODE status_ = CS_FAIL;
};

template <Operation OPERATION>
class GmpArithmetic {
public:
    explicit GmpArithmetic(const Operands &data)
        : data_(data), left_power_(power_of_ten(data.left_shift())), right_power_(power_of_ten(data.right_shift())),
          right_shift_(data.right_shift()) {
        // Room for any of the results: no operation allocates.
        mpz_realloc2(scaled_.get_mpz_t(), 640);
        mpz_realloc2(result_.get_mpz_t(), 640);
    }

protected:
    void operate(mpz_srcptr a, mpz_srcptr b) {
        if constexpr (OPERATION == Operation::ADD) {
            if (right_shift_ != 0) {
                mpz_mul(scaled_.get_mpz_t(), b, right_power_.get_mpz_t());
                b = scaled_.get_mpz_t();
            }
            mpz_add(result_.get_mpz_t(), a, b);
        } else if constexpr (OPERATION == Operation::MULTIPLY) {
            mpz_mul(result_.get_mpz_t(), a, b);
        } else {
            mpz_mul(scaled_.get_mpz_t(), a, left_power_.get_mpz_t());
            mpz_tdiv_q(result_.get_mpz_t(), scaled_.get_mpz_t(), b);
        }
    }

    const Operands &data_;
    mpz_class left_power_;
    mpz_class right_power_;
    int right_shift_;
    mpz_class scaled_;
    mpz_class result_;
};

// GMP for someone who keeps the values as its integers.
template <Operation OPERATION>
class GmpNumeric : public GmpArithmetic<OPERATION> {
public:
    using GmpArithmetic<OPERATION>::GmpArithmetic;
    void work(std::size_t i) {
        this->operate(this->data_.left[i].count.get_mpz_t(), this->data_.right[i].count.get_mpz_t());
    }
    bool right(std::size_t i) const { return this->result_ == this->data_.results[i].count; }
};

// GMP for someone whose values are columns of bytes, as this library's are: each is read into limbs and tested for
// fitting the result's digits, and the result is written back.
template <Operation OPERATION>
class GmpOnBytes : public GmpArithmetic<OPERATION> {
public:
    explicit GmpOnBytes(const Operands &data)
        : GmpArithmetic<OPERATION>(data),
          left_(column(data.left, [&](const Decimal &value) { return to_numeric(value, data.left_digits); })),
          right_(column(data.right, [&](const Decimal &value) { return to_numeric(value, data.right_digits); })),
          bound_(power_of_ten(CS_MAX_PREC)) {
        mpz_realloc2(a_.get_mpz_t(), 640);
        mpz_realloc2(b_.get_mpz_t(), 640);
    }
    void work(std::size_t i) {
        read(left_[i], a_);
        read(right_[i], b_);
        this->operate(a_.get_mpz_t(), b_.get_mpz_t());
        fits_ = mpz_cmpabs(this->result_.get_mpz_t(), bound_.get_mpz_t()) < 0;
        if (fits_)
            write(this->result_.get_mpz_t(), bytes_);
    }
    bool right(std::size_t i) const { return fits_ && is_equal(from_numeric(bytes_), this->data_.results[i]); }

private:
    static void read(const CS_NUMERIC &value, mpz_class &number) {
        const auto bytes = static_cast<std::size_t>(Com__Nume_Prec_To_Len[value.precision]) - 1;
        mpz_import(number.get_mpz_t(), bytes, 1, 1, 1, 0, value.array + 1);
        if (value.array[0] != 0)
            mpz_neg(number.get_mpz_t(), number.get_mpz_t());
    }
    void write(mpz_srcptr number, CS_NUMERIC &value) const {
        const std::size_t bytes = (mpz_sizeinbase(number, 2) + 7) / 8;
        value.precision = CS_MAX_PREC;
        value.scale = static_cast<CS_BYTE>(this->data_.result_scale);
        std::memset(value.array, 0, CS_MAX_NUMLEN - bytes);
        mpz_export(value.array + CS_MAX_NUMLEN - bytes, nullptr, 1, 1, 1, 0, number);
        value.array[0] = mpz_sgn(number) < 0 ? 1 : 0;
    }

    std::vector<CS_NUMERIC> left_;
    std::vector<CS_NUMERIC> right_;
    mpz_class bound_;
    mpz_class a_;
    mpz_class b_;
    CS_NUMERIC bytes_ = {};
    bool fits_ = false;
};

template <Operation OPERATION>
class PgtypesNumeric {
public:
    explicit PgtypesNumeric(const Operands &data)
        : data_(data), left_(column(data.left, to_pgtypes)), right_(column(data.right, to_pgtypes)),
          result_(PGTYPESnumeric_new()) {}
    void work(std::size_t i) {
        if constexpr (OPERATION == Operation::ADD)
            code_ = PGTYPESnumeric_add(left_[i].get(), right_[i].get(), result_.get());
        else if constexpr (OPERATION == Operation::MULTIPLY)
            code_ = PGTYPESnumeric_mul(left_[i].get(), right_[i].get(), result_.get());
        else
            code_ = PGTYPESnumeric_div(left_[i].get(), right_[i].get(), result_.get());
    }
    // Its quotients have a scale of its own choice, and are rounded.
    bool right(std::size_t i) const {
        const Decimal result = from_pgtypes(result_.get());
        return code_ == 0 && (OPERATION == Operation::DIVIDE ? is_close(result, data_.results[i])
                                                             : is_equal(result, data_.results[i]));
    }

private:
    const Operands &data_;
    std::vector<Pgtypes> left_;
    std::vector<Pgtypes> right_;
    Pgtypes result_;
    int code_ = -1;
};

template <Operation OPERATION>
class BoostInteger {
public:
    explicit BoostInteger(const Operands &data)
        : data_(data), left_(column(data.left, [](const Decimal &value) { return to_int512(value.count); })),
          right_(column(data.right, [](const Decimal &value) { return to_int512(value.count); })),
          left_power_(to_int512(power_of_ten(data.left_shift()))),
          right_power_(to_int512(power_of_ten(data.right_shift()))), right_shift_(data.right_shift()) {}
    void work(std::size_t i) {
        if constexpr (OPERATION == Operation::ADD) {
            if (right_shift_ != 0) {
                scaled_ = right_[i] * right_power_;
                result_ = left_[i] + scaled_;
            } else {
                result_ = left_[i] + right_[i];
            }
        } else if constexpr (OPERATION == Operation::MULTIPLY) {
            result_ = left_[i] * right_[i];
        } else {
            scaled_ = left_[i] * left_power_;
            result_ = scaled_ / right_[i];
        }
    }
    bool right(std::size_t i) const { return from_int512(result_) == data_.results[i].count; }

private:
    const Operands &data_;
    std::vector<Int512> left_;
    std::vector<Int512> right_;
    Int512 left_power_;
    Int512 right_power_;
    int right_shift_;
    Int512 scaled_;
    Int512 result_;
};

template <Operation OPERATION>
class BoostDecimal {
public:
    explicit BoostDecimal(const Operands &data)
        : data_(data), left_(column(data.left, to_dec77)), right_(column(data.right, to_dec77)) {}
    void work(std::size_t i) {
        if constexpr (OPERATION == Operation::ADD)
            result_ = left_[i] + right_[i];
        else if constexpr (OPERATION == Operation::MULTIPLY)
            result_ = left_[i] * right_[i];
        else
            result_ = left_[i] / right_[i];
    }
    // Its quotients go on behind the scale, and its text rounds them there.
    bool right(std::size_t i) const {
        const Decimal result = from_dec77(result_, data_.result_scale);
        return OPERATION == Operation::DIVIDE ? is_close(result, data_.results[i]) : is_equal(result, data_.results[i]);
    }

private:
    const Operands &data_;
    std::vector<Dec77> left_;
    std::vector<Dec77> right_;
    Dec77 result_;
};

template <Operation OPERATION>
void enter_row(const std::string &row, const Operands &operands) {
    enter<Library<OPERATION>>(row, LIBRARY, operands);
    enter<PgtypesNumeric<OPERATION>>(row, "pgtypes", operands);
    enter<GmpNumeric<OPERATION>>(row, "GMP", operands);
    enter<GmpOnBytes<OPERATION>>(row, "GMP on bytes", operands);
    enter<BoostInteger<OPERATION>>(row, "Boost int512_t", operands);
    enter<BoostDecimal<OPERATION>>(row, "Boost cpp_dec_float", operands);
}

} // namespace

void enter_numeric_rows() {
    using enum Operation;
    // digits and scale of either operand, and the scale of the result
    static const Operands add18(ADD, 18, 4, 18, 4, 4, 100);
    static const Operands add38(ADD, 38, 10, 38, 10, 10, 102);
    static const Operands add75(ADD, 75, 20, 75, 20, 20, 104);
    enter_row<ADD>("comn_numadd 18", add18);
    enter_row<ADD>("comn_numadd 38", add38);
    enter_row<ADD>("comn_numadd 75", add75);

    static const Operands align18(ADD, 18, 4, 18, 2, 4, 110);
    static const Operands align38(ADD, 38, 10, 38, 6, 10, 112);
    static const Operands align75(ADD, 75, 20, 75, 18, 20, 114);
    enter_row<ADD>("comn_numadd 18, scales differ", align18);
    enter_row<ADD>("comn_numadd 38, scales differ", align38);
    enter_row<ADD>("comn_numadd 75, scales differ", align75);

    // The last product has 75 digits: operands of 75 digits would leave the 77 that there are.
    static const Operands multiply18(MULTIPLY, 18, 4, 18, 4, 8, 120);
    static const Operands multiply38(MULTIPLY, 38, 10, 38, 10, 20, 122);
    static const Operands multiply75(MULTIPLY, 60, 12, 15, 3, 15, 124);
    enter_row<MULTIPLY>("comn_nummul 18", multiply18);
    enter_row<MULTIPLY>("comn_nummul 38", multiply38);
    enter_row<MULTIPLY>("comn_nummul 75 (60 by 15)", multiply75);

    static const Operands divide18(DIVIDE, 18, 4, 18, 4, 23, 130);
    static const Operands divide38(DIVIDE, 38, 10, 38, 10, 39, 132);
    static const Operands divide75(DIVIDE, 75, 20, 75, 20, 2, 134);
    static const Operands divide75by38(DIVIDE, 75, 20, 38, 10, 12, 136);
    enter_row<DIVIDE>("comn_numdivide 18", divide18);
    enter_row<DIVIDE>("comn_numdivide 38", divide38);
    enter_row<DIVIDE>("comn_numdivide 75", divide75);
    enter_row<DIVIDE>("comn_numdivide 75 by 38", divide75by38);
}

} // namespace bench
