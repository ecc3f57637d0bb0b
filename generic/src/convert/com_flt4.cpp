// Conversions from CS_REAL.
#include "convert/float_conversions.h"

using namespace dlx;

COMN_CONVERSION(comn_flt4toi1) { return float_to_integer<Flt4, I1>(call); }
COMN_CONVERSION(comn_flt4toi2) { return float_to_integer<Flt4, I2>(call); }
COMN_CONVERSION(comn_flt4toi4) { return float_to_integer<Flt4, I4>(call); }
COMN_CONVERSION(comn_flt4toi8) { return float_to_integer<Flt4, I8>(call); }
COMN_CONVERSION(comn_flt4toui2) { return float_to_integer<Flt4, UI2>(call); }
COMN_CONVERSION(comn_flt4toui4) { return float_to_integer<Flt4, UI4>(call); }
COMN_CONVERSION(comn_flt4toui8) { return float_to_integer<Flt4, UI8>(call); }
COMN_CONVERSION(comn_flt4tobit) { return float_to_bit<Flt4>(call); }
COMN_CONVERSION(comn_flt4toflt4) { return float_to_itself<Flt4>(call); }
COMN_CONVERSION(comn_flt4toflt8) { return float_to_double(call); }
COMN_CONVERSION(comn_flt4tomoney) { return float_to_money<Flt4>(call); }
COMN_CONVERSION(comn_flt4tomny4) { return float_to_mny4<Flt4>(call); }
COMN_CONVERSION(comn_flt4tonum) { return float_to_num<Flt4>(call); }
COMN_CONVERSION(comn_flt4tochar) { return float_to_char<Flt4>(call); }
COMN_CONVERSION(comn_flt4tovarchar) { return float_to_varchar<Flt4>(call); }
COMN_CONVERSION(comn_flt4tobin) { return number_to_bin<Flt4>(call); }
COMN_CONVERSION(comn_flt4tovarbin) { return number_to_varbin<Flt4>(call); }
