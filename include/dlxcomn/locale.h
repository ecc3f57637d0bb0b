/*
 * locale.h - what a locale name stands for.
 */
#ifndef DLXCOMN_LOCALE_H
#define DLXCOMN_LOCALE_H

#include <dlxcomn/charset.h>
#include <dlxcomn/context.h>
#include <dlxcomn/path.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _cserrfilecache CsErrFileCache;
typedef struct _cserrorcache CsErrorCache;

/* The categories of a locale, in the order of its pointers. */
enum {
    CS_LC_COLLATE = 1,
    CS_LC_CTYPE = 2,
    CS_LC_MESSAGE = 3,
    CS_LC_MONETARY = 4,
    CS_LC_NUMERIC = 5,
    CS_LC_TIME = 6,
    CS_LC_ALL = 7
};

/* The messages of a language in a character set (message.h). The chain hangs on cmg_message. */
typedef struct _csmessage {
    CsOID *lang_oid;
    CsOID *charset_oid;
    CsErrFileCache *locfilecache;
    CsErrorCache *locerrhist; /* newest first */
    CS_INT locerrcnt;
    CS_THRDRES *msgmtx; /* guards the three above */
    struct _csmessage *messagenext;
} CS_MESSAGE;

static_assert(offsetof(CS_MESSAGE, locfilecache) == 16 && offsetof(CS_MESSAGE, locerrcnt) == 32 &&
                  offsetof(CS_MESSAGE, msgmtx) == 40 && sizeof(CS_MESSAGE) == 56,
              "CS_MESSAGE crosses the library's edge");

/*
 * The date data of a language; the chain hangs on cmg_datetime. Texts are UTF-8, NUL-terminated and owned. The file has
 * the fields from months to days, firstday, is12hour and dateorder; convertfmt and locdateorder_id follow from the
 * order. What no file has is zero.
 */
typedef struct _csdateinfo {
    CsOID *id; /* of the language; null for a variant of comn_intl_set_dtfmt */
    CS_INT is12hour;
    CS_BYTE *amindict;
    CS_INT amindict_len;
    CS_BYTE *pmindict;
    CS_INT pmindict_len;
    CS_BYTE *months[12];
    CS_INT mon_len[12];
    CS_BYTE *shortmonths[12];
    CS_INT shrtmon_len[12];
    CS_BYTE *days[7]; /* from the first day of the week on */
    CS_INT day_len[7];
    CS_BYTE *shortdays[7];
    CS_INT shrtday_len[7];
    CS_INT firstday; /* 1 for Sunday */
    CS_BYTE *datefmt;
    CS_INT datefmt_len;
    CS_BYTE *timefmt;
    CS_INT timefmt_len;
    CS_BYTE *longdtfmt;
    CS_INT longdtfmt_len;
    CS_BYTE *shrtdtfmt;
    CS_INT shrtdtfmt_len;
    CS_BYTE *era;
    CS_INT era_len;
    CS_BYTE *era_t_fmt;
    CS_INT eratfmt_len;
    CS_BYTE *era_d_fmt;
    CS_INT eradfmt_len;
    CS_BYTE *era_dt_fmt;
    CS_INT eradtfmt_len;
    CS_INT secprec;
    CS_CHAR dateorder[4];
    CS_INT convertfmt; /* the style that dates are printed in */
    CS_BOOL fmt_reset; /* convertfmt was set by comn_intl_set_dtfmt */
    int locdateorder_id;
    struct _csdateinfo *next;
} CS_DATEINFO;

/* Number and money formats. The records are declared and shared; no file fills them. */
typedef struct _csnuminfo {
    CsOID *id;
    CS_BYTE *decpt;
    CS_INT decpt_len;
    CS_BYTE *gpsep;
    CS_INT gpsep_len;
    CS_INT *grouping;
    CS_INT group_cnt;
    CS_BYTE *possign;
    CS_INT possign_len;
    CS_BYTE *negsign;
    CS_INT negsign_len;
    CS_BYTE *posfmt;
    CS_INT posfmt_len;
    CS_BYTE *negfmt;
    CS_INT negfmt_len;
    struct _csnuminfo *next;
} CS_NUMINFO;

