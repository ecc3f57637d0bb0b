/*
 * null.h - what is handed out in place of a null value.
 *
 * Each context keeps a substitution value for each datatype. The table belongs to its context, so one
 * thread at a time uses it. All memory here is the plain allocator's.
 */
#ifndef DLXCOMN_NULL_H
#define DLXCOMN_NULL_H

#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

/* How a substitution value is padded. */
enum { CS_NULLPAD_CHAR = 1, CS_NULLPAD_BINARY = 2, CS_NULLPAD_NONE = 3, CS_NULLPAD_UNICHAR = 4 };

struct _csdefval {
    CS_VOID *dventity; /* the value's bytes; null after com_null_set with a length of 0 */
    CS_INT dvsize;     /* their count */
    CS_INT dvpadtype;  /* CS_NULLPAD_ */
};

struct _csusrnull {
    CS_INT dttype;     /* user datatype id */
    CS_VOID *dventity; /* the value's bytes, or null */
    CS_INT dvsize;     /* their count */
    struct _csusrnull *nextnull;
};

static_assert(offsetof(CsDefVal, dvsize) == 8 && offsetof(CsDefVal, dvpadtype) == 12 && sizeof(CsDefVal) == 16,
              "CsDefVal crosses the library's edge");
static_assert(offsetof(CsUsrNull, dventity) == 8 && offsetof(CsUsrNull, dvsize) == 16 &&
                  offsetof(CsUsrNull, nextnull) == 24 && sizeof(CsUsrNull) == 32,
              "CsUsrNull crosses the library's edge");

/* Rows of a table of null values: the built-in datatypes. */
#define CS_NULL_DIM 40

/* The defaults, in id order. Read-only in spite of the type of dventity. */
extern DLXCOMN_API const CsDefVal Comv_values[CS_NULL_DIM];

/*
 * Give the context its own copy of the defaults and an empty user list. CS_MEM_ERROR leaves the rows made
 * so far in place for com_null_free.
 */
DLXCOMN_API CS_RETCODE com_null_init(CS_CONTEXT *context);

/*
 * Release the table and the user list; always CS_SUCCEED. The values of user datatypes stay allocated:
 * com_null_reinstall releases them.
 */
DLXCOMN_API CS_RETCODE com_null_free(CS_CONTEXT *context);

/*
 * Store the substitution value of destfmt->datatype in dest, whose room is destlen, pad it by
 * destfmt->format, and set *outlen to the bytes stored. For CS_NUMERIC and CS_DECIMAL the precision and
 * scale of destfmt go into the record. A value of a user datatype is followed by a NUL that *outlen
 * counts and destlen does not: give it one byte more. A user datatype without a value stores nothing.
 */
DLXCOMN_API CS_RETCODE com_null_get(CS_CONTEXT *context, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT destlen,
                                    CS_INT *outlen);

/*
 * Replace the value of a datatype by a copy of nulllen bytes at null. With 0 bytes the value is gone, and
 * com_null_get of a built-in datatype then reports a null pointer. CS_SUCCEED, CS_MEM_ERROR (the old value
 * is gone), CS_ESYNTAX for a negative nulllen where assertions return.
 */
DLXCOMN_API CS_RETCODE com_null_set(CS_CONTEXT *context, CS_INT nulltype, CS_VOID *null, CS_INT nulllen);

/*
 * Bring the default of a built-in datatype back, or remove the value of a user datatype. Removing the
 * second entry of the user list drops the first with it. CS_SUCCEED or CS_MEM_ERROR.
 */
DLXCOMN_API CS_RETCODE com_null_reinstall(CS_CONTEXT *context, CS_INT nulltype);

#ifdef __cplusplus
}
#endif
#endif
