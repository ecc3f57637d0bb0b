/*
 * types.h - scalar types, datatype ids, status codes and the value descriptor.
 *
 * Conventions of every header of this library:
 *   1. All lengths and sizes are bytes unless a comment says otherwise.
 *   2. A pointer argument must not be null unless its comment says that it may be. A null one is a
 *      mistake of the calling code: it is reported on standard error and the process aborts (diag.h).
 *   3. A fact about the data is a CS_RETCODE. CS_SUCCEED is 1; every other value is a failure.
 *   4. Text is bytes with a length; it is NUL-terminated only where a comment says so.
 *   5. Value layouts are in machine byte order and reach the wire as they stand in memory.
 *   6. Nothing here throws, and nothing keeps a pointer that it was given beyond the call, except
 *      where a comment says so.
 */
#ifndef DLXCOMN_TYPES_H
#define DLXCOMN_TYPES_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#define DLXCOMN_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Scalars ------------------------------------------------------------------------------- */

typedef void CS_VOID;

typedef int32_t CS_INT;
typedef int32_t CS_RETCODE;
typedef int32_t CS_BOOL;
typedef int32_t CS_DATE; /* days since 1900-01-01 */
typedef int32_t CS_TIME; /* ticks of 1/300 second since midnight */
typedef int32_t CS_BLOB;
typedef int32_t CS_VOIDDATA;

typedef uint32_t CS_UINT;
typedef uint32_t CS_MSGNUM;

typedef int16_t CS_SMALLINT;
typedef uint16_t CS_USHORT;
typedef uint16_t CS_USMALLINT;
typedef uint16_t CS_UNICHAR; /* one UTF-16 code unit, machine order */
typedef uint16_t CS_UNITEXT;

typedef uint8_t CS_TINYINT; /* unsigned: 0 to 255 */
typedef uint8_t CS_BIT;     /* 0 or 1 */
typedef uint8_t CS_BYTE;
typedef uint8_t CS_BINARY;
typedef uint8_t CS_LONGBINARY;
typedef uint8_t CS_LONGCHAR;
typedef uint8_t CS_TEXT;
typedef uint8_t CS_IMAGE;
typedef uint8_t CS_XML;

typedef char CS_CHAR;

typedef int64_t CS_BIGINT;
typedef int64_t CS_LONG;

typedef uint64_t CS_UBIGINT;
typedef uint64_t CS_BIGDATETIME; /* microseconds since 0000-01-01 00:00:00 */
typedef uint64_t CS_BIGTIME;     /* microseconds since midnight */

typedef float CS_REAL;
typedef double CS_FLOAT;

#define CS_TRUE 1
#define CS_FALSE 0

/* A length argument with this value says that the text is NUL-terminated. */
#define CS_NULLTERM (-9)
/* A length or number argument with this value is unused. */
#define CS_UNUSED (-99999)

/* ---- Datatype ids --------------------------------------------------------------------------
 * The id of a value's datatype, as it stands in CS_DATAFMT.datatype. An id of 40 or more is a user
 * datatype, whose conversions and null values the application installs.
 */
