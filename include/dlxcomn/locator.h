/*
 * locator.h - the record that stands for a large value which stays on the server.
 *
 * A CS_LOCATOR owns its locator bytes and its chunk records, but not the data of a chunk. A destination
 * record must carry CS_LOCATOR_MAGIC before any conversion writes to it.
 */
#ifndef DLXCOMN_LOCATOR_H
#define DLXCOMN_LOCATOR_H

#include <dlxcomn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define CS_LOCATOR_MAGIC (-779)

typedef struct _csblobchunk {
    struct _csblobchunk *pnext;
    CS_INT len;
    CS_VOID *data;
} CsBlobChunk;

typedef struct _cslocator {
    CS_INT locatortag;         /* CS_LOCATOR_MAGIC in a valid record */
    CS_INT locatortype;        /* its datatype id */
    CS_USMALLINT locatorlen;   /* bytes at locator */
    CS_BYTE *locator;
    CS_INT prefetchlen;        /* bytes prefetched */
    CsBlobChunk *prefetchdata; /* may be null */
    CS_BIGINT totalloblen;     /* bytes of the whole value */
} CS_LOCATOR;

static_assert(offsetof(CsBlobChunk, len) == 8 && offsetof(CsBlobChunk, data) == 16 && sizeof(CsBlobChunk) == 24,
              "CsBlobChunk layout");
static_assert(offsetof(CS_LOCATOR, locatortype) == 4, "CS_LOCATOR.locatortype");
static_assert(offsetof(CS_LOCATOR, locatorlen) == 8, "CS_LOCATOR.locatorlen");
static_assert(offsetof(CS_LOCATOR, locator) == 16, "CS_LOCATOR.locator");
static_assert(offsetof(CS_LOCATOR, prefetchlen) == 24, "CS_LOCATOR.prefetchlen");
static_assert(offsetof(CS_LOCATOR, prefetchdata) == 32, "CS_LOCATOR.prefetchdata");
static_assert(offsetof(CS_LOCATOR, totalloblen) == 40, "CS_LOCATOR.totalloblen");
static_assert(sizeof(CS_LOCATOR) == 48, "CS_LOCATOR crosses the library's edge");

#ifdef __cplusplus
}
#endif
#endif
