// The conversion matrix of a context: lookup, user conversions, and the widths of datatypes.
//
// The built-in table (com_ctbl.cpp) is shared and read-only. A context works on a copy, so that an
// application may replace single cells, and keeps the pairs with a user datatype in a two-dimensional list.
#include "frame/conversion.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr bool is_builtin(CS_INT id) { return id < CS_USER_TYPE; }

// The bytes a built-in datatype takes; 0 where that is the caller's to know.
constexpr CS_INT fixed_width(CS_INT type) {
    switch (type) {
    case CS_TINYINT_TYPE:
    case CS_BIT_TYPE:
        return 1;
    case CS_SMALLINT_TYPE:
    case CS_UNICHAR_TYPE:
    case CS_USMALLINT_TYPE:
        return 2;
    case CS_INT_TYPE:
    case CS_REAL_TYPE:
    case CS_DATETIME4_TYPE:
    case CS_MONEY4_TYPE:
    case CS_DATE_TYPE:
    case CS_TIME_TYPE:
    case CS_UINT_TYPE:
        return 4;
    case CS_FLOAT_TYPE:
    case CS_DATETIME_TYPE:
    case CS_MONEY_TYPE:
    case CS_BIGINT_TYPE:
    case CS_UBIGINT_TYPE:
    case CS_BIGDATETIME_TYPE:
    case CS_BIGTIME_TYPE:
        return 8;
    case CS_NUMERIC_TYPE:
    case CS_DECIMAL_TYPE:
        return sizeof(CS_NUMERIC);
    case CS_VARCHAR_TYPE:
        return sizeof(CS_VARCHAR);
    case CS_VARBINARY_TYPE:
        return sizeof(CS_VARBINARY);
    default: // CS_LONG is here although CS_BIGINT is not: callers pass the width they want
        return 0;
    }
}

CsUsrCvtFunc *new_user_node(CS_INT srctype, CS_INT desttype, CS_CONV_FUNC function) {
    auto *node = static_cast<CsUsrCvtFunc *>(std::calloc(1, sizeof(CsUsrCvtFunc)));
    if (node != nullptr) {
        node->srctype = srctype;
        node->desttype = desttype;
        node->cvtfunc = function;
    }
    return node;
}

void free_destinations(CsUsrCvtFunc *node) {
    while (node != nullptr) {
        CsUsrCvtFunc *next = node->nextdest;
        std::free(node);
        node = next;
    }
}

} // namespace

CS_INT comn_typelen(CS_INT type, CS_INT len) {
    const CS_INT width = fixed_width(type);
    return width != 0 ? width : len;
}

CS_RETCODE com_conv_init(CS_CONTEXT *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    CS_CONV_FUNC *builtin = nullptr;
    CsConvertTbl &table = context->ctxcvttbl;
    com__get_ctbl(&builtin, &table.cvtdim);

    const std::size_t bytes = sizeof(CS_CONV_FUNC) * table.cvtdim * table.cvtdim;
    table.cvttbl = static_cast<CS_CONV_FUNC *>(std::malloc(bytes));
    if (table.cvttbl == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    std::memcpy(table.cvttbl, builtin, bytes);
    context->ctxusrcvttbl = nullptr;
    return CS_SUCCEED;
}

CS_RETCODE com_conv_free(CS_CONTEXT *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    std::free(context->ctxcvttbl.cvttbl);
    context->ctxcvttbl.cvttbl = nullptr;
    context->ctxcvttbl.cvtdim = 0;

    for (CsUsrCvtFunc *source = context->ctxusrcvttbl; source != nullptr;) {
        CsUsrCvtFunc *next = source->nextsrc;
        free_destinations(source);
        source = next;
    }
    context->ctxusrcvttbl = nullptr;
    return CS_SUCCEED;
}

CS_CONV_FUNC com_conv_func(CS_CONTEXT *context, CS_INT srctype, CS_INT desttype) {
    COM_REQUIRE_PTR(context, nullptr);
    if (srctype < 0 || desttype < 0)
        return nullptr;
    if (is_builtin(srctype) && is_builtin(desttype)) {
        COM_REQUIRE_PTR(context->ctxcvttbl.cvttbl, nullptr);
        return context->ctxcvttbl.cvttbl[context->ctxcvttbl.cvtdim * srctype + desttype];
    }
    const CsUsrCvtFunc *node = com__conv_usr_struct(context, srctype, desttype);
    return node != nullptr ? node->cvtfunc : nullptr;
}

CS_RETCODE com_conv_install(CS_CONTEXT *context, CS_INT srctype, CS_INT desttype, CS_CONV_FUNC newfunc) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxcvttbl.cvttbl, CS_FAIL);
    if (is_builtin(srctype) && is_builtin(desttype)) {
        context->ctxcvttbl.cvttbl[context->ctxcvttbl.cvtdim * srctype + desttype] = newfunc;
        return CS_SUCCEED;
    }
    return com__conv_usr_install(context, srctype, desttype, newfunc);
}

