/*
 * money.h - the two money types and their arithmetic.
 *
 * A money value is a count of ten-thousandths. CS_MONEY is 64 bits wide, from -922337203685477.5808 to
 * 922337203685477.5807, CS_MONEY4 32 bits, from -214748.3648 to 214748.3647.
 *
 * The com__mny functions answer core codes: 0 done, 1 overflow, 2 syntax, 3 division by zero (the NUME_
 * codes of numeric.h); the float and width-changing ones answer a width (8 or 4), or -1 on failure. The
 * comn_mny functions answer the status: CS_SUCCEED, CS_EOVERFLOW, CS_ESYNTAX, CS_EDIVZERO. After a failure
 * a result is zero unless its comment tells otherwise.
 *
 * No function here keeps state, allocates or takes a lock. A result may be one of its operands.
 */
#ifndef DLXCOMN_MONEY_H
#define DLXCOMN_MONEY_H

#include <dlxcomn/charset.h>
#include <dlxcomn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _cs_money {
    CS_INT mnyhigh; /* high 32 bits of the two's complement count */
    CS_UINT mnylow; /* low 32 bits */
} CS_MONEY;

typedef struct _cs_money4 {
    CS_INT mny4;
} CS_MONEY4;

static_assert(sizeof(CS_MONEY) == 8 && offsetof(CS_MONEY, mnylow) == 4, "CS_MONEY crosses the library's edge");
static_assert(sizeof(CS_MONEY4) == 4, "CS_MONEY4 crosses the library's edge");

/* ---- CS_MONEY arithmetic ------------------------------------------------------------------- */

DLXCOMN_API int com__mnycopy(CS_MONEY *mp1, CS_MONEY *mp2);
/* Negate. The smallest value negates to itself, with code 1 and the output written. */
DLXCOMN_API int com__mnyminus(CS_MONEY *imp, CS_MONEY *omp);
/* Add one ten-thousandth; the largest value wraps to the smallest, with code 1. */
DLXCOMN_API int com__mnyinc(CS_MONEY *mp);
/*
 * Take one from mnylow if that is not zero; otherwise take one from mnyhigh and leave mnylow zero, which
 * subtracts 2^32. The smallest mnyhigh wraps to the largest, with code 1.
 */
DLXCOMN_API int com__mnydec(CS_MONEY *mp);
DLXCOMN_API int com__mnyadd(CS_MONEY *add1p, CS_MONEY *add2p, CS_MONEY *sump);
DLXCOMN_API int com__mnysub(CS_MONEY *minp, CS_MONEY *subp, CS_MONEY *difp);
/*
 * m1 * m2, rounded half away from zero. A product of the two counts from 5000 to 9999 is code 2 with m3
 * unwritten: 0.0100 * 0.0050 fails so.
 */
DLXCOMN_API int com__mnymul(CS_MONEY *m1, CS_MONEY *m2, CS_MONEY *m3);
/* m1 / m2, truncated at four places. */
DLXCOMN_API int com__mnydiv(CS_MONEY *m1, CS_MONEY *m2, CS_MONEY *m3);
/*
 * The count of mp times mpier, its magnitude then plus add. Code 1 leaves mp as it was; the smallest value
 * is out of reach. The high half of mpier is not applied to the top 16 bits of the magnitude.
 */
DLXCOMN_API int com__mnyscale(CS_MONEY *mp, int mpier, int add);
/* Divide the count by the low 16 bits of dvsr; answers the remainder of the magnitude. 0 does nothing. */
DLXCOMN_API int com__mnydown(CS_MONEY *mp, int dvsr);
/*
 * mp becomes its magnitude without trim digits, rounded by the last of them; answers -1 for a negative input. The
 * smallest value without a trim has no magnitude in range, and stays.
 */
DLXCOMN_API int com__mnyinit(CS_MONEY *mp, int trim);
/* Take off the last digit and store its character; answers 1 while more remain. */
DLXCOMN_API int com__mnyndigit(CS_MONEY *mp, char *value);
DLXCOMN_API int com__maxposmny(CS_MONEY *mp);
DLXCOMN_API int com__maxnegmny(CS_MONEY *mp);
/* Money has no remainder: stores nothing and answers 1. */
DLXCOMN_API int com__mnyrem(CS_MONEY *dvddp, CS_MONEY *dvsrp, CS_MONEY *rmp);

