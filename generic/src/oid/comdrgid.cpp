// Dropping the table of global identifiers.

#include "diag/check.h"
#include "oid/table.h"

#include <cstdlib>

using namespace dlx;

CS_RETCODE comn_intl_drop_globalid(CS_CONTEXT *context, CS_VOID **oidtablep) {
    (void)context;
    COM_REQUIRE_PTR(oidtablep, CS_FAIL);
    CS_OID_TABLE *const table = static_cast<CS_OID_TABLE *>(*oidtablep);
    if (table == nullptr)
        return CS_SUCCEED;
    for (CsOID *oid : table->ot_oid) {
        while (oid != nullptr) {
            CsOID *const next = oid->oidnext;
            free_oid(oid);
            oid = next;
        }
    }
    std::free(table);
    *oidtablep = nullptr;
    return CS_SUCCEED;
}
