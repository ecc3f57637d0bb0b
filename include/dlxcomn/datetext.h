/*
 * datetext.h - dates and times as text: the built-in names, reading and printing.
 *
 * Texts are origlen bytes at origcp in the character set chatr (null for iso_1); no NUL ends them. Names of months
 * are twelve NUL-terminated strings from January on. Styles are the numbers of the table below, orders the
 * DATEORDER_ numbers.
 *
 * No function here keeps state, allocates or takes a lock. Pointers other than chatr and the lists of names must
 * not be null.
 */
#ifndef DLXCOMN_DATETEXT_H
#define DLXCOMN_DATETEXT_H

#include <dlxcomn/charset.h>
#include <dlxcomn/datetime.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The order in which the numbers of a date are written. */
enum {
    DATEORDER_MDY = 1,
    DATEORDER_DMY = 2,
    DATEORDER_YMD = 3,
    DATEORDER_YDM = 4,
    DATEORDER_MYD = 5,
    DATEORDER_DYM = 6
};

/* ---- The built-in English data ----------------------------------------------------------------
 * What holds where no locale tells otherwise. The tables are static; nobody writes to them.
 */
DLXCOMN_API char **com__get_months(void);      /* January to December */
DLXCOMN_API char **com__get_shortmonths(void); /* Jan to Dec */
DLXCOMN_API char **com__get_days(void);        /* Sunday to Saturday */
DLXCOMN_API CS_INT com__get_firstday(void);    /* 1: Sunday */
DLXCOMN_API char *com__get_date_order(void);   /* "mdy" */
DLXCOMN_API CS_INT com__get_date_order_id(void);
DLXCOMN_API char **com__get_ampm(void);        /* AM and PM */

/* ---- Printing -----------------------------------------------------------------------------------
 * What each style makes of one value. From 100 up 2024 stands where the table shows 24:
 *
 *   0, 100   Jan  5 2024  1:07PM               13, 113  24/05/01
 *   1, 101   01/05/24                          14, 114  01/24/05
 *   2, 102   24.01.05                          15, 115  05/24/01
 *   3, 103   05/01/24                          16, 116  Jan  5 2024 13:07:08
 *   4, 104   05.01.24                          17, 117   1:07PM
 *   5, 105   05-01-24                          18, 118  13:07
 *   6, 106   05 Jan 24                         19        1:07:08:500PM
 *   7, 107   Jan 05, 24                        20       13:07:08:500
 *   8, 108   13:07:08                          21, 121  24/01/05 13:07:08
 *   9, 109   Jan  5 2024  1:07:08:500PM        22, 122  24/01/05  1:07PM
 *   10, 110  01-05-24                          23       2024-01-05T13:07:08
 *   11, 111  24/01/05                          36, 136   1:07:08.500000PM
 *   12, 112  240105                            37, 137  13:07:08.500000
 *   38, 138  Jan  5 24  1:07:08.500000PM       39, 139  Jan  5 24 13:07:08.500000
 *   40, 140  24-01-05 13:07:08.500000
 *
 * The functions answer the bytes written at buf when the whole text fitted; 0 when len cut it (the first len
 * bytes are at buf); -1 for a style that is not in the table; -2 for a style with a month's name when shortmths
 * is null. A negative len sets no limit: no text is longer than 64 bytes. No NUL is written.
 */
enum { DATESTYLE_UNKNOWN = -1, DATESTYLE_NO_MONTHS = -2 };

/*
 * Print a record whose fields are taken as they are. secprec is 1000000 where the fraction stands in datesecfrac;
 * any other value takes it from datemsecond. Of datesecfrac the milliseconds are rounded without a carry: 999600
 * prints as 000.
 */
DLXCOMN_API int com__daterectochar(CS_DATEREC *trparts, char *buf, int len, int style, char **shortmths,
                                   CS_INT secprec);
/*
 * The same for values without a date. Styles 0 and 9 print the time only, 100 and 109 pad the year with blanks;
 * 21, 22, 121 and 122 have the day in front of the month; styles of a date alone store a NUL at buf (if there is
 * room) and answer 1.
 */
DLXCOMN_API int com__timerectochar(CS_DATEREC *trparts, char *buf, int len, int style, char **shortmths,
                                   CS_INT secprec);
