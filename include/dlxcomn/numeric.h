/*
 * numeric.h - exact fixed-point numbers: the value type, its arithmetic, and the core below it.
 *
 * A CS_NUMERIC is a sign, a magnitude of up to 77 decimal digits and a decimal scale:
 *
 *     value = (sign) * magnitude * 10^(-scale)
 *
 * The magnitude is a big-endian base-256 integer behind the sign byte. A value of precision p uses
 * Com__Nume_Prec_To_Len[p] bytes of array, the sign byte among them; the rest has no meaning. A value is
 * valid when its magnitude is below 10^precision; scale may exceed precision. Minus zero may come from
 * outside and equals zero.
 *
 * No function here keeps state, allocates or takes a lock: any thread may call any of them. A result may be
 * one of its operands.
 */
#ifndef DLXCOMN_NUMERIC_H
#define DLXCOMN_NUMERIC_H

#include <dlxcomn/constant.h>
#include <dlxcomn/money.h>
#include <dlxcomn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define CS_MAX_PREC 77
#define CS_MAX_SCALE 77
#define CS_MAX_NUMLEN 33 /* bytes of array */

typedef struct _cs_numeric {
    CS_BYTE precision;            /* decimal digits that the value may hold, 1 to 77 */
    CS_BYTE scale;                /* decimal digits after the point, 0 to 77 */
    CS_BYTE array[CS_MAX_NUMLEN]; /* sign byte (0 positive, anything else negative), then the magnitude */
} CS_NUMERIC;
typedef CS_NUMERIC CS_DECIMAL;

static_assert(sizeof(CS_NUMERIC) == 35 && offsetof(CS_NUMERIC, scale) == 1 && offsetof(CS_NUMERIC, array) == 2,
              "CS_NUMERIC crosses the library's edge");

/* Result codes of the core, of the value converters and of money arithmetic. */
enum {
    NUME_OK = 0,
    NUME_OVERFLOW = 1,  /* the result does not fit the destination's bytes or precision */
    NUME_BADVALUE = 2,  /* a rescale of more than 77 places, an empty record, a text syntax error */
    NUME_DIVZERO = 3,   /* the divisor is zero */
    NUME_UNDERFLOW = 5, /* below the range of the destination */
    NUME_TRUNCATED = 6  /* done, but non-zero digits were dropped */
};

/* ---- Arithmetic ----------------------------------------------------------------------------
 * Statuses: CS_SUCCEED; CS_EDOMAIN for an operand whose precision is not 1 to 77 or whose scale is above 77
 * (the result stays as it was); CS_EOVERFLOW when the value does not fit, or digits would be lost;
 * CS_ESYNTAX for a rescale of more than 77 places; CS_EDIVZERO. The result's precision and scale are
 * outputs, chosen from the operands' (p1, s1 and p2, s2):
 *
 *     add, subtract   I = max(p1 - s1, p2 - s2), at least 1; S = max(s1, s2); P = S + I + 1
 *     multiply        I = p1 - s1 + p2 - s2 + 1;             S = s1 + s2;     P = S + I
 *     divide          I = p1 - s1 + s2;                      S = p1 + s2 + 1, or 6 if p1 + s2 < 6; P = S + I
 *
 * each capped at 77, and S then at P - I. Division truncates. On a failure other than CS_EDOMAIN precision
 * and scale have been written and the bytes are not to be read.
 */
DLXCOMN_API CS_RETCODE comn_numadd(CS_NUMERIC *add1p, CS_NUMERIC *add2p, CS_NUMERIC *sump);
DLXCOMN_API CS_RETCODE comn_numsub(CS_NUMERIC *minp, CS_NUMERIC *subp, CS_NUMERIC *diffp);
DLXCOMN_API CS_RETCODE comn_nummul(CS_NUMERIC *m1, CS_NUMERIC *m2, CS_NUMERIC *result);
DLXCOMN_API CS_RETCODE comn_numdivide(CS_NUMERIC *dividend, CS_NUMERIC *divisor, CS_NUMERIC *quot);

/* Add (operation 0) or subtract (1); any other operation is a broken contract. */
DLXCOMN_API CS_RETCODE comn_num_addorsub(CS_NUMERIC *oper1, CS_NUMERIC *oper2, CS_NUMERIC *result, int operation);

/*
 * -1, 0 or 1: the order of n1 against n2. A precision outside 1 to 77 is a broken contract. Where aligning
 * the scales would take more than 77 digits, digits below the coarser scale do not count.
 */
DLXCOMN_API int comn_numcmp(CS_NUMERIC *n1, CS_NUMERIC *n2);

/* ---- Precision and length ------------------------------------------------------------------ */

