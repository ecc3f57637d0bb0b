// Null substitution values: what a caller is handed in place of a null, by datatype.
//
// A context works on its own copy of Comv_values, and keeps the values of user datatypes in a list.
#include "diag/check.h"
#include "frame/words.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// The bytes behind the defaults. Only two kinds are not plain zeros.
constexpr unsigned char zero_bytes[sizeof(CS_VARCHAR)] = {};
constexpr CS_NUMERIC zero_numeric = {18, 0, {}};
constexpr CS_LOCATOR empty_locator = {CS_LOCATOR_MAGIC, 0, 0, nullptr, 0, nullptr, 0};

constexpr CsDefVal zeros(CS_INT size) { return {const_cast<unsigned char *>(zero_bytes), size, CS_NULLPAD_NONE}; }
constexpr CsDefVal padded(CS_INT size, CS_INT padtype) {
    return {const_cast<unsigned char *>(zero_bytes), size, padtype};
}
constexpr CsDefVal numeric_zero() {
    return {const_cast<CS_NUMERIC *>(&zero_numeric), sizeof(CS_NUMERIC), CS_NULLPAD_NONE};
}
constexpr CsDefVal locator_default() {
    return {const_cast<CS_LOCATOR *>(&empty_locator), sizeof(CS_LOCATOR), CS_NULLPAD_NONE};
}

bool is_user_type(CS_INT id) { return id >= CS_USER_TYPE; }

// Its own copy of `size` bytes, never null but for want of memory: an empty value has an address too.
CS_VOID *copy_bytes(const CS_VOID *bytes, CS_INT size) {
    CS_VOID *copy = std::malloc(static_cast<std::size_t>(std::max(size, 1)));
    if (copy != nullptr && size > 0)
        std::memcpy(copy, bytes, static_cast<std::size_t>(size));
    return copy;
}

// Replaces a value, also by (a part of) itself. A size of 0 leaves none, and so does a want of memory.
CS_RETCODE replace_value(CS_VOID *&entity, CS_INT &size, const CS_VOID *bytes, CS_INT newsize) {
    CS_VOID *copy = newsize > 0 ? copy_bytes(bytes, newsize) : nullptr;
    std::free(entity);
    entity = copy;
    size = copy != nullptr ? newsize : 0;
    return copy != nullptr || newsize == 0 ? CS_SUCCEED : COM_TRACE(CS_MEM_ERROR);
}

CsUsrNull *find_user_null(CS_CONTEXT *context, CS_INT type) {
    CsUsrNull *node = context->ctxusrnulls;
    while (node != nullptr && node->dttype != type)
        node = node->nextnull;
    return node;
}

CS_RETCODE set_user_null(CS_CONTEXT *context, CS_INT type, const CS_VOID *bytes, CS_INT size) {
    if (CsUsrNull *node = find_user_null(context, type))
        return replace_value(node->dventity, node->dvsize, bytes, size);

    auto *node = static_cast<CsUsrNull *>(std::calloc(1, sizeof(CsUsrNull)));
    if (node == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    node->dttype = type;
    const CS_RETCODE status = replace_value(node->dventity, node->dvsize, bytes, size);
    if (status != CS_SUCCEED) {
        std::free(node);
        return COM_TRACE(status);
    }
    node->nextnull = context->ctxusrnulls;
    context->ctxusrnulls = node;
    return CS_SUCCEED;
}

void remove_user_null(CS_CONTEXT *context, CS_INT type) {
    CsUsrNull *previous = context->ctxusrnulls;
    CsUsrNull *node = previous;
    while (node != nullptr && node->dttype != type) {
        previous = node;
        node = node->nextnull;
    }
    if (node == nullptr)
        return;
    // `previous` is the head for the first node and for the second alike, so removing the second drops the
    // first from the list as well. Callers have always seen it so.
    if (previous == context->ctxusrnulls)
        context->ctxusrnulls = node->nextnull;
    else
        previous->nextnull = node->nextnull;
    std::free(node->dventity);
    std::free(node);
}

CS_RETCODE get_user_null(CS_CONTEXT *context, CS_INT type, CS_BYTE *dest, CS_INT room, CS_INT *outlen) {
    *outlen = 0;
    const CsUsrNull *node = find_user_null(context, type);
    if (node == nullptr)
        return CS_SUCCEED;
    const CS_INT size = std::max(std::min(node->dvsize, room), 0);
    if (size != 0)
        std::memcpy(dest, node->dventity, static_cast<std::size_t>(size));
    // The NUL is counted and not judged against the room: callers give user datatypes one byte more.
    dest[size] = '\0';
    *outlen = size + 1;
    return CS_SUCCEED;
}

// Writes one byte of a record if the room reaches that far.
void put_within(CS_BYTE *record, CS_INT room, std::size_t offset, CS_INT value) {
    if (room > static_cast<CS_INT>(offset))
        record[offset] = static_cast<CS_BYTE>(value);
}

CS_INT default_size(const CsDefVal &value, const CS_DATAFMT &format) {
    const bool sized = dlx::Num::serves(format.datatype) && format.precision >= 1 && format.precision <= CS_MAX_PREC;
    return sized ? Com__Nume_Prec_To_Len[format.precision] + CS_INT(offsetof(CS_NUMERIC, array)) : value.dvsize;
}

} // namespace