enum {
    CS_CHAR_TYPE = 0,
    CS_BINARY_TYPE = 1,
    CS_LONGCHAR_TYPE = 2,
    CS_LONGBINARY_TYPE = 3,
    CS_TEXT_TYPE = 4,
    CS_IMAGE_TYPE = 5,
    CS_TINYINT_TYPE = 6,
    CS_SMALLINT_TYPE = 7,
    CS_INT_TYPE = 8,
    CS_REAL_TYPE = 9,
    CS_FLOAT_TYPE = 10,
    CS_BIT_TYPE = 11,
    CS_DATETIME_TYPE = 12,
    CS_DATETIME4_TYPE = 13,
    CS_MONEY_TYPE = 14,
    CS_MONEY4_TYPE = 15,
    CS_NUMERIC_TYPE = 16,
    CS_DECIMAL_TYPE = 17,
    CS_VARCHAR_TYPE = 18,
    CS_VARBINARY_TYPE = 19,
    CS_LONG_TYPE = 20,
    CS_SENSITIVITY_TYPE = 21,
    CS_BOUNDARY_TYPE = 22,
    CS_VOID_TYPE = 23,
    CS_USHORT_TYPE = 24,
    CS_UNICHAR_TYPE = 25,
    CS_BLOB_TYPE = 26,
    CS_DATE_TYPE = 27,
    CS_TIME_TYPE = 28,
    CS_UNITEXT_TYPE = 29,
    CS_BIGINT_TYPE = 30,
    CS_USMALLINT_TYPE = 31,
    CS_UINT_TYPE = 32,
    CS_UBIGINT_TYPE = 33,
    CS_XML_TYPE = 34,
    CS_BIGDATETIME_TYPE = 35,
    CS_BIGTIME_TYPE = 36,
    CS_TEXTLOCATOR_TYPE = 37,
    CS_IMAGELOCATOR_TYPE = 38,
    CS_UNITEXTLOCATOR_TYPE = 39,
    CS_USER_TYPE = 40 /* the first user datatype; also the count of built-in ones */
};

/* ---- Status codes --------------------------------------------------------------------------
 * Of two that look alike: CS_EOVERFLOW says that the value is outside the destination's range (on
 * either side, unless the conversion tells them apart with CS_EUNDERFLOW); CS_ETRUNCATED says that the
 * destination holds a usable part of the value. CS_ESYNTAX speaks of text, CS_EDOMAIN of bytes that
 * are no value of their type.
 */
enum {
    CS_SUCCEED = 1,
    CS_FAIL = 0,
    CS_MEM_ERROR = -1,
    CS_PENDING = -2,
    CS_QUIET = -3,
    CS_BUSY = -4,
    CS_INTERRUPT = -5,

    CS_EOVERFLOW = -101,   /* value outside the destination's range */
    CS_EUNDERFLOW = -102,  /* below the range, where a conversion tells the sides apart */
    CS_EPRECISION = -103,  /* destination precision outside 1 to 77 */
    CS_ESCALE = -104,      /* destination scale above 77, or not usable */
    CS_ESYNTAX = -105,     /* source text is not a value of the wanted type */
    CS_EFORMAT = -106,     /* destination format flags contradict each other */
    CS_EDOMAIN = -107,     /* source bytes are no legal value of their type */
    CS_EDIVZERO = -108,    /* division by zero in exact arithmetic */
    CS_ETRUNCATED = -113,  /* cut to fit; the destination holds the part that fitted */
    CS_EDATEFMT = -114,    /* a date or time could not be formatted */
    CS_EUNMAPPED = -115,   /* the source holds a character that cannot be converted */
    CS_ENOCONV = -116,     /* no translation between the two character sets */
    CS_ECONVWARN = -117,   /* only from an application's own character set converter */

    CS_CANCELED = -202,
    CS_ROW_FAIL = -203,
    CS_END_DATA = -204,
    CS_END_RESULTS = -205,
    CS_END_ITEM = -206,
    CS_NOMSG = -207,
    CS_TIMED_OUT = -208,
    CS_PASSTHRU_EOM = -210,
    CS_PASSTHRU_MORE = -211,
    CS_TRYING = -213,

    CS_EINTL = -301,       /* localization failed; ctxintlerr tells how */
    CS_ENOLOCFILE = -414,  /* a localization file is missing */
    CS_EBADCSNAME = -417   /* no such character set */
};

/* ---- The value descriptor ------------------------------------------------------------------ */

/* Bits of CS_DATAFMT.format; see comn__padchar in convert.h for the exact effect of each. */
enum {
    CS_FORMAT_NULLTERM = 1,     /* the result ends in a NUL, which takes one byte of maxlength */
    CS_FORMAT_ZEROPAD = 2,      /* the rest up to maxlength is zero bytes; *destlen is maxlength */
    CS_FORMAT_BLANKPAD = 4,     /* the rest up to maxlength is blanks; *destlen is maxlength */
    CS_FORMAT_ESCAPEQUOTE = 32  /* text to text: each apostrophe is doubled */
};

