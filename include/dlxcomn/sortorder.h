/*
 * sortorder.h - how text compares in a single-byte character set.
 *
 * A sort order is loaded once for each character set, from <name>.srt in the set's directory, into a table of 1796
 * bytes, and never changes; any number of threads may compare by it. Loading runs under the lock of the locale loader.
 */
#ifndef DLXCOMN_SORTORDER_H
#define DLXCOMN_SORTORDER_H

#include <dlxcomn/locale.h>
#include <dlxcomn/path.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The header of a file. */
typedef struct s_descript {
#ifdef __cplusplus
    int class_;
#else
    int class;
#endif
    int id; /* not 0 */
    char name[31];
    char charset[31];
    int preference; /* 1 if tertiary weights take part */
    char descript[256];
    int isbin; /* not 0 for an order by byte */
} S_DESCRIPT;

static_assert(offsetof(S_DESCRIPT, name) == 8 && offsetof(S_DESCRIPT, charset) == 39 &&
                  offsetof(S_DESCRIPT, preference) == 72 && offsetof(S_DESCRIPT, descript) == 76 &&
                  offsetof(S_DESCRIPT, isbin) == 332 && sizeof(S_DESCRIPT) == 336,
              "S_DESCRIPT crosses the library's edge");

/* The weights of a byte. */
typedef union lsc {
    CS_UINT lsclong;
    unsigned short ps;
    struct {
        CS_BYTE p;
        CS_BYTE s;
        CS_BYTE t;       /* 0: no weights of its own, smelist leads to exceptions */
        CS_BYTE smelist; /* else: the first character with a greater primary weight */
    } pst;
    struct {
        CS_BYTE p1;
        CS_BYTE p2;
        CS_BYTE s;
        CS_BYTE smelist;
    } p1p2s;
} LSC;

/* Kinds of exception that the loader makes. */
enum {
    SMEL_OWN = 0,   /* the byte's own weights, where no other element of the chain matched */
    SMEL_PAIR = 1,  /* the byte followed by xtraw counts as one character */
    SMEL_EXPAND = 3 /* the byte counts as two characters */
};

/* An exception. Chains hang on LSC.pst.smelist. */
typedef struct smel {
    CS_BYTE next_smel; /* index of the next, SMEL_END at the end */
    CS_BYTE type_smel;
    CS_BYTE noxtraw; /* 1 for SMEL_PAIR */
    CS_BYTE pad;
    union {
        struct {
            LSC lsc1;
        } sm_0type;
        struct {
            CS_BYTE xtraw;
            CS_BYTE pad[3];
            LSC lsc1;
        } sm_1type;
        struct {
            CS_UINT dummy;
        } sm_2type;
        struct {
            LSC lsc1;
            LSC lsc2;
        } sm_3type;
        struct {
            LSC lsc_low;
            LSC lsc_high;
        } sm_4type;
        struct {
            LSC lsc1;
        } sm_5type;
        struct {
            LSC lsc1;
        } sm_6type;
        struct {
            CS_UINT offset;
        } sm_7type;
    } smel_types;
} SMEL;

#define SMEL_END 255
#define SO_SMELS 64

/* Features of an order, in stat1. */
enum {
    SO_PRIMARY = 0x01,   /* only primary weights differ */
    SO_SECONDARY = 0x02, /* secondary weights are in use */
    SO_TERTIARY = 0x04,  /* tertiary weights are in use */
    SO_EQUAL = 0x08,     /* characters joined by "=" */
    SO_PAIRS = 0x10,     /* characters of two bytes */
    SO_LIGATURES = 0x20
};

typedef struct so_1class {
    CS_BYTE stat1;
    CS_BYTE stat2;     /* 0 */
    CS_BYTE last_char; /* last byte read */
    CS_BYTE nsmels;
    LSC lscs[256];
    SMEL smels[SO_SMELS];
} SO_1CLASS;

static_assert(sizeof(LSC) == 4 && sizeof(SMEL) == 12 && offsetof(SMEL, smel_types) == 4 &&
                  offsetof(SO_1CLASS, lscs) == 4 && offsetof(SO_1CLASS, smels) == 1028 && sizeof(SO_1CLASS) == 1796,
              "SO_1CLASS crosses the library's edge");

/* A loaded order; the chain hangs on sort_order of its CsCharDesc. */
struct _cssortdesc {
    CsOID *oid;
    S_DESCRIPT *char_sort_descript; /* owned */
    CS_VOID *char_sort_class;       /* a SO_1CLASS, owned; null for an order by byte */
    struct _cssortdesc *sortnext;
};

/* ---- Comparison ---------------------------------------------------------------------------------- */

/*
 * Negative, zero or positive: by the leftmost difference of primary weights, then by that of secondary ones. Blanks
 * (0x20) at the end do not count.
 */
