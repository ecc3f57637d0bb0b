// Conversions from the floats: a kernel for each kind of destination.
#ifndef DLX_CONVERT_FLOAT_CONVERSIONS_H
#define DLX_CONVERT_FLOAT_CONVERSIONS_H

#include "convert/number_frames.h"
#include "kernel/float_text.h"

#include <type_traits>

namespace dlx {

template <class Source, class Destination>
inline CS_RETCODE float_to_integer(const Conversion &call) {
    return to_fixed<Source, Destination>(call, [&call](auto value) {
        return put_fitted<Source, Destination>(call, fit<typename Destination::value_type>(value));
    });
}

// NaN is 1, as everything but zero.
template <class Source>
inline CS_RETCODE float_to_bit(const Conversion &call) {
    return to_fixed<Source, Bit>(call, [&call](auto value) {
        call.put<Bit>(value != 0);
        return CS_SUCCEED;
    });
}

// To the same float: the bits as they are, a signalling NaN's too, which a load as a float could quieten.
template <class Source>
inline CS_RETCODE float_to_itself(const Conversion &call) {
    if (!call.is_sound<Source, Source>())
        return CS_FAIL;
    *call.destlen = width_of<Source>;
    std::memmove(call.dest, call.src, sizeof(typename Source::value_type));
    return CS_SUCCEED;
}

inline CS_RETCODE float_to_double(const Conversion &call) {
    return to_fixed<Flt4, Flt8>(call, [&call](CS_REAL value) {
        call.put<Flt8>(value);
        return CS_SUCCEED;
    });
}

inline CS_RETCODE double_to_float(const Conversion &call) {
    return to_fixed<Flt8, Flt4>(call, [&call](CS_FLOAT value) { return put_fitted<Flt8, Flt4>(call, narrow(value)); });
}

// What the value causes is a status: one too large for the precision, infinity, and one that would have to be
// rescaled by more places than there are, do not fit; NaN is no value. One too small is zero.
template <class Source>
inline CS_RETCODE float_to_num(const Conversion &call) {
    return to_numeric<Source, false>(call, [&call](CS_FLOAT value, const NumericTarget &target) {
        if (value != value)
            return failed(call.member, CS_EDOMAIN);
        const int code = target.fill(com__doubletoexctnume, value);
        COM_REQUIRE_AT(call.member, code == NUME_OK || code == NUME_OVERFLOW || code == NUME_BADVALUE,
                       CS_RETCODE(CS_FAIL));
        return range_status(call, code);
    });
}

// The money kernels answer a width, or this.
constexpr int MONEY_FAILURE = -1;

template <class Source, class Destination, class Convert>
inline CS_RETCODE float_to_money_by(const Conversion &call, Convert convert) {
    return to_fixed<Source, Destination>(call, [&call, convert](auto value) {
        const int width = convert(reinterpret_cast<CS_BYTE *>(&value), static_cast<CS_BYTE *>(call.dest));
        return width == MONEY_FAILURE ? failed(call.member, CS_EOVERFLOW) : CS_RETCODE(CS_SUCCEED);
    });
}

template <class Source>
inline CS_RETCODE float_to_money(const Conversion &call) {
    constexpr auto entry = std::is_same_v<Source, Flt4> ? com__flt4tomny : com__flt8tomny;
    return float_to_money_by<Source, Money>(
        call, [](CS_BYTE *src, CS_BYTE *dest) { return entry(src, width_of<Source>, dest, 0, 0); });
}

template <class Source>
inline CS_RETCODE float_to_mny4(const Conversion &call) {
    constexpr auto entry = std::is_same_v<Source, Flt4> ? com__flt4tomny4 : com__flt8tomny4;
    return float_to_money_by<Source, Mny4>(
        call, [](CS_BYTE *src, CS_BYTE *dest) { return entry(src, width_of<Source>, dest, 0); });
}

// A single is shown by the digits of its double form: 0.1 as .10000000149011612.
template <class Source>
inline CS_RETCODE float_to_char(const Conversion &call) {
    if (!call.is_sound<Source, Char>() || !call.has_room())
        return CS_FAIL;
    const FloatText text(call.source<Source>());
    return put_text({call.destfmt, static_cast<char *>(call.dest), call.destlen}, text.data(), text.length(),
                    call.member);
}

// No NUL is put behind the text.
template <class Source>
inline CS_RETCODE float_to_varchar(const Conversion &call) {
    if (!call.is_sound<Source, VarChar>())
        return CS_FAIL;
    static_assert(DOUBLE_TEXT_ROOM <= sizeof(CS_VARCHAR::str));
    const FloatText text(call.source<Source>());
    *call.destlen = sizeof(CS_VARCHAR);
    std::memcpy(varchar_text(call), text.data(), static_cast<std::size_t>(text.length()));
    set_varchar_length(call, text.length());
    return CS_SUCCEED;
}

} // namespace dlx

#endif
