// Conversions from exact numerics.
//
// The narrow types take the road of the double: a numeric becomes the nearest double, and the range is judged on
// that, before the fraction is cut, by the rules for floats. 64-bit integers and money have more digits than a
// double and are reached exactly.
#include "convert/number_frames.h"
#include "money/count.h"
#include "numeric/decimal.h"
#include "numeric/rescale.h"
#include "numeric/value.h"

#include <algorithm>

namespace dlx {

// A precision or scale that no value has. The members look at them before they write anything.
template <>
inline bool is_value<Num>(const CS_NUMERIC &value) {
    return is_valid(value);
}

namespace {

// A valid numeric as the core takes it. The readers of the core do not write to what they read.
class NumericRecord {
public:
    explicit NumericRecord(const CS_NUMERIC &value) {
        record_.len = Com__Nume_Prec_To_Len[value.precision];
        record_.prec = value.precision;
        record_.scale = value.scale;
        record_.value = const_cast<CS_BYTE *>(value.array);
    }
    __CONSTANT *operator&() { return &record_; }

private:
    __CONSTANT record_ = {};
};

// The road of the double. The one numeric that has none is a negative one of scale 77, whose text is too long.
template <class Destination, class Convert>
CS_RETCODE by_double(const Conversion &call, Convert convert) {
    return to_fixed<Num, Destination>(call, [&](const CS_NUMERIC &value) {
        NumericRecord record(value);
        CS_FLOAT wide = 0;
        const int code = com__subexctnumetoflt8(&record, &wide);
        if (code == NUME_OVERFLOW)
            return failed(call.member, CS_EOVERFLOW);
        COM_REQUIRE_AT(call.member, code == NUME_OK, CS_RETCODE(CS_FAIL));
        return convert(wide);
    });
}

template <class Destination>
CS_RETCODE numeric_to_integer(const Conversion &call) {
    return by_double<Destination>(call, [&](CS_FLOAT value) {
        return put_fitted<Flt8, Destination>(call, fit<typename Destination::value_type>(value));
    });
}

CS_RETCODE numeric_to_float(const Conversion &call) {
    return by_double<Flt4>(call, [&](CS_FLOAT value) { return put_fitted<Flt8, Flt4>(call, narrow(value)); });
}

CS_RETCODE numeric_to_double(const Conversion &call) {
    return by_double<Flt8>(call, [&](CS_FLOAT value) {
        call.put<Flt8>(value);
        return CS_RETCODE(CS_SUCCEED);
    });
}

CS_RETCODE numeric_to_bit(const Conversion &call) {
    return by_double<Bit>(call, [&](CS_FLOAT value) {
        call.put<Bit>(value != 0);
        return CS_RETCODE(CS_SUCCEED);
    });
}

// `read` gives the bound where the value is out of range.
template <class Destination>
CS_RETCODE numeric_to_wide_integer(const Conversion &call,
                                   int (*read)(__CONSTANT *, typename Destination::value_type *)) {
    return to_fixed<Num, Destination>(call, [&](const CS_NUMERIC &value) {
        NumericRecord record(value);
        typename Destination::value_type result = 0;
        const int code = read(&record, &result);
        call.put<Destination>(result);
        return range_status(call, code);
    });
}

// The money of a numeric, or the bound on its side; whether it is the former.
bool read_money(const CS_NUMERIC &value, CS_MONEY &money) {
    NumericRecord record(value);
    if (com__exctnumetomny8(&record, reinterpret_cast<CS_BYTE *>(&money)) == 1)
        return true;
    store_count(&money, value.array[0] != 0 ? SMALLEST_COUNT : LARGEST_COUNT);
    return false;
}

CS_RETCODE numeric_to_money(const Conversion &call) {
    return to_fixed<Num, Money>(call, [&](const CS_NUMERIC &value) {
        CS_MONEY money;
        const bool fits = read_money(value, money);
        call.put<Money>(money);
        return fits ? CS_RETCODE(CS_SUCCEED) : failed(call.member, CS_EOVERFLOW);
    });
}

// A bound of the wide money narrows to the same bound of the narrow one.
CS_RETCODE numeric_to_mny4(const Conversion &call) {
    return to_fixed<Num, Mny4>(call, [&](const CS_NUMERIC &value) {
        CS_MONEY money;
        CS_MONEY4 narrow_money;
        const bool fits = read_money(value, money);
        const bool fits_narrow = com__mnytomny4(&money, &narrow_money) == width_of<Mny4>;
        call.put<Mny4>(narrow_money);
        return fits && fits_narrow ? CS_RETCODE(CS_SUCCEED) : failed(call.member, CS_EOVERFLOW);
    });
}

// A bad precision or scale leaves *destlen as it was: its value depends on them here.
CS_RETCODE numeric_to_num(const Conversion &call) {
    if (!call.is_sound<Num, Num>())
        return CS_FAIL;
    const auto value = call.source<Num>();
    if (!is_value<Num>(value))
        return failed(call.member, CS_EDOMAIN);

    const CS_DATAFMT &format = *call.destfmt;
    const CS_INT precision = format.precision == CS_VALUE_FROM_SOURCE ? value.precision : format.precision;
    const CS_INT scale = format.scale == CS_VALUE_FROM_SOURCE ? value.scale : format.scale;
    if (!is_precision(precision))
        return failed(call.member, CS_EPRECISION);
    if (scale > CS_MAX_SCALE)
        return failed(call.member, CS_ESCALE);
    // A negative scale goes into the record by its low byte; where that is no scale either, the caller's code is wrong.
    const auto scale_byte = static_cast<CS_BYTE>(scale);
    COM_REQUIRE_AT(call.member, scale_byte <= CS_MAX_SCALE, CS_FAIL);

    *call.destlen = static_cast<CS_INT>(offsetof(CS_NUMERIC, array)) + Com__Nume_Prec_To_Len[precision];
    const CS_RETCODE status = numeric_to_numeric(value, *static_cast<CS_NUMERIC *>(call.dest), precision, scale_byte);
    return status == CS_SUCCEED ? status : failed(call.member, status);
}

// The text of a numeric, at the end of its room.
struct NumericText {
    char room[NUMERIC_TEXT_ROOM];
    int start; // -1 for the one numeric whose text does not fit

