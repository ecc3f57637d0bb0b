/*
 * datetime.h - the date and time value types, and the arithmetic on them.
 *
 * All are pure calendar values on the proleptic Gregorian calendar, with no time zone. A tick is
 * 1/300 second; a day has 25920000 of them. CS_DATE, CS_TIME, CS_BIGDATETIME and CS_BIGTIME are plain
 * integers (types.h):
 *
 *   CS_DATE         days since 1900-01-01, -693595 (0001-01-01) to 2958463 (9999-12-31)
 *   CS_TIME         ticks since midnight, 0 to 25919999
 *   CS_BIGDATETIME  microseconds since 0000-01-01, 31622400000000 (0001-01-01) to 315569519999999999
 *   CS_BIGTIME      microseconds since midnight, 0 to 86399999999
 *
 * No function here keeps state, allocates or takes a lock. Pointers must not be null and must be aligned for
 * their type. Sums and products are taken at their mathematical value: nothing wraps.
 */
#ifndef DLXCOMN_DATETIME_H
#define DLXCOMN_DATETIME_H

#include <dlxcomn/constant.h>
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

/* Parts of a date, and the value that com__daterecpart answers for each. */
enum {
    DATEPART_YEAR = 0,
    DATEPART_QUARTER = 1,     /* 1 to 4 */
    DATEPART_MONTH = 2,       /* 1 to 12 */
    DATEPART_WEEKDAY = 3,     /* 1 to 7, from the first day of the week on */
    DATEPART_DAY = 4,         /* of the month */
    DATEPART_DAYOFYEAR = 5,
    DATEPART_HOUR = 6,
    DATEPART_MINUTE = 7,
    DATEPART_SECOND = 8,
    DATEPART_MILLISECOND = 9,
    DATEPART_WEEK = 10,       /* weeks start on Sunday, January 1 is in week 1 */
    DATEPART_ISOYEAR = 11,    /* the year that the ISO 8601 week belongs to */
    DATEPART_ISOWEEK = 12,
    DATEPART_ISOWEEKDAY = 13, /* 1 (Monday) to 7 (Sunday) */
    DATEPART_MICROSECOND = 14 /* 0 for values that count ticks */
};

/* Codes of the functions that make and add. Those that answer int without a word on it answer these. */
enum {
    DATE_OK = 0,
    DATE_BADYEAR = 1, /* also: the result lies outside its type's range */
    DATE_BADMONTH = 2,
    DATE_BADDAY = 3,
    DATE_BADHOUR = 4,
    DATE_BADMINUTE = 5,
    DATE_BADSECOND = 6,
    DATE_BADFRACTION = 7
};

/* ---- Calendar ------------------------------------------------------------------------------ */

/* 1 when the year after `year` is a leap year: the argument counts years that have passed. */
DLXCOMN_API int leapyear(int year);
/* Leap years among the years 1 to `year`; 0 for a negative one. */
DLXCOMN_API int com__leapcnt(int year);

/* ---- Crack: a value into the fields of a record ---------------------------------------------
 * The date functions fill dateyear to datedweek, the time functions datehour to datemsecond, datesecfrac
 * and datesecprec; other fields stay. A day outside 0001 to 9999 cracks too, years before 1 all with 365
 * days. Of dttime the low 25 bits count.
 */
DLXCOMN_API void com__datecrack(CS_DATETIME *dtp, CS_DATEREC *pp);
DLXCOMN_API void com__bigdatecrack(CS_BIGDATETIME *bdt, CS_DATEREC *pp);
/* Milliseconds are cut off: tick 1 is 3 ms. datesecprec becomes 300, datesecfrac 0. */
DLXCOMN_API void com__timecrack(CS_DATETIME *dtp, CS_DATEREC *pp);
/* datesecprec becomes 1000000, datesecfrac the microseconds, datemsecond 0. */
DLXCOMN_API void com__bigtimecrack(CS_BIGDATETIME *bdt, CS_DATEREC *pp);

/* ---- Make: a value from the fields of a record -----------------------------------------------
 * Year, month and day, or hour, minute, second and fraction are judged in this order; negative times of day
 * are not. The ranges of the types are not checked: a CS_DATETIME can be made of the year 1.
 */
