// Conversions from CS_LONG and CS_BIGINT.
#include "convert/integer_conversions.h"

using namespace dlx;

COMN_CONVERSION(comn_i8toi1) { return integer_to_integer<I8, I1>(call); }
COMN_CONVERSION(comn_i8toi2) { return integer_to_integer<I8, I2>(call); }
COMN_CONVERSION(comn_i8toi4) { return integer_to_integer<I8, I4>(call); }
COMN_CONVERSION(comn_i8toi8) { return integer_to_integer<I8, I8>(call); }
COMN_CONVERSION(comn_i8toui2) { return integer_to_integer<I8, UI2>(call); }
COMN_CONVERSION(comn_i8toui4) { return integer_to_integer<I8, UI4>(call); }
COMN_CONVERSION(comn_i8toui8) { return integer_to_integer<I8, UI8>(call); }
COMN_CONVERSION(comn_i8tobit) { return integer_to_bit<I8>(call); }
COMN_CONVERSION(comn_i8toflt4) { return integer_to_float<I8, Flt4>(call); }
COMN_CONVERSION(comn_i8toflt8) { return integer_to_float<I8, Flt8>(call); }
COMN_CONVERSION(comn_i8tomoney) { return integer_to_money<I8>(call); }
COMN_CONVERSION(comn_i8tomny4) { return integer_to_mny4<I8>(call); }
COMN_CONVERSION(comn_i8tonum) { return integer_to_num<I8, true>(call); }
COMN_CONVERSION(comn_i8tochar) { return integer_to_char<I8>(call); }
COMN_CONVERSION(comn_i8tovarchar) { return integer_to_varchar<I8>(call); }
COMN_CONVERSION(comn_i8tobin) { return number_to_bin<I8>(call); }
COMN_CONVERSION(comn_i8tovarbin) { return number_to_varbin<I8>(call); }