CS_RETCODE com_conv_default(CS_CONTEXT *context, CS_INT srctype, CS_INT desttype) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE(srctype >= 0 && desttype >= 0, CS_FAIL);
    CS_CONV_FUNC *builtin = nullptr;
    int dimension = 0;
    com__get_ctbl(&builtin, &dimension);
    if (srctype < dimension && desttype < dimension)
        return com_conv_install(context, srctype, desttype, builtin[dimension * srctype + desttype]);
    if (CsUsrCvtFunc *node = com__conv_usr_struct(context, srctype, desttype))
        node->cvtfunc = nullptr; // the node stays: a later install finds it again
    return CS_SUCCEED;
}

CsUsrCvtFunc *com__conv_usr_struct(CS_CONTEXT *context, CS_INT srctype, CS_INT desttype) {
    COM_REQUIRE_PTR(context, nullptr);
    CsUsrCvtFunc *node = context->ctxusrcvttbl;
    while (node != nullptr && node->srctype != srctype)
        node = node->nextsrc;
    while (node != nullptr && node->desttype != desttype)
        node = node->nextdest;
    return node;
}

CS_RETCODE com__conv_usr_install(CS_CONTEXT *context, CS_INT srctype, CS_INT desttype, CS_CONV_FUNC newfunc) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    // Ends on the link that a new node belongs in.
    CsUsrCvtFunc **link = &context->ctxusrcvttbl;
    while (*link != nullptr && (*link)->srctype != srctype)
        link = &(*link)->nextsrc;
    while (*link != nullptr && (*link)->desttype != desttype)
        link = &(*link)->nextdest;

    if (*link != nullptr) {
        (*link)->cvtfunc = newfunc;
        return CS_SUCCEED;
    }
    *link = new_user_node(srctype, desttype, newfunc);
    return *link != nullptr ? CS_SUCCEED : COM_TRACE(CS_MEM_ERROR);
}

CS_RETCODE comn_voidtoany(CS_CONTEXT *context, CS_DATAFMT * /*srcfmt*/, CS_VOID * /*src*/, CS_DATAFMT *destfmt,
                          CS_VOID *dest, CS_INT *destlen) {
    // com_null_get tests the arguments, a null destfmt too.
    const CS_INT room = destfmt != nullptr ? comn_typelen(destfmt->datatype, destfmt->maxlength) : 0;
    return com_null_get(context, destfmt, dest, room, destlen);
}

CS_RETCODE comn_voidtovoid(CS_CONTEXT * /*context*/, CS_DATAFMT * /*srcfmt*/, CS_VOID * /*src*/,
                           CS_DATAFMT * /*destfmt*/, CS_VOID * /*dest*/, CS_INT * /*destlen*/) {
    return CS_SUCCEED;
}
