/*
 * charconv.h - text from one character set to another.
 *
 * The main engine converts between any two sets by the tables of the Unicode conversion library, or by a function that
 * the application installed in the context. The older matrix knows ten character sets, converted by small tables and
 * arithmetic, with no data file; com_intl_xlate converts a value by it, and each routine can be called by itself.
 *
 * Nothing here keeps state but the persistent handle, which is set before it is used. A context is used by one thread
 * at a time.
 */
#ifndef DLXCOMN_CHARCONV_H
#define DLXCOMN_CHARCONV_H

#include <dlxcomn/charset.h>
#include <dlxcomn/context.h>
#include <dlxcomn/locale.h>
#include <dlxcomn/oid.h>

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

/* ---- The main engine ------------------------------------------------------------------------------- */

/*
 * Convert a value from the character set of srcfmt's locale (or the context's) to that of destfmt's, in the category
 * `type` (CS_LC_CTYPE to CS_LC_TIME). *resultlen receives the bytes of the result.
 *
 * Sets that are the same are copied, and what does not fit is cut without a word. Otherwise a function of the
 * application's converts, or text of ASCII alone is copied, or the tables do; CS_ETRUNCATED then tells of a cut, made
 * at a whole character, behind which the room is zeros that are counted, or of a source that ends inside a character. A
 * character without a partner becomes "?", or "??" where it was two bytes or wider and the destination has such
 * characters. Text ends at a NUL. CS_FAIL for a set without tables and for a source that is cut towards UTF-8, or
 * behind less than two characters; CS_MEM_ERROR. What the room holds after these two is not told.
 *
 * A CS_VARCHAR is only whole in copies, ASCII and functions of the application. Through the tables a destination of
 * that type loses its first two bytes of text to its length; towards UTF-8 both ends are taken as they lie, the
 * source's length in front included.
 */
DLXCOMN_API CS_RETCODE comn_charset_convert(CS_CONTEXT *context, CS_INT type, CS_DATAFMT *srcfmt, CS_VOID *src,
                                            CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *resultlen);
/* srcfmt->maxlength bytes in the set of src_lcache to UTF-8. match_mode plays no part, here and below. */
DLXCOMN_API CS_RETCODE comn__convt_to_utf8(CS_CONTEXT *context, CS_INT match_mode, CS_DATAFMT *srcfmt,
                                           CsLocCache *src_lcache, CS_VOID *src, CS_VOID *dest, CS_INT destlen,
                                           CS_INT *resultlen);
/* UTF-8 to destfmt->maxlength bytes in the set of dest_lcache. */
DLXCOMN_API CS_RETCODE comn__convt_from_utf8(CS_CONTEXT *context, CS_INT match_mode, CS_BYTE *src, CS_INT srclen,
                                             CS_DATAFMT *destfmt, CsLocCache *dest_lcache, CS_VOID *dest,
                                             CS_INT *resultlen);
/*
 * Copy up to destlen bytes: CS_SUCCEED, or CS_ETRUNCATED where not all fitted; CS_ENOCONV at the first byte that is not
 * ASCII, with *resultlen 0 and what was copied, that byte included, left at dest.
 */
DLXCOMN_API CS_RETCODE comn__copy_ascii_only(CS_BYTE *dest, CS_INT destlen, CS_BYTE *src, CS_INT srclen,
                                             CS_INT *resultlen);
/* *multiplier = how many bytes a byte of one locale's set can become in the other's. A null locale is the context's. */
DLXCOMN_API CS_RETCODE comn_convert_max_multiplier(CS_CONTEXT *context, CS_INT type, CS_LOCALE *srcloc,
                                                   CS_LOCALE *destloc, CS_INT *multiplier);

/* A handle of the Unicode conversion library that takes the place of all others; null for none. */
typedef CS_VOID *CVTH;
extern DLXCOMN_API CVTH comn__persistent_handle;
DLXCOMN_API void comn_set_persistent_handle(CVTH handle);
DLXCOMN_API CVTH comn__get_persistent_handle(void);

/* ---- Conversions of the application ------------------------------------------------------------------- */

