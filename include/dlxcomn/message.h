/*
 * message.h - messages: their texts from the catalog, and the road of a failure to the application.
 *
 * Texts lie in message files of a language, in UTF-8, and are read one by one when they are asked for, into a cache of at
 * most 100 behind the language and character set (CS_MESSAGE of locale.h). The cache is a list of files, each with its
 * sections, each with its messages; a history of all says which is the oldest. msgmtx of the record guards it.
 *
 * A function that fails packs its parameters with a com_ep_ call and hands a message number to com__error, which builds
 * the text and calls the context's error callback. A message always comes out whole: a text that is missing degrades
 * to a default of the catalog, and that to one built in.
 */
#ifndef DLXCOMN_MESSAGE_H
#define DLXCOMN_MESSAGE_H

#include <dlxcomn/locale.h>
#include <dlxcomn/oid.h>
#include <dlxcomn/path.h>
#include <dlxcomn/services.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _cserrseccache CsErrSecCache;

/* One message. */
struct _cserrorcache {
    CS_CHAR errcode[8]; /* SQLSTATE, NUL-terminated */
    CS_INT errnum;
    CS_CHAR *errmsg; /* NUL-terminated, owned */
    CsErrSecCache *errseccache;
    struct _cserrorcache *histnext; /* the next older message of the record */
    struct _cserrorcache *next;     /* of the same section */
};

/* One section of a file. */
struct _cserrseccache {
    CS_INT errtag;
    CS_CHAR *errstr; /* its name, owned */
    CsErrorCache *errcache;
    struct _cserrseccache *next;
};

/* One file. */
struct _cserrfilecache {
    CS_CHAR *errfilename; /* owned */
    CsErrSecCache *errsecs;
    struct _cserrfilecache *next;
};

static_assert(offsetof(CsErrorCache, errnum) == 8 && offsetof(CsErrorCache, errmsg) == 16 &&
                  offsetof(CsErrorCache, next) == 40 && sizeof(CsErrorCache) == 48 && sizeof(CsErrSecCache) == 32 &&
                  sizeof(CsErrFileCache) == 24,
              "message caches cross the library's edge");

/*
 * Free a file's cache, which is on no list any more, with its sections and messages; the messages leave the history of
 * their record and its count.
 */
DLXCOMN_API void com__errfile_cache_drop(CS_MESSAGE *message, CsErrFileCache *filecache);

/* ---- The catalog ------------------------------------------------------------------------------------ */

/* A section of a message file. */
typedef struct _cserrsection {
    CS_INT errtag;
    CS_CHAR *errstr;
} CS_ERRSECTION;

/* A message: its section and its number there. */
typedef struct _cserridx {
    CS_INT errtag;
    CS_MSGNUM errnum;
} CS_ERRIDX;

/* The catalog of a context, in ctxcomerrhan, or of a library above on a file of its own. */
typedef struct _cserrorhan {
    CS_LOCALE *err_locale;
    CS_CHAR *err_file; /* owned */
} CS_ERRHAN;

static_assert(sizeof(CS_ERRSECTION) == 16 && sizeof(CS_ERRIDX) == 8 && sizeof(CS_ERRHAN) == 16,
              "records of the catalog cross the library's edge");

/* Sections of this library's own file, comnlib.loc. */
enum { CS_ERRTAG_DEFAULTS = 1, CS_ERRTAG_LAYER = 2, CS_ERRTAG_ORIGIN = 3, CS_ERRTAG_API = 4 };
#define CS_COMN_SECTIONS 4
#define CS_COMN_DEFAULTS 4
extern DLXCOMN_API const CS_ERRSECTION Comlocsections[CS_COMN_SECTIONS];
/* The messages that are read at the start, so that they can be reported when nothing else works. */
extern DLXCOMN_API const CS_ERRIDX Comdeferrs[CS_COMN_DEFAULTS];

/*
 * Make the catalog of a context, or give it the context's present locale, and read the defaults of comnlib.loc. A section
 * that is missing is CS_FAIL, a default that is missing is not; CS_ENOLOCFILE without a file, CS_EINTL without a home or
 * for a malformed one (the code in ctxintlerr), CS_MEM_ERROR.
 */
DLXCOMN_API CS_RETCODE com_errinit(CS_CONTEXT *context);
/* Free the catalog; the texts stay with the locale. */
DLXCOMN_API CS_RETCODE com_errdrop(CS_CONTEXT *context);
/* Find the sections in the catalog's file, and read the given messages (1 to 100, or none for null) of them. */
DLXCOMN_API CS_RETCODE com_err_init(CS_CONTEXT *context, CS_ERRHAN *errhan, const CS_ERRSECTION *sections,
                                    CS_INT nsections, const CS_ERRIDX *errs, CS_INT nerrs);
/*
 * *msg = the text of a message, which may go with the load of 100 others: copy it. CS_FAIL for a message that is not
 * there, or has no text.
 */
DLXCOMN_API CS_RETCODE com_err_msg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_ERRIDX *idx, CS_CHAR **msg);
/* The SQLSTATE of a message, without a NUL, in sqlstatelen (at least 1) bytes; *outlen its length even if that is less. */
DLXCOMN_API CS_RETCODE com_err_sqlstate(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT errnum, CS_INT errtag,
                                        CS_BYTE *sqlstate, CS_INT sqlstatelen, CS_INT *outlen);

/* The steps of the catalog. The caller holds msgmtx. */
DLXCOMN_API CS_RETCODE com__err_load_sections(CS_CONTEXT *context, CS_MESSAGE *message, INTL_LOCFILE *ifile,
                                              const CS_ERRSECTION *sections, CS_INT nsections, const CS_ERRIDX *errs,
                                              CS_INT nerrs, CsErrFileCache *filecache);