/* Sets dtdays, to 0 on failure; dttime stays. */
DLXCOMN_API int com__datemake(CS_DATETIME *dtp, CS_DATEREC *pp);
/* *bdt becomes midnight of the day, and stays on failure. */
DLXCOMN_API int com__bigdatemake(CS_BIGDATETIME *bdt, CS_DATEREC *pp);
/*
 * Sets dttime, which stays on failure. Milliseconds are rounded to ticks, but never into the next second: 999
 * is tick 299. They come from datesecfrac where datesecprec is 1000000, else from datemsecond.
 */
DLXCOMN_API int com__timemake(CS_DATETIME *dtp, CS_DATEREC *pp);
/* The fraction comes from datesecfrac where datesecprec is 1000000, else from datemsecond. */
DLXCOMN_API int com__bigtimemake(CS_BIGTIME *bt, CS_DATEREC *pp);

/* ---- Parts ---------------------------------------------------------------------------------- */

/*
 * A part of a cracked value. firstday is the first day of the week, 1 for Sunday to 7 for Saturday;
 * dayselapsed is the day number (since 1900-01-01) of the record; odatetype is the datatype of the value that
 * was cracked, CS_DATETIME_TYPE or one of the two big types. A part outside 0 to 14 is a broken contract, and
 * -101 where assertions return.
 */
DLXCOMN_API int com__daterecpart(int part, CS_DATEREC *t, int firstday, int dayselapsed, CS_INT odatetype);
DLXCOMN_API int com__datepart(int part, CS_DATETIME *to, int firstday);
DLXCOMN_API int com__bigdatepart(int part, CS_BIGDATETIME *bdt, int firstday);

/*
 * Write a part as text, and answer its length: the month and both weekdays by name (at most 30 bytes), the
 * rest as numbers. cp needs 30 bytes. No NUL is written. The answer is 0 where the list of names is null.
 */
DLXCOMN_API int com__datename(int part, CS_DATETIME *dtp, char *cp, char **months, char **days);
DLXCOMN_API int com__bigdatename(int part, CS_BIGDATETIME *bdt, char *cp, char **months, char **days);
/* The same of a value of com__daterecpart; weekdays are those of the day number. 0 for a part outside 0 to 14. */
DLXCOMN_API int com__datenameval(int part, char *cp, char **months, char **days, int value, int dayselapsed);

/* ---- Difference and addition ----------------------------------------------------------------- */

/*
 * *diff = to - from in a part: boundaries passed for years, quarters, months, weeks and ISO years, whole units
 * cut toward zero for the rest. 1 on overflow of *diff, which then stays. Minutes, seconds and milliseconds judge
 * their overflow coarsely where days and time differ in sign: a result close to the limits may be refused.
 * Milliseconds are those of the days plus those of the times, each cut by itself. DATEPART_MICROSECOND, and a
 * part outside 0 to 14, answer 0 and store nothing.
 */
DLXCOMN_API int com__datediff(int part, CS_DATETIME *from, CS_DATETIME *to, CS_INT *diff);
/* The same without overflow, and with microseconds. Always 0. */
DLXCOMN_API int com__bigdatediff(int part, CS_BIGDATETIME *from, CS_BIGDATETIME *to, CS_BIGINT *diff);

/*
 * Add `value` units of a part. Years, quarters and months keep the day of the month, or take the last one of a
 * shorter month. A part outside 0 to 13 is a broken contract, and -101 where assertions return.
 *
 * The result must be a day of 0001 to 9999 (the range of CS_DATE: callers check that of CS_DATETIME), else 1.
 * On that failure dtdays is 0 where years, quarters or months were added (but stays where the year is no CS_INT),
 * and stays for the others, but dttime has moved already where a time was added. A dttime of a day or more is 1
 * where a time is added, and nothing moves.
 */
DLXCOMN_API int com__date_add(int part, CS_INT value, CS_DATETIME *to);
/* The wire's numbers of the types that server constants hold. */
enum {
    TDS_DATE = 49,
    TDS_TIME = 51,
    TDS_DATETIME4 = 58,
    TDS_DATETIME = 61,
    TDS_BIGDATETIME = 187,
    TDS_BIGTIME = 188
};

