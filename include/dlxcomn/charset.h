/*
 * charset.h - what a character set is, and the walkers of text in it.
 *
 * A CHAR_ATTRIB holds the tables of one character set. Once published it is read-only, and any thread may
 * read it. Walkers take a null CHAR_ATTRIB for iso_1. No walker reads a length: the second byte of a
 * character is read with no regard for where the text ends, so text that may end inside a character
 * needs a readable byte behind it. The page numbers in the tables must be those of pages that the set has.
 * A width of 0 in the width map is stepped over as one byte, so that every walk comes to its end.
 */
#ifndef DLXCOMN_CHARSET_H
#define DLXCOMN_CHARSET_H

#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Bits of CHAR_MAP.char_type. */
enum {
    CS_CT_UPPER = 0x01,
    CS_CT_LOWER = 0x02,
    CS_CT_ALPHA = CS_CT_UPPER | CS_CT_LOWER,
    CS_CT_DIGIT = 0x04,
    CS_CT_SPACE = 0x08,
    CS_CT_XDIGIT = 0x10,
    CS_CT_PUNCT = 0x20,
    CS_CT_GRAPH = 0x40,
    CS_CT_ROW = 0x80 /* first byte of a two-byte code: char_upper is the page of the second byte */
};

/* Bits of CHAR_MAP.char_lex. */
enum {
    CS_LEX_IDENT = 0x01,
    CS_LEX_DIGIT = 0x02,
    CS_LEX_CONTROL = 0x08, /* control or blank */
    CS_LEX_QUOTE = 0x10,
    CS_LEX_PUNCT = 0x20,
    CS_LEX_CURRENCY = 0x40
};

/* The classification of one code. */
typedef struct char_map {
    CS_BYTE char_upper; /* upper-case form; with CS_CT_ROW the number of a page instead */
    CS_BYTE char_lower; /* lower-case form */
    CS_BYTE char_lex;   /* CS_LEX_ bits */
    CS_BYTE char_type;  /* CS_CT_ bits */
} CHAR_MAP;

/* Pages of 256 entries. Page 0 is indexed by the first byte of a character, a higher one by the second. */
typedef struct cs_type_map {
    CHAR_MAP chmap[256];
} CS_TYPE_MAP;
typedef struct cs_norm_map {
    CS_BYTE norm[256];
} CS_NORM_MAP;
typedef struct cs_soundex {
    CS_BYTE sound[256];
} CS_SOUNDEX;

/* One character set. Also named CS_ATTRIB. The pointers are the owner's of the record. */
typedef struct char_attrib {
    short cs_status;
    CS_BYTE cs_class;       /* 1 a single-byte image, 2 a multi-page image */
    CS_BYTE cs_id;          /* character set number */
    short cs_namelen;
    CS_BYTE cs_name[30];    /* NUL-terminated */
    CS_BYTE cs_maxcharlen;  /* longest character, bytes */
    CS_BYTE cs_ncharsize;   /* national character size */
    CS_BYTE cs_nnorm;       /* pages at cs_norm_map */
    CS_BYTE cs_ntype;       /* pages at cs_type_map */
    CS_BYTE cs_nsoundex;    /* pages at cs_soundex */
    CS_BYTE spare[3];
    CS_BYTE *cs_width_map;  /* 256 entries by first byte: low half bytes, high half columns; null means 1.
                               15 in the high half of entry 255 turns on four-byte characters */
    CS_NORM_MAP *cs_norm_map; /* may be null */
    CS_TYPE_MAP *cs_type_map; /* may be null */
    CS_SOUNDEX *cs_soundex;   /* may be null */
} CHAR_ATTRIB;
typedef CHAR_ATTRIB CS_ATTRIB;

static_assert(sizeof(CHAR_MAP) == 4 && offsetof(CHAR_MAP, char_lower) == 1 && offsetof(CHAR_MAP, char_lex) == 2 &&
                  offsetof(CHAR_MAP, char_type) == 3,
              "CHAR_MAP layout");