// Rows 1 and 2 pad as each other's type would, and rows 13 and 15 hold eight bytes for types of four: values
// that applications read back from the table stay as they have always been.
constinit const CsDefVal Comv_values[CS_NULL_DIM] = {
    padded(0, CS_NULLPAD_CHAR),     // CS_CHAR
    padded(0, CS_NULLPAD_CHAR),     // CS_BINARY
    padded(0, CS_NULLPAD_BINARY),   // CS_LONGCHAR
    padded(0, CS_NULLPAD_BINARY),   // CS_LONGBINARY
    padded(0, CS_NULLPAD_CHAR),     // CS_TEXT
    padded(0, CS_NULLPAD_BINARY),   // CS_IMAGE
    zeros(1),                       // CS_TINYINT
    zeros(2),                       // CS_SMALLINT
    zeros(4),                       // CS_INT
    zeros(4),                       // CS_REAL
    zeros(8),                       // CS_FLOAT
    zeros(1),                       // CS_BIT
    zeros(8),                       // CS_DATETIME
    zeros(8),                       // CS_DATETIME4
    zeros(8),                       // CS_MONEY
    zeros(8),                       // CS_MONEY4
    numeric_zero(),                 // CS_NUMERIC
    numeric_zero(),                 // CS_DECIMAL
    zeros(sizeof(CS_VARBINARY)),    // CS_VARCHAR
    zeros(sizeof(CS_VARCHAR)),      // CS_VARBINARY
    zeros(8),                       // CS_LONG
    padded(0, CS_NULLPAD_CHAR),     // CS_SENSITIVITY
    padded(0, CS_NULLPAD_CHAR),     // CS_BOUNDARY
    zeros(4),                       // CS_VOID
    zeros(2),                       // CS_USHORT
    padded(1, CS_NULLPAD_UNICHAR),  // CS_UNICHAR
    zeros(4),                       // CS_BLOB
    zeros(4),                       // CS_DATE
    zeros(4),                       // CS_TIME
    padded(1, CS_NULLPAD_UNICHAR),  // CS_UNITEXT
    zeros(8),                       // CS_BIGINT
    zeros(2),                       // CS_USMALLINT
    zeros(4),                       // CS_UINT
    zeros(8),                       // CS_UBIGINT
    padded(0, CS_NULLPAD_CHAR),     // CS_XML
    zeros(8),                       // CS_BIGDATETIME
    zeros(8),                       // CS_BIGTIME
    locator_default(),              // CS_TEXTLOCATOR
    locator_default(),              // CS_IMAGELOCATOR
    locator_default(),              // CS_UNITEXTLOCATOR
};

