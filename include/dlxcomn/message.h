/*
 * message.h - messages: their texts from the catalog, and the road of a failure to the application.
 *
 * A function that fails packs its parameters with a com_ep_ call and hands a message number to com__error, which builds
 * the text and calls the context's error callback. A message always comes out whole: a text that is missing degrades
 * to a default of the catalog, and that to one built in.
 *
 * Texts lie in message files, home/locales/message/<language>/<file>, this library's own in comnlib.loc. Such a file is
 * UTF-8 and has sections with one entry a message:
 *
 *     [comapierror]
 *     7 = 01ZZZ, "The property %1! ", "cannot be %2!."
 *
 * The key is the number of the message in decimal digits. The first value is its SQLSTATE, of which 7 bytes at most are
 * kept; the others, one at least, make up its text. In a text in quotes \" \b \f \n \r \t name a character, and
 * com__err_filterescape tells what becomes of other backslashes. "%1!" and "%2!" in a text are the parameters behind
 * the name of the API function, "%%" is a percent sign; that holds for messages that are raised with such parameters,
 * while other texts stand as they are. Sections of other names are skipped.
 *
 * Texts are read one by one when they are asked for, into a cache of at most 100 behind the language and character set
 * (CS_MESSAGE of locale.h), converted to that set. It is shared by all contexts of an application that have the
 * language and set, and stays until comn_intl_message_drop. The cache is a list of files, each with its sections, each
 * with its messages; a history of all says which is the oldest, and the 101st takes its place, however often that was
 * asked for.
 *
 * All of the cache is guarded by msgmtx of the record; every function here takes it itself, unless it says that the
 * caller holds it. A context is used by one thread at a time.
 *
 * Unless a function says more, a null pointer that it is given is reported as such (diag.h); where reports return, the
 * answer is CS_FAIL and nothing is written.
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

/*
 * The catalog of a context, in ctxcomerrhan, or of a library above on a file of its own. Its language is that of the
 * locale's category of messages.
 */
typedef struct _cserrorhan {
    CS_LOCALE *err_locale; /* not owned */
    CS_CHAR *err_file;     /* the file's name in the directory of the language, NUL-terminated, owned */
} CS_ERRHAN;

static_assert(sizeof(CS_ERRSECTION) == 16 && sizeof(CS_ERRIDX) == 8 && sizeof(CS_ERRHAN) == 16,
              "records of the catalog cross the library's edge");

/*
 * The sections of this library's own file, comnlib.loc: "comdefaults" for texts that are missing, "comlayer" and
 * "comorigin" for the bytes of a message number that name its layer and origin, "comapierror" for the messages.
 */
enum { CS_ERRTAG_DEFAULTS = 1, CS_ERRTAG_LAYER = 2, CS_ERRTAG_ORIGIN = 3, CS_ERRTAG_API = 4 };
#define CS_COMN_SECTIONS 4
#define CS_COMN_DEFAULTS 4
extern DLXCOMN_API const CS_ERRSECTION Comlocsections[CS_COMN_SECTIONS];
/* The messages that are read at the start, so that they can be reported when nothing else works. */
extern DLXCOMN_API const CS_ERRIDX Comdeferrs[CS_COMN_DEFAULTS];

/*
 * What the functions of the catalog answer besides CS_SUCCEED: CS_FAIL for a section or message that is not there, or a
 * message without a text; CS_MEM_ERROR; CS_ENOLOCFILE without a file; CS_EINTL without a home directory or for a
 * malformed file, with the code of dlxintl/intl.h in ctxintlerr; or the status of the text's conversion.
 */

/*
 * Make the catalog of a context, or give it the context's present locale, which must be there, and read the defaults of
 * comnlib.loc. A section that is missing is CS_FAIL, a default that is missing is not. The catalog stays also where its
 * start fails, but for want of memory for itself.
 */
DLXCOMN_API CS_RETCODE com_errinit(CS_CONTEXT *context);
/* Free the catalog, if there is one; the texts stay with the locale. */
DLXCOMN_API CS_RETCODE com_errdrop(CS_CONTEXT *context);
/*
 * Start a catalog: find nsections (1 or more) sections in its file, and read the given messages of them, nerrs of 1 to
 * 100, or none for null errs. A file that is known already is read again for what it lacks, and stays if that fails.
 */