DLXCOMN_API CS_RETCODE comn_mnycopy(CS_MONEY *mp1, CS_MONEY *mp2);
DLXCOMN_API CS_RETCODE comn_mnyminus(CS_MONEY *imp, CS_MONEY *omp);
DLXCOMN_API CS_RETCODE comn_mnyinc(CS_MONEY *mp);
DLXCOMN_API CS_RETCODE comn_mnydec(CS_MONEY *mp);
DLXCOMN_API CS_RETCODE comn_mnyadd(CS_MONEY *add1p, CS_MONEY *add2p, CS_MONEY *sump);
DLXCOMN_API CS_RETCODE comn_mnysub(CS_MONEY *minp, CS_MONEY *subp, CS_MONEY *difp);
DLXCOMN_API CS_RETCODE comn_mnymul(CS_MONEY *m1, CS_MONEY *m2, CS_MONEY *m3);
DLXCOMN_API CS_RETCODE comn_mnydivide(CS_MONEY *m1, CS_MONEY *m2, CS_MONEY *m3);
DLXCOMN_API CS_RETCODE comn_mnyscale(CS_MONEY *mp, int mpier, int add);
/* These three answer what their core answers, not a status. */
DLXCOMN_API int comn_mnydown(CS_MONEY *mp, int dvsr);
DLXCOMN_API int comn_mnyinit(CS_MONEY *mp, int trim);
DLXCOMN_API int comn_mnyndigit(CS_MONEY *mp, char *value);
DLXCOMN_API CS_RETCODE comn_mnymaxpos(CS_MONEY *mp);
DLXCOMN_API CS_RETCODE comn_mnymaxneg(CS_MONEY *mp);
/* -1, 0 or 1. */
DLXCOMN_API int comn_mnycmp(CS_MONEY *m1, CS_MONEY *m2);
DLXCOMN_API CS_RETCODE comn_mnyzero(CS_MONEY *mnyptr);

/* ---- CS_MONEY4 arithmetic ------------------------------------------------------------------ */

/* The smallest value is code 1 with omp unwritten. */
DLXCOMN_API int com__mnyminus4(CS_MONEY4 *imp, CS_MONEY4 *omp);
DLXCOMN_API int com__mnyadd4(CS_MONEY4 *add1p, CS_MONEY4 *add2p, CS_MONEY4 *sump);
DLXCOMN_API int com__mnysub4(CS_MONEY4 *minp, CS_MONEY4 *subp, CS_MONEY4 *difp);
DLXCOMN_API int com__mnymul4(CS_MONEY4 *m1, CS_MONEY4 *m2, CS_MONEY4 *m3);
DLXCOMN_API int com__mnydiv4(CS_MONEY4 *m1, CS_MONEY4 *m2, CS_MONEY4 *m3);
DLXCOMN_API int com__mnyrem4(CS_MONEY4 *dvddp, CS_MONEY4 *dvsrp, CS_MONEY4 *rmp);

DLXCOMN_API CS_RETCODE comn_mny4copy(CS_MONEY4 *mp1, CS_MONEY4 *mp2);
DLXCOMN_API CS_RETCODE comn_mny4minus(CS_MONEY4 *imp, CS_MONEY4 *omp);
DLXCOMN_API CS_RETCODE comn_mny4add(CS_MONEY4 *add1p, CS_MONEY4 *add2p, CS_MONEY4 *sump);
DLXCOMN_API CS_RETCODE comn_mny4sub(CS_MONEY4 *minp, CS_MONEY4 *subp, CS_MONEY4 *difp);
DLXCOMN_API CS_RETCODE comn_mny4mul(CS_MONEY4 *m1, CS_MONEY4 *m2, CS_MONEY4 *m3);
DLXCOMN_API CS_RETCODE comn_mny4divide(CS_MONEY4 *m1, CS_MONEY4 *m2, CS_MONEY4 *m3);
DLXCOMN_API int comn_mny4cmp(CS_MONEY4 *m1, CS_MONEY4 *m2);
DLXCOMN_API CS_RETCODE comn_mny4zero(CS_MONEY4 *mnyptr);

/* ---- Between the two ----------------------------------------------------------------------- */

DLXCOMN_API void com__mny4tomny(CS_MONEY4 *m4p, CS_MONEY *mp);
/* 4, or -1 with the bound stored. */
DLXCOMN_API int com__mnytomny4(CS_MONEY *mp, CS_MONEY4 *m4p);

/* ---- Integers ------------------------------------------------------------------------------
 * From integers: code 1 on overflow, which leaves the unscaled integer in a CS_MONEY (the largest one, for
 * an unsigned value above it) and the bound in a CS_MONEY4. To integers: whole units, rounded half away from
 * zero; out of range is code 1 with the bound stored, but a negative value to an unsigned integer stores nothing.
 */
