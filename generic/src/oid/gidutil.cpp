// Maps between numbers and names, and the debug output of identifiers.

#include "diag/check.h"
#include "oid/table.h"

#include <dlxcomn/locale.h>

namespace dlx {
namespace {

constexpr CS_STRINGS row(CS_INT key, const char *text) { return {key, const_cast<char *>(text)}; }
constexpr CS_STRINGS END_OF_MAP = row(CS_UNUSED, nullptr);

// Both maps of the classes hold the same rows.
#define CLASS_ROWS                                                                                                     \
    row(CS_OID_CHARSET, "charset"), row(CS_OID_NUMERIC, "numeric"), row(CS_OID_MONEY, "money"),                        \
        row(CS_OID_DATETIME, "datetime"), row(CS_OID_COLLATE, "collate"), row(CS_OID_NATLANG, "natlang"),              \
        row(CS_OID_INTEGER2, "integer2"), row(CS_OID_INTEGER4, "integer4"), row(CS_OID_INTEGER8, "integer8"),          \
        row(CS_OID_FLOAT4, "float4"), row(CS_OID_FLOAT8, "float8"), row(CS_OID_SECMECH, "secmech"), END_OF_MAP

constexpr CS_INT NAME_SIZE = 255; // of a local name, with a NUL

} // namespace
} // namespace dlx

using namespace dlx;

const CS_STRINGS Com__classmap[] = {CLASS_ROWS};
const CS_STRINGS Com__dup_classmap[] = {CLASS_ROWS};

const CS_STRINGS Com__tds_lclname_map[] = {
    row(2, "int2_lsb_high"),       row(3, "int2_lsb_low"),        row(0, "int4_lsb_high"),
    row(1, "int4_lsb_low"),        row(6, "char_ascii"),          row(7, "char_ebcdic"),
    row(4, "float_ieee_lsb_high"), row(10, "float_ieee_lsb_low"), row(11, "float_nd5000"),
    row(5, "float_vaxd"),          row(12, "flt4_ieee_lsb_high"), row(13, "flt4_ieee_lsb_low"),
    row(14, "flt4_vaxf"),          row(15, "flt4_nd5000"),        END_OF_MAP,
};

// ---- Maps ----

CS_RETCODE comn_string_to_id(CS_CONTEXT *context, const CS_STRINGS *map, CS_CHAR *str, CS_INT *idp) {
    (void)context;
    COM_REQUIRE_PTR(map, CS_FAIL);
    COM_REQUIRE_PTR(str, CS_FAIL);
    COM_REQUIRE_PTR(idp, CS_FAIL);
    *idp = CS_UNUSED;
    for (; map->key != CS_UNUSED; ++map) {
        if (com_unsignstrcmp(map->string, str) == 0) {
            *idp = map->key;
            return CS_SUCCEED;
        }
    }
    return COM_TRACE(CS_FAIL);
}

CS_RETCODE comn_id_to_string(CS_CONTEXT *context, const CS_STRINGS *map, CS_INT id, CS_CHAR **strp) {
    (void)context;
    COM_REQUIRE_PTR(map, CS_FAIL);
    COM_REQUIRE_PTR(strp, CS_FAIL);
    *strp = nullptr;
    for (; map->key != CS_UNUSED; ++map) {
        if (map->key == id) {
            *strp = map->string;
            return CS_SUCCEED;
        }
    }
    return COM_TRACE(CS_FAIL);
}

CS_RETCODE comn_tds_to_oid(CS_CONTEXT *context, CS_INT id_class, CS_INT tdsval, CsOID **oidp) {
    COM_REQUIRE_PTR(oidp, CS_FAIL);
    COM_REQUIRE(id_class >= 0 && id_class < CS_OID_CLASSES, CS_FAIL);
    *oidp = nullptr;
    CS_CHAR *name;
    const CS_RETCODE status = comn_id_to_string(context, Com__tds_lclname_map, tdsval, &name);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    return comn_globalid(context, CS_NAME_TO_OID, oidp, &id_class, CS_UNUSED, name, CS_NULLTERM, nullptr, nullptr);
}

CS_RETCODE comn_oid_to_tds(CS_CONTEXT *context, CsOID *oid, CS_INT *tdsval) {
    constexpr CS_INT FIRST_NAME = 1;
    COM_REQUIRE_PTR(oid, CS_FAIL);
    COM_REQUIRE_PTR(tdsval, CS_FAIL);
    *tdsval = CS_UNUSED;
    CS_CHAR name[NAME_SIZE];
    CS_INT id_class;
    CS_INT length = 0;
    const CS_RETCODE status =
        comn_globalid(context, CS_OID_TO_NAME, &oid, &id_class, FIRST_NAME, name, NAME_SIZE - 1, nullptr, &length);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    name[length] = '\0';
    return comn_string_to_id(context, Com__tds_lclname_map, name, tdsval);
}

