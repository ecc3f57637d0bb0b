/*
 * context.h - the context that every checked call is given, and what hangs off it.
 *
 * The library never makes or drops a CS_CONTEXT. Its owner allocates and zeroes the record, fills
 * ctxglobals, ctxthread, ctxmalloc, ctxfree and ctxerrfunc, and calls com_conv_init and com_null_init
 * before the first conversion; at the end it calls com_null_free and com_conv_free.
 *
 * Threads: one thread at a time uses a context. CsCtxGlobals is shared by all contexts of one
 * application and guarded by cmg_mtx, taken through the callbacks of ctxthread.
 */
#ifndef DLXCOMN_CONTEXT_H
#define DLXCOMN_CONTEXT_H

#include <dlxcomn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _cscontext CS_CONTEXT;
typedef struct _cscontext CsContext;
typedef struct _csctxglobals CsCtxGlobals;
typedef struct _cslocale CsLocale;
typedef struct _csconfig CsConfig;
typedef struct _cs_clientmsg CS_CLIENTMSG;
typedef struct _csdefval CsDefVal;
typedef struct _csusrnull CsUsrNull;
typedef struct _csusrcvtfunc CsUsrCvtFunc;

/* A mutex or an event of the owner's making; the library only hands it back to the owner's callbacks. */
typedef struct _cs_thrdres CS_THRDRES;

/* ---- The owner's thread callbacks ---------------------------------------------------------- */

typedef CS_RETCODE (*CS_THRD_CREATE_FUNC)(CS_THRDRES **resource);
typedef CS_RETCODE (*CS_THRD_FUNC)(CS_THRDRES *resource);
typedef CS_RETCODE (*CS_THRD_WAIT_FUNC)(CS_THRDRES *event, CS_INT millisecs);
typedef CS_RETCODE (*CS_THRD_ID_FUNC)(CS_VOID *buffer, CS_INT buflen, CS_INT *outlen);

/* Any callback may be null; a null take_mutex_fn means that nothing is locked. */
typedef struct _cs_thread {
    CS_THRD_CREATE_FUNC create_mutex_fn;
    CS_THRD_FUNC delete_mutex_fn;
    CS_THRD_FUNC take_mutex_fn;
    CS_THRD_FUNC release_mutex_fn;
    CS_THRD_CREATE_FUNC create_event_fn;
    CS_THRD_FUNC delete_event_fn;
    CS_THRD_FUNC signal_event_fn;
    CS_THRD_FUNC reset_event_fn;
    CS_THRD_WAIT_FUNC waitfor_event_fn; /* 0 polls, a negative value waits without limit */
    CS_THRD_ID_FUNC thread_id_fn;
} CS_THREAD;

/* ---- The owner's other callbacks ----------------------------------------------------------- */

typedef CS_VOID *(*CS_MALLOC_FUNC)(CS_CONTEXT *context, CS_UINT size);
typedef CS_RETCODE (*CS_MFREE_FUNC)(CS_CONTEXT *context, CS_VOID *memory);
typedef CS_RETCODE (*CS_CTXERR_FUNC)(CS_CONTEXT *context, CS_CLIENTMSG *message);

/*
 * The one signature of a conversion. src and srcfmt describe the value, dest and destfmt the place it
 * goes to; *destlen receives the bytes of the result. convert.h tells the contract.
 */
typedef CS_RETCODE (*CS_CONV_FUNC)(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt,
                                   CS_VOID *dest, CS_INT *destlen);

/* ---- Tables of a context ------------------------------------------------------------------- */

/* A square table stored row by row: row is the source id, column the destination id. */
typedef struct _csconverttbl {
    CS_CONV_FUNC *cvttbl; /* owned by the context; null before com_conv_init */
    int cvtdim;           /* rows, and columns */
} CsConvertTbl;

typedef struct _csnulltbl {
    CsDefVal *nullvals; /* owned by the context; null before com_null_init */
    int nulldim;        /* rows */
} CsNullTbl;

/* ---- Records ------------------------------------------------------------------------------- */

