/*
 * charconv.h - text from one character set to another.
 *
 * The older matrix: ten character sets, converted by small tables and arithmetic, with no data file. com_intl_xlate
 * converts a value by it; each routine can be called by itself. Nothing here keeps state; any thread may call.
 */
#ifndef DLXCOMN_CHARCONV_H
#define DLXCOMN_CHARCONV_H

#include <dlxcomn/charset.h>
#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The names of the sets ------------------------------------------------------------------------ */

/* A set's number in the Unicode conversion library, or one of these. */
typedef CS_INT UNICONV_CID;
enum { UNICONV_UTF16 = -1, UNICONV_NONE = -3, UNICONV_UTF8 = -4, UNICONV_RCSU = -5 };

typedef struct csid_csname {
    int csid;        /* cs_id of CHAR_ATTRIB */
    CS_BYTE *csname; /* NUL-terminated */
    int len;
    UNICONV_CID unilib_cid;
} CSID_CSNAME;

static_assert(offsetof(CSID_CSNAME, csname) == 8 && offsetof(CSID_CSNAME, len) == 16 &&
                  offsetof(CSID_CSNAME, unilib_cid) == 20 && sizeof(CSID_CSNAME) == 24,
              "CSID_CSNAME crosses the library's edge");

#define CSID_NAMES 172 /* rows of csid_name */
extern DLXCOMN_API const CSID_CSNAME csid_name[CSID_NAMES];

/* *id = the unilib_cid (not the csid) of a terminated name. CS_FAIL for an unknown one, *id then stays. */
DLXCOMN_API CS_RETCODE com_get_csid(CS_BYTE *name, UNICONV_CID *id);
/* The same of a csid. */
DLXCOMN_API CS_RETCODE comn__get_unilib_cid(CS_BYTE csid, UNICONV_CID *cid);

/* ---- The older matrix ------------------------------------------------------------------------------ */

/* How a pair of sets is converted. */
enum {
    CS_XLATE_NONE = 0,
    CS_XLATE_COPY = 1,
    CS_XLATE_ASCII = 2, /* only ASCII is kept */
    CS_XLATE_FULL = 3
};

/* Flags of a CS_XLATE_FUNC. */
enum {
    CS_XLATE_UNMAPPED = 1, /* a character had no partner: "?" for each of its bytes */
    CS_XLATE_FULL_DEST = 2,
    CS_XLATE_INVALID = 4   /* of the UTF routines: the source stops being text */
};

/*
 * Converts slen bytes at src to at most dlen bytes at dest, and answers the flags, 0 when all went well; *sused and
 * *dused are the bytes read and written. Where assertions return, the answer to a null pointer is CS_XLATE_INVALID.
 */
typedef int (*CS_XLATE_FUNC)(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);

typedef struct _cs_fou_funcs {
    CS_INT csid; /* of the destination */
    CS_INT xlate_type;
    CS_XLATE_FUNC xlate_func; /* null for types 0 and 1 */
} CS_FOU_FUNCS;

#define CS_FOU_SETS 10

typedef struct _cs_fou_xlt_map {
    CS_INT csid; /* of the source */
    CS_FOU_FUNCS fou_funcs[CS_FOU_SETS];
} CS_FOU_XLT_MAP;

static_assert(sizeof(CS_FOU_FUNCS) == 16 && offsetof(CS_FOU_FUNCS, xlate_func) == 8 &&
                  offsetof(CS_FOU_XLT_MAP, fou_funcs) == 8 && sizeof(CS_FOU_XLT_MAP) == 168,
              "CS_FOU_XLT_MAP crosses the library's edge");

extern DLXCOMN_API const CS_FOU_XLT_MAP Com_fou_xlt_map[CS_FOU_SETS];

/*
 * *xlate_type = how text goes from the character set of srcfmt's locale to that of destfmt's (each the context's where
 * the descriptor has none).
 */
DLXCOMN_API CS_RETCODE com_intl_will_xlate(CsContext *context, CS_DATAFMT *srcfmt, CS_DATAFMT *destfmt,
                                           CS_INT *xlate_type);
/*
 * Convert a value. A value of CS_VARCHAR_TYPE has its length in front and, as a destination, room for 256 bytes; any
 * other has maxlength bytes. CS_ENOCONV for a pair that is not converted (both counts 0), CS_EUNMAPPED, CS_EOVERFLOW
 * where the room was too small; the part that fits is stored. A source without bytes is a broken contract.
 */
DLXCOMN_API CS_RETCODE com_intl_xlate(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt,
                                      CS_VOID *dest, CS_INT *srcused, CS_INT *destused);

/* Single bytes: one for one. */
DLXCOMN_API int com__fou_ascii8_tofrom_1byte(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_cp437_to_cp850(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_cp437_to_iso1(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_cp437_to_mac(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_cp437_to_roman8(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_cp850_to_cp437(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_cp850_to_iso1(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_cp850_to_mac(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_cp850_to_roman8(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_iso1_to_cp437(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_iso1_to_cp850(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_iso1_to_mac(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_iso1_to_roman8(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_mac_to_cp437(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_mac_to_cp850(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_mac_to_iso1(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_mac_to_roman8(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_roman8_to_cp437(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_roman8_to_cp850(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_roman8_to_iso1(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_roman8_to_mac(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);

/*
 * Counts the source up to its first NUL and leaves the destination alone. The count goes to dlen where that is at least
 * slen, so the source needs a NUL or that many bytes; else to slen, with CS_XLATE_FULL_DEST.
 */
DLXCOMN_API int com__fou_caseswap(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);

/*
 * Japanese text, where a character keeps its count of bytes. A character that does not fit is left, and counted neither
 * as read nor as written. Of a three-byte character of eucjis (0x8F) the source is changed: its second byte grows by 2 and
 * is read again as the next character.
 */
DLXCOMN_API int com__fou_deckanji_to_ascii8(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_deckanji_to_eucjis(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_deckanji_to_sjis(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_eucjis_to_ascii8(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_eucjis_to_deckanji(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_eucjis_to_sjis(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_sjis_to_ascii8(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused);
DLXCOMN_API int com__fou_sjis_to_eucjis_deckanj(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused,
                                                int *dused);

/*
 * The UTF routines. Lengths are in bytes and the units of UTF-16 in machine order, aligned or not. sused, dused and
 * padbytes may be null. Where padbytes is given the rest of the room is filled with it, a unit (two bytes) or a byte at
 * a time, and counted as written. The conversion stops in front of what is invalid or does not fit.
 *
 * UTF-8 in overlong forms of two and three bytes and surrogates in three bytes pass; validity_check refuses U+FFFE and
 * U+FFFF. Of UTF-16 a lone surrogate becomes three bytes of UTF-8; validity_check refuses units above 0xFFFD.
 */
DLXCOMN_API int com__fou_utf8_to_utf16(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused,
                                       CS_VOID *padbytes, CS_BOOL validity_check);
DLXCOMN_API int com__fou_utf16_to_utf16(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused,
                                        CS_VOID *padbytes);
DLXCOMN_API int com__fou_utf16_to_utf8(CS_BYTE *src, int slen, CS_BYTE *dest, int dlen, int *sused, int *dused,
                                       CS_VOID *padbytes, CS_BOOL validity_check);

#ifdef __cplusplus
}
#endif
#endif