DLXCOMN_API CS_RETCODE com_err_init(CS_CONTEXT *context, CS_ERRHAN *errhan, const CS_ERRSECTION *sections,
                                    CS_INT nsections, const CS_ERRIDX *errs, CS_INT nerrs);
/*
 * *msg = the text of a message, NUL-terminated, or null. It is the cache's and may go with any message that is read
 * later, by this context or another: copy it at once.
 */
DLXCOMN_API CS_RETCODE com_err_msg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_ERRIDX *idx, CS_CHAR **msg);
/*
 * The SQLSTATE of a message, without a NUL, in sqlstatelen (at least 1) bytes. *outlen is its length, also where it
 * does not fit, which is CS_FAIL.
 */
DLXCOMN_API CS_RETCODE com_err_sqlstate(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT errnum, CS_INT errtag,
                                        CS_BYTE *sqlstate, CS_INT sqlstatelen, CS_INT *outlen);

/* ---- Steps of the catalog. The caller holds msgmtx, but for com__err_getcache. */

/*
 * Read on until nsections of the given sections have been met, note them in filecache by their tags, and read the given
 * messages of each; null errs is none. A section that stands in the file twice counts twice.
 */
DLXCOMN_API CS_RETCODE com__err_load_sections(CS_CONTEXT *context, CS_MESSAGE *message, INTL_LOCFILE *ifile,
                                              const CS_ERRSECTION *sections, CS_INT nsections, const CS_ERRIDX *errs,
                                              CS_INT nerrs, CsErrFileCache *filecache);
/*
 * Read on in the reader's section until nerrs (1 to 100) of the given messages have been met. One that is cached
 * counts, and is not read again; the end of the section before that is no failure.
 */
DLXCOMN_API CS_RETCODE com__err_load_errors(CS_CONTEXT *context, CS_MESSAGE *message, INTL_LOCFILE *ifile,
                                            const CS_ERRIDX *errs, CS_INT nerrs, CsErrSecCache *seccache);
/* Convert a code and text from UTF-8 and put them in front of both chains. The 101st message takes the oldest out. */
DLXCOMN_API CS_RETCODE com__update_cache(CS_CONTEXT *context, CS_MESSAGE *message, CsErrSecCache *seccache,
                                         CS_CHAR *code, CS_INT num, CS_CHAR *text);
/* The cached message of a section, or null. */
DLXCOMN_API CsErrorCache *com__scan_cache(CsErrSecCache *seccache, CS_INT errnum);
/* *out = the message, read if it is not cached, or null. Takes msgmtx itself; without it *out holds no longer. */
DLXCOMN_API CS_RETCODE com__err_getcache(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT errtag, CS_INT errnum,
                                         CsErrorCache **out);
/*
 * Turn \" \b \f \n \r \t into what they name, in place. A backslash in front of anything else stays, and that goes:
 * both \\ and \q become one backslash. At the end of the text a backslash stands for itself.
 */
DLXCOMN_API void com__err_filterescape(CS_CHAR *text);

/* ---- Raising a message ------------------------------------------------------------------------------- */

#define CS_MAX_MSG 1024

/*
 * A message number has four bytes: layer (the top one), origin, severity and number. Layer and origin are numbers in
 * the sections "comlayer" and "comorigin", the number is one in the section of the message; so 17040898, which is
 * 0x01040602, is message 2 of severity 6, from origin 4 of layer 1. Messages of origin 5 have no text in a file: their
 * number is a code of dlxintl/intl.h without its sign, and its text theirs.
 */

/* What the error callback receives; the record lives for the time of the call. Texts end in a NUL as well. */
struct _cs_clientmsg {
    CS_INT severity;
    CS_MSGNUM msgnumber;
    CS_CHAR msgstring[CS_MAX_MSG];
    CS_INT msgstringlen;
    CS_INT osnumber; /* 0, and osstring empty: messages of the operating system come from the layers above */
    CS_CHAR osstring[CS_MAX_MSG];
    CS_INT osstringlen;
    CS_INT status;       /* not for the callback to read */
    CS_BYTE sqlstate[8]; /* "ZZZZZ" for a message without a code */
    CS_INT sqlstatelen;
};