DLXCOMN_API int com__datetochar(CS_DATETIME *dtp, char *buf, int len, int style, char **shortmths);
DLXCOMN_API int com__bigdatetimetochar(CS_BIGDATETIME *bdt, char *buf, int len, int style, char **shortmths);
DLXCOMN_API int com__date4tochar(CS_DATETIME4 *dtp4, char *buf, int len, int style, char **shortmths);
/* Midnight of the day, but styles 0 and 9 print the date only. */
DLXCOMN_API int com__dateatochar(CS_DATE *dp, char *buf, int len, int style, char **shortmths);
DLXCOMN_API int com__timeatochar(CS_TIME *tp, char *buf, int len, int style, char **shortmths);
DLXCOMN_API int com__bigtimetochar(CS_BIGTIME *bt, char *buf, int len, int style, char **shortmths);
DLXCOMN_API int com_cvtdatetochar(CS_DATETIME *dtp, char *buf, int len, int style, char **shortmths);
DLXCOMN_API int com_cvtdate4tochar(CS_DATETIME4 *dtp4, char *buf, int len, int style, char **shortmths);

/* ---- Pieces of text ------------------------------------------------------------------------------
 * All answer the bytes written; none writes a NUL.
 */
/*
 * The digits of value's magnitude in a field of |len| bytes, set to the right; digits that do not fit are lost on
 * the left. The field is filled with zeros for a negative len, with blanks for a positive one. A padchar other
 * than NUL is written behind it.
 */
DLXCOMN_API int com__cpint(char *cp, int value, char padchar, int len);
/* str up to its NUL or maxlen bytes, and then padchar if that is not NUL. */
DLXCOMN_API int com__cpchar(char *cp, char *str, char padchar, int maxlen);
/* val in decimal; a single "*" if len is positive and too small for it. */
DLXCOMN_API int com__itochar(CS_INT val, char *buf, int len);

/* ---- Tokens of a date text -------------------------------------------------------------------- */

enum {
    DT_NUMBER = 0,    /* 1 to 3 digits */
    DT_YEAR4 = 1,     /* 4 digits */
    DT_COLON = 2,
    DT_AMPM = 3,      /* one of com__get_ampm; dcvalue is 0 or 1 */
    DT_MONTH = 4,     /* a name from the lists; dcvalue is 0 to 11 */
    DT_COMMA = 5,
    DT_SEP = 6,       /* "/" or "-", or "." with the dcvalue -1 */
    DT_END = 7,
    DT_ERROR = 8,
    DT_USED = 9,      /* a token that has been given its meaning */
    DT_DIGITS68 = 10, /* 6 or 8 digits */
    DT_T = 11,        /* "T" or "t", whatever follows */
    DT_DIGITS5 = 12   /* 5 digits */
};

struct com__datecrack {
    int dctoken;
    int dclength;   /* digits of a number, else 0 */
    CS_INT dcvalue; /* of a number, a name or a mark, else 0 */
};

#define DATE_MAXTOKENS 20 /* a text of more is no date; lists of tokens have one more for the end */

/* The next token of the *lenp bytes at *cpp, which move behind it. Answers its class. */
DLXCOMN_API int datetoken(char **cpp, int *lenp, struct com__datecrack *dc, char **mths, char **shortmths,
                          CHAR_ATTRIB *chatr);
/*
 * The index of the first token of a class in a list that ends with DT_END, or -1. A negative `token` finds the
 * first of any other class: -DT_USED finds the first that is left over.
 */
DLXCOMN_API int findtoken(struct com__datecrack *dc, int token);
/* The index of a word among cnt names, without case, or -1. A word of more than 30 bytes is in no list. */
DLXCOMN_API int datelookup(char *cp, int len, char **list, int cnt, CHAR_ATTRIB *chatr);
/* Turns the hour of a 12-hour clock; pmflag is 0 for AM. 1 when the hour contradicts: 13 AM, 0 PM. 13 PM is 13. */
DLXCOMN_API int com__amcheck(CS_DATEREC *pp, int pmflag);
/* 0 to 49 are in the 2000s, 50 to 99 in the 1900s; any other number answers 1. */
DLXCOMN_API int com__year2digit(int year);

