// Looking identifiers and their local names up.

#include "diag/check.h"
#include "oid/table.h"

namespace dlx {
namespace {

// Calls `visit` with each identifier of a class, or of all for CS_UNUSED, until it answers true; answers the class
// where it did, or CS_UNUSED.
template <class Visit>
CS_INT search(const CS_OID_TABLE &table, CS_INT id_class, Visit visit) {
    const CS_INT first = id_class == CS_UNUSED ? 0 : id_class;
    const CS_INT last = id_class == CS_UNUSED ? CS_OID_CLASSES - 1 : id_class;
    for (CS_INT at = first; at <= last; ++at)
        for (CsOID *oid = table.ot_oid[at]; oid != nullptr; oid = oid->oidnext)
            if (visit(oid))
                return at;
    return CS_UNUSED;
}

bool is_class(CS_INT id_class) { return id_class >= 0 && id_class < CS_OID_CLASSES; }

// The table of a context, whose slot must be filled.
const CS_OID_TABLE *table_of(SourceLine where, CS_CONTEXT *context) {
    COM_REQUIRE_PTR_AT(where, context, nullptr);
    COM_REQUIRE_PTR_AT(where, context->ctxglobals, nullptr);
    COM_REQUIRE_PTR_AT(where, context->ctxglobals->ctxoids, nullptr);
    return static_cast<const CS_OID_TABLE *>(context->ctxglobals->ctxoids);
}

// A name may be searched for with its NUL counted.
bool is_name(const CS_STRING_LIST &name, const CS_CHAR *text, CS_INT len) {
    const bool has_nul = name.len == len - 1 && text[len - 1] == '\0';
    return (name.len == len || has_nul) && std::memcmp(name.string, text, static_cast<std::size_t>(name.len)) == 0;
}

// Name number `nameid` of an identifier, from 1.
const CS_STRING_LIST *name_of(const CsOID &oid, CS_INT nameid) {
    const CS_STRING_LIST *name = oid.oidlnames;
    while (name != nullptr && --nameid > 0)
        name = name->next;
    return name;
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_BOOL comn__find_lclname(CS_CONTEXT *context, CsOID *oid, CS_CHAR *localnp, CS_INT len) {
    (void)context;
    COM_REQUIRE_PTR(oid, CS_FALSE);
    COM_REQUIRE_PTR(localnp, CS_FALSE);
    COM_REQUIRE(len >= 1, CS_FALSE);
    for (const CS_STRING_LIST *name = oid->oidlnames; name != nullptr; name = name->next)
        if (is_name(*name, localnp, len))
            return CS_TRUE;
    return CS_FALSE;
}

CS_RETCODE comn__nametooid(CS_CONTEXT *context, CsOID **gidp, CS_INT *classp, CS_CHAR *localnp, CS_INT len) {
    const CS_OID_TABLE *const table = table_of(COM_HERE, context);
    if (table == nullptr)
        return CS_FAIL;
    COM_REQUIRE_PTR(gidp, CS_FAIL);
    COM_REQUIRE_PTR(localnp, CS_FAIL);
    if (len == CS_NULLTERM)
        len = static_cast<CS_INT>(std::strlen(localnp));
    if (len <= 0)
        return COM_TRACE(CS_FAIL);
    const CS_INT id_class = classp != nullptr ? *classp : CS_UNUSED;
    COM_REQUIRE(id_class == CS_UNUSED || is_class(id_class), CS_FAIL);
    const CS_INT found = search(*table, id_class, [&](CsOID *oid) {
        if (!comn__find_lclname(context, oid, localnp, len))
            return false;
        *gidp = oid;
        return true;
    });
    return found != CS_UNUSED ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

CS_RETCODE comn__oidtoname(CS_CONTEXT *context, CsOID *gid, CS_INT *classp, CS_INT nameid, CS_CHAR *localnp, CS_INT len,
                           CS_INT *numnamesp, CS_INT *outlen) {
    const CS_OID_TABLE *const table = table_of(COM_HERE, context);
    if (table == nullptr)
        return CS_FAIL;
    COM_REQUIRE_PTR(gid, CS_FAIL);
    COM_REQUIRE_PTR(classp, CS_FAIL);
    if (localnp != nullptr) {
        COM_REQUIRE(nameid >= 1, CS_FAIL);
    } else {
        COM_REQUIRE(nameid == CS_UNUSED && len == CS_UNUSED && outlen == nullptr, CS_FAIL);
    }

    const CsOID *known = nullptr;
    const CS_INT found = search(*table, CS_UNUSED, [&](CsOID *oid) {
        known = oid;
        return has_encoding(*oid, gid->oidber, gid->oidberlen);
    });
    if (found == CS_UNUSED)
        return COM_TRACE(CS_FAIL);
    *classp = found;
    if (numnamesp != nullptr)
        *numnamesp = known->oidnumlnames;
    if (localnp == nullptr)
        return CS_SUCCEED;

    const CS_STRING_LIST *const name = nameid <= known->oidnumlnames ? name_of(*known, nameid) : nullptr;
    if (name == nullptr)
        return COM_TRACE(CS_FAIL);
    if (outlen != nullptr)
        *outlen = name->len;
    if (name->len > len)
        return COM_TRACE(CS_FAIL);
    std::memcpy(localnp, name->string, static_cast<std::size_t>(name->len));
    return CS_SUCCEED;
}

CS_RETCODE comn_globalid(CS_CONTEXT *context, CS_INT type, CsOID **gidp, CS_INT *classp, CS_INT nameid,
                         CS_CHAR *localnp, CS_INT len, CS_INT *numnamesp, CS_INT *outlen) {
    COM_REQUIRE_PTR(gidp, CS_FAIL);
    switch (type) {
    case CS_NAME_TO_OID:
        COM_REQUIRE(nameid == CS_UNUSED, CS_FAIL);
        COM_REQUIRE(numnamesp == nullptr, CS_FAIL);
        COM_REQUIRE(outlen == nullptr, CS_FAIL);
        return comn__nametooid(context, gidp, classp, localnp, len);
    case CS_OID_TO_NAME:
        return comn__oidtoname(context, *gidp, classp, nameid, localnp, len, numnamesp, outlen);
    default:
        COM_REQUIRE(false, CS_FAIL);
        return CS_FAIL;
    }
}

CS_RETCODE comn_gid_to_oid(CS_CONTEXT *context, CS_INT id_class, CS_BYTE *gid, CS_INT gidlen, CsOID **oidp) {
    const CS_OID_TABLE *const table = table_of(COM_HERE, context);
    if (table == nullptr)
        return CS_FAIL;
    COM_REQUIRE_PTR(oidp, CS_FAIL);
    COM_REQUIRE(id_class == CS_UNUSED || is_class(id_class), CS_FAIL);
    *oidp = nullptr;
    if (gid == nullptr || gidlen == 0)
        return CS_SUCCEED;
    const CS_INT found = search(*table, id_class, [&](CsOID *oid) {
        if (!has_encoding(*oid, gid, gidlen))
            return false;
        *oidp = oid;
        return true;
    });
    return found != CS_UNUSED ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

CS_BOOL comn_oid_cmp(CS_CONTEXT *context, CsOID *oid1, CsOID *oid2) {
    (void)context;
    if (oid1 == oid2)
        return CS_TRUE;
    if (oid1 != nullptr && oid2 != nullptr)
        return has_encoding(*oid1, oid2->oidber, oid2->oidberlen);
    const CsOID *const only = oid1 != nullptr ? oid1 : oid2;
    return only->oidber == nullptr || only->oidberlen == 0;
}