typedef struct _csmoninfo {
    CsOID *id;
    CS_BYTE *intlcurrsym;
    CS_INT intlsym_len;
    CS_BYTE *loccurrsym;
    CS_INT locsym_len;
    CS_BYTE *decpt;
    CS_INT decpt_len;
    CS_BYTE *gpsep;
    CS_INT gpsep_len;
    CS_INT *grouping;
    CS_INT group_cnt;
    CS_BYTE *possign;
    CS_INT possign_len;
    CS_BYTE *negsign;
    CS_INT negsign_len;
    CS_INT intlfracdig;
    CS_INT locfracdig;
    CS_BYTE *intlposfmt;
    CS_INT intlposfmt_len;
    CS_BYTE *intlnegfmt;
    CS_INT intlnegfmt_len;
    CS_BYTE *locposfmt;
    CS_INT locposfmt_len;
    CS_BYTE *locnegfmt;
    CS_INT locnegfmt_len;
    struct _csmoninfo *next;
} CS_MONINFO;

/* A line of locales.dat, split up. Names are NUL-terminated; a length of 0 says that there is none. */
#define CS_LOCNAME_SIZE 256
typedef struct _cslocnames {
    CS_CHAR charset[CS_LOCNAME_SIZE];
    CS_INT charsetlen;
    CS_CHAR lang[CS_LOCNAME_SIZE];
    CS_INT langlen;
    CS_CHAR sortorder[CS_LOCNAME_SIZE];
    CS_INT sortorderlen;
    CS_CHAR datetime[CS_LOCNAME_SIZE];
    CS_INT datetimelen;
    CS_CHAR numeric[CS_LOCNAME_SIZE];
    CS_INT numericlen;
    CS_CHAR money[CS_LOCNAME_SIZE];
    CS_INT moneylen;
} CsLocNames;

static_assert(offsetof(CsLocNames, charsetlen) == 256 && offsetof(CsLocNames, lang) == 260 &&
                  sizeof(CsLocNames) == 6 * 260,
              "CsLocNames layout");

/*
 * The cache entry behind each category pointer of a CS_LOCALE. Names are owned and NUL-terminated, with
 * their lengths; the data they lead to is shared and not owned.
 */
typedef struct _csloccache {
    CS_CHAR *locname; /* null for a derived record */
    CS_INT locnamelen;
    CS_CHAR *charname;
    CS_INT charnamelen;
    CsCharDesc *locchardesc;
    CS_CHAR *sortname;
    CS_INT sortnamelen;
    CsSortDesc *locsortorder;
    CS_CHAR *langname;
    CS_INT langnamelen;
    CS_MESSAGE *locmessage;
    CS_CHAR *datename; /* may be null */
    CS_INT datenamelen;
    CS_DATEINFO *locdateinfo;
    CS_CHAR *numname; /* may be null */
    CS_INT numnamelen;
    CS_NUMINFO *locnuminfo;
    CS_CHAR *monname; /* may be null */
    CS_INT monnamelen;
    CS_MONINFO *locmoninfo;
    struct _csloccache *locnext;
} CsLocCache;

static_assert(offsetof(CsLocCache, charname) == 16 && offsetof(CsLocCache, locchardesc) == 32 &&
                  offsetof(CsLocCache, locsortorder) == 56 && offsetof(CsLocCache, locmessage) == 80 &&
                  offsetof(CsLocCache, locdateinfo) == 104 && offsetof(CsLocCache, locnuminfo) == 128 &&
                  offsetof(CsLocCache, locmoninfo) == 152 && offsetof(CsLocCache, locnext) == 160 &&
                  sizeof(CsLocCache) == 168,
              "CsLocCache crosses the library's edge");

/* ---- Names ---------------------------------------------------------------------------------------- */

/*
 * The locale name that the environment gives to a category: the value of its own variable ("LC_COLLATE", "LC_CTYPE",
 * "LC_MESSAGE", "LC_MONETARY", "LC_NUMERIC", "LC_TIME"; "LC_ALL" only where lctype is CS_LC_ALL), else of "LANG", else
 * "default". CS_EINTL where it does not fit in namelen bytes with its NUL, or the environment cannot be read.
 */
DLXCOMN_API CS_RETCODE com_intl_envloc(CS_CONTEXT *context, CS_INT lctype, CS_CHAR *name, CS_INT namelen);