DLXCOMN_API CS_RETCODE com__err_load_errors(CS_CONTEXT *context, CS_MESSAGE *message, INTL_LOCFILE *ifile,
                                            const CS_ERRIDX *errs, CS_INT nerrs, CsErrSecCache *seccache);
DLXCOMN_API CS_RETCODE com__update_cache(CS_CONTEXT *context, CS_MESSAGE *message, CsErrSecCache *seccache,
                                         CS_CHAR *code, CS_INT num, CS_CHAR *text);
/* The cached message of a section, or null. */
DLXCOMN_API CsErrorCache *com__scan_cache(CsErrSecCache *seccache, CS_INT errnum);
/* The message, read if it is not cached; takes msgmtx itself. */
DLXCOMN_API CS_RETCODE com__err_getcache(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT errtag, CS_INT errnum,
                                         CsErrorCache **out);
/*
 * Turn \" \b \f \n \r \t into what they name, in place. A backslash in front of anything else stays, and that goes: both
 * \\ and \q become one backslash.
 */
DLXCOMN_API void com__err_filterescape(CS_CHAR *text);

/* ---- Raising a message ------------------------------------------------------------------------------- */

#define CS_MAX_MSG 1024

/* What the error callback receives; the record and its texts live for the time of the call. */
struct _cs_clientmsg {
    CS_INT severity;
    CS_MSGNUM msgnumber; /* layer, origin, severity and number, a byte each from the top */
    CS_CHAR msgstring[CS_MAX_MSG];
    CS_INT msgstringlen;
    CS_INT osnumber;
    CS_CHAR osstring[CS_MAX_MSG];
    CS_INT osstringlen;
    CS_INT status;
    CS_BYTE sqlstate[8];
    CS_INT sqlstatelen;
};

/* The parameters of a message. Pointers must hold until the message is built. */
typedef struct _cserrparams {
    CS_INT ep_numparams; /* 1 to 3; the first is the name of the API function */
    CS_CHAR *ep_format;  /* of those behind the first */
    CS_INT ep_type1;
    CS_VOID *ep_param1;
    CS_INT ep_type2;
    CS_VOID *ep_param2;
    CS_INT ep_type3;
    CS_VOID *ep_param3;
} CsErrParams;

static_assert(sizeof(CsErrParams) == 64 && offsetof(CsErrParams, ep_param1) == 24,
              "CsErrParams crosses the library's edge");

/* The parts of one message. */
typedef struct _cserrstrings {
    CS_CHAR *es_api;
    CS_INT es_apilen;
    CS_CHAR *es_layer;
    CS_INT es_layerlen;
    CS_CHAR *es_origin;
    CS_INT es_origlen;
    CS_CHAR *es_err;
    CS_INT es_errlen;
    CS_BOOL es_err_alloc; /* es_err is to be freed */
    CS_CHAR *es_oserr;
    CS_INT es_oserrlen;
} CsErrStrings;

/* The texts of last resort. */
extern DLXCOMN_API const CS_STRINGS Msgfailures[];

/* Pack parameters: s is a text, d an integer by its address. */
DLXCOMN_API CS_RETCODE com_ep_s(CsErrParams *ep, CS_CHAR *str1);
DLXCOMN_API CS_RETCODE com_ep_sd(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1);
DLXCOMN_API CS_RETCODE com_ep_ss(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2);
DLXCOMN_API CS_RETCODE com_ep_sss(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2, CS_CHAR *str3);
DLXCOMN_API CS_RETCODE com_ep_sds(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1, CS_CHAR *str2);
DLXCOMN_API CS_RETCODE com_ep_sdd(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1, CS_INT *int2);
DLXCOMN_API CS_RETCODE com_ep_ssd(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2, CS_INT *int1);

/* Raise a message: what the callback answers, or CS_FAIL without one. The callback runs on this thread. */
DLXCOMN_API CS_RETCODE com__error(CS_CONTEXT *context, CS_MSGNUM msgnum, CsErrParams *params);
/*
 * Build the text "api: layer: origin: message" at outbuf, without a NUL, cut to outbuflen. With an errbuf (errlen bytes)
 * that is the message; else it is read from `section` of the catalog and filled with the parameters. With truncate 0 a
 * text that does not fit is CS_FAIL and *outlen the room that it needs.
 */
DLXCOMN_API CS_RETCODE com_build_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum, CsErrParams *params,
                                        CS_CHAR *errbuf, CS_INT errlen, CS_INT section, CS_CHAR *outbuf,
                                        CS_INT outbuflen, CS_INT *outlen);
DLXCOMN_API CS_RETCODE com_notrunc_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum,
                                          CsErrParams *params, CS_CHAR *errbuf, CS_INT errlen, CS_INT section,
                                          CS_BOOL truncate, CS_CHAR *outbuf, CS_INT outbuflen, CS_INT *outlen);

/* The steps of the build. */
DLXCOMN_API void com__fill_climsg(CsErrStrings *strings, CS_CHAR *outbuf, CS_INT outbuflen, CS_INT *outlen);
DLXCOMN_API void com__get_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum, CS_INT section,
                                 CsErrParams *params, CsErrStrings *strings);
DLXCOMN_API void com__get_intlerr(CS_MSGNUM msgnum, CsErrStrings *strings);
DLXCOMN_API void com__call_strbuild(CsErrParams *params, CS_CHAR *message_template, CS_INT length,
                                    CsErrStrings *strings);
DLXCOMN_API void com__get_errstr(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT tag, CS_INT number, CS_INT failcode,
                                 CS_CHAR **out, CS_INT *outlen);
DLXCOMN_API CS_CHAR *com__get_failerr(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT failcode);

#ifdef __cplusplus
}
#endif
#endif