CS_RETCODE com_null_init(CS_CONTEXT *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    CsNullTbl &table = context->ctxnulls;
    table.nulldim = CS_NULL_DIM;
    table.nullvals = static_cast<CsDefVal *>(std::calloc(CS_NULL_DIM, sizeof(CsDefVal)));
    if (table.nullvals == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    for (int id = 0; id < CS_NULL_DIM; ++id) {
        const CsDefVal &standard = Comv_values[id];
        table.nullvals[id] = {copy_bytes(standard.dventity, standard.dvsize), standard.dvsize, standard.dvpadtype};
        if (table.nullvals[id].dventity == nullptr)
            return COM_TRACE(CS_MEM_ERROR);
    }
    context->ctxusrnulls = nullptr;
    return CS_SUCCEED;
}

CS_RETCODE com_null_free(CS_CONTEXT *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    CsNullTbl &table = context->ctxnulls;
    if (table.nullvals != nullptr) {
        for (int id = 0; id < CS_NULL_DIM; ++id)
            std::free(table.nullvals[id].dventity);
        std::free(table.nullvals);
        table.nullvals = nullptr;
    }
    table.nulldim = 0;
    for (CsUsrNull *node = context->ctxusrnulls; node != nullptr;) {
        CsUsrNull *next = node->nextnull;
        std::free(node); // its value is com_null_reinstall's to release
        node = next;
    }
    context->ctxusrnulls = nullptr;
    return CS_SUCCEED;
}

CS_RETCODE com_null_get(CS_CONTEXT *context, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT destlen, CS_INT *outlen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(dest, CS_FAIL);
    COM_REQUIRE_PTR(outlen, CS_FAIL);
    COM_REQUIRE_PTR(destfmt, CS_FAIL);
    const CS_INT type = destfmt->datatype;
    if (is_user_type(type))
        return get_user_null(context, type, static_cast<CS_BYTE *>(dest), destlen, outlen);
    COM_REQUIRE(type >= 0, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxnulls.nullvals, CS_FAIL);
    const CsDefVal &value = context->ctxnulls.nullvals[type];
    COM_REQUIRE_PTR(value.dventity, CS_FAIL);

    // What is padded needs a room that padding can work with, told before anything is written.
    COM_REQUIRE(value.dvpadtype == CS_NULLPAD_NONE || destfmt->maxlength >= 0, CS_FAIL);

    auto *bytes = static_cast<CS_BYTE *>(dest);
    *outlen = std::max(std::min(default_size(value, *destfmt), destlen), 0);
    const CS_INT held = std::min(*outlen, value.dvsize);
    std::memcpy(bytes, value.dventity, static_cast<std::size_t>(held));
    std::memset(bytes + held, 0, static_cast<std::size_t>(*outlen - held)); // digits of a numeric set with fewer
    switch (value.dvpadtype) {
    case CS_NULLPAD_CHAR:
        return comn__padchar(*outlen, destfmt, dest, outlen);
    case CS_NULLPAD_BINARY:
        return comn__padbin(*outlen, destfmt, dest, outlen);
    case CS_NULLPAD_UNICHAR:
        return comn__padunichar(*outlen, destfmt, dest, outlen);
    default:
        break;
    }
    if (dlx::Num::serves(type)) {
        put_within(bytes, destlen, offsetof(CS_NUMERIC, precision), destfmt->precision);
        put_within(bytes, destlen, offsetof(CS_NUMERIC, scale), destfmt->scale);
    }
    return CS_SUCCEED;
}

CS_RETCODE com_null_set(CS_CONTEXT *context, CS_INT nulltype, CS_VOID *null, CS_INT nulllen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(null, CS_FAIL);
    COM_REQUIRE(nulllen >= 0, CS_ESYNTAX);
    COM_REQUIRE(nulltype >= 0, CS_FAIL);
    if (is_user_type(nulltype))
        return set_user_null(context, nulltype, null, nulllen);
    COM_REQUIRE_PTR(context->ctxnulls.nullvals, CS_FAIL);
    CsDefVal &value = context->ctxnulls.nullvals[nulltype];
    return replace_value(value.dventity, value.dvsize, null, nulllen);
}

CS_RETCODE com_null_reinstall(CS_CONTEXT *context, CS_INT nulltype) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE(nulltype >= 0, CS_FAIL);
    if (is_user_type(nulltype)) {
        remove_user_null(context, nulltype);
        return CS_SUCCEED;
    }
    COM_REQUIRE_PTR(context->ctxnulls.nullvals, CS_FAIL);
    CsDefVal &value = context->ctxnulls.nullvals[nulltype];
    COM_REQUIRE_PTR(value.dventity, CS_FAIL);

    const CsDefVal &standard = Comv_values[nulltype];
    value.dvpadtype = standard.dvpadtype;
    if (value.dvsize < standard.dvsize)
        return replace_value(value.dventity, value.dvsize, standard.dventity, standard.dvsize);
    std::memcpy(value.dventity, standard.dventity, static_cast<std::size_t>(standard.dvsize));
    value.dvsize = standard.dvsize;
    return CS_SUCCEED;
}
