// The datatypes as the conversions see them: one record for each word of a function name
// comn_<source word>to<destination word>, with the ids it serves and the C type of its value.
#ifndef DLX_FRAME_WORDS_H
#define DLX_FRAME_WORDS_H

#include <dlxcomn/dlxcomn.h>

namespace dlx {

// A word with exactly one id.
template <CS_INT ID, class Value>
struct OneId {
    using value_type = Value;
    static constexpr bool serves(CS_INT id) { return id == ID; }
};

struct I1 : OneId<CS_TINYINT_TYPE, CS_TINYINT> {};
struct I2 : OneId<CS_SMALLINT_TYPE, CS_SMALLINT> {};
struct I4 : OneId<CS_INT_TYPE, CS_INT> {};
struct I8 {
    using value_type = CS_BIGINT;
    static constexpr bool serves(CS_INT id) { return id == CS_LONG_TYPE || id == CS_BIGINT_TYPE; }
};
struct UI2 : OneId<CS_USMALLINT_TYPE, CS_USMALLINT> {};
struct UI4 : OneId<CS_UINT_TYPE, CS_UINT> {};
struct UI8 : OneId<CS_UBIGINT_TYPE, CS_UBIGINT> {};
struct Bit : OneId<CS_BIT_TYPE, CS_BIT> {};
struct Flt4 : OneId<CS_REAL_TYPE, CS_REAL> {};
struct Flt8 : OneId<CS_FLOAT_TYPE, CS_FLOAT> {};
struct Money : OneId<CS_MONEY_TYPE, CS_MONEY> {};
struct Mny4 : OneId<CS_MONEY4_TYPE, CS_MONEY4> {};
struct Num {
    using value_type = CS_NUMERIC;
    static constexpr bool serves(CS_INT id) { return id == CS_NUMERIC_TYPE || id == CS_DECIMAL_TYPE; }
};
struct Char {
    static constexpr bool serves(CS_INT id) {
        return id == CS_CHAR_TYPE || id == CS_LONGCHAR_TYPE || id == CS_TEXT_TYPE || id == CS_SENSITIVITY_TYPE ||
               id == CS_BOUNDARY_TYPE || id == CS_XML_TYPE;
    }
};
struct VarChar : OneId<CS_VARCHAR_TYPE, CS_VARCHAR> {};
struct Bin {
    static constexpr bool serves(CS_INT id) {
        return id == CS_BINARY_TYPE || id == CS_LONGBINARY_TYPE || id == CS_IMAGE_TYPE;
    }
};
struct VarBin : OneId<CS_VARBINARY_TYPE, CS_VARBINARY> {};

// What *destlen receives for a destination of fixed width.
template <class Word>
constexpr CS_INT width_of = static_cast<CS_INT>(sizeof(typename Word::value_type));

} // namespace dlx

#endif
