// Conversions from CS_FLOAT.
#include "convert/float_conversions.h"

using namespace dlx;

COMN_CONVERSION(comn_flt8toi1) { return float_to_integer<Flt8, I1>(call); }
COMN_CONVERSION(comn_flt8toi2) { return float_to_integer<Flt8, I2>(call); }
COMN_CONVERSION(comn_flt8toi4) { return float_to_integer<Flt8, I4>(call); }
COMN_CONVERSION(comn_flt8toi8) { return float_to_integer<Flt8, I8>(call); }
COMN_CONVERSION(comn_flt8toui2) { return float_to_integer<Flt8, UI2>(call); }
COMN_CONVERSION(comn_flt8toui4) { return float_to_integer<Flt8, UI4>(call); }
COMN_CONVERSION(comn_flt8toui8) { return float_to_integer<Flt8, UI8>(call); }
COMN_CONVERSION(comn_flt8tobit) { return float_to_bit<Flt8>(call); }
COMN_CONVERSION(comn_flt8toflt4) { return double_to_float(call); }
COMN_CONVERSION(comn_flt8toflt8) { return float_to_itself<Flt8>(call); }
COMN_CONVERSION(comn_flt8tomoney) { return float_to_money<Flt8>(call); }
COMN_CONVERSION(comn_flt8tomny4) { return float_to_mny4<Flt8>(call); }
COMN_CONVERSION(comn_flt8tonum) { return float_to_num<Flt8>(call); }
COMN_CONVERSION(comn_flt8tochar) { return float_to_char<Flt8>(call); }
COMN_CONVERSION(comn_flt8tovarchar) { return float_to_varchar<Flt8>(call); }
COMN_CONVERSION(comn_flt8tobin) { return number_to_bin<Flt8>(call); }
COMN_CONVERSION(comn_flt8tovarbin) { return number_to_varbin<Flt8>(call); }