DLXCOMN_API int com__inttomny(CS_MONEY *mp, CS_INT *value);
DLXCOMN_API int com__int8tomny(CS_MONEY *mp, CS_BIGINT *value);
DLXCOMN_API int com__uinttomny(CS_MONEY *mp, CS_UINT *value);
DLXCOMN_API int com__uint8tomny(CS_MONEY *mp, CS_UBIGINT *value);
DLXCOMN_API int com__inttomny4(CS_MONEY4 *m4p, CS_INT *value);
DLXCOMN_API int com__int8tomny4(CS_MONEY4 *m4p, CS_BIGINT *value);
DLXCOMN_API int com__uinttomny4(CS_MONEY4 *m4p, CS_UINT *value);
DLXCOMN_API int com__uint8tomny4(CS_MONEY4 *m4p, CS_UBIGINT *value);
DLXCOMN_API int com__mnytoint(CS_MONEY *mp, CS_INT *ip);
DLXCOMN_API int com__mnytoint8(CS_MONEY *mp, CS_BIGINT *ip);
DLXCOMN_API int com__mnytouint(CS_MONEY *mp, CS_UINT *ip);
DLXCOMN_API int com__mnytouint8(CS_MONEY *mp, CS_UBIGINT *ip);
DLXCOMN_API int com__mny4toint(CS_MONEY4 *m4p, CS_INT *ip);
DLXCOMN_API int com__mny4toint8(CS_MONEY4 *m4p, CS_BIGINT *ip);
DLXCOMN_API int com__mny4touint(CS_MONEY4 *m4p, CS_UINT *ip);
DLXCOMN_API int com__mny4touint8(CS_MONEY4 *m4p, CS_UBIGINT *ip);

/* ---- Floats --------------------------------------------------------------------------------
 * src and dest are the bytes of the values; style and the length of dest are ignored. From floats: rounded
 * half up at four places, and a null src or a srclen of 0 gives zero. A value out of range or a NaN is -1 with zero
 * stored; to a CS_MONEY4 a value that a CS_MONEY would hold is -1 with the bound stored.
 */
DLXCOMN_API int com__mnytoflt8(CS_BYTE *src, int srclen, CS_BYTE *dest, int destlen, int style);
DLXCOMN_API int com__mnytoflt4(CS_BYTE *src, int srclen, CS_BYTE *dest, int destlen, int style);
DLXCOMN_API int com__mny4toflt8(CS_BYTE *src, CS_BYTE *dest);
DLXCOMN_API int com__mny4toflt4(CS_BYTE *src, CS_BYTE *dest);
DLXCOMN_API int com__flt8tomny(CS_BYTE *src, int srclen, CS_BYTE *dest, int destlen, int style);
DLXCOMN_API int com__flt4tomny(CS_BYTE *src, int srclen, CS_BYTE *dest, int destlen, int style);
DLXCOMN_API int com__flt8tomny4(CS_BYTE *src, int srclen, CS_BYTE *dest, int style);
DLXCOMN_API int com__flt4tomny4(CS_BYTE *src, int srclen, CS_BYTE *dest, int style);

/* ---- Text ---------------------------------------------------------------------------------- */

/*
 * Write the value at the end of the len bytes of cp, without a NUL; answers its first character, or null
 * when it does not fit. The low byte of style 1 asks for thousands separators; style >> 8 is the count of
 * decimals, 0 (or less) meaning 2, rounded half away from zero by the last dropped digit. A small negative value
 * keeps its sign: "-0.00". With separators the byte in front of "123.00" is blanked, if the len bytes have one.
 */
DLXCOMN_API char *com__mnytochar(CS_MONEY *mp, char *cp, int len, int style);
DLXCOMN_API char *com__mny4tochar(CS_MONEY4 *m4p, char *cp, int len, int style);
DLXCOMN_API char *com_cvtmnytochar(CS_MONEY *mp, char *cp, int len, int style);
DLXCOMN_API char *com_cvtmny4tochar(CS_MONEY4 *m4p, char *cp, int len, int style);
/* The same with prec decimals. */
DLXCOMN_API char *com_precmnytochar(CS_MONEY *mp, char *cp, int len, int style, int prec);

/*
 * Read money text: blanks, one sign and one currency symbol in any order, digits with commas, one point,
 * white space. Five decimals count, the fifth for rounding; further ones are skipped. A null chatr means
 * iso_1. After a failure mp holds what was read so far; m4p is then zero, or the bound that the value passes. style is
 * ignored.
 */
DLXCOMN_API int com__mnyfromchar_mb(CS_MONEY *mp, char *icp, int ilen, int style, CHAR_ATTRIB *chatr);
DLXCOMN_API int com__mny4fromchar_mb(CS_MONEY4 *m4p, char *icp, int ilen, int style, CS_ATTRIB *chatr);

/* ---- Rarely used --------------------------------------------------------------------------- */

/*
 * Divide the 64 bits of num by mnylow of den (its low 16 bits in comn__mny16div), as unsigned base-65536
 * digits in the first and signed ones in the second, which the first calls for an mnylow below 65536. So the result
 * there is the unsigned quotient only if no 16 bits of num begin with a set bit. A zero divisor gives zero. No status.
 */
DLXCOMN_API void comn_mnyxdiv(CS_MONEY *num, CS_MONEY *den, CS_MONEY *res);
DLXCOMN_API void comn__mny16div(CS_MONEY *num, CS_MONEY *den, CS_MONEY *res);
/*
 * Shift the 64 bits right, with zero fill, once for each bit of value: by the bit length of value. A
 * negative value does not end.
 */
DLXCOMN_API void com__mnyshift(CS_MONEY *m1, CS_INT value);

#ifdef __cplusplus
}
#endif
#endif
