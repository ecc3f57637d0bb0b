// Conversions from CS_UBIGINT.
#include "convert/integer_conversions.h"

using namespace dlx;

COMN_CONVERSION(comn_ui8toi1) { return integer_to_integer<UI8, I1>(call); }
COMN_CONVERSION(comn_ui8toi2) { return integer_to_integer<UI8, I2>(call); }
COMN_CONVERSION(comn_ui8toi4) { return integer_to_integer<UI8, I4>(call); }
COMN_CONVERSION(comn_ui8toi8) { return integer_to_integer<UI8, I8>(call); }
COMN_CONVERSION(comn_ui8toui2) { return integer_to_integer<UI8, UI2>(call); }
COMN_CONVERSION(comn_ui8toui4) { return integer_to_integer<UI8, UI4>(call); }
COMN_CONVERSION(comn_ui8toui8) { return integer_to_integer<UI8, UI8>(call); }
COMN_CONVERSION(comn_ui8tobit) { return integer_to_bit<UI8>(call); }
COMN_CONVERSION(comn_ui8toflt4) { return integer_to_float<UI8, Flt4>(call); }
COMN_CONVERSION(comn_ui8toflt8) { return integer_to_float<UI8, Flt8>(call); }
COMN_CONVERSION(comn_ui8tomoney) { return integer_to_money<UI8>(call); }
COMN_CONVERSION(comn_ui8tomny4) { return integer_to_mny4<UI8>(call); }
COMN_CONVERSION(comn_ui8tonum) { return integer_to_num<UI8, true>(call); }
COMN_CONVERSION(comn_ui8tochar) { return integer_to_char<UI8>(call); }
COMN_CONVERSION(comn_ui8tovarchar) { return integer_to_varchar<UI8>(call); }
COMN_CONVERSION(comn_ui8tobin) { return number_to_bin<UI8>(call); }
COMN_CONVERSION(comn_ui8tovarbin) { return number_to_varbin<UI8>(call); }
