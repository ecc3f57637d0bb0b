// Money against what a programmer would write for it with 128-bit integers: the same record in and out, the same
// rounding, and overflow noticed. pgtypes works on numerics of four decimals.
#include "peers.h"

#include <charconv>
#include <cstring>

namespace bench {
namespace {

constexpr int DONE = 0;
constexpr int OVERFLOW_CODE = 1;
constexpr int SYNTAX = 2;
constexpr int DIVISION_BY_ZERO = 3;

// ---- By hand ------------------------------------------------------------------------------------------------
// Functions of the library's shape, not inlined: in a program they would stand in a file of their own.

std::int64_t count_of(const CS_MONEY *money) { return from_money(*money); }

int store_checked(__int128 count, CS_MONEY *result) {
    if (count != static_cast<std::int64_t>(count)) {
        *result = {0, 0};
        return OVERFLOW_CODE;
    }
    *result = to_money(static_cast<std::int64_t>(count));
    return DONE;
}

[[gnu::noinline]] int multiply_by_hand(const CS_MONEY *a, const CS_MONEY *b, CS_MONEY *result) {
    const __int128 product = static_cast<__int128>(count_of(a)) * count_of(b);
    return store_checked((product + (product < 0 ? -5000 : 5000)) / 10000, result);
}

[[gnu::noinline]] int divide_by_hand(const CS_MONEY *a, const CS_MONEY *b, CS_MONEY *result) {
    if (count_of(b) == 0) {
        *result = {0, 0};
        return DIVISION_BY_ZERO;
    }
    return store_checked(static_cast<__int128>(count_of(a)) * 10000 / count_of(b), result);
}

// Two decimals, rounded half away from zero; answers the end of the text.
[[gnu::noinline]] char *write_by_hand(const CS_MONEY *money, char *text, char *end) {
    const std::int64_t count = count_of(money);
    if (count < 0)
        *text++ = '-';
    const std::uint64_t magnitude =
        count < 0 ? 0 - static_cast<std::uint64_t>(count) : static_cast<std::uint64_t>(count);
    const std::uint64_t cents = (magnitude + 50) / 100;
    text = std::to_chars(text, end, cents / 100).ptr;
    *text++ = '.';
    *text++ = static_cast<char>('0' + cents % 100 / 10);
    *text++ = static_cast<char>('0' + cents % 10);
    return text;
}

// A sign, digits with a point, the fifth decimal for rounding.
[[gnu::noinline]] int read_by_hand(const char *text, int length, CS_MONEY *result) {
    const char *end = text + length;
    while (text != end && *text == ' ')
        ++text;
    const bool negative = text != end && *text == '-';
    if (text != end && (*text == '-' || *text == '+'))
        ++text;
    __int128 count = 0;
    int decimals = -1;
    for (; text != end; ++text) {
        const unsigned digit = static_cast<unsigned>(*text - '0');
        if (digit <= 9) {
            if (decimals < 4) {
                count = count * 10 + digit;
                if (count > static_cast<__int128>(1) << 80)
                    return OVERFLOW_CODE;
            } else if (decimals == 4) {
                count += digit >= 5;
            }
            decimals += decimals >= 0 && decimals <= 4;
        } else if (*text == '.' && decimals < 0) {
            decimals = 0;
        } else {
            break;
        }
    }
    while (text != end && *text == ' ')
        ++text;
    if (text != end)
        return SYNTAX;
    for (; decimals < 4; decimals += decimals < 0 ? 2 : 1)
        count *= 10;
    return store_checked(negative ? -count : count, result);
}

// ---- Multiply and divide ------------------------------------------------------------------------------------

enum class Operation { MULTIPLY, DIVIDE };

struct Pairs {
    Operation operation;
    std::vector<CS_MONEY> left;
    std::vector<CS_MONEY> right;
    std::vector<Decimal> results;

