/*
 * convert.h - the conversion matrix of a context, user conversions, and the padding of results.
 *
 * The contract of every CS_CONV_FUNC, and so of each comn_<source>to<destination>:
 *   1. context, src, srcfmt, dest, destfmt and destlen must not be null; they are tested in this order.
 *   2. srcfmt->datatype and destfmt->datatype must be ids that the function serves, a character source's
 *      maxlength at least 1, a character or binary destination's maxlength not negative. Anything else
 *      is a mistake of the calling code (diag.h).
 *   3. Data that cannot be converted is reported by status alone, and nothing is allocated that outlives
 *      the call.
 *   4. *destlen receives the bytes of the result, with a NUL or padding that the format asks for. A
 *      fixed-width destination gets its width whether or not the value fits.
 *   5. A number out of range is stored saturated, and the status says so.
 *
 * A context and its tables belong to one thread at a time; the built-in table is never written. The
 * conversions themselves keep no state.
 */
#ifndef DLXCOMN_CONVERT_H
#define DLXCOMN_CONVERT_H

#include <dlxcomn/charset.h>
#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The side of the built-in table. */
#define CS_CONV_DIM 40

/* The built-in table, row by row: row is the source id, column the destination id. A missing cell is null. */
extern DLXCOMN_API const CS_CONV_FUNC Com__cnvrt_array[CS_CONV_DIM * CS_CONV_DIM];

/*
 * A node of the list of user conversions. Along nextsrc stands one node for each source id; from each of
 * them the further destinations of that source along nextdest.
 */
struct _csusrcvtfunc {
    CS_INT srctype;
    CS_INT desttype;
    CS_CONV_FUNC cvtfunc;           /* null after com_conv_default */
    struct _csusrcvtfunc *nextdest; /* next node with the same srctype */
    struct _csusrcvtfunc *nextsrc;  /* next node with another srctype; null inside a nextdest chain */
};

static_assert(offsetof(CsUsrCvtFunc, desttype) == 4, "CsUsrCvtFunc.desttype");
static_assert(offsetof(CsUsrCvtFunc, cvtfunc) == 8, "CsUsrCvtFunc.cvtfunc");
static_assert(offsetof(CsUsrCvtFunc, nextdest) == 16, "CsUsrCvtFunc.nextdest");
static_assert(offsetof(CsUsrCvtFunc, nextsrc) == 24, "CsUsrCvtFunc.nextsrc");
static_assert(sizeof(CsUsrCvtFunc) == 32, "CsUsrCvtFunc crosses the library's edge");

/*
 * Give the context its own copy of the built-in table and an empty user list. CS_MEM_ERROR leaves
 * cvttbl null, with cvtdim set. The memory is the plain allocator's; com_conv_free releases it.
 */
DLXCOMN_API CS_RETCODE com_conv_init(CS_CONTEXT *context);

/* Release the table and the user list. Always CS_SUCCEED; may be called twice. */
DLXCOMN_API CS_RETCODE com_conv_free(CS_CONTEXT *context);

/*
 * The conversion from srctype to desttype, or null if there is none; a negative id has none. A cell that
 * is filled can still be one whose function does not take the source id: only the datatype of the
 * descriptor decides whether it runs.
 */
DLXCOMN_API CS_CONV_FUNC com_conv_func(CS_CONTEXT *context, CS_INT srctype, CS_INT desttype);

/*
 * Replace a conversion of this context: a cell when both ids are built in (newfunc may then be null, which
 * closes the cell; the ids must not be negative), else a node of the user list. CS_SUCCEED or CS_MEM_ERROR.
 */
DLXCOMN_API CS_RETCODE com_conv_install(CS_CONTEXT *context, CS_INT srctype, CS_INT desttype, CS_CONV_FUNC newfunc);

/*
 * Bring the built-in conversion back, or close a user conversion, whose node stays for the next install.
 * The ids must not be negative. Always CS_SUCCEED.
 */
DLXCOMN_API CS_RETCODE com_conv_default(CS_CONTEXT *context, CS_INT srctype, CS_INT desttype);

/* The built-in table and its side. The table is read-only in spite of its type. */
DLXCOMN_API void com__get_ctbl(CS_CONV_FUNC **cvt_array, int *cvt_dim);

/* The node of a user conversion, or null. The first node of the source decides: no other chain is searched. */
DLXCOMN_API CsUsrCvtFunc *com__conv_usr_struct(CS_CONTEXT *context, CS_INT srctype, CS_INT desttype);

/* Set or add a node of the user list. CS_SUCCEED, or CS_MEM_ERROR with the list as it was. */
DLXCOMN_API CS_RETCODE com__conv_usr_install(CS_CONTEXT *context, CS_INT srctype, CS_INT desttype,
                                             CS_CONV_FUNC newfunc);

/*
 * From CS_VOID, which carries no value: the destination type's null substitution value (null.h). srcfmt
 * and src are ignored. To CS_VOID: nothing at all, CS_SUCCEED, *destlen as it was.
 */
DLXCOMN_API CS_RETCODE comn_voidtoany(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt,
                                      CS_VOID *dest, CS_INT *destlen);
DLXCOMN_API CS_RETCODE comn_voidtovoid(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt,
                                       CS_VOID *dest, CS_INT *destlen);

/* ---- Padding of a result -------------------------------------------------------------------
 * len is the bytes of the value, *destlen those already written at dest; M is destfmt->maxlength.
 */

/*
 * Finish a character result. The value fits when M is at least len, and above len with
 * CS_FORMAT_NULLTERM. Then CS_FORMAT_ZEROPAD fills up to M with zero bytes, CS_FORMAT_BLANKPAD with
 * blanks (the last one a NUL with CS_FORMAT_NULLTERM), and *destlen becomes M; both are CS_EFORMAT.
 * CS_FORMAT_NULLTERM alone adds a NUL that *destlen counts. A value that does not fit is CS_EOVERFLOW,
 * with a NUL at dest[M - 1] under CS_FORMAT_NULLTERM if M is at least 1; so is a terminator that the bytes
 * already written leave no room for. A negative len, M or *destlen is a broken contract.
 */
DLXCOMN_API CS_RETCODE comn__padchar(CS_INT len, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *destlen);

/*
 * The same for UTF-16 units: the NUL and each blank take two bytes, and what is added begins at *destlen
 * rounded down to an even number. Never writes past M: with a room below one unit
 * CS_FORMAT_NULLTERM is CS_EOVERFLOW and nothing is written.
 */
DLXCOMN_API CS_RETCODE comn__padunichar(CS_INT len, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *destlen);

/* Finish a binary result: CS_FORMAT_ZEROPAD fills from len to M and sets *destlen to M. Always CS_SUCCEED. */
DLXCOMN_API CS_RETCODE comn__padbin(CS_INT len, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *destlen);

/*
 * Copy srcfmt->maxlength bytes of text while doubling each character whose ASCII form under attr (null
 * means iso_1) is quote. With CS_FORMAT_NULLTERM in the source's format a NUL character ends the walk and
 * is copied. CS_ETRUNCATED when the next character, or a doubled quote as a whole, would pass
 * destfmt->maxlength. *destlen always tells the bytes written; nothing is padded.
 */
DLXCOMN_API CS_RETCODE comn__escchar(CS_VOID *src, CS_DATAFMT *srcfmt, CS_VOID *dest, CS_DATAFMT *destfmt,
                                     CS_INT *destlen, CS_ATTRIB *attr, CS_BYTE quote);

#ifdef __cplusplus
}
#endif
#endif