static_assert(sizeof(CS_TYPE_MAP) == 1024 && sizeof(CS_NORM_MAP) == 256 && sizeof(CS_SOUNDEX) == 256, "page sizes");
static_assert(offsetof(CHAR_ATTRIB, cs_class) == 2, "CHAR_ATTRIB.cs_class");
static_assert(offsetof(CHAR_ATTRIB, cs_id) == 3, "CHAR_ATTRIB.cs_id");
static_assert(offsetof(CHAR_ATTRIB, cs_namelen) == 4, "CHAR_ATTRIB.cs_namelen");
static_assert(offsetof(CHAR_ATTRIB, cs_name) == 6, "CHAR_ATTRIB.cs_name");
static_assert(offsetof(CHAR_ATTRIB, cs_maxcharlen) == 36, "CHAR_ATTRIB.cs_maxcharlen");
static_assert(offsetof(CHAR_ATTRIB, cs_ncharsize) == 37, "CHAR_ATTRIB.cs_ncharsize");
static_assert(offsetof(CHAR_ATTRIB, cs_nnorm) == 38, "CHAR_ATTRIB.cs_nnorm");
static_assert(offsetof(CHAR_ATTRIB, cs_ntype) == 39, "CHAR_ATTRIB.cs_ntype");
static_assert(offsetof(CHAR_ATTRIB, cs_nsoundex) == 40, "CHAR_ATTRIB.cs_nsoundex");
static_assert(offsetof(CHAR_ATTRIB, spare) == 41, "CHAR_ATTRIB.spare");
static_assert(offsetof(CHAR_ATTRIB, cs_width_map) == 48, "CHAR_ATTRIB.cs_width_map");
static_assert(offsetof(CHAR_ATTRIB, cs_norm_map) == 56, "CHAR_ATTRIB.cs_norm_map");
static_assert(offsetof(CHAR_ATTRIB, cs_type_map) == 64, "CHAR_ATTRIB.cs_type_map");
static_assert(offsetof(CHAR_ATTRIB, cs_soundex) == 72, "CHAR_ATTRIB.cs_soundex");
static_assert(sizeof(CHAR_ATTRIB) == 80, "CHAR_ATTRIB crosses the library's edge");

typedef struct _csoid CsOID;
typedef struct _cssortdesc CsSortDesc;
typedef struct _csconvconfig CsConvConfig;

/* The node that owns a loaded character set; the chain hangs on cmg_chardesc of CsCtxGlobals. */
typedef struct _cschardesc {
    CsOID *oid;                /* identity, not owned */
    CHAR_ATTRIB *char_attrib;  /* owned */
    CsSortDesc *sort_order;    /* sort orders loaded for this set, owned */
    CsConvConfig *conv_config;
    struct _cschardesc *charnext;
} CsCharDesc;

static_assert(offsetof(CsCharDesc, char_attrib) == 8 && offsetof(CsCharDesc, sort_order) == 16 &&
                  offsetof(CsCharDesc, conv_config) == 24 && offsetof(CsCharDesc, charnext) == 32 &&
                  sizeof(CsCharDesc) == 40,
              "CsCharDesc crosses the library's edge");

/* ---- Records ------------------------------------------------------------------------------- */

/* The built-in iso_1, and its type pages. */
extern DLXCOMN_API const CHAR_ATTRIB ISO_1_char_attrib;
extern DLXCOMN_API const CS_TYPE_MAP ISO_1_type_map;
extern DLXCOMN_API const CS_SOUNDEX ISO_1_soundex;
DLXCOMN_API CS_ATTRIB *com_get_charattrib(void);
DLXCOMN_API CS_TYPE_MAP *com_get_typemap(void);

/*
 * The character set of a value: that of dfmt's locale if dfmt is given and has one, else that of the
 * context's ctxlocale, else (both arguments null) iso_1. A locale without its character type data, or a
 * context without a locale, is a broken contract; where assertions return the answer is then iso_1.
 */
DLXCOMN_API CS_ATTRIB *com_intl_charattr(CsContext *context, CS_DATAFMT *dfmt);

/* Kinds of memory image of com_build_char_attrib. */
enum { CS_IMAGE_CLASS1 = 1001, CS_IMAGE_CLASS2 = 1002 };

/*
 * Fill chatr from a memory image, which is not copied and must outlive chatr. A class 2 image has its
 * eight big-endian header words turned to machine order in place, so it can be built from only once.
 * CS_FAIL for a null imptr or chatr or another type.
 */
DLXCOMN_API CS_RETCODE com_build_char_attrib(CS_INT type, CS_INT id, CS_CHAR *cname, CS_VOID *imptr, CS_ATTRIB *chatr);

/* ---- Single iso_1 bytes, context-free ------------------------------------------------------
 * These read Com_Iso1_charmap, which differs from ISO_1_type_map: every code from 0xA0 to 0xDF, 0xF7, 0x8E
 * and 0x8F counts as an upper-case letter. The tests answer the masked bits, not 0 or 1.
 */
