// Conversions from CS_USMALLINT.
#include "convert/integer_conversions.h"

using namespace dlx;

COMN_CONVERSION(comn_ui2toi1) { return integer_to_integer<UI2, I1>(call); }
COMN_CONVERSION(comn_ui2toi2) { return integer_to_integer<UI2, I2>(call); }
COMN_CONVERSION(comn_ui2toi4) { return integer_to_integer<UI2, I4>(call); }
COMN_CONVERSION(comn_ui2toi8) { return integer_to_integer<UI2, I8>(call); }
COMN_CONVERSION(comn_ui2toui2) { return integer_to_integer<UI2, UI2>(call); }
COMN_CONVERSION(comn_ui2toui4) { return integer_to_integer<UI2, UI4>(call); }
COMN_CONVERSION(comn_ui2toui8) { return integer_to_integer<UI2, UI8>(call); }
COMN_CONVERSION(comn_ui2tobit) { return integer_to_bit<UI2>(call); }
COMN_CONVERSION(comn_ui2toflt4) { return integer_to_float<UI2, Flt4>(call); }
COMN_CONVERSION(comn_ui2toflt8) { return integer_to_float<UI2, Flt8>(call); }
COMN_CONVERSION(comn_ui2tomoney) { return integer_to_money<UI2>(call); }
COMN_CONVERSION(comn_ui2tomny4) { return integer_to_mny4<UI2>(call); }
COMN_CONVERSION(comn_ui2tonum) { return integer_to_num<UI2>(call); }
COMN_CONVERSION(comn_ui2tochar) { return integer_to_char<UI2>(call); }
COMN_CONVERSION(comn_ui2tovarchar) { return integer_to_varchar<UI2>(call); }
COMN_CONVERSION(comn_ui2tobin) { return number_to_bin<UI2>(call); }
COMN_CONVERSION(comn_ui2tovarbin) { return number_to_varbin<UI2>(call); }