/* Bytes of a value of that precision, sign byte included. */
extern DLXCOMN_API const unsigned char Com__Nume_Prec_To_Len[CS_MAX_PREC + 1];
/* The precision that a length holds, at index length - 2; the last three entries are 255. */
extern DLXCOMN_API const unsigned char Com__Nume_Len_To_Prec[35];
/* Row p is 10^p: its length, then that many bytes of sign and magnitude, then zeros. */
extern DLXCOMN_API const unsigned char Com__Nume_Byte_Power_Array[CS_MAX_PREC + 1][34];

/* The table entries; a precision outside 1 to 77, or a length outside 0 to 33, is a broken contract. */
DLXCOMN_API CS_INT comn_num_getlen(CS_INT precision);
DLXCOMN_API CS_INT comn_num_getprec(CS_INT length);

/* ---- Core ----------------------------------------------------------------------------------
 * These work on __CONSTANT records whose len, prec, scale and value the caller has set, the destination's
 * too. They write the bytes at value and, but for com__exctnume_ceilingfloor and the two records that
 * com__exctnume_intdiv moves, nothing else. Codes are the NUME_ codes. After NUME_OVERFLOW a result is not
 * to be read; that of com__exctnume_addorsub is then zero.
 */

/*
 * -1, 0 or 1. Bit 1 of flag makes the order signed, bit 2 aligns the scales first (dropping digits below
 * the coarser scale where 77 digits do not suffice); with flag 0 only the magnitudes count.
 */
DLXCOMN_API int com__exctnume_cmp(__CONSTANT *op1, __CONSTANT *op2, int flag);
/* 1 when the magnitude equals i (0 to 255). */
DLXCOMN_API int com__exctnume_intcmp(__CONSTANT *val, int i);
/* Copy between lengths, aligned at the low end; 1 when non-zero high bytes were dropped. */
DLXCOMN_API int com__exctnume_copy(__CONSTANT *inval, __CONSTANT *outval);
/*
 * Multiply (scale above 0) or divide (below 0) by a power of ten, into outval, or in place if that is null.
 * NUME_TRUNCATED tells that non-zero digits were cut, NUME_BADVALUE a scale beyond 77. statflag is ignored.
 */
DLXCOMN_API int com__exctnume_scale(__CONSTANT *inval, __CONSTANT *outval, int scale, int statflag);
/* 1 when the magnitude is 10^prec or more. */
DLXCOMN_API int com__exctnume_checkprecision(__CONSTANT *val);
/*
 * Divide all bytes at *ptrtobufptr, the first one included, by ten and answer the remainder. Drops one
 * leading byte when byte 1 has become zero, moving *ptrtobufptr and *lenptr, but not from three bytes whose
 * last is 255: that leaves room for an increment.
 */
DLXCOMN_API int com__exctnume_divby10(CS_BYTE **ptrtobufptr, int *lenptr);
/* magnitude * 10 + i; non-zero on overflow. */
DLXCOMN_API int com__exctnume_mulby10_add(__CONSTANT *numeval, short i);
/* Add or subtract one, by value. 1 when all bytes wrapped; NUME_BADVALUE for an empty record. */
DLXCOMN_API int com__exctnume_inc(__CONSTANT *numeptr);
DLXCOMN_API int com__exctnume_dec(__CONSTANT *numeptr);
/* 1 when every magnitude byte is 255. */
DLXCOMN_API int com__exctnume_needsbyte(__CONSTANT *numeptr);
/* Magnitudes only: a and b of one length; intsub wants a to be the greater. 1 on overflow of r. */
DLXCOMN_API int com__exctnume_intadd(__CONSTANT *a, __CONSTANT *b, __CONSTANT *r);
DLXCOMN_API int com__exctnume_intsub(__CONSTANT *a, __CONSTANT *b, __CONSTANT *r);
/* Signed product; 1 on overflow of r. */
DLXCOMN_API int com__exctnume_intmul(__CONSTANT *a, __CONSTANT *b, __CONSTANT *r);
/*
 * Divide magnitudes. q's buffer is the workspace of quotient and remainder, and both records are moved into
 * it: on return q->value is one byte ahead of the quotient's first digit, r->len is 0 for no remainder.
 */
DLXCOMN_API int com__exctnume_intdiv(__CONSTANT *a, __CONSTANT *b, __CONSTANT *q, __CONSTANT *r);
/* Signed add (opn 0) or subtract (1) of records of one length and scale, rescaled to result's scale. */
DLXCOMN_API int com__exctnume_addorsub(__CONSTANT *op1, __CONSTANT *op2, __CONSTANT *result, int opn);
/* Signed product at res's scale. NUME_TRUNCATED when digits were cut. */
DLXCOMN_API int com__exctnume_mul(__CONSTANT *op1, __CONSTANT *op2, __CONSTANT *res);
/*
 * Signed quotient at quot's scale, truncated. remdr may be null; of it only len is told: 0 for no
 * remainder. A quotient that needs more working bytes than the operation has is NUME_OVERFLOW.
 */