extern DLXCOMN_API const CS_TYPE_MAP Com_Iso1_charmap;
extern DLXCOMN_API const CS_TYPE_MAP *const Com_charmap;
DLXCOMN_API CS_BYTE com_toupper(CS_BYTE c);
DLXCOMN_API CS_BYTE com_tolower(CS_BYTE c);
DLXCOMN_API CS_INT com_isalpha(CS_BYTE c);
DLXCOMN_API CS_INT com_isupper(CS_BYTE c);
DLXCOMN_API CS_INT com_islower(CS_BYTE c);
DLXCOMN_API CS_INT com_isdigit(CS_BYTE c);
DLXCOMN_API CS_INT com_isxdigit(CS_BYTE c);
DLXCOMN_API CS_INT com_isspace(CS_BYTE c);
DLXCOMN_API CS_INT com_isgraph(CS_BYTE c);

/* ---- The character at p ---------------------------------------------------------------------
 * The tests answer the masked type bits of the character.
 */
DLXCOMN_API CS_INT comn_isupper(CS_ATTRIB *ca, CS_BYTE *p);
DLXCOMN_API CS_INT comn_islower(CS_ATTRIB *ca, CS_BYTE *p);
DLXCOMN_API CS_INT comn_isalpha(CS_ATTRIB *ca, CS_BYTE *p);
DLXCOMN_API CS_INT comn_isdigit(CS_ATTRIB *ca, CS_BYTE *p);
DLXCOMN_API CS_INT comn_isspace(CS_ATTRIB *ca, CS_BYTE *p);
DLXCOMN_API CS_INT comn_isxdigit(CS_ATTRIB *ca, CS_BYTE *p);
DLXCOMN_API CS_INT comn_ispunct(CS_ATTRIB *ca, CS_BYTE *p);
DLXCOMN_API CS_INT comn_isgraph(CS_ATTRIB *ca, CS_BYTE *p);

/* Its lexical class bits. */
DLXCOMN_API CS_INT comn_get_lex(CS_ATTRIB *ca, CS_BYTE *p);

/* The width table of the set; null when every character is one byte. */
DLXCOMN_API CS_BYTE *comn_get_widthmap(CS_ATTRIB *ca);

/* Bytes of the character, and columns that it takes on a terminal. */
DLXCOMN_API CS_INT comn_char_width(CS_ATTRIB *ca, CS_BYTE *p);
DLXCOMN_API CS_INT comn_disp_width(CS_ATTRIB *ca, CS_BYTE *p);

/* Its normalized single byte, or 0 when it has no ASCII form. */
DLXCOMN_API CS_BYTE comn_to_ascii(CS_ATTRIB *ca, CS_BYTE *p);

/*
 * Write the other case of the character at srcp to destp, which needs room for a character. A character
 * without case is copied whole. destp may be srcp.
 */
DLXCOMN_API void comn_toupper(CS_ATTRIB *ca, CS_BYTE *srcp, CS_BYTE *destp);
DLXCOMN_API void comn_tolower(CS_ATTRIB *ca, CS_BYTE *srcp, CS_BYTE *destp);

/* ---- Runs of characters -------------------------------------------------------------------- */

/* Move *p, which must not be null, to the next character. */
DLXCOMN_API void comn_inc_char(CS_ATTRIB *ca, CS_BYTE **p);

/*
 * Count the whole characters of startp to endp: *nchars of them in *wcbytes bytes. Of a character that endp
 * splits, *pc_part1 bytes lie before endp and *pc_part2 behind it; both are 0 when none is split. With endp
 * not behind startp everything is 0.
 */
DLXCOMN_API void comn_whole_char(CS_ATTRIB *ca, CS_BYTE *startp, CS_BYTE *endp, CS_INT *wcbytes, CS_INT *pc_part1,
                                 CS_INT *pc_part2, CS_INT *nchars);

/*
 * Normalize src_len bytes: each character with an ASCII form becomes that byte, any other is copied whole,
 * also the last one if it passes src_len. *dest_len receives the bytes written; src must be readable, and dest
 * needs room, for src_len bytes and the rest of that last character. dest may be src.
 */
DLXCOMN_API void comn_str_to_ascii(CS_CHAR *cp_src, CS_INT src_len, CS_CHAR *cp_dest, CS_INT *dest_len,
                                   CS_ATTRIB *chatr);

/*
 * The first byte equal to srch_char on a character boundary of a NUL-terminated text, or null. A NUL is never
 * found, and one in the tail of a character does not end the text, which so must not end inside a character.
 */
DLXCOMN_API CS_BYTE *comn_mb_strchr(CS_ATTRIB *ca, CS_BYTE *buf, CS_BYTE srch_char);

#ifdef __cplusplus
}
#endif
#endif