/* The same with microseconds (0 to 14). The result must lie in the range of `type`, TDS_BIGDATETIME or
 * TDS_BIGTIME; on every failure *to stays. */
DLXCOMN_API int com__bigdate_add(int part, CS_INT value, CS_BIGDATETIME *to, CS_BYTE type);

/*
 * Add to a server constant. src->type is a wire number, src->len 8 or 4 (else 1). A CS_TIME is added to as a
 * time of 1900-01-01, a CS_DATE as its midnight. result->type and result->maxlen tell how the result is
 * stored at result->value: with 8 as CS_DATETIME within its range; with 4 as CS_DATE, CS_TIME or CS_DATETIME4 by
 * the type; any other room is 1. result->len is set with it. On failure nothing is stored.
 */
DLXCOMN_API int com__dateadd_both(int part, CS_INT value, __CONSTANT *src, __CONSTANT *result);
/* The same for the two big types. A big time is added to modulo one day, and so never fails. */
DLXCOMN_API int com__bigdateadd_both(int part, CS_INT value, __CONSTANT *src, __CONSTANT *result);
/* 1 when com__dateadd_both can add nothing to src, in days and in minutes; cast_buf receives the value. */
DLXCOMN_API int com__valid_datetime(__CONSTANT *src, CS_BYTE *cast_buf);

/* ---- Order and range ------------------------------------------------------------------------- */

/* Negative, zero or positive, as date1 lies before, at or after date2. */
DLXCOMN_API int com__datecmp(CS_DATETIME *date1, CS_DATETIME *date2);

/* 1 when the value lies outside the range of its type, else 0. Of a CS_DATETIME only a day before 1753 is. */
DLXCOMN_API int com__datetime_check_range(CS_DATETIME *dtp);
DLXCOMN_API int com__bigdatetime_check_range(CS_BIGDATETIME *bdt);
DLXCOMN_API int com__datea_check_range(CS_DATE *dp);
DLXCOMN_API int com__timea_check_range(CS_TIME *tp);
DLXCOMN_API int com__bigtime_check_range(CS_BIGTIME *bt);

/* ---- Moves between the types ------------------------------------------------------------------
 * Those that answer int answer 1 where the value has no place in the other type.
 */
/* Half a minute rounds up, at midnight into the next day. On failure *dtp4 stays. */
DLXCOMN_API int com__dttodate4(CS_DATETIME *dtp, CS_DATETIME4 *dtp4);
/* The same; seconds are first rounded on their microseconds. */
DLXCOMN_API int com__bigdttodate4(CS_BIGDATETIME *bdt, CS_DATETIME4 *dtp4);
DLXCOMN_API void com__date4todt(CS_DATETIME4 *dtp4, CS_DATETIME *dtp);
DLXCOMN_API void com__date4tobigdatetime(CS_DATETIME4 *dtp4, CS_BIGDATETIME *bdt);
DLXCOMN_API void com__date4tobigtime(CS_DATETIME4 *dtp4, CS_BIGTIME *bt);
DLXCOMN_API void com__datetodatea(CS_DATETIME *dtp, CS_DATE *dp);
DLXCOMN_API void com__datetotimea(CS_DATETIME *dtp, CS_TIME *tp);
/* Milliseconds as cracked: tick 1 becomes 3000 microseconds. The codes of the make; on failure the result stays. */
DLXCOMN_API int com__datetobigdatetime(CS_DATETIME *dtp, CS_BIGDATETIME *bdt);
DLXCOMN_API int com__datetobigtime(CS_DATETIME *dtp, CS_BIGTIME *bt);
DLXCOMN_API void com__bigdatetimetodatea(CS_BIGDATETIME *bdt, CS_DATE *dp);
/*
 * CS_EOVERFLOW for a value that cannot be made, CS_EUNDERFLOW for a day before 1753 (stored all the same),
 * CS_ETRUNCATED where microseconds below a millisecond were lost, else CS_SUCCEED.
 */