    Pairs(Operation op, int left_digits, int right_digits, std::uint64_t seed)
        : operation(op), left(amounts(left_digits, seed)), right(amounts(right_digits, seed + 1)) {
        for (std::size_t i = 0; i < VALUES; ++i) {
            const mpz_class a = from_money(left[i]);
            const mpz_class b = from_money(right[i]);
            const mpz_class half = 5000 * sgn(a) * sgn(b);
            results.push_back(
                {op == Operation::MULTIPLY ? mpz_class((a * b + half) / 10000) : mpz_class(a * 10000 / b), 4});
        }
    }
};

// A function of two money values, of the library or by hand, whose success is DONE_CODE.
template <auto FUNCTION, int DONE_CODE>
class MoneyFunction {
public:
    explicit MoneyFunction(const Pairs &pairs) : left_(pairs.left), right_(pairs.right), results_(pairs.results) {}
    void work(std::size_t i) { code_ = FUNCTION(&left_[i], &right_[i], &result_); }
    bool right(std::size_t i) const { return code_ == DONE_CODE && decimal_of(result_).count == results_[i].count; }

private:
    std::vector<CS_MONEY> left_;
    std::vector<CS_MONEY> right_;
    const std::vector<Decimal> &results_;
    CS_MONEY result_ = {};
    int code_ = DONE_CODE - 1;
};

template <auto FUNCTION>
class PgtypesMoney {
public:
    explicit PgtypesMoney(const Pairs &pairs) : pairs_(pairs), result_(PGTYPESnumeric_new()) {
        for (std::size_t i = 0; i < VALUES; ++i) {
            left_.push_back(to_pgtypes(decimal_of(pairs.left[i])));
            right_.push_back(to_pgtypes(decimal_of(pairs.right[i])));
        }
    }
    void work(std::size_t i) { code_ = FUNCTION(left_[i].get(), right_[i].get(), result_.get()); }
    // It cannot round at a scale of the caller's choice, so its results have more places.
    bool right(std::size_t i) const { return code_ == 0 && is_close(from_pgtypes(result_.get()), pairs_.results[i]); }

private:
    const Pairs &pairs_;
    std::vector<Pgtypes> left_;
    std::vector<Pgtypes> right_;
    Pgtypes result_;
    int code_ = -1;
};

// ---- Text ---------------------------------------------------------------------------------------------------

constexpr int TEXT_ROOM = 32;

struct Amounts {
    std::vector<CS_MONEY> values;
    std::vector<std::string> texts; // with as many decimals as the value has, at least two
    std::vector<std::string> cents; // rounded to two

