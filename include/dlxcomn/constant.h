/*
 * constant.h - the working record of exact arithmetic and of the server side's casts.
 */
#ifndef DLXCOMN_CONSTANT_H
#define DLXCOMN_CONSTANT_H

#include <dlxcomn/charset.h>
#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct __sqlxtype {
    CS_INT xtypeid;
    CS_SMALLINT xdbid;
    CS_SMALLINT xstatus;
} __SQLXTYPE;

/*
 * A typed value of the server side. It does not own value. Exact arithmetic reads and writes only len,
 * prec, scale and value: there value[0] is the sign byte and value[1] to value[len - 1] the magnitude,
 * big-endian.
 */
typedef struct constant {
    CS_INT len;           /* bytes at value */
    CS_BYTE type;         /* wire datatype number */
    CS_BYTE rsrvdpad[3];
    CS_INT maxlen;        /* room at value, of a destination */
    CS_BYTE prec;
    CS_BYTE scale;
    CS_BYTE newtype;
    CS_BYTE conomnistat;
    CS_SMALLINT cvarno;
    CS_SMALLINT constat;
    CS_BYTE constat2;
    CS_BYTE constat3;
    CS_BYTE conspare[2];
    CS_VOID *locale;
    CS_BYTE *value;
    __SQLXTYPE xtype;
    CS_VOID *jobj;
    CS_INT constat6;
    CS_INT constat7;
} __CONSTANT;

static_assert(offsetof(__CONSTANT, type) == 4, "__CONSTANT.type");
static_assert(offsetof(__CONSTANT, rsrvdpad) == 5, "__CONSTANT.rsrvdpad");
static_assert(offsetof(__CONSTANT, maxlen) == 8, "__CONSTANT.maxlen");
static_assert(offsetof(__CONSTANT, prec) == 12, "__CONSTANT.prec");
static_assert(offsetof(__CONSTANT, scale) == 13, "__CONSTANT.scale");
static_assert(offsetof(__CONSTANT, newtype) == 14, "__CONSTANT.newtype");
static_assert(offsetof(__CONSTANT, conomnistat) == 15, "__CONSTANT.conomnistat");
static_assert(offsetof(__CONSTANT, cvarno) == 16, "__CONSTANT.cvarno");
static_assert(offsetof(__CONSTANT, constat) == 18, "__CONSTANT.constat");
static_assert(offsetof(__CONSTANT, constat2) == 20, "__CONSTANT.constat2");
static_assert(offsetof(__CONSTANT, constat3) == 21, "__CONSTANT.constat3");
static_assert(offsetof(__CONSTANT, conspare) == 22, "__CONSTANT.conspare");
static_assert(offsetof(__CONSTANT, locale) == 24, "__CONSTANT.locale");
static_assert(offsetof(__CONSTANT, value) == 32, "__CONSTANT.value");
static_assert(offsetof(__CONSTANT, xtype) == 40, "__CONSTANT.xtype");
static_assert(offsetof(__CONSTANT, jobj) == 48, "__CONSTANT.jobj");
static_assert(offsetof(__CONSTANT, constat6) == 56, "__CONSTANT.constat6");
static_assert(offsetof(__CONSTANT, constat7) == 60, "__CONSTANT.constat7");
static_assert(sizeof(__CONSTANT) == 64, "__CONSTANT crosses the library's edge");

/* What the server side hands to each of its casts. */
typedef struct _castcontext {
    CsConvertTbl ctxcvttbl;   /* the caller's table of casts */
    CS_INT format;            /* CS_FORMAT_ bits, and 8 for a value set to the right of the field */
    CS_INT style;             /* date style */
    CS_INT flags;             /* the caller's */
    CS_CHAR **months;         /* twelve names */
    CS_CHAR **shrtmonths;     /* twelve names */
    CS_INT dateorder;
    CHAR_ATTRIB *char_attrib; /* the one character set in force */
    CS_CONV_FUNC cfn;         /* the caller's */
} CAST_CONTEXT;

static_assert(offsetof(CAST_CONTEXT, format) == 16, "CAST_CONTEXT.format");
static_assert(offsetof(CAST_CONTEXT, style) == 20, "CAST_CONTEXT.style");
static_assert(offsetof(CAST_CONTEXT, flags) == 24, "CAST_CONTEXT.flags");
static_assert(offsetof(CAST_CONTEXT, months) == 32, "CAST_CONTEXT.months");
static_assert(offsetof(CAST_CONTEXT, shrtmonths) == 40, "CAST_CONTEXT.shrtmonths");
static_assert(offsetof(CAST_CONTEXT, dateorder) == 48, "CAST_CONTEXT.dateorder");
static_assert(offsetof(CAST_CONTEXT, char_attrib) == 56, "CAST_CONTEXT.char_attrib");
static_assert(offsetof(CAST_CONTEXT, cfn) == 64, "CAST_CONTEXT.cfn");
static_assert(sizeof(CAST_CONTEXT) == 72, "CAST_CONTEXT crosses the library's edge");

#ifdef __cplusplus
}
#endif
#endif