/* ---- Reading --------------------------------------------------------------------------------------
 * A text is split into tokens. The time is what stands around a colon or in front of AM or PM; what is left is
 * the date: with a month's name, numbers around "/", "-" or ".", or digits run together. With a name the
 * numbers are day and year; without one `style` and `order` decide. A text with no date is a time on the first
 * day of its type, an empty one midnight of it.
 *
 *   style 0, 9                     by `order`; a year of four digits stands anywhere, and in front means ymd
 *   style 1, 10                    mdy
 *   style 2, 11, 21, 22, 23, 40    ymd
 *   style 3, 4, 5                  dmy
 *   the same from 101 up           the same, with a year of four digits (109, 123 and the rest do not read)
 *
 * The codes are negative for a text that is no date, positive for one that names no value.
 */
enum {
    DATE_SYNTAX = -1,
    DATE_LEFTOVER = -2, /* tokens without a meaning */
    DATE_YEAR2 = 1,     /* a year of neither two nor four digits */
    DATE_AMPM = 9,      /* AM or PM contradicts the hour */
    DATE_TIMEONLY = 99  /* of xdaterecfromchar: there was no date */
};

/* What a caller wants of the text. */
enum {
    DATEWANT_ALL = 0,
    DATEWANT_DATE = 1, /* 1 and 2: the whole text is read, and left-over tokens of a text with a date forgiven */
    DATEWANT_TIME = 2,
    DATEWANT_TIMEONLY = 3 /* tokens of a date are left over */
};

/*
 * Text to record. Sets the time fields, datedmonth, datemonth and (for a date) dateyear. dt_type is
 * CS_DATETIME_TYPE, or one of the big types, which keep microseconds in datesecfrac; the others round them to
 * datemsecond, at most 999. *truncated tells whether microseconds were lost. The record of a failed text must not
 * be read.
 */
DLXCOMN_API int xdaterecfromchar(CS_DATEREC *parts, char *origcp, int origlen, int partonly, int style, int order,
                                 char **mths, char **shortmths, CHAR_ATTRIB *chatr, CS_INT dt_type,
                                 CS_BOOL *truncated);

/*
 * Text to value. Codes are 0, those of xdaterecfromchar but 99, and those of the make; a time that cannot be made
 * is 1. *dtp is cleared first and holds on failure what was made so far. A time alone is on 1900-01-01.
 */
DLXCOMN_API int xdatefromchar(CS_DATETIME *dtp, char *origcp, int origlen, int partonly, int style, int order,
                              char **mths, char **shortmths, CHAR_ATTRIB *chatr, CS_BOOL *truncated);
/* The same; a time alone is on 0001-01-01, and a time that cannot be made has its own code where there is a date. */
DLXCOMN_API int xbigdatetimefromchar(CS_BIGDATETIME *bdt, char *origcp, int origlen, int partonly, int style,
                                     int order, char **mths, char **shortmths, CHAR_ATTRIB *chatr);

/* The same for each type; 1 also for a value outside the type's range. On failure date, time, big time and CS_DATETIME4 stay. */
DLXCOMN_API int com__datefromchar_mb(CS_DATETIME *dtp, char *origcp, int origlen, int style, int order, char **mths,
                                     char **shortmths, CHAR_ATTRIB *chatr, CS_BOOL *truncated);
DLXCOMN_API int com__bigdatetimefromchar_mb(CS_BIGDATETIME *bdt, char *origcp, int origlen, int style, int order,
                                            char **mths, char **shortmths, CHAR_ATTRIB *chatr);
/* A time and nothing else. No word but AM and PM is read. */
DLXCOMN_API int com__timefromchar_mb(CS_DATETIME *dtp, char *origcp, int origlen, int style, CHAR_ATTRIB *chatr,
                                     CS_BOOL *truncated);
DLXCOMN_API int com__dateafromchar_mb(CS_DATE *dp, char *origcp, int origlen, int style, int order, char **mths,
                                      char **shortmths, CHAR_ATTRIB *chatr);
DLXCOMN_API int com__timeafromchar_mb(CS_TIME *tp, char *origcp, int origlen, int style, int order, char **mths,
                                      char **shortmths, CHAR_ATTRIB *chatr, CS_BOOL *truncated);
DLXCOMN_API int com__bigtimefromchar_mb(CS_BIGTIME *bt, char *origcp, int origlen, int style, int order, char **mths,
                                        char **shortmths, CHAR_ATTRIB *chatr);
DLXCOMN_API int com__date4fromchar_mb(CS_DATETIME4 *dtp4, char *origcp, int origlen, int style, int order,
                                      char **mths, char **shortmths, CHAR_ATTRIB *chatr);

#ifdef __cplusplus
}
#endif
#endif