CS_RETCODE comn_locale_to_oid(CS_CONTEXT *context, CS_LOCALE *locale, CS_INT type, CsOID **oidp) {
    COM_REQUIRE_PTR(oidp, CS_FAIL);
    COM_REQUIRE(type == CS_LOCALE_CHARSET_OID || type == CS_LOCALE_LANGUAGE_OID, CS_FAIL);
    const bool is_charset = type == CS_LOCALE_CHARSET_OID;
    CS_INT id_class = is_charset ? CS_OID_CHARSET : CS_OID_NATLANG;
    CS_CHAR name[NAME_SIZE];
    CS_INT length;
    const CS_RETCODE status =
        com_intl_getstr(locale, is_charset ? CS_LC_CTYPE : CS_LC_MESSAGE,
                        is_charset ? CS_LOCSTR_CHARSET : CS_LOCSTR_LANGUAGE, name, NAME_SIZE, &length);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    return comn_globalid(context, CS_NAME_TO_OID, oidp, &id_class, CS_UNUSED, name, length, nullptr, nullptr);
}

// ---- What a peer acknowledged ----

namespace dlx {
namespace {

// The slots of a record in their order, each with the class of its identifiers.
struct Slot {
    CsOID *CS_CONVACK::*oid;
    CS_INT id_class;
};

constexpr Slot SLOTS[] = {
    {&CS_CONVACK::ca_int2, CS_OID_INTEGER2},     {&CS_CONVACK::ca_int4, CS_OID_INTEGER4},
    {&CS_CONVACK::ca_int8, CS_OID_INTEGER8},     {&CS_CONVACK::ca_flt4, CS_OID_FLOAT4},
    {&CS_CONVACK::ca_flt8, CS_OID_FLOAT8},       {&CS_CONVACK::ca_char, CS_OID_CHARSET},
    {&CS_CONVACK::ca_lang, CS_OID_NATLANG},      {&CS_CONVACK::ca_sort, CS_OID_COLLATE},
    {&CS_CONVACK::ca_datetime, CS_OID_DATETIME}, {&CS_CONVACK::ca_money, CS_OID_MONEY},
    {&CS_CONVACK::ca_numeric, CS_OID_NUMERIC},
};

struct LoginNumber {
    CsOID **slot;
    CS_INT id_class;
    CS_INT value;
};

struct LocalName {
    CsOID **slot;
    CS_INT id_class;
    CS_CHAR *name;
    CS_INT len;
};

CS_RETCODE resolve(CS_CONTEXT *context, const LoginNumber &number) {
    return comn_tds_to_oid(context, number.id_class, number.value, number.slot);
}

CS_RETCODE resolve(CS_CONTEXT *context, LocalName name) {
    if (name.len < 1)
        return CS_SUCCEED;
    return comn_globalid(context, CS_NAME_TO_OID, name.slot, &name.id_class, CS_UNUSED, name.name, name.len, nullptr,
                         nullptr);
}

// Stops at the first failure.
template <class... Items>
CS_RETCODE resolve_all(CS_CONTEXT *context, const Items &...items) {
    CS_RETCODE status = CS_SUCCEED;
    (void)((status = resolve(context, items), status == CS_SUCCEED) && ...);
    return status;
}

} // namespace
} // namespace dlx

CS_RETCODE comn_init_convack(CS_CONTEXT *context, CS_CONVACK *convack, CS_INT int2type, CS_INT int4type,
                             CS_INT int8type, CS_INT flt4type, CS_INT flt8type, CS_CHAR *charset, CS_INT charlen,
                             CS_CHAR *lang, CS_INT langlen, CS_CHAR *sort, CS_INT sortlen, CS_CHAR *datetime,
                             CS_INT datetimelen, CS_CHAR *money, CS_INT moneylen, CS_CHAR *numeric, CS_INT numericlen) {
    (void)int8type; // peers acknowledge none
    COM_REQUIRE_PTR(convack, CS_FAIL);
    *convack = {};
    const CS_RETCODE status = resolve_all(context, LoginNumber{&convack->ca_int2, CS_OID_INTEGER2, int2type},
                                          LoginNumber{&convack->ca_int4, CS_OID_INTEGER4, int4type},
                                          LoginNumber{&convack->ca_flt4, CS_OID_FLOAT4, flt4type},
                                          LoginNumber{&convack->ca_flt8, CS_OID_FLOAT8, flt8type},
                                          LocalName{&convack->ca_char, CS_OID_CHARSET, charset, charlen},
                                          LocalName{&convack->ca_lang, CS_OID_NATLANG, lang, langlen},
                                          LocalName{&convack->ca_sort, CS_OID_COLLATE, sort, sortlen},
                                          LocalName{&convack->ca_datetime, CS_OID_DATETIME, datetime, datetimelen},
                                          LocalName{&convack->ca_money, CS_OID_MONEY, money, moneylen},
                                          LocalName{&convack->ca_numeric, CS_OID_NUMERIC, numeric, numericlen});
    if (status == CS_SUCCEED)
        return CS_SUCCEED;
    *convack = {};
    return COM_TRACE(status);
}