/*
 * Read the line of a name (NUL-terminated) from locales.dat into *locnames. CS_FAIL for a name that is not there, or a
 * file that is not right; CS_ENOLOCFILE and CS_EINTL with the code in ctxintlerr. In this and the loaders locfilename
 * (may be null) receives the path of the file that was opened last.
 */
DLXCOMN_API CS_RETCODE comn__intl_lookup(CsContext *context, CS_CHAR *name, CS_INT namelen, CsLocNames *locnames,
                                         CS_CHAR *locfilename, CS_INT filenamelen);

/* ---- Loading ----------------------------------------------------------------------------------------
 * All loading runs under cmg_mtx of the context's globals. What was loaded is shared, and stays until those die.
 */

/*
 * The UTF-8 basics, before the first locale: the character set and sort order of UTF-8, the identifier of UCS-2 and
 * the list context. Harmless when repeated: with the set loaded it answers CS_SUCCEED, also where a later step failed
 * before, so cmg_utf8_ctypeptr is what tells that all of it is there. Takes no lock: call it before contexts go
 * parallel.
 */
DLXCOMN_API CS_RETCODE comn_intl_init(CS_CONTEXT *context, CS_CHAR *locfilename, CS_INT filenamelen);
/* End the list context of comn_intl_init; CS_FAIL while it has lists. */
DLXCOMN_API CS_RETCODE comn_lm_exit(CS_CONTEXT *context);
/*
 * *loccache_p = the CsLocCache of a name, loaded if no context has asked for it yet. CS_FAIL for an unknown name or
 * lock trouble; the status of what could not be loaded.
 */
DLXCOMN_API CS_RETCODE comn_intl_load(CsContext *context, CS_CHAR *name, CS_INT namelen, CS_VOID **loccache_p,
                                      CS_CHAR *locfilename, CS_INT filenamelen);
/* What comn_intl_load_dlxtypes replaces. */
enum { CS_LOC_LANGUAGE = 8, CS_LOC_CHARSET = 9, CS_LOC_SORTORDER = 10 };
/*
 * *new_loccache_p = a cache like old_loccache with one item replaced; it has no name. A new character set keeps the
 * messages of the old one, and its sort order too, unless the set is loaded by this very call and the context has a
 * locale. CS_EBADCSNAME for a name that no identifier has.
 */
DLXCOMN_API CS_RETCODE comn_intl_load_dlxtypes(CS_CONTEXT *context, CS_INT type, CS_CHAR *dlx_name, CS_INT namelen,
                                               CS_CHAR *locfilename, CS_INT filenamelen, CS_VOID *old_loccache,
                                               CS_VOID **new_loccache_p);
/* Set lcache->locmessage to the messages of a language in the cache's character set. No file is read yet. */
DLXCOMN_API CS_RETCODE comn__intl_load_message(CsContext *context, CsOID *oid, CsLocCache *lcache,
                                               CS_CHAR *locfilename, CS_INT filenamelen);
/* Find or read a format data file of the cache: CS_LOCDATA_MONEY, _NUMERIC or _DATETIME; CS_FAIL for another type. */
DLXCOMN_API CS_RETCODE comn__load_locdata(CsContext *context, CS_INT type, CsOID *oid, CsLocCache *lcache,
                                          CS_CHAR *locfilename, CS_INT filenamelen);

/* ---- Caches ------------------------------------------------------------------------------------------ */

DLXCOMN_API CS_RETCODE comn__create_loccache(CsContext *context, CsLocCache **lcache_ptr);
/* Free a cache with its names; what they lead to stays. */
DLXCOMN_API void comn__drop_loccache(CsContext *context, CsLocCache *lcache);
/* Copy names (anew) and descriptors; date, number and money data stay empty. CS_MEM_ERROR leaves a part. */
DLXCOMN_API CS_RETCODE comn__copy_loccache(CsLocCache *src_loccache, CsLocCache *dest_loccache);
/* The cache with a name of exactly these bytes, or null. */
DLXCOMN_API CsLocCache *com__scan_lcache_name(CsContext *context, CS_CHAR *name, CS_INT namelen);
/*
 * Find a cache equal to loccache and take it, with its date data, off the lists: *dup_loccache, or null. CS_FAIL where
 * its date data is on no list. The caller holds the lock.
 */
