/*
 * conversions.h - the conversions between datatypes, by source. convert.h tells their common contract.
 *
 * Numbers out of range are stored saturated. Text of an integer or float is never cut: where it does not fit, the
 * destination shows a single "*" (if it has room for two bytes or more) and the status is CS_EOVERFLOW. To
 * CS_BINARY and its kin a number goes as its bytes in memory order, cut to fit with CS_ETRUNCATED.
 */
#ifndef DLXCOMN_CONVERSIONS_H
#define DLXCOMN_CONVERSIONS_H

#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The type of a conversion function; CS_CONV_FUNC is a pointer to it. */
typedef CS_RETCODE CS_CONVERSION(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt,
                                 CS_VOID *dest, CS_INT *destlen);

/* From CS_TINYINT (6), 0 to 255. */
extern DLXCOMN_API CS_CONVERSION comn_i1tobin, comn_i1tobit, comn_i1tochar, comn_i1toflt4, comn_i1toflt8, comn_i1toi1,
    comn_i1toi2, comn_i1toi4, comn_i1toi8, comn_i1tomny4, comn_i1tomoney, comn_i1tonum,
    comn_i1toui2, comn_i1toui4, comn_i1toui8, comn_i1tovarbin, comn_i1tovarchar;

/* From CS_SMALLINT (7). */
extern DLXCOMN_API CS_CONVERSION comn_i2tobin, comn_i2tobit, comn_i2tochar, comn_i2toflt4, comn_i2toflt8, comn_i2toi1,
    comn_i2toi2, comn_i2toi4, comn_i2toi8, comn_i2tomny4, comn_i2tomoney, comn_i2tonum,
    comn_i2toui2, comn_i2toui4, comn_i2toui8, comn_i2tovarbin, comn_i2tovarchar;

/* From CS_INT (8). */
extern DLXCOMN_API CS_CONVERSION comn_i4tobin, comn_i4tobit, comn_i4tochar, comn_i4toflt4, comn_i4toflt8, comn_i4toi1,
    comn_i4toi2, comn_i4toi4, comn_i4toi8, comn_i4tomny4, comn_i4tomoney, comn_i4tonum,
    comn_i4toui2, comn_i4toui4, comn_i4toui8, comn_i4tovarbin, comn_i4tovarchar;

/*
 * From CS_LONG (20) and CS_BIGINT (30). A value below the range is CS_EUNDERFLOW in CS_TINYINT and
 * CS_SMALLINT, CS_EOVERFLOW in CS_INT. To the floats a value is capped at what converts back. comn_i8tonum
 * takes CS_VALUE_FROM_SOURCE for precision and scale, and writes 255 to the descriptor for each.
 */
extern DLXCOMN_API CS_CONVERSION comn_i8tobin, comn_i8tobit, comn_i8tochar, comn_i8toflt4, comn_i8toflt8, comn_i8toi1,
    comn_i8toi2, comn_i8toi4, comn_i8toi8, comn_i8tomny4, comn_i8tomoney, comn_i8tonum,
    comn_i8toui2, comn_i8toui4, comn_i8toui8, comn_i8tovarbin, comn_i8tovarchar;

/* From CS_USMALLINT (31). */
extern DLXCOMN_API CS_CONVERSION comn_ui2tobin, comn_ui2tobit, comn_ui2tochar, comn_ui2toflt4, comn_ui2toflt8,
    comn_ui2toi1, comn_ui2toi2, comn_ui2toi4, comn_ui2toi8, comn_ui2tomny4, comn_ui2tomoney,
    comn_ui2tonum, comn_ui2toui2, comn_ui2toui4, comn_ui2toui8, comn_ui2tovarbin,
    comn_ui2tovarchar;

/* From CS_UINT (32). */
extern DLXCOMN_API CS_CONVERSION comn_ui4tobin, comn_ui4tobit, comn_ui4tochar, comn_ui4toflt4, comn_ui4toflt8,
    comn_ui4toi1, comn_ui4toi2, comn_ui4toi4, comn_ui4toi8, comn_ui4tomny4, comn_ui4tomoney,
    comn_ui4tonum, comn_ui4toui2, comn_ui4toui4, comn_ui4toui8, comn_ui4tovarbin,
    comn_ui4tovarchar;