    explicit Amounts(std::uint64_t seed) : values(amounts(12, seed)) {
        for (CS_MONEY &value : values) {
            if (value.mnylow % 4 != 0) // most amounts are whole cents
                value = to_money(from_money(value) / 100 * 100);
            std::string text = decimal_of(value).text();
            while (text.ends_with('0') && text[text.size() - 3] != '.')
                text.pop_back();
            texts.push_back(text);
            const mpz_class count = from_money(value);
            cents.push_back(Decimal{mpz_class((count + 50 * sgn(count)) / 100), 2}.text());
        }
    }
};

class LibraryWrite {
public:
    explicit LibraryWrite(const Amounts &amounts) : amounts_(amounts), values_(amounts.values) {}
    void work(std::size_t i) { start_ = com__mnytochar(&values_[i], text_, TEXT_ROOM, 0); }
    bool right(std::size_t i) const {
        return start_ != nullptr &&
               std::string(static_cast<const char *>(start_), text_ + TEXT_ROOM) == amounts_.cents[i];
    }

private:
    const Amounts &amounts_;
    std::vector<CS_MONEY> values_;
    char text_[TEXT_ROOM];
    char *start_ = nullptr;
};

class HandWrite {
public:
    explicit HandWrite(const Amounts &amounts) : amounts_(amounts) {}
    void work(std::size_t i) { end_ = write_by_hand(&amounts_.values[i], text_, text_ + TEXT_ROOM); }
    bool right(std::size_t i) const { return std::string(text_, static_cast<const char *>(end_)) == amounts_.cents[i]; }

private:
    const Amounts &amounts_;
    char text_[TEXT_ROOM];
    char *end_ = text_;
};

class PgtypesWrite {
public:
    explicit PgtypesWrite(const Amounts &amounts) : amounts_(amounts) {
        for (const CS_MONEY &value : amounts.values)
            values_.push_back(to_pgtypes(decimal_of(value)));
    }
    ~PgtypesWrite() { PGTYPESchar_free(text_); }
    void work(std::size_t i) {
        PGTYPESchar_free(text_);
        text_ = PGTYPESnumeric_to_asc(values_[i].get(), 2);
    }
    bool right(std::size_t i) const { return text_ != nullptr && text_ == amounts_.cents[i]; }

private:
    const Amounts &amounts_;
    std::vector<Pgtypes> values_;
    char *text_ = nullptr;
};

class LibraryRead {
public:
    explicit LibraryRead(const Amounts &amounts)
        : amounts_(amounts), texts_(amounts.texts), charset_(com_get_charattrib()) {}
    void work(std::size_t i) {
        code_ = com__mnyfromchar_mb(&result_, texts_[i].data(), static_cast<int>(texts_[i].size()), 0, charset_);
    }
    bool right(std::size_t i) const { return code_ == DONE && from_money(result_) == from_money(amounts_.values[i]); }

private:
    const Amounts &amounts_;
    std::vector<std::string> texts_;
    CHAR_ATTRIB *charset_;
    CS_MONEY result_ = {};
    int code_ = SYNTAX;
};

class HandRead {
public:
    explicit HandRead(const Amounts &amounts) : amounts_(amounts) {}
    void work(std::size_t i) {
        code_ = read_by_hand(amounts_.texts[i].data(), static_cast<int>(amounts_.texts[i].size()), &result_);
    }
    bool right(std::size_t i) const { return code_ == DONE && from_money(result_) == from_money(amounts_.values[i]); }

private:
    const Amounts &amounts_;
    CS_MONEY result_ = {};
    int code_ = SYNTAX;
};

class PgtypesRead {
public:
    explicit PgtypesRead(const Amounts &amounts) : amounts_(amounts), texts_(amounts.texts) {}
    void work(std::size_t i) { result_.reset(PGTYPESnumeric_from_asc(texts_[i].data(), nullptr)); }
    bool right(std::size_t i) const {
        return result_ && is_equal(from_pgtypes(result_.get()), decimal_of(amounts_.values[i]));
    }

private:
    const Amounts &amounts_;
    std::vector<std::string> texts_;
    Pgtypes result_;
};

} // namespace

void enter_money_rows() {
    constexpr const char *BY_HAND = "__int128 by hand";
    static const Pairs factors(Operation::MULTIPLY, 8, 6, 200);
    static const Pairs quotients(Operation::DIVIDE, 9, 5, 202);
    enter<MoneyFunction<comn_mnymul, CS_SUCCEED>>("comn_mnymul", LIBRARY, factors);
    enter<MoneyFunction<multiply_by_hand, DONE>>("comn_mnymul", BY_HAND, factors);
    enter<PgtypesMoney<PGTYPESnumeric_mul>>("comn_mnymul", "pgtypes", factors);
    enter<MoneyFunction<comn_mnydivide, CS_SUCCEED>>("comn_mnydivide", LIBRARY, quotients);
    enter<MoneyFunction<divide_by_hand, DONE>>("comn_mnydivide", BY_HAND, quotients);
    enter<PgtypesMoney<PGTYPESnumeric_div>>("comn_mnydivide", "pgtypes", quotients);

    static const Amounts amounts(204);
    enter<LibraryWrite>("com__mnytochar", LIBRARY, amounts);
    enter<HandWrite>("com__mnytochar", BY_HAND, amounts);
    enter<PgtypesWrite>("com__mnytochar", "pgtypes", amounts);
    enter<LibraryRead>("com__mnyfromchar_mb", LIBRARY, amounts);
    enter<HandRead>("com__mnyfromchar_mb", BY_HAND, amounts);
    enter<PgtypesRead>("com__mnyfromchar_mb", "pgtypes", amounts);
}

} // namespace bench