/* Fields in the order in which they cross the library's edge. */
struct _cscontext {
    CS_INT ctxtag;               /* identifying tag, set by the owner */
    CS_INT ctxstatus;            /* the owner's state word */
    CS_INT ctxversion;           /* version word, set by the owner */
    CS_LOCALE *ctxlocale;        /* used whenever a CS_DATAFMT has no locale of its own */
    CS_LOCALE *ctxdeflocale;     /* the context's default locale */
    CsCtxGlobals *ctxglobals;    /* shared by the contexts of an application */
    CsConvertTbl ctxcvttbl;      /* this context's own copy of the conversion matrix */
    CsUsrCvtFunc *ctxusrcvttbl;  /* user conversions */
    CsNullTbl ctxnulls;          /* this context's null substitution values */
    CsUsrNull *ctxusrnulls;      /* null values of user datatypes */
    CS_THREAD *ctxthread;        /* the owner's thread callbacks */
    int ctxintlerr;              /* last localization failure */
    CS_VOID *ctxctctx;           /* private slot of the client layer */
    CS_VOID *ctxnetwork;         /* private slot of the network layer */
    CS_VOID *ctxdsctx;           /* private slot of the directory service layer */
    CS_VOID *ctxssctx;           /* private slot of the security service layer */
    CS_VOID *ctxqlserver;        /* private slot of the server library */
    CS_VOID *ctxcsctx;           /* private slot of the common services layer */
    CS_THRDRES *ctxmtx;          /* per-context mutex */
    CS_VOID *usercharconv;       /* user character set converters */
    CsConfig *ctxconfig;         /* configuration handle */
    CS_MALLOC_FUNC ctxmalloc;    /* may be null: the plain allocator counts */
    CS_MFREE_FUNC ctxfree;       /* goes with ctxmalloc */
    CS_CTXERR_FUNC ctxerrfunc;   /* error callback */
    CS_VOID *ctxcomerrhan;       /* error handler record */
    CS_VOID *ctxcsifactory;      /* crypto provider factory */
    CS_VOID *ctxcclctx;          /* crypto provider context */
};

static_assert(offsetof(CS_CONTEXT, ctxtag) == 0, "CS_CONTEXT.ctxtag");
static_assert(offsetof(CS_CONTEXT, ctxstatus) == 4, "CS_CONTEXT.ctxstatus");
static_assert(offsetof(CS_CONTEXT, ctxversion) == 8, "CS_CONTEXT.ctxversion");
static_assert(offsetof(CS_CONTEXT, ctxlocale) == 16, "CS_CONTEXT.ctxlocale");
static_assert(offsetof(CS_CONTEXT, ctxdeflocale) == 24, "CS_CONTEXT.ctxdeflocale");
static_assert(offsetof(CS_CONTEXT, ctxglobals) == 32, "CS_CONTEXT.ctxglobals");
static_assert(offsetof(CS_CONTEXT, ctxcvttbl) == 40, "CS_CONTEXT.ctxcvttbl");
static_assert(offsetof(CS_CONTEXT, ctxusrcvttbl) == 56, "CS_CONTEXT.ctxusrcvttbl");
static_assert(offsetof(CS_CONTEXT, ctxnulls) == 64, "CS_CONTEXT.ctxnulls");
static_assert(offsetof(CS_CONTEXT, ctxusrnulls) == 80, "CS_CONTEXT.ctxusrnulls");
static_assert(offsetof(CS_CONTEXT, ctxthread) == 88, "CS_CONTEXT.ctxthread");
static_assert(offsetof(CS_CONTEXT, ctxintlerr) == 96, "CS_CONTEXT.ctxintlerr");
static_assert(offsetof(CS_CONTEXT, ctxctctx) == 104, "CS_CONTEXT.ctxctctx");
static_assert(offsetof(CS_CONTEXT, ctxnetwork) == 112, "CS_CONTEXT.ctxnetwork");
static_assert(offsetof(CS_CONTEXT, ctxdsctx) == 120, "CS_CONTEXT.ctxdsctx");
static_assert(offsetof(CS_CONTEXT, ctxssctx) == 128, "CS_CONTEXT.ctxssctx");
static_assert(offsetof(CS_CONTEXT, ctxqlserver) == 136, "CS_CONTEXT.ctxqlserver");
static_assert(offsetof(CS_CONTEXT, ctxcsctx) == 144, "CS_CONTEXT.ctxcsctx");
static_assert(offsetof(CS_CONTEXT, ctxmtx) == 152, "CS_CONTEXT.ctxmtx");
static_assert(offsetof(CS_CONTEXT, usercharconv) == 160, "CS_CONTEXT.usercharconv");
static_assert(offsetof(CS_CONTEXT, ctxconfig) == 168, "CS_CONTEXT.ctxconfig");
static_assert(offsetof(CS_CONTEXT, ctxmalloc) == 176, "CS_CONTEXT.ctxmalloc");
static_assert(offsetof(CS_CONTEXT, ctxfree) == 184, "CS_CONTEXT.ctxfree");
static_assert(offsetof(CS_CONTEXT, ctxerrfunc) == 192, "CS_CONTEXT.ctxerrfunc");
static_assert(offsetof(CS_CONTEXT, ctxcomerrhan) == 200, "CS_CONTEXT.ctxcomerrhan");
static_assert(offsetof(CS_CONTEXT, ctxcsifactory) == 208, "CS_CONTEXT.ctxcsifactory");
static_assert(offsetof(CS_CONTEXT, ctxcclctx) == 216, "CS_CONTEXT.ctxcclctx");
static_assert(sizeof(CS_CONTEXT) == 224, "CS_CONTEXT crosses the library's edge");