/* From CS_UBIGINT (33). As from CS_BIGINT; from 2^63 on a float is 2^63 plus the float of the rest and 1. */
extern DLXCOMN_API CS_CONVERSION comn_ui8tobin, comn_ui8tobit, comn_ui8tochar, comn_ui8toflt4, comn_ui8toflt8,
    comn_ui8toi1, comn_ui8toi2, comn_ui8toi4, comn_ui8toi8, comn_ui8tomny4, comn_ui8tomoney,
    comn_ui8tonum, comn_ui8toui2, comn_ui8toui4, comn_ui8toui8, comn_ui8tovarbin,
    comn_ui8tovarchar;

/*
 * From CS_BIT (11), whose byte must be 0 or 1: anything else is CS_EDOMAIN with nothing written. There is no
 * conversion to money. comn_bittovarbin stores the character "0" or "1" where comn_bittobin stores the byte,
 * and neither variable-length form sets *destlen.
 */
extern DLXCOMN_API CS_CONVERSION comn_bittobin, comn_bittobit, comn_bittochar, comn_bittoflt4, comn_bittoflt8,
    comn_bittoi1, comn_bittoi2, comn_bittoi4, comn_bittoi8, comn_bittonum, comn_bittoui2,
    comn_bittoui4, comn_bittoui8, comn_bittovarbin, comn_bittovarchar;

/*
 * From CS_REAL (9) and CS_FLOAT (10). To integers by truncation; a value beyond the bound is out of range even
 * by a fraction, and NaN converts to whatever the processor makes of it, with CS_SUCCEED. As text with 17
 * significant digits: ".5", "-0.5", "5.0", "1e+20", "inf.0".
 *
 * To CS_NUMERIC: a value too large, or an infinity, is CS_EOVERFLOW; NaN is CS_EDOMAIN; one too small for the
 * scale is zero.
 */
extern DLXCOMN_API CS_CONVERSION comn_flt4tobin, comn_flt4tobit, comn_flt4tochar, comn_flt4toflt4, comn_flt4toflt8,
    comn_flt4toi1, comn_flt4toi2, comn_flt4toi4, comn_flt4toi8, comn_flt4tomny4,
    comn_flt4tomoney, comn_flt4tonum, comn_flt4toui2, comn_flt4toui4, comn_flt4toui8,
    comn_flt4tovarbin, comn_flt4tovarchar;

extern DLXCOMN_API CS_CONVERSION comn_flt8tobin, comn_flt8tobit, comn_flt8tochar, comn_flt8toflt4, comn_flt8toflt8,
    comn_flt8toi1, comn_flt8toi2, comn_flt8toi4, comn_flt8toi8, comn_flt8tomny4,
    comn_flt8tomoney, comn_flt8tonum, comn_flt8toui2, comn_flt8toui4, comn_flt8toui8,
    comn_flt8tovarbin, comn_flt8tovarchar;

/*
 * From CS_NUMERIC (16) and CS_DECIMAL (17). A precision outside 1 to 77 or a scale above 77 in the source is
 * CS_EDOMAIN with nothing written. To integers below 64 bits and to the floats the value goes through a double
 * and is judged there, before its fraction is cut. comn_numtonum takes CS_VALUE_FROM_SOURCE for precision and
 * scale, and answers CS_ETRUNCATED where digits were cut. comn_numtochar cuts text that does not fit.
 */
extern DLXCOMN_API CS_CONVERSION comn_numtobin, comn_numtobit, comn_numtochar, comn_numtoflt4, comn_numtoflt8,
    comn_numtoi1, comn_numtoi2, comn_numtoi4, comn_numtoi8, comn_numtomny4, comn_numtomoney,
    comn_numtonum, comn_numtoui2, comn_numtoui4, comn_numtoui8, comn_numtovarbin,
    comn_numtovarchar;

/*
 * The bytes of a fixed-width value to the binary group: as many as maxlength has room for, from the lowest
 * address, with CS_ETRUNCATED when that is fewer than width; else padded by comn__padbin. width is at least 1.
 */
DLXCOMN_API CS_RETCODE comn_fixedtobin(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt,
                                       CS_VOID *dest, CS_INT *destlen, CS_INT width);

/*
 * The same to CS_VARBINARY: *destlen is 258. A width that is negative or above 255 copies 256 bytes; a width
 * above 256 is then CS_EOVERFLOW.
 */
DLXCOMN_API CS_RETCODE comn_fixedtovarbin(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt,
                                          CS_VOID *dest, CS_INT *destlen, CS_INT width);

#ifdef __cplusplus
}
#endif
#endif