/*
 * The parameters of a message. Pointers must hold until the message is built. A type is 0 for a text, 8 for a CS_INT.
 */
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
    CS_CHAR *es_oserr; /* no part of a message of this library */
    CS_INT es_oserrlen;
} CsErrStrings;

/*
 * The texts of last resort, by failure code: 1 no memory, 2 no layer, 3 no origin, 4 no message. CS_UNUSED ends them.
 */
extern DLXCOMN_API const CS_STRINGS Msgfailures[];

/* Pack parameters: s is a text, d an integer by its address. The first is the name of the API function. */
DLXCOMN_API CS_RETCODE com_ep_s(CsErrParams *ep, CS_CHAR *str1);
DLXCOMN_API CS_RETCODE com_ep_sd(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1);
DLXCOMN_API CS_RETCODE com_ep_ss(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2);
DLXCOMN_API CS_RETCODE com_ep_sss(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2, CS_CHAR *str3);
DLXCOMN_API CS_RETCODE com_ep_sds(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1, CS_CHAR *str2);
DLXCOMN_API CS_RETCODE com_ep_sdd(CsErrParams *ep, CS_CHAR *str1, CS_INT *int1, CS_INT *int2);
DLXCOMN_API CS_RETCODE com_ep_ssd(CsErrParams *ep, CS_CHAR *str1, CS_CHAR *str2, CS_INT *int1);

/*
 * Raise a message of this library: what the callback answers, or CS_FAIL without one, and then no file is read. The
 * callback runs on this thread, and no lock of the catalog is held. A context without a catalog raises messages too.
 */
DLXCOMN_API CS_RETCODE com__error(CS_CONTEXT *context, CS_MSGNUM msgnum, CsErrParams *params);
/*
 * Build the text "api: layer: origin: message" in outbuflen bytes, without a NUL; *outlen is its length. With an errbuf
 * (errlen bytes) that is the message; else it is read from `section` of the catalog (null errhan: none) and filled with
 * the parameters, and stands as it is where it cannot be filled. The first cuts what does not fit; so does the second
 * with truncate 1, while with 0 that is CS_FAIL, and *outlen the room that the text needs.
 */
DLXCOMN_API CS_RETCODE com_build_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum, CsErrParams *params,
                                        CS_CHAR *errbuf, CS_INT errlen, CS_INT section, CS_CHAR *outbuf,
                                        CS_INT outbuflen, CS_INT *outlen);
DLXCOMN_API CS_RETCODE com_notrunc_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum,
                                          CsErrParams *params, CS_CHAR *errbuf, CS_INT errlen, CS_INT section,
                                          CS_BOOL truncate, CS_CHAR *outbuf, CS_INT outbuflen, CS_INT *outlen);

/* ---- Steps of the build. Texts that they answer are the catalog's, but for an es_err that is allocated. */

/* Write the parts and what separates them, each cut to what is left. */
DLXCOMN_API void com__fill_climsg(CsErrStrings *strings, CS_CHAR *outbuf, CS_INT outbuflen, CS_INT *outlen);
/* The message itself, filled with the parameters: es_err. */
DLXCOMN_API CS_RETCODE com__get_errmsg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_MSGNUM msgnum, CS_INT section,
                                       CsErrParams *params, CsErrStrings *strings);
/* The text of the code that a message of origin 5 carries. */
DLXCOMN_API void com__get_intlerr(CS_MSGNUM msgnum, CsErrStrings *strings);
/*
 * Fill a template with two or three parameters, in `length` bytes that are allocated; on failure es_err is the
 * template.
 */
DLXCOMN_API void com__call_strbuild(CsErrParams *params, CS_CHAR *message_template, CS_INT length,
                                    CsErrStrings *strings);
/* A text of the catalog, or else the default of a failure code. */
DLXCOMN_API void com__get_errstr(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT tag, CS_INT number, CS_INT failcode,
                                 CS_CHAR **out, CS_INT *outlen);
/* The default of a failure code: the catalog's, or else the built-in one. */
DLXCOMN_API void com__get_failerr(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT failcode, CS_CHAR **out);

#ifdef __cplusplus
}
#endif
#endif
