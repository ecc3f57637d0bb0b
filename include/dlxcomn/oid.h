/*
 * oid.h - global object identifiers: names of character sets, languages, sort orders and number representations that
 * two machines agree on.
 *
 * The table is loaded from the file objectid.dat and hangs in the ctxoids slot of the context's globals. It never
 * changes until it is dropped, so readers take no lock; its owner keeps load and drop apart from them. A pointer to a
 * CsOID in the table stays valid as long as the table, and may be compared as a pointer.
 *
 * Texts in the records carry no NUL. A null pointer, a class outside 0 to 11 or a wrong count is a broken contract.
 */
#ifndef DLXCOMN_OID_H
#define DLXCOMN_OID_H

#include <dlxcomn/charset.h>
#include <dlxcomn/context.h>
#include <dlxcomn/convert.h>
#include <dlxcomn/path.h>
#include <dlxcomn/services.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Classes of identifiers. */
enum {
    CS_OID_CHARSET = 0,
    CS_OID_NUMERIC = 1,
    CS_OID_MONEY = 2,
    CS_OID_DATETIME = 3,
    CS_OID_COLLATE = 4,
    CS_OID_NATLANG = 5,
    CS_OID_INTEGER2 = 6,
    CS_OID_INTEGER4 = 7,
    CS_OID_INTEGER8 = 8,
    CS_OID_FLOAT4 = 9,
    CS_OID_FLOAT8 = 10,
    CS_OID_SECMECH = 11
};
#define CS_OID_CLASSES 12

#define CS_OID_BERSIZE 255 /* room of an encoding */

typedef struct _csstringlist {
    CS_CHAR *string;
    CS_INT len;
    struct _csstringlist *next;
} CS_STRING_LIST;

/* One identifier with the local names that stand for it. */
struct _csoid {
    CS_CHAR *oidstring;        /* dotted text */
    CS_INT oidnamelen;
    CS_BYTE *oidber;           /* BER encoding: CS_OID_BERSIZE bytes, zeros behind it */
    CS_INT oidberlen;
    CS_STRING_LIST *oidlnames; /* in the order of the file */
    CS_INT oidnumlnames;
    struct _csoid *oidnext;    /* of the same class */
};

typedef struct _csoidtable {
    CsOID *ot_oid[CS_OID_CLASSES];
} CS_OID_TABLE;

static_assert(offsetof(CsOID, oidnamelen) == 8 && offsetof(CsOID, oidber) == 16 && offsetof(CsOID, oidberlen) == 24 &&
                  offsetof(CsOID, oidlnames) == 32 && offsetof(CsOID, oidnumlnames) == 40 &&
                  offsetof(CsOID, oidnext) == 48 && sizeof(CsOID) == 56,
              "CsOID crosses the library's edge");
static_assert(offsetof(CS_STRING_LIST, len) == 8 && offsetof(CS_STRING_LIST, next) == 16 &&
                  sizeof(CS_STRING_LIST) == 24,
              "CS_STRING_LIST crosses the library's edge");
/* Free a list of texts; null is accepted. */
DLXCOMN_API void comn__free_string_list(CS_STRING_LIST *list);

/* ---- Maps: rows of number and text; the key CS_UNUSED ends a table --------------------------- */

/* The names of the classes, twice. */
extern DLXCOMN_API const CS_STRINGS Com__classmap[];
extern DLXCOMN_API const CS_STRINGS Com__dup_classmap[];
/* Numbers of the login record and the local names that they stand for. */
extern DLXCOMN_API const CS_STRINGS Com__tds_lclname_map[];

/* *idp = the key of str, or CS_UNUSED with CS_FAIL. The context is not used and may be null. */
DLXCOMN_API CS_RETCODE comn_string_to_id(CS_CONTEXT *context, const CS_STRINGS *map, CS_CHAR *str, CS_INT *idp);
/* *strp = the text of id, which is the table's own, or null with CS_FAIL. */
DLXCOMN_API CS_RETCODE comn_id_to_string(CS_CONTEXT *context, const CS_STRINGS *map, CS_INT id, CS_CHAR **strp);

/* ---- The table ---------------------------------------------------------------------------------- */

