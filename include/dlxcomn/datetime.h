/*
 * datetime.h - the date and time value types.
 *
 * All are pure calendar values on the proleptic Gregorian calendar, with no time zone. A tick is
 * 1/300 second; a day has 25920000 of them. CS_DATE, CS_TIME, CS_BIGDATETIME and CS_BIGTIME are plain
 * integers (types.h).
 */
#ifndef DLXCOMN_DATETIME_H
#define DLXCOMN_DATETIME_H

#include <dlxcomn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _cs_datetime {
    CS_INT dtdays; /* days since 1900-01-01, from -53690 (1753-01-01) */
    CS_INT dttime; /* ticks since midnight, 0 to 25919999 */
} CS_DATETIME;

typedef struct _cs_datetime4 {
    CS_USHORT days;    /* days since 1900-01-01 */
    CS_USHORT minutes; /* since midnight, 0 to 1439 */
} CS_DATETIME4;

static_assert(sizeof(CS_DATETIME) == 8 && offsetof(CS_DATETIME, dttime) == 4, "CS_DATETIME layout");
static_assert(sizeof(CS_DATETIME4) == 4 && offsetof(CS_DATETIME4, minutes) == 2, "CS_DATETIME4 layout");

/* A date and time broken down into its fields. */
typedef struct _cs_daterec {
    CS_INT dateyear;    /* 1 to 9999 */
    CS_INT datemonth;   /* 0 (January) to 11 */
    CS_INT datedmonth;  /* 1 to 31 */
    CS_INT datedyear;   /* 1 to 366 */
    CS_INT datedweek;   /* 0 (Sunday) to 6 */
    CS_INT datehour;    /* 0 to 23 */
    CS_INT dateminute;  /* 0 to 59 */
    CS_INT datesecond;  /* 0 to 59 */
    CS_INT datemsecond; /* 0 to 999 */
    CS_INT datetzone;   /* unused */
    CS_INT datesecfrac; /* fraction of the second, in units of 1/datesecprec */
    CS_INT datesecprec; /* 300 from a CS_DATETIME, 1000000 from a big value */
} CS_DATEREC;

static_assert(offsetof(CS_DATEREC, datemonth) == 4, "CS_DATEREC.datemonth");
static_assert(offsetof(CS_DATEREC, datedmonth) == 8, "CS_DATEREC.datedmonth");
static_assert(offsetof(CS_DATEREC, datedyear) == 12, "CS_DATEREC.datedyear");
static_assert(offsetof(CS_DATEREC, datedweek) == 16, "CS_DATEREC.datedweek");
static_assert(offsetof(CS_DATEREC, datehour) == 20, "CS_DATEREC.datehour");
static_assert(offsetof(CS_DATEREC, dateminute) == 24, "CS_DATEREC.dateminute");
static_assert(offsetof(CS_DATEREC, datesecond) == 28, "CS_DATEREC.datesecond");
static_assert(offsetof(CS_DATEREC, datemsecond) == 32, "CS_DATEREC.datemsecond");
static_assert(offsetof(CS_DATEREC, datetzone) == 36, "CS_DATEREC.datetzone");
static_assert(offsetof(CS_DATEREC, datesecfrac) == 40, "CS_DATEREC.datesecfrac");
static_assert(offsetof(CS_DATEREC, datesecprec) == 44, "CS_DATEREC.datesecprec");
static_assert(sizeof(CS_DATEREC) == 48, "CS_DATEREC crosses the library's edge");

#ifdef __cplusplus
}
#endif
#endif