DLXCOMN_API CS_RETCODE com__bigdatetimetodate(CS_BIGDATETIME *bdt, CS_DATETIME *dtp);
/*
 * The whole milliseconds of the day, rounded to ticks: 999 ms go into the next second here, but never into the
 * next day. CS_ETRUNCATED where microseconds below a millisecond were lost, else CS_SUCCEED.
 */
DLXCOMN_API CS_RETCODE com__bigdatetimetotimea(CS_BIGDATETIME *bdt, CS_TIME *tp);
DLXCOMN_API CS_RETCODE com__bigtimetotimea(CS_BIGTIME *bt, CS_TIME *tp);
/* The same on 1900-01-01. */
DLXCOMN_API CS_RETCODE com__bigtimetodate(CS_BIGTIME *bt, CS_DATETIME *dtp);
DLXCOMN_API void com__bigdatetimetobigtime(CS_BIGDATETIME *bdt, CS_BIGTIME *bt);
/* Midnight of the day. A failure clears the day of the result. */
DLXCOMN_API int com__dateatodate(CS_DATE *dp, CS_DATETIME *dtp);
DLXCOMN_API int com__dateatobigdatetime(CS_DATE *dp, CS_BIGDATETIME *bdt);
/* A time is on 1900-01-01 in a CS_DATETIME, but on 0001-01-01 in a CS_BIGDATETIME. */
DLXCOMN_API void com__timeatodate(CS_TIME *tp, CS_DATETIME *dtp);
/* Cut to whole milliseconds. On failure the result stays. */
DLXCOMN_API int com__timeatobigtime(CS_TIME *tp, CS_BIGTIME *bt);
DLXCOMN_API int com__timeatobigdatetime(CS_TIME *tp, CS_BIGDATETIME *bdt);

/* ---- The public forms -------------------------------------------------------------------------
 * The same on records that may end behind datetzone, as they did once: datesecfrac and datesecprec are read and
 * written for the big types only.
 */
/* Copies the first ten fields, and the two others too for the types CS_BIGDATETIME_TYPE and CS_BIGTIME_TYPE. */
DLXCOMN_API void com__dtrec_cp(CS_DATEREC *from, CS_DATEREC *to, CS_INT type);
DLXCOMN_API void com_datecrack(CS_DATETIME *dtp, CS_DATEREC *pp);
DLXCOMN_API void com_bigdatecrack(CS_BIGDATETIME *bdt, CS_DATEREC *pp);
DLXCOMN_API void com_timecrack(CS_DATETIME *dtp, CS_DATEREC *pp);
DLXCOMN_API void com_bigtimecrack(CS_BIGDATETIME *bdt, CS_DATEREC *pp);
DLXCOMN_API int com_datemake(CS_DATETIME *dtp, CS_DATEREC *pp);
DLXCOMN_API int com_timemake(CS_DATETIME *dtp, CS_DATEREC *pp);
DLXCOMN_API int com_bigdatemake(CS_BIGDATETIME *bdt, CS_DATEREC *pp);
DLXCOMN_API int com_bigtimemake(CS_BIGTIME *bt, CS_DATEREC *pp);
DLXCOMN_API int com_datepart(int part, CS_DATETIME *to, int firstday);
DLXCOMN_API int com_datename(int part, CS_DATETIME *dtp, char *cp, char **months, char **days);
/* Negative, zero or positive. */
DLXCOMN_API int com_datecmp(CS_DATETIME *date1, CS_DATETIME *date2);
DLXCOMN_API int com_date4cmp(CS_DATETIME4 *date1, CS_DATETIME4 *date2);
DLXCOMN_API int com_dateacmp(CS_DATE *date1, CS_DATE *date2);
DLXCOMN_API int com_timeacmp(CS_TIME *time1, CS_TIME *time2);
DLXCOMN_API int com_bigdatetimecmp(CS_BIGDATETIME *date1, CS_BIGDATETIME *date2);
DLXCOMN_API void com_datezero(CS_DATETIME *dtp);
DLXCOMN_API void com_date4zero(CS_DATETIME4 *dtp4);
DLXCOMN_API void com_setdatetime(CS_DATETIME *dtp, CS_INT days, CS_INT ticks);

#ifdef __cplusplus
}
#endif
#endif