/* A precision or scale that is to be taken from the source value. */
#define CS_VALUE_FROM_SOURCE (-2562)

#define CS_MAX_NAME 256

typedef struct _cslocale CS_LOCALE;

typedef struct _cs_datafmt {
    CS_CHAR name[CS_MAX_NAME]; /* the caller's; no conversion reads it */
    CS_INT namelen;
    CS_INT datatype;           /* one of the ids above */
    CS_INT format;             /* CS_FORMAT_ bits, of a destination */
    CS_INT maxlength;          /* of a source: the length of the value; of a destination: the room */
    CS_INT scale;              /* digits behind the point, CS_NUMERIC and CS_DECIMAL only */
    CS_INT precision;          /* digits in all, CS_NUMERIC and CS_DECIMAL only */
    CS_INT status;             /* the caller's */
    CS_INT count;              /* the caller's */
    CS_INT usertype;           /* the caller's */
    CS_LOCALE *locale;         /* may be null: the context's ctxlocale counts */
} CS_DATAFMT;

static_assert(sizeof(CS_DATAFMT) == 304, "CS_DATAFMT crosses the library's edge");
static_assert(offsetof(CS_DATAFMT, namelen) == 256, "CS_DATAFMT.namelen");
static_assert(offsetof(CS_DATAFMT, datatype) == 260, "CS_DATAFMT.datatype");
static_assert(offsetof(CS_DATAFMT, format) == 264, "CS_DATAFMT.format");
static_assert(offsetof(CS_DATAFMT, maxlength) == 268, "CS_DATAFMT.maxlength");
static_assert(offsetof(CS_DATAFMT, scale) == 272, "CS_DATAFMT.scale");
static_assert(offsetof(CS_DATAFMT, precision) == 276, "CS_DATAFMT.precision");
static_assert(offsetof(CS_DATAFMT, status) == 280, "CS_DATAFMT.status");
static_assert(offsetof(CS_DATAFMT, count) == 284, "CS_DATAFMT.count");
static_assert(offsetof(CS_DATAFMT, usertype) == 288, "CS_DATAFMT.usertype");
static_assert(offsetof(CS_DATAFMT, locale) == 296, "CS_DATAFMT.locale");

/* ---- Values of the two variable-length datatypes ------------------------------------------- */

/* CS_VARCHAR, id 18: len bytes of str count; no NUL is needed. */
typedef struct _cs_varchar {
    CS_SMALLINT len;
    CS_CHAR str[256];
} CS_VARCHAR;

/* CS_VARBINARY, id 19: len bytes of array count. */
typedef struct _cs_varbin {
    CS_SMALLINT len;
    CS_BYTE array[256];
} CS_VARBINARY;

static_assert(sizeof(CS_VARCHAR) == 258 && offsetof(CS_VARCHAR, str) == 2, "CS_VARCHAR layout");
static_assert(sizeof(CS_VARBINARY) == 258 && offsetof(CS_VARBINARY, array) == 2, "CS_VARBINARY layout");

static_assert(sizeof(CS_INT) == 4 && sizeof(CS_SMALLINT) == 2 && sizeof(CS_BIGINT) == 8, "integer widths");
static_assert(sizeof(CS_REAL) == 4 && sizeof(CS_FLOAT) == 8, "IEEE single and double");

/*
 * The storage width in bytes of a datatype. For the types whose width is the caller's to know (text,
 * binary, CS_LONG, CS_UNITEXT, locators ...) and for every id outside 0 to 39 it is len. Checks nothing
 * and cannot fail. CS_LONG answers len although CS_BIGINT answers 8: callers pass the width they want.
 */
DLXCOMN_API CS_INT comn_typelen(CS_INT type, CS_INT len);

#ifdef __cplusplus
}
#endif
#endif