DLXCOMN_API CS_RETCODE comn__scan_lcache(CS_CONTEXT *context, CsLocCache *loccache, CsLocCache **dup_loccache);
/*
 * Whether names, and the identifiers of what they lead to, are the same. Date data with an identifier is like itself
 * only; such without one is compared by its fields.
 */
DLXCOMN_API CS_BOOL comn__cmp_loccache(CsLocCache *loc1, CsLocCache *loc2);
DLXCOMN_API CS_BOOL comn__cmp_dtinfo(CS_DATEINFO *dt1, CS_DATEINFO *dt2);
/* Drop all caches, or all message records, of the context's globals. */
DLXCOMN_API CS_RETCODE com_intl_loccache_drop(CsContext *context);
DLXCOMN_API CS_RETCODE comn_intl_message_drop(CsContext *context);

/* ---- Locales -------------------------------------------------------------------------------------------
 * A record owns nothing; the list of them, cmg_locale, is guarded by cmg_mtx.
 */

/* *locptr = a new record like the context's own locale. */
DLXCOMN_API CS_RETCODE comn_loc_alloc(CsContext *context, CsLocale **locptr);
/* The record must be on the list. */
DLXCOMN_API CS_RETCODE comn_loc_drop(CsContext *context, CsLocale *locale);
/* All records, and ctxdeflocale. */
DLXCOMN_API CS_RETCODE comn_loc_drop_all(CsContext *context);
/* Whether the record is on the list, which must not be empty. */
DLXCOMN_API CS_BOOL comn_loc_validate(CsContext *context, CsLocale *locale);
/* Copy the six categories. */
DLXCOMN_API CS_RETCODE comn_loc_copy(CsLocale *dest_locale, CsLocale *src_locale);

/* What com_intl_getstr answers; com_intl_loccmp compares what the first three stand for. */
enum { CS_LOCSTR_CHARSET = 1, CS_LOCSTR_LANGUAGE = 2, CS_LOCSTR_SORTORDER = 3, CS_LOCSTR_LANGUAGE_CHARSET = 4 };
/* A name of a category, without a NUL: character set, language, sort order, or "language.charset". */
DLXCOMN_API CS_RETCODE com_intl_getstr(CsLocale *locale, CS_INT lctype, CS_INT type, CS_CHAR *buf, CS_INT buflen,
                                       CS_INT *outlen);
/* 0 if both locales share what `type` names in the category, else 1. */
DLXCOMN_API CS_INT com_intl_loccmp(CS_INT lctype, CS_INT type, CsLocale *loc1, CsLocale *loc2);

/* ---- Values of format files ------------------------------------------------------------------------------ */

/* An element of a format. */
typedef struct _parsestruct {
    CS_INT type;
    CS_VOID *element;
    struct _parsestruct *next;
} ParseStruct;

/*
 * The numbers of a grouping key, in a new array that the caller frees; none is a null array. Only an empty list and one
 * that begins with -1 load: the check of longer lists cannot be met, and files have been written for that.
 */
DLXCOMN_API CS_RETCODE comn__read_grp(INTL_LOCFILE *ifile, CHAR_ATTRIB *charattrib, CS_INT **grpptr, CS_INT *cntptr);
/* Of the first element of a type: whether eptr is given. CS_SUCCEED where there is none. */
DLXCOMN_API CS_RETCODE comn__chk_format(CS_INT type, ParseStruct *pptr, CS_BYTE *eptr);

/* ---- Date data --------------------------------------------------------------------------------------------- */

/*
 * The date data of the descriptor's locale, else of the context's; with neither a locale nor a context the built-in
 * English one. Tables and texts are UTF-8 and shared.
 */
DLXCOMN_API CS_CHAR **com_intl_months(CsContext *context, CS_DATAFMT *dfmt);
DLXCOMN_API CS_CHAR **com_intl_shortmonths(CsContext *context, CS_DATAFMT *dfmt);
DLXCOMN_API CS_CHAR **com_intl_days(CsContext *context, CS_DATAFMT *dfmt);
DLXCOMN_API CS_INT com_intl_firstday(CsContext *context, CS_DATAFMT *dfmt);
DLXCOMN_API CS_CHAR *com_intl_dateorder(CsContext *context, CS_DATAFMT *dfmt);
DLXCOMN_API CS_INT com_intl_dateorder_id(CsContext *context, CS_DATAFMT *dfmt);
DLXCOMN_API CS_INT com_intl_is12hour(CsContext *context, CS_DATAFMT *dfmt);

