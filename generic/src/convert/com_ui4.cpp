// Conversions from CS_UINT.
#include "convert/integer_conversions.h"

using namespace dlx;

COMN_CONVERSION(comn_ui4toi1) { return integer_to_integer<UI4, I1>(call); }
COMN_CONVERSION(comn_ui4toi2) { return integer_to_integer<UI4, I2>(call); }
COMN_CONVERSION(comn_ui4toi4) { return integer_to_integer<UI4, I4>(call); }
COMN_CONVERSION(comn_ui4toi8) { return integer_to_integer<UI4, I8>(call); }
COMN_CONVERSION(comn_ui4toui2) { return integer_to_integer<UI4, UI2>(call); }
COMN_CONVERSION(comn_ui4toui4) { return integer_to_integer<UI4, UI4>(call); }
COMN_CONVERSION(comn_ui4toui8) { return integer_to_integer<UI4, UI8>(call); }
COMN_CONVERSION(comn_ui4tobit) { return integer_to_bit<UI4>(call); }
COMN_CONVERSION(comn_ui4toflt4) { return integer_to_float<UI4, Flt4>(call); }
COMN_CONVERSION(comn_ui4toflt8) { return integer_to_float<UI4, Flt8>(call); }
COMN_CONVERSION(comn_ui4tomoney) { return integer_to_money<UI4>(call); }
COMN_CONVERSION(comn_ui4tomny4) { return integer_to_mny4<UI4>(call); }
COMN_CONVERSION(comn_ui4tonum) { return integer_to_num<UI4>(call); }
COMN_CONVERSION(comn_ui4tochar) { return integer_to_char<UI4>(call); }
COMN_CONVERSION(comn_ui4tovarchar) { return integer_to_varchar<UI4>(call); }
COMN_CONVERSION(comn_ui4tobin) { return number_to_bin<UI4>(call); }
COMN_CONVERSION(comn_ui4tovarbin) { return number_to_varbin<UI4>(call); }
