/*
 * message.h - the cache of message texts behind a language in a character set.
 *
 * A CS_MESSAGE (locale.h) holds a list of message files, each with its sections, each with the messages that were asked
 * for; a history of all of them says which is the oldest. msgmtx of the record guards it.
 */
#ifndef DLXCOMN_MESSAGE_H
#define DLXCOMN_MESSAGE_H

#include <dlxcomn/locale.h>

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

#ifdef __cplusplus
}
#endif
#endif