/* Recount day orig_day of a week that starts at orig_firstday in one that starts at dest_firstday. */
DLXCOMN_API CS_INT com_intl_convt_firstday(CS_INT orig_firstday, CS_INT orig_day, CS_INT dest_firstday);

/* The number of an order such as "mdy"; 1 for any other text. */
DLXCOMN_API CS_INT com__get_dateorder_id(CS_CHAR *dateorder);
/* The style that an order prints in. */
DLXCOMN_API CS_INT com__map_dateorder_id_to_fmt(CS_INT dateorder_id);

/* Order, style and clock of a locale, or (null) of the context's; without a context those of English. */
DLXCOMN_API CS_INT comn_dtloc_format(CS_CONTEXT *context, CS_LOCALE *locale);
DLXCOMN_API CS_INT comn_dtloc_format_fmt(CS_CONTEXT *context, CS_LOCALE *locale);
DLXCOMN_API CS_INT comn_dtloc_is12hour(CS_CONTEXT *context, CS_LOCALE *locale);
DLXCOMN_API CS_INT comn_intl_is12hour(CsContext *context, CS_LOCALE *locale);
/* The style of a locale, or (null) of the context's. */
DLXCOMN_API CS_INT comn_intl_get_dtfmt(CS_CONTEXT *context, CS_LOCALE *locale);
/* The same of a descriptor, or 0 for a style that does not print a date. */
DLXCOMN_API CS_INT comn_get_datetochar_fmt(CS_CONTEXT *context, CS_DATAFMT *fmt);
/*
 * Give a locale the style in the CS_INT at buffer. From then on all six categories of the locale share the cache that
 * has it.
 */
DLXCOMN_API CS_RETCODE comn_intl_set_dtfmt(CS_CONTEXT *context, CS_LOCALE *locale, CS_VOID *buffer);

/* Read common.loc of the cache's language, unless that is loaded, and set lcache->locdateinfo. */
DLXCOMN_API CS_RETCODE comn__read_common(CsContext *context, CsLocCache *lcache, CS_CHAR *locfilename,
                                         CS_INT filenamelen);
/* These answer CS_SUCCEED and read nothing: no such file is in use. */
DLXCOMN_API CS_RETCODE comn__read_dtfile(CsContext *context, INTL_LOCFILE *ifile, CsOID *id, CS_DATEINFO **dtinfo);
DLXCOMN_API CS_RETCODE comn__read_monfile(CsContext *context, INTL_LOCFILE *ifile, CsOID *id, CS_MONINFO **moninfo);
DLXCOMN_API CS_RETCODE comn__read_numfile(CsContext *context, INTL_LOCFILE *ifile, CsOID *id, CS_NUMINFO **numinfo);
/* The loaded data of an identifier, or null; of numbers and money there is none. */
DLXCOMN_API CS_DATEINFO *comn__scan_cache_dt(CsContext *context, CsOID *id);
DLXCOMN_API CS_MONINFO *comn__scan_cache_mon(CsContext *context, CsOID *id);
DLXCOMN_API CS_NUMINFO *comn__scan_cache_num(CsContext *context, CsOID *id);
/* Copy a record with all its texts; the copy is on no list. CS_MEM_ERROR leaves a part, to be freed. */
DLXCOMN_API CS_RETCODE comn__copy_dtinfo(CS_DATEINFO *src_dtinfo, CS_DATEINFO *dest_dtinfo);
DLXCOMN_API void comn__free_dtinfo(CS_DATEINFO *dtinfo);
DLXCOMN_API void comn__free_moninfo(CS_MONINFO *moninfo); /* does nothing */
DLXCOMN_API void comn__free_numinfo(CS_NUMINFO *numinfo); /* does nothing */
/* Free all records of the context's globals. */
DLXCOMN_API CS_RETCODE comn_intl_dt_drop(CsContext *context);
DLXCOMN_API CS_RETCODE comn_intl_mon_drop(CsContext *context);
DLXCOMN_API CS_RETCODE comn_intl_num_drop(CsContext *context);

#ifdef __cplusplus
}
#endif
#endif
