// Conversions from CS_INT.
#include "convert/integer_conversions.h"

using namespace dlx;

COMN_CONVERSION(comn_i4toi1) { return integer_to_integer<I4, I1>(call); }
COMN_CONVERSION(comn_i4toi2) { return integer_to_integer<I4, I2>(call); }
COMN_CONVERSION(comn_i4toi4) { return integer_to_integer<I4, I4>(call); }
COMN_CONVERSION(comn_i4toi8) { return integer_to_integer<I4, I8>(call); }
COMN_CONVERSION(comn_i4toui2) { return integer_to_integer<I4, UI2>(call); }
COMN_CONVERSION(comn_i4toui4) { return integer_to_integer<I4, UI4>(call); }
COMN_CONVERSION(comn_i4toui8) { return integer_to_integer<I4, UI8>(call); }
COMN_CONVERSION(comn_i4tobit) { return integer_to_bit<I4>(call); }
COMN_CONVERSION(comn_i4toflt4) { return integer_to_float<I4, Flt4>(call); }
COMN_CONVERSION(comn_i4toflt8) { return integer_to_float<I4, Flt8>(call); }
COMN_CONVERSION(comn_i4tomoney) { return integer_to_money<I4>(call); }
COMN_CONVERSION(comn_i4tomny4) { return integer_to_mny4<I4>(call); }
COMN_CONVERSION(comn_i4tonum) { return integer_to_num<I4>(call); }
COMN_CONVERSION(comn_i4tochar) { return integer_to_char<I4>(call); }
COMN_CONVERSION(comn_i4tovarchar) { return integer_to_varchar<I4>(call); }
COMN_CONVERSION(comn_i4tobin) { return number_to_bin<I4>(call); }
COMN_CONVERSION(comn_i4tovarbin) { return number_to_varbin<I4>(call); }