/*
 * Load objectid.dat from the directory config of the home into *oidtablep (the slot ctxoids). On failure nothing is
 * left behind and *oidtablep is null: the status of com__open_cfgfile; CS_EINTL for a malformed file, with the code in
 * ctxintlerr; CS_FAIL for an identifier of fewer than two numbers, or too long to encode; CS_MEM_ERROR.
 */
DLXCOMN_API CS_RETCODE comn_intl_load_globalid(CS_CONTEXT *context, CS_VOID **oidtablep);
/* Free the table of the slot and clear it. An empty slot is accepted. */
DLXCOMN_API CS_RETCODE comn_intl_drop_globalid(CS_CONTEXT *context, CS_VOID **oidtablep);

/* What comn_globalid translates. */
enum { CS_OID_TO_NAME = 1, CS_NAME_TO_OID = 2 };

/*
 * CS_NAME_TO_OID: *gidp = the identifier with the local name localnp of len bytes (CS_NULLTERM for a terminated one; a
 * NUL may be counted). *classp chooses the class; with a null classp, or CS_UNUSED there, all are searched and the
 * first wins. nameid is CS_UNUSED, numnamesp and outlen are null. CS_FAIL for no name or an unknown one.
 *
 * CS_OID_TO_NAME: *gidp is any identifier; *classp = the first class that has it and *numnamesp (may be null) = how
 * many local names it has there. localnp, if not null, receives name number nameid from 1, without a NUL, in len bytes,
 * and outlen (may be null) its length; else nameid and len are CS_UNUSED and outlen is null. CS_FAIL for an unknown
 * identifier, a number above the count, or a name that does not fit, of which outlen then tells the length.
 */
DLXCOMN_API CS_RETCODE comn_globalid(CS_CONTEXT *context, CS_INT type, CsOID **gidp, CS_INT *classp, CS_INT nameid,
                                     CS_CHAR *localnp, CS_INT len, CS_INT *numnamesp, CS_INT *outlen);

/* *oidp = the identifier in class `id_class` of a number of the login record, or null with CS_FAIL. */
DLXCOMN_API CS_RETCODE comn_tds_to_oid(CS_CONTEXT *context, CS_INT id_class, CS_INT tdsval, CsOID **oidp);
/* *tdsval = the number that the first local name of oid stands for, or CS_UNUSED with CS_FAIL. */
DLXCOMN_API CS_RETCODE comn_oid_to_tds(CS_CONTEXT *context, CsOID *oid, CS_INT *tdsval);
/*
 * *oidp = the identifier with an encoding, in one class or (CS_UNUSED) in all. No gid, or one of no bytes, is null and
 * CS_SUCCEED; an unknown one null and CS_FAIL.
 */
DLXCOMN_API CS_RETCODE comn_gid_to_oid(CS_CONTEXT *context, CS_INT id_class, CS_BYTE *gid, CS_INT gidlen,
                                       CsOID **oidp);
/* What of a locale comn_locale_to_oid takes. */
enum { CS_LOCALE_CHARSET_OID = 1, CS_LOCALE_LANGUAGE_OID = 2 };
/* *oidp = the identifier of a locale's character set or language. */
DLXCOMN_API CS_RETCODE comn_locale_to_oid(CS_CONTEXT *context, CS_LOCALE *locale, CS_INT type, CsOID **oidp);
/* Whether the encodings are the same. Null is the same as an identifier without one. */
DLXCOMN_API CS_BOOL comn_oid_cmp(CS_CONTEXT *context, CsOID *oid1, CsOID *oid2);

/* ---- Pieces of the load and the lookups ---------------------------------------------------------- */

DLXCOMN_API CS_RETCODE comn__read_oidfile(CS_CONTEXT *context, CS_OID_TABLE *oidtable);
DLXCOMN_API CS_RETCODE comn__read_oidsection(CS_CONTEXT *context, INTL_LOCFILE *ifile, CS_INT id_class,
                                             CS_OID_TABLE *oidtable);
