// Conversions from CS_TINYINT.
#include "convert/integer_conversions.h"

using namespace dlx;

COMN_CONVERSION(comn_i1toi1) { return integer_to_integer<I1, I1>(call); }
COMN_CONVERSION(comn_i1toi2) { return integer_to_integer<I1, I2>(call); }
COMN_CONVERSION(comn_i1toi4) { return integer_to_integer<I1, I4>(call); }
COMN_CONVERSION(comn_i1toi8) { return integer_to_integer<I1, I8>(call); }
COMN_CONVERSION(comn_i1toui2) { return integer_to_integer<I1, UI2>(call); }
COMN_CONVERSION(comn_i1toui4) { return integer_to_integer<I1, UI4>(call); }
COMN_CONVERSION(comn_i1toui8) { return integer_to_integer<I1, UI8>(call); }
COMN_CONVERSION(comn_i1tobit) { return integer_to_bit<I1>(call); }
COMN_CONVERSION(comn_i1toflt4) { return integer_to_float<I1, Flt4>(call); }
COMN_CONVERSION(comn_i1toflt8) { return integer_to_float<I1, Flt8>(call); }
COMN_CONVERSION(comn_i1tomoney) { return integer_to_money<I1>(call); }
COMN_CONVERSION(comn_i1tomny4) { return integer_to_mny4<I1>(call); }
COMN_CONVERSION(comn_i1tonum) { return integer_to_num<I1>(call); }
COMN_CONVERSION(comn_i1tochar) { return integer_to_char<I1>(call); }
COMN_CONVERSION(comn_i1tovarchar) { return integer_to_varchar<I1>(call); }
COMN_CONVERSION(comn_i1tobin) { return number_to_bin<I1>(call); }
COMN_CONVERSION(comn_i1tovarbin) { return number_to_varbin<I1>(call); }
