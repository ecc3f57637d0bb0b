// Conversions from CS_SMALLINT.
#include "convert/integer_conversions.h"

using namespace dlx;

COMN_CONVERSION(comn_i2toi1) { return integer_to_integer<I2, I1>(call); }
COMN_CONVERSION(comn_i2toi2) { return integer_to_integer<I2, I2>(call); }
COMN_CONVERSION(comn_i2toi4) { return integer_to_integer<I2, I4>(call); }
COMN_CONVERSION(comn_i2toi8) { return integer_to_integer<I2, I8>(call); }
COMN_CONVERSION(comn_i2toui2) { return integer_to_integer<I2, UI2>(call); }
COMN_CONVERSION(comn_i2toui4) { return integer_to_integer<I2, UI4>(call); }
COMN_CONVERSION(comn_i2toui8) { return integer_to_integer<I2, UI8>(call); }
COMN_CONVERSION(comn_i2tobit) { return integer_to_bit<I2>(call); }
COMN_CONVERSION(comn_i2toflt4) { return integer_to_float<I2, Flt4>(call); }
COMN_CONVERSION(comn_i2toflt8) { return integer_to_float<I2, Flt8>(call); }
COMN_CONVERSION(comn_i2tomoney) { return integer_to_money<I2>(call); }
COMN_CONVERSION(comn_i2tomny4) { return integer_to_mny4<I2>(call); }
COMN_CONVERSION(comn_i2tonum) { return integer_to_num<I2>(call); }
COMN_CONVERSION(comn_i2tochar) { return integer_to_char<I2>(call); }
COMN_CONVERSION(comn_i2tovarchar) { return integer_to_varchar<I2>(call); }
COMN_CONVERSION(comn_i2tobin) { return number_to_bin<I2>(call); }
COMN_CONVERSION(comn_i2tovarbin) { return number_to_varbin<I2>(call); }
