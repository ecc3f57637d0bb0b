// Small owners around what peers hand out, shared by the rows of numerics and money.
#ifndef BENCH_PEERS_H
#define BENCH_PEERS_H

#include "data.h"

extern "C" {
#include <pgtypes.h>
#include <pgtypes_numeric.h>
}

#include <boost/multiprecision/cpp_dec_float.hpp>
#include <boost/multiprecision/cpp_int.hpp>

#include <memory>
#include <string>
#include <vector>

namespace bench {

// ---- pgtypes ------------------------------------------------------------------------------------------------

struct PgtypesFree {
    void operator()(numeric *value) const { PGTYPESnumeric_free(value); }
};
using Pgtypes = std::unique_ptr<numeric, PgtypesFree>;

inline Pgtypes to_pgtypes(const Decimal &value) {
    std::string text = value.text();
    return Pgtypes(PGTYPESnumeric_from_asc(text.data(), nullptr));
}

inline Decimal from_pgtypes(numeric *value, int scale) {
    char *text = PGTYPESnumeric_to_asc(value, scale);
    Decimal result = Decimal::from_text(text);
    PGTYPESchar_free(text);
    return result;
}
// All the places that the value has.
inline Decimal from_pgtypes(numeric *value) { return from_pgtypes(value, value->dscale); }

// ---- Boost --------------------------------------------------------------------------------------------------

using Int512 = boost::multiprecision::int512_t;
using Dec77 = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<77>, boost::multiprecision::et_off>;

inline Int512 to_int512(const mpz_class &value) { return Int512(value.get_str()); }
inline mpz_class from_int512(const Int512 &value) { return mpz_class(value.str(), 10); }

inline Dec77 to_dec77(const Decimal &value) { return Dec77(value.text()); }
inline Decimal from_dec77(const Dec77 &value, int scale) {
    return Decimal::from_text(value.str(scale, std::ios_base::fixed));
}

// ---- Whole columns ------------------------------------------------------------------------------------------

// The values in a contender's own form.
template <class Convert>
auto column(const std::vector<Decimal> &values, Convert convert) {
    std::vector<decltype(convert(values[0]))> result;
    result.reserve(values.size());
    for (const Decimal &value : values)
        result.push_back(convert(value));
    return result;
}

} // namespace bench

#endif