/* A new identifier of a dotted text, with its encoding and no names. */
DLXCOMN_API CS_RETCODE comn__new_oid(CS_CONTEXT *context, CS_CHAR *oidstring, CS_INT len, CsOID **oidp);
/* Sets oidber and oidberlen from oidstring. */
DLXCOMN_API CS_RETCODE comn__encode_oid(CS_CONTEXT *context, CsOID *oid);
/* Appends the values of the present entry to the local names of oid. */
DLXCOMN_API CS_RETCODE comn__read_localnames(CS_CONTEXT *context, INTL_LOCFILE *ifile, CsOID *oid);
/* The table takes oid over; where it has the identifier already only the names are kept. */
DLXCOMN_API CS_RETCODE comn__add_oid(CS_CONTEXT *context, CS_OID_TABLE *oidtable, CS_INT id_class, CsOID *oid);
/* Moves the names of `from` behind those of `to`. */
DLXCOMN_API CS_RETCODE comn__cat_localnames(CS_CONTEXT *context, CsOID *to, CsOID *from);
DLXCOMN_API CS_RETCODE comn__nametooid(CS_CONTEXT *context, CsOID **gidp, CS_INT *classp, CS_CHAR *localnp,
                                       CS_INT len);
DLXCOMN_API CS_RETCODE comn__oidtoname(CS_CONTEXT *context, CsOID *gid, CS_INT *classp, CS_INT nameid,
                                       CS_CHAR *localnp, CS_INT len, CS_INT *numnamesp, CS_INT *outlen);
/* Whether oid has the local name of len (at least 1) bytes. */
DLXCOMN_API CS_BOOL comn__find_lclname(CS_CONTEXT *context, CsOID *oid, CS_CHAR *localnp, CS_INT len);

/* ---- What a peer acknowledged ----------------------------------------------------------------------- */

/* The representation of text and numbers that a peer acknowledged. The record owns nothing. */
typedef struct _csconvack {
    CsOID *ca_int2;
    CsOID *ca_int4;
    CsOID *ca_int8;
    CsOID *ca_flt4;
    CsOID *ca_flt8;
    CsOID *ca_char;
    CsOID *ca_lang;
    CsOID *ca_sort;
    CsOID *ca_datetime;
    CsOID *ca_money;
    CsOID *ca_numeric;
} CS_CONVACK;

static_assert(sizeof(CS_CONVACK) == 88, "CS_CONVACK crosses the library's edge");

/* Conversions to and from the wire, by datatype. */
typedef struct _csdatafuncs {
    CS_CONV_FUNC df_xdrsend[CS_CONV_DIM];
    CS_CONV_FUNC df_xdrrecv[CS_CONV_DIM];
} CS_DATAFUNCS;

/*
 * Fill a record: numbers from those of the login record, names (of a length of at least 1) from their local names. A
 * name without a length leaves its slot null, and ca_int8 is always null. On failure the record is all null: the
 * status of the first lookup that failed.
 */
DLXCOMN_API CS_RETCODE comn_init_convack(CS_CONTEXT *context, CS_CONVACK *convack, CS_INT int2type, CS_INT int4type,
                                         CS_INT int8type, CS_INT flt4type, CS_INT flt8type, CS_CHAR *charset,
                                         CS_INT charlen, CS_CHAR *lang, CS_INT langlen, CS_CHAR *sort, CS_INT sortlen,
                                         CS_CHAR *datetime, CS_INT datetimelen, CS_CHAR *money, CS_INT moneylen,
                                         CS_CHAR *numeric, CS_INT numericlen);
DLXCOMN_API CS_RETCODE comn_copy_convack(CS_CONTEXT *context, CS_CONVACK *from, CS_CONVACK *to);
/* Whether all slots compare as the same. */
DLXCOMN_API CS_BOOL comn_cmp_convack(CS_CONTEXT *context, CS_CONVACK *ack1, CS_CONVACK *ack2);

/* ---- Debug output, through comn_debug_print ------------------------------------------------------- */

DLXCOMN_API void comn_dbg_print_oid(CS_CONTEXT *context, CsOID *oid);
DLXCOMN_API void comn_dbg_print_oidtable(CS_CONTEXT *context, CS_OID_TABLE *oidtable);
DLXCOMN_API void comn_dbg_print_convack(CS_CONTEXT *context, CS_CONVACK *convack);
/* A heading only, whatever the record holds. */
DLXCOMN_API void comn_dbg_print_datafuncs(CS_CONTEXT *context, CS_DATAFUNCS *datafuncs);

#ifdef __cplusplus
}
#endif
#endif
