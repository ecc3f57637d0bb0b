/*
 * locale.h - what a locale name stands for.
 */
#ifndef DLXCOMN_LOCALE_H
#define DLXCOMN_LOCALE_H

#include <dlxcomn/charset.h>
#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _csmessage CS_MESSAGE;
typedef struct _csdateinfo CS_DATEINFO;
typedef struct _csnuminfo CS_NUMINFO;
typedef struct _csmoninfo CS_MONINFO;

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

#ifdef __cplusplus
}
#endif
#endif