    explicit NumericText(const CS_NUMERIC &value) {
        NumericRecord record(value);
        start = com__subexctnumetochar(&record, room, sizeof room);
    }
    const char *data() const { return room + start; }
    CS_INT length() const { return NUMERIC_TEXT_ROOM - start; }
};

// Unlike an integer, a numeric whose text does not fit is cut.
CS_RETCODE numeric_to_char(const Conversion &call) {
    if (!call.is_sound<Num, Char>() || !call.has_room())
        return CS_FAIL;
    const auto value = call.source<Num>();
    if (!is_value<Num>(value))
        return failed(call.member, CS_EDOMAIN);
    const NumericText text(value);
    COM_REQUIRE_AT(call.member, text.start >= 0, CS_EOVERFLOW);
    *call.destlen = std::min(call.destfmt->maxlength, text.length());
    std::memcpy(call.dest, text.data(), static_cast<std::size_t>(*call.destlen));
    const CS_RETCODE status = comn__padchar(text.length(), call.destfmt, call.dest, call.destlen);
    return status == CS_SUCCEED ? status : failed(call.member, status);
}

// No NUL is put behind the text.
CS_RETCODE numeric_to_varchar(const Conversion &call) {
    if (!call.is_sound<Num, VarChar>())
        return CS_FAIL;
    const auto value = call.source<Num>();
    if (!is_value<Num>(value))
        return failed(call.member, CS_EDOMAIN);
    const NumericText text(value);
    COM_REQUIRE_AT(call.member, text.start >= 0, CS_EOVERFLOW);
    static_assert(NUMERIC_TEXT_ROOM <= sizeof(CS_VARCHAR::str), "the text of a numeric is never cut");
    *call.destlen = width_of<VarChar>;
    std::memcpy(varchar_text(call), text.data(), static_cast<std::size_t>(text.length()));
    set_varchar_length(call, text.length());
    return CS_SUCCEED;
}

// The whole array as it lies, whatever the precision: the value is not judged.
template <class Destination>
CS_RETCODE numeric_to_bytes(const Conversion &call, decltype(comn_fixedtobin) *copy) {
    if (!has_types_where_present<Num, Destination>(call))
        return CS_FAIL;
    CS_VOID *array = call.src != nullptr ? static_cast<CS_NUMERIC *>(call.src)->array : nullptr;
    return copy(call.context, call.srcfmt, array, call.destfmt, call.dest, call.destlen, CS_MAX_NUMLEN);
}

} // namespace
} // namespace dlx

using namespace dlx;

COMN_CONVERSION(comn_numtoi1) { return numeric_to_integer<I1>(call); }
COMN_CONVERSION(comn_numtoi2) { return numeric_to_integer<I2>(call); }
COMN_CONVERSION(comn_numtoi4) { return numeric_to_integer<I4>(call); }
COMN_CONVERSION(comn_numtoi8) { return numeric_to_wide_integer<I8>(call, com__subexctnumetolonglong); }
COMN_CONVERSION(comn_numtoui2) { return numeric_to_integer<UI2>(call); }
COMN_CONVERSION(comn_numtoui4) { return numeric_to_integer<UI4>(call); }
COMN_CONVERSION(comn_numtoui8) { return numeric_to_wide_integer<UI8>(call, com__subexctnumetoulonglong); }
COMN_CONVERSION(comn_numtobit) { return numeric_to_bit(call); }
COMN_CONVERSION(comn_numtoflt4) { return numeric_to_float(call); }
COMN_CONVERSION(comn_numtoflt8) { return numeric_to_double(call); }
COMN_CONVERSION(comn_numtomoney) { return numeric_to_money(call); }
COMN_CONVERSION(comn_numtomny4) { return numeric_to_mny4(call); }
COMN_CONVERSION(comn_numtonum) { return numeric_to_num(call); }
COMN_CONVERSION(comn_numtochar) { return numeric_to_char(call); }
COMN_CONVERSION(comn_numtovarchar) { return numeric_to_varchar(call); }
COMN_CONVERSION(comn_numtobin) { return numeric_to_bytes<Bin>(call, comn_fixedtobin); }
COMN_CONVERSION(comn_numtovarbin) { return numeric_to_bytes<VarBin>(call, comn_fixedtovarbin); }