DLXCOMN_API int com__exctnume_div(__CONSTANT *op1, __CONSTANT *op2, __CONSTANT *quot, __CONSTANT *remdr);
/* Round half away from zero by the first dropped digit; the scale stays and dropped digits become zeros. */
DLXCOMN_API void com__exctnume_round(__CONSTANT *op, CS_INT scale, __CONSTANT *result);
/* The next integer up (type not 0) or down; result's len and prec become op's, its scale 0. */
DLXCOMN_API void com__exctnume_ceilingfloor(__CONSTANT *op, __CONSTANT *result, int type);

/* ---- Value converters ----------------------------------------------------------------------
 * They answer NUME_ codes. dest is where sign byte and magnitude go, destlen their count. precision and
 * scale are in and out: a precision of 0 or above 77 is replaced by the one that destlen holds (and the
 * scale then becomes 0, in the integer and double converters).
 */

/*
 * Read numeric text: blanks, one sign, digits with one point, an exponent, white space. flag 1 permits
 * losing digits, rounding at the first fraction digit lost; else that is NUME_TRUNCATED. A precision of 0
 * or above 77 is computed from the text, and *dest then moves forward to the *destlen bytes of the value;
 * a scale above 77 is taken from the text. *destlen 0 means 33. Text with an exponent must be
 * NUL-terminated. White space is allowed behind an exponent of two digits or more, and not behind one. A failure
 * clears the value or leaves one that is not to be read.
 */
DLXCOMN_API int com__subchartoexctnume(char *cp, int len, CS_BYTE **dest, CS_INT *destlen, CS_BYTE *precision,
                                       CS_BYTE *scale, int flag);
/*
 * Write the value as text, without a NUL, at the end of the destlen bytes of dest; answers the index of its
 * first character, or -1 when it does not fit. 80 bytes hold any value.
 */
DLXCOMN_API int com__subexctnumetochar(__CONSTANT *srcconst, char *dest, int destlen);
/*
 * A double, by its 17 significant digits, rounded at the scale. Too small a value is zero. Too large a one is
 * NUME_OVERFLOW, or NUME_BADVALUE where the point would have to move by more than 77 places; infinities and NaN
 * are NUME_BADVALUE as well.
 */
DLXCOMN_API int com__doubletoexctnume(CS_FLOAT flt8val, CS_BYTE *dest, int destlen, CS_BYTE *precision,
                                      CS_BYTE *scale);
/*
 * To the nearest double. A record of no bytes stores nothing. A negative value of scale 77, whose text has more
 * than 79 characters, is NUME_OVERFLOW with nothing stored.
 */
DLXCOMN_API int com__subexctnumetoflt8(__CONSTANT *numeval, CS_FLOAT *flt8);
DLXCOMN_API int com__longtoexctnume(CS_INT longval, CS_BYTE *dest, int destlen, CS_BYTE *precision, CS_BYTE *scale);
DLXCOMN_API int com__longlongtoexctnume(CS_BIGINT longval, CS_BYTE *dest, int destlen, CS_BYTE *precision,
                                        CS_BYTE *scale);
DLXCOMN_API int com__ulongtoexctnume(CS_UINT longval, CS_BYTE *dest, int destlen, CS_BYTE *precision,
                                     CS_BYTE *scale);
DLXCOMN_API int com__ulonglongtoexctnume(CS_UBIGINT longval, CS_BYTE *dest, int destlen, CS_BYTE *precision,
                                         CS_BYTE *scale);
/*
 * To 64-bit integers; fractions are cut. Out of range stores the bound: NUME_OVERFLOW or NUME_UNDERFLOW. Any
 * negative value is below the unsigned range. A record of no bytes stores nothing; a negative value of scale 77
 * is NUME_OVERFLOW.
 */
DLXCOMN_API int com__subexctnumetolonglong(__CONSTANT *numeval, CS_BIGINT *longval);
DLXCOMN_API int com__subexctnumetoulonglong(__CONSTANT *numeval, CS_UBIGINT *longval);
/* To CS_MONEY, rounded half away from zero at four places. Answers 1 on success and 0 on failure. */
DLXCOMN_API int com__exctnumetomny8(__CONSTANT *numeval, CS_BYTE *dest);
/* From CS_MONEY. A small negative value that rounds to zero keeps sign byte 1. flag is not used. */
DLXCOMN_API int com__mny8toexctnume(CS_MONEY *mnyptr, CS_BYTE *dest, int destlen, CS_BYTE *precision, CS_BYTE *scale,
                                    int flag);

/*
 * Read decimal text up to the first byte that is no digit. errno: EINVAL (answer 0) when no digit stands
 * after the sign, ERANGE (answer the bound) when the value does not fit; otherwise it stays. "-+5" is 5.
 * The unsigned form answers 0 with ERANGE for a leading "-".
 */
DLXCOMN_API CS_BIGINT dlxatoll(char *str);
DLXCOMN_API CS_UBIGINT dlxatoull(char *str);

#ifdef __cplusplus
}
#endif
#endif