DLXCOMN_API int com__ps_dl_sqlhilo(SO_1CLASS *so, char *str1, int len1, char *str2, int len2);
/* The leftmost difference of tertiary weights, up to where the shorter text ends. */
DLXCOMN_API int com__spec_tord(SO_1CLASS *so, char *str1, int len1, char *str2, int len2);
/*
 * Resolve a chain for the byte in front of *raw_cur: *lsc receives its weights, *hold those of the second character
 * that it stands for, or 0. Steps *raw_cur over the second byte of a pair; a null raw_end sets no end.
 */
DLXCOMN_API void com__smel_lsc(SMEL *smels, int smel_1st, char **raw_cur, char *raw_end, LSC *lsc, LSC *hold);
/* The order by byte: -1, 0 or 1. Of texts that agree the shorter one is first. */
DLXCOMN_API CS_INT com_memhilo(CS_BYTE *p1, CS_INT len1, CS_BYTE *p2, CS_INT len2);

/*
 * *sortorder = the SO_1CLASS of the locale's collation, or null for an order by byte. CS_FAIL where the locale has no
 * loaded order.
 */
DLXCOMN_API CS_RETCODE com_intl_sortorder(CsLocale *locale, CS_VOID **sortorder);

/* ---- Loading -------------------------------------------------------------------------------------- */

/*
 * Set lcache->locsortorder to the order of an identifier: one that the character set has already, or that of the file
 * named by lcache->sortname. locfilename (may be null) receives the file's path. CS_FAIL for a file that is not right;
 * the status of com__open_charfile; CS_EINTL; CS_MEM_ERROR. A failure leaves nothing behind.
 */
DLXCOMN_API CS_RETCODE comn__intl_load_sortorder(CsContext *context, CsOID *oid, CsLocCache *lcache,
                                                 CS_CHAR *locfilename, CS_INT filenamelen);
/* Free an order; null is accepted. */
DLXCOMN_API void comn__sortorder_drop(CsSortDesc *sortorder);

/* A ligature, during loading. */
typedef struct ligstruct {
    CS_BYTE lig[11]; /* its forms, NUL-terminated */
    CS_BYTE first;   /* the two letters that it stands for */
    CS_BYTE second;
    CS_BYTE type;
} LIGSTRUCT;

enum { LIG_AFTER = 1, LIG_EQUAL = 2 };
#define LIG_MAX 50 /* in one file */

static_assert(sizeof(LIGSTRUCT) == 14, "LIGSTRUCT layout");

/* The steps of the loader. ifile stands on the entry that was read last; *entry is its key, null at the end. */
DLXCOMN_API CS_RETCODE comn__get_sort_description(CsContext *context, S_DESCRIPT *descript, CS_CHAR **entry,
                                                  INTL_LOCFILE *ifile);
DLXCOMN_API CS_RETCODE comn__build_class1(CsContext *context, CsSortDesc *sortorder, CS_CHAR *entry,
                                          INTL_LOCFILE *ifile);
DLXCOMN_API CS_RETCODE comn__get_lig(CsContext *context, INTL_LOCFILE *ifile, LIGSTRUCT *ligs, int *nligsp);
DLXCOMN_API CS_RETCODE comn__get_char(CsContext *context, SO_1CLASS *so, INTL_LOCFILE *ifile, LIGSTRUCT *ligs,
                                      int nligs, int p, int s, int t, int preference, CS_BYTE *next_char);
DLXCOMN_API CS_RETCODE comn__add_smel(SO_1CLASS *so, CS_BYTE *cp, CS_BYTE *cdbl, int p, int s, int t);
DLXCOMN_API CS_RETCODE comn__do_ligs(SO_1CLASS *so, LIGSTRUCT *ligs, int nligs);
DLXCOMN_API CS_RETCODE comn__check_sort(SO_1CLASS *so, CS_BYTE *next_char);

/* ---- Values of a file ------------------------------------------------------------------------------
 * Each reads the next value of the present entry. A missing one is CS_FAIL, or CS_EINTL with the code in ctxintlerr
 * where reading failed. Numbers are bytes, the first one highest; bytes that the value does not have count as 0.
 */
DLXCOMN_API CS_RETCODE comn__get_byteval(CsContext *context, INTL_LOCFILE *ifile, CS_BYTE *byteval);
DLXCOMN_API CS_RETCODE comn__get_shortval(CsContext *context, INTL_LOCFILE *ifile, CS_VOID *shortval);
DLXCOMN_API CS_RETCODE comn__get_longval(CsContext *context, INTL_LOCFILE *ifile, CS_INT *longval);
/*
 * A text of up to maxlen - 1 bytes; with is_alnum 1 one that begins with a letter and holds letters, digits and "_".
 * CS_FAIL for any other. A null string takes any value and drops it.
 */
DLXCOMN_API CS_RETCODE comn__get_string(CsContext *context, INTL_LOCFILE *ifile, CS_CHAR *string, CS_BOOL is_alnum,
                                        CS_INT maxlen);
/* "true" or "false". */
DLXCOMN_API CS_RETCODE comn__get_boolval(CsContext *context, INTL_LOCFILE *ifile, int *boolval);

#ifdef __cplusplus
}
#endif
#endif
