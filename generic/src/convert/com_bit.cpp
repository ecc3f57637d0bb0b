// Conversions from CS_BIT: a byte that is 0 or 1. To numbers it goes as a small integer; to text and bytes it has
// members of its own.
//
// Every member looks at the byte before it writes anything, the length included: another byte is CS_EDOMAIN with all
// as it was. There is no conversion to money.
#include "convert/integer_conversions.h"

using namespace dlx;

namespace {

CS_BYTE digit_of(CS_BIT value) { return value != 0 ? '1' : '0'; }
CS_BYTE value_of(CS_BIT value) { return value; }

// One byte to a destination of any room; `pad` finishes it, and tells when there was no room for it.
template <class Destination, class Pad>
CS_RETCODE bit_to_byte(const Conversion &call, CS_BYTE (*shown)(CS_BIT), Pad pad) {
    if (!call.is_sound<Bit, Destination>() || !call.has_room())
        return CS_FAIL;
    const CS_BIT value = call.source<Bit>();
    if (!is_value<Bit>(value))
        return failed(call.member, CS_EDOMAIN);
    *call.destlen = 1;
    if (call.destfmt->maxlength > 0)
        store(call.dest, shown(value));
    const CS_RETCODE status = pad(1, call.destfmt, call.dest, call.destlen);
    return status == CS_SUCCEED ? status : failed(call.member, status);
}

// To a variable-length record, a character in both: comn_bittovarbin stores "0" or "1" where comn_bittobin stores the
// value, and neither record sets *destlen. Callers have always seen it so.
template <class Destination>
CS_RETCODE bit_to_record(const Conversion &call) {
    using Record = typename Destination::value_type;
    static_assert(sizeof(Record) == sizeof(CS_VARCHAR) && offsetof(CS_VARBINARY, array) == offsetof(CS_VARCHAR, str));
    if (!call.is_sound<Bit, Destination>())
        return CS_FAIL;
    const CS_BIT value = call.source<Bit>();
    if (!is_value<Bit>(value))
        return failed(call.member, CS_EDOMAIN);
    *varchar_text(call) = static_cast<char>(digit_of(value));
    set_varchar_length(call, 1);
    return CS_SUCCEED;
}

} // namespace

COMN_CONVERSION(comn_bittoi1) { return integer_to_integer<Bit, I1>(call); }
COMN_CONVERSION(comn_bittoi2) { return integer_to_integer<Bit, I2>(call); }
COMN_CONVERSION(comn_bittoi4) { return integer_to_integer<Bit, I4>(call); }
COMN_CONVERSION(comn_bittoi8) { return integer_to_integer<Bit, I8>(call); }
COMN_CONVERSION(comn_bittoui2) { return integer_to_integer<Bit, UI2>(call); }
COMN_CONVERSION(comn_bittoui4) { return integer_to_integer<Bit, UI4>(call); }
COMN_CONVERSION(comn_bittoui8) { return integer_to_integer<Bit, UI8>(call); }
COMN_CONVERSION(comn_bittobit) { return integer_to_bit<Bit>(call); }
COMN_CONVERSION(comn_bittoflt4) { return integer_to_float<Bit, Flt4>(call); }
COMN_CONVERSION(comn_bittoflt8) { return integer_to_float<Bit, Flt8>(call); }
COMN_CONVERSION(comn_bittonum) { return integer_to_num<Bit>(call); }
COMN_CONVERSION(comn_bittochar) { return bit_to_byte<Char>(call, digit_of, comn__padchar); }
COMN_CONVERSION(comn_bittobin) { return bit_to_byte<Bin>(call, value_of, comn__padbin); }
COMN_CONVERSION(comn_bittovarchar) { return bit_to_record<VarChar>(call); }
COMN_CONVERSION(comn_bittovarbin) { return bit_to_record<VarBin>(call); }