/* One conversion; the list hangs on usercharconv of the context. Names are counted. */
#define CS_USERCONV_NAME 256
typedef struct _cs_user_algo {
    CS_CHAR from_charname[CS_USERCONV_NAME];
    CS_INT from_charnamelen;
    CS_CHAR to_charname[CS_USERCONV_NAME];
    CS_INT to_charnamelen;
    CsOID *from_oid;
    CsOID *to_oid;
    CS_CONV_FUNC user_conv_func;
    CS_INT conv_multiplier;
    struct _cs_user_algo *next;
} CsUserAlgo;

static_assert(offsetof(CsUserAlgo, to_charname) == 260 && offsetof(CsUserAlgo, from_oid) == 520 &&
                  offsetof(CsUserAlgo, next) == 552 && sizeof(CsUserAlgo) == 560,
              "CsUserAlgo crosses the library's edge");

enum { CS_USERCONV_GET = 33, CS_USERCONV_SET = 34, CS_USERCONV_CLEAR = 35 };
/*
 * Get, set or clear the conversion of a pair of sets. CS_EBADCSNAME for an unknown name. A get of none is a null *func;
 * func must be given. A set replaces; a null multiplier is 1. Clearing the conversion that was set last takes all
 * others off the list with it.
 */
DLXCOMN_API CS_RETCODE comn_set_user_charset_convert(CS_CONTEXT *context, CS_INT action, CS_CHAR *srccharset,
                                                     CS_INT srccharset_len, CS_CHAR *destcharset,
                                                     CS_INT destcharset_len, CS_INT *multiplier, CS_CONV_FUNC *func);
/* *useralgop = the conversion of a pair of identifiers, or null with CS_FAIL. */
DLXCOMN_API CS_RETCODE comn__get_user_charconv(CS_CONTEXT *context, CsOID *from_oid, CsOID *to_oid,
                                               CsUserAlgo **useralgop);
DLXCOMN_API CS_RETCODE comn_drop_user_charconv_list(CS_CONTEXT *context);

/* ---- Records of the layers above ------------------------------------------------------------------------ */

typedef struct _cs_conv_dest {
    CS_BYTE value[4];
    CS_TINYINT value_len;
    CS_TINYINT map_flag;
    CS_USHORT index;
} CsConvDest;

/* A conversion by a table. */
typedef struct _cs_conv_table {
    CS_VOID *from_name;
    CS_VOID *to_name;
    CS_BOOL table;
    CS_TINYINT min_src_len;
    CS_TINYINT max_multiplier;
    CS_USHORT nindex;
    CS_USHORT ndest;
    CS_UINT index_size;
    CS_UINT dest_size;
    CS_USHORT *index_array;
    CsConvDest *dest_array;
} CS_CONV_TABLE;

typedef CS_RETCODE (*CS_SYS_CFUNC)(CsContext *context, CS_BYTE *src, CS_INT srclen, CS_BYTE *dest, CS_INT destlen,
                                   CS_INT *srcused, CS_INT *destused);

/* How a set converts to another; a record for each destination hangs on conv_config of the CsCharDesc. */
struct _csconvconfig {
    CsOID *tocharset_oid;
    CS_INT conv_method;
    CS_CONV_TABLE *conv_table;
    CS_SYS_CFUNC sys_conv_func;
    CS_CHAR *tocs_local_name;
    CS_INT local_name_len;
    CS_INT match_mode;
    CS_BYTE nomap_replace[4];
    CS_INT nomap_replace_len;
    CS_INT table_conv_multiplier;
    CS_INT sysalgo_conv_multiplier;
    CS_THRDRES *cfgmtx;
    struct _csconvconfig *nextdest;
};

static_assert(sizeof(CsConvDest) == 8 && sizeof(CS_CONV_TABLE) == 56 && sizeof(CsConvConfig) == 80,
              "records of table conversions cross the library's edge");

/* A mnemonic of a character; the list is mnem_db of the context's globals. */
typedef struct _unicode_mnem_string {
    CS_USHORT unicode;
    CS_CHAR *string; /* owned */
    CS_INT string_len;
} CS_UNICODE_MNEM;
/* Free a mnemonic, or all of them with their list. */
DLXCOMN_API CS_INT comn__drop_mnem_string(CS_VOID *mnemonic);
DLXCOMN_API CS_RETCODE comn_intl_drop_mnemdb(CS_CONTEXT *context);

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
 * as read nor as written. Of a three-byte character of eucjis (0x8F) the source is changed: its second byte grows by 2
 * and is read again as the next character.
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