CS_RETCODE comn_copy_convack(CS_CONTEXT *context, CS_CONVACK *from, CS_CONVACK *to) {
    (void)context;
    COM_REQUIRE_PTR(from, CS_FAIL);
    COM_REQUIRE_PTR(to, CS_FAIL);
    *to = *from;
    return CS_SUCCEED;
}

CS_BOOL comn_cmp_convack(CS_CONTEXT *context, CS_CONVACK *ack1, CS_CONVACK *ack2) {
    COM_REQUIRE_PTR(ack1, CS_FALSE);
    COM_REQUIRE_PTR(ack2, CS_FALSE);
    for (const Slot &slot : SLOTS)
        if (!comn_oid_cmp(context, ack1->*slot.oid, ack2->*slot.oid))
            return CS_FALSE;
    return CS_TRUE;
}

// ---- Debug output ----

namespace dlx {
namespace {

constexpr char RULE[] = "====================================================================\n";
constexpr char CLASS_RULE[] = "  ------------------------------------------------------------------\n";
static_assert(sizeof RULE == 68 + 2 && sizeof CLASS_RULE == 2 + 66 + 2);

void print_heading(const char *heading) {
    comn_debug_print(RULE);
    comn_debug_print("%s\n", heading);
    comn_debug_print(RULE);
}

const char *class_name(CS_CONTEXT *context, CS_INT id_class) {
    CS_CHAR *name;
    return comn_id_to_string(context, Com__dup_classmap, id_class, &name) == CS_SUCCEED ? name : "unknown";
}

} // namespace
} // namespace dlx

void comn_dbg_print_oid(CS_CONTEXT *context, CsOID *oid) {
    (void)context;
    if (oid == nullptr) {
        comn_debug_print("OID: \tNULL");
        return;
    }
    comn_debug_print("OID: \t%.*s (%d)\n", oid->oidnamelen, oid->oidstring, oid->oidnamelen);
    comn_debug_print("\t\tglobal id:");
    for (CS_INT i = 0; i < oid->oidberlen; ++i)
        comn_debug_print(" 0x%x", oid->oidber[i]);
    comn_debug_print(" (%d)\n", oid->oidberlen);
    comn_debug_print("\t\tnumber of local names: %d\n", oid->oidnumlnames);
    comn_debug_print("\t\tlocal names\n");
    for (const CS_STRING_LIST *name = oid->oidlnames; name != nullptr; name = name->next)
        comn_debug_print("\t\t\t%.*s (%d)\n", name->len, name->string, name->len);
}

void comn_dbg_print_oidtable(CS_CONTEXT *context, CS_OID_TABLE *oidtable) {
    print_heading("OID TABLE");
    if (oidtable == nullptr) {
        comn_debug_print("\tNULL\n");
        comn_debug_print(RULE);
        return;
    }
    for (CS_INT id_class = 0; id_class < CS_OID_CLASSES; ++id_class) {
        comn_debug_print("  CLASS: %s\n", class_name(context, id_class));
        comn_debug_print(CLASS_RULE);
        for (CsOID *oid = oidtable->ot_oid[id_class]; oid != nullptr; oid = oid->oidnext)
            comn_dbg_print_oid(context, oid);
    }
    comn_debug_print(RULE);
}

void comn_dbg_print_convack(CS_CONTEXT *context, CS_CONVACK *convack) {
    COM_REQUIRE_PTR(convack);
    print_heading("CONVACK");
    for (const Slot &slot : SLOTS) {
        comn_debug_print(CLASS_RULE);
        comn_debug_print("CLASS: %s\n", class_name(context, slot.id_class));
        comn_debug_print(CLASS_RULE);
        comn_dbg_print_oid(context, convack->*slot.oid);
    }
}

void comn_dbg_print_datafuncs(CS_CONTEXT *context, CS_DATAFUNCS *datafuncs) {
    (void)context;
    (void)datafuncs;
    print_heading("DATAFUNCS");
}