/* Shared by all contexts of one application; what hangs off it is never freed singly. */
struct _csctxglobals {
    CS_INT cmg_count;             /* contexts sharing the record */
    CS_VOID *cmg_lcache;          /* locale cache */
    CS_VOID *cmg_chardesc;        /* character set descriptors, a chain of CsCharDesc */
    CS_LOCALE *cmg_locale;        /* process default locale */
    CS_THRDRES *cmg_mtx;          /* guards this record */
    CS_VOID *cmg_datetime;        /* date data */
    CS_VOID *cmg_money;           /* money data */
    CS_VOID *cmg_numeric;         /* number data */
    CS_VOID *cmg_utf8_charset;    /* UTF-8 character set descriptor */
    CS_VOID *cmg_utf8_ctypeptr;   /* UTF-8 character type data */
    CS_VOID *cmg_message;         /* message data */
    CS_VOID *lm;                  /* list manager handle */
    CS_VOID *mnem_db;             /* mnemonic database */
    CS_INT max_mnem_strlen;       /* longest mnemonic, bytes */
    CS_VOID *ucs2_oid;            /* identifier of UCS-2 */
    CS_VOID *ctxoids;             /* object identifier table */
    CS_VOID *csicorep;            /* crypto core pointer */
};

static_assert(offsetof(CsCtxGlobals, cmg_lcache) == 8, "CsCtxGlobals.cmg_lcache");
static_assert(offsetof(CsCtxGlobals, cmg_chardesc) == 16, "CsCtxGlobals.cmg_chardesc");
static_assert(offsetof(CsCtxGlobals, cmg_locale) == 24, "CsCtxGlobals.cmg_locale");
static_assert(offsetof(CsCtxGlobals, cmg_mtx) == 32, "CsCtxGlobals.cmg_mtx");
static_assert(offsetof(CsCtxGlobals, cmg_datetime) == 40, "CsCtxGlobals.cmg_datetime");
static_assert(offsetof(CsCtxGlobals, cmg_money) == 48, "CsCtxGlobals.cmg_money");
static_assert(offsetof(CsCtxGlobals, cmg_numeric) == 56, "CsCtxGlobals.cmg_numeric");
static_assert(offsetof(CsCtxGlobals, cmg_utf8_charset) == 64, "CsCtxGlobals.cmg_utf8_charset");
static_assert(offsetof(CsCtxGlobals, cmg_utf8_ctypeptr) == 72, "CsCtxGlobals.cmg_utf8_ctypeptr");
static_assert(offsetof(CsCtxGlobals, cmg_message) == 80, "CsCtxGlobals.cmg_message");
static_assert(offsetof(CsCtxGlobals, lm) == 88, "CsCtxGlobals.lm");
static_assert(offsetof(CsCtxGlobals, mnem_db) == 96, "CsCtxGlobals.mnem_db");
static_assert(offsetof(CsCtxGlobals, max_mnem_strlen) == 104, "CsCtxGlobals.max_mnem_strlen");
static_assert(offsetof(CsCtxGlobals, ucs2_oid) == 112, "CsCtxGlobals.ucs2_oid");
static_assert(offsetof(CsCtxGlobals, ctxoids) == 120, "CsCtxGlobals.ctxoids");
static_assert(offsetof(CsCtxGlobals, csicorep) == 128, "CsCtxGlobals.csicorep");
static_assert(sizeof(CsCtxGlobals) == 136, "CsCtxGlobals crosses the library's edge");

/*
 * A locale: the data of the six categories, each a CsLocCache (locale.h) shared with other locales.
 * The record owns nothing.
 */
struct _cslocale {
    CS_VOID *collateptr;
    CS_VOID *ctypeptr;
    CS_VOID *messageptr;
    CS_VOID *monetaryptr;
    CS_VOID *numericptr;
    CS_VOID *timeptr;
    CS_VOID *ctxptr;        /* the owning context */
    struct _cslocale *next; /* next record on cmg_locale */
};

static_assert(offsetof(CS_LOCALE, ctypeptr) == 8, "CS_LOCALE.ctypeptr");
static_assert(offsetof(CS_LOCALE, messageptr) == 16, "CS_LOCALE.messageptr");
static_assert(offsetof(CS_LOCALE, monetaryptr) == 24, "CS_LOCALE.monetaryptr");
static_assert(offsetof(CS_LOCALE, numericptr) == 32, "CS_LOCALE.numericptr");
static_assert(offsetof(CS_LOCALE, timeptr) == 40, "CS_LOCALE.timeptr");
static_assert(offsetof(CS_LOCALE, ctxptr) == 48, "CS_LOCALE.ctxptr");
static_assert(offsetof(CS_LOCALE, next) == 56, "CS_LOCALE.next");
static_assert(sizeof(CS_LOCALE) == 64, "CS_LOCALE crosses the library's edge");

#ifdef __cplusplus
}
#endif
#endif
